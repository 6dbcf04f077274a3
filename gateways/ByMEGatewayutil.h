// The ByME gateway: seven requests that share only their section. No request type reaches it.

#pragma once

struct gateway_profile;

/// What makes this gateway's exchange its own.
extern const gateway_profile BYME_GATEWAY;

/// Sends one ByME request over the daemon's Unix-domain socket. What the values mean depends on the
/// function: its header lines take them in order, and those it has no line for may be null.
/// @return the daemon's number, or base + 1, 5, 6, 7 after a message; see run_gateway_exchange().
int bymegateway_request(const char *socket_path, const char *function, const char *section_name,
                        const char *value_2, const char *value_3, const char *value_4,
                        const char *value_5, const char *value_6, const char *value_7);
