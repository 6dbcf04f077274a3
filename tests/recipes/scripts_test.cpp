// The scripts of docs/examples and those that lumo.sh(7) shows, in every shell, each against a
// simulated controller of its own.

#include "tests/recipes/shell_room.h"

#include <filesystem>
#include <regex>
#include <set>
#include <unistd.h>

namespace {

using namespace harness;

const std::string DIRECTORY = PROJECT_DIRECTORY "/docs/examples/";

struct script_row {
    std::string script;
    std::string arguments = {};
    words options = {};      ///< the simulator's
    std::string output = {}; ///< with the stand-ins' for logger and sleep
    int status = 0;
    const char *requests = ""; ///< null: not looked at
    const char *errors = "";
    std::string before = {}; ///< what the shell does first
};

const char *const LIGHTS = "# upstairs\n\nliving 1/1/3 the lamp\nhall 1/1/4 door";
const char *const HOUSE = R"({"elements": {"W1": {"status": "CLOSED", "value": "0"},
    "W2": {"status": "CLOSED", "value": "0"}, "W3": {"status": "OPEN", "value": "1"}}})";

const script_row SCRIPTS[] = {
    {"all-lights-off", "lights", {}, "2 of 2 lights are off\n", 0, nullptr},
    {.script = "all-lights-off",
     .arguments = "lights",
     .options = {"--refuse", "eib"},
     .output = "sleep 1\nsleep 2\nsleep 4\nsleep 8\nthe lamp (1/1/3): EIBG-105 unreachable\n"
               "door (1/1/4): EIBG-105 unreachable\n0 of 2 lights are off\n",
     .status = 1},
    {.script = "all-lights-off", // a list from Windows, without names
     .arguments = "lights",
     .options = {"--answer", "eib=103,0"},
     .output = "light (1/1/3): EIBG-103 refused\n1 of 2 lights are off\n",
     .status = 1,
     .requests = "EIB: SENDEIBUSSETDATAGRAM living|1/1/3|1|0 -> EIBG-103\n"
                 "EIB: SENDEIBUSSETDATAGRAM hall|1/1/4|1|0 -> EIBG-000\n",
     .before = "printf 'living 1/1/3\\r\\n\\r\\nhall 1/1/4 door\\r\\n' >lights"},
    {.script = "all-lights-off",
     .arguments = "lights",
     .status = 2,
     .errors = "no lights in the list\n",
     .before = "echo '# upstairs' >lights"},
    {"all-lights-off", "", {}, "", 2, "", "usage: all-lights-off LIST\n"},

    {"arm-alarm", "hall away W1", {}, "not armed: no code in away\n", 1},
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
    {"arm-alarm",
     "hall code W1",
     {"--answer", "bentel=1302"},
     "not armed: BENT-1302\n",
     1,
     nullptr},
    {"arm-alarm", "hall code W1", {"--close", "bentel"}, "perhaps armed: BENT-1307\n", 3, nullptr},
    {"arm-alarm", "hall code", {}, "", 2, "", "usage: arm-alarm SECTION CODE-FILE WINDOW...\n"},

    {.script = "watch-daemon",
     .arguments = "EIBLOCAL lumo_eibgateway.socket touch restarted",
     .requests = nullptr},
    {.script = "watch-daemon",
     .arguments = "EIBLOCAL away.socket ln -s lumo_eibgateway.socket away.socket",
     .output = "sleep 5\nlogger -t watch-daemon -p user.err away.socket: was away and is back\n",
     .requests = nullptr},
    {.script = "watch-daemon",
     .arguments = "EIBLOCAL lumo_eibgateway.socket false",
     .options = {"--refuse", "eib"},
     .output = "sleep 5\n"
               "logger -t watch-daemon -p user.err lumo_eibgateway.socket: 'false' failed\n"
               "sleep 1\nsleep 2\nsleep 4\nsleep 8\nsleep 0\n"
               "logger -t watch-daemon -p user.err lumo_eibgateway.socket: is away\n",
     .status = 1},
    {.script = "watch-daemon", // another one holds its lock
     .arguments = "EIBLOCAL lumo_eibgateway.socket touch restarted",
     .options = {"--refuse", "eib"},
     .before = "exec 8>>watch-daemon.lumo_eibgateway.socket; flock 8"},
    {.script = "watch-daemon",
     .arguments = "EIB lumo_eibgateway.socket touch restarted",
     .output = "sleep 5\nlogger -t watch-daemon -p user.err lumo_eibgateway.socket: cannot be "
               "tried: exit 126\n",
     .status = 1,
     .errors = "lumo_alive: no type 'EIB' that can be tried\n"
               "lumo_alive: no type 'EIB' that can be tried\n"},
    {.script = "watch-daemon",
     .arguments = "EIBLOCAL s",
     .status = 2,
     .errors = "usage: watch-daemon TYPE SOCKET COMMAND [ARGUMENT...]\n"},

    {"check-daemons", "", {}, "LUMOTRON OK - 9 of 9 are there\n", 0, nullptr},
    {.script = "check-daemons",
     .arguments = "eiblocal Soap ECHOBUSLOCAL",
     .options = {"--answer", "soap=403"},
     .output = "LUMOTRON WARNING - SOAP answers LMWS-403, ECHOBUSLOCAL cannot be tried\n",
     .status = 1,
     .requests = nullptr},
    {.script = "check-daemons",
     .options = {"--refuse", "bentel", "--close", "soap"},
     .output = "LUMOTRON CRITICAL - BENTELLOCAL is not there, SOAP does not answer\n",
     .status = 2,
     .requests = nullptr},
    {.script = "check-daemons",
     .arguments = "ECHOBUSLOCAL FSMCORE",
     .output = "LUMOTRON UNKNOWN - ECHOBUSLOCAL cannot be tried\n",
     .status = 3,
     .requests = nullptr},
    {"check-daemons", "-h", {}, "usage: check-daemons [TYPE...]\n", 3},

    {"night-scene", "", {}, "", 0, nullptr},
    {.script = "night-scene",
     .arguments = "+390000001",
     .options = {"--answer", "lintronic=1003", "--close", "tutondo"},
     .output = "garden: LINT-1003 refused\nkitchen-radio: TUTG-1507 unknown\n",
     .status = 1,
     .requests = "EIB: SENDEIBUSSETDATAGRAM living|1/1/3|1|0 -> EIBG-000\n"
                 "EIB: SENDEIBUSSETDATAGRAM living|1/2/1|1|1 -> EIBG-000\n"
                 "LINTRONIC: SENDLINTRONICDATAGRAM garden|07|012|on -> LINT-1003\n"
                 "TUTONDO: SENDTUTONDOSETDATAGRAM audio|VOLUME|3|0 -> closed without an answer\n"
                 "VIVALDI: SENDVIVALDISETDATAGRAM audio|1|1|4|0|0|0|0|0|0|0|0 -> VIVG-0000\n"
                 "SMSTOOL: SENDSMSTOOLDATAGRAM modem|+390000001|night scene failed: garden "
                 "kitchen-radio -> SMST-000\n"},
    {"night-scene", "a b", {}, "", 2, "", "usage: night-scene [PHONE]\n"},
};

TEST_P(InShell, ExampleScriptsDoTheirWork) {
    for (const script_row &row : SCRIPTS) {
        SCOPED_TRACE(row.script + " " + row.arguments);
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
                read_file(DIRECTORY + row.script),
            home);
        EXPECT_EQ(seen.output, row.output);
        EXPECT_EQ(seen.errors, row.errors);
        EXPECT_EQ(seen.status, row.status);
        EXPECT_FALSE(std::filesystem::exists(home + "/restarted"));
        const std::string requests = simulator.end();
        if (row.requests != nullptr) {
            EXPECT_EQ(requests, row.requests);
        }
    }
}

std::set<std::string> example_scripts() {
    std::set<std::string> names;
    for (const script_row &row : SCRIPTS) {
        names.insert(row.script);
    }
    return names;
}

/// Copied to a controller together, each script finds the library beside it.
TEST(LibraryExamples, FindTheLibraryAndPleaseShellcheck) {
    const shell_room room("sh");
    room.add_script("lumo.sh", "echo beside; exit");
    for (const std::string &script : example_scripts()) {
        const std::string file = DIRECTORY + script;
        EXPECT_EQ(room.run(read_file(file), DIRECTORY).output, "beside\n") << file;
        EXPECT_EQ(run({"shellcheck", "-x", file}, {.directory = PROJECT_DIRECTORY}).output, "");
        EXPECT_EQ(access(file.c_str(), X_OK), 0) << file;
    }
}

const char *const BLOCK = ".Bd -literal -offset indent\n";
const std::string PAGE = read_file(PROJECT_DIRECTORY "/docs/man/lumo.sh.7");

/// What follows the comment "run NAME OPTION...", with the simulator's options: a block that is the
/// script, and one of what it prints.
struct shown_script {
    words comment;
    std::string script;
    std::string output;
};

std::vector<shown_script> read_scripts() {
    const std::string page = replaced(replaced(PAGE, "\\&", ""), "\\e", "\\");
    std::vector<shown_script> scripts;
    for (std::size_t at = 0;;) {
        const words comment = protocol::split(text_between(page, at, ".\\\" run ", "\n"), ' ');
        const std::string script = text_between(page, at, BLOCK, ".Ed\n");
        const std::string output = text_between(page, at, BLOCK, ".Ed\n");
        if (at == std::string::npos) {
            return scripts;
        }
        scripts.push_back({comment, script, output});
    }
}

TEST_P(InShell, ManualScriptsPrintWhatThePageShows) {
    for (const shown_script &shown : read_scripts()) {
        SCOPED_TRACE(shown.comment[0]);
        running_simulator simulator({shown.comment.begin() + 1, shown.comment.end()});
        const std::string script =
            replaced(shown.script, "http://localhost/cgi-bin/lumows", simulator.url);
        const run_result seen = shell_room(GetParam()).run(script, simulator.home.path);
        EXPECT_EQ(seen.output, shown.output);
        EXPECT_NE(seen.output, "");
        EXPECT_EQ(seen.errors, "");
    }
}

/// A block that nothing runs may be wrong.
TEST(LibraryManual, RunsEveryBlockAndPleasesShellcheck) {
    const std::vector<shown_script> scripts = read_scripts();
    std::size_t blocks = 0;
    for (std::size_t at = 0; (at = PAGE.find(BLOCK, at)) != std::string::npos; at++) {
        blocks++;
    }
    EXPECT_EQ(blocks, 2 * scripts.size());
    EXPECT_GT(blocks, 0U);
    const temporary_directory directory;
    const std::string file = directory.path + "/script";
    for (const shown_script &shown : scripts) {
        write_file(file, replaced(shown.script, INSTALLED_LIBRARY, LIBRARY));
        EXPECT_EQ(run({"shellcheck", "-x", "-s", "sh", file}).output, "") << shown.comment[0];
    }
}

/// Every script, every variable of the library and of the scripts, and every function for scripts.
TEST(LibraryManual, NamesWhatScriptsUse) {
    std::string used = read_file(LIBRARY) + read_file(PROJECT_DIRECTORY "/docs/recipes.md");
    for (const std::string &script : example_scripts()) {
        EXPECT_NE(PAGE.find(".It Pa " + script + "\n"), std::string::npos) << script;
        used += read_file(DIRECTORY + script);
    }
    const std::regex name("\\bLUMO_[A-Z]+\\b");
    for (std::sregex_iterator found(used.begin(), used.end(), name), end; found != end; ++found) {
        EXPECT_NE(PAGE.find(found->str()), std::string::npos) << found->str();
    }
    for (const char *function :
         {"call", "retry", "status", "outcome", "value", "get", "item", "list", "alive", "plain"}) {
        EXPECT_NE(PAGE.find(std::string(".It Ic lumo_") + function), std::string::npos) << function;
    }
}

} // namespace
