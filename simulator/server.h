// The running simulator: listens for all daemons, serves their clients, and applies what the
// daemons were told to do instead of answering properly.
#pragma once

#include "simulator/bench.h"

/// Listens, prints where, and serves until SIGINT or SIGTERM or, with a command, until its end; the
/// signals are passed on to it. Returns an error message; empty when it has served.
std::string serve(test_bench &bench);
