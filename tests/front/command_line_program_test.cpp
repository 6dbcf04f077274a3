// What every option and every request type says, what is refused, where scanning stops, and the
// help: all of it, where it goes, and everything that leads to it.

#include "tests/front/transcript.h"
#include "tests/protocol/gateways.h"

namespace {

using namespace front_tests;
using protocol::request_type_row;

const char MALFORMED[] = "utility->parse_cmd_line malformed request";
const char NOT_PARSED[] = "main->main error on parsing command line";
const char UNIMPLEMENTED[] = "main->main error unimplemented feature";
const char BAD_PORT[] =
    "utility->parse_cmd_line bad parameter: service port must be a number and upper than 1024";
const char BAD_WAITTIME[] = "utility->parse_cmd_line bad parameter: waittime must be a number";
const char SOAP_INCOMPLETE[] =
    "utility->parse_cmd_line malformed request: url and function paremeters required for SOAP";

// An extra word ends each run in the parser, so that nothing but the option speaks.
TEST(Options, ShowTheirArguments) {
    const std::pair<const char *, const char *> rows[] = {
        {"-a 10.0.0.1", "Internet service address selected: 10.0.0.1"},
        {"-f Service_%s%n", "Function selected: Service_%s%n"},
        {"-p 'a| b||c'", "Parameters selected: a| b||c"},
        {"-s /run/s", "Socket selected: /run/s"},
        {"-u http://h/p", "Url selected: http://h/p"},
        {"-uU", "Url selected: U"},
        {"-p ''", "Parameters selected: "},
        {"-d 1025", "Port selected: 1025"},
        {"-d2147483647", "Port selected: 2147483647"},
        {"-d ' +02000'", "Port selected: 2000"},
        {"-w 5", "Waittime selected: 5"},
        {"-w -2147483648", "Waittime selected: -2147483648"},
    };
    for (const auto &[option, line] : rows) {
        expect_transcript(std::string("-v ON ") + option + " extra",
                          green(line) + tagged_red(MALFORMED), 505);
    }
}

TEST(Options, UnreadableNumbersEndTheRunAtOnce) {
    const std::string behind = " -v ON -u U -h extra";
    for (const std::string option : {"-d 1024", "-d 0", "-d ''", "-d -2000", "-d 2000x",
                                     "-d '2000 '", "-d 0x2000", "-d 4294969296"}) {
        expect_transcript(option + behind, red(BAD_PORT), 502);
    }
    for (const std::string option : {"-w 5x", "-w -", "-w ' '", "-w 2147483648"}) {
        expect_transcript(option + behind, red(BAD_WAITTIME), 502);
    }
}

TEST(Options, AreScannedInTheirOrder) {
    const struct {
        const char *line;
        std::string output;
        int status = 505;
    } rows[] = {
        // -v
        {"-v oN -u U extra", green("Url selected: U") + tagged_red(MALFORMED)},
        {"-v Off -u U extra", red(MALFORMED)},
        {"-t SOAP -u U -v ON -w 5", green("Waittime selected: 5") + tagged_red(SOAP_INCOMPLETE)},
        {"-v ON -t SOAP -v OFF -u U", green("Soap request selected") + red(SOAP_INCOMPLETE)},
        {"-v ON -v OFF -u U -v ON -w 5 -w 6 extra",
         green("Waittime selected: 5") + green("Waittime selected: 6") + tagged_red(MALFORMED)},
        {"-v maybe -d 80x -h extra", red(NOT_PARSED) + plain("LMCM-505")},
        {"-v ON -v maybe -v OFF", tagged_red(NOT_PARSED) + plain("LMCM-505")},
        {"-t TECNOUTINTERNET -v maybe -t NOSUCH", red(UNIMPLEMENTED) + plain("LMCM-507"), 507},
        // -t
        {"-v ON -t NOSUCH -d 80x -h extra", tagged_red(NOT_PARSED) + plain("LMCM-505")},
        {"-t TECNOUTINTERNET -t NOSUCH -w x", red(UNIMPLEMENTED) + plain("LMCM-507"), 507},
        {"-t IBSLOCAL -t NOSUCH",
         red("IBS requests unsupported!") + red(NOT_PARSED) + plain("LMCM-505")},
        {"-t EIBLOCAL -t soap -s S -f F -p P", red(SOAP_INCOMPLETE)},
        // Words that belong to no option.
        {"extra -t SOAP -u U -f F", red(MALFORMED)},
        {"-t SOAP extra -v ON -u U more -f F",
         green("Url selected: U") + green("Function selected: F") + tagged_red(MALFORMED)},
        {"-t SOAP -u U -f F -", red(MALFORMED)},
        {"-t SOAP -u U -- -f F", red(MALFORMED)},
        {"-t SOAP -u U --", red(SOAP_INCOMPLETE)},
        {"extra -w x", red(BAD_WAITTIME), 502},
    };
    for (const auto &row : rows) {
        expect_transcript(row.line, row.output, row.status);
    }
}

// --- Request types

TEST(RequestTypes, AreSelectedInAnyCase) {
    for (const request_type_row &row : protocol::request_types()) {
        const std::string mixed = protocol::lower(row.keyword.substr(0, 2)) + row.keyword.substr(2);
        expect_transcript("-v ON -t " + mixed + " extra",
                          (row.need != nullptr ? green(row.line) : tagged_red(row.line)) +
                              tagged_red(MALFORMED),
                          505);
    }
}

TEST(RequestTypes, MissEachRequiredFieldByItself) {
    for (const request_type_row &row : protocol::request_types()) {
        for (std::size_t i = 0; row.need != nullptr && i < row.need->required.size(); i++) {
            harness::words given = row.need->required;
            given[i] = row.need->idle;
            expect_transcript("-t " + row.keyword + " " + protocol::joined(given, " "),
                              red(need_message(row)), 505);
        }
    }
}

TEST(RequestTypes, OfTheInternetAreCheckedInFullAndUnimplemented) {
    for (const request_type_row &row : protocol::request_types()) {
        if (row.need != &protocol::INTERNET_NEED) {
            continue;
        }
        // A field counts as given when its option was, whatever its text.
        for (const char *fields : {"-a 10.0.0.1 -d 2000 -f X -p a", "-a '' -d 1025 -f '' -p ''"}) {
            expect_transcript("-t " + row.keyword + " " + fields,
                              red(UNIMPLEMENTED) + plain("LMCM-507"), 507);
        }
    }
}

// --- The help

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
