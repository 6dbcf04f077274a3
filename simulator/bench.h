// Everything that the threads of one running simulator share.
#pragma once

#include "simulator/home.h"
#include "simulator/journal.h"
#include "simulator/options.h"
#include "simulator/request_list.h"

struct Bench {
    const Settings &settings;
    Home home = {};
    Journal journal = {};
    Replay replay = {};
    std::vector<std::string> places = {}; ///< where each listens, in the order of DAEMONS
};
