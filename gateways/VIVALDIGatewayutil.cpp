#include "front/utility.h"
#include "gateways/gateway_exchange.h"
#include "gateways/gateways.h"

namespace {

// The command is the daemon's own number for the request, not a parameter.
constexpr gateway_line SET_LINES[] = {
    {"SectionName", 1},  {"CentralNumber", 2}, {"Command", 0, "1"}, {"RC20_Number", 3},
    {"RC20_OnOff", 4},   {"RC20_Volume", 5},   {"RC20_High", 6},    {"RC20_Low", 7},
    {"RC20_Channel", 8}, {"RC20_Cd", 9},       {"RC20_Track", 10},  {"RC20_Tuner", 11},
};

constexpr gateway_line GET_LINES[] = {
    {"SectionName", 1},
    {"CentralNumber", 2},
    {"Command", 0, "2"},
    {"RC20_Number", 3},
};

constexpr gateway_function FUNCTIONS[] = {
    {"SENDVIVALDISETDATAGRAM", SET_LINES},
    {"SENDVIVALDIGETDATAGRAM", GET_LINES},
};

} // namespace

constexpr gateway_profile VIVALDI_GATEWAY = {
    .source_tag = "VIVALDIGatewayutil->vivaldigateway_local_request",
    .daemon = "VIVALDIGateway",
    // Deliberate: this text blames the EIB gateway.
    .tail_daemon = "EIBGateway",
    .prefix = "VIVG-",
    .format_label = "VIVG-NNNN",
    .code_base = 900,
    .functions = FUNCTIONS,
};

int vivaldigateway_local_request(const char *socket_path, const char *function,
                                 const char *section_name, const char *central_number,
                                 const char *rc20_number, const char *rc20_on_off,
                                 const char *rc20_volume, const char *rc20_high,
                                 const char *rc20_low, const char *rc20_channel,
                                 const char *rc20_cd, const char *rc20_track,
                                 const char *rc20_tuner) {
    const char *const values[] = {section_name, central_number, rc20_number, rc20_on_off,
                                  rc20_volume,  rc20_high,      rc20_low,    rc20_channel,
                                  rc20_cd,      rc20_track,     rc20_tuner};
    return run_gateway_exchange(VIVALDI_GATEWAY, make_localtcpclient_socket(socket_path), function,
                                values);
}
