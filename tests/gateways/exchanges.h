// The thirteen gateway exchanges as their users know them: how they are called, what their messages
// name, which functions they accept and what each function sends.

#pragma once

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
#include "tests/harness/meeting_point.h"

#include <string>

/// The header values of a call, in argument order; what a function does not use may be null.
using header_values = const char *const *;

struct exchange_row {
    const char *name;
    harness::family where;
    int base;
    const char *prefix;
    const char *label;
    const char *tag;         ///< opens the messages
    const char *tail_tag;    ///< opens the number and the tail message
    const char *refusal_tag; ///< opens the message about an unknown function
    const char *daemon;
    const char *tail_daemon; ///< named in the tail message
    const char *quoting;     ///< message by message: Q for 'function', B for function
    const char *function;    ///< one that it accepts
    int (*call)(const char *path, int port, const char *function, header_values v);
};

constexpr harness::family UNIX_SOCKET = harness::family::UNIX_SOCKET;
constexpr harness::family LOOPBACK = harness::family::LOOPBACK;

inline const exchange_row EIB = {"Eib",
                                 UNIX_SOCKET,
                                 100,
                                 "EIBG-",
                                 "EIBG-XXX",
                                 "EIBGatewayutil->eibgateway_local_request",
                                 "EIBGatewayutil->eibgateway_local_request",
                                 "EIBGatewayutil->eibgateway_local_request",
                                 "EIBGateway",
                                 "FSMCore",
                                 "BBBBBBBB",
                                 "SENDEIBUSSETDATAGRAM",
                                 [](const char *path, int, const char *f, header_values v) {
                                     return eibgateway_local_request(path, f, v[0], v[1], v[2],
                                                                     v[3]);
                                 }};
inline const exchange_row SMSTOOL = {"Smstool",
                                     UNIX_SOCKET,
                                     800,
                                     "SMST-",
                                     "SMST-XXX",
                                     "SMSTOOLGatewayutil->smstoolgateway_local_request",
                                     "SMSTGatewayutil->smstoolgateway_local_request",
                                     "SMSTOOLGatewayutil->smstoolgateway_local_request",
                                     "SMSTOOLGateway",
                                     "SMSTOOLGateway",
                                     "QQQQQQQQ",
                                     "SENDSMSTOOLDATAGRAM",
                                     [](const char *path, int, const char *f, header_values v) {
                                         return smstoolgateway_local_request(path, f, v[0], v[1],
                                                                             v[2]);
                                     }};
inline const exchange_row LINTRONIC = {"Lintronic",
                                       UNIX_SOCKET,
                                       1000,
                                       "LINT-",
                                       "LINT-XXX",
                                       "LINTRONICGatewayutil->lintronicgateway_local_request",
                                       "LINTGatewayutil->lintronicgateway_local_request",
                                       "LINTRONICGatewayutil->lintronicgateway_local_request",
                                       "LINTRONICGateway",
                                       "LINTRONICGateway",
                                       "QQQQQQQQ",
                                       "SENDLINTRONICDATAGRAM",
                                       [](const char *path, int, const char *f, header_values v) {
                                           return lintronicgateway_local_request(path, f, v[0],
                                                                                 v[1], v[2], v[3]);
                                       }};
inline const exchange_row TECNOUT = {"Tecnout",
                                     UNIX_SOCKET,
                                     1200,
                                     "TECG-",
                                     "TECG-NNNN",
                                     "TECNOUTGatewayutil->tecnoutgateway_local_request",
                                     "TECNOUTGatewayutil->tecnoutgateway_local_request",
                                     "TECNOUTGatewayutil->tecnoutgateway_local_request",
                                     "TECNOUTGateway",
                                     "TECNOUTGateway",
                                     "QQQQQQQQ",
                                     "SENDTECNOUTCOMMANDDATAGRAM",
                                     [](const char *path, int, const char *f, header_values v) {
                                         return tecnoutgateway_local_request(path, f, v[0], v[1],
                                                                             v[2], v[3]);
                                     }};
inline const exchange_row VIVALDI = {"Vivaldi",
                                     UNIX_SOCKET,
                                     900,
                                     "VIVG-",
                                     "VIVG-NNNN",
                                     "VIVALDIGatewayutil->vivaldigateway_local_request",
                                     "VIVALDIGatewayutil->vivaldigateway_local_request",
                                     "VIVALDIGatewayutil->vivaldigateway_local_request",
                                     "VIVALDIGateway",
                                     "EIBGateway",
                                     "QQQQQQQQ",
                                     "SENDVIVALDISETDATAGRAM",
                                     [](const char *path, int, const char *f, header_values v) {
                                         return vivaldigateway_local_request(
                                             path, f, v[0], v[1], v[2], v[3], v[4], v[5], v[6],
                                             v[7], v[8], v[9], v[10]);
                                     }};
inline const exchange_row BENTEL = {"Bentel",
                                    UNIX_SOCKET,
                                    1300,
                                    "BENG-",
                                    "BENG-NNNN",
                                    "BENTELGatewayutil->bentelgateway_local_request",
                                    "BENTELGatewayutil->bentelgateway_local_request",
                                    "BENTELGatewayutil->bentelgateway_local_request",
                                    "BENTELGateway",
                                    "BENTELGateway",
                                    "QQQQQQQQ",
                                    "SENDBENTELCOMMANDDATAGRAM",
                                    [](const char *path, int, const char *f, header_values v) {
                                        return bentelgateway_local_request(path, f, v[0], v[1],
                                                                           v[2], v[3]);
                                    }};
inline const exchange_row TUTONDO = {"Tutondo",
                                     UNIX_SOCKET,
                                     1500,
                                     "TUTG-",
                                     "TUTG-NNNN",
                                     "TUTONDOGatewayutil->tutondogateway_local_request",
                                     "TUTONDOGatewayutil->tutondogateway_local_request",
                                     "TUTONDOGatewayutil->tutondogateway_local_request",
                                     "TUTONDOGateway",
                                     "EIBGateway",
                                     "QQQQQQQQ",
                                     "SENDTUTONDOSETDATAGRAM",
                                     [](const char *path, int, const char *f, header_values v) {
                                         return tutondogateway_local_request(path, f, v[0], v[1],
                                                                             v[2], v[3]);
                                     }};
inline const exchange_row EIB_TCP = {"EibOverTcp",
                                     LOOPBACK,
                                     100,
                                     "EIBG-",
                                     "EIBG-XXX",
                                     "EIBGatewayutil->eibgateway_internet_request",
                                     "EIBGatewayutil->eibgateway_internet_request",
                                     "EIBGatewayutil->eibgateway_internet_request",
                                     "EIBGateway",
                                     "FSMCore",
                                     "BBBBBBBB",
                                     "SENDEIBUSSETDATAGRAM",
                                     [](const char *, int port, const char *f, header_values v) {
                                         return eibgateway_internet_request("127.0.0.1", port, f,
                                                                            v[0], v[1], v[2], v[3]);
                                     }};
inline const exchange_row ECHOBUS = {"Echobus",
                                     UNIX_SOCKET,
                                     200,
                                     "ECHG-",
                                     "ECHG-XXX",
                                     "ECHOBUSGatewayutil->echobusgateway_local_request",
                                     "ECHOBUSGatewayutil->echobusgateway_local_request",
                                     "ECHOBUSGatewayutil->echobusgateway_local_request",
                                     "ECHOBUSGateway",
                                     "ECHOBUSGateway",
                                     "BBBBBQQQ",
                                     "SENDECHOBUSDATAGRAM",
                                     [](const char *path, int, const char *f, header_values v) {
                                         return echobusgateway_local_request(
                                             path, f, v[0], v[1], v[2], v[3], v[4], v[5]);
                                     }};
inline const exchange_row ECHOBUS_TCP = {
    "EchobusOverTcp",
    LOOPBACK,
    200,
    "ECHG-",
    "ECHG-XXX",
    "ECHOBUSGatewayutil->echobusgateway_internet_request",
    "ECHOBUSGatewayutil->echobusgateway_internet_request",
    "ECHOBUSGatewayutil->echobusgateway_local_request", // names the local exchange
    "ECHOBUSGateway",
    "ECHOBUSGateway",
    "QBBBQQQQ",
    "SENDECHOBUSDATAGRAM",
    [](const char *, int port, const char *f, header_values v) {
        return echobusgateway_internet_request("127.0.0.1", port, f, v[0], v[1], v[2], v[3], v[4],
                                               v[5]);
    }};
inline const exchange_row MARTIN = {"Martin",
                                    UNIX_SOCKET,
                                    600,
                                    "MARG-",
                                    "MARG-XXX",
                                    "MARTINGatewayutil->martingateway_local_request",
                                    "MARTINGatewayutil->martingateway_local_request",
                                    "MARTINGatewayutil->martingateway_local_request",
                                    "MARTINGateway",
                                    "MARTINGateway",
                                    "QQQQQQQQ",
                                    "SENDLJMARTINDATAGRAM",
                                    [](const char *path, int, const char *f, header_values v) {
                                        return martingateway_local_request(path, f, v[0], v[1],
                                                                           v[2], v[3]);
                                    }};
inline const exchange_row IBS = {"Ibs",
                                 UNIX_SOCKET,
                                 1400,
                                 "IBSG-",
                                 "IBSG-NNNN",
                                 "IBSGatewayutil->ibsgateway_request",
                                 "IBSGatewayutil->ibsgateway_request",
                                 "IBSGatewayutil->ibsgateway_request",
                                 "IBSGateway",
                                 "IBSGateway",
                                 "QQQQQQQQ",
                                 "SENDIBSSETDATAGRAM",
                                 [](const char *path, int, const char *f, header_values v) {
                                     return ibsgateway_request(path, f, v[0], v[1], v[2], v[3],
                                                               v[4], v[5]);
                                 }};
inline const exchange_row BYME = {"Byme",
                                  UNIX_SOCKET,
                                  2000,
                                  "BYMEG-",
                                  "BYMEG-NNN",
                                  "ByMEGatewayutil->bymegateway_request",
                                  "ByMEGatewayutil->bymegateway_request",
                                  "ByMEGatewayutil->bymegateway_request",
                                  "ByMEGateway",
                                  "ByMEGateway",
                                  "QQQQQQQQ",
                                  "SENDBYMEGROUPVALUEREADDATAGRAM",
                                  [](const char *path, int, const char *f, header_values v) {
                                      return bymegateway_request(path, f, v[0], v[1], v[2], v[3],
                                                                 v[4], v[5], v[6]);
                                  }};

inline const exchange_row *const EXCHANGES[] = {
    &EIB,     &SMSTOOL, &LINTRONIC,   &TECNOUT, &VIVALDI, &BENTEL, &TUTONDO,
    &EIB_TCP, &ECHOBUS, &ECHOBUS_TCP, &MARTIN,  &IBS,     &BYME};

/// Calls an exchange over a meeting or a deserted point.
template <typename Point>
int call(const exchange_row &exchange, const Point &point, const char *function, header_values v) {
    return exchange.call(point.path.c_str(), point.port, function, v);
}

/// A function with the lines that it sends behind "Request: ", for the values v1, v2, ...
struct request_row {
    const char *name;
    const exchange_row *exchange;
    const char *function;
    const char *lines;
};

/// Values that name their own position, and the marks that they leave in request_row::lines.
inline const char *const NUMBERED_VALUES[] = {"v1", "v2", "v3", "v4",  "v5", "v6",
                                              "v7", "v8", "v9", "v10", "v11"};

inline const request_row REQUESTS[] = {
    {"EibSet", &EIB, "SENDEIBUSSETDATAGRAM",
     "SectionName: v1\nDestination: v2\nEISType: v3\nPayload: v4\n\n"},
    {"EibGet", &EIB, "SENDEIBUSGETDATAGRAM",
     "SectionName: v1\nDestination: v2\nEISType: v3\nPayload: v4\n\n"},
    {"SmstoolSend", &SMSTOOL, "SENDSMSTOOLDATAGRAM", "SectionName: v1\nTo: v2\nMsg: v3\n\n"},
    {"SmstoolReceive", &SMSTOOL, "RECVSMSTOOLDATAGRAM", "From: v2\nMsg: v3\n\n"},
    {"Lintronic", &LINTRONIC, "SENDLINTRONICDATAGRAM",
     "SectionName: v1\nDevice: v2\nCommand: v3\nPayload: v4\n\n"},
    {"Tecnout", &TECNOUT, "SENDTECNOUTCOMMANDDATAGRAM",
     "SectionName: v1\nUserCode: v2\nCommand: v3\nPayload: v4\n\n"},
    {"VivaldiSet", &VIVALDI, "SENDVIVALDISETDATAGRAM",
     "SectionName: v1\nCentralNumber: v2\nCommand: 1\nRC20_Number: v3\nRC20_OnOff: v4\n"
     "RC20_Volume: v5\nRC20_High: v6\nRC20_Low: v7\nRC20_Channel: v8\nRC20_Cd: v9\n"
     "RC20_Track: v10\nRC20_Tuner: v11\n\n"},
    {"VivaldiGet", &VIVALDI, "SENDVIVALDIGETDATAGRAM",
     "SectionName: v1\nCentralNumber: v2\nCommand: 2\nRC20_Number: v3\n\n"},
    {"Bentel", &BENTEL, "SENDBENTELCOMMANDDATAGRAM",
     "SectionName: v1\nUserCode: v2\nCommand: v3\nPayload: v4\n\n"},
    {"TutondoSet", &TUTONDO, "SENDTUTONDOSETDATAGRAM",
     "SectionName: v1\nCommand: v3\nZone_Number: v2\nPayload: v4\n\n"},
    {"TutondoGet", &TUTONDO, "SENDTUTONDOGETDATAGRAM",
     "SectionName: v1\nCommand: v3\nZone_Number: v2\n\n"},
    {"EibOverTcpSet", &EIB_TCP, "SENDEIBUSSETDATAGRAM",
     "SectionName: v1\nDestination: v2\nEISType: v3\nPayload: v4\n\n"},
    {"EibOverTcpGet", &EIB_TCP, "SENDEIBUSGETDATAGRAM",
     "SectionName: v1\nDestination: v2\nEISType: v3\nPayload: v4\n\n"},
    {"Echobus", &ECHOBUS, "SENDECHOBUSDATAGRAM",
     "SectionName: v1\nDeviceType: v2\nCardNumber: v3\nCommandType: v4\nPortNumber: v5\n"
     "Value: v6\n\n"},
    {"EchobusOverTcp", &ECHOBUS_TCP, "SENDECHOBUSDATAGRAM",
     "SectionName: v1\nDeviceType: v2\nCardNumber: v3\nCommandType: v4\nPortNumber: v5\n"
     "Value: v6\n\n"},
    {"Martin", &MARTIN, "SENDLJMARTINDATAGRAM",
     "SectionName: v1\nLJCommand: v2\nLJType: v3\nPayload: v4\n\n"},
    {"Ibs", &IBS, "SENDIBSSETDATAGRAM",
     "SectionName: v1\nDestinationDevice: v2\nDestinationChannel: v3\nDestinationType: v4\n"
     "DataType: v5\nPayload: v6\n\n"},
    {"BymeGroupRead", &BYME, "SENDBYMEGROUPVALUEREADDATAGRAM",
     "SectionName: v1\nDestination: v2\n\n"},
    {"BymeGroupWrite", &BYME, "SENDBYMEGROUPVALUEWRITEDATAGRAM",
     "SectionName: v1\nDestination: v2\nDPT: v3\nPayload: v4\n\n"},
    {"BymePropertyRead", &BYME, "SENDBYMEPROPERTYREADDATAGRAM",
     "SectionName: v1\nSource: v2\nDestination: v3\nObjectIndex: v4\nPropertyID: v5\n"
     "StartAddress: v6\nElementCount: v7\n\n"},
    {"BymePropertyWrite", &BYME, "SENDBYMEPROPERTYWRITEDATAGRAM", "SectionName: v1\n\n"},
    {"BymeFunctionProperty", &BYME, "SENDBYMEFUNCTIONPROPERTYCOMMANDDATAGRAM",
     "SectionName: v1\nSource: v2\nDestination: v3\nObjectIndex: v4\nPropertyID: v5\n"
     "DataLength: v6\nPayload: v7\n\n"},
    {"BymeFunctionPropertyState", &BYME, "SENDBYMEFUNCTIONPROPERTYSTATEREADDATAGRAM",
     "SectionName: v1\nSource: v2\nDestination: v3\nObjectIndex: v4\nPropertyID: v5\n"
     "DataLength: v6\nPayload: v7\n\n"},
    {"BymeObjectValue", &BYME, "SENDBYMEOBJECTVALUEDATAGRAM",
     "SectionName: v1\nIndex: v2\nObjectId: v3\nPayload: v4\n\n"},
};

/// A text in lower-case letters.
inline std::string lower(std::string text) {
    for (char &c : text) {
        c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    }
    return text;
}
