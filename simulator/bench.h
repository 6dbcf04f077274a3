// Everything that one running simulator holds.
#pragma once

#include "simulator/home.h"
#include "simulator/journal.h"
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
