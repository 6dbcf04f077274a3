// The tables of the command-line parser: the keywords of -t and what each request type requires.

#pragma once

#include "front/request_record.h"

/// A keyword of -t. Rows stand in comparison order.
struct type_keyword {
    const char *keyword;
    request_type type;
    const char *line; ///< green selection line, or the red refusal of an unsupported type
};

constexpr type_keyword TYPE_KEYWORDS[] = {
    {"SOAP", REQUEST_SOAP, "[lumocmd] Soap request selected"},
    {"FSMCORE", REQUEST_FSMCORE, "[lumocmd] FSMCore local request selected"},
    {"EIBLOCAL", REQUEST_EIBLOCAL, "[lumocmd] EIB Local request selected"},
    {"EIBINTERNET", REQUEST_EIBINTERNET, "[lumocmd] EIB Internet request selected"},
    {"ECHOBUSLOCAL", REQUEST_UNSUPPORTED, "ECHOBUS requests unsupported!"},
    {"ECHOBUSINTERNET", REQUEST_UNSUPPORTED, "ECHOBUS requests unsupported!"},
    {"MARTINLOCAL", REQUEST_UNSUPPORTED, "MARTIN requests unsupported!"},
    {"MARTININTERNET", REQUEST_UNSUPPORTED, "MARTIN requests unsupported!"},
    {"SMSTOOLLOCAL", REQUEST_SMSTOOLLOCAL, "[lumocmd] SMSTOOL Local request selected"},
    {"SMSTOOLINTERNET", REQUEST_SMSTOOLINTERNET, "[lumocmd] SMSTOOL Internet request selected"},
    {"LINTRONICLOCAL", REQUEST_LINTRONICLOCAL, "[lumocmd] LINTRONIC Local request selected"},
    {"LINTRONICINTERNET", REQUEST_LINTRONICINTERNET,
     "[lumocmd] LINTRONIC Internet request selected"},
    {"TECNOUTLOCAL", REQUEST_TECNOUTLOCAL, "[lumocmd] TECNOUT Local request selected"},
    {"TECNOUTINTERNET", REQUEST_TECNOUTINTERNET, "[lumocmd] TECNOUT Internet request selected"},
    {"VIVALDILOCAL", REQUEST_VIVALDILOCAL, "[lumocmd] VIVALDI Local request selected"},
    {"VIVALDIINTERNET", REQUEST_VIVALDIINTERNET, "[lumocmd] VIVALDI Internet request selected"},
    {"BENTELLOCAL", REQUEST_BENTELLOCAL, "[lumocmd] BENTEL Local request selected"},
    {"BENTELINTERNET", REQUEST_BENTELINTERNET, "[lumocmd] BENTEL Internet request selected"},
    {"IBSLOCAL", REQUEST_UNSUPPORTED, "IBS requests unsupported!"},
    {"IBSINTERNET", REQUEST_UNSUPPORTED, "IBS requests unsupported!"},
    {"TUTONDOLOCAL", REQUEST_TUTONDOLOCAL, "[lumocmd] TUTONDO Local request selected"},
    {"TUTONDOINTERNET", REQUEST_TUTONDOINTERNET, "[lumocmd] TUTONDO Internet request selected"},
    {"BYMELOCAL", REQUEST_UNSUPPORTED, "BYME requests unsupported!"},
    {"BYMEINTERNET", REQUEST_UNSUPPORTED, "BYME requests unsupported!"},
};
static_assert(sizeof(TYPE_KEYWORDS) / sizeof(TYPE_KEYWORDS[0]) == 24);

/// What a complete request needs: a text option that must be given, or the port.
enum required_field : unsigned {
    NEEDS_ADDRESS = 1U << 0U,
    NEEDS_PORT = 1U << 1U,
    NEEDS_SOCKET = 1U << 2U,
    NEEDS_URL = 1U << 3U,
    NEEDS_FUNCTION = 1U << 4U,
    NEEDS_PARAMETERS = 1U << 5U,
};

constexpr unsigned SOAP_FIELDS = NEEDS_URL | NEEDS_FUNCTION;
constexpr unsigned LOCAL_FIELDS = NEEDS_SOCKET | NEEDS_FUNCTION | NEEDS_PARAMETERS;
constexpr unsigned INTERNET_FIELDS = NEEDS_ADDRESS | NEEDS_PORT | NEEDS_FUNCTION | NEEDS_PARAMETERS;

struct required_fields {
    request_type type;
    unsigned fields;     ///< required_field bits
    const char *message; ///< shown when one of them is missing
};

// "paremeters" is part of the interface, slip included.
constexpr required_fields REQUIRED_FIELDS[] = {
    {REQUEST_SOAP, SOAP_FIELDS,
     "utility->parse_cmd_line malformed request: url and function paremeters required for SOAP"},
    {REQUEST_FSMCORE, LOCAL_FIELDS,
     "utility->parse_cmd_line malformed request: socket, function and request paremeters required "
     "for FSMCORE"},
    {REQUEST_EIBLOCAL, LOCAL_FIELDS,
     "utility->parse_cmd_line malformed request: socket, function and request paremeters required "
     "for EIBLOCAL"},
    {REQUEST_EIBINTERNET, INTERNET_FIELDS,
     "utility->parse_cmd_line malformed request: address, port, function and request paremeters "
     "required for EIBINTERNET"},
    {REQUEST_SMSTOOLLOCAL, LOCAL_FIELDS,
     "utility->parse_cmd_line malformed request: socket, function and request paremeters required "
     "for SMSTOOLLOCAL"},
    {REQUEST_SMSTOOLINTERNET, INTERNET_FIELDS,
     "utility->parse_cmd_line malformed request: address, port, function and request paremeters "
     "required for SMSTOOLINTERNET"},
    {REQUEST_LINTRONICLOCAL, LOCAL_FIELDS,
     "utility->parse_cmd_line malformed request: socket, function and request paremeters required "
     "for LINTRONICLOCAL"},
    {REQUEST_LINTRONICINTERNET, INTERNET_FIELDS,
     "utility->parse_cmd_line malformed request: address, port, function and request paremeters "
     "required for LINTRONICINTERNET"},
    {REQUEST_TECNOUTLOCAL, LOCAL_FIELDS,
     "utility->parse_cmd_line malformed request: socket, function and request paremeters required "
     "for TECNOUTLOCAL"},
    {REQUEST_TECNOUTINTERNET, INTERNET_FIELDS,
     "utility->parse_cmd_line malformed request: address, port, function and request paremeters "
     "required for TECNOUTINTERNET"},
    {REQUEST_VIVALDILOCAL, LOCAL_FIELDS,
     "utility->parse_cmd_line malformed request: socket, function and request paremeters required "
     "for VIVALDILOCAL"},
    {REQUEST_VIVALDIINTERNET, INTERNET_FIELDS,
     "utility->parse_cmd_line malformed request: address, port, function and request paremeters "
     "required for VIVALDIINTERNET"},
    {REQUEST_BENTELLOCAL, LOCAL_FIELDS,
     "utility->parse_cmd_line malformed request: socket, function and request paremeters required "
     "for BENTELLOCAL"},
    {REQUEST_BENTELINTERNET, INTERNET_FIELDS,
     "utility->parse_cmd_line malformed request: address, port, function and request paremeters "
     "required for BENTELINTERNET"},
    {REQUEST_TUTONDOLOCAL, LOCAL_FIELDS,
     "utility->parse_cmd_line malformed request: socket, function and request paremeters required "
     "for TUTONDOLOCAL"},
    {REQUEST_TUTONDOINTERNET, INTERNET_FIELDS,
     "utility->parse_cmd_line malformed request: address, port, function and request paremeters "
     "required for TUTONDOINTERNET"},
};
static_assert(sizeof(REQUIRED_FIELDS) / sizeof(REQUIRED_FIELDS[0]) == 16);
