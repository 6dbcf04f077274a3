// The IBS gateway: SENDIBSSETDATAGRAM. No request type reaches it.

#pragma once

struct gateway_profile;

/// What makes this gateway's exchange its own.
extern const gateway_profile IBS_GATEWAY;

/// Sends one IBS request over the daemon's Unix-domain socket.
/// @return the daemon's number, or base + 1, 5, 6, 7 after a message; see run_gateway_exchange().
int ibsgateway_request(const char *socket_path, const char *function, const char *section_name,
                       const char *device, const char *channel, const char *destination_type,
                       const char *data_type, const char *payload);
