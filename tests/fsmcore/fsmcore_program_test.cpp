// FSMCore end to end: the real program against a scripted daemon.

#include "tests/harness/console.h"
#include "tests/harness/peer.h"
#include "tests/harness/process.h"

#include <gtest/gtest.h>

namespace {

using namespace harness;

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
    EXPECT_EQ(run.output, green(run.pid, "[lumocmd] FSMCore local request selected") +
                              green(run.pid, "[lumocmd] Socket selected: s") +
                              green(run.pid, "[lumocmd] Function selected: GetState") +
                              green(run.pid, "[lumocmd] Parameters selected: 12|on") +
                              green(run.pid, "[lumocmd] Waittime selected: 30") + "LMCM-0000\n");
    EXPECT_EQ(run.errors, "");
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(daemon.finish(), "");
}

} // namespace
