// The running simulator: accepts connections for all daemons, serves each in a thread of its
// own, and applies what the daemons were told to do instead of answering properly.
#pragma once

#include "bench.h"
#include "listeners.h"

/// Serves until one of the signals that `signal_descriptor` reports arrives, then waits for the
/// connections to end.
void serve(Bench &bench, const Listeners &listeners, int signal_descriptor);
