#include "front/utility.h"
#include "gateways/gateway_exchange.h"
#include "gateways/gateways.h"

namespace {

constexpr gateway_line LINES[] = {
    {"SectionName", 1},     {"DestinationDevice", 2}, {"DestinationChannel", 3},
    {"DestinationType", 4}, {"DataType", 5},          {"Payload", 6},
};

constexpr gateway_function FUNCTIONS[] = {
    {"SENDIBSSETDATAGRAM", LINES},
};

} // namespace

constexpr gateway_profile IBS_GATEWAY = {
    .source_tag = "IBSGatewayutil->ibsgateway_request",
    .daemon = "IBSGateway",
    .prefix = "IBSG-",
    .format_label = "IBSG-NNNN",
    .code_base = 1400,
    .functions = FUNCTIONS,
};

int ibsgateway_request(const char *socket_path, const char *function, const char *section_name,
                       const char *device, const char *channel, const char *destination_type,
                       const char *data_type, const char *payload) {
    const char *const values[] = {section_name,     device,    channel,
                                  destination_type, data_type, payload};
    return run_gateway_exchange(IBS_GATEWAY, make_localtcpclient_socket(socket_path), function,
                                values);
}
