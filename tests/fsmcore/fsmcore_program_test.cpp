// FSMCore end to end: the real program against a scripted daemon.

#include "tests/harness/console.h"
#include "tests/harness/peer.h"
#include "tests/harness/process.h"

#include <gtest/gtest.h>

namespace {

using namespace harness;

const char REQUEST[] = "Request: GETSTATE\nParameter Count: 2\nParam000 Length: 2\nParam000:\n12\n"
                       "Param001 Length: 2\nParam001:\non\nWaittime: 5\n\n";
const char TAG[] = "FSMCoreutil->fsmcore_requeststatic ";

class FsmcoreProgram : public testing::Test {
  protected:
    temporary_directory directory;
    std::string path = directory.path + "/lumo_fsmcore.socket";

    words command(const words &options = {}) const {
        words all = options;
        const words rest = {"-t", "FSMCORE", "-s", path, "-f", "GETSTATE", "-p", "12|on"};
        all.insert(all.end(), rest.begin(), rest.end());
        return all;
    }

    std::string progress(pid_t pid) const {
        return green(pid, "[lumocmd] FSMCore local request selected") +
               green(pid, "[lumocmd] Socket selected: " + path) +
               green(pid, "[lumocmd] Function selected: GETSTATE") +
               green(pid, "[lumocmd] Parameters selected: 12|on");
    }

    static void expect_run(const run_result &run, const std::string &output, int status) {
        EXPECT_EQ(run.output, output);
        EXPECT_EQ(run.errors, "");
        EXPECT_EQ(run.status, status);
    }
};

TEST_F(FsmcoreProgram, ReturnedParametersAreNotShown) {
    peer daemon(path, {expect(REQUEST), reply("Response Status: FSMC-000\nParameter Count: 1\n"
                                              "Param000 Length: 3\nParam000:\nyes\n")});
    const run_result run = lumocmd(command({"-v", "ON"}));
    expect_run(run, progress(run.pid) + "LMCM-0000\n", 0);
    EXPECT_EQ(daemon.finish(), "");
}

TEST_F(FsmcoreProgram, WaitTimeOptionPlaysNoPart) {
    peer daemon(path, {expect(REQUEST), reply("Response Status: FSMC-000\nParameter Count: 0\n")});
    expect_run(lumocmd(command({"-w", "30"})), "LMCM-0000\n", 0);
    EXPECT_EQ(daemon.finish(), "");
}

TEST_F(FsmcoreProgram, EmptyListOverARelativeSocket) {
    peer daemon(path, {expect("Request: getstate\nParameter Count: 0\nWaittime: 5\n\n"),
                       reply("Response Status: FSMC-000\nParameter Count: 0\n")});
    expect_run(lumocmd({"-t", "fsmcore", "-s", "lumo_fsmcore.socket", "-f", "getstate", "-p", ""},
                       {.directory = directory.path}),
               "LMCM-0000\n", 0);
    EXPECT_EQ(daemon.finish(), "");
}

/// A status of the daemon, how it is shown and what the shell sees of it.
struct status_row {
    const char *name;
    const char *status;
    const char *text;
    int exit_status;
};

const status_row STATUSES[] = {
    {"Four", "004", "FSMC-004", 4},       {"EqualToAnOwnCode", "008", "FSMC-008", 8},
    {"Ninety", "90", "FSMC-090", 90},     {"OfAnotherModule", "1302", "BENT-1302", 22},
    {"Negative", "-1", "LMCM--001", 255},
};

class FsmcoreStatus : public testing::TestWithParam<status_row> {};

TEST_P(FsmcoreStatus, IsShownAndReturned) {
    const status_row &row = GetParam();
    const temporary_directory directory;
    const std::string path = directory.path + "/s";
    peer daemon(path, {collect_until("\n\n"), reply(std::string("Response Status: FSMC-") +
                                                    row.status + "\nParameter Count: 0\n")});
    const run_result run = lumocmd({"-t", "FSMCORE", "-s", path, "-f", "F", "-p", "a"});
    EXPECT_EQ(run.output, std::string(row.text) + "\n");
    EXPECT_EQ(run.errors, "");
    EXPECT_EQ(run.status, row.exit_status);
    EXPECT_EQ(daemon.finish(), "");
}

INSTANTIATE_TEST_SUITE_P(Table, FsmcoreStatus, testing::ValuesIn(STATUSES),
                         [](const auto &row) { return row.param.name; });

TEST_F(FsmcoreProgram, ConnectionRefused) {
    const std::string connector =
        "utility->make_localtcpclient_socket connect failed with error 'No such file or directory'";
    const std::string message =
        std::string(TAG) + "error opening socket FSMCore clientside for function 'GETSTATE'";
    expect_run(lumocmd(command()), red(connector) + red(message) + "FSMC-006\n", 6);
    const run_result run = lumocmd(command({"-v", "ON"}));
    expect_run(run,
               progress(run.pid) + tagged_red(run.pid, connector) + tagged_red(run.pid, message) +
                   "FSMC-006\n",
               6);
}

TEST_F(FsmcoreProgram, MalformedAnswer) {
    peer daemon(path, {collect_until("\n\n"), reply("Response Status: FSMC-000x\n")});
    expect_run(lumocmd(command()),
               red(std::string(TAG) + "error strtol with error 'Success' for function GETSTATE") +
                   "FSMC-008\n",
               8);
    EXPECT_EQ(daemon.finish(), "");
}

TEST_F(FsmcoreProgram, NoAnswer) {
    peer daemon(path, {collect_until("\n\n"), close_connection()});
    expect_run(lumocmd(command()),
               red(std::string(TAG) + "strtok parsing 'Response Status: ' response tag failed for "
                                      "function 'GETSTATE'") +
                   "FSMC-008\n",
               8);
    EXPECT_EQ(daemon.finish(), "");
}

TEST_F(FsmcoreProgram, DaemonClosesOnTheUnreadRequest) {
    peer daemon(path, {await_bytes(), close_connection()});
    const run_result run = lumocmd(command({"-v", "ON"}));
    expect_run(run,
               progress(run.pid) +
                   tagged_red(run.pid, std::string(TAG) +
                                           "recv reading response failed with error 'Connection "
                                           "reset by peer' for function 'GETSTATE'") +
                   "FSMC-008\n",
               8);
    EXPECT_EQ(daemon.finish(), "");
}

TEST_F(FsmcoreProgram, TooLongAValueIsRefusedBeforeAConnection) {
    peer daemon(path, {});
    const run_result run =
        lumocmd({"-t", "FSMCORE", "-s", path, "-f", "GETSTATE", "-p", std::string(512, 'v')});
    EXPECT_EQ(run.output, red("localclientutil->make_fsmcorelocal_request error value of parameter "
                              "1 is longer than 511 characters for function 'GETSTATE'") +
                              "FSMC-008\n");
    EXPECT_EQ(run.status, 8);
    EXPECT_EQ(daemon.finish_unvisited(), "");
}

TEST_F(FsmcoreProgram, MissingFunctionIsNotServed) {
    const run_result run = lumocmd({"-t", "FSMCORE", "-s", path, "-v", "maybe", "-f", "F"});
    expect_run(run, "LMCM-503\n", 503 & 0xff);
}

} // namespace
