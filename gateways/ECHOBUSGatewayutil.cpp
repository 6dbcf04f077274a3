#include "front/utility.h"
#include "gateways/gateway_exchange.h"
#include "gateways/gateways.h"

namespace {

constexpr gateway_line LINES[] = {
    {"SectionName", 1}, {"DeviceType", 2}, {"CardNumber", 3},
    {"CommandType", 4}, {"PortNumber", 5}, {"Value", 6},
};

constexpr gateway_function FUNCTIONS[] = {
    {"SENDECHOBUSDATAGRAM", LINES},
};

} // namespace

constexpr gateway_profile ECHOBUS_GATEWAY = {
    .source_tag = "ECHOBUSGatewayutil->echobusgateway_local_request",
    .daemon = "ECHOBUSGateway",
    .prefix = "ECHG-",
    .format_label = "ECHG-XXX",
    .quoting = "BBBBBQQQ",
    .code_base = 200,
    .functions = FUNCTIONS,
};

constexpr gateway_profile ECHOBUS_INTERNET_GATEWAY = [] {
    gateway_profile profile = ECHOBUS_GATEWAY;
    profile.source_tag = "ECHOBUSGatewayutil->echobusgateway_internet_request";
    // Deliberate: this text names the local exchange.
    profile.unsupported_tag = ECHOBUS_GATEWAY.source_tag;
    profile.quoting = "QBBBQQQQ";
    return profile;
}();

int echobusgateway_local_request(const char *socket_path, const char *function,
                                 const char *section_name, const char *device_type,
                                 const char *card_number, const char *command_type,
                                 const char *port_number, const char *value) {
    const char *const values[] = {section_name, device_type, card_number,
                                  command_type, port_number, value};
    return run_gateway_exchange(ECHOBUS_GATEWAY, make_localtcpclient_socket(socket_path), function,
                                values);
}

int echobusgateway_internet_request(const char *address, int port, const char *function,
                                    const char *section_name, const char *device_type,
                                    const char *card_number, const char *command_type,
                                    const char *port_number, const char *value) {
    const char *const values[] = {section_name, device_type, card_number,
                                  command_type, port_number, value};
    return run_gateway_exchange(ECHOBUS_INTERNET_GATEWAY,
                                make_internettcpclient_socket(address, port), function, values);
}
