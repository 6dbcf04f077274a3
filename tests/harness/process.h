// Starts a program, looks at it while it runs, and collects everything that it said. Every wait is
// bounded.

#pragma once

#include <functional>
#include <string>
#include <sys/types.h>
#include <vector>

namespace harness {

/// How long a test may wait for its program or its peer. Generous: emulated and instrumented
/// programs are slow, and only a failing test waits that long.
constexpr int PATIENCE_MS = 40000;

using words = std::vector<std::string>;

/// What a program may be given besides its arguments.
struct start_options {
    std::string directory = {};         ///< working directory; empty: the test's own
    std::string file = {};              ///< what is started; empty: the command's first word
    words settings = {};                ///< "NAME=value", before the environment
    bool empty_environment = false;     ///< but for the settings
    bool on_terminal = false;           ///< a wide, dumb one: what it shows is the output
    std::function<void()> prepare = {}; ///< the last thing before the start, in the new process
};

bool is_readable(int descriptor, int patience_ms = PATIENCE_MS);

struct run_result {
    std::string output; ///< all of standard output
    std::string errors; ///< all of standard error
    int status;     ///< exit status as a shell sees it, 128 + signal number, or -1 after a time-out
    pid_t pid;      ///< process id, for the pid tag
    long kilobytes; ///< most memory that was resident at any time
};

/// A running program. Standard input is empty; it is killed when it outlives the record.
class started_program {
  public:
    explicit started_program(const words &command, const start_options &options = {});
    ~started_program();
    started_program(const started_program &) = delete;
    started_program &operator=(const started_program &) = delete;

    pid_t pid() const {
        return result_.pid;
    }

    // What it has said so far, as far as that was waited for.
    const std::string &output() const {
        return result_.output;
    }
    const std::string &errors() const {
        return result_.errors;
    }

    /// Reads on until a condition about what was said holds; false when the program ends without.
    bool wait_until(const std::function<bool()> &holds);
    bool wait_for_output(const std::string &text);

    /// Types to the program on a terminal.
    void type(const std::string &keys) const;

    /// What the terminal has shown since the last call, up to and including `end`, without carriage
    /// returns and escape sequences. Throws with what was shown when `end` does not come.
    std::string shown_until(const std::string &end);

    /// Waits until a signal has stopped it (WSTOPPED) or let it go on (WCONTINUED); false when it
    /// ended instead.
    bool wait_for_change(int change) const;

    /// Whether it goes on for a moment in which a program that gives up would have ended.
    bool keeps_running() const;

    void send_signal(int number) const;

    /// Waits for its end and the end of its output. One that takes too long is killed.
    run_result finish();

  private:
    int process_ = -1;
    int output_ = -1;
    int errors_ = -1;
    run_result result_ = {};
};

/// Runs a program to its end.
run_result run(const words &command, const start_options &options = {});

/// Runs the lumocmd under test. LUMOCMD_PROGRAM names another one than this build's,
/// LUMOCMD_WRAPPER (words separated by blanks) goes before it: valgrind, an emulator.
run_result lumocmd(const words &arguments, const start_options &options = {});

/// The command that this runs, and the program's path as it appears in its usage line.
words lumocmd_command(const words &arguments);
std::string lumocmd_path();

/// Whether a wrapper stands before it, so that what is done to the process is done to the wrapper.
bool is_wrapped();

/// Why there is no terminal to be had; empty when there is one.
std::string missing_terminal();

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
