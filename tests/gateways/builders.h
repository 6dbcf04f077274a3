// The gateway request builders as their callers know them: one row per function that is served.

#pragma once

#include "gateways/internetclientutil.h"
#include "gateways/localclientutil.h"
#include "tests/harness/meeting_point.h"

using builder_call = int (*)(const char *path, int port, const char *function,
                             const char *parameters);

template <int (*Builder)(const char *, const char *, const char *)>
int over_path(const char *path, int /*port*/, const char *function, const char *parameters) {
    return Builder(path, function, parameters);
}

template <int (*Builder)(const char *, int, const char *, const char *)>
int over_port(const char * /*path*/, int port, const char *function, const char *parameters) {
    return Builder("127.0.0.1", port, function, parameters);
}

struct builder_row_wanted {
    const char *name;
    builder_call build;
    harness::family where;
    const char *function;
    int count;
    const char *count_message;
    const char *parameters; ///< a list of that count
    const char *lines;      ///< what is sent behind the first line; null: nothing, 503
    const char *prefix;     ///< of the daemon's answer
};

constexpr harness::family SOCKET = harness::family::UNIX_SOCKET;
constexpr harness::family TCP = harness::family::LOOPBACK;

constexpr builder_call BUILD_EIB = over_path<make_eibuslocal_request>;
constexpr builder_call BUILD_SMSTOOL = over_path<make_smstoollocal_request>;
constexpr builder_call BUILD_LINTRONIC = over_path<make_lintroniclocal_request>;
constexpr builder_call BUILD_TECNOUT = over_path<make_tecnoutlocal_request>;
constexpr builder_call BUILD_VIVALDI = over_path<make_vivaldilocal_request>;
constexpr builder_call BUILD_BENTEL = over_path<make_bentellocal_request>;
constexpr builder_call BUILD_TUTONDO = over_path<make_tutondolocal_request>;
constexpr builder_call BUILD_ECHOBUS = over_path<make_echobuslocal_request>;
constexpr builder_call BUILD_MARTIN = over_path<make_martinlocal_request>;
constexpr builder_call BUILD_IBS = over_path<make_ibslocal_request>;
constexpr builder_call BUILD_BYME = over_path<make_bymelocal_request>;
constexpr builder_call BUILD_EIB_TCP = over_port<make_eibusinternet_request>;
constexpr builder_call BUILD_ECHOBUS_TCP = over_port<make_echobusinternet_request>;

inline const builder_row_wanted BUILDERS[] = {
    {"EibSet", BUILD_EIB, SOCKET, "SENDEIBUSSETDATAGRAM", 4,
     "localclientutil->make_eibuslocal_request error too few or too much parameters, SectionName, "
     "Destination, EISType, Payload are needed",
     "hall|1/2/3|1|on", "SectionName: hall\nDestination: 1/2/3\nEISType: 1\nPayload: on\n\n",
     "EIBG-"},
    {"EibGet", BUILD_EIB, SOCKET, "SENDEIBUSGETDATAGRAM", 4,
     "localclientutil->make_eibuslocal_request error too few or too much parameters, SectionName, "
     "Destination, EISType, Payload are needed",
     "hall|1/2/3|1|x", "SectionName: hall\nDestination: 1/2/3\nEISType: 1\nPayload: x\n\n",
     "EIBG-"},
    {"SmstoolSend", BUILD_SMSTOOL, SOCKET, "SENDSMSTOOLDATAGRAM", 3,
     "localclientutil->make_smstoollocal_request error too few or too much parameters, "
     "SectionName, PhoneNumber, Msg are needed",
     "modem|+39055|good day", "SectionName: modem\nTo: +39055\nMsg: good day\n\n", "SMST-"},
    {"SmstoolReceive", BUILD_SMSTOOL, SOCKET, "RECVSMSTOOLDATAGRAM", 2,
     "localclientutil->make_smstoollocal_request error too few or too much parameters, "
     "PhoneNumber, Msg are needed",
     "+39055|good day", "From: +39055\nMsg: good day\n\n", "SMST-"},
    {"Lintronic", BUILD_LINTRONIC, SOCKET, "SENDLINTRONICDATAGRAM", 4,
     "localclientutil->make_lintroniclocal_request error too few or too much parameters, "
     "SectionName, Device, Command,  Payload are needed",
     "cellar|07|012|on", "SectionName: cellar\nDevice: 07\nCommand: 012\nPayload: on\n\n", "LINT-"},
    {"Tecnout", BUILD_TECNOUT, SOCKET, "SENDTECNOUTCOMMANDDATAGRAM", 4,
     "localclientutil->make_tecnoutlocal_request error too few or too much parameters, "
     "SectionName, UserCode, Command, Payload are needed",
     "alarm|1234|arm|all", "SectionName: alarm\nUserCode: 1234\nCommand: arm\nPayload: all\n\n",
     "TECG-"},
    {"VivaldiSet", BUILD_VIVALDI, SOCKET, "SENDVIVALDISETDATAGRAM", 11,
     "localclientutil->make_vivaldilocal_request error too few or too much parameters, "
     "SectionName, CentralNumber, RC20Number, RC20OnOff, RC20Volume, RC20High, RC20Low, "
     "RC20Channel, RC20Cd, RC20Track, RC20Tuner are needed",
     "music|1|2|3|4|5|6|7|8|9|10",
     "SectionName: music\nCentralNumber: 1\nCommand: 1\nRC20_Number: 2\nRC20_OnOff: 3\n"
     "RC20_Volume: 4\nRC20_High: 5\nRC20_Low: 6\nRC20_Channel: 7\nRC20_Cd: 8\nRC20_Track: 9\n"
     "RC20_Tuner: 10\n\n",
     "VIVG-"},
    {"Bentel", BUILD_BENTEL, SOCKET, "SENDBENTELCOMMANDDATAGRAM", 4,
     "localclientutil->make_bentellocal_request error too few or too much parameters, "
     "SectionName, UserCode, Command, Payload are needed",
     "alarm|1234|arm|all", "SectionName: alarm\nUserCode: 1234\nCommand: arm\nPayload: all\n\n",
     "BENG-"},
    {"TutondoSet", BUILD_TUTONDO, SOCKET, "SENDTUTONDOSETDATAGRAM", 4,
     "localclientutil->make_tutondolocal_request error too few or too much parameters, "
     "SectionName,  ZoneNumber, Command, Payload are needed",
     "music|3|volume|20", "SectionName: music\nCommand: volume\nZone_Number: 3\nPayload: 20\n\n",
     "TUTG-"},
    {"TutondoGet", BUILD_TUTONDO, SOCKET, "SENDTUTONDOGETDATAGRAM", 4,
     "localclientutil->make_tutondolocal_request error too few or too much parameters, "
     "SectionName, ZoneNumber, Command, Payload are needed",
     "music|3|volume|x", "SectionName: music\nCommand: volume\nZone_Number: 3\n\n", "TUTG-"},
    {"Echobus", BUILD_ECHOBUS, SOCKET, "SENDECHOBUSDATAGRAM", 6,
     "localclientutil->make_echobuslocal_request error too few or too much parameters, "
     "SectionName, DeviceType, CardNumber, CommandType, PortNumber, Value are needed",
     "bus|io|1|set|2|255",
     "SectionName: bus\nDeviceType: io\nCardNumber: 1\nCommandType: set\nPortNumber: 2\n"
     "Value: 255\n\n",
     "ECHG-"},
    {"Martin", BUILD_MARTIN, SOCKET, "SENDLJMARTINDATAGRAM", 4,
     "localclientutil->make_eibuslocal_request error too few or too much parameters, SectionName, "
     "LJCommand, LJType, Payload are needed",
     "stage|go|scene|5", "SectionName: stage\nLJCommand: go\nLJType: scene\nPayload: 5\n\n",
     "MARG-"},
    {"Ibs", BUILD_IBS, SOCKET, "SENDIBSSETDATAGRAM", 6,
     "localclientutil->make_ibslocal_request error too few or too much parameters, SectionName, "
     "DestinationDevice, DestinationChannel, DestinationType, DataType, Payload are needed",
     "bus|4|2|relay|bit|1",
     "SectionName: bus\nDestinationDevice: 4\nDestinationChannel: 2\nDestinationType: relay\n"
     "DataType: bit\nPayload: 1\n\n",
     "IBSG-"},
    {"BymeGroupRead", BUILD_BYME, SOCKET, "SENDBYMEGROUPVALUEREADDATAGRAM", 2,
     "localclientutil->make_bymelocal_request error too few or too much parameters, SectionName,  "
     "Destination are needed",
     "flat|0x0801", "SectionName: flat\nDestination: 0x0801\n\n", "BYMEG-"},
    {"BymeGroupWrite", BUILD_BYME, SOCKET, "SENDBYMEGROUPVALUEWRITEDATAGRAM", 4,
     "localclientutil->make_bymelocal_request error too few or too much parameters, SectionName, "
     "Destination, DPT, Payload are needed",
     "flat|0x0801|1.001|1", "SectionName: flat\nDestination: 0x0801\nDPT: 1.001\nPayload: 1\n\n",
     "BYMEG-"},
    {"BymePropertyRead", BUILD_BYME, SOCKET, "SENDBYMEPROPERTYREADDATAGRAM", 7,
     "localclientutil->make_bymelocal_request error too few or too much parameters, SectionName, "
     "Source, Destination, ObjectIndex, PropertyID, StartAddress, ElementCount are needed",
     "flat|1|2|3|4|5|6",
     "SectionName: flat\nSource: 1\nDestination: 2\nObjectIndex: 3\nPropertyID: 4\n"
     "StartAddress: 5\nElementCount: 6\n\n",
     "BYMEG-"},
    {"BymePropertyWrite", BUILD_BYME, SOCKET, "SENDBYMEPROPERTYWRITEDATAGRAM", 7,
     "localclientutil->make_bymelocal_request error too few or too much parameters, SectionName, "
     "Source, Destination, ObjectIndex, PropertyID, StartAddress, ElementCount are needed",
     "flat|1|2|3|4|5|6", nullptr, "BYMEG-"},
    {"BymeFunctionProperty", BUILD_BYME, SOCKET, "SENDBYMEFUNCTIONPROPERTYCOMMANDDATAGRAM", 7,
     "localclientutil->make_bymelocal_request error too few or too much parameters, SectionName, "
     "Source, Destination, ObjectIndex, PropertyID, DataLength, Payload are needed",
     "flat|1|2|3|4|5|6",
     "SectionName: flat\nSource: 1\nDestination: 2\nObjectIndex: 3\nPropertyID: 4\n"
     "DataLength: 5\nPayload: 6\n\n",
     "BYMEG-"},
    {"BymeFunctionPropertyState", BUILD_BYME, SOCKET, "SENDBYMEFUNCTIONPROPERTYSTATEREADDATAGRAM",
     7,
     "localclientutil->make_bymelocal_request error too few or too much parameters, SectionName, "
     "Source, Destination, ObjectIndex, PropertyID, DataLength, Payload are needed",
     "flat|1|2|3|4|5|6",
     "SectionName: flat\nSource: 1\nDestination: 2\nObjectIndex: 3\nPropertyID: 4\n"
     "DataLength: 5\nPayload: 6\n\n",
     "BYMEG-"},
    {"BymeObjectValue", BUILD_BYME, SOCKET, "SENDBYMEOBJECTVALUEDATAGRAM", 4,
     "localclientutil->make_bymelocal_request error too few or too much parameters, SectionName, "
     "Index, ObjectID, Payload are needed",
     "flat|1|2|3", "SectionName: flat\nIndex: 1\nObjectId: 2\nPayload: 3\n\n", "BYMEG-"},
    {"EibOverTcpSet", BUILD_EIB_TCP, TCP, "SENDEIBUSSETDATAGRAM", 4,
     "internetclientutil->make_eibusinternet_request error too few or too much parameters, "
     "SectionName, Destination, EISType, Payload are needed",
     "hall|1/2/3|1|on", "SectionName: hall\nDestination: 1/2/3\nEISType: 1\nPayload: on\n\n",
     "EIBG-"},
    {"EibOverTcpGet", BUILD_EIB_TCP, TCP, "SENDEIBUSGETDATAGRAM", 4,
     "internetclientutil->make_eibusinternet_request error too few or too much parameters, "
     "SectionName, Destination, EISType, Payload are needed",
     "hall|1/2/3|1|x", "SectionName: hall\nDestination: 1/2/3\nEISType: 1\nPayload: x\n\n",
     "EIBG-"},
    {"EchobusOverTcp", BUILD_ECHOBUS_TCP, TCP, "SENDECHOBUSDATAGRAM", 6,
     "internetclientutil->make_echobusinternet_request error too few or too much parameters, "
     "SectionName, DeviceType, CardNumber, CommandType, PortNumber, Value are needed",
     "bus|io|1|set|2|255",
     "SectionName: bus\nDeviceType: io\nCardNumber: 1\nCommandType: set\nPortNumber: 2\n"
     "Value: 255\n\n",
     "ECHG-"},
};
