#include "front/utility.h"
#include "gateways/gateway_exchange.h"
#include "gateways/gateways.h"

namespace {

// The command goes before the zone on the wire, although the zone comes first in the list.
constexpr gateway_line SET_LINES[] = {
    {"SectionName", 1},
    {"Command", 3},
    {"Zone_Number", 2},
    {"Payload", 4},
};

constexpr gateway_line GET_LINES[] = {
    {"SectionName", 1},
    {"Command", 3},
    {"Zone_Number", 2},
};

constexpr gateway_function FUNCTIONS[] = {
    {"SENDTUTONDOSETDATAGRAM", SET_LINES},
    {"SENDTUTONDOGETDATAGRAM", GET_LINES},
};

} // namespace

constexpr gateway_profile TUTONDO_GATEWAY = {
    .source_tag = "TUTONDOGatewayutil->tutondogateway_local_request",
    .daemon = "TUTONDOGateway",
    // Deliberate: this text blames the EIB gateway.
    .tail_daemon = "EIBGateway",
    .prefix = "TUTG-",
    .format_label = "TUTG-NNNN",
    .code_base = 1500,
    .functions = FUNCTIONS,
};

int tutondogateway_local_request(const char *socket_path, const char *function,
                                 const char *section_name, const char *zone_number,
                                 const char *command, const char *payload) {
    const char *const values[] = {section_name, zone_number, command, payload};
    return run_gateway_exchange(TUTONDO_GATEWAY, make_localtcpclient_socket(socket_path), function,
                                values);
}
