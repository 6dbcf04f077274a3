#include "gateways/MARTINGatewayutil.h"

#include "front/utility.h"
#include "gateways/gateway_exchange.h"

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

constexpr gateway_profile PROFILE = {
    .source_tag = "MARTINGatewayutil->martingateway_local_request",
    .daemon = "MARTINGateway",
    .prefix = "MARG-",
    .format_label = "MARG-XXX",
    .quoting = "QQQQQQQQ",
    .code_base = 600,
    .functions = FUNCTIONS,
};

} // namespace

int martingateway_local_request(const char *socket_path, const char *function,
                                const char *section_name, const char *command, const char *type,
                                const char *payload) {
    const char *const values[] = {section_name, command, type, payload};
    return run_gateway_exchange(PROFILE, make_localtcpclient_socket(socket_path), function, values);
}
