// The BENTEL gateway: SENDBENTELCOMMANDDATAGRAM.

#pragma once

struct gateway_profile;

/// What makes this gateway's exchange its own.
extern const gateway_profile BENTEL_GATEWAY;

/// Sends one BENTEL request over the daemon's Unix-domain socket.
/// @return the daemon's number, or base + 1, 5, 6, 7 after a message; see run_gateway_exchange().
int bentelgateway_local_request(const char *socket_path, const char *function,
                                const char *section_name, const char *user_code,
                                const char *command, const char *payload);
