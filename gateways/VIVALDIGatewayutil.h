// The VIVALDI gateway: SENDVIVALDISETDATAGRAM and SENDVIVALDIGETDATAGRAM.

#pragma once

struct gateway_profile;

/// What makes this gateway's exchange its own.
extern const gateway_profile VIVALDI_GATEWAY;

/// Sends one VIVALDI request over the daemon's Unix-domain socket. The get request uses the values
/// up to rc20_number.
/// @return the daemon's number, or base + 1, 5, 6, 7 after a message; see run_gateway_exchange().
int vivaldigateway_local_request(const char *socket_path, const char *function,
                                 const char *section_name, const char *central_number,
                                 const char *rc20_number, const char *rc20_on_off,
                                 const char *rc20_volume, const char *rc20_high,
                                 const char *rc20_low, const char *rc20_channel,
                                 const char *rc20_cd, const char *rc20_track,
                                 const char *rc20_tuner);
