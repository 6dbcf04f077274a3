// Whole-output tests of the command line: what is typed, every line that comes back, the exit
// status. The pid tags are filled in when the run is over.

#pragma once

#include "tests/harness/console.h"
#include "tests/harness/process.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace front_tests {

enum class ink { PLAIN, GREEN, RED, TAGGED_RED };

struct shown_line {
    ink colour;
    std::string text;
};

inline shown_line plain(std::string text) {
    return {ink::PLAIN, std::move(text)};
}
inline shown_line green(std::string text) {
    return {ink::GREEN, std::move(text)};
}
inline shown_line red(std::string text) {
    return {ink::RED, std::move(text)};
}
inline shown_line tagged_red(std::string text) {
    return {ink::TAGGED_RED, std::move(text)};
}

using shown_lines = std::vector<shown_line>;

inline std::string transcript(pid_t pid, const shown_lines &lines) {
    std::string whole;
    for (const shown_line &line : lines) {
        switch (line.colour) {
        case ink::PLAIN:
            whole += line.text + "\n";
            break;
        case ink::GREEN:
            whole += harness::green(pid, line.text);
            break;
        case ink::RED:
            whole += harness::red(line.text);
            break;
        case ink::TAGGED_RED:
            whole += harness::tagged_red(pid, line.text);
            break;
        }
    }
    return whole;
}

/// Splits a typed line at blanks; a word in single quotes may be empty or hold blanks.
inline harness::words typed(const std::string &line) {
    harness::words split;
    for (std::size_t at = 0; at < line.size();) {
        const bool quoted = line[at] == '\'';
        const std::size_t start = quoted ? at + 1 : at;
        const std::size_t end = std::min(line.find(quoted ? '\'' : ' ', start), line.size());
        split.push_back(line.substr(start, end - start));
        at = end + (quoted ? 2 : 1);
    }
    return split;
}

/// A run that says nothing on standard error.
struct transcript_case {
    const char *name;
    const char *line; ///< as typed behind the program's name
    shown_lines output;
    int status;
};

inline void expect_transcript(const char *line, const shown_lines &output, int status) {
    SCOPED_TRACE(line);
    const harness::run_result run = harness::lumocmd(typed(line));
    EXPECT_EQ(run.output, transcript(run.pid, output));
    EXPECT_EQ(run.errors, "");
    EXPECT_EQ(run.status, status & 0xff);
}

inline const char *const MALFORMED = "utility->parse_cmd_line malformed request";
inline const char *const BAD_PORT =
    "utility->parse_cmd_line bad parameter: service port must be a number and upper than 1024";
inline const char *const BAD_WAITTIME =
    "utility->parse_cmd_line bad parameter: waittime must be a number";
inline const char *const NOT_PARSED = "main->main error on parsing command line";
inline const char *const UNIMPLEMENTED = "main->main error unimplemented feature";
inline const char *const SOAP_INCOMPLETE =
    "utility->parse_cmd_line malformed request: url and function paremeters required for SOAP";

} // namespace front_tests
