// The running simulator: everything that it holds, and its service.
#pragma once

#include "simulator/home.h"
#include "simulator/options.h"
#include "simulator/request_list.h"

#include <sys/types.h>

/// How far a daemon has come with what it was told to do some times only.
struct daemon_turns {
    int requests = 0;
    int refusals = 0;
};

/// The command that the simulator serves, where it was given one.
struct script_run {
    pid_t pid = 0;
    int status = 0; ///< as a shell has it: 128 + n after signal n
    int signal = 0; ///< the last that was passed on
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

/// Starts the command, with the simulator's places in its environment. Returns an error message and
/// the exit status for it; empty when it runs.
std::string start_script(script_run &script, const std::vector<std::string> &command,
                         const std::string &directory, const std::string &url);

/// Passes a signal on, or reaps the command after SIGCHLD. Whether it has ended.
bool take_signal(script_run &script, int number);
