#include "front/utility.h"
#include "gateways/gateway_exchange.h"
#include "gateways/gateways.h"

namespace {

constexpr gateway_line LINES[] = {
    {"SectionName", 1},
    {"Destination", 2},
    {"EISType", 3},
    {"Payload", 4},
};

constexpr gateway_function FUNCTIONS[] = {
    {"SENDEIBUSSETDATAGRAM", LINES},
    {"SENDEIBUSGETDATAGRAM", LINES},
};

} // namespace

constexpr gateway_profile EIB_GATEWAY = {
    .source_tag = "EIBGatewayutil->eibgateway_local_request",
    .daemon = "EIBGateway",
    // Deliberate: this text blames FSMCore.
    .tail_daemon = "FSMCore",
    .prefix = "EIBG-",
    .format_label = "EIBG-XXX",
    .quoting = "BBBBBBBB",
    .code_base = 100,
    .functions = FUNCTIONS,
};

constexpr gateway_profile EIB_INTERNET_GATEWAY = [] {
    gateway_profile profile = EIB_GATEWAY;
    profile.source_tag = "EIBGatewayutil->eibgateway_internet_request";
    return profile;
}();

int eibgateway_local_request(const char *socket_path, const char *function,
                             const char *section_name, const char *destination,
                             const char *eis_type, const char *payload) {
    const char *const values[] = {section_name, destination, eis_type, payload};
    return run_gateway_exchange(EIB_GATEWAY, make_localtcpclient_socket(socket_path), function,
                                values);
}

int eibgateway_internet_request(const char *address, int port, const char *function,
                                const char *section_name, const char *destination,
                                const char *eis_type, const char *payload) {
    const char *const values[] = {section_name, destination, eis_type, payload};
    return run_gateway_exchange(EIB_INTERNET_GATEWAY, make_internettcpclient_socket(address, port),
                                function, values);
}
