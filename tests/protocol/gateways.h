// The gateways as their users know them, one row each: what a new gateway or a new request needs
// for all tests stands here. A row says what follows from no rule: what its codes and answers look
// like, what each of its functions sends, and where its texts are not the usual ones.

#pragma once

#include "tests/protocol/gateway_row.h"

#include <string>
#include <vector>

namespace protocol {

// Short facts share a line here.
// clang-format off
inline const std::vector<function_row> EIB_FUNCTIONS = {
    {.name = "SENDEIBUSSETDATAGRAM",
     .lines = "SectionName: {1}\nDestination: {2}\nEISType: {3}\nPayload: {4}\n"},
    {.name = "SENDEIBUSGETDATAGRAM",
     .lines = "SectionName: {1}\nDestination: {2}\nEISType: {3}\nPayload: {4}\n"},
};

inline const std::vector<function_row> ECHOBUS_FUNCTIONS = {
    {.name = "SENDECHOBUSDATAGRAM",
     .lines = "SectionName: {1}\nDeviceType: {2}\nCardNumber: {3}\nCommandType: {4}\n"
              "PortNumber: {5}\nValue: {6}\n"},
};

/// In the order in which the help lists those that it lists.
inline const gateway_row GATEWAYS[] = {
    {.name = "EIB", .local_type = 101, .base = 100, .prefix = "EIBG-", .digits = 3,
     .tail_daemon = "FSMCore", .quoting = "BBBBBBBB",
     .builder = "localclientutil->make_eibuslocal_request", .functions = EIB_FUNCTIONS},
    {.name = "SMSTOOL", .local_type = 107, .base = 800, .prefix = "SMST-", .digits = 3,
     .tail_tag = "SMSTGatewayutil->smstoolgateway_local_request",
     .functions = {{.name = "SENDSMSTOOLDATAGRAM",
                    .lines = "SectionName: {1}\nTo: {2}\nMsg: {3}\n",
                    .needed = "SectionName, PhoneNumber, Msg"},
                   {.name = "RECVSMSTOOLDATAGRAM", .lines = "From: {2}\nMsg: {3}\n",
                    .needed = "PhoneNumber, Msg", .first_value = 2}},
     .advertised = "SENDSMSTOOLDATAGRAM", .advertised_list = "SectionName|To|Message"},
    {.name = "LINTRONIC", .local_type = 109, .base = 1000, .prefix = "LINT-", .digits = 3,
     .tail_tag = "LINTGatewayutil->lintronicgateway_local_request",
     .functions = {{.name = "SENDLINTRONICDATAGRAM",
                    .lines = "SectionName: {1}\nDevice: {2}\nCommand: {3}\nPayload: {4}\n",
                    .sample = "cellar|07|012|on",
                    .needed = "SectionName, Device, Command,  Payload",
                    .widths = {{2, 2, "Device is not in 2-digit-zero-filled format"},
                               {3, 3, "Command is not in 3-digit-zero-filled format"}}}},
     .advertised = "SENDLINTRONICRAWDATAGRAM"},
    {.name = "TECNOUT", .local_type = 111, .base = 1200, .prefix = "TECG-", .shown = "TECN-",
     .functions = {{.name = "SENDTECNOUTCOMMANDDATAGRAM",
                    .lines = "SectionName: {1}\nUserCode: {2}\nCommand: {3}\nPayload: {4}\n"}}},
    {.name = "VIVALDI", .local_type = 113, .base = 900, .prefix = "VIVG-",
     .tail_daemon = "EIBGateway",
     .functions = {{.name = "SENDVIVALDISETDATAGRAM",
                    .lines = "SectionName: {1}\nCentralNumber: {2}\nCommand: 1\nRC20_Number: {3}\n"
                             "RC20_OnOff: {4}\nRC20_Volume: {5}\nRC20_High: {6}\nRC20_Low: {7}\n"
                             "RC20_Channel: {8}\nRC20_Cd: {9}\nRC20_Track: {10}\n"
                             "RC20_Tuner: {11}\n",
                    .needed = "SectionName, CentralNumber, RC20Number, RC20OnOff, RC20Volume, "
                              "RC20High, RC20Low, RC20Channel, RC20Cd, RC20Track, RC20Tuner"},
                   {.name = "SENDVIVALDIGETDATAGRAM",
                    .lines = "SectionName: {1}\nCentralNumber: {2}\nCommand: 2\nRC20_Number: {3}\n",
                    .built = builder_answer::REFUSES}},
     .advertised_list = "SectionName|CentralNumber|RC20Number|RC20OnOff|RC20Volume..."},
    {.name = "BENTEL", .local_type = 115, .base = 1300, .prefix = "BENG-", .shown = "BENT-",
     .functions = {{.name = "SENDBENTELCOMMANDDATAGRAM",
                    .lines = "SectionName: {1}\nUserCode: {2}\nCommand: {3}\nPayload: {4}\n"}}},
    {.name = "TUTONDO", .local_type = 121, .base = 1500, .prefix = "TUTG-",
     .tail_daemon = "EIBGateway",
     .functions = {{.name = "SENDTUTONDOSETDATAGRAM",
                    .lines = "SectionName: {1}\nCommand: {3}\nZone_Number: {2}\nPayload: {4}\n",
                    .sample = "music|3|volume|20",
                    .needed = "SectionName,  ZoneNumber, Command, Payload"},
                   {.name = "SENDTUTONDOGETDATAGRAM",
                    .lines = "SectionName: {1}\nCommand: {3}\nZone_Number: {2}\n",
                    .sample = "music|3|volume|x",
                    .needed = "SectionName, ZoneNumber, Command, Payload"}},
     .advertised_list = "SectionName|ZoneNumber|Command|Payload", .help_gap = " "},
    {.name = "ECHOBUS", .base = 200, .prefix = "ECHG-", .digits = 3, .quoting = "BBBBBQQQ",
     .functions = ECHOBUS_FUNCTIONS},
    {.name = "MARTIN", .base = 600, .prefix = "MARG-", .digits = 3,
     .count_tag = "localclientutil->make_eibuslocal_request",
     .functions = {{.name = "SENDLJMARTINDATAGRAM",
                    .lines = "SectionName: {1}\nLJCommand: {2}\nLJType: {3}\nPayload: {4}\n"}}},
    {.name = "IBS", .base = 1400, .prefix = "IBSG-", .tag = "IBSGatewayutil->ibsgateway_request",
     .functions = {{.name = "SENDIBSSETDATAGRAM",
                    .lines = "SectionName: {1}\nDestinationDevice: {2}\nDestinationChannel: {3}\n"
                             "DestinationType: {4}\nDataType: {5}\nPayload: {6}\n"}}},
    {.name = "BYME", .base = 2000, .prefix = "BYMEG-", .label = "BYMEG-NNN",
     .daemon = "ByMEGateway", .tag = "ByMEGatewayutil->bymegateway_request",
     .functions = {{.name = "SENDBYMEGROUPVALUEREADDATAGRAM",
                    .lines = "SectionName: {1}\nDestination: {2}\n",
                    .needed = "SectionName,  Destination"},
                   {.name = "SENDBYMEGROUPVALUEWRITEDATAGRAM",
                    .lines = "SectionName: {1}\nDestination: {2}\nDPT: {3}\nPayload: {4}\n"},
                   {.name = "SENDBYMEPROPERTYREADDATAGRAM",
                    .lines = "SectionName: {1}\nSource: {2}\nDestination: {3}\nObjectIndex: {4}\n"
                             "PropertyID: {5}\nStartAddress: {6}\nElementCount: {7}\n"},
                   {.name = "SENDBYMEPROPERTYWRITEDATAGRAM", .lines = "SectionName: {1}\n",
                    .sample = "flat|1|2|3|4|5|6",
                    .needed = "SectionName, Source, Destination, ObjectIndex, PropertyID, "
                              "StartAddress, ElementCount",
                    .built = builder_answer::COUNTS_AND_REFUSES},
                   {.name = "SENDBYMEFUNCTIONPROPERTYCOMMANDDATAGRAM",
                    .lines = "SectionName: {1}\nSource: {2}\nDestination: {3}\nObjectIndex: {4}\n"
                             "PropertyID: {5}\nDataLength: {6}\nPayload: {7}\n"},
                   {.name = "SENDBYMEFUNCTIONPROPERTYSTATEREADDATAGRAM",
                    .lines = "SectionName: {1}\nSource: {2}\nDestination: {3}\nObjectIndex: {4}\n"
                             "PropertyID: {5}\nDataLength: {6}\nPayload: {7}\n"},
                   {.name = "SENDBYMEOBJECTVALUEDATAGRAM",
                    .lines = "SectionName: {1}\nIndex: {2}\nObjectId: {3}\nPayload: {4}\n",
                    .needed = "SectionName, Index, ObjectID, Payload"}}},
    {.name = "EIB", .where = harness::family::LOOPBACK, .base = 100, .prefix = "EIBG-", .digits = 3,
     .tail_daemon = "FSMCore", .quoting = "BBBBBBBB",
     .builder = "internetclientutil->make_eibusinternet_request", .functions = EIB_FUNCTIONS},
    {.name = "ECHOBUS", .where = harness::family::LOOPBACK, .base = 200, .prefix = "ECHG-",
     .digits = 3,
     .refusal_tag = "ECHOBUSGatewayutil->echobusgateway_local_request", // names the local one
     .quoting = "QBBBQQQQ", .builder = "internetclientutil->make_echobusinternet_request",
     .functions = ECHOBUS_FUNCTIONS},
};
// clang-format on

/// Any gateway that the command line reaches; for what is true of each.
inline const gateway_row &any_gateway() {
    return GATEWAYS[0];
}

/// The functions of all gateways.
inline std::vector<function_case> all_functions() {
    std::vector<function_case> cases;
    for (const gateway_row &row : GATEWAYS) {
        for (const function_row &function : row.functions) {
            cases.push_back({row, function});
        }
    }
    return cases;
}

// The request types: a keyword of -t each. Those of a gateway follow from its row.

/// What a complete request of a type needs.
struct need_row {
    const char *in_words; ///< as the message asks for it
    words required;       ///< the options
    const char *idle;     ///< options that the type neither needs nor minds
};

inline const need_row SOAP_NEED = {
    "url and function", {"-u U", "-f F"}, "-s S -a A -d 2000 -p P -w 5"};
inline const need_row LOCAL_NEED = {
    "socket, function and request", {"-s S", "-f F", "-p P"}, "-a A -d 2000 -u U -w 5"};
inline const need_row INTERNET_NEED = {
    "address, port, function and request", {"-a A", "-d 2000", "-f F", "-p P"}, "-s S -u U -w 5"};

struct request_type_row {
    std::string keyword;
    int code;
    std::string line;     ///< what selecting the type says; red when it is unsupported, else green
    const need_row *need; ///< null: the type is unsupported
    bool carried;         ///< by a client
};

inline std::vector<request_type_row> request_types() {
    std::vector<request_type_row> all = {
        {"SOAP", 100, "Soap request selected", &SOAP_NEED, true},
        {"FSMCORE", 120, "FSMCore local request selected", &LOCAL_NEED, true}};
    for (const gateway_row &row : GATEWAYS) {
        const std::string name = row.name;
        if (is_reachable(row)) {
            all.push_back({name + "LOCAL", row.local_type, name + " Local request selected",
                           &LOCAL_NEED, true});
            all.push_back({name + "INTERNET", row.local_type + 1,
                           name + " Internet request selected", &INTERNET_NEED, false});
        } else if (row.where == harness::family::UNIX_SOCKET) {
            for (const char *end : {"LOCAL", "INTERNET"}) {
                all.push_back(
                    {name + end, UNSUPPORTED, name + " requests unsupported!", nullptr, false});
            }
        }
    }
    return all;
}

/// The message about a request of the type that lacks something.
inline std::string need_message(const request_type_row &row) {
    return std::string("utility->parse_cmd_line malformed request: ") + row.need->in_words +
           " paremeters required for " + row.keyword;
}

} // namespace protocol
