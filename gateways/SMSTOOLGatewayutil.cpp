#include "front/utility.h"
#include "gateways/gateway_exchange.h"
#include "gateways/gateways.h"

namespace {

constexpr gateway_line SEND_LINES[] = {
    {"SectionName", 1},
    {"To", 2},
    {"Msg", 3},
};

// Deliberate: no section line.
constexpr gateway_line RECEIVE_LINES[] = {
    {"From", 2},
    {"Msg", 3},
};

constexpr gateway_function FUNCTIONS[] = {
    {"SENDSMSTOOLDATAGRAM", SEND_LINES},
    {"RECVSMSTOOLDATAGRAM", RECEIVE_LINES},
};

} // namespace

constexpr gateway_profile SMSTOOL_GATEWAY = {
    .source_tag = "SMSTOOLGatewayutil->smstoolgateway_local_request",
    // Deliberate: the number and trailing-text messages carry the short file name.
    .tail_tag = "SMSTGatewayutil->smstoolgateway_local_request",
    .daemon = "SMSTOOLGateway",
    .prefix = "SMST-",
    .format_label = "SMST-XXX",
    .code_base = 800,
    .functions = FUNCTIONS,
};

int smstoolgateway_local_request(const char *socket_path, const char *function,
                                 const char *section_name, const char *number,
                                 const char *message) {
    const char *const values[] = {section_name, number, message};
    return run_gateway_exchange(SMSTOOL_GATEWAY, make_localtcpclient_socket(socket_path), function,
                                values);
}
