// The command line: one table of options, from which the help text and the manual's lists of
// options are made too.
#pragma once

#include "simulator/daemons.h"
#include "simulator/report.h"

#define LUMOSIM_VERSION "1.0.0"

inline constexpr const char *DEFAULT_DIRECTORY = "/tmp/lumosim";
inline constexpr int DEFAULT_PORT = 8080;

/// The option that the command follows.
inline constexpr std::string_view SCRIPT_OPTION = "--";

struct simulator_settings {
    std::string directory; ///< empty: a fresh one, for a command
    int port = -1;         ///< 0: chosen by the system
    std::string ready_file;
    std::vector<std::string> sessions;
    int patience = 30000; ///< milliseconds that a client may take over its request
    bool raw = false;
    std::string expect_file;
    bool any_order = false; ///< of the expected requests
    std::string record_file;
    std::string replay_file;
    std::string forward_directory; ///< where the sockets of a real controller are
    std::string forward_url;       ///< of its web service
    std::string state_file;
    std::string state_out_file; ///< "-": standard output
    log_format_kind log_format = log_format_kind::TEXT;
    std::vector<std::string> script; ///< the command to serve, with its arguments
    bool help = false;
    bool version = false;
    /// In the order of DAEMONS.
    std::vector<told_behaviour> behaviours = std::vector<told_behaviour>(DAEMONS.size());
};

struct option_row {
    std::string_view name;
    std::string_view argument; ///< empty: it takes none
    std::string_view help;
    std::string (*apply)(simulator_settings &settings, const std::string &argument);
    std::string (*tell)(told_behaviour &told,
                        const std::string &text) = nullptr; ///< where it begins DAEMON
    std::string (*help_end)() = nullptr; ///< closes the help with what is stated elsewhere
    bool alone = false;                  ///< prints something instead of serving
};

extern const std::span<const option_row> OPTIONS;

/// Fills the settings from the arguments after the program name. Returns what is wrong with
/// them, empty when nothing is.
std::string read_options(const std::vector<std::string> &arguments, simulator_settings &settings);
std::string help_text();
