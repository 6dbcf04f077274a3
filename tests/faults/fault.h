// Runs lumocmd with one of its calls failing, and tells what it called.

#pragma once

#include "tests/harness/process.h"

#include <string>

namespace fault_tests {

/// A call that fails. The default lets every call pass.
struct fault {
    const char *call = "";
    int number = 1;       ///< which of the calls of this name, from 1
    int error = 0;        ///< its error number
    int limit = -1;       ///< without an error: the most bytes that it takes
    bool onwards = false; ///< all later calls of this name fail as well
};

struct faulty_run {
    harness::run_result run;
    harness::words journal; ///< a line per call, in order
    harness::words hits;    ///< the lines of the calls that failed
    harness::words records; ///< what went to the system log: "priority text"
};

/// Where a run of its own leaves its journal.
class journal_file {
  public:
    journal_file();

    /// The environment of a run with this fault.
    harness::words settings(const fault &wanted) const;

    /// What was called; the run itself is not part of it.
    faulty_run read() const;

  private:
    harness::temporary_directory directory_;
    std::string path_;
};

faulty_run lumocmd_with(const fault &wanted, const harness::words &arguments);

/// How often the journal enters a call of this name.
int calls_of(const faulty_run &run, const std::string &name);

/// Why no call of the program under test can be made to fail; empty when it can.
std::string unreachable_reason();

/// For messages of failing rows.
std::string described(const fault &wanted);

} // namespace fault_tests

/// The interposer reaches neither a wrapper's program nor one that is linked statically.
#define SKIP_UNLESS_REACHABLE()                                                                    \
    if (const std::string reason = fault_tests::unreachable_reason(); !reason.empty())             \
    GTEST_SKIP() << reason
