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
     .lines = "SectionName: {1}\nDestination: {2}\nEISType: {3}\nPayload: {4}\n",
     .sample = "hall|1/2/3|1|on"},
    {.name = "SENDEIBUSGETDATAGRAM",
     .lines = "SectionName: {1}\nDestination: {2}\nEISType: {3}\nPayload: {4}\n",
     .sample = "hall|1/2/3|1|x"},
};

inline const std::vector<function_row> ECHOBUS_FUNCTIONS = {
    {.name = "SENDECHOBUSDATAGRAM",
     .lines = "SectionName: {1}\nDeviceType: {2}\nCardNumber: {3}\nCommandType: {4}\n"
              "PortNumber: {5}\nValue: {6}\n",
     .sample = "bus|io|1|set|2|255"},
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
                    .sample = "modem|+39055|good day", .needed = "SectionName, PhoneNumber, Msg"},
                   {.name = "RECVSMSTOOLDATAGRAM", .lines = "From: {2}\nMsg: {3}\n",
                    .sample = "+39055|good day", .needed = "PhoneNumber, Msg", .first_value = 2}},
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
                    .lines = "SectionName: {1}\nUserCode: {2}\nCommand: {3}\nPayload: {4}\n",
                    .sample = "alarm|1234|arm|all"}}},
    {.name = "VIVALDI", .local_type = 113, .base = 900, .prefix = "VIVG-",
     .tail_daemon = "EIBGateway",
     .functions = {{.name = "SENDVIVALDISETDATAGRAM",
                    .lines = "SectionName: {1}\nCentralNumber: {2}\nCommand: 1\nRC20_Number: {3}\n"
                             "RC20_OnOff: {4}\nRC20_Volume: {5}\nRC20_High: {6}\nRC20_Low: {7}\n"
                             "RC20_Channel: {8}\nRC20_Cd: {9}\nRC20_Track: {10}\n"
                             "RC20_Tuner: {11}\n",
                    .sample = "music|1|2|3|4|5|6|7|8|9|10",
                    .needed = "SectionName, CentralNumber, RC20Number, RC20OnOff, RC20Volume, "
                              "RC20High, RC20Low, RC20Channel, RC20Cd, RC20Track, RC20Tuner"},
                   {.name = "SENDVIVALDIGETDATAGRAM",
                    .lines = "SectionName: {1}\nCentralNumber: {2}\nCommand: 2\nRC20_Number: {3}\n",
                    .sample = "music|1|3", .built = builder_answer::REFUSES}},
     .advertised_list = "SectionName|CentralNumber|RC20Number|RC20OnOff|RC20Volume..."},
    {.name = "BENTEL", .local_type = 115, .base = 1300, .prefix = "BENG-", .shown = "BENT-",
     .functions = {{.name = "SENDBENTELCOMMANDDATAGRAM",
                    .lines = "SectionName: {1}\nUserCode: {2}\nCommand: {3}\nPayload: {4}\n",
                    .sample = "alarm|1234|arm|all"}}},
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
                    .lines = "SectionName: {1}\nLJCommand: {2}\nLJType: {3}\nPayload: {4}\n",
                    .sample = "stage|go|scene|5"}}},
    {.name = "IBS", .base = 1400, .prefix = "IBSG-", .tag = "IBSGatewayutil->ibsgateway_request",
     .functions = {{.name = "SENDIBSSETDATAGRAM",
                    .lines = "SectionName: {1}\nDestinationDevice: {2}\nDestinationChannel: {3}\n"
                             "DestinationType: {4}\nDataType: {5}\nPayload: {6}\n",
                    .sample = "bus|4|2|relay|bit|1"}}},
    {.name = "BYME", .base = 2000, .prefix = "BYMEG-", .label = "BYMEG-NNN",
     .daemon = "ByMEGateway", .tag = "ByMEGatewayutil->bymegateway_request",
     .functions = {{.name = "SENDBYMEGROUPVALUEREADDATAGRAM",
                    .lines = "SectionName: {1}\nDestination: {2}\n", .sample = "flat|0x0801",
                    .needed = "SectionName,  Destination"},
                   {.name = "SENDBYMEGROUPVALUEWRITEDATAGRAM",
                    .lines = "SectionName: {1}\nDestination: {2}\nDPT: {3}\nPayload: {4}\n",
                    .sample = "flat|0x0801|1.001|1"},
                   {.name = "SENDBYMEPROPERTYREADDATAGRAM",
                    .lines = "SectionName: {1}\nSource: {2}\nDestination: {3}\nObjectIndex: {4}\n"
                             "PropertyID: {5}\nStartAddress: {6}\nElementCount: {7}\n",
                    .sample = "flat|1|2|3|4|5|6"},
                   {.name = "SENDBYMEPROPERTYWRITEDATAGRAM", .lines = "SectionName: {1}\n",
                    .sample = "flat|1|2|3|4|5|6",
                    .needed = "SectionName, Source, Destination, ObjectIndex, PropertyID, "
                              "StartAddress, ElementCount",
                    .built = builder_answer::COUNTS_AND_REFUSES},
                   {.name = "SENDBYMEFUNCTIONPROPERTYCOMMANDDATAGRAM",
                    .lines = "SectionName: {1}\nSource: {2}\nDestination: {3}\nObjectIndex: {4}\n"
                             "PropertyID: {5}\nDataLength: {6}\nPayload: {7}\n",
                    .sample = "flat|1|2|3|4|5|6"},
                   {.name = "SENDBYMEFUNCTIONPROPERTYSTATEREADDATAGRAM",
                    .lines = "SectionName: {1}\nSource: {2}\nDestination: {3}\nObjectIndex: {4}\n"
                             "PropertyID: {5}\nDataLength: {6}\nPayload: {7}\n",
                    .sample = "flat|1|2|3|4|5|6"},
                   {.name = "SENDBYMEOBJECTVALUEDATAGRAM",
                    .lines = "SectionName: {1}\nIndex: {2}\nObjectId: {3}\nPayload: {4}\n",
                    .sample = "flat|1|2|3", .needed = "SectionName, Index, ObjectID, Payload"}}},
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

} // namespace protocol
