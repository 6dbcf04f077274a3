// What a row about a gateway says, and the texts that follow from it.

#pragma once

#include "tests/harness/meeting_point.h"
#include "tests/protocol/texts.h"

#include <cstdio>
#include <ostream>
#include <string>
#include <vector>

namespace protocol {

/// What the request builder makes of a function that the exchange accepts.
enum class builder_answer { SENDS, COUNTS_AND_REFUSES, REFUSES };

struct function_row {
    const char *name;
    const char *lines;            ///< header lines; {1} is the exchange's first value
    const char *sample = nullptr; ///< a -p list of the right count
    const char *needed = nullptr; ///< what the count message asks for
    std::size_t first_value = 1;  ///< number of the value that the list begins with
    builder_answer built = builder_answer::SENDS;
};

constexpr int UNSUPPORTED = 200; ///< type code of the keywords that are refused

/// Texts that are null are the usual ones; the functions below know them.
struct gateway_row {
    const char *name; ///< of the -t keywords before LOCAL and INTERNET
    harness::family where = harness::family::UNIX_SOCKET;
    int local_type = UNSUPPORTED;
    int internet_type = UNSUPPORTED;
    int base;
    const char *prefix;             ///< of the daemon's answer
    const char *shown = nullptr;    ///< prefix of the same codes in the last line; usually `prefix`
    const char *label;              ///< the answer's format in messages
    const char *tag;                ///< opens the messages
    const char *tail_tag = nullptr; ///< opens the number and the tail message
    const char *refusal_tag = nullptr; ///< opens the message about an unknown function
    const char *daemon;
    const char *tail_daemon = nullptr;     ///< named in the tail message
    const char *quoting = "QQQQQQQQ";      ///< by message: Q for 'function', B for function
    const char *builder;                   ///< source tag of the request builder
    const char *count_tag = nullptr;       ///< opens the count message; usually `builder`
    const char *socket = nullptr;          ///< usual file name, in the help
    const char *advertised = nullptr;      ///< functions in the help; usually all of them
    const char *advertised_list = nullptr; ///< parameters in the help
    const char *help_gap = "";             ///< further blanks in the help
    std::vector<function_row> functions;
};

/// Tells the rows apart in test names and traces.
inline std::string title(const gateway_row &row) {
    return std::string(row.name) + (row.where == harness::family::LOOPBACK ? "OverTcp" : "");
}

/// Whether a -t keyword leads to its client.
inline bool is_reachable(const gateway_row &row) {
    return row.where == harness::family::UNIX_SOCKET && row.local_type != UNSUPPORTED;
}

inline std::vector<std::string> values_of_list(const function_row &function,
                                               const std::string &list) {
    std::vector<std::string> values(function.first_value - 1);
    for (const std::string &entry : entries_of(list)) {
        values.push_back(entry);
    }
    return values;
}

inline std::size_t count_of(const function_row &function) {
    return entries_of(function.sample).size();
}

/// The whole request as it is sent, its function spelt as the caller does.
inline std::string request_text(const function_row &function, const std::string &spelling,
                                const std::vector<std::string> &values) {
    std::string lines = function.lines;
    for (std::size_t i = 0; i < values.size(); i++) {
        const std::string mark = "{" + std::to_string(i + 1) + "}";
        const std::size_t at = lines.find(mark);
        if (at != std::string::npos) {
            lines.replace(at, mark.size(), values[i]);
        }
    }
    return "Request: " + spelling + "\n" + lines + "\n";
}

/// The request that the sample list becomes.
inline std::string sample_request(const function_row &function, const std::string &spelling) {
    return request_text(function, spelling, values_of_list(function, function.sample));
}

inline std::string count_message(const gateway_row &row, const function_row &function) {
    return std::string(row.count_tag != nullptr ? row.count_tag : row.builder) +
           " error too few or too much parameters, " + function.needed + " are needed";
}

/// A code of the gateway's hundred as the last line shows it: three digits up to 900, four above.
inline std::string shown_code(const gateway_row &row, int code) {
    char number[16];
    snprintf(number, sizeof number, code > 900 ? "%04d" : "%03d", code);
    return (row.shown != nullptr ? row.shown : row.prefix) + std::string(number);
}

inline std::string advertised_functions(const gateway_row &row) {
    std::vector<std::string> names;
    for (const function_row &function : row.functions) {
        names.emplace_back(function.name);
    }
    return row.advertised != nullptr ? row.advertised : joined(names, ", ");
}

/// A function of a gateway, for tests that try each by itself.
struct function_case {
    const gateway_row *gateway;
    const function_row *function;

    friend void PrintTo(const function_case &row, std::ostream *stream) {
        *stream << row.gateway->tag << " " << row.function->name;
    }
};

inline std::string name_of(const function_case &row) {
    return title(*row.gateway) + "_" + row.function->name;
}

} // namespace protocol
