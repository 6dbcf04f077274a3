// Commands that the simulator serves: what they find, and what their end means.
#include "tests/simulator/simulator_process.h"

#include <csignal>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>

namespace {

namespace fs = std::filesystem;

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

struct ScriptCase {
    const char *name;
    std::vector<std::string> options;
    std::string script; ///< for sh
    int expected_lamps;
    int status;
    std::string out;
};

const ScriptCase CASES[] = {
    {"FourLamps", {}, LAMPS, 4, 0, ""},
    {"AnotherLamp", {}, LAMPS, 3, 3, ""},
    {"ALampTooFew", {}, "exit 0", 1, 3, ""},
    {"OutputIsItsOwn", {}, "echo hello", 0, 0, "hello\n"},
    {"OwnStatusFirst", {}, "exit 9", 1, 9, ""},
    {"OwnSignalFirst", {}, "kill -KILL $$", 1, 137, ""},
    {"ADaemonThatFails", {"--answer", "eib=107"}, LAMPS, 1, 107, ""},
    {"PipesEndIt", {}, "yes | head -n 1", 0, 0, "y\n"},
    {"ServiceIsThere", {}, "\"$0\" -t SOAP -u \"$LUMO_URL\" -f SERVICE_TEST >&2", 0, 3, ""},
    {"TheNextToItIsFound", {}, "command -v lumosim", 0, 0, LUMOSIM_PROGRAM "\n"},
    {"AStateThatCannotBeWritten", {"--state-out", "/nowhere/at/all"}, "exit 0", 0, 125, ""},
};

class Script : public testing::TestWithParam<ScriptCase> {};

TEST_P(Script, EndsWithItsStatus) {
    const ScriptCase &row = GetParam();
    if (std::string(row.name) == "TheNextToItIsFound" && !fs::exists("/proc/self/exe")) {
        GTEST_SKIP() << "/proc is not mounted: no program knows where it is";
    }
    const FreshDirectory directory;
    const std::string list = directory.path + "/list";
    std::ofstream(list) << lamp_lines(row.expected_lamps);
    std::vector<std::string> options{"--expect", list};
    options.insert(options.end(), row.options.begin(), row.options.end());
    options.insert(options.end(), {"--", "sh", "-c", row.script, LUMOCMD_PROGRAM});
    Program program(options);
    EXPECT_EQ(end_program(program, 0), row.status) << program.errors;
    EXPECT_EQ(program.out, row.out) << program.errors;
    EXPECT_NE(program.errors.find("\nready\n"), std::string::npos) << program.errors;
}

INSTANTIATE_TEST_SUITE_P(Cases, Script, testing::ValuesIn(CASES),
                         [](const auto &row) { return row.param.name; });

struct FailureCase {
    std::vector<std::string> arguments;
    int status;
    std::string errors; ///< the end of them
};

const FailureCase FAILURES[] = {
    {{"--foo", "--", "true"}, 125, "lumosim: unknown option '--foo'\nTry 'lumosim --help'.\n"},
    {{"--"}, 125, "lumosim: -- needs COMMAND ... after it\nTry 'lumosim --help'.\n"},
    {{"--expect", "/nowhere/at/all", "--", "true"}, 125, "lumosim: cannot read /nowhere/at/all\n"},
    {{"--", "/nowhere/at/all"},
     127,
     "lumosim: cannot run /nowhere/at/all: No such file or directory\n"},
    {{"--", "/"}, 126, "lumosim: cannot run /: Permission denied\n"},
};

TEST(ScriptThatCannotRun, HasAStatusOfItsOwn) {
    for (const FailureCase &row : FAILURES) {
        Program program(row.arguments);
        EXPECT_EQ(end_program(program, 0), row.status) << program.errors;
        EXPECT_EQ(program.out, "");
        EXPECT_TRUE(program.errors.ends_with(row.errors)) << program.errors;
    }
}

TEST(ScriptDirectory, IsFreshAndRemoved) {
    Program program({"--", "sh", "-c", "touch \"$LUMO_DIRECTORY/x\"; echo \"$LUMO_DIRECTORY\""});
    EXPECT_EQ(end_program(program, 0), 0) << program.errors;
    ASSERT_TRUE(program.out.starts_with("/")) << program.out;
    EXPECT_FALSE(fs::exists(program.out.substr(0, program.out.size() - 1))) << program.out;
}

struct SignalCase {
    std::string script;
    int status;
};

const SignalCase SIGNALS[] = {
    {"", 128 + SIGTERM},
    {"trap 'exit 0' TERM;", 128 + SIGTERM},
    {"trap 'exit 5' TERM;", 5},
};

TEST(ScriptSignals, ArePassedOn) {
    for (const SignalCase &row : SIGNALS) {
        // A shell handles a signal when what it waits for has ended, so it is the built-in here.
        Program program(
            {"--", "sh", "-c",
             row.script +
                 "mkfifo \"$LUMO_DIRECTORY/go\"; echo up; read line <\"$LUMO_DIRECTORY/go\""});
        ASSERT_TRUE(wait_for_output(program, "up\n")) << program.errors;
        EXPECT_EQ(end_program(program, SIGTERM), row.status) << row.script << program.errors;
    }
}

} // namespace
