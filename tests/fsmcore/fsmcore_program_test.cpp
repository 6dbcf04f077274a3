// FSMCore end to end: the real program against a scripted daemon.

#include "tests/harness/console.h"
#include "tests/harness/peer.h"
#include "tests/harness/process.h"

#include <gtest/gtest.h>
#include <unistd.h>

namespace {

using namespace harness;

void expect_run(const run_result &run, const std::string &output, int status) {
    EXPECT_EQ(run.output, output);
    EXPECT_EQ(run.errors, "");
    EXPECT_EQ(run.status, status);
}

TEST(FsmcoreProgram, ShowsNoReturnedParametersAndSendsNoOptionalWaitTime) {
    const temporary_directory directory;
    peer daemon(directory.path + "/s",
                {expect("Request: GetState\nParameter Count: 2\nParam000 Length: 2\nParam000:\n12\n"
                        "Param001 Length: 2\nParam001:\non\nWaittime: 5\n\n"),
                 reply("Response Status: FSMC-000\nParameter Count: 1\nParam000 Length: 3\n"
                       "Param000:\nyes\n")});
    const run_result run = lumocmd(
        {"-v", "ON", "-t", "fsmcore", "-s", "s", "-f", "GetState", "-p", "12|on", "-w", "30"},
        {.directory = directory.path});
    expect_run(run,
               green(run.pid, "[lumocmd] FSMCore local request selected") +
                   green(run.pid, "[lumocmd] Socket selected: s") +
                   green(run.pid, "[lumocmd] Function selected: GetState") +
                   green(run.pid, "[lumocmd] Parameters selected: 12|on") +
                   green(run.pid, "[lumocmd] Waittime selected: 30") + "LMCM-0000\n",
               0);
    EXPECT_EQ(daemon.finish(), "");
}

/// A status of the daemon, how it is shown and what the shell sees of it.
TEST(FsmcoreProgram, ShowsAnyStatusOfTheDaemon) {
    const struct {
        const char *status;
        const char *text;
        int exit_status;
    } statuses[] = {
        {"004", "FSMC-004\n", 4}, {"1302", "BENT-1302\n", 22}, {"-1", "LMCM--001\n", 255}};
    const temporary_directory directory;
    const std::string path = directory.path + "/s";
    for (const auto &row : statuses) {
        SCOPED_TRACE(row.status);
        unlink(path.c_str());
        peer daemon(path, {collect_until("\n\n"), reply(std::string("Response Status: FSMC-") +
                                                        row.status + "\nParameter Count: 0\n")});
        expect_run(lumocmd({"-t", "FSMCORE", "-s", path, "-f", "F", "-p", ""}), row.text,
                   row.exit_status);
        EXPECT_EQ(daemon.finish(), "");
    }
}

TEST(FsmcoreProgram, SaysWhyThereIsNoConnection) {
    expect_run(lumocmd({"-t", "FSMCORE", "-s", "/nowhere", "-f", "F", "-p", "a"}),
               red("utility->make_localtcpclient_socket connect failed with error 'No such file or "
                   "directory'") +
                   red("FSMCoreutil->fsmcore_requeststatic error opening socket FSMCore clientside "
                       "for function 'F'") +
                   "FSMC-006\n",
               6);
}

} // namespace
