// Everything that the threads of one running simulator share.
#pragma once

#include "home.h"
#include "journal.h"
#include "options.h"
#include "replay.h"

struct Bench {
    const Settings &settings;
    Home home = {};
    Journal journal = {};
    Replay replay = {};
    std::vector<std::string> places = {}; ///< where each listens, in the order of DAEMONS
};
