// Everything that the simulator prints on standard output: whole lines, flushed, never mixed up
// by connections that end at the same time.
#pragma once

#include <string>

/// Prints the text and a line feed.
void print_line(const std::string &text);
