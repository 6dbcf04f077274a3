// The TUTONDO gateway: SENDTUTONDOSETDATAGRAM and SENDTUTONDOGETDATAGRAM.

#pragma once

struct gateway_profile;

/// What makes this gateway's exchange its own.
extern const gateway_profile TUTONDO_GATEWAY;

/// Sends one TUTONDO request over the daemon's Unix-domain socket. The get request does not send
/// the payload.
/// @return the daemon's number, or base + 1, 5, 6, 7 after a message; see run_gateway_exchange().
int tutondogateway_local_request(const char *socket_path, const char *function,
                                 const char *section_name, const char *zone_number,
                                 const char *command, const char *payload);
