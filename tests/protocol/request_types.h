// The request types as their users know them: one row per keyword of -t. Those of a gateway follow
// from the gateway's own row.

#pragma once

#include "tests/protocol/gateways.h"

namespace protocol {

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
