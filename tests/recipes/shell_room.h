// A place where scripts run: a shell, the programs that it finds, and nothing else of the machine.

#pragma once

#include "tests/harness/console.h"
#include "tests/protocol/texts.h"
#include "tests/simulator/simulator_process.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

using harness::red;
using protocol::replaced;

/// A test in each of the shells that scripts are written for.
class InShell : public testing::TestWithParam<const char *> {};

/// What lumocmd says in one call, and what it exits with.
struct saying {
    std::string output;
    int exit;
    std::string errors = {};
};

/// The directories of one shell's programs and of its scripts. `lumocmd` is the program under test;
/// `logger` and `sleep` print what they are called with and do nothing else.
struct shell_room {
    explicit shell_room(const std::string &shell_name);
    /// Here a script stands for lumocmd. It says this call by call, and notes a line of
    /// "<argument>"s in `calls`.
    shell_room(const std::string &shell_name, const std::vector<saying> &sayings);

    /// Replaces or adds a program by a script for sh.
    void add_script(const std::string &name, const std::string &text) const;
    /// Runs a script in the directory.
    harness::run_result run(const std::string &script, const std::string &in) const;
    /// Runs one in `directory` that includes lumo.sh and stops at failures.
    harness::run_result run_with_library(const std::string &script) const;

    std::string shell;
    harness::temporary_directory programs, directory;
    std::string path;
};

/// Where an installation puts the library, and where its source is.
inline const char *const INSTALLED_LIBRARY = "/usr/share/lumocmd/lumo.sh";
inline const char *const LIBRARY = PROJECT_DIRECTORY "/shell/lumo.sh";

/// What stands between two marks, from a place on that moves behind it; empty at the text's end.
std::string text_between(const std::string &text, std::size_t &place, const std::string &begin,
                         const std::string &end);

/// A green line as lumocmd writes it.
inline std::string green(const std::string &text) {
    return harness::green(4711, "[lumocmd] " + text);
}

/// What lumocmd says of a gateway that cannot be reached, and of a url that cannot be used.
inline const saying UNREACHED = {red("x->y connect failed with error 'Connection refused'") +
                                     red("x->y error opening socket X clientside for function F") +
                                     "EIBG-105\n",
                                 105};
inline const std::string UNUSABLE_URL =
    "Error 3986 fault at source [no subcode]\n"
    "\"url 'u' cannot be used\"\nDetail: one like v is needed\n";
inline const saying DONE = {"LMCM-0000\n", 0};
inline const saying CUT_SHORT = {"", 124};
