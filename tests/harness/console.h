// The console lines as the diagnostics write them, for expected outputs.

#pragma once

#include <cstdio>
#include <functional>
#include <string>
#include <sys/types.h>

namespace harness {

/// A red failure line with its line feed, without the pid tag and with the one of -v ON.
std::string red(const std::string &message);
std::string tagged_red(pid_t pid, const std::string &message);

/// A green line with its pid tag and line feed; `text` begins with "[lumocmd] ".
std::string green(pid_t pid, const std::string &text);

/// Everything that `action` writes to this process's standard output, or to another stream.
std::string captured_output(const std::function<void()> &action, FILE *stream = stdout);

} // namespace harness
