// The running simulator: listens for all daemons, serves their clients, and applies what the
// daemons were told to do instead of answering properly.
#pragma once

#include "simulator/bench.h"

/// Opens everything, says so, and serves until SIGINT or SIGTERM, or the end of the command, to
/// which those signals are passed on. Then the conversations end.
/// Returns what kept it from serving; empty when nothing did.
std::string serve(test_bench &bench);
