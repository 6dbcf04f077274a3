#include "front/utility.h"
#include "gateways/gateway_exchange.h"
#include "gateways/gateways.h"

namespace {

constexpr gateway_line LINES[] = {
    {"SectionName", 1},
    {"Device", 2},
    {"Command", 3},
    {"Payload", 4},
};

constexpr gateway_function FUNCTIONS[] = {
    {"SENDLINTRONICDATAGRAM", LINES},
};

} // namespace

constexpr gateway_profile LINTRONIC_GATEWAY = {
    .source_tag = "LINTRONICGatewayutil->lintronicgateway_local_request",
    // Deliberate: the number and trailing-text messages carry the short file name.
    .tail_tag = "LINTGatewayutil->lintronicgateway_local_request",
    .daemon = "LINTRONICGateway",
    .prefix = "LINT-",
    .format_label = "LINT-XXX",
    .code_base = 1000,
    .functions = FUNCTIONS,
};

int lintronicgateway_local_request(const char *socket_path, const char *function,
                                   const char *section_name, const char *device,
                                   const char *command, const char *payload) {
    const char *const values[] = {section_name, device, command, payload};
    return run_gateway_exchange(LINTRONIC_GATEWAY, make_localtcpclient_socket(socket_path),
                                function, values);
}
