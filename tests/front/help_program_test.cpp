// The help: all of it, where it goes, and everything that leads to it.

#include "tests/front/transcript.h"
#include "tests/protocol/request_types.h"

namespace {

using namespace front_tests;

const char BANNER[] = R"(
[lumocmd]. Lumotron FSM Daemon Server - Command line Tool.
Version 2.6.16_arlo [rev.7655]. Free software under the GNU GPL, version 2 or later.
Manuals and support are on the Lumotron web site.

)";

const char BEFORE_THE_TYPES[] = R"(Options:
   -v: verbose mode
       [ON , OFF]
   -t: request type
       [)";

const char OWN_TYPES[] = R"(]

   SOAP              -u: url of Lumotron web service
                      [http://localhost/cgi-bin/lumows]
   SOAP              -f: request web service function name
                      [SERVICE_VERSIONINFO, SERVICE_TEST
                       SERVICE_GETELEMENTSTATUS, SERVICE_RUNONELEMENT, etc etc...]
   SOAP              -p: function parameters_list (optional)
                      ["param1|param2| ... |paramn"]
   SOAP              -w: function waittime (optional)
                      [5]

   FSMCORE           -s: unix socket of Lumotron-EIBGateway service
                      [lumo_fsmcore.socket]
   FSMCORE           -f: request Lumotron-FSMCore service function name
                      [...]
   FSMCORE           -p: function parameters_list
                      ["it|depends|from|function|..."]

)";

std::string gateway_lines(const protocol::gateway_row &row) {
    std::string type = "   " + std::string(row.name) + "LOCAL";
    type.resize(21, ' ');
    type += row.help_gap;
    const std::string next = "\n" + std::string(22, ' ') + "[";
    return type + "-s: unix socket of Lumotron-" + row.daemon + " service" + next + row.socket +
           "]\n" + type + "-f: request Lumotron-" + row.daemon + " service function name" + next +
           row.advertised + "]\n" + type + "-p: function parameters_list" + next + '"' +
           row.advertised_list + "\"]\n\n";
}

std::string whole_help() {
    std::string types = "SOAP, FSMCORE";
    std::string lines;
    for (const protocol::gateway_row &row : protocol::GATEWAYS) {
        if (is_reachable(row)) {
            types += std::string(", ") + row.name + "LOCAL";
            lines += gateway_lines(row);
        }
    }
    return BANNER + ("Usage: " + harness::lumocmd_path()) + " [-v] -t [options t-based]\n" +
           BEFORE_THE_TYPES + types + OWN_TYPES + lines + "   -h: displays help\n\n";
}

/// @param complaint the option library's own line, behind the program's name.
void expect_help(const std::string &line, const std::string &complaint = "",
                 const std::string &output = "") {
    const std::string first = complaint.empty() ? "" : harness::lumocmd_path() + complaint + "\n";
    expect_transcript(line, output, 506, first + whole_help());
}

TEST(Help, IsCompleteOnStandardError) {
    expect_help("");
    expect_help("-?");
    expect_help("-t SOAP -u U -f F -?");
    expect_help("-? -d 80x -t NOSUCH extra");
    expect_help("extra -?");
    expect_help("-u U -f F -p P -w 5");
    expect_help("-v ON -u U", "", green("Url selected: U"));
    expect_help("--help", ": invalid option -- '-'");
    for (const std::string letter : {"h", "A", "b", "x"}) {
        expect_help("-" + letter + " y", ": invalid option -- '" + letter + "'");
    }
    for (const char letter : std::string("vtusadfpw")) {
        expect_help(std::string("-t SOAP -u U -f F -") + letter,
                    std::string(": option requires an argument -- '") + letter + "'");
    }
}

TEST(Help, FollowsARefusedType) {
    for (const protocol::request_type_row &row : protocol::request_types()) {
        if (row.need == nullptr) {
            expect_help("-s S -a A -d 2000 -u U -f F -p P -t SOAP -t " + row.keyword, "",
                        red(row.line));
        }
    }
}

} // namespace
