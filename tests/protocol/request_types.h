// The request types as their users know them: one row per keyword of -t. Those of a gateway follow
// from the gateway's own row.

#pragma once

#include "tests/protocol/gateways.h"

#include <string>
#include <vector>

namespace protocol {

/// What a complete request of a type needs.
struct need_row {
    const char *in_words;              ///< as the message asks for it
    std::vector<std::string> required; ///< the options
    std::vector<std::string> idle;     ///< options that the type neither needs nor minds
};

inline const need_row SOAP_NEED = {
    "url and function", {"-u U", "-f F"}, {"-s S", "-a A", "-d 2000", "-p P", "-w 5"}};
inline const need_row LOCAL_NEED = {
    "socket, function and request", {"-s S", "-f F", "-p P"}, {"-a A", "-d 2000", "-u U", "-w 5"}};
inline const need_row INTERNET_NEED = {"address, port, function and request",
                                       {"-a A", "-d 2000", "-f F", "-p P"},
                                       {"-s S", "-u U", "-w 5"}};

struct request_type_row {
    std::string keyword;
    int code;
    std::string line;     ///< what selecting the type says; red when it is unsupported, else green
    const need_row *need; ///< null: the type is unsupported
    bool carried;         ///< by a client
};

/// The rows of a gateway's two keywords.
inline std::vector<request_type_row> types_of(const gateway_row &row) {
    const std::string name = row.name;
    const std::string refusal = name + " requests unsupported!";
    const std::string selected = "[lumocmd] " + name;
    if (row.local_type == UNSUPPORTED) {
        return {{name + "LOCAL", UNSUPPORTED, refusal, nullptr, false},
                {name + "INTERNET", UNSUPPORTED, refusal, nullptr, false}};
    }
    return {
        {name + "LOCAL", row.local_type, selected + " Local request selected", &LOCAL_NEED, true},
        {name + "INTERNET", row.local_type + 1, selected + " Internet request selected",
         &INTERNET_NEED, false}};
}

inline std::vector<request_type_row> request_types() {
    std::vector<request_type_row> all = {
        {"SOAP", 100, "[lumocmd] Soap request selected", &SOAP_NEED, true},
        {"FSMCORE", 120, "[lumocmd] FSMCore local request selected", &LOCAL_NEED, true}};
    for (const gateway_row &row : GATEWAYS) {
        if (row.where == harness::family::UNIX_SOCKET) {
            const std::vector<request_type_row> types = types_of(row);
            all.insert(all.end(), types.begin(), types.end());
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
