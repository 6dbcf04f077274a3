#include "front/utility.h"
#include "gateways/gateway_exchange.h"
#include "gateways/gateways.h"

namespace {

constexpr gateway_line LINES[] = {
    {"SectionName", 1},
    {"LJCommand", 2},
    {"LJType", 3},
    {"Payload", 4},
};

constexpr gateway_function FUNCTIONS[] = {
    {"SENDLJMARTINDATAGRAM", LINES},
};

} // namespace

constexpr gateway_profile MARTIN_GATEWAY = {
    .source_tag = "MARTINGatewayutil->martingateway_local_request",
    .daemon = "MARTINGateway",
    .prefix = "MARG-",
    .format_label = "MARG-XXX",
    .code_base = 600,
    .functions = FUNCTIONS,
};

int martingateway_local_request(const char *socket_path, const char *function,
                                const char *section_name, const char *command, const char *type,
                                const char *payload) {
    const char *const values[] = {section_name, command, type, payload};
    return run_gateway_exchange(MARTIN_GATEWAY, make_localtcpclient_socket(socket_path), function,
                                values);
}
