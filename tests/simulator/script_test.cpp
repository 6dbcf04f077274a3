// Commands that the simulator serves: what they find, and what their end means.
#include "tests/simulator/simulator_process.h"

#include <csignal>
#include <filesystem>
#include <gtest/gtest.h>
#include <tuple>

namespace {

namespace fs = std::filesystem;
using namespace harness;

/// Four lamps, switched by the client that is built here; its name is $0.
const std::string LAMPS = "for lamp in 1 2 3 4; do"
                          " \"$0\" -t EIBLOCAL -s \"$LUMO_DIRECTORY/lumo_eibgateway.socket\""
                          " -f SENDEIBUSSETDATAGRAM -p \"living|1/1/$lamp|1|1\" >&2 || exit; done";

std::string lamp_lines(int count) {
    std::string lines;
    for (int lamp = 1; lamp <= count; ++lamp) {
        lines += "EIB: SENDEIBUSSETDATAGRAM living|1/1/" + std::to_string(lamp) + "|1|1\n";
    }
    return lines;
}

struct script_row {
    std::string script; ///< for sh
    int expected_lamps;
    int status;
    std::string out = {};
    words options = {};
};

const script_row SCRIPTS[] = {
    {LAMPS, 4, 0},
    {LAMPS, 3, 3},
    {"exit 0", 1, 3},
    {"echo hello", 0, 0, "hello\n"},
    {"exit 9", 1, 9},
    {"kill -KILL $$", 1, 137},
    {LAMPS, 1, 107, "", {"--answer", "eib=107"}},
    {"yes | head -n 1", 0, 0, "y\n"},
    {"\"$0\" -t SOAP -u \"$LUMO_URL\" -f SERVICE_TEST >&2", 0, 3},
    {"command -v lumosim", 0, 0, LUMOSIM_PROGRAM "\n"},
    {"exit 0", 0, 125, "", {"--state-out", "/nowhere/at/all"}},
};

TEST(Script, EndsWithItsStatus) {
    const temporary_directory directory;
    const std::string list = directory.path + "/list";
    for (const script_row &row : SCRIPTS) {
        SCOPED_TRACE(row.script);
        write_file(list, lamp_lines(row.expected_lamps));
        words arguments = row.options;
        arguments.insert(arguments.end(),
                         {"--expect", list, "--", "sh", "-c", row.script, LUMOCMD_PROGRAM});
        const run_result seen = run_simulator(arguments);
        EXPECT_EQ(seen.status, row.status) << seen.errors;
        EXPECT_EQ(seen.output, row.out) << seen.errors;
        EXPECT_NE(seen.errors.find("\nready\n"), std::string::npos) << seen.errors;
    }
}

/// Arguments, the status, and the end of the errors.
const std::tuple<words, int, std::string> FAILURES[] = {
    {{"--foo", "--", "true"}, 125, "lumosim: unknown option '--foo'\nTry 'lumosim --help'.\n"},
    {{"--"}, 125, "lumosim: -- needs COMMAND ... after it\nTry 'lumosim --help'.\n"},
    {{"--expect", "/nowhere/at/all", "--", "true"}, 125, "lumosim: cannot read /nowhere/at/all\n"},
    {{"--", "/nowhere/at/all"},
     127,
     "lumosim: cannot run /nowhere/at/all: No such file or directory\n"},
    {{"--", "/"}, 126, "lumosim: cannot run /: Permission denied\n"},
};

TEST(ScriptThatCannotRun, HasAStatusOfItsOwn) {
    for (const auto &[arguments, status, errors] : FAILURES) {
        const run_result seen = run_simulator(arguments);
        EXPECT_EQ(seen.status, status) << seen.errors;
        EXPECT_EQ(seen.output, "");
        EXPECT_TRUE(seen.errors.ends_with(errors)) << seen.errors;
    }
}

TEST(ScriptDirectory, IsFreshAndRemoved) {
    const run_result seen =
        run_simulator({"--", "sh", "-c", "touch \"$LUMO_DIRECTORY/x\"; echo \"$LUMO_DIRECTORY\""});
    EXPECT_EQ(seen.status, 0) << seen.errors;
    ASSERT_TRUE(seen.output.starts_with("/")) << seen.output;
    EXPECT_FALSE(fs::exists(seen.output.substr(0, seen.output.size() - 1))) << seen.output;
}

const std::tuple<int, std::string, int> SIGNALS[] = {
    {SIGTERM, "", 128 + SIGTERM},        {SIGTERM, "trap 'exit 0' TERM;", 128 + SIGTERM},
    {SIGTERM, "trap 'exit 5' TERM;", 5}, {SIGHUP, "trap 'exit 5' HUP;", 5},
    {SIGQUIT, "trap 'exit 5' QUIT;", 5},
};

TEST(ScriptSignals, ArePassedOn) {
    for (const auto &[number, script, status] : SIGNALS) {
        // A shell handles a signal when what it waits for has ended, so it is the built-in here.
        started_program program(
            {LUMOSIM_PROGRAM, "--", "sh", "-c",
             script + "mkfifo \"$LUMO_DIRECTORY/go\"; echo up; read line <\"$LUMO_DIRECTORY/go\""});
        ASSERT_TRUE(program.wait_for_output("up\n")) << program.errors();
        EXPECT_EQ(end_program(program, number).status, status) << script;
    }
}

} // namespace
