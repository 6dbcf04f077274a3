#include "front/utility.h"
#include "gateways/gateway_exchange.h"
#include "gateways/gateways.h"

namespace {

constexpr gateway_line LINES[] = {
    {"SectionName", 1},
    {"UserCode", 2},
    {"Command", 3},
    {"Payload", 4},
};

constexpr gateway_function FUNCTIONS[] = {
    {"SENDBENTELCOMMANDDATAGRAM", LINES},
};

} // namespace

constexpr gateway_profile BENTEL_GATEWAY = {
    .source_tag = "BENTELGatewayutil->bentelgateway_local_request",
    .daemon = "BENTELGateway",
    // The daemon says BENG, the tool prints BENT: two alphabets, kept apart.
    .prefix = "BENG-",
    .format_label = "BENG-NNNN",
    .code_base = 1300,
    .functions = FUNCTIONS,
};

int bentelgateway_local_request(const char *socket_path, const char *function,
                                const char *section_name, const char *user_code,
                                const char *command, const char *payload) {
    const char *const values[] = {section_name, user_code, command, payload};
    return run_gateway_exchange(BENTEL_GATEWAY, make_localtcpclient_socket(socket_path), function,
                                values);
}
