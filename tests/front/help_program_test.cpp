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

// clang-format off
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
// clang-format on

/// A line about one option of a gateway's type, and what may stand there.
std::string option_lines(const protocol::gateway_row &row, const std::string &option,
                         const std::string &choice) {
    const std::size_t column = 18;
    std::string keyword = std::string(row.name) + "LOCAL";
    keyword.resize(column, ' ');
    return "   " + keyword + row.help_gap + option + "\n                      [" + choice + "]\n";
}

std::string gateway_lines(const protocol::gateway_row &row) {
    const std::string service = std::string("Lumotron-") + row.daemon + " service";
    return option_lines(row, "-s: unix socket of " + service, row.socket) +
           option_lines(row, "-f: request " + service + " function name", row.advertised) +
           option_lines(row, "-p: function parameters_list", "\"" + row.advertised_list + "\"") +
           "\n";
}

std::string options() {
    std::string types = "SOAP, FSMCORE";
    std::string lines;
    for (const protocol::gateway_row *row : protocol::GATEWAYS) {
        if (is_reachable(*row)) {
            types += std::string(", ") + row->name + "LOCAL";
            lines += gateway_lines(*row);
        }
    }
    return BEFORE_THE_TYPES + types + OWN_TYPES + lines + "   -h: displays help\n\n";
}

TEST(HelpProgram, GatewayLinesInFull) {
    EXPECT_EQ(gateway_lines(protocol::gateway_named("TUTONDO")),
              R"(   TUTONDOLOCAL       -s: unix socket of Lumotron-TUTONDOGateway service
                      [lumo_tutondogateway.socket]
   TUTONDOLOCAL       -f: request Lumotron-TUTONDOGateway service function name
                      [SENDTUTONDOSETDATAGRAM, SENDTUTONDOGETDATAGRAM]
   TUTONDOLOCAL       -p: function parameters_list
                      ["SectionName|ZoneNumber|Command|Payload"]

)");
}

std::string whole_help() {
    return BANNER + ("Usage: " + harness::lumocmd_path()) + " [-v] -t [options t-based]\n" +
           options();
}

struct help_case {
    const char *name;
    const char *line;
    const char *complaint; ///< the option library's own line, behind the program's name
    shown_lines output;
};

class Help : public testing::TestWithParam<help_case> {};

void expect_help(const std::string &line, const std::string &complaint, const shown_lines &output) {
    SCOPED_TRACE(line);
    const harness::run_result run = harness::lumocmd(typed(line));
    EXPECT_EQ(run.errors,
              (complaint.empty() ? "" : harness::lumocmd_path() + complaint + "\n") + whole_help());
    EXPECT_EQ(run.output, transcript(run.pid, output));
    EXPECT_EQ(run.status, 506 & 0xff);
}

TEST_P(Help, IsCompleteOnStandardError) {
    expect_help(GetParam().line, GetParam().complaint, GetParam().output);
}

TEST(HelpProgram, EveryOptionMissesItsArgument) {
    for (const char letter : std::string("vtusadfpw")) {
        expect_help(std::string("-") + letter,
                    std::string(": option requires an argument -- '") + letter + "'", {});
    }
}

TEST(HelpProgram, EveryUnsupportedTypeIsRefusedBefore) {
    for (const protocol::request_type_row &row : protocol::request_types_that(
             [](const protocol::request_type_row &each) { return each.need == nullptr; })) {
        expect_help("-t " + row.keyword, "", {red(row.line)});
    }
}

const help_case HELP_ROWS[] = {
    {"NoArguments", "", "", {}},
    {"QuestionMark", "-?", "", {}},
    {"LetterH", "-h", ": invalid option -- 'h'", {}},
    {"LetterBeforeTheSpan", "-A x", ": invalid option -- 'A'", {}},
    {"LetterInsideTheSpanWithoutARow", "-b x", ": invalid option -- 'b'", {}},
    {"LetterBehindTheSpan", "-x", ": invalid option -- 'x'", {}},
    {"LongOption", "--help", ": invalid option -- '-'", {}},
    {"MissingArgumentOfU", "-t SOAP -f F -u", ": option requires an argument -- 'u'", {}},
    {"NoType", "-u U -f F -p P -w 5", "", {}},
    {"NoTypeVerbose", "-v ON -u U", "", {green("[lumocmd] Url selected: U")}},
    {"AfterACompleteRequest", "-t SOAP -u U -f F -?", "", {}},
    {"BeforeLaterFaults", "-? -d 80x -t NOSUCH extra", "", {}},
    {"BeforeTheExtraWordIsSeen", "extra -?", "", {}},
    {"UnsupportedEchobus", "-t ECHOBUSLOCAL", "", {red("ECHOBUS requests unsupported!")}},
    {"UnsupportedWithEveryField",
     "-v ON -t ECHOBUSLOCAL -s S -f F -p P",
     "",
     {tagged_red("ECHOBUS requests unsupported!"), green("[lumocmd] Socket selected: S"),
      green("[lumocmd] Function selected: F"), green("[lumocmd] Parameters selected: P")}},
    {"SupportedThenUnsupported",
     "-t SOAP -t MARTINLOCAL -u U -f F",
     "",
     {red("MARTIN requests unsupported!")}},
};

INSTANTIATE_TEST_SUITE_P(Table, Help, testing::ValuesIn(HELP_ROWS),
                         [](const auto &row) { return row.param.name; });

} // namespace
