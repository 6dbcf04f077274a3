// Runs a program to its end and collects everything that it said. Every wait is bounded.

#pragma once

#include <string>
#include <sys/types.h>
#include <vector>

namespace harness {

/// How long any single test may wait for its program or its peer, in milliseconds. Generous:
/// emulated and instrumented programs are slow, and only a failing test ever waits that long.
constexpr int PATIENCE_MS = 40000;

using words = std::vector<std::string>;

struct run_result {
    std::string output; ///< all of standard output
    std::string errors; ///< all of standard error
    int status; ///< exit status as a shell sees it, 128 + signal number, or -1 after a time-out
    pid_t pid;  ///< process id, for the pid tag
};

/// What a run may be given besides its arguments.
struct run_options {
    std::string directory;     ///< working directory; empty: the test's own
    bool close_output = false; ///< start the program with standard output closed
};

/// Runs a program. Standard input is empty.
run_result run(const words &command, const run_options &options = {});

/// Runs the lumocmd under test. LUMOCMD_PROGRAM names another one than this build's,
/// LUMOCMD_WRAPPER (words separated by blanks) goes before it: valgrind, an emulator.
run_result lumocmd(const words &arguments, const run_options &options = {});

/// Path of the lumocmd under test, as it appears in its usage line.
std::string lumocmd_path();

/// A fresh directory, removed with all its files when the record goes out of scope.
struct temporary_directory {
    temporary_directory();
    ~temporary_directory();
    temporary_directory(const temporary_directory &) = delete;
    temporary_directory &operator=(const temporary_directory &) = delete;
    std::string path;
};

} // namespace harness

/// Skips a test where something that it needs is missing; `reason` says what, or is empty.
#define SKIP_WHERE_MISSING(reason)                                                                 \
    if (const std::string missing = reason; !missing.empty())                                      \
    GTEST_SKIP() << missing
