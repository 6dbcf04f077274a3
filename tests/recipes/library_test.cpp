// What else lumo.sh does, in every shell under "set -eu": a script stands for lumocmd.

#include "tests/recipes/shell_room.h"

namespace {

using namespace harness;

const saying FORBIDDEN = {red("x->y connect failed with error 'Permission denied'") +
                              red("x->y error opening socket X clientside for function 'F'") +
                              "BENT-1305\n",
                          25};

/// What lumocmd says, what the script prints, its pauses among it, and what it complains.
struct script_row {
    const char *name;
    std::vector<saying> said;
    const char *script;
    const char *output;
    const char *errors = "";
};

const script_row SCRIPTS[] = {
    {"a call ends a script that stops at failures",
     {{"BENT-1302\n", 22}},
     "trap 'echo \"ended with $?\"; exit 0' EXIT\nlumo_call -f F\necho 'went on'",
     "ended with 22\n"},
    {"no standard error",
     {{"BENT-1302\n", 22, "a report\n"}},
     "exec 2>&-\nlumo_call -f F || echo \"$LUMO_CODE\"",
     "1302\n"},
    {"output",
     {{red("why") + green("Status: OFF") + "BENT-1302\n", 22, "a report\n"},
      {"BENT-1302\n", 22},
      {green("Status: OFF"), 124}},
     "for call in 1 2 3; do lumo_call -f F || echo \"<$LUMO_OUTPUT>\"; done",
     "<a report\n[lumocmd] why\n<4711> [lumocmd] Status: OFF>\n<>\n"
     "<<4711> [lumocmd] Status: OFF>\n"},
    {"nothing is known before the first call",
     {},
     R"sh(lumo_status
lumo_outcome
lumo_value Status 2>/dev/null || echo none
echo "<$LUMO_CODE$LUMO_PREFIX$LUMO_EXIT$LUMO_OUTPUT$LUMO_STATE$LUMO_VALUE>")sh",
     "exit\nunknown\nnone\n<>\n"},
    {"any separators",
     {UNREACHED, {"LMCM-503\n", 247}, {"LMCM-503\n", 247}},
     R"sh(IFS='0123456789 -|LMCabcdefghijklmnopqrstuvwxyz'
lumo_retry -f F -t SOAP || lumo_status
lumo_retry -t SOAP -f F || lumo_outcome
lumo_list 1 2)sh",
     "EIBG-105\ninvalid\n1|2\n"},
    {"a value is taken whole and by its whole name",
     {{green("Url selected: http://x") + green("Payload Length: 11") +
           green("Payload: one\ntwo [*] \xe9") + green("Url: ") + "LMCM-0000\n",
       0}},
     R"sh(lumo_call -f F
lumo_value Payload
lumo_value Url
lumo_value 'Payload Length'
lumo_value 'Payload L' || echo none)sh",
     "one\ntwo [*] \xe9\n\n11\nnone\n"},
    {"tries",
     {UNREACHED, UNREACHED, UNREACHED, DONE, UNREACHED, UNREACHED, UNREACHED},
     "lumo_retry -f F\nlumo_status\nLUMO_TRIES=2 LUMO_DELAY=0\n"
     "lumo_retry -f G || echo \"$? $(lumo_status)\"\ncat calls",
     "sleep 1\nsleep 2\nsleep 4\nLMCM-0000\n105 EIBG-105\n"
     "<-f><F>\n<-f><F>\n<-f><F>\n<-f><F>\n<-f><G>\n<-f><G>\n"},
    {"lists",
     {},
     R"sh(lumo_list -n ' b ' '*' "it's" 'perché'
lumo_list one
lumo_list
complain() { lumo_list "$@" 2>>complaints || echo refused; }
complain a ''
complain 'a|b'
complain 'a
'
uniq complaints >&2)sh",
     "-n| b |*|it's|perché\none\n\nrefused\nrefused\nrefused\n",
     "lumo_list: a value is empty or holds a bar or a line feed\n"},
    {"colours alone are taken away",
     {},
     "printf 'a\\033[1;32mb\\033[0;39mc [0;1m \\351 \\033[2J\\n' | lumo_plain",
     "abc [0;1m \xe9 \x1b[2J\n"},
    {"the directory of sockets",
     {DONE, DONE, DONE, DONE},
     R"sh(LUMO_DIRECTORY='/run/a b'
lumo_call -t EIBLOCAL -s eib.socket -p -s
lumo_call -seib.socket -p ''
lumo_call -s ./eib.socket -s/tmp/eib.socket -p eib
LUMO_DIRECTORY=
lumo_call -s eib.socket
cat calls)sh",
     "<-t><EIBLOCAL><-s></run/a b/eib.socket><-p><-s>\n"
     "<-s/run/a b/eib.socket><-p><>\n"
     "<-s><./eib.socket><-s/tmp/eib.socket><-p><eib>\n"
     "<-s><eib.socket>\n"},
    {"words that look like types",
     {UNREACHED},
     "lumo_call -t EIBLOCAL -s -tSOAP -f -t -p SOAP || lumo_outcome",
     "unreachable\n"},
    {"no result lines",
     {DONE, {green("Soap request selected") + "LMCM-0000\n", 0}, CUT_SHORT},
     R"sh(lumo_call -f F
lumo_value Status || echo forgotten
lumo_call -v ON -f F
lumo_value Status || echo absent
lumo_call -v ON -f F || lumo_value Status || echo ended)sh",
     "forgotten\nabsent\nended\n",
     "lumo_value: no result lines were shown: -v ON has to be the first option\n"
     "lumo_value: no result lines were shown: the call has no status, exit 124\n"},
    {"items",
     {},
     R"sh(IFS='0123456789;='
list='A=ON;B= 2 *=x;;C=;A=2'
for which in A= B= C= D= 1 2 3 5 6 0 '' x; do
    lumo_item "$list" "$which" || echo none
done
lumo_item 'one, two' 2 ', '
lumo_item '' 1)sh",
     "ON\n 2 *=x\n\nnone\nA=ON\nB= 2 *=x\n\nA=2\nnone\nnone\nnone\nnone\ntwo\n\n"},
    {"an element without a session",
     {},
     R"sh(lumo_get LAMP || echo "$? $(lumo_outcome) <$LUMO_STATE>"
LUMO_SESSION=S
lumo_get 'A|B' || echo "$? $(lumo_outcome), $LUMO_OUTPUT"
[ ! -e calls ])sh",
     "1 invalid <>\n1 invalid, lumo_get: the element or the session is none\n",
     "lumo_get: no session, neither as second argument nor in LUMO_SESSION\n"
     "lumo_list: a value is empty or holds a bar or a line feed\n"
     "lumo_get: the element or the session is none\n"},
    {"an element at the usual address",
     {{green("Status: ON\nand on") + green("Current Value: 7") + "LMCM-0000\n", 0},
      {green("Status: ON") + "LMCM-0000\n", 0},
      {"LMCM-256\n", 0}},
     R"sh(lumo_get LAMP SESSION
echo "<$LUMO_STATE> <$LUMO_VALUE>"
LUMO_URL=http://x/y
LUMO_SESSION=OTHER
lumo_get LAMP || echo "$? $LUMO_CODE"
lumo_get LAMP || echo "$? $LUMO_CODE <$LUMO_STATE>"
head -n 2 calls)sh",
     "<ON\nand on> <7>\n1 0\n1 256 <>\n"
     "<-v><ON><-t><SOAP><-u><http://localhost/cgi-bin/lumows><-f><SERVICE_GETELEMENTSTATUS><-p>"
     "<SESSION|LAMP>\n"
     "<-v><ON><-t><SOAP><-u><http://x/y><-f><SERVICE_GETELEMENTSTATUS><-p><OTHER|LAMP>\n",
     "lumo_get: the answer lacks the status or the value of LAMP\n"},
    {"alive cannot be told",
     {FORBIDDEN, CUT_SHORT, {"LMCM-502\n", 246, UNUSABLE_URL}, {"", 127}},
     R"sh(timeout() { echo "$1" >>limits; shift; "$@"; }
for type in bentelLOCAL FSMCORE SOAP EIBLOCAL ECHOBUSLOCAL; do
    lumo_alive "$type" /x || echo "$? $(lumo_status)"
    LUMO_LIMIT=3
done
cat limits)sh",
     "2 BENT-1305\n2 exit 124\n2 LMCM-502\n2 exit 127\n2 exit 126\n5\n3\n3\n3\n",
     "lumo_alive: no type 'ECHOBUSLOCAL' that can be tried\n"},
    {"the clock of the machine",
     {},
     R"sh(IFS=. read -r up rest </proc/uptime
now=$(lumo_clock)
[ "$now" -ge "$up" ] && [ "$now" -lt "$((up + 60))" ] && echo "goes on")sh",
     "goes on\n"},
    // The clock goes on in pauses alone, and by what a try takes.
    {"a deadline ends the tries",
     {UNREACHED, UNREACHED, UNREACHED},
     R"sh(clock=100
lumo_clock() { echo "$clock"; }
sleep() { clock=$((clock + $1)); }
LUMO_TRIES=9 LUMO_DEADLINE=7
lumo_retry -f F || echo "$? $((clock - 100))"
cat calls)sh",
     "105 3\n<-f><F>\n<-f><F>\n<-f><F>\n"},
    {"a deadline that is no number",
     {},
     R"sh(for LUMO_DEADLINE in x 1.5 08; do
    lumo_retry -f F || echo "$? $(lumo_status) $(lumo_outcome)"
done
[ ! -e calls ])sh",
     "126 exit 126 invalid\n126 exit 126 invalid\n126 exit 126 invalid\n",
     "lumo_retry: LUMO_DEADLINE is no number of seconds: x\n"
     "lumo_retry: LUMO_DEADLINE is no number of seconds: 1.5\n"
     "lumo_retry: LUMO_DEADLINE is no number of seconds: 08\n"},
    {"a deadline limits each try",
     {UNREACHED, UNREACHED, UNREACHED, DONE, DONE, DONE, UNREACHED, DONE},
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
cat limits)sh",
     "3.5\n3.5\n3.5\n3\n10\n2\n2\n1\n"},
};

TEST_P(InShell, ScriptsGetWhatTheLibraryPromises) {
    for (const script_row &row : SCRIPTS) {
        SCOPED_TRACE(row.name);
        const run_result seen = shell_room(GetParam(), row.said).run_with_library(row.script);
        EXPECT_EQ(seen.output, row.output);
        EXPECT_EQ(seen.errors, row.errors);
        EXPECT_EQ(seen.status, 0);
    }
}

} // namespace
