// Whole-output tests of the command line: what is typed, every line that comes back, the exit
// status. Expected pid tags hold the id 0; that of the run is written as 0 as well.

#pragma once

#include "tests/harness/console.h"
#include "tests/harness/process.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <regex>
#include <string>

namespace front_tests {

using harness::red;

inline std::string plain(const std::string &text) {
    return text + "\n";
}
inline std::string green(const std::string &text) {
    return harness::green(0, "[lumocmd] " + text);
}
inline std::string tagged_red(const std::string &text) {
    return harness::tagged_red(0, text);
}

inline std::string untagged_output(const harness::run_result &run) {
    return std::regex_replace(run.output, std::regex("<" + std::to_string(run.pid) + ">"), "<0>");
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

inline void expect_transcript(const std::string &line, const std::string &output, int status,
                              const std::string &errors = "") {
    SCOPED_TRACE(line);
    const harness::run_result run = harness::lumocmd(typed(line));
    EXPECT_EQ(untagged_output(run), output);
    EXPECT_EQ(run.errors, errors);
    EXPECT_EQ(run.status, status & 0xff);
}

} // namespace front_tests
