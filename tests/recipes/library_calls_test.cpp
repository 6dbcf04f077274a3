// What lumo.sh makes of a call, in every shell: a script stands for lumocmd and says what a row
// tells it, but in the last test, which asks a simulated controller.

#include "tests/recipes/shell_room.h"

namespace {

using namespace harness;

/// What lumocmd says, and code/prefix/exit status/what is returned/status/outcome.
const std::pair<saying, std::string> CALLS[] = {
    {DONE, "0/LMCM/0/0/LMCM-0000/done"},
    {{"ECHG-256\n", 0}, "256/ECHG/0/1/ECHG-256/refused"}, // whose low eight bits are nought
    {{"FSMC-009\n", 9}, "9/FSMC/9/9/FSMC-009/refused"},   // which is not octal
    {{"LMCM--005\n", 251}, "-5/LMCM/251/251/LMCM--005/refused"},
    {{"VTS10-2401\n", 97}, "2401/VTS10/97/97/VTS10-2401/refused"},
    {{"LGMG-2147483647\n", 255}, "2147483647/LGMG/255/255/LGMG-2147483647/refused"},
    {{"EIBG-105\n", 105}, "105/EIBG/105/105/EIBG-105/refused"}, // the daemon's own
    {{green("Payload: an error opening socket X clientside for function Y") + "EIBG-105\n", 105},
     "105/EIBG/105/105/EIBG-105/refused"},
    {UNREACHED, "105/EIBG/105/105/EIBG-105/unreachable"},
    {{tagged_red(1, "x->y error opening socket X clientside for function 'F'") + "FSMC-006\n", 6},
     "6/FSMC/6/6/FSMC-006/unreachable"},
    {{red("x->y strtok parsing 'Response Status: ' response tag failed") + "EIBG-107\n", 107},
     "107/EIBG/107/107/EIBG-107/unknown"},
    {{red("x->y error function 'F' not supported") + "BENT-1301\n", 21},
     "1301/BENT/21/21/BENT-1301/invalid"},
    {{red("x->y error request text is longer than 1023 characters") + "FSMC-008\n", 8},
     "8/FSMC/8/8/FSMC-008/invalid"},
    {{"LMCM-503\n", 247}, "503/LMCM/247/247/LMCM-503/invalid"},
    {{"LMCM-502\n", 246, UNUSABLE_URL}, // which a service can write as well
     "502/LMCM/246/246/LMCM-502/unknown"},
    {{red("x->y malformed request"), 249}, "//249/249/exit 249/invalid"},
    {{"", 250, "Usage: lumocmd\n"}, "//250/250/exit 250/invalid"},
    {{"lumocmd: not found\n", 127}, "//127/127/exit 127/invalid"},
    {{"-5\n", 5}, "//5/5/exit 5/unknown"}, // without a prefix it is no status
    {{"", 1}, "//1/1/exit 1/unknown"},
    {{"", 0}, "//0/1/exit 0/unknown"},
    {{green("Status: OFF"), 124}, "//124/124/exit 124/unknown"},
    {{"LMCM-0000\n", 143}, "//143/143/exit 143/unknown"},
    {{green("Parameters selected: a\nLMCM-0250"), 250}, "//250/250/exit 250/invalid"},
};

/// Asked to try again, the library sends a second time what was not sent, and nothing else.
TEST_P(InShell, CallTellsItsCallerAndRetrySendsNothingTwice) {
    const std::string script = R"sh(report() {
    returned=0
    "$@" || returned=$?
    echo "$LUMO_CODE/$LUMO_PREFIX/$LUMO_EXIT/$returned/$(lumo_status)/$(lumo_outcome)"
}
report lumo_call -p 'a b|*' ''
LUMO_TRIES=2 LUMO_DELAY=0
report lumo_retry -f F
cat calls)sh";
    for (const auto &[said, result] : CALLS) {
        SCOPED_TRACE(result);
        const run_result seen = shell_room(GetParam(), {said, said, said}).run_with_library(script);
        const std::string again = result.ends_with("/unreachable") ? "<-f><F>\n" : "";
        EXPECT_EQ(seen.output, result + "\n" + result + "\n<-p><a b|*><>\n<-f><F>\n" + again);
        EXPECT_EQ(seen.errors, "");
    }
}

struct service_row {
    std::vector<saying> said; ///< first when called, then when asked again
    std::string outcome;
    std::string arguments = "-t SOAP -u v -f F";
    std::string asked = "<-u><-u:><-t><SOAP><-u><-u:><-f><F>\n"; ///< when asked again
};

const saying OWN_503 = {"LMCM-503\n", 247};
const saying NO_URL_502 = {"LMCM-502\n", 246, UNUSABLE_URL};
const saying NO_URL_508 = {"LMCM-508\n", 252, UNUSABLE_URL};

/// Nothing that a service can write counts, and nothing is sent twice.
const service_row SERVICE_CALLS[] = {
    {{DONE}, "done"},
    {{{"LMWS-405\n", 149}}, "refused"},
    {{{"LMCM-508\n", 252, "SOAP 1.1 fault SOAP-ENV:Server [no subcode]\n\"no\"\n"}}, "unknown"},
    {{NO_URL_508}, "invalid"},
    {{{"LMCM-502\n", 246, "SOAP 1.1 fault SOAP-ENV:Server [no subcode]\n\"\n" + UNUSABLE_URL}},
     "unknown"},
    {{{red("x->y error url 'u' cannot be used, one like v is needed") + "LMCM-502\n", 246}},
     "unknown"},
    {{{green("Status: \n" + UNREACHED.output) + "EIBG-105\n", 105}}, "refused"},
    {{{red("x->y malformed request"), 249}}, "invalid"},
    {{CUT_SHORT}, "unknown"},
    {{{"LMCM-505\n", 249}, NO_URL_508}, "refused"},
    {{{"LMCM-507\n", 251}, NO_URL_502}, "refused"},
    {{OWN_503, CUT_SHORT}, "unknown"},
    {{OWN_503, NO_URL_502},
     "refused",
     "-p '' -tsOAp -uv -f -u -v bad",
     "<-u><-u:><-p><><-tsOAp><-u:><-f><-u><-v><bad>\n"},
    {{OWN_503, OWN_503}, "invalid", "-v bad -t soap", "<-u><-u:><-v><bad><-t><soap>\n"},
    {{UNREACHED}, "unknown", "-t SOAP -t EIBLOCAL"},
    {{OWN_503}, "unknown", "-tEIBLOCAL -tSOAP"},
};

TEST_P(InShell, CallsOfTheServiceAreNeverRepeated) {
    for (const service_row &row : SERVICE_CALLS) {
        SCOPED_TRACE(row.said[0].output + row.arguments);
        const run_result seen = shell_room(GetParam(), row.said)
                                    .run_with_library("lumo_retry " + row.arguments +
                                                      " || :\nlumo_outcome\nsed 1d calls");
        EXPECT_EQ(seen.output, row.outcome + "\n" + (row.said.size() > 1 ? row.asked : ""));
        EXPECT_EQ(seen.errors, "");
    }
}

/// What lumocmd itself is asked, and the requests that come of it.
struct exchange_row {
    words options; ///< the simulator's
    std::string arguments;
    std::string outcome;
    std::string requests = {};
};

const exchange_row EXCHANGES[] = {
    {{}, "-f SERVICE_NONE", "LMCM-503 invalid\n"},
    {{}, "-f SERVICE_LOGIN -p demo", "LMCM-505 invalid\n"},
    {{}, "-f SERVICE_TEST -u localhost", "LMCM-502 invalid\n"},
    {{"--refuse", "soap"}, "-f SERVICE_TEST", "LMCM-502 unknown\n"},
    {{"--answer", "soap=503"},
     "-f SERVICE_TEST -v bad",
     "LMCM-503 refused\n",
     "SOAP: service-test 0 -> LMWS-503\n"},
};

TEST_P(InShell, CallsOfTheServiceEndAsTheProgramFoundOut) {
    for (const exchange_row &row : EXCHANGES) {
        SCOPED_TRACE(row.arguments + " " + row.outcome);
        running_simulator simulator(row.options);
        const std::string call = "lumo_retry -v $verbose -t SOAP -u " + simulator.url;
        const run_result seen =
            shell_room(GetParam())
                .run_with_library("for verbose in ON OFF; do\n" + call + " " + row.arguments +
                                  " || echo \"$(lumo_status) $(lumo_outcome)\"\ndone");
        EXPECT_EQ(seen.output, row.outcome + row.outcome);
        EXPECT_EQ(seen.errors, "");
        EXPECT_EQ(simulator.end(), row.requests + row.requests);
    }
}

} // namespace
