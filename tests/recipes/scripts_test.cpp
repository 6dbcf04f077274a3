// The scripts of docs/examples, in every shell against a simulated controller.

#include "tests/recipes/shell_room.h"
#include "tests/simulator/simulator_process.h"

#include <csignal>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <set>
#include <unistd.h>

namespace {

using namespace harness;

const char *const DIRECTORY = PROJECT_DIRECTORY "/docs/examples/";

struct script_row {
    const char *name;
    const char *script;
    words options; ///< the simulator's
    const char *arguments;
    const char *output;
    int status = 0;
    const char *requests = nullptr; ///< not looked at where there are none
    const char *syslog = "";
    const char *pauses = "";
    const char *errors = "";
    const char *before = ""; ///< what the shell does first
};

void PrintTo(const script_row &row, std::ostream *out) {
    *out << row.name;
}

const char *const LIGHTS =
    "printf '%s\\n' '# upstairs' '' 'living 1/1/3 the lamp' >lights; printf 'hall 1/1/4 door' >>lights";
const char *const CODE = "printf 4321 >code";
const char *const WATCHED = "EIBLOCAL lumo_eibgateway.socket touch restarted";

const script_row SCRIPTS[] = {
    {"Lights",
     "all-lights-off",
     {},
     "lights",
     "2 of 2 lights are off\n",
     0,
     "EIB: SENDEIBUSSETDATAGRAM living|1/1/3|1|0 -> EIBG-000\n"
     "EIB: SENDEIBUSSETDATAGRAM hall|1/1/4|1|0 -> EIBG-000\n",
     "",
     "",
     "",
     LIGHTS},
    {"LightsThatFail",
     "all-lights-off",
     {"--answer", "eib=103,0"},
     "lights",
     "the lamp (1/1/3): EIBG-103 refused\n1 of 2 lights are off\n",
     1,
     "EIB: SENDEIBUSSETDATAGRAM living|1/1/3|1|0 -> EIBG-103\n"
     "EIB: SENDEIBUSSETDATAGRAM hall|1/1/4|1|0 -> EIBG-000\n",
     "",
     "",
     "",
     LIGHTS},
    {"LightsWithoutGateway",
     "all-lights-off",
     {"--refuse", "eib"},
     "lights",
     "the lamp (1/1/3): EIBG-105 unreachable\ndoor (1/1/4): EIBG-105 unreachable\n"
     "0 of 2 lights are off\n",
     1,
     "",
     "",
     "1\n2\n4\n8\n",
     "",
     LIGHTS},
    {"LightsUsage", "all-lights-off", {}, "", "", 2, "", "", "", "usage: all-lights-off LIST\n"},

    {"Arm",
     "arm-alarm",
     {},
     "hall code W1 W2",
     "armed\n",
     0,
     "SOAP: service-getelementstatus DEMO-SESSION|W1|(absent)|0 -> LMWS-000\n"
     "SOAP: service-getelementstatus DEMO-SESSION|W2|(absent)|0 -> LMWS-000\n"
     "BENTEL: SENDBENTELCOMMANDDATAGRAM hall|4321|ARM|1 -> BENG-0000\n",
     "",
     "",
     "",
     CODE},
    {"ArmWithAnOpenWindow",
     "arm-alarm",
     {},
     "hall code W1 W3 W9",
     "W3: OPEN\nW9: LMWS-404\nnot armed\n",
     1,
     "SOAP: service-getelementstatus DEMO-SESSION|W1|(absent)|0 -> LMWS-000\n"
     "SOAP: service-getelementstatus DEMO-SESSION|W3|(absent)|0 -> LMWS-000\n"
     "SOAP: service-getelementstatus DEMO-SESSION|W9|(absent)|0 -> LMWS-404\n",
     "",
     "",
     "",
     CODE},
    {"ArmRefused",
     "arm-alarm",
     {"--answer", "bentel=1302"},
     "hall code W1",
     "not armed: BENT-1302\n",
     1,
     nullptr,
     "",
     "",
     "",
     CODE},
    {"ArmWithoutAnswer",
     "arm-alarm",
     {"--close", "bentel"},
     "hall code W1",
     "perhaps armed: BENT-1307\n",
     3,
     nullptr,
     "",
     "",
     "",
     CODE},
    {"ArmUsage",
     "arm-alarm",
     {},
     "hall code",
     "",
     2,
     "",
     "",
     "",
     "usage: arm-alarm SECTION CODE-FILE WINDOW...\n"},

    {"WatchFindsIt", "watch-daemon", {}, WATCHED, "", 0},
    {"WatchBringsItBack",
     "watch-daemon",
     {},
     "EIBLOCAL away.socket ln -s lumo_eibgateway.socket away.socket",
     "",
     0,
     nullptr,
     "-t watch-daemon -p user.err away.socket: was away and is back\n",
     "5\n"},
    {"WatchInVain",
     "watch-daemon",
     {"--refuse", "eib"},
     "EIBLOCAL lumo_eibgateway.socket false",
     "",
     1,
     "",
     "-t watch-daemon -p user.err lumo_eibgateway.socket: 'false' failed\n"
     "-t watch-daemon -p user.err lumo_eibgateway.socket: is away\n",
     "5\n1\n2\n4\n8\n0\n"},
    {"WatchOnce",
     "watch-daemon",
     {"--refuse", "eib"},
     WATCHED,
     "",
     0,
     "",
     "",
     "",
     "",
     "exec 8>>watch-daemon.lumo_eibgateway.socket; flock 8"},
    {"WatchWhatCannotBeTried",
     "watch-daemon",
     {},
     "EIB lumo_eibgateway.socket touch restarted",
     "",
     1,
     "",
     "-t watch-daemon -p user.err lumo_eibgateway.socket: cannot be tried: exit 126\n",
     "5\n",
     "lumo_alive: no type 'EIB' that can be tried\nlumo_alive: no type 'EIB' that can be tried\n"},
    {"WatchUsage",
     "watch-daemon",
     {},
     "EIBLOCAL s",
     "",
     2,
     "",
     "",
     "",
     "usage: watch-daemon TYPE SOCKET COMMAND [ARGUMENT...]\n"},

    {"CheckAll", "check-daemons", {}, "", "LUMOTRON OK - 9 of 9 are there\n", 0},
    {"CheckWarning",
     "check-daemons",
     {"--answer", "soap=403"},
     "EIBLOCAL SOAP ECHOBUSLOCAL",
     "LUMOTRON WARNING - SOAP answers LMWS-403, ECHOBUSLOCAL cannot be tried\n",
     1},
    {"CheckCritical",
     "check-daemons",
     {"--refuse", "bentel", "--close", "soap"},
     "",
     "LUMOTRON CRITICAL - BENTELLOCAL is not there, SOAP does not answer\n",
     2},
    {"CheckUnknown",
     "check-daemons",
     {},
     "ECHOBUSLOCAL FSMCORE",
     "LUMOTRON UNKNOWN - ECHOBUSLOCAL cannot be tried\n",
     3},
    {"CheckUsage", "check-daemons", {}, "-h", "usage: check-daemons [TYPE...]\n", 3, ""},

    {"Night",
     "night-scene",
     {},
     "",
     "",
     0,
     "EIB: SENDEIBUSSETDATAGRAM living|1/1/3|1|0 -> EIBG-000\n"
     "EIB: SENDEIBUSSETDATAGRAM living|1/2/1|1|1 -> EIBG-000\n"
     "LINTRONIC: SENDLINTRONICDATAGRAM garden|07|012|on -> LINT-000\n"
     "TUTONDO: SENDTUTONDOSETDATAGRAM audio|VOLUME|3|0 -> TUTG-0000\n"
     "VIVALDI: SENDVIVALDISETDATAGRAM audio|1|1|4|0|0|0|0|0|0|0|0 -> VIVG-0000\n"},
    {"NightWithFailures",
     "night-scene",
     {"--answer", "lintronic=1003", "--close", "tutondo"},
     "+390000001",
     "garden: LINT-1003 refused\nkitchen-radio: TUTG-1507 unknown\n",
     1,
     "EIB: SENDEIBUSSETDATAGRAM living|1/1/3|1|0 -> EIBG-000\n"
     "EIB: SENDEIBUSSETDATAGRAM living|1/2/1|1|1 -> EIBG-000\n"
     "LINTRONIC: SENDLINTRONICDATAGRAM garden|07|012|on -> LINT-1003\n"
     "TUTONDO: SENDTUTONDOSETDATAGRAM audio|VOLUME|3|0 -> closed without an answer\n"
     "VIVALDI: SENDVIVALDISETDATAGRAM audio|1|1|4|0|0|0|0|0|0|0|0 -> VIVG-0000\n"
     "SMSTOOL: SENDSMSTOOLDATAGRAM modem|+390000001|night scene failed: garden kitchen-radio -> "
     "SMST-000\n"},
    {"NightUsage", "night-scene", {}, "a b", "", 2, "", "", "", "usage: night-scene [PHONE]\n"},
};

class ExampleScript : public testing::TestWithParam<std::tuple<script_row, shell_row>> {};

TEST_P(ExampleScript, DoesItsWork) {
    const auto &[row, shell] = GetParam();
    const temporary_directory state;
    std::ofstream(state.path + "/house")
        << R"({"elements": {"W1": {"status": "CLOSED", "value": "0"},
                            "W2": {"status": "CLOSED", "value": "0"},
                            "W3": {"status": "OPEN", "value": "1"}}})";
    words options = row.options;
    options.insert(options.end(), {"--state", state.path + "/house"});
    running_simulator simulator(options);
    const shell_room room(shell);
    room.add_program("flock");
    const run_result seen = room.run(
        "export LUMO_DIRECTORY=. LOCK_DIRECTORY=. LUMO_LIMIT=20 LUMO_URL=http://127.0.0.1:" +
            std::to_string(simulator.port) + "/cgi-bin/lumows\n" + row.before + "\nset -- " +
            row.arguments + "\n" + file_text(DIRECTORY + std::string(row.script)),
        simulator.home.path);
    EXPECT_EQ(seen.output, row.output);
    EXPECT_EQ(seen.errors, row.errors);
    EXPECT_EQ(seen.status, row.status);
    EXPECT_EQ(file_text(simulator.home.path + "/syslog"), row.syslog);
    EXPECT_EQ(file_text(simulator.home.path + "/pauses"), row.pauses);
    EXPECT_FALSE(std::filesystem::exists(simulator.home.path + "/restarted"));

    EXPECT_EQ(end_program(simulator.program, SIGTERM).status, 0) << simulator.program.errors();
    if (row.requests != nullptr) {
        const std::string said = simulator.program.output();
        const std::string ready = "\nready\n";
        EXPECT_EQ(said.substr(said.find(ready) + ready.size()),
                  row.requests + std::string("stopped\n"));
    }
}

INSTANTIATE_TEST_SUITE_P(Library, ExampleScript,
                         testing::Combine(testing::ValuesIn(SCRIPTS), testing::ValuesIn(SHELLS)),
                         [](const auto &row) {
                             return std::string(std::get<0>(row.param).name) + "_" +
                                    std::get<1>(row.param).name;
                         });

/// Copied to a controller together, each script finds the library beside it.
TEST(LibraryExamples, FindTheLibraryAndPleaseShellcheck) {
    std::set<std::string> files;
    for (const script_row &row : SCRIPTS) {
        files.insert(DIRECTORY + std::string(row.script));
    }
    const shell_room room(SHELLS[0]);
    room.add_script("lumo.sh", "echo beside; exit");
    for (const std::string &file : files) {
        EXPECT_EQ(room.run(file_text(file), DIRECTORY).output, "beside\n") << file;
        EXPECT_EQ(run({"shellcheck", "-x", file}, {.directory = PROJECT_DIRECTORY}).output, "");
        EXPECT_EQ(access(file.c_str(), X_OK), 0) << file;
    }
}

} // namespace
