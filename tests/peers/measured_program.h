// The lumocmd under test as a process that can be watched while it runs, with what it cost.

#pragma once

#include "tests/harness/process.h"

#include <cstddef>

namespace harness {

/// How a run ended and what it cost.
struct measured_run {
    run_result run;
    long kilobytes; ///< most memory that was resident at any time
};

/// A started lumocmd. It is killed when it outlives the record.
class measured_program {
  public:
    explicit measured_program(const words &arguments);
    ~measured_program();
    measured_program(const measured_program &) = delete;
    measured_program &operator=(const measured_program &) = delete;

    /// True when the program goes on for a moment in which one that gives up would have ended.
    bool keeps_waiting() const;

    /// Asks the program to end, as a user or timeout(1) would.
    void terminate() const;

    /// Waits for the end; one that takes too long is killed and has the status -1.
    measured_run finish();

  private:
    bool ends_within(int milliseconds) const;

    pid_t pid_ = -1;
    int process_ = -1;
    int output_ = -1;
    int errors_ = -1;
};

/// Whether memory and time are the shipped program's own. Instrumented and emulated ones are slow
/// and large: they get smaller floods and no bounds.
bool is_shipped_program();

} // namespace harness
