#include "gateways/EIBGatewayutil.h"

#include "front/utility.h"
#include "gateways/gateway_exchange.h"

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

constexpr gateway_profile LOCAL_PROFILE = {
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

constexpr gateway_profile INTERNET_PROFILE = [] {
    gateway_profile profile = LOCAL_PROFILE;
    profile.source_tag = "EIBGatewayutil->eibgateway_internet_request";
    return profile;
}();

} // namespace

int eibgateway_local_request(const char *socket_path, const char *function,
                             const char *section_name, const char *destination,
                             const char *eis_type, const char *payload) {
    const char *const values[] = {section_name, destination, eis_type, payload};
    return run_gateway_exchange(LOCAL_PROFILE, make_localtcpclient_socket(socket_path), function,
                                values);
}

int eibgateway_internet_request(const char *address, int port, const char *function,
                                const char *section_name, const char *destination,
                                const char *eis_type, const char *payload) {
    const char *const values[] = {section_name, destination, eis_type, payload};
    return run_gateway_exchange(INTERNET_PROFILE, make_internettcpclient_socket(address, port),
                                function, values);
}
