// A program on a terminal of its own, typed to and watched. Every wait is bounded.

#pragma once

#include "tests/harness/process.h"

#include <string>
#include <sys/types.h>

namespace harness {

/// Why there is no terminal to be had; empty when there is one.
std::string missing_terminal();

class terminal {
  public:
    /// Starts the program on a wide dumb terminal.
    explicit terminal(const words &command);

    /// Kills the program.
    ~terminal();

    terminal(const terminal &) = delete;
    terminal &operator=(const terminal &) = delete;

    void type(const std::string &keys) const;

    /// Everything shown since the last call, up to and including `end`, without carriage returns
    /// and escape sequences. Throws with what was shown when `end` does not come.
    std::string shown_until(const std::string &end);

  private:
    int master_ = -1;
    pid_t child_ = -1;
    std::string unread_;
};

} // namespace harness
