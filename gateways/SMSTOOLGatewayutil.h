// The SMS tool: SENDSMSTOOLDATAGRAM and RECVSMSTOOLDATAGRAM.

#pragma once

struct gateway_profile;

/// What makes this gateway's exchange its own.
extern const gateway_profile SMSTOOL_GATEWAY;

/// Sends one SMS request over the daemon's Unix-domain socket.
/// @param section_name null for the receive request, which has no section.
/// @param number the receiver's or the sender's phone number.
/// @return the daemon's number, or base + 1, 5, 6, 7 after a message; see run_gateway_exchange().
int smstoolgateway_local_request(const char *socket_path, const char *function,
                                 const char *section_name, const char *number, const char *message);
