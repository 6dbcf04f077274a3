// The gateways as their users know them, one row each: what a new gateway or a new request needs
// for all tests stands here. A row says how the gateway is called, what its messages name, what the
// help advertises and what each of its functions sends.

#pragma once

#include "tests/protocol/gateway_row.h"

#include <vector>

namespace protocol {

inline const gateway_row EIB = {
    .name = "EIB",
    .local_type = 101,
    .internet_type = 102,
    .base = 100,
    .prefix = "EIBG-",
    .label = "EIBG-XXX",
    .tag = "EIBGatewayutil->eibgateway_local_request",
    .daemon = "EIBGateway",
    .tail_daemon = "FSMCore",
    .quoting = "BBBBBBBB",
    .builder = "localclientutil->make_eibuslocal_request",
    .socket = "lumo_eibgateway.socket",
    .advertised_list = "SectionName|Destination|EISType|Payload",
    .functions = {{.name = "SENDEIBUSSETDATAGRAM",
                   .lines = "SectionName: {1}\nDestination: {2}\nEISType: {3}\nPayload: {4}\n",
                   .sample = "hall|1/2/3|1|on",
                   .needed = "SectionName, Destination, EISType, Payload"},
                  {.name = "SENDEIBUSGETDATAGRAM",
                   .lines = "SectionName: {1}\nDestination: {2}\nEISType: {3}\nPayload: {4}\n",
                   .sample = "hall|1/2/3|1|x",
                   .needed = "SectionName, Destination, EISType, Payload"}},
};

inline const gateway_row SMSTOOL = {
    .name = "SMSTOOL",
    .local_type = 107,
    .internet_type = 108,
    .base = 800,
    .prefix = "SMST-",
    .label = "SMST-XXX",
    .tag = "SMSTOOLGatewayutil->smstoolgateway_local_request",
    .tail_tag = "SMSTGatewayutil->smstoolgateway_local_request",
    .daemon = "SMSTOOLGateway",
    .builder = "localclientutil->make_smstoollocal_request",
    .socket = "lumo_smstoolgateway.socket",
    .advertised = "SENDSMSTOOLDATAGRAM",
    .advertised_list = "SectionName|To|Message",
    .functions = {{.name = "SENDSMSTOOLDATAGRAM",
                   .lines = "SectionName: {1}\nTo: {2}\nMsg: {3}\n",
                   .sample = "modem|+39055|good day",
                   .needed = "SectionName, PhoneNumber, Msg"},
                  {.name = "RECVSMSTOOLDATAGRAM",
                   .lines = "From: {2}\nMsg: {3}\n",
                   .sample = "+39055|good day",
                   .needed = "PhoneNumber, Msg",
                   .first_value = 2}},
};

inline const gateway_row LINTRONIC = {
    .name = "LINTRONIC",
    .local_type = 109,
    .internet_type = 110,
    .base = 1000,
    .prefix = "LINT-",
    .label = "LINT-XXX",
    .tag = "LINTRONICGatewayutil->lintronicgateway_local_request",
    .tail_tag = "LINTGatewayutil->lintronicgateway_local_request",
    .daemon = "LINTRONICGateway",
    .builder = "localclientutil->make_lintroniclocal_request",
    .socket = "lumo_lintronicgateway.socket",
    .advertised = "SENDLINTRONICRAWDATAGRAM",
    .advertised_list = "SectionName|Device|Command|Payload",
    .functions = {{.name = "SENDLINTRONICDATAGRAM",
                   .lines = "SectionName: {1}\nDevice: {2}\nCommand: {3}\nPayload: {4}\n",
                   .sample = "cellar|07|012|on",
                   .needed = "SectionName, Device, Command,  Payload"}},
};

inline const gateway_row TECNOUT = {
    .name = "TECNOUT",
    .local_type = 111,
    .internet_type = 112,
    .base = 1200,
    .prefix = "TECG-",
    .shown = "TECN-",
    .label = "TECG-NNNN",
    .tag = "TECNOUTGatewayutil->tecnoutgateway_local_request",
    .daemon = "TECNOUTGateway",
    .builder = "localclientutil->make_tecnoutlocal_request",
    .socket = "lumo_tecnoutgateway.socket",
    .advertised_list = "SectionName|UserCode|Command|Payload",
    .functions = {{.name = "SENDTECNOUTCOMMANDDATAGRAM",
                   .lines = "SectionName: {1}\nUserCode: {2}\nCommand: {3}\nPayload: {4}\n",
                   .sample = "alarm|1234|arm|all",
                   .needed = "SectionName, UserCode, Command, Payload"}},
};

inline const gateway_row VIVALDI = {
    .name = "VIVALDI",
    .local_type = 113,
    .internet_type = 114,
    .base = 900,
    .prefix = "VIVG-",
    .label = "VIVG-NNNN",
    .tag = "VIVALDIGatewayutil->vivaldigateway_local_request",
    .daemon = "VIVALDIGateway",
    .tail_daemon = "EIBGateway",
    .builder = "localclientutil->make_vivaldilocal_request",
    .socket = "lumo_vivaldigateway.socket",
    .advertised_list = "SectionName|CentralNumber|RC20Number|RC20OnOff|RC20Volume...",
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
                   .built = builder_answer::REFUSES}},
};

inline const gateway_row BENTEL = {
    .name = "BENTEL",
    .local_type = 115,
    .internet_type = 116,
    .base = 1300,
    .prefix = "BENG-",
    .shown = "BENT-",
    .label = "BENG-NNNN",
    .tag = "BENTELGatewayutil->bentelgateway_local_request",
    .daemon = "BENTELGateway",
    .builder = "localclientutil->make_bentellocal_request",
    .socket = "lumo_bentelgateway.socket",
    .advertised_list = "SectionName|UserCode|Command|Payload",
    .functions = {{.name = "SENDBENTELCOMMANDDATAGRAM",
                   .lines = "SectionName: {1}\nUserCode: {2}\nCommand: {3}\nPayload: {4}\n",
                   .sample = "alarm|1234|arm|all",
                   .needed = "SectionName, UserCode, Command, Payload"}},
};

inline const gateway_row TUTONDO = {
    .name = "TUTONDO",
    .local_type = 121,
    .internet_type = 122,
    .base = 1500,
    .prefix = "TUTG-",
    .label = "TUTG-NNNN",
    .tag = "TUTONDOGatewayutil->tutondogateway_local_request",
    .daemon = "TUTONDOGateway",
    .tail_daemon = "EIBGateway",
    .builder = "localclientutil->make_tutondolocal_request",
    .socket = "lumo_tutondogateway.socket",
    .advertised_list = "SectionName|ZoneNumber|Command|Payload",
    .help_gap = " ",
    .functions = {{.name = "SENDTUTONDOSETDATAGRAM",
                   .lines = "SectionName: {1}\nCommand: {3}\nZone_Number: {2}\nPayload: {4}\n",
                   .sample = "music|3|volume|20",
                   .needed = "SectionName,  ZoneNumber, Command, Payload"},
                  {.name = "SENDTUTONDOGETDATAGRAM",
                   .lines = "SectionName: {1}\nCommand: {3}\nZone_Number: {2}\n",
                   .sample = "music|3|volume|x",
                   .needed = "SectionName, ZoneNumber, Command, Payload"}},
};

inline const gateway_row ECHOBUS = {
    .name = "ECHOBUS",
    .base = 200,
    .prefix = "ECHG-",
    .label = "ECHG-XXX",
    .tag = "ECHOBUSGatewayutil->echobusgateway_local_request",
    .daemon = "ECHOBUSGateway",
    .quoting = "BBBBBQQQ",
    .builder = "localclientutil->make_echobuslocal_request",
    .functions = {{.name = "SENDECHOBUSDATAGRAM",
                   .lines = "SectionName: {1}\nDeviceType: {2}\nCardNumber: {3}\n"
                            "CommandType: {4}\nPortNumber: {5}\nValue: {6}\n",
                   .sample = "bus|io|1|set|2|255",
                   .needed = "SectionName, DeviceType, CardNumber, CommandType, PortNumber, "
                             "Value"}},
};

inline const gateway_row MARTIN = {
    .name = "MARTIN",
    .base = 600,
    .prefix = "MARG-",
    .label = "MARG-XXX",
    .tag = "MARTINGatewayutil->martingateway_local_request",
    .daemon = "MARTINGateway",
    .builder = "localclientutil->make_martinlocal_request",
    .count_tag = "localclientutil->make_eibuslocal_request",
    .functions = {{.name = "SENDLJMARTINDATAGRAM",
                   .lines = "SectionName: {1}\nLJCommand: {2}\nLJType: {3}\nPayload: {4}\n",
                   .sample = "stage|go|scene|5",
                   .needed = "SectionName, LJCommand, LJType, Payload"}},
};

inline const gateway_row IBS = {
    .name = "IBS",
    .base = 1400,
    .prefix = "IBSG-",
    .label = "IBSG-NNNN",
    .tag = "IBSGatewayutil->ibsgateway_request",
    .daemon = "IBSGateway",
    .builder = "localclientutil->make_ibslocal_request",
    .functions = {{.name = "SENDIBSSETDATAGRAM",
                   .lines = "SectionName: {1}\nDestinationDevice: {2}\nDestinationChannel: {3}\n"
                            "DestinationType: {4}\nDataType: {5}\nPayload: {6}\n",
                   .sample = "bus|4|2|relay|bit|1",
                   .needed = "SectionName, DestinationDevice, DestinationChannel, "
                             "DestinationType, DataType, Payload"}},
};

inline const gateway_row BYME = {
    .name = "BYME",
    .base = 2000,
    .prefix = "BYMEG-",
    .label = "BYMEG-NNN",
    .tag = "ByMEGatewayutil->bymegateway_request",
    .daemon = "ByMEGateway",
    .builder = "localclientutil->make_bymelocal_request",
    .functions = {{.name = "SENDBYMEGROUPVALUEREADDATAGRAM",
                   .lines = "SectionName: {1}\nDestination: {2}\n",
                   .sample = "flat|0x0801",
                   .needed = "SectionName,  Destination"},
                  {.name = "SENDBYMEGROUPVALUEWRITEDATAGRAM",
                   .lines = "SectionName: {1}\nDestination: {2}\nDPT: {3}\nPayload: {4}\n",
                   .sample = "flat|0x0801|1.001|1",
                   .needed = "SectionName, Destination, DPT, Payload"},
                  {.name = "SENDBYMEPROPERTYREADDATAGRAM",
                   .lines = "SectionName: {1}\nSource: {2}\nDestination: {3}\nObjectIndex: {4}\n"
                            "PropertyID: {5}\nStartAddress: {6}\nElementCount: {7}\n",
                   .sample = "flat|1|2|3|4|5|6",
                   .needed = "SectionName, Source, Destination, ObjectIndex, PropertyID, "
                             "StartAddress, ElementCount"},
                  {.name = "SENDBYMEPROPERTYWRITEDATAGRAM",
                   .lines = "SectionName: {1}\n",
                   .sample = "flat|1|2|3|4|5|6",
                   .needed = "SectionName, Source, Destination, ObjectIndex, PropertyID, "
                             "StartAddress, ElementCount",
                   .built = builder_answer::COUNTS_AND_REFUSES},
                  {.name = "SENDBYMEFUNCTIONPROPERTYCOMMANDDATAGRAM",
                   .lines = "SectionName: {1}\nSource: {2}\nDestination: {3}\nObjectIndex: {4}\n"
                            "PropertyID: {5}\nDataLength: {6}\nPayload: {7}\n",
                   .sample = "flat|1|2|3|4|5|6",
                   .needed = "SectionName, Source, Destination, ObjectIndex, PropertyID, "
                             "DataLength, Payload"},
                  {.name = "SENDBYMEFUNCTIONPROPERTYSTATEREADDATAGRAM",
                   .lines = "SectionName: {1}\nSource: {2}\nDestination: {3}\nObjectIndex: {4}\n"
                            "PropertyID: {5}\nDataLength: {6}\nPayload: {7}\n",
                   .sample = "flat|1|2|3|4|5|6",
                   .needed = "SectionName, Source, Destination, ObjectIndex, PropertyID, "
                             "DataLength, Payload"},
                  {.name = "SENDBYMEOBJECTVALUEDATAGRAM",
                   .lines = "SectionName: {1}\nIndex: {2}\nObjectId: {3}\nPayload: {4}\n",
                   .sample = "flat|1|2|3",
                   .needed = "SectionName, Index, ObjectID, Payload"}},
};

// Over TCP a gateway differs in its sources' names, which its messages show.

inline const gateway_row EIB_TCP = [] {
    gateway_row row = EIB;
    row.where = harness::family::LOOPBACK;
    row.tag = "EIBGatewayutil->eibgateway_internet_request";
    row.builder = "internetclientutil->make_eibusinternet_request";
    return row;
}();

inline const gateway_row ECHOBUS_TCP = [] {
    gateway_row row = ECHOBUS;
    row.where = harness::family::LOOPBACK;
    row.tag = "ECHOBUSGatewayutil->echobusgateway_internet_request";
    row.refusal_tag = "ECHOBUSGatewayutil->echobusgateway_local_request"; // names the local one
    row.quoting = "QBBBQQQQ";
    row.builder = "internetclientutil->make_echobusinternet_request";
    return row;
}();

/// In the order in which the help lists those that it lists.
inline const gateway_row *const GATEWAYS[] = {&EIB,    &SMSTOOL, &LINTRONIC,  &TECNOUT, &VIVALDI,
                                              &BENTEL, &TUTONDO, &ECHOBUS,    &MARTIN,  &IBS,
                                              &BYME,   &EIB_TCP, &ECHOBUS_TCP};

/// The functions that `wanted` holds for.
template <typename Wanted> std::vector<function_case> functions_that(Wanted wanted) {
    std::vector<function_case> cases;
    for (const gateway_row *row : GATEWAYS) {
        for (const function_row &function : row->functions) {
            if (wanted(*row, function)) {
                cases.push_back({row, &function});
            }
        }
    }
    return cases;
}

} // namespace protocol
