// The running simulator: everything that it holds, and its service.
#pragma once

#include "simulator/home.h"
#include "simulator/options.h"
#include "simulator/request_list.h"
#include "simulator/script.h"

/// How far a daemon has come with what it was told to do some times only.
struct daemon_turns {
    int requests = 0;
    int refusals = 0;
};

struct test_bench {
    simulator_settings &settings; ///< what the daemons are told may change
    home_state home = {};
    request_journal journal = {};
    replay_list replay = {};
    script_run script = {};
    std::vector<daemon_turns> turns = std::vector<daemon_turns>(DAEMONS.size());
    std::vector<std::string> places = {}; ///< where each listens, in the order of DAEMONS
};

/// Listens, prints where, and serves until SIGINT or SIGTERM or, with a command, until its end; the
/// signals are passed on to it. Returns an error message; empty when it has served.
std::string serve(test_bench &bench);
