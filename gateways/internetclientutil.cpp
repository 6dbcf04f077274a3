#include "gateways/internetclientutil.h"

#include "gateways/gateways.h"
#include "gateways/request_builder.h"

namespace {

int send_to_eibus(const gateway_call &c) {
    return eibgateway_internet_request(c.address, c.port, c.function, c.p[0], c.p[1], c.p[2],
                                       c.p[3]);
}

constexpr builder_row EIB_ROWS[] = {
    {"SENDEIBUSSETDATAGRAM", "SectionName, Destination, EISType, Payload", send_to_eibus},
    {"SENDEIBUSGETDATAGRAM", "SectionName, Destination, EISType, Payload", send_to_eibus},
};

constexpr request_builder EIB_BUILDER = {.source = "internetclientutil",
                                         .name = "make_eibusinternet_request",
                                         .gateway = &EIB_INTERNET_GATEWAY,
                                         .rows = EIB_ROWS,
                                         .trailing_trace = true};

constexpr builder_row ECHOBUS_ROWS[] = {
    {"SENDECHOBUSDATAGRAM", "SectionName, DeviceType, CardNumber, CommandType, PortNumber, Value",
     [](const gateway_call &c) {
         return echobusgateway_internet_request(c.address, c.port, c.function, c.p[0], c.p[1],
                                                c.p[2], c.p[3], c.p[4], c.p[5]);
     }},
};

constexpr request_builder ECHOBUS_BUILDER = {.source = "internetclientutil",
                                             .name = "make_echobusinternet_request",
                                             .gateway = &ECHOBUS_INTERNET_GATEWAY,
                                             .rows = ECHOBUS_ROWS,
                                             .trailing_trace = true};

constexpr internet_builder INTERNET_BUILDERS[] = {
    {make_eibusinternet_request, &EIB_BUILDER},
    {make_echobusinternet_request, &ECHOBUS_BUILDER},
};

} // namespace

int make_eibusinternet_request(const char *address, int port, const char *function,
                               const char *parameters) {
    return build_gateway_request(EIB_BUILDER, {nullptr, address, port}, function, parameters);
}

int make_echobusinternet_request(const char *address, int port, const char *function,
                                 const char *parameters) {
    return build_gateway_request(ECHOBUS_BUILDER, {nullptr, address, port}, function, parameters);
}

std::span<const internet_builder> internet_builders() {
    return INTERNET_BUILDERS;
}
