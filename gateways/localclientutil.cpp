#include "gateways/localclientutil.h"

#include "front/diagnostics.h"
#include "gateways/BENTELGatewayutil.h"
#include "gateways/ByMEGatewayutil.h"
#include "gateways/ECHOBUSGatewayutil.h"
#include "gateways/EIBGatewayutil.h"
#include "gateways/IBSGatewayutil.h"
#include "gateways/LINTRONICGatewayutil.h"
#include "gateways/MARTINGatewayutil.h"
#include "gateways/SMSTOOLGatewayutil.h"
#include "gateways/TECNOUTGatewayutil.h"
#include "gateways/TUTONDOGatewayutil.h"
#include "gateways/VIVALDIGatewayutil.h"
#include "gateways/request_builder.h"

#include <cstring>

namespace {

// The exiting mark lacks the bus, deliberately.
constexpr builder_row EIBUS_ROWS[] = {
    {"SENDEIBUSSETDATAGRAM", 4,
     "localclientutil->make_eibuslocal_request error too few or too much parameters, "
     "SectionName, Destination, EISType, Payload are needed",
     over_socket<eibgateway_local_request>},
    {"SENDEIBUSGETDATAGRAM", 4,
     "localclientutil->make_eibuslocal_request error too few or too much parameters, "
     "SectionName, Destination, EISType, Payload are needed",
     over_socket<eibgateway_local_request>},
};
constexpr request_builder EIBUS_BUILDER = {"entering localclientutil->make_eibuslocal_request",
                                           "exiting localclientutil->make_local_request", false,
                                           EIBUS_ROWS};

// The receive request has no section: the exchange gets none, then the two parameters.
constexpr builder_row SMSTOOL_ROWS[] = {
    {"SENDSMSTOOLDATAGRAM", 3,
     "localclientutil->make_smstoollocal_request error too few or too much parameters, "
     "SectionName, PhoneNumber, Msg are needed",
     over_socket<smstoolgateway_local_request>},
    {"RECVSMSTOOLDATAGRAM", 2,
     "localclientutil->make_smstoollocal_request error too few or too much parameters, "
     "PhoneNumber, Msg are needed",
     over_socket<smstoolgateway_local_request>, 1},
};
constexpr request_builder SMSTOOL_BUILDER = {"entering localclientutil->make_smstoollocal_request",
                                             "exiting localclientutil->make_smstoollocal_request",
                                             false, SMSTOOL_ROWS};

/// LINTRONIC only: the daemon reads Device and Command by position. Their lengths are tested, not
/// that they are digits.
bool lintronic_lengths_are_right(char *const *parameters) {
    constexpr std::size_t device_length = 2;
    constexpr std::size_t command_length = 3;
    if (strlen(parameters[1]) != device_length) {
        error("localclientutil->make_lintroniclocal_request error Device is not in "
              "2-digit-zero-filled format");
        return false;
    }
    if (strlen(parameters[2]) != command_length) {
        error("localclientutil->make_lintroniclocal_request error Command is not in "
              "3-digit-zero-filled format");
        return false;
    }
    return true;
}

constexpr builder_row LINTRONIC_ROWS[] = {
    {"SENDLINTRONICDATAGRAM", 4,
     "localclientutil->make_lintroniclocal_request error too few or too much "
     "parameters, SectionName, Device, Command,  Payload are needed",
     over_socket<lintronicgateway_local_request>, 0, lintronic_lengths_are_right},
};
constexpr request_builder LINTRONIC_BUILDER = {
    "entering localclientutil->make_lintroniclocal_request",
    "exiting localclientutil->make_lintroniclocal_request", false, LINTRONIC_ROWS};

constexpr builder_row TECNOUT_ROWS[] = {
    {"SENDTECNOUTCOMMANDDATAGRAM", 4,
     "localclientutil->make_tecnoutlocal_request error too few or too much parameters, "
     "SectionName, UserCode, Command, Payload are needed",
     over_socket<tecnoutgateway_local_request>},
};
constexpr request_builder TECNOUT_BUILDER = {"entering localclientutil->make_tecnoutlocal_request",
                                             "exiting localclientutil->make_tecnoutlocal_request",
                                             false, TECNOUT_ROWS};

// The get request is not served, although the exchange knows it.
constexpr builder_row VIVALDI_ROWS[] = {
    {"SENDVIVALDISETDATAGRAM", 11,
     "localclientutil->make_vivaldilocal_request error too few or too much parameters, "
     "SectionName, CentralNumber, RC20Number, RC20OnOff, RC20Volume, RC20High, RC20Low, "
     "RC20Channel, RC20Cd, RC20Track, RC20Tuner are needed",
     over_socket<vivaldigateway_local_request>},
};
constexpr request_builder VIVALDI_BUILDER = {"entering localclientutil->make_vivaldilocal_request",
                                             "exiting localclientutil->make_vivaldilocal_request",
                                             false, VIVALDI_ROWS};

constexpr builder_row BENTEL_ROWS[] = {
    {"SENDBENTELCOMMANDDATAGRAM", 4,
     "localclientutil->make_bentellocal_request error too few or too much parameters, "
     "SectionName, UserCode, Command, Payload are needed",
     over_socket<bentelgateway_local_request>},
};
constexpr request_builder BENTEL_BUILDER = {"entering localclientutil->make_bentellocal_request",
                                            "exiting localclientutil->make_bentellocal_request",
                                            false, BENTEL_ROWS};

constexpr builder_row TUTONDO_ROWS[] = {
    {"SENDTUTONDOSETDATAGRAM", 4,
     "localclientutil->make_tutondolocal_request error too few or too much parameters, "
     "SectionName,  ZoneNumber, Command, Payload are needed",
     over_socket<tutondogateway_local_request>},
    {"SENDTUTONDOGETDATAGRAM", 4,
     "localclientutil->make_tutondolocal_request error too few or too much parameters, "
     "SectionName, ZoneNumber, Command, Payload are needed",
     over_socket<tutondogateway_local_request>},
};
constexpr request_builder TUTONDO_BUILDER = {"entering localclientutil->make_tutondolocal_request",
                                             "exiting localclientutil->make_tutondolocal_request",
                                             false, TUTONDO_ROWS};

constexpr builder_row ECHOBUS_ROWS[] = {
    {"SENDECHOBUSDATAGRAM", 6,
     "localclientutil->make_echobuslocal_request error too few or too much parameters, "
     "SectionName, DeviceType, CardNumber, CommandType, PortNumber, Value are needed",
     over_socket<echobusgateway_local_request>},
};
constexpr request_builder ECHOBUS_BUILDER = {"entering localclientutil->make_echobuslocal_request",
                                             "exiting localclientutil->make_echobuslocal_request",
                                             false, ECHOBUS_ROWS};

// The message names the EIB builder, deliberately.
constexpr builder_row MARTIN_ROWS[] = {
    {"SENDLJMARTINDATAGRAM", 4,
     "localclientutil->make_eibuslocal_request error too few or too much parameters, "
     "SectionName, LJCommand, LJType, Payload are needed",
     over_socket<martingateway_local_request>},
};
constexpr request_builder MARTIN_BUILDER = {"entering localclientutil->make_martinlocal_request",
                                            "exiting localclientutil->make_martinlocal_request",
                                            false, MARTIN_ROWS};

constexpr builder_row IBS_ROWS[] = {
    {"SENDIBSSETDATAGRAM", 6,
     "localclientutil->make_ibslocal_request error too few or too much parameters, "
     "SectionName, DestinationDevice, DestinationChannel, DestinationType, DataType, "
     "Payload are needed",
     over_socket<ibsgateway_request>},
};
constexpr request_builder IBS_BUILDER = {"entering localclientutil->make_ibslocal_request",
                                         "exiting localclientutil->make_ibslocal_request", false,
                                         IBS_ROWS};

// The exiting mark names the TUTONDO builder, deliberately. A property write is counted like a read
// and then refused.
constexpr builder_row BYME_ROWS[] = {
    {"SENDBYMEGROUPVALUEREADDATAGRAM", 2,
     "localclientutil->make_bymelocal_request error too few or too much parameters, "
     "SectionName,  Destination are needed",
     over_socket<bymegateway_request>},
    {"SENDBYMEGROUPVALUEWRITEDATAGRAM", 4,
     "localclientutil->make_bymelocal_request error too few or too much parameters, "
     "SectionName, Destination, DPT, Payload are needed",
     over_socket<bymegateway_request>},
    {"SENDBYMEPROPERTYREADDATAGRAM", 7,
     "localclientutil->make_bymelocal_request error too few or too much parameters, "
     "SectionName, Source, Destination, ObjectIndex, PropertyID, StartAddress, "
     "ElementCount are needed",
     over_socket<bymegateway_request>},
    {"SENDBYMEPROPERTYWRITEDATAGRAM", 7,
     "localclientutil->make_bymelocal_request error too few or too much parameters, "
     "SectionName, Source, Destination, ObjectIndex, PropertyID, StartAddress, "
     "ElementCount are needed",
     nullptr},
    {"SENDBYMEFUNCTIONPROPERTYCOMMANDDATAGRAM", 7,
     "localclientutil->make_bymelocal_request error too few or too much parameters, "
     "SectionName, Source, Destination, ObjectIndex, PropertyID, DataLength, Payload "
     "are needed",
     over_socket<bymegateway_request>},
    {"SENDBYMEFUNCTIONPROPERTYSTATEREADDATAGRAM", 7,
     "localclientutil->make_bymelocal_request error too few or too much parameters, "
     "SectionName, Source, Destination, ObjectIndex, PropertyID, DataLength, Payload "
     "are needed",
     over_socket<bymegateway_request>},
    {"SENDBYMEOBJECTVALUEDATAGRAM", 4,
     "localclientutil->make_bymelocal_request error too few or too much parameters, "
     "SectionName, Index, ObjectID, Payload are needed",
     over_socket<bymegateway_request>},
};
constexpr request_builder BYME_BUILDER = {"entering localclientutil->make_bymelocal_request",
                                          "exiting localclientutil->make_tutondolocal_request",
                                          false, BYME_ROWS};

} // namespace

int make_eibuslocal_request(const char *socket_path, const char *function, const char *parameters) {
    return build_gateway_request(EIBUS_BUILDER, {socket_path, nullptr, 0}, function, parameters);
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
