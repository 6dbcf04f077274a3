// What lumo.sh makes of a call, in every shell: a script stands for lumocmd and says what a row
// tells it.

#include "tests/recipes/shell_room.h"

#include <regex>

namespace {

using namespace harness;

const std::string MALFORMED = "utility->parse_cmd_line malformed request";

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
    {{"\x1b[1;31m<4711>\x1b[0;39m " +
          red("FSMCoreutil->fsmcore_requeststatic error opening socket FSMCore clientside for "
              "function 'GETSTATE'") +
          "FSMC-006\n",
      6},
     "6/FSMC/6/6/FSMC-006/unreachable"},
    {{red("EIBGatewayutil->eibgateway_local_request strtok parsing 'Response Status: ' response "
          "tag failed for function SENDEIBUSSETDATAGRAM") +
          "EIBG-107\n",
      107},
     "107/EIBG/107/107/EIBG-107/unknown"},
    {{red("x->y error function 'F' not supported") + "BENT-1301\n", 21},
     "1301/BENT/21/21/BENT-1301/invalid"},
    {{red("x->y error request text is longer than 1023 characters for function 'F'") + "FSMC-008\n",
      8},
     "8/FSMC/8/8/FSMC-008/invalid"},
    {{"LMCM-503\n", 247}, "503/LMCM/247/247/LMCM-503/invalid"},
    {{"LMCM-502\n", 246, UNUSABLE_URL}, // which a service can write as well
     "502/LMCM/246/246/LMCM-502/unknown"},
    {{red(MALFORMED), 249}, "//249/249/exit 249/invalid"},
    {{"", 250, "Usage: lumocmd\n"}, "//250/250/exit 250/invalid"},
    {{"-5\n", 5}, "//5/5/exit 5/unknown"}, // without a prefix it is no status
    {{"", 1}, "//1/1/exit 1/unknown"},
    {{"", 0}, "//0/1/exit 0/unknown"},
    {{green("Status: OFF"), 124}, "//124/124/exit 124/unknown"},
    {{"LMCM-0000\n", 143}, "//143/143/exit 143/unknown"},
    {{green("Parameters selected: a\nLMCM-0250"), 250}, "//250/250/exit 250/invalid"},
};

/// What it said, without colours and the line of its status.
std::string shown(const saying &said, bool has_status) {
    const std::regex colour("\x1b\\[[0-9;]*m");
    const std::string text = std::regex_replace(said.errors + said.output, colour, "");
    return has_status ? text.substr(0, text.rfind('\n', text.size() - 2) + 1) : text;
}

/// Asked to try again, the library sends a second time what was not sent, and nothing else.
TEST_P(InShell, CallTellsItsCallerAndRetrySendsNothingTwice) {
    const std::string report = R"sh( || returned=$?
echo "$LUMO_CODE/$LUMO_PREFIX/$LUMO_EXIT/$returned/$(lumo_status)/$(lumo_outcome)"
printf '%s\n' "$LUMO_OUTPUT")sh";
    for (const auto &[said, result] : CALLS) {
        SCOPED_TRACE(result);
        const std::string output = shown(said, !result.starts_with("//"));
        const std::string wanted = result + "\n" + output + (output.empty() ? "\n" : "");
        const shell_room once(GetParam(), {said});
        const run_result called =
            once.run_with_library("returned=0\nlumo_call -p 'a b|*' ''" + report);
        EXPECT_EQ(called.output, wanted);
        EXPECT_EQ(called.errors, "");
        EXPECT_EQ(once.noted("calls"), "<-p><a b|*><>\n");

        const shell_room again(GetParam(), {said, said});
        const std::string retry = "LUMO_TRIES=2\nreturned=0\nlumo_retry -f F";
        EXPECT_EQ(again.run_with_library(retry + report).output, wanted);
        const bool is_unsent = result.ends_with("/unreachable");
        EXPECT_EQ(again.noted("calls"), is_unsent ? "<-f><F>\n<-f><F>\n" : "<-f><F>\n");
    }
}

struct service_row {
    std::vector<saying> said; ///< first when called, then when asked again
    const char *outcome;
    const char *arguments = "-t SOAP -u v -f F";
    const char *asked = "<-u><-u:><-t><SOAP><-u><-u:><-f><F>"; ///< the second call, if there is one
};

const saying OWN_503 = {"LMCM-503\n", 247};
const saying NO_URL_502 = {"LMCM-502\n", 246, UNUSABLE_URL};
const saying NO_URL_508 = {"LMCM-508\n", 252, UNUSABLE_URL};

/// Nothing that a service can write counts, and nothing is sent twice. More of it is said by
/// lumocmd itself in library_controller_test.cpp.
const service_row SERVICE_CALLS[] = {
    {{DONE}, "done"},
    {{{"LMWS-405\n", 149}}, "refused"},
    {{{"LMCM-508\n", 252,
       "SOAP 1.1 fault SOAP-ENV:Server [no subcode]\n\"Name or service not known\"\n"
       "Detail: getaddrinfo failed in tcp_connect()\n"}},
     "unknown"},
    {{NO_URL_508}, "invalid"},
    {{{"LMCM-502\n", 246, "SOAP 1.1 fault SOAP-ENV:Server [no subcode]\n\"\n" + UNUSABLE_URL}},
     "unknown"},
    {{{red("x->y error url 'u' cannot be used, one like v is needed") + "LMCM-502\n", 246}},
     "unknown"},
    {{{green("Status: \n" + UNREACHED.output) + "EIBG-105\n", 105}}, "refused"},
    {{{red(MALFORMED), 249}}, "invalid"},
    {{CUT_SHORT}, "unknown"},
    {{{"LMCM-505\n", 249}, NO_URL_508}, "refused"},
    {{{"LMCM-507\n", 251}, NO_URL_502}, "refused"},
    {{OWN_503, CUT_SHORT}, "unknown"},
    {{OWN_503, NO_URL_502},
     "refused",
     "-p '' -tsOAp -uv -f -u -v bad",
     "<-u><-u:><-p><><-tsOAp><-u:><-f><-u><-v><bad>"},
    {{OWN_503, OWN_503}, "invalid", "-v bad -t soap", "<-u><-u:><-v><bad><-t><soap>"},
    {{UNREACHED}, "unknown", "-t SOAP -t EIBLOCAL"},
    {{OWN_503}, "unknown", "-tEIBLOCAL -tSOAP"},
    {{UNREACHED}, "unreachable", "-t EIBLOCAL -s -tSOAP -f -t -p SOAP"},
};

TEST_P(InShell, CallsOfTheServiceAreNeverRepeated) {
    for (const service_row &row : SERVICE_CALLS) {
        SCOPED_TRACE(row.said[0].output + row.arguments);
        const shell_room room(GetParam(), row.said);
        const bool is_unsent = row.outcome == std::string("unreachable");
        const std::string arguments = row.arguments;
        const run_result seen =
            room.run_with_library((is_unsent ? "LUMO_TRIES=1\n" : "") +
                                  ("lumo_retry " + arguments) + " || :\nlumo_outcome\nset -- " +
                                  arguments + "\nprintf '<%s>' \"$@\" >given\necho >>given");
        EXPECT_EQ(seen.output, std::string(row.outcome) + "\n");
        EXPECT_EQ(seen.errors, "");
        EXPECT_EQ(room.noted("calls"),
                  room.noted("given") + (row.said.size() > 1 ? row.asked + std::string("\n") : ""));
        EXPECT_EQ(room.noted("pauses"), "");
    }
}

} // namespace
