// Runs lumocmd with one of its calls failing, and tells what it called.

#pragma once

#include "tests/harness/process.h"

#include <string>

namespace failure_tests {

/// A call that fails. The default lets every call pass.
struct fault {
    std::string call = {};
    int number = 1;       ///< which of the calls of this name, from 1
    int error = 0;        ///< its error number
    int limit = -1;       ///< without an error: the most bytes that it takes
    bool onwards = false; ///< all later calls of this name fail as well
};

struct faulty_run {
    harness::run_result run;
    harness::words calls;       ///< the names of the calls, in order, but for allocations
    harness::words allocations; ///< those: "allocation program malloc 21"
    harness::words hits;        ///< the ones that failed
    harness::words records;     ///< what went to the system log: "priority text"
};

faulty_run lumocmd_with(const fault &wanted, const harness::words &arguments,
                        harness::start_options options = {});

/// Why no call of the program under test can be made to fail; empty when it can.
std::string unreachable_reason();

/// A failure as the interposer is told it, which messages of failing rows show as well.
std::string described(const fault &wanted);

} // namespace failure_tests
