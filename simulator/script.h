// The command that the simulator serves, where it was given one.
#pragma once

#include <string>
#include <sys/types.h>
#include <vector>

struct script_run {
    pid_t pid = 0;
    int status = 0; ///< as a shell has it: 128 + n after signal n
    int signal = 0; ///< the last that was passed on
};

/// Starts the command, which finds the simulator in its environment. Returns what kept it from
/// starting, with the status for that; empty when nothing did.
std::string start_script(script_run &script, const std::vector<std::string> &command,
                         const std::string &directory, const std::string &url);

/// Passes a signal on, or reads what SIGCHLD tells. Whether the command has ended.
bool take_signal(script_run &script, int number);
