// The MARTIN gateway: SENDLJMARTINDATAGRAM. No request type reaches it.

#pragma once

struct gateway_profile;

/// What makes this gateway's exchange its own.
extern const gateway_profile MARTIN_GATEWAY;

/// Sends one MARTIN request over the daemon's Unix-domain socket.
/// @return the daemon's number, or base + 1, 5, 6, 7 after a message; see run_gateway_exchange().
int martingateway_local_request(const char *socket_path, const char *function,
                                const char *section_name, const char *command, const char *type,
                                const char *payload);
