// The LINTRONIC gateway: SENDLINTRONICDATAGRAM.

#pragma once

struct gateway_profile;

/// What makes this gateway's exchange its own.
extern const gateway_profile LINTRONIC_GATEWAY;

/// Sends one LINTRONIC request over the daemon's Unix-domain socket.
/// @return the daemon's number, or base + 1, 5, 6, 7 after a message; see run_gateway_exchange().
int lintronicgateway_local_request(const char *socket_path, const char *function,
                                   const char *section_name, const char *device,
                                   const char *command, const char *payload);
