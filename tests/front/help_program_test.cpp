// The help: all of it, where it goes, and everything that leads to it.

#include "tests/front/transcript.h"

namespace {

using namespace front_tests;

const char BANNER[] = R"(
[lumocmd]. Lumotron FSM Daemon Server - Command line Tool.
Version 2.6.16_arlo [rev.7655]. Free software under the GNU GPL, version 2 or later.
Manuals and support are on the Lumotron web site.

)";

// clang-format off
const char HELP[] = R"(Options:
   -v: verbose mode
       [ON , OFF]
   -t: request type
       [SOAP, FSMCORE, EIBLOCAL, SMSTOOLLOCAL, LINTRONICLOCAL, TECNOUTLOCAL, VIVALDILOCAL, BENTELLOCAL, TUTONDOLOCAL]

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

   EIBLOCAL          -s: unix socket of Lumotron-EIBGateway service
                      [lumo_eibgateway.socket]
   EIBLOCAL          -f: request Lumotron-EIBGateway service function name
                      [SENDEIBUSSETDATAGRAM, SENDEIBUSGETDATAGRAM]
   EIBLOCAL          -p: function parameters_list
                      ["SectionName|Destination|EISType|Payload"]

   SMSTOOLLOCAL      -s: unix socket of Lumotron-SMSTOOLGateway service
                      [lumo_smstoolgateway.socket]
   SMSTOOLLOCAL      -f: request Lumotron-SMSTOOLGateway service function name
                      [SENDSMSTOOLDATAGRAM]
   SMSTOOLLOCAL      -p: function parameters_list
                      ["SectionName|To|Message"]

   LINTRONICLOCAL    -s: unix socket of Lumotron-LINTRONICGateway service
                      [lumo_lintronicgateway.socket]
   LINTRONICLOCAL    -f: request Lumotron-LINTRONICGateway service function name
                      [SENDLINTRONICRAWDATAGRAM]
   LINTRONICLOCAL    -p: function parameters_list
                      ["SectionName|Device|Command|Payload"]

   TECNOUTLOCAL      -s: unix socket of Lumotron-TECNOUTGateway service
                      [lumo_tecnoutgateway.socket]
   TECNOUTLOCAL      -f: request Lumotron-TECNOUTGateway service function name
                      [SENDTECNOUTCOMMANDDATAGRAM]
   TECNOUTLOCAL      -p: function parameters_list
                      ["SectionName|UserCode|Command|Payload"]

   VIVALDILOCAL      -s: unix socket of Lumotron-VIVALDIGateway service
                      [lumo_vivaldigateway.socket]
   VIVALDILOCAL      -f: request Lumotron-VIVALDIGateway service function name
                      [SENDVIVALDISETDATAGRAM, SENDVIVALDIGETDATAGRAM]
   VIVALDILOCAL      -p: function parameters_list
                      ["SectionName|CentralNumber|RC20Number|RC20OnOff|RC20Volume..."]

   BENTELLOCAL       -s: unix socket of Lumotron-BENTELGateway service
                      [lumo_bentelgateway.socket]
   BENTELLOCAL       -f: request Lumotron-BENTELGateway service function name
                      [SENDBENTELCOMMANDDATAGRAM]
   BENTELLOCAL       -p: function parameters_list
                      ["SectionName|UserCode|Command|Payload"]

   TUTONDOLOCAL       -s: unix socket of Lumotron-TUTONDOGateway service
                      [lumo_tutondogateway.socket]
   TUTONDOLOCAL       -f: request Lumotron-TUTONDOGateway service function name
                      [SENDTUTONDOSETDATAGRAM, SENDTUTONDOGETDATAGRAM]
   TUTONDOLOCAL       -p: function parameters_list
                      ["SectionName|ZoneNumber|Command|Payload"]

   -h: displays help

)";
// clang-format on

std::string whole_help() {
    return BANNER + ("Usage: " + harness::lumocmd_path()) + " [-v] -t [options t-based]\n" + HELP;
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
    {"UnsupportedMartin", "-t MARTININTERNET", "", {red("MARTIN requests unsupported!")}},
    {"UnsupportedIbs", "-t IBSLOCAL", "", {red("IBS requests unsupported!")}},
    {"UnsupportedByme", "-t BYMEINTERNET", "", {red("BYME requests unsupported!")}},
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
