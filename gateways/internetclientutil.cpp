#include "gateways/internetclientutil.h"

#include "gateways/ECHOBUSGatewayutil.h"
#include "gateways/EIBGatewayutil.h"
#include "gateways/request_builder.h"

namespace {

constexpr builder_row EIBUS_ROWS[] = {
    {"SENDEIBUSSETDATAGRAM", 4,
     "internetclientutil->make_eibusinternet_request error too few or too much "
     "parameters, SectionName, Destination, EISType, Payload are needed",
     over_internet<eibgateway_internet_request>},
    {"SENDEIBUSGETDATAGRAM", 4,
     "internetclientutil->make_eibusinternet_request error too few or too much "
     "parameters, SectionName, Destination, EISType, Payload are needed",
     over_internet<eibgateway_internet_request>},
};
constexpr request_builder EIBUS_BUILDER = {
    "entering internetclientutil->make_eibusinternet_request",
    "exiting internetclientutil->make_eibusinternet_request", true, EIBUS_ROWS};

constexpr builder_row ECHOBUS_ROWS[] = {
    {"SENDECHOBUSDATAGRAM", 6,
     "internetclientutil->make_echobusinternet_request error too few or too much "
     "parameters, SectionName, DeviceType, CardNumber, CommandType, PortNumber, Value "
     "are needed",
     over_internet<echobusgateway_internet_request>},
};
constexpr request_builder ECHOBUS_BUILDER = {
    "entering internetclientutil->make_echobusinternet_request",
    "exiting internetclientutil->make_echobusinternet_request", true, ECHOBUS_ROWS};

} // namespace

int make_eibusinternet_request(const char *address, int port, const char *function,
                               const char *parameters) {
    return build_gateway_request(EIBUS_BUILDER, {nullptr, address, port}, function, parameters);
}

int make_echobusinternet_request(const char *address, int port, const char *function,
                                 const char *parameters) {
    return build_gateway_request(ECHOBUS_BUILDER, {nullptr, address, port}, function, parameters);
}
