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

/// A value whose length the builder checks.
struct width_row {
    std::size_t item; ///< its place in the list, from 1
    std::size_t width;
    const char *refusal; ///< end of the message about another length
};

struct function_row {
    const char *name;
    const char *lines;       ///< header lines; {1} is the exchange's first value
    const char *sample;      ///< a -p list of the right count
    std::string needed = {}; ///< what the count message asks for; usually what the lines are called
    std::size_t first_value = 1; ///< number of the value that the list begins with
    builder_answer built = builder_answer::SENDS;
    std::vector<width_row> widths = {};
};

constexpr int UNSUPPORTED = 200; ///< type code of the keywords that are refused

/// Texts that are empty follow from the name and the prefix; completed() says how.
struct gateway_row {
    const char *name; ///< of the -t keywords before LOCAL and INTERNET
    harness::family where = harness::family::UNIX_SOCKET;
    int local_type = UNSUPPORTED; ///< the code of the internet type is one more
    int base;
    const char *prefix;               ///< of the daemon's answer
    int digits = 4;                   ///< of the daemon's answer
    std::string shown = {};           ///< prefix of the same codes in the last line
    std::string label = {};           ///< the answer's format in messages
    std::string daemon = {};          ///< named in the open-failure and format messages
    std::string tail_daemon = {};     ///< named in the tail message
    std::string tag = {};             ///< opens the messages
    std::string tail_tag = {};        ///< opens the number and the tail message
    std::string refusal_tag = {};     ///< opens the message about an unknown function
    const char *quoting = "QQQQQQQQ"; ///< by message: Q for 'function', B for function
    std::string builder = {};         ///< source tag of the request builder
    std::string count_tag = {};       ///< opens the count message
    std::string socket = {};          ///< usual file name, in the help
    std::string advertised = {};      ///< functions in the help
    std::string advertised_list = {}; ///< parameters in the help
    const char *help_gap = "";        ///< further blanks in the help
    std::vector<function_row> functions;
};

/// "Section: {1}\nCommand: 1\nPayload: {2}\n" has the names Section and Payload.
inline std::vector<std::string> names_of(const function_row &function) {
    std::vector<std::string> names;
    for (const std::string &line : split(function.lines, '\n')) {
        if (line.find('{') != std::string::npos) {
            names.push_back(line.substr(0, line.find(':')));
        }
    }
    return names;
}

/// The row with the texts that are as usual.
inline gateway_row completed(gateway_row row) {
    const auto usual = [](std::string *text, const std::string &otherwise) {
        *text = text->empty() ? otherwise : *text;
    };
    const std::string family =
        row.where == harness::family::UNIX_SOCKET ? "local_request" : "internet_request";
    const std::string name = lower(row.name);
    usual(&row.shown, row.prefix);
    usual(&row.label, std::string(row.prefix) + (row.digits == 3 ? "XXX" : "NNNN"));
    usual(&row.daemon, std::string(row.name) + "Gateway");
    usual(&row.tail_daemon, row.daemon);
    usual(&row.tag, std::string(row.name) + "Gatewayutil->" + name + "gateway_" + family);
    usual(&row.tail_tag, row.tag);
    usual(&row.refusal_tag, row.tag);
    usual(&row.builder, "localclientutil->make_" + name + family);
    usual(&row.count_tag, row.builder);
    usual(&row.socket, "lumo_" + name + "gateway.socket");
    std::string functions;
    for (function_row &function : row.functions) {
        usual(&function.needed, joined(names_of(function), ", "));
        functions += (functions.empty() ? "" : ", ") + std::string(function.name);
    }
    usual(&row.advertised, functions);
    usual(&row.advertised_list, joined(names_of(row.functions.front()), "|"));
    return row;
}

inline std::vector<gateway_row> all_completed(std::vector<gateway_row> rows) {
    std::transform(rows.begin(), rows.end(), rows.begin(), completed);
    return rows;
}

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
    std::vector<std::string> values = entries_of(list);
    values.insert(values.begin(), function.first_value - 1, "");
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
