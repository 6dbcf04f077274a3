// Starts lumocmd the way an odd caller does, and tells how it really ended: a killed process is not
// taken for one with a large status. Every wait is bounded.

#pragma once

#include "tests/harness/process.h"

#include <functional>
#include <gtest/gtest.h>
#include <string>
#include <sys/types.h>

namespace fault_tests {

struct odd_start {
    harness::words arguments = {};
    bool empty_vector = false;       ///< not even the program's name
    bool empty_environment = false;  ///< before the settings
    harness::words settings = {};    ///< "NAME=value" for the environment
    std::function<void()> prepare{}; ///< what the caller does last before it becomes the program
};

/// How a process ended.
struct ending {
    std::string output;
    std::string errors;
    pid_t pid = -1;
    bool in_time = false;
    int status = -1; ///< exit status, or -1
    int signal = 0;  ///< the signal that killed it, or 0
};

/// A running lumocmd. Standard input is empty, output and errors are kept.
class started_lumocmd {
  public:
    explicit started_lumocmd(const odd_start &start);
    ~started_lumocmd();
    started_lumocmd(const started_lumocmd &) = delete;
    started_lumocmd &operator=(const started_lumocmd &) = delete;

    pid_t pid() const {
        return pid_;
    }

    /// Sends a signal, which must be possible.
    void send_signal(int number) const;

    /// Waits for a change of state that waitid tells of: WSTOPPED or WCONTINUED.
    void await(int change) const;

    /// Waits for the end.
    ending finish();

  private:
    pid_t pid_ = -1;
    int output_ = -1;
    int errors_ = -1;
};

/// Starts and waits for the end.
ending run_oddly(const odd_start &start);

/// Ended by itself, with this status as a shell sees it.
void expect_status(const ending &end, int status);

} // namespace fault_tests

/// A limit or a closed descriptor would hit the wrapper, not the program.
#define SKIP_BEHIND_A_WRAPPER()                                                                    \
    if (const char *wrapper = getenv("LUMOCMD_WRAPPER"); wrapper != nullptr && *wrapper != '\0')   \
    GTEST_SKIP() << "what the caller does would hit the wrapper"
