// A place where scripts run: a shell, the programs that it finds, and nothing else of the machine.

#pragma once

#include "tests/harness/process.h"

#include <ostream>
#include <string>
#include <vector>

/// A shell that scripts are written for, with the programs that come with it.
struct shell_row {
    const char *name;
    harness::words command;
    bool brings_programs; ///< finds no program but its own
};

extern const std::vector<shell_row> SHELLS;

void PrintTo(const shell_row &shell, std::ostream *out);

/// The directories of one shell's programs. `lumocmd` is the program under test; `logger` and
/// `sleep` write their arguments, a line each, to `syslog` and `pauses` in the working directory
/// instead of doing what they are for.
class shell_room {
  public:
    explicit shell_room(const shell_row &shell);

    /// Lets the shell find a program of the machine that does not come with it.
    void add_program(const std::string &name) const;

    /// Replaces or adds a program by a script for sh.
    void add_script(const std::string &name, const std::string &text) const;

    /// Runs a script in the directory.
    harness::run_result run(const std::string &script, const std::string &directory) const;

  private:
    const shell_row &shell_;
    harness::temporary_directory programs_;
    std::string path_;
};

/// Where an installation puts the library, and where its source is.
extern const char *const INSTALLED_LIBRARY;
extern const char *const LIBRARY;

std::string file_text(const std::string &path);

/// The text with every occurrence of `from` replaced.
std::string replaced(std::string text, const std::string &from, const std::string &to);
