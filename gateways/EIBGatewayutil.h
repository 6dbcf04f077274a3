// The EIB gateway, locally and over TCP: SENDEIBUSSETDATAGRAM and SENDEIBUSGETDATAGRAM.

#pragma once

struct gateway_profile;

/// What makes this gateway's exchanges its own, locally and over TCP.
extern const gateway_profile EIB_GATEWAY;
extern const gateway_profile EIB_INTERNET_GATEWAY;

/// Sends one EIB request over the daemon's Unix-domain socket.
/// @return the daemon's number, or base + 1, 5, 6, 7 after a message; see run_gateway_exchange().
int eibgateway_local_request(const char *socket_path, const char *function,
                             const char *section_name, const char *destination,
                             const char *eis_type, const char *payload);

/// The same over TCP.
int eibgateway_internet_request(const char *address, int port, const char *function,
                                const char *section_name, const char *destination,
                                const char *eis_type, const char *payload);
