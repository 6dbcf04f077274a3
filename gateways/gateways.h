// The gateways: what makes each one's exchange its own, and its exchange function. The sources are
// named after the gateways.

#pragma once

struct gateway_profile;

extern const gateway_profile EIB_GATEWAY;
extern const gateway_profile EIB_INTERNET_GATEWAY;
extern const gateway_profile SMSTOOL_GATEWAY;
extern const gateway_profile LINTRONIC_GATEWAY;
extern const gateway_profile TECNOUT_GATEWAY;
extern const gateway_profile VIVALDI_GATEWAY;
extern const gateway_profile BENTEL_GATEWAY;
extern const gateway_profile TUTONDO_GATEWAY;
extern const gateway_profile ECHOBUS_GATEWAY;
extern const gateway_profile ECHOBUS_INTERNET_GATEWAY;
extern const gateway_profile MARTIN_GATEWAY;
extern const gateway_profile IBS_GATEWAY;
extern const gateway_profile BYME_GATEWAY;

// Each sends one request to the daemon over its Unix-domain socket, or to an IPv4 address and port,
// and returns the daemon's number, or code_base + 1, 5, 6 or 7 after a message; see
// run_gateway_exchange(). No request type of the command line reaches those over TCP, ECHOBUS,
// MARTIN, IBS and ByME; they are complete all the same.

int eibgateway_local_request(const char *socket_path, const char *function,
                             const char *section_name, const char *destination,
                             const char *eis_type, const char *payload);

int eibgateway_internet_request(const char *address, int port, const char *function,
                                const char *section_name, const char *destination,
                                const char *eis_type, const char *payload);

/// @param section_name null for the receive request, which has no section.
/// @param number the receiver's or the sender's phone number.
int smstoolgateway_local_request(const char *socket_path, const char *function,
                                 const char *section_name, const char *number, const char *message);

int lintronicgateway_local_request(const char *socket_path, const char *function,
                                   const char *section_name, const char *device,
                                   const char *command, const char *payload);

int tecnoutgateway_local_request(const char *socket_path, const char *function,
                                 const char *section_name, const char *user_code,
                                 const char *command, const char *payload);

/// The get request uses the values up to rc20_number.
int vivaldigateway_local_request(const char *socket_path, const char *function,
                                 const char *section_name, const char *central_number,
                                 const char *rc20_number, const char *rc20_on_off,
                                 const char *rc20_volume, const char *rc20_high,
                                 const char *rc20_low, const char *rc20_channel,
                                 const char *rc20_cd, const char *rc20_track,
                                 const char *rc20_tuner);

int bentelgateway_local_request(const char *socket_path, const char *function,
                                const char *section_name, const char *user_code,
                                const char *command, const char *payload);

/// The get request does not send the payload.
int tutondogateway_local_request(const char *socket_path, const char *function,
                                 const char *section_name, const char *zone_number,
                                 const char *command, const char *payload);

int echobusgateway_local_request(const char *socket_path, const char *function,
                                 const char *section_name, const char *device_type,
                                 const char *card_number, const char *command_type,
                                 const char *port_number, const char *value);

int echobusgateway_internet_request(const char *address, int port, const char *function,
                                    const char *section_name, const char *device_type,
                                    const char *card_number, const char *command_type,
                                    const char *port_number, const char *value);

int martingateway_local_request(const char *socket_path, const char *function,
                                const char *section_name, const char *command, const char *type,
                                const char *payload);

int ibsgateway_request(const char *socket_path, const char *function, const char *section_name,
                       const char *device, const char *channel, const char *destination_type,
                       const char *data_type, const char *payload);

/// A request uses the first values, as many as it needs; the others may be null.
int bymegateway_request(const char *socket_path, const char *function, const char *section_name,
                        const char *value_2, const char *value_3, const char *value_4,
                        const char *value_5, const char *value_6, const char *value_7);
