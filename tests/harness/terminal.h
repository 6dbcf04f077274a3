// A program on a terminal of its own, typed to and watched. Every wait is bounded.

#pragma once

#include "tests/harness/process.h"

#include <string>

namespace harness {

/// Why there is no terminal to be had; empty when there is one.
std::string missing_terminal();

class terminal {
  public:
    explicit terminal(const words &command);

    void type(const std::string &keys) const {
        program_.type(keys);
    }

    /// Everything shown since the last call, up to and including `end`, without carriage returns
    /// and escape sequences. Throws with what was shown when `end` does not come.
    std::string shown_until(const std::string &end);

  private:
    started_program program_;
    std::string unread_;
};

} // namespace harness
