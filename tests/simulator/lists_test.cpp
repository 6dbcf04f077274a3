// Lists of requests: what --expect compares, what --record writes and --replay answers.
#include "tests/simulator/simulator_process.h"

#include <filesystem>
#include <gtest/gtest.h>

namespace {

using namespace harness;

// What FSMCore is asked has a letter for its name.
const std::string A = "FSMCORE: a -> FSMC-000\n";
const std::string B = "FSMCORE: b -> FSMC-000\n";
const std::string ANSWER = "FSMCORE -> \"Response Status: FSMC-000\\nParameter Count: 0\\n\"\n";

std::string ask(const running_simulator &simulator, char letter) {
    return simulator.ask(CORE_SOCKET, std::string("Request: ") + letter +
                                          "\nParameter Count: 0\nWaittime: 5\n\n");
}

struct expect_row {
    std::string list;
    std::string asked;           ///< a letter for each request
    std::string comparison = {}; ///< printed at the end
    int missing = 0;
    int unexpected = 0;
    int different = 0;
    bool any_order = false;
};

const expect_row EXPECTED[] = {
    {A + B, "ab"},
    {"", ""},
    {"FSMCORE: a\n" + B, "ab"},
    {A + ANSWER + B, "ab"},
    {"FSMCORE: a\n" + ANSWER, "a"},
    {"# first\n\n" + A + "\n# second\n" + B, "ab"},
    {"FSMCORE: a -> FSMC-000", "a"},
    {"FSMCORE listens on /tmp/x\nSOAP refuses on http://x\nready\nFSMCORE <- \"x\"\n" + A + ANSWER +
         "FSMCORE: no request, the client closed before the end of its request\n"
         "FSMCORE: the client did not take its answer\nstopped\n",
     "a"},
    {A + B, "a", " " + A + "-" + B, 1},
    {A, "ab", " " + A + "+" + B, 0, 1},
    {A + B + A, "aa", " " + A + "-" + B + " " + A, 1},
    {"FSMCORE: a -> FSMC-1\n" + B, "ab", "-FSMCORE: a -> FSMC-1\n+" + A + " " + B, 0, 0, 1},
    {A + "FSMCORE -> \"x\"\n", "a", "-" + A + "-FSMCORE -> \"x\"\n+" + A + "+" + ANSWER, 0, 0, 1},
    {B + A, "ab", "-" + B + " " + A + "+" + B, 1, 1},
    {A, "", "-" + A, 1},
    {B + A, "ab", "", 0, 0, 0, true},
    {"FSMCORE: a\n" + A + A + ANSWER, "aaa", "", 0, 0, 0, true},
    {A + B + A, "ba", " " + A + " " + B + "-" + A, 1, 0, 0, true},
    {A, "ba", "+" + B + " " + A, 0, 1, 0, true},
};

TEST(Expect, ComparesWhatCame) {
    const temporary_directory directory;
    const std::string path = directory.path + "/list";
    for (const expect_row &row : EXPECTED) {
        SCOPED_TRACE(row.list + " asked " + row.asked);
        write_file(path, row.list);
        words options{"--expect", path};
        options.insert(options.end(), row.any_order ? 1 : 0, "--any-order");
        running_simulator simulator(options);
        std::string log;
        for (const char letter : row.asked) {
            EXPECT_EQ(ask(simulator, letter), CORE_DONE);
            log += letter == 'a' ? A : B;
        }
        const bool differs = row.missing + row.unexpected + row.different > 0;
        EXPECT_EQ(simulator.end(differs ? 3 : 0), log + row.comparison);
        EXPECT_EQ(simulator.program.errors(),
                  !differs ? ""
                           : "lumosim: not the requests of " + path + ": " +
                                 std::to_string(row.missing) + " missing, " +
                                 std::to_string(row.unexpected) + " unexpected, " +
                                 std::to_string(row.different) + " answered differently\n");
    }
}

TEST(Recording, HoldsEachRequestWithItsAnswer) {
    const temporary_directory directory;
    const std::string path = directory.path + "/list";
    running_simulator simulator({"--record", path, "--close", "soap"});
    ask(simulator, 'a');
    simulator.call("login", "<user>demo</user><pass>demo</pass>");
    EXPECT_EQ(read_file(path), A + ANSWER +
                                   "SOAP: service-login demo|demo|(absent) -> closed "
                                   "without an answer\n");
    EXPECT_EQ(std::filesystem::status(path).permissions(),
              std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
}

/// A list, the answers to the request a one after the other, and the outcome of the last of them.
const std::tuple<std::string, words, std::string> REPLAYED[] = {
    {"FSMCORE: a -> A\nFSMCORE -> \"a\\n\"\n", {"a\n"}, "A"},
    {"FSMCORE: a -> A\nFSMCORE -> \"a\"\nFSMCORE: a -> B\nFSMCORE -> \"b\"\n",
     {"a", "b", "b"},
     "B"},
    {"FSMCORE: a -> closed without an answer\n", {""}, "closed without an answer"},
    {"FSMCORE: a\nFSMCORE -> \"abc\"\n", {"abc"}, "3 raw bytes"},
    {A, {CORE_DONE}, "FSMC-000 (not in the recording)"},
    {"SOAP: a -> A\nSOAP -> \"a\"\n", {CORE_DONE}, "FSMC-000 (not in the recording)"},
};

TEST(Replay, AnswersAsRecorded) {
    const temporary_directory directory;
    const std::string path = directory.path + "/list";
    for (const auto &[recorded, answers, outcome] : REPLAYED) {
        write_file(path, recorded);
        running_simulator simulator({"--replay", path});
        for (const std::string &answer : answers) {
            EXPECT_EQ(ask(simulator, 'a'), answer) << recorded;
        }
        EXPECT_TRUE(simulator.end().ends_with("FSMCORE: a -> " + outcome + "\n")) << recorded;
    }
}

} // namespace
