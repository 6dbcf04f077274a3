// The command line: one table of options, from which the help text is made too.
#pragma once

#include "daemons.h"

#include <array>
#include <string>
#include <vector>

struct Settings {
    std::string directory = "/tmp/lumosim";
    int port = 8080; ///< 0: chosen by the system
    std::string ready_file;
    std::vector<std::string> sessions;
    int patience = 30000; ///< milliseconds that a client may take over its request
    bool raw = false;
    bool help = false;
    bool version = false;
    std::array<Behaviour, DAEMON_COUNT> behaviours; ///< in the order of DAEMONS
};

/// Fills the settings from the arguments after the program name. Returns what is wrong with
/// them, empty when nothing is.
std::string read_options(const std::vector<std::string> &arguments, Settings &settings);

/// The text of --help.
std::string help_text();
