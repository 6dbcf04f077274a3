// The ECHOBUS gateway, locally and over TCP: SENDECHOBUSDATAGRAM. No request type reaches it.

#pragma once

struct gateway_profile;

/// What makes this gateway's exchanges its own, locally and over TCP.
extern const gateway_profile ECHOBUS_GATEWAY;
extern const gateway_profile ECHOBUS_INTERNET_GATEWAY;

/// Sends one ECHOBUS request over the daemon's Unix-domain socket.
/// @return the daemon's number, or base + 1, 5, 6, 7 after a message; see run_gateway_exchange().
int echobusgateway_local_request(const char *socket_path, const char *function,
                                 const char *section_name, const char *device_type,
                                 const char *card_number, const char *command_type,
                                 const char *port_number, const char *value);

/// The same over TCP.
int echobusgateway_internet_request(const char *address, int port, const char *function,
                                    const char *section_name, const char *device_type,
                                    const char *card_number, const char *command_type,
                                    const char *port_number, const char *value);
