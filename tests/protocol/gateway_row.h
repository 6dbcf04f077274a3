// What a row about a gateway says, and the texts that follow from it.

#pragma once

#include "tests/harness/peer.h"
#include "tests/protocol/texts.h"

#include <cstdio>

namespace protocol {

/// What the request builder makes of a function that the exchange accepts.
enum class builder_answer { SENDS, COUNTS_AND_REFUSES, REFUSES };

/// A value whose length the builder checks.
struct width_row {
    std::size_t item; ///< its place in the list, from 1
    std::size_t width;
    const char *refusal; ///< end of the message about another length
};

/// "Section: {1}\nCommand: 1\nPayload: {2}\n" has the names Section and Payload.
inline words names_of(const std::string &lines) {
    words names;
    for (const std::string &line : split(lines, '\n')) {
        if (line.find('{') != std::string::npos) {
            names.push_back(line.substr(0, line.find(':')));
        }
    }
    return names;
}

struct function_row {
    const char *name;
    const char *lines; ///< header lines; {1} is the exchange's first value
    std::string sample = joined(names_of(lines), "|");  ///< a -p list of the right count
    std::string needed = joined(names_of(lines), ", "); ///< what the count message asks for
    std::size_t first_value = 1;                        ///< number of the list's first value
    builder_answer built = builder_answer::SENDS;
    std::vector<width_row> widths = {};
};

inline words names_of(const std::vector<function_row> &functions) {
    words names;
    for (const function_row &function : functions) {
        names.emplace_back(function.name);
    }
    return names;
}

inline std::string request_of(harness::family where) {
    return where == harness::family::UNIX_SOCKET ? "local_request" : "internet_request";
}

constexpr int UNSUPPORTED = 200; ///< type code of the keywords that are refused

/// A row says what is not as usual; the usual texts follow from the name and the prefix.
struct gateway_row {
    const char *name; ///< of the -t keywords before LOCAL and INTERNET
    harness::family where = harness::family::UNIX_SOCKET;
    int local_type = UNSUPPORTED; ///< the code of the internet type is one more
    int base;
    const char *prefix;         ///< of the daemon's answer
    int digits = 4;             ///< of the daemon's answer
    std::string shown = prefix; ///< prefix of the same codes in the last line
    /// The answer's format in messages.
    std::string label = prefix + std::string(digits == 3 ? "XXX" : "NNNN");
    std::string daemon = name + std::string("Gateway");
    std::string tail_daemon = daemon; ///< named in the tail message
    /// Opens the messages.
    std::string tag = name + ("Gatewayutil->" + lower(name)) + "gateway_" + request_of(where);
    std::string tail_tag = tag;       ///< opens the number and the tail message
    std::string refusal_tag = tag;    ///< opens the message about an unknown function
    const char *quoting = "QQQQQQQQ"; ///< by message: Q for 'function', B for function
    /// Source tag of the request builder.
    std::string builder = "localclientutil->make_" + lower(name) + request_of(where);
    std::string count_tag = builder; ///< opens the count message
    std::vector<function_row> functions;
    // What the help says.
    std::string socket = "lumo_" + lower(name) + "gateway.socket";
    std::string advertised = joined(names_of(functions), ", ");
    std::string advertised_list = joined(names_of(functions.front().lines), "|");
    const char *help_gap = ""; ///< further blanks
};

/// Tells the rows apart in test names and traces.
inline std::string title(const gateway_row &row) {
    return std::string(row.name) + (row.where == harness::family::LOOPBACK ? "OverTcp" : "");
}

/// Whether a -t keyword leads to its client.
inline bool is_reachable(const gateway_row &row) {
    return row.where == harness::family::UNIX_SOCKET && row.local_type != UNSUPPORTED;
}

inline words values_of_list(const function_row &function, const std::string &list) {
    words values = entries_of(list);
    values.insert(values.begin(), function.first_value - 1, "");
    return values;
}

inline std::size_t count_of(const function_row &function) {
    return entries_of(function.sample).size();
}

/// The whole request as it is sent, its function spelt as the caller does.
inline std::string request_text(const function_row &function, const std::string &spelling,
                                const words &values) {
    std::string lines = function.lines;
    for (std::size_t i = 0; i < values.size(); i++) {
        lines = replaced(lines, "{" + std::to_string(i + 1) + "}", values[i]);
    }
    return "Request: " + spelling + "\n" + lines + "\n";
}

/// The request that the sample list becomes.
inline std::string sample_request(const function_row &function, const std::string &spelling) {
    return request_text(function, spelling, values_of_list(function, function.sample));
}

inline std::string count_message(const gateway_row &row, const function_row &function) {
    return row.count_tag + " error too few or too much parameters, " + function.needed +
           " are needed";
}

/// A code of the gateway's hundred as the last line shows it: three digits up to 900, four above.
inline std::string shown_code(const gateway_row &row, int code) {
    char number[16];
    snprintf(number, sizeof number, code > 900 ? "%04d" : "%03d", code);
    return row.shown + number;
}

/// A function of a gateway, for tests that try each by itself.
struct function_case {
    const gateway_row &gateway;
    const function_row &function;
};

inline std::string name_of(const function_case &row) {
    return title(row.gateway) + "_" + row.function.name;
}

} // namespace protocol
