// Commands of the client to copy, one for each function that it can send to a daemon.
#pragma once

#include "simulator/daemons.h"

/// The functions of a daemon that listens at this place, each with its command.
std::vector<std::pair<std::string, std::string>> client_commands(const daemon_row &daemon,
                                                                 const std::string &place);
