#include "gateways/internetclientutil.h"

#include "gateways/ECHOBUSGatewayutil.h"
#include "gateways/EIBGatewayutil.h"
#include "gateways/request_builder.h"

namespace {

constexpr builder_row ROWS[] = {
    {"make_eibusinternet_request", "SENDEIBUSSETDATAGRAM",
     "SectionName, Destination, EISType, Payload", &EIB_INTERNET_GATEWAY},
    {"make_eibusinternet_request", "SENDEIBUSGETDATAGRAM",
     "SectionName, Destination, EISType, Payload", &EIB_INTERNET_GATEWAY},
    {"make_echobusinternet_request", "SENDECHOBUSDATAGRAM",
     "SectionName, DeviceType, CardNumber, CommandType, PortNumber, Value",
     &ECHOBUS_INTERNET_GATEWAY},
};

} // namespace

#define DEFINE_INTERNET_BUILDER(NAME)                                                              \
    int NAME(const char *address, int port, const char *function, const char *parameters) {        \
        static constexpr request_builder BUILDER = {"internetclientutil", #NAME, #NAME, true,      \
                                                    rows_of(#NAME, ROWS)};                         \
        return build_gateway_request(BUILDER, {nullptr, address, port}, function, parameters);     \
    }
INTERNET_BUILDERS(DEFINE_INTERNET_BUILDER)

std::span<const builder_row> internet_builder_rows() {
    return ROWS;
}
