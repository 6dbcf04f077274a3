// The scripts of docs/examples, in every shell against a simulated controller.

#include "tests/recipes/shell_room.h"

#include <filesystem>
#include <set>
#include <unistd.h>

namespace {

using namespace harness;

const char *const DIRECTORY = PROJECT_DIRECTORY "/docs/examples/";

struct script_row {
    const char *script;
    words options = {}; ///< the simulator's
    const char *arguments = "";
    const char *output = "";
    int status = 0;
    const char *requests = nullptr; ///< not looked at where there are none
    const char *syslog = "";
    const char *pauses = "";
    const char *errors = "";
    const char *before = ""; ///< what the shell does first
};

const char *const LIGHTS = "# upstairs\n\nliving 1/1/3 the lamp\nhall 1/1/4 door";
const char *const HOUSE = R"({"elements": {"W1": {"status": "CLOSED", "value": "0"},
    "W2": {"status": "CLOSED", "value": "0"}, "W3": {"status": "OPEN", "value": "1"}}})";
const char *const WATCHED = "EIBLOCAL lumo_eibgateway.socket touch restarted";

const script_row SCRIPTS[] = {
    {.script = "all-lights-off",
     .arguments = "lights",
     .output = "2 of 2 lights are off\n",
     .requests = "EIB: SENDEIBUSSETDATAGRAM living|1/1/3|1|0 -> EIBG-000\n"
                 "EIB: SENDEIBUSSETDATAGRAM hall|1/1/4|1|0 -> EIBG-000\n"},
    {.script = "all-lights-off",
     .options = {"--answer", "eib=103,0"},
     .arguments = "lights",
     .output = "the lamp (1/1/3): EIBG-103 refused\n1 of 2 lights are off\n",
     .status = 1,
     .requests = "EIB: SENDEIBUSSETDATAGRAM living|1/1/3|1|0 -> EIBG-103\n"
                 "EIB: SENDEIBUSSETDATAGRAM hall|1/1/4|1|0 -> EIBG-000\n"},
    {.script = "all-lights-off",
     .options = {"--refuse", "eib"},
     .arguments = "lights",
     .output = "the lamp (1/1/3): EIBG-105 unreachable\ndoor (1/1/4): EIBG-105 unreachable\n"
               "0 of 2 lights are off\n",
     .status = 1,
     .requests = "",
     .pauses = "1\n2\n4\n8\n"},
    {.script = "all-lights-off", // a list from Windows, without names
     .options = {"--answer", "eib=103,0"},
     .arguments = "lights",
     .output = "light (1/1/3): EIBG-103 refused\n1 of 2 lights are off\n",
     .status = 1,
     .requests = "EIB: SENDEIBUSSETDATAGRAM living|1/1/3|1|0 -> EIBG-103\n"
                 "EIB: SENDEIBUSSETDATAGRAM hall|1/1/4|1|0 -> EIBG-000\n",
     .before = "printf 'living 1/1/3\\r\\n\\r\\nhall 1/1/4 door\\r\\n' >lights"},
    {.script = "all-lights-off",
     .arguments = "lights",
     .status = 2,
     .requests = "",
     .errors = "no lights in the list\n",
     .before = "echo '# upstairs' >lights"},
    {.script = "arm-alarm",
     .arguments = "hall away W1",
     .output = "not armed: no code in away\n",
     .status = 1,
     .requests = ""},
    {.script = "arm-alarm",
     .arguments = "hall code W1",
     .output = "not armed: no code in code\n",
     .status = 1,
     .requests = "",
     .before = "echo >code"},
    {.script = "arm-alarm",
     .arguments = "hall code W1 W2",
     .output = "armed\n",
     .requests = "SOAP: service-getelementstatus DEMO-SESSION|W1|(absent)|0 -> LMWS-000\n"
                 "SOAP: service-getelementstatus DEMO-SESSION|W2|(absent)|0 -> LMWS-000\n"
                 "BENTEL: SENDBENTELCOMMANDDATAGRAM hall|4321|ARM|1 -> BENG-0000\n"},
    {.script = "arm-alarm",
     .arguments = "hall code W1 W3 W9",
     .output = "W3: OPEN\nW9: LMWS-404\nnot armed\n",
     .status = 1,
     .requests = "SOAP: service-getelementstatus DEMO-SESSION|W1|(absent)|0 -> LMWS-000\n"
                 "SOAP: service-getelementstatus DEMO-SESSION|W3|(absent)|0 -> LMWS-000\n"
                 "SOAP: service-getelementstatus DEMO-SESSION|W9|(absent)|0 -> LMWS-404\n"},
    {.script = "arm-alarm",
     .options = {"--answer", "bentel=1302"},
     .arguments = "hall code W1",
     .output = "not armed: BENT-1302\n",
     .status = 1},
    {.script = "arm-alarm",
     .options = {"--close", "bentel"},
     .arguments = "hall code W1",
     .output = "perhaps armed: BENT-1307\n",
     .status = 3},
    {.script = "watch-daemon", .arguments = WATCHED},
    {.script = "watch-daemon",
     .arguments = "EIBLOCAL away.socket ln -s lumo_eibgateway.socket away.socket",
     .syslog = "-t watch-daemon -p user.err away.socket: was away and is back\n",
     .pauses = "5\n"},
    {.script = "watch-daemon",
     .options = {"--refuse", "eib"},
     .arguments = "EIBLOCAL lumo_eibgateway.socket false",
     .status = 1,
     .requests = "",
     .syslog = "-t watch-daemon -p user.err lumo_eibgateway.socket: 'false' failed\n"
               "-t watch-daemon -p user.err lumo_eibgateway.socket: is away\n",
     .pauses = "5\n1\n2\n4\n8\n0\n"},
    {.script = "watch-daemon", // another one holds its lock
     .options = {"--refuse", "eib"},
     .arguments = WATCHED,
     .requests = "",
     .before = "exec 8>>watch-daemon.lumo_eibgateway.socket; flock 8"},
    {.script = "watch-daemon",
     .arguments = "EIB lumo_eibgateway.socket touch restarted",
     .status = 1,
     .requests = "",
     .syslog = "-t watch-daemon -p user.err lumo_eibgateway.socket: cannot be tried: exit 126\n",
     .pauses = "5\n",
     .errors = "lumo_alive: no type 'EIB' that can be tried\n"
               "lumo_alive: no type 'EIB' that can be tried\n"},
    {.script = "check-daemons", .output = "LUMOTRON OK - 9 of 9 are there\n"},
    {.script = "check-daemons",
     .arguments = "eiblocal fsmcore Soap",
     .output = "LUMOTRON OK - 3 of 3 are there\n"},
    {.script = "check-daemons",
     .options = {"--answer", "soap=403"},
     .arguments = "EIBLOCAL SOAP ECHOBUSLOCAL",
     .output = "LUMOTRON WARNING - SOAP answers LMWS-403, ECHOBUSLOCAL cannot be tried\n",
     .status = 1},
    {.script = "check-daemons",
     .options = {"--refuse", "bentel", "--close", "soap"},
     .output = "LUMOTRON CRITICAL - BENTELLOCAL is not there, SOAP does not answer\n",
     .status = 2},
    {.script = "check-daemons",
     .arguments = "ECHOBUSLOCAL FSMCORE",
     .output = "LUMOTRON UNKNOWN - ECHOBUSLOCAL cannot be tried\n",
     .status = 3},
    {.script = "check-daemons",
     .arguments = "-h",
     .output = "usage: check-daemons [TYPE...]\n",
     .status = 3,
     .requests = ""},

    {.script = "night-scene",
     .requests = "EIB: SENDEIBUSSETDATAGRAM living|1/1/3|1|0 -> EIBG-000\n"
                 "EIB: SENDEIBUSSETDATAGRAM living|1/2/1|1|1 -> EIBG-000\n"
                 "LINTRONIC: SENDLINTRONICDATAGRAM garden|07|012|on -> LINT-000\n"
                 "TUTONDO: SENDTUTONDOSETDATAGRAM audio|VOLUME|3|0 -> TUTG-0000\n"
                 "VIVALDI: SENDVIVALDISETDATAGRAM audio|1|1|4|0|0|0|0|0|0|0|0 -> VIVG-0000\n"},
    {.script = "night-scene",
     .options = {"--answer", "lintronic=1003", "--close", "tutondo"},
     .arguments = "+390000001",
     .output = "garden: LINT-1003 refused\nkitchen-radio: TUTG-1507 unknown\n",
     .status = 1,
     .requests = "EIB: SENDEIBUSSETDATAGRAM living|1/1/3|1|0 -> EIBG-000\n"
                 "EIB: SENDEIBUSSETDATAGRAM living|1/2/1|1|1 -> EIBG-000\n"
                 "LINTRONIC: SENDLINTRONICDATAGRAM garden|07|012|on -> LINT-1003\n"
                 "TUTONDO: SENDTUTONDOSETDATAGRAM audio|VOLUME|3|0 -> closed without an answer\n"
                 "VIVALDI: SENDVIVALDISETDATAGRAM audio|1|1|4|0|0|0|0|0|0|0|0 -> VIVG-0000\n"
                 "SMSTOOL: SENDSMSTOOLDATAGRAM modem|+390000001|night scene failed: garden "
                 "kitchen-radio -> SMST-000\n"},
};

const char *const USAGES[][3] = {
    {"all-lights-off", "", "usage: all-lights-off LIST\n"},
    {"arm-alarm", "hall code", "usage: arm-alarm SECTION CODE-FILE WINDOW...\n"},
    {"watch-daemon", "EIBLOCAL s", "usage: watch-daemon TYPE SOCKET COMMAND [ARGUMENT...]\n"},
    {"night-scene", "a b", "usage: night-scene [PHONE]\n"},
};

TEST_P(InShell, ExampleScriptsSayHowTheyAreUsed) {
    const shell_room room(GetParam(), {});
    for (const auto &[script, arguments, usage] : USAGES) {
        const run_result seen = room.run("set -- " + std::string(arguments) + "\n" +
                                             read_file(std::string(DIRECTORY) + script),
                                         room.directory.path);
        EXPECT_EQ(seen.output, "");
        EXPECT_EQ(seen.errors, usage);
        EXPECT_EQ(seen.status, 2);
        EXPECT_EQ(room.noted("calls"), "");
    }
}

TEST_P(InShell, ExampleScriptsDoTheirWork) {
    for (const script_row &row : SCRIPTS) {
        SCOPED_TRACE(std::string(row.script) + " " + row.arguments);
        const temporary_directory state;
        write_file(state.path + "/house", HOUSE);
        words options = row.options;
        options.insert(options.end(), {"--state", state.path + "/house"});
        running_simulator simulator(options);
        const shell_room room(GetParam());
        room.add_script("flock", "exec /usr/bin/flock \"$@\""); // no shell brings it
        const std::string &home = simulator.home.path;
        write_file(home + "/lights", LIGHTS);
        write_file(home + "/code", "4321");
        const run_result seen = room.run(
            "export LUMO_DIRECTORY=. LOCK_DIRECTORY=. LUMO_LIMIT=20 LUMO_URL=" + simulator.url +
                "\n" + row.before + "\nset -- " + row.arguments + "\n" +
                read_file(DIRECTORY + std::string(row.script)),
            home);
        EXPECT_EQ(seen.output, row.output);
        EXPECT_EQ(seen.errors, row.errors);
        EXPECT_EQ(seen.status, row.status);
        EXPECT_EQ(read_file(home + "/syslog"), row.syslog);
        EXPECT_EQ(read_file(home + "/pauses"), row.pauses);
        EXPECT_FALSE(std::filesystem::exists(home + "/restarted"));
        const std::string requests = simulator.end();
        if (row.requests != nullptr) {
            EXPECT_EQ(requests, row.requests);
        }
    }
}

/// Copied to a controller together, each script finds the library beside it.
TEST(LibraryExamples, FindTheLibraryAndPleaseShellcheck) {
    std::set<std::string> files;
    for (const script_row &row : SCRIPTS) {
        files.insert(DIRECTORY + std::string(row.script));
    }
    const shell_room room({"sh", {"/bin/sh"}, false});
    room.add_script("lumo.sh", "echo beside; exit");
    for (const std::string &file : files) {
        EXPECT_EQ(room.run(read_file(file), DIRECTORY).output, "beside\n") << file;
        EXPECT_EQ(run({"shellcheck", "-x", file}, {.directory = PROJECT_DIRECTORY}).output, "");
        EXPECT_EQ(access(file.c_str(), X_OK), 0) << file;
    }
}

} // namespace
