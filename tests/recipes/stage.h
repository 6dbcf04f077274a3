// lumo.sh on its own, in a shell under "set -eu": a script stands for lumocmd.

#pragma once

#include "tests/recipes/shell_room.h"

#include <string>
#include <vector>

/// What lumocmd says in one call, and what it exits with.
struct saying {
    std::string output;
    int exit;
    std::string errors = {};
};

/// One shell, and what lumocmd says there call by call.
struct stage {
    stage(const shell_row &shell, const std::vector<saying> &sayings);
    harness::run_result run(const std::string &script) const;
    /// A file of the scripts' directory: "calls" has a line of "<argument>"s for each call.
    std::string noted(const char *file) const;

    shell_room room;
    harness::temporary_directory directory;
};

/// A red line, and a green one with its process.
std::string red(const std::string &message);
std::string green(const std::string &text);

/// What is said when a gateway cannot be reached, and when a url cannot be used.
inline const std::string UNOPENED =
    red("utility->make_localtcpclient_socket connect failed with error 'Connection refused'") +
    red("EIBGatewayutil->eibgateway_local_request error opening socket EIBGateway clientside for "
        "function SENDEIBUSSETDATAGRAM");
inline const std::string UNUSABLE_URL =
    "Error 3986 fault at source [no subcode]\n"
    "\"url 'u' cannot be used\"\nDetail: one like v is needed\n";
