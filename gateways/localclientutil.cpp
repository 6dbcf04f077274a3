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

/// The functions that the builders serve, builder by builder. Double blanks are part of the count
/// messages, and so of the interface.
constexpr builder_row ROWS[] = {
    {"make_eibuslocal_request", "SENDEIBUSSETDATAGRAM",
     "SectionName, Destination, EISType, Payload", &EIB_GATEWAY},
    {"make_eibuslocal_request", "SENDEIBUSGETDATAGRAM",
     "SectionName, Destination, EISType, Payload", &EIB_GATEWAY},
    {"make_smstoollocal_request", "SENDSMSTOOLDATAGRAM", "SectionName, PhoneNumber, Msg",
     &SMSTOOL_GATEWAY},
    // No section: the exchange gets none, then the two parameters.
    {"make_smstoollocal_request",
     "RECVSMSTOOLDATAGRAM",
     "PhoneNumber, Msg",
     &SMSTOOL_GATEWAY,
     {.absent_before = 1}},
    {"make_lintroniclocal_request",
     "SENDLINTRONICDATAGRAM",
     "SectionName, Device, Command,  Payload",
     &LINTRONIC_GATEWAY,
     {.acceptable = lintronic_lengths_are_right}},
    {"make_tecnoutlocal_request", "SENDTECNOUTCOMMANDDATAGRAM",
     "SectionName, UserCode, Command, Payload", &TECNOUT_GATEWAY},
    // The get request is not served, although the exchange knows it.
    {"make_vivaldilocal_request", "SENDVIVALDISETDATAGRAM",
     "SectionName, CentralNumber, RC20Number, RC20OnOff, RC20Volume, RC20High, RC20Low, "
     "RC20Channel, RC20Cd, RC20Track, RC20Tuner",
     &VIVALDI_GATEWAY},
    {"make_bentellocal_request", "SENDBENTELCOMMANDDATAGRAM",
     "SectionName, UserCode, Command, Payload", &BENTEL_GATEWAY},
    {"make_tutondolocal_request", "SENDTUTONDOSETDATAGRAM",
     "SectionName,  ZoneNumber, Command, Payload", &TUTONDO_GATEWAY},
    {"make_tutondolocal_request", "SENDTUTONDOGETDATAGRAM",
     "SectionName, ZoneNumber, Command, Payload", &TUTONDO_GATEWAY},
    {"make_echobuslocal_request", "SENDECHOBUSDATAGRAM",
     "SectionName, DeviceType, CardNumber, CommandType, PortNumber, Value", &ECHOBUS_GATEWAY},
    // The message names the EIB builder, deliberately.
    {"make_martinlocal_request",
     "SENDLJMARTINDATAGRAM",
     "SectionName, LJCommand, LJType, Payload",
     &MARTIN_GATEWAY,
     {.blamed = "make_eibuslocal_request"}},
    {"make_ibslocal_request", "SENDIBSSETDATAGRAM",
     "SectionName, DestinationDevice, DestinationChannel, DestinationType, DataType, Payload",
     &IBS_GATEWAY},
    {"make_bymelocal_request", "SENDBYMEGROUPVALUEREADDATAGRAM", "SectionName,  Destination",
     &BYME_GATEWAY},
    {"make_bymelocal_request", "SENDBYMEGROUPVALUEWRITEDATAGRAM",
     "SectionName, Destination, DPT, Payload", &BYME_GATEWAY},
    {"make_bymelocal_request", "SENDBYMEPROPERTYREADDATAGRAM",
     "SectionName, Source, Destination, ObjectIndex, PropertyID, StartAddress, ElementCount",
     &BYME_GATEWAY},
    {"make_bymelocal_request",
     "SENDBYMEPROPERTYWRITEDATAGRAM",
     "SectionName, Source, Destination, ObjectIndex, PropertyID, StartAddress, ElementCount",
     &BYME_GATEWAY,
     {.unserved = true}},
    {"make_bymelocal_request", "SENDBYMEFUNCTIONPROPERTYCOMMANDDATAGRAM",
     "SectionName, Source, Destination, ObjectIndex, PropertyID, DataLength, Payload",
     &BYME_GATEWAY},
    {"make_bymelocal_request", "SENDBYMEFUNCTIONPROPERTYSTATEREADDATAGRAM",
     "SectionName, Source, Destination, ObjectIndex, PropertyID, DataLength, Payload",
     &BYME_GATEWAY},
    {"make_bymelocal_request", "SENDBYMEOBJECTVALUEDATAGRAM",
     "SectionName, Index, ObjectID, Payload", &BYME_GATEWAY},
};

#define BUILDER_NAME(NAME) #NAME,
constexpr std::string_view BUILDERS[] = {LOCAL_BUILDERS(BUILDER_NAME)};
#undef BUILDER_NAME

consteval bool every_row_has_a_builder() {
    for (const builder_row &row : ROWS) {
        bool is_known = false;
        for (const std::string_view builder : BUILDERS) {
            is_known = is_known || builder == row.builder;
        }
        if (!is_known) {
            return false;
        }
    }
    return true;
}
static_assert(every_row_has_a_builder(),
              "a builder of ROWS is not declared: add it to LOCAL_BUILDERS in localclientutil.h");

/// The name in a builder's exiting mark. Two are deliberately not their own.
consteval const char *exits_as(const char *builder) {
    const std::string_view name = builder;
    return name == "make_eibuslocal_request"  ? "make_local_request"
           : name == "make_bymelocal_request" ? "make_tutondolocal_request"
                                              : builder;
}

} // namespace

#define DEFINE_LOCAL_BUILDER(NAME)                                                                 \
    int NAME(const char *socket_path, const char *function, const char *parameters) {              \
        static constexpr request_builder BUILDER = {"localclientutil", #NAME, exits_as(#NAME),     \
                                                    false, rows_of(#NAME, ROWS)};                  \
        return build_gateway_request(BUILDER, {socket_path, nullptr, 0}, function, parameters);    \
    }
LOCAL_BUILDERS(DEFINE_LOCAL_BUILDER)

std::span<const builder_row> local_builder_rows() {
    return ROWS;
}
