// The home as a file, for --state and --state-out.
#pragma once

#include "simulator/home.h"

#include <string>

/// Fills the home from the text of a state file. A part that the text names replaces the whole
/// part; the others stay. Returns what is wrong with the text, empty when nothing is.
std::string read_state(const std::string &text, home_state &home);

/// The text of a state file.
std::string write_state(const home_state &home);
