#include "gateways/localclientutil.h"

#include "front/diagnostics.h"
#include "gateways/gateways.h"
#include "gateways/request_builder.h"

#include <cstring>

namespace {

/// LINTRONIC only: the daemon reads Device and Command by position. Their lengths are tested, not
/// that they are digits.
bool lintronic_lengths_are_right(const char *const *p) {
    constexpr std::size_t device_length = 2;
    constexpr std::size_t command_length = 3;
    if (strlen(p[1]) != device_length) {
        error("localclientutil->make_lintroniclocal_request error Device is not in "
              "2-digit-zero-filled format");
        return false;
    }
    if (strlen(p[2]) != command_length) {
        error("localclientutil->make_lintroniclocal_request error Command is not in "
              "3-digit-zero-filled format");
        return false;
    }
    return true;
}

// Double blanks are part of the count messages, and so of the interface.

int send_to_eibus(const gateway_call &c) {
    return eibgateway_local_request(c.socket_path, c.function, c.p[0], c.p[1], c.p[2], c.p[3]);
}

constexpr builder_row EIB_ROWS[] = {
    {"SENDEIBUSSETDATAGRAM", "SectionName, Destination, EISType, Payload", send_to_eibus},
    {"SENDEIBUSGETDATAGRAM", "SectionName, Destination, EISType, Payload", send_to_eibus},
};

// The exiting mark deliberately has a name of its own.
constexpr request_builder EIB_BUILDER = {.source = "localclientutil",
                                         .name = "make_eibuslocal_request",
                                         .gateway = &EIB_GATEWAY,
                                         .rows = EIB_ROWS,
                                         .exits_as = "make_local_request"};

constexpr builder_row SMSTOOL_ROWS[] = {
    {"SENDSMSTOOLDATAGRAM", "SectionName, PhoneNumber, Msg",
     [](const gateway_call &c) {
         return smstoolgateway_local_request(c.socket_path, c.function, c.p[0], c.p[1], c.p[2]);
     }},
    {"RECVSMSTOOLDATAGRAM", "PhoneNumber, Msg",
     [](const gateway_call &c) {
         return smstoolgateway_local_request(c.socket_path, c.function, nullptr, c.p[0], c.p[1]);
     }},
};

constexpr request_builder SMSTOOL_BUILDER = {"localclientutil", "make_smstoollocal_request",
                                             &SMSTOOL_GATEWAY, SMSTOOL_ROWS};

constexpr builder_row LINTRONIC_ROWS[] = {
    {"SENDLINTRONICDATAGRAM", "SectionName, Device, Command,  Payload",
     [](const gateway_call &c) {
         return lintronicgateway_local_request(c.socket_path, c.function, c.p[0], c.p[1], c.p[2],
                                               c.p[3]);
     },
     lintronic_lengths_are_right},
};

constexpr request_builder LINTRONIC_BUILDER = {"localclientutil", "make_lintroniclocal_request",
                                               &LINTRONIC_GATEWAY, LINTRONIC_ROWS};

constexpr builder_row TECNOUT_ROWS[] = {
    {"SENDTECNOUTCOMMANDDATAGRAM", "SectionName, UserCode, Command, Payload",
     [](const gateway_call &c) {
         return tecnoutgateway_local_request(c.socket_path, c.function, c.p[0], c.p[1], c.p[2],
                                             c.p[3]);
     }},
};

constexpr request_builder TECNOUT_BUILDER = {"localclientutil", "make_tecnoutlocal_request",
                                             &TECNOUT_GATEWAY, TECNOUT_ROWS};

constexpr builder_row VIVALDI_ROWS[] = {
    {"SENDVIVALDISETDATAGRAM",
     "SectionName, CentralNumber, RC20Number, RC20OnOff, RC20Volume, RC20High, RC20Low, "
     "RC20Channel, RC20Cd, RC20Track, RC20Tuner",
     [](const gateway_call &c) {
         return vivaldigateway_local_request(c.socket_path, c.function, c.p[0], c.p[1], c.p[2],
                                             c.p[3], c.p[4], c.p[5], c.p[6], c.p[7], c.p[8], c.p[9],
                                             c.p[10]);
     }},
};

// The get request is not served, although the exchange knows it.
constexpr request_builder VIVALDI_BUILDER = {"localclientutil", "make_vivaldilocal_request",
                                             &VIVALDI_GATEWAY, VIVALDI_ROWS};

constexpr builder_row BENTEL_ROWS[] = {
    {"SENDBENTELCOMMANDDATAGRAM", "SectionName, UserCode, Command, Payload",
     [](const gateway_call &c) {
         return bentelgateway_local_request(c.socket_path, c.function, c.p[0], c.p[1], c.p[2],
                                            c.p[3]);
     }},
};

constexpr request_builder BENTEL_BUILDER = {"localclientutil", "make_bentellocal_request",
                                            &BENTEL_GATEWAY, BENTEL_ROWS};

int send_to_tutondo(const gateway_call &c) {
    return tutondogateway_local_request(c.socket_path, c.function, c.p[0], c.p[1], c.p[2], c.p[3]);
}

constexpr builder_row TUTONDO_ROWS[] = {
    {"SENDTUTONDOSETDATAGRAM", "SectionName,  ZoneNumber, Command, Payload", send_to_tutondo},
    {"SENDTUTONDOGETDATAGRAM", "SectionName, ZoneNumber, Command, Payload", send_to_tutondo},
};

constexpr request_builder TUTONDO_BUILDER = {"localclientutil", "make_tutondolocal_request",
                                             &TUTONDO_GATEWAY, TUTONDO_ROWS};

constexpr builder_row ECHOBUS_ROWS[] = {
    {"SENDECHOBUSDATAGRAM", "SectionName, DeviceType, CardNumber, CommandType, PortNumber, Value",
     [](const gateway_call &c) {
         return echobusgateway_local_request(c.socket_path, c.function, c.p[0], c.p[1], c.p[2],
                                             c.p[3], c.p[4], c.p[5]);
     }},
};

constexpr request_builder ECHOBUS_BUILDER = {"localclientutil", "make_echobuslocal_request",
                                             &ECHOBUS_GATEWAY, ECHOBUS_ROWS};

constexpr builder_row MARTIN_ROWS[] = {
    {"SENDLJMARTINDATAGRAM", "SectionName, LJCommand, LJType, Payload",
     [](const gateway_call &c) {
         return martingateway_local_request(c.socket_path, c.function, c.p[0], c.p[1], c.p[2],
                                            c.p[3]);
     }},
};

// The count message names the EIB builder, deliberately.
constexpr request_builder MARTIN_BUILDER = {.source = "localclientutil",
                                            .name = "make_martinlocal_request",
                                            .gateway = &MARTIN_GATEWAY,
                                            .rows = MARTIN_ROWS,
                                            .blamed = "make_eibuslocal_request"};

constexpr builder_row IBS_ROWS[] = {
    {"SENDIBSSETDATAGRAM",
     "SectionName, DestinationDevice, DestinationChannel, DestinationType, DataType, Payload",
     [](const gateway_call &c) {
         return ibsgateway_request(c.socket_path, c.function, c.p[0], c.p[1], c.p[2], c.p[3],
                                   c.p[4], c.p[5]);
     }},
};

constexpr request_builder IBS_BUILDER = {"localclientutil", "make_ibslocal_request", &IBS_GATEWAY,
                                         IBS_ROWS};

int send_seven_to_byme(const gateway_call &c) {
    return bymegateway_request(c.socket_path, c.function, c.p[0], c.p[1], c.p[2], c.p[3], c.p[4],
                               c.p[5], c.p[6]);
}

int send_four_to_byme(const gateway_call &c) {
    return bymegateway_request(c.socket_path, c.function, c.p[0], c.p[1], c.p[2], c.p[3], nullptr,
                               nullptr, nullptr);
}

constexpr builder_row BYME_ROWS[] = {
    {"SENDBYMEGROUPVALUEREADDATAGRAM", "SectionName,  Destination",
     [](const gateway_call &c) {
         return bymegateway_request(c.socket_path, c.function, c.p[0], c.p[1], nullptr, nullptr,
                                    nullptr, nullptr, nullptr);
     }},
    {"SENDBYMEGROUPVALUEWRITEDATAGRAM", "SectionName, Destination, DPT, Payload",
     send_four_to_byme},
    {"SENDBYMEPROPERTYREADDATAGRAM",
     "SectionName, Source, Destination, ObjectIndex, PropertyID, StartAddress, ElementCount",
     send_seven_to_byme},
    {"SENDBYMEPROPERTYWRITEDATAGRAM",
     "SectionName, Source, Destination, ObjectIndex, PropertyID, StartAddress, ElementCount",
     nullptr},
    {"SENDBYMEFUNCTIONPROPERTYCOMMANDDATAGRAM",
     "SectionName, Source, Destination, ObjectIndex, PropertyID, DataLength, Payload",
     send_seven_to_byme},
    {"SENDBYMEFUNCTIONPROPERTYSTATEREADDATAGRAM",
     "SectionName, Source, Destination, ObjectIndex, PropertyID, DataLength, Payload",
     send_seven_to_byme},
    {"SENDBYMEOBJECTVALUEDATAGRAM", "SectionName, Index, ObjectID, Payload", send_four_to_byme},
};

// The exiting mark deliberately names another builder.
constexpr request_builder BYME_BUILDER = {.source = "localclientutil",
                                          .name = "make_bymelocal_request",
                                          .gateway = &BYME_GATEWAY,
                                          .rows = BYME_ROWS,
                                          .exits_as = "make_tutondolocal_request"};

constexpr local_builder LOCAL_BUILDERS[] = {
    {make_eibuslocal_request, &EIB_BUILDER},
    {make_smstoollocal_request, &SMSTOOL_BUILDER},
    {make_lintroniclocal_request, &LINTRONIC_BUILDER},
    {make_tecnoutlocal_request, &TECNOUT_BUILDER},
    {make_vivaldilocal_request, &VIVALDI_BUILDER},
    {make_bentellocal_request, &BENTEL_BUILDER},
    {make_tutondolocal_request, &TUTONDO_BUILDER},
    {make_echobuslocal_request, &ECHOBUS_BUILDER},
    {make_martinlocal_request, &MARTIN_BUILDER},
    {make_ibslocal_request, &IBS_BUILDER},
    {make_bymelocal_request, &BYME_BUILDER},
};

} // namespace

int make_eibuslocal_request(const char *socket_path, const char *function, const char *parameters) {
    return build_gateway_request(EIB_BUILDER, {socket_path, nullptr, 0}, function, parameters);
}

int make_smstoollocal_request(const char *socket_path, const char *function,
                              const char *parameters) {
    return build_gateway_request(SMSTOOL_BUILDER, {socket_path, nullptr, 0}, function, parameters);
}

int make_lintroniclocal_request(const char *socket_path, const char *function,
                                const char *parameters) {
    return build_gateway_request(LINTRONIC_BUILDER, {socket_path, nullptr, 0}, function,
                                 parameters);
}

int make_tecnoutlocal_request(const char *socket_path, const char *function,
                              const char *parameters) {
    return build_gateway_request(TECNOUT_BUILDER, {socket_path, nullptr, 0}, function, parameters);
}

int make_vivaldilocal_request(const char *socket_path, const char *function,
                              const char *parameters) {
    return build_gateway_request(VIVALDI_BUILDER, {socket_path, nullptr, 0}, function, parameters);
}

int make_bentellocal_request(const char *socket_path, const char *function,
                             const char *parameters) {
    return build_gateway_request(BENTEL_BUILDER, {socket_path, nullptr, 0}, function, parameters);
}

int make_tutondolocal_request(const char *socket_path, const char *function,
                              const char *parameters) {
    return build_gateway_request(TUTONDO_BUILDER, {socket_path, nullptr, 0}, function, parameters);
}

int make_echobuslocal_request(const char *socket_path, const char *function,
                              const char *parameters) {
    return build_gateway_request(ECHOBUS_BUILDER, {socket_path, nullptr, 0}, function, parameters);
}

int make_martinlocal_request(const char *socket_path, const char *function,
                             const char *parameters) {
    return build_gateway_request(MARTIN_BUILDER, {socket_path, nullptr, 0}, function, parameters);
}

int make_ibslocal_request(const char *socket_path, const char *function, const char *parameters) {
    return build_gateway_request(IBS_BUILDER, {socket_path, nullptr, 0}, function, parameters);
}

int make_bymelocal_request(const char *socket_path, const char *function, const char *parameters) {
    return build_gateway_request(BYME_BUILDER, {socket_path, nullptr, 0}, function, parameters);
}

std::span<const local_builder> local_builders() {
    return LOCAL_BUILDERS;
}
