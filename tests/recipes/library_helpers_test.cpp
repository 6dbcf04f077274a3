// What lumo.sh adds to a call: where sockets are, deadlines, whether a daemon is there, elements.

#include "tests/recipes/stage.h"
#include "tests/simulator/simulator_process.h"

#include <gtest/gtest.h>

namespace {

using namespace harness;

/// One script on the stage: what lumocmd says, what the script prints and complains, and what
/// lumocmd is called with.
struct script_row {
    const char *name;
    std::vector<saying> said;
    const char *script;
    const char *output;
    const char *errors = "";
    const char *calls = nullptr; ///< not looked at where there are none
};

void PrintTo(const script_row &row, std::ostream *out) {
    *out << row.name;
}

const saying DONE = {"LMCM-0000\n", 0};
const saying NOT_REACHED = {UNOPENED + "EIBG-105\n", 105};
const saying FORBIDDEN = {
    red("utility->make_localtcpclient_socket connect failed with error 'Permission denied'") +
        red("x->y error opening socket BENTELGateway clientside for function 'F'") + "BENT-1305\n",
    25};
const saying CUT_SHORT = {"", 124};

const char *const VALUE_ERROR =
    "lumo_value: no result lines were shown: -v ON has to be the first option\n";

const script_row SCRIPTS[] = {
    {"DirectoryOfSockets",
     {DONE, DONE, DONE, DONE},
     R"sh(LUMO_DIRECTORY='/run/a b'
lumo_call -t EIBLOCAL -s eib.socket -p -s
lumo_call -seib.socket -p ''
lumo_call -s ./eib.socket -s/tmp/eib.socket -p eib
LUMO_DIRECTORY=
lumo_call -s eib.socket)sh",
     "",
     "",
     "<-t><EIBLOCAL><-s></run/a b/eib.socket><-p><-s>\n"
     "<-s/run/a b/eib.socket><-p><>\n"
     "<-s><./eib.socket><-s/tmp/eib.socket><-p><eib>\n"
     "<-s><eib.socket>\n"},
    {"ForgottenVerbosity",
     {{"LMCM-0000\n", 0}, {green("Soap request selected") + "LMCM-0000\n", 0}},
     R"sh(lumo_call -f F
lumo_value Status || echo forgotten
lumo_call -v ON -f F
lumo_value Status || echo absent)sh",
     "forgotten\nabsent\n",
     VALUE_ERROR},
    {"Items",
     {},
     R"sh(IFS='0123456789;='
list='A=ON;B= 2 *=x;;C=;A=2'
for which in A= B= C= D= 1 2 3 5 6 0 '' x; do
    lumo_item "$list" "$which" || echo none
done
lumo_item 'one, two' 2 ', '
lumo_item '' 1)sh",
     "ON\n 2 *=x\n\nnone\nA=ON\nB= 2 *=x\n\nA=2\nnone\nnone\nnone\nnone\ntwo\n\n"},
    {"ElementWithoutSession",
     {},
     R"sh(lumo_get LAMP || echo "$? $(lumo_outcome) <$LUMO_STATE>"
LUMO_SESSION=S
lumo_get 'A|B' || echo "$? $(lumo_outcome)")sh",
     "1 invalid <>\n1 invalid\n",
     "lumo_get: no session, neither as second argument nor in LUMO_SESSION\n"
     "lumo_list: a value is empty or holds a bar or a line feed\n"
     "lumo_get: the element or the session is none\n",
     ""},
    {"ElementAtTheUsualAddress",
     {{green("Status: ON\nand on") + green("Current Value: 7") + "LMCM-0000\n", 0},
      {green("Status: ON") + "LMCM-0000\n", 0},
      {"LMCM-256\n", 0}},
     R"sh(lumo_get LAMP SESSION
echo "<$LUMO_STATE> <$LUMO_VALUE>"
LUMO_URL=http://x/y
LUMO_SESSION=OTHER
lumo_get LAMP || echo "$? $LUMO_CODE"
lumo_get LAMP || echo "$? $LUMO_CODE <$LUMO_STATE>")sh",
     "<ON\nand on> <7>\n1 0\n1 256 <>\n",
     "lumo_get: the answer lacks the status or the value of LAMP\n",
     "<-v><ON><-t><SOAP><-u><http://localhost/cgi-bin/lumows><-f><SERVICE_GETELEMENTSTATUS><-p>"
     "<SESSION|LAMP>\n"
     "<-v><ON><-t><SOAP><-u><http://x/y><-f><SERVICE_GETELEMENTSTATUS><-p><OTHER|LAMP>\n"
     "<-v><ON><-t><SOAP><-u><http://x/y><-f><SERVICE_GETELEMENTSTATUS><-p><OTHER|LAMP>\n"},
    {"AliveCannotBeTold",
     {FORBIDDEN, CUT_SHORT, {"LMCM-502\n", 246, UNUSABLE_URL}, {"", 127}},
     R"sh(timeout() { echo "$1" >>limits; shift; "$@"; }
for type in BENTELLOCAL FSMCORE SOAP EIBLOCAL ECHOBUSLOCAL; do
    lumo_alive "$type" /x || echo "$? $(lumo_status)"
    LUMO_LIMIT=3
done
while read -r limit; do echo "$limit"; done <limits)sh",
     "2 BENT-1305\n2 exit 124\n2 LMCM-502\n2 exit 127\n2 exit 126\n5\n3\n3\n3\n",
     "lumo_alive: no type 'ECHOBUSLOCAL' that can be tried\n"},
    {"ClockOfTheMachine",
     {},
     R"sh(up=$(date +%s) idle=1
[ ! -r /proc/uptime ] || read -r up idle </proc/uptime
now=$(lumo_clock)
[ "$now" -ge "${up%.*}" ] && [ "$now" -lt "$((${up%.*} + 60))" ] && echo "goes ${idle:+on}")sh",
     "goes on\n"},
    // The clock goes on in pauses alone, and by what a try takes.
    {"DeadlineEndsTheTries",
     {NOT_REACHED, NOT_REACHED, NOT_REACHED},
     R"sh(clock=100
lumo_clock() { echo "$clock"; }
sleep() { clock=$((clock + $1)); }
LUMO_TRIES=9 LUMO_DEADLINE=7
lumo_retry -f F || echo "$? $((clock - 100))")sh",
     "105 3\n",
     "",
     "<-f><F>\n<-f><F>\n<-f><F>\n"},
    {"DeadlineLimitsEachTry",
     {NOT_REACHED, NOT_REACHED, NOT_REACHED, DONE, DONE, DONE, NOT_REACHED, DONE},
     R"sh(clock=100
lumo_clock() { echo "$clock"; }
sleep() { clock=$((clock + $1)); }
timeout() { echo "$1" >>limits; shift; "$@"; }
LUMO_DEADLINE=10 LUMO_LIMIT=3.5
lumo_retry -f F
LUMO_LIMIT=
lumo_retry -f F
LUMO_LIMIT=0 LUMO_DEADLINE=2
lumo_retry -f F
sleep() { clock=$((clock + 9)); } # longer than it was asked for
lumo_retry -f F
while read -r limit; do echo "$limit"; done <limits)sh",
     "3.5\n3.5\n3.5\n3\n10\n2\n2\n1\n"},
};

class Script : public testing::TestWithParam<std::tuple<script_row, shell_row>> {};

TEST_P(Script, GetsWhatTheLibraryPromises) {
    const auto &[row, shell] = GetParam();
    const stage stage(shell, row.said);
    stage.room.add_script("timeout", "shift\nexec \"$@\"");
    const run_result seen = stage.run(row.script);
    EXPECT_EQ(seen.output, row.output);
    EXPECT_EQ(seen.errors, row.errors);
    if (row.calls != nullptr) {
        EXPECT_EQ(stage.noted("calls"), row.calls);
    }
}

INSTANTIATE_TEST_SUITE_P(Library, Script,
                         testing::Combine(testing::ValuesIn(SCRIPTS), testing::ValuesIn(SHELLS)),
                         [](const auto &row) {
                             return std::string(std::get<0>(row.param).name) + "_" +
                                    std::get<1>(row.param).name;
                         });

class WithController : public testing::TestWithParam<shell_row> {};

/// Daemons that are there get no byte, and those that are not there are told apart from them.
TEST_P(WithController, SeesWhichDaemonsAreThere) {
    running_simulator simulator({"--refuse", "tutondo", "--answer", "soap=403"});
    const run_result seen = shell_room(GetParam())
                                .run(std::string("set -eu\n. ") + INSTALLED_LIBRARY + R"sh(
try() {
    returned=0
    lumo_alive "$@" || returned=$?
    echo "$1 $returned $(lumo_status)"
}
LUMO_DIRECTORY=$PWD
for daemon in fsmcore eib smstool lintronic tecnout vivaldi bentel tutondo; do
    case $daemon in
    fsmcore) try FSMCORE lumo_fsmcore.socket ;;
    *) try "${daemon}local" "lumo_${daemon}gateway.socket" ;;
    esac
done
try FSMCORE nowhere.socket
try SOAP )sh" + "http://127.0.0.1:" + std::to_string(simulator.port) +
                                         "/cgi-bin/lumows",
                                     simulator.home.path);
    EXPECT_EQ(seen.output, "FSMCORE 0 EIBG-106\neiblocal 0 EIBG-106\nsmstoollocal 0 SMST-806\n"
                           "lintroniclocal 0 LINT-1006\ntecnoutlocal 0 TECN-1206\n"
                           "vivaldilocal 0 VIVG-0906\nbentellocal 0 BENT-1306\n"
                           "tutondolocal 1 TUTG-1505\nFSMCORE 1 EIBG-105\nSOAP 0 LMWS-403\n");
    EXPECT_EQ(seen.errors, "");
    for (const char *name :
         {"FSMCORE", "EIB", "SMSTOOL", "LINTRONIC", "TECNOUT", "VIVALDI", "BENTEL"}) {
        const std::string line = std::string("\n") + name +
                                 ": no request, the client closed before the end of its request\n";
        EXPECT_TRUE(simulator.program.wait_for_output(line)) << simulator.program.output();
    }
}

TEST_P(WithController, GetsElementsAlone) {
    running_simulator simulator;
    const run_result seen =
        shell_room(GetParam())
            .run(std::string("set -eu\n. ") + INSTALLED_LIBRARY + "\nLUMO_URL=http://127.0.0.1:" +
                     std::to_string(simulator.port) + "/cgi-bin/lumows" + R"sh(
LUMO_SESSION=DEMO-SESSION
lumo_get LIVING-LAMP
echo "$LUMO_STATE $LUMO_VALUE"
lumo_get NO-LAMP || echo "$? $LUMO_CODE <$LUMO_STATE>"
lumo_get LIVING-LAMP NO-SESSION || echo "$? $LUMO_CODE"
lumo_call -v ON -t SOAP -u "$LUMO_URL" -f SERVICE_GETELEMENTSTATUSARRAY -p DEMO-SESSION
lumo_item "$(lumo_value 'Current Values')" KITCHEN-THERMOSTAT=
lumo_item "$(lumo_value 'Current State')" 2)sh",
                 simulator.home.path);
    EXPECT_EQ(seen.output, "OFF 0\n148 404 <>\n147 403\n21.5\nLIVING-LAMP=OFF\n");
    EXPECT_EQ(seen.errors, "");
}

INSTANTIATE_TEST_SUITE_P(Library, WithController, testing::ValuesIn(SHELLS),
                         [](const auto &row) { return row.param.name; });

} // namespace
