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
    {"SENDTECNOUTCOMMANDDATAGRAM", LINES},
};

} // namespace

constexpr gateway_profile TECNOUT_GATEWAY = {
    .source_tag = "TECNOUTGatewayutil->tecnoutgateway_local_request",
    .daemon = "TECNOUTGateway",
    // The daemon says TECG, the tool prints TECN: two alphabets, kept apart.
    .prefix = "TECG-",
    .format_label = "TECG-NNNN",
    .code_base = 1200,
    .functions = FUNCTIONS,
};

int tecnoutgateway_local_request(const char *socket_path, const char *function,
                                 const char *section_name, const char *user_code,
                                 const char *command, const char *payload) {
    const char *const values[] = {section_name, user_code, command, payload};
    return run_gateway_exchange(TECNOUT_GATEWAY, make_localtcpclient_socket(socket_path), function,
                                values);
}
