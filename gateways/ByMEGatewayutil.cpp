#include "front/utility.h"
#include "gateways/gateway_exchange.h"
#include "gateways/gateways.h"

namespace {

// Deliberate: a property write carries nothing but its section, and no builder sends it.
constexpr gateway_line SECTION_LINES[] = {
    {"SectionName", 1},
};

constexpr gateway_line GROUP_READ_LINES[] = {
    {"SectionName", 1},
    {"Destination", 2},
};

constexpr gateway_line GROUP_WRITE_LINES[] = {
    {"SectionName", 1},
    {"Destination", 2},
    {"DPT", 3},
    {"Payload", 4},
};

constexpr gateway_line PROPERTY_READ_LINES[] = {
    {"SectionName", 1}, {"Source", 2},       {"Destination", 3},  {"ObjectIndex", 4},
    {"PropertyID", 5},  {"StartAddress", 6}, {"ElementCount", 7},
};

constexpr gateway_line FUNCTION_PROPERTY_LINES[] = {
    {"SectionName", 1}, {"Source", 2},     {"Destination", 3}, {"ObjectIndex", 4},
    {"PropertyID", 5},  {"DataLength", 6}, {"Payload", 7},
};

constexpr gateway_line OBJECT_VALUE_LINES[] = {
    {"SectionName", 1},
    {"Index", 2},
    {"ObjectId", 3},
    {"Payload", 4},
};

constexpr gateway_function FUNCTIONS[] = {
    {"SENDBYMEGROUPVALUEREADDATAGRAM", GROUP_READ_LINES},
    {"SENDBYMEGROUPVALUEWRITEDATAGRAM", GROUP_WRITE_LINES},
    {"SENDBYMEPROPERTYREADDATAGRAM", PROPERTY_READ_LINES},
    {"SENDBYMEPROPERTYWRITEDATAGRAM", SECTION_LINES},
    {"SENDBYMEFUNCTIONPROPERTYCOMMANDDATAGRAM", FUNCTION_PROPERTY_LINES},
    {"SENDBYMEFUNCTIONPROPERTYSTATEREADDATAGRAM", FUNCTION_PROPERTY_LINES},
    {"SENDBYMEOBJECTVALUEDATAGRAM", OBJECT_VALUE_LINES},
};

} // namespace

constexpr gateway_profile BYME_GATEWAY = {
    .source_tag = "ByMEGatewayutil->bymegateway_request",
    .daemon = "ByMEGateway",
    // Deliberate: six characters here, three digits in the label below.
    .prefix = "BYMEG-",
    .format_label = "BYMEG-NNN",
    .code_base = 2000,
    .functions = FUNCTIONS,
};

int bymegateway_request(const char *socket_path, const char *function, const char *section_name,
                        const char *value_2, const char *value_3, const char *value_4,
                        const char *value_5, const char *value_6, const char *value_7) {
    const char *const values[] = {section_name, value_2, value_3, value_4,
                                  value_5,      value_6, value_7};
    return run_gateway_exchange(BYME_GATEWAY, make_localtcpclient_socket(socket_path), function,
                                values);
}
