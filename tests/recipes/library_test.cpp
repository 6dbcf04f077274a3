// lumo.sh on its own, in every shell under "set -eu": a script stands for lumocmd and says what a
// row tells it to say.

#include "tests/recipes/stage.h"

#include <gtest/gtest.h>
#include <sstream>

namespace {

using namespace harness;

const std::string TAGGED_UNOPENED =
    "\x1b[1;31m<4711>\x1b[0;39m " +
    red("FSMCoreutil->fsmcore_requeststatic error opening socket FSMCore clientside for function "
        "'GETSTATE'");
const std::string UNREADABLE =
    red("EIBGatewayutil->eibgateway_local_request strtok parsing 'Response Status: ' response tag "
        "failed for function SENDEIBUSSETDATAGRAM");

/// What lumocmd says, and what the caller finds.
struct call_row {
    const char *name;
    saying said;
    const char *code;
    const char *prefix;
    int returned;
    const char *status;
    const char *outcome;
    std::string output = {}; ///< LUMO_OUTPUT
};

void PrintTo(const call_row &row, std::ostream *out) {
    *out << row.name;
}

const call_row CALLS[] = {
    {"Success", {"LMCM-0000\n", 0}, "0", "LMCM", 0, "LMCM-0000", "done"},
    {"LowEightBitsAreNought", {"ECHG-256\n", 0}, "256", "ECHG", 1, "ECHG-256", "refused"},
    {"LeadingNoughtsAreNotOctal", {"FSMC-009\n", 9}, "9", "FSMC", 9, "FSMC-009", "refused"},
    {"Negative", {"LMCM--005\n", 251}, "-5", "LMCM", 251, "LMCM--005", "refused"},
    {"PrefixWithDigits", {"VTS10-2401\n", 97}, "2401", "VTS10", 97, "VTS10-2401", "refused"},
    {"Largest",
     {"LGMG-2147483647\n", 255},
     "2147483647",
     "LGMG",
     255,
     "LGMG-2147483647",
     "refused"},
    {"DaemonsOwn105", {"EIBG-105\n", 105}, "105", "EIBG", 105, "EIBG-105", "refused"},
    {"DaemonsOwn105BelowAValue",
     {green("Parameters selected: an error opening socket X clientside for function Y") +
          "EIBG-105\n",
      105},
     "105",
     "EIBG",
     105,
     "EIBG-105",
     "refused",
     "<4711> [lumocmd] Parameters selected: an error opening socket X clientside for function Y"},
    {"Unreachable",
     {UNOPENED + "EIBG-105\n", 105},
     "105",
     "EIBG",
     105,
     "EIBG-105",
     "unreachable",
     "[lumocmd] utility->make_localtcpclient_socket connect failed with error 'Connection refused'\n"
     "[lumocmd] EIBGatewayutil->eibgateway_local_request error opening socket EIBGateway clientside "
     "for function SENDEIBUSSETDATAGRAM"},
    {"UnreachableFsmcore",
     {TAGGED_UNOPENED + "FSMC-006\n", 6},
     "6",
     "FSMC",
     6,
     "FSMC-006",
     "unreachable",
     "<4711> [lumocmd] FSMCoreutil->fsmcore_requeststatic error opening socket FSMCore clientside "
     "for function 'GETSTATE'"},
    {"UnreadableAnswer",
     {UNREADABLE + "EIBG-107\n", 107},
     "107",
     "EIBG",
     107,
     "EIBG-107",
     "unknown",
     "[lumocmd] EIBGatewayutil->eibgateway_local_request strtok parsing 'Response Status: ' "
     "response tag failed for function SENDEIBUSSETDATAGRAM"},
    {"UnknownFunction",
     {red("x->y error function 'F' not supported") + "BENT-1301\n", 21},
     "1301",
     "BENT",
     21,
     "BENT-1301",
     "invalid",
     "[lumocmd] x->y error function 'F' not supported"},
    {"TooLong",
     {red("x->y error request text is longer than 1023 characters for function 'F'") + "FSMC-008\n",
      8},
     "8",
     "FSMC",
     8,
     "FSMC-008",
     "invalid",
     "[lumocmd] x->y error request text is longer than 1023 characters for function 'F'"},
    {"UnsupportedFunction", {"LMCM-503\n", 247}, "503", "LMCM", 247, "LMCM-503", "invalid"},
    {"TextThatAServiceReports",
     {"LMCM-502\n", 246, UNUSABLE_URL},
     "502",
     "LMCM",
     246,
     "LMCM-502",
     "unknown",
     "Error 3986 fault at source [no subcode]\n\"url 'u' cannot be used\"\nDetail: one like v is "
     "needed"},
    {"RefusedCommandLine",
     {red("utility->parse_cmd_line malformed request"), 249},
     "",
     "",
     249,
     "exit 249",
     "invalid",
     "[lumocmd] utility->parse_cmd_line malformed request"},
    {"Help", {"", 250, "Usage: lumocmd\n"}, "", "", 250, "exit 250", "invalid", "Usage: lumocmd"},
    {"OutOfMemory", {"", 1}, "", "", 1, "exit 1", "unknown"},
    {"NoStatusAtAll", {"", 0}, "", "", 1, "exit 0", "unknown"},
    {"CutShort",
     {green("Status: OFF"), 124},
     "",
     "",
     124,
     "exit 124",
     "unknown",
     "<4711> [lumocmd] Status: OFF"},
    {"ExitStatusOfAnother", {"LMCM-0000\n", 143}, "", "", 143, "exit 143", "unknown", "LMCM-0000"},
    {"ValueLikeAStatus",
     {green("Parameters selected: a\nLMCM-0250"), 250},
     "",
     "",
     250,
     "exit 250",
     "invalid",
     "<4711> [lumocmd] Parameters selected: a\nLMCM-0250"},
};

class Call : public testing::TestWithParam<std::tuple<call_row, shell_row>> {};

TEST_P(Call, TellsItsCaller) {
    const auto &[row, shell] = GetParam();
    const stage stage(shell, {row.said});
    const run_result seen = stage.run(R"sh(returned=0
lumo_call -p 'a b|*' '' || returned=$?
printf '%s\n' "$LUMO_CODE" "$LUMO_PREFIX" "$LUMO_EXIT" "$returned" "$LUMO_OUTPUT"
lumo_status
lumo_outcome)sh");
    std::ostringstream expected;
    expected << row.code << "\n"
             << row.prefix << "\n"
             << row.said.exit << "\n"
             << row.returned << "\n"
             << row.output << "\n"
             << row.status << "\n"
             << row.outcome << "\n";
    EXPECT_EQ(seen.output, expected.str());
    EXPECT_EQ(seen.errors, "");
    EXPECT_EQ(stage.noted("calls"), "<-p><a b|*><>\n");
}

INSTANTIATE_TEST_SUITE_P(Library, Call,
                         testing::Combine(testing::ValuesIn(CALLS), testing::ValuesIn(SHELLS)),
                         [](const auto &row) {
                             return std::string(std::get<0>(row.param).name) + "_" +
                                    std::get<1>(row.param).name;
                         });

const saying NOT_REACHED = {UNOPENED + "EIBG-105\n", 105};

class InShell : public testing::TestWithParam<shell_row> {};

TEST_P(InShell, CallEndsAScriptThatStopsAtFailures) {
    const stage stage(GetParam(), {{"BENT-1302\n", 22}});
    const run_result seen = stage.run("lumo_call -f F\necho 'went on'");
    EXPECT_EQ(seen.output, "");
    EXPECT_EQ(seen.status, 22);
}

TEST_P(InShell, CallNeedsNoStandardError) {
    const stage stage(GetParam(), {{"BENT-1302\n", 22, "a report\n"}});
    const run_result seen = stage.run("exec 2>&-\nlumo_call -f F || echo \"$LUMO_CODE\"");
    EXPECT_EQ(seen.output, "1302\n");
}

TEST_P(InShell, CallSaysWhenThereIsNoProgram) {
    const stage stage(GetParam(), {});
    const run_result seen =
        stage.run("PATH=/nowhere\nlumo_call -f F || echo \"$LUMO_EXIT $(lumo_outcome)\"");
    EXPECT_EQ(seen.output, "127 invalid\n");
    EXPECT_EQ(seen.errors, "");
}

TEST_P(InShell, NothingIsKnownBeforeTheFirstCall) {
    const stage stage(GetParam(), {});
    const run_result seen = stage.run(R"sh(lumo_status
lumo_outcome
lumo_value Status 2>/dev/null || echo none
echo "<$LUMO_CODE$LUMO_PREFIX$LUMO_EXIT$LUMO_OUTPUT>")sh");
    EXPECT_EQ(seen.output, "exit\nunknown\nnone\n<>\n");
    EXPECT_EQ(seen.errors, "");
}

TEST_P(InShell, CallBearsAnySeparators) {
    const stage stage(GetParam(), {NOT_REACHED, {"LMCM-503\n", 247}, {"LMCM-503\n", 247}});
    const run_result seen = stage.run(R"sh(IFS='0123456789 -|LMCabcdefghijklmnopqrstuvwxyz'
lumo_retry -f F -t SOAP || lumo_status
lumo_retry -t SOAP -f F || lumo_outcome
lumo_list 1 2)sh");
    EXPECT_EQ(seen.output, "EIBG-105\ninvalid\n1|2\n");
    EXPECT_EQ(seen.errors, "");
}

TEST_P(InShell, CallTakesATimeLimit) {
    const stage stage(GetParam(), {{"LMCM-0000\n", 0}});
    stage.room.add_script("timeout", "echo \"$*\" >>limits\nshift\nexec \"$@\"");
    const run_result seen = stage.run("LUMO_LIMIT=7\nlumo_call -f F\nlumo_status");
    EXPECT_EQ(seen.output, "LMCM-0000\n");
    EXPECT_EQ(stage.noted("limits"), "7 lumocmd -f F\n");
}

TEST_P(InShell, ValueIsTakenWholeAndByItsWholeName) {
    const stage stage(GetParam(),
                      {{green("Url selected: http://x") + green("Payload Length: 11") +
                            green("Payload: one\ntwo [*] \xe9") + green("Url: ") + "LMCM-0000\n",
                        0}});
    const run_result seen = stage.run(R"sh(lumo_call -f F
lumo_value Payload
lumo_value Url
lumo_value 'Payload Length'
lumo_value 'Payload L' || echo none)sh");
    EXPECT_EQ(seen.output, "one\ntwo [*] \xe9\n\n11\nnone\n");
}

TEST_P(InShell, RetryPausesLongerAndLonger) {
    const stage stage(GetParam(), {NOT_REACHED, NOT_REACHED, NOT_REACHED, {"LMCM-0000\n", 0}});
    const run_result seen = stage.run("lumo_retry -f F\nlumo_status");
    EXPECT_EQ(seen.output, "LMCM-0000\n");
    EXPECT_EQ(stage.noted("pauses"), "1\n2\n4\n");
    EXPECT_EQ(stage.noted("calls"), "<-f><F>\n<-f><F>\n<-f><F>\n<-f><F>\n");
}

TEST_P(InShell, RetryGivesUp) {
    const stage stage(GetParam(), {NOT_REACHED, NOT_REACHED, NOT_REACHED});
    const run_result seen =
        stage.run("LUMO_TRIES=2\nLUMO_DELAY=0\nlumo_retry -f F || echo \"$? $(lumo_status)\"");
    EXPECT_EQ(seen.output, "105 EIBG-105\n");
    EXPECT_EQ(stage.noted("pauses"), "");
    EXPECT_EQ(stage.noted("calls"), "<-f><F>\n<-f><F>\n");
}

/// Everything that is not known to be unsent is sent once.
TEST_P(InShell, RetrySendsNothingTwice) {
    for (const call_row &row : CALLS) {
        SCOPED_TRACE(row.name);
        const stage stage(GetParam(), {row.said, row.said});
        const run_result seen =
            stage.run("LUMO_TRIES=2\nreturned=0\nlumo_retry -f F || returned=$?\necho $returned");
        EXPECT_EQ(seen.output, std::to_string(row.returned) + "\n");
        const bool again = row.outcome == std::string("unreachable");
        EXPECT_EQ(stage.noted("calls"), again ? "<-f><F>\n<-f><F>\n" : "<-f><F>\n");
    }
}

TEST_P(InShell, ListJoinsWhatItCanCarry) {
    const stage stage(GetParam(), {});
    const run_result seen = stage.run(R"sh(lumo_list -n ' b ' '*' "it's" 'perché'
lumo_list one
lumo_list)sh");
    EXPECT_EQ(seen.output, "-n| b |*|it's|perché\none\n\n");
}

TEST_P(InShell, ListRefusesWhatItCannotCarry) {
    const stage stage(GetParam(), {});
    for (const char *values : {"a ''", "''", "'a|b'", "'|'", "\"a\n\"", "\"a\nb\" c"}) {
        const run_result seen = stage.run("lumo_list " + std::string(values) + " || echo refused");
        EXPECT_EQ(seen.output, "refused\n") << values;
        EXPECT_EQ(seen.errors, "lumo_list: a value is empty or holds a bar or a line feed\n");
    }
}

TEST_P(InShell, PlainTakesColoursAloneAway) {
    const stage stage(GetParam(), {});
    const run_result seen =
        stage.run("printf 'a\\033[1;32mb\\033[0;39mc [0;1m \\351 \\033[2J\\n' | lumo_plain");
    EXPECT_EQ(seen.output, "abc [0;1m \xe9 \x1b[2J\n");
}

INSTANTIATE_TEST_SUITE_P(Library, InShell, testing::ValuesIn(SHELLS),
                         [](const auto &row) { return row.param.name; });

} // namespace
