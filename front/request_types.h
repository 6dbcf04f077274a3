// The request types: one row per -t keyword. What selecting a type says, what it requires, what is
// said when something is missing, whether it is refused, and what the help tells of it all follow
// from its row. A type that has a client has a row in front/dispatch_table.h as well.

#pragma once

/// Request types, as parse_cmd_line() returns them. No codes are assigned between 103 and 106 and
/// between 117 and 119.
enum request_type : int {
    REQUEST_NONE = 0,
    REQUEST_SOAP = 100,
    REQUEST_EIBLOCAL = 101,
    REQUEST_EIBINTERNET = 102,
    REQUEST_SMSTOOLLOCAL = 107,
    REQUEST_SMSTOOLINTERNET = 108,
    REQUEST_LINTRONICLOCAL = 109,
    REQUEST_LINTRONICINTERNET = 110,
    REQUEST_TECNOUTLOCAL = 111,
    REQUEST_TECNOUTINTERNET = 112,
    REQUEST_VIVALDILOCAL = 113,
    REQUEST_VIVALDIINTERNET = 114,
    REQUEST_BENTELLOCAL = 115,
    REQUEST_BENTELINTERNET = 116,
    REQUEST_FSMCORE = 120,
    REQUEST_TUTONDOLOCAL = 121,
    REQUEST_TUTONDOINTERNET = 122,
    REQUEST_UNSUPPORTED = 200,
};

/// A text option that a complete request must have, or the port.
enum required_field : unsigned {
    NEEDS_ADDRESS = 1U << 0U,
    NEEDS_PORT = 1U << 1U,
    NEEDS_SOCKET = 1U << 2U,
    NEEDS_URL = 1U << 3U,
    NEEDS_FUNCTION = 1U << 4U,
    NEEDS_PARAMETERS = 1U << 5U,
};

/// Kinds of request types, as positions in REQUEST_KINDS.
enum request_kind {
    WEB_SERVICE_KIND,
    LOCAL_KIND,
    INTERNET_KIND, ///< checked in full, but no client is called
    UNSUPPORTED_KIND,
};

/// What the types of one kind have in common.
struct request_kind_row {
    unsigned fields;      ///< required_field bits
    const char *selected; ///< end of the selection line, behind the name
    const char *required; ///< the fields, as the message about a missing one lists them
};

inline constexpr request_kind_row REQUEST_KINDS[] = {
    {NEEDS_URL | NEEDS_FUNCTION, " request selected", "url and function"},
    {NEEDS_SOCKET | NEEDS_FUNCTION | NEEDS_PARAMETERS, " Local request selected",
     "socket, function and request"},
    {NEEDS_ADDRESS | NEEDS_PORT | NEEDS_FUNCTION | NEEDS_PARAMETERS, " Internet request selected",
     "address, port, function and request"},
    {0, " requests unsupported!", ""},
};

/// The help's lines about a local type. Slips in them are part of the interface.
struct help_lines {
    const char *socket = nullptr;         ///< usual name of the daemon's socket
    const char *functions = nullptr;      ///< as advertised, which need not be what is served
    const char *parameters = nullptr;     ///< as advertised
    const char *service = nullptr;        ///< null: the type's name and "Gateway"
    const char *socket_service = nullptr; ///< service that the socket line names; null: service
    int width = 18;                       ///< of the column with the keyword
};

struct request_type_row {
    const char *keyword;
    request_type type;
    request_kind kind;
    const char *name;
    help_lines help = {};
    const char *selected = nullptr; ///< end of the selection line where the kind's does not fit
};

/// In comparison order, which is the order of the help as well.
inline constexpr request_type_row REQUEST_TYPES[] = {
    {"SOAP", REQUEST_SOAP, WEB_SERVICE_KIND, "Soap"},
    {"FSMCORE",
     REQUEST_FSMCORE,
     LOCAL_KIND,
     "FSMCore",
     {.socket = "lumo_fsmcore.socket",
      .functions = "...",
      .parameters = "it|depends|from|function|...",
      .service = "FSMCore",
      .socket_service = "EIBGateway"}, // a slip
     " local request selected"},
    {"EIBLOCAL",
     REQUEST_EIBLOCAL,
     LOCAL_KIND,
     "EIB",
     {.socket = "lumo_eibgateway.socket",
      .functions = "SENDEIBUSSETDATAGRAM, SENDEIBUSGETDATAGRAM",
      .parameters = "SectionName|Destination|EISType|Payload"}},
    {"EIBINTERNET", REQUEST_EIBINTERNET, INTERNET_KIND, "EIB"},
    {"ECHOBUSLOCAL", REQUEST_UNSUPPORTED, UNSUPPORTED_KIND, "ECHOBUS"},
    {"ECHOBUSINTERNET", REQUEST_UNSUPPORTED, UNSUPPORTED_KIND, "ECHOBUS"},
    {"MARTINLOCAL", REQUEST_UNSUPPORTED, UNSUPPORTED_KIND, "MARTIN"},
    {"MARTININTERNET", REQUEST_UNSUPPORTED, UNSUPPORTED_KIND, "MARTIN"},
    {"SMSTOOLLOCAL",
     REQUEST_SMSTOOLLOCAL,
     LOCAL_KIND,
     "SMSTOOL",
     {.socket = "lumo_smstoolgateway.socket",
      .functions = "SENDSMSTOOLDATAGRAM",
      .parameters = "SectionName|To|Message"}},
    {"SMSTOOLINTERNET", REQUEST_SMSTOOLINTERNET, INTERNET_KIND, "SMSTOOL"},
    {"LINTRONICLOCAL",
     REQUEST_LINTRONICLOCAL,
     LOCAL_KIND,
     "LINTRONIC",
     {.socket = "lumo_lintronicgateway.socket",
      .functions = "SENDLINTRONICRAWDATAGRAM", // refused
      .parameters = "SectionName|Device|Command|Payload"}},
    {"LINTRONICINTERNET", REQUEST_LINTRONICINTERNET, INTERNET_KIND, "LINTRONIC"},
    {"TECNOUTLOCAL",
     REQUEST_TECNOUTLOCAL,
     LOCAL_KIND,
     "TECNOUT",
     {.socket = "lumo_tecnoutgateway.socket",
      .functions = "SENDTECNOUTCOMMANDDATAGRAM",
      .parameters = "SectionName|UserCode|Command|Payload"}},
    {"TECNOUTINTERNET", REQUEST_TECNOUTINTERNET, INTERNET_KIND, "TECNOUT"},
    {"VIVALDILOCAL",
     REQUEST_VIVALDILOCAL,
     LOCAL_KIND,
     "VIVALDI",
     {.socket = "lumo_vivaldigateway.socket",
      .functions = "SENDVIVALDISETDATAGRAM, SENDVIVALDIGETDATAGRAM", // the second is refused
      .parameters = "SectionName|CentralNumber|RC20Number|RC20OnOff|RC20Volume..."}},
    {"VIVALDIINTERNET", REQUEST_VIVALDIINTERNET, INTERNET_KIND, "VIVALDI"},
    {"BENTELLOCAL",
     REQUEST_BENTELLOCAL,
     LOCAL_KIND,
     "BENTEL",
     {.socket = "lumo_bentelgateway.socket",
      .functions = "SENDBENTELCOMMANDDATAGRAM",
      .parameters = "SectionName|UserCode|Command|Payload"}},
    {"BENTELINTERNET", REQUEST_BENTELINTERNET, INTERNET_KIND, "BENTEL"},
    {"IBSLOCAL", REQUEST_UNSUPPORTED, UNSUPPORTED_KIND, "IBS"},
    {"IBSINTERNET", REQUEST_UNSUPPORTED, UNSUPPORTED_KIND, "IBS"},
    {"TUTONDOLOCAL",
     REQUEST_TUTONDOLOCAL,
     LOCAL_KIND,
     "TUTONDO",
     {.socket = "lumo_tutondogateway.socket",
      .functions = "SENDTUTONDOSETDATAGRAM, SENDTUTONDOGETDATAGRAM",
      .parameters = "SectionName|ZoneNumber|Command|Payload",
      .width = 19}}, // a slip
    {"TUTONDOINTERNET", REQUEST_TUTONDOINTERNET, INTERNET_KIND, "TUTONDO"},
    {"BYMELOCAL", REQUEST_UNSUPPORTED, UNSUPPORTED_KIND, "BYME"},
    {"BYMEINTERNET", REQUEST_UNSUPPORTED, UNSUPPORTED_KIND, "BYME"},
};

/// The row of a type's code; null for a code that no type has, and for REQUEST_UNSUPPORTED, which
/// several share.
inline const request_type_row *find_request_type(int type) {
    for (const request_type_row &row : REQUEST_TYPES) {
        if (row.type == type && row.kind != UNSUPPORTED_KIND) {
            return &row;
        }
    }
    return nullptr;
}
