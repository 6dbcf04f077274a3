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

/// Starts the command, with the simulator's places in its environment. Returns an error message and
/// the exit status for it; empty when it runs.
std::string start_script(script_run &script, const std::vector<std::string> &command,
                         const std::string &directory, const std::string &url);

/// Passes a signal on, or reaps the command after SIGCHLD. Whether it has ended.
bool take_signal(script_run &script, int number);
