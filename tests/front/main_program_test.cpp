// The whole life of a process: which client is called, the last line, the exit status, and what
// becomes of it when its streams or its daemon are gone.

#include "tests/front/transcript.h"
#include "tests/harness/peer.h"
#include "tests/harness/private_machine.h"
#include "tests/protocol/request_types.h"

#include <cerrno>
#include <cstring>
#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

using namespace front_tests;
using harness::peer;
using harness::run_result;
using harness::temporary_directory;

const char REQUEST[] = "Request: SENDBENTELCOMMANDDATAGRAM\nSectionName: a\nUserCode: b\n"
                       "Command: c\nPayload: d\n\n";

harness::words bentel(const std::string &path) {
    return {"-t", "BENTELLOCAL", "-s", path, "-f", "SENDBENTELCOMMANDDATAGRAM", "-p", "a|b|c|d"};
}

/// The two red lines of a gateway that cannot be reached.
shown_lines unreachable(int error_number) {
    return {red(std::string("utility->make_localtcpclient_socket connect failed with error '") +
                strerror(error_number) + "'"),
            red("BENTELGatewayutil->bentelgateway_local_request error opening socket "
                "BENTELGateway clientside for function 'SENDBENTELCOMMANDDATAGRAM'"),
            plain("BENT-1305")};
}

// --- The last line

struct code_case {
    const char *name;
    const char *answered;
    const char *text;
    int status; ///< as the shell sees it
};

const code_case CODES[] = {
    {"Success", "0000", "LMCM-0000", 0},
    {"GatewayCode", "1302", "BENT-1302", 22},
    {"CodeOfAnotherComponent", "402", "LMWS-402", 146},
    {"SmallCode", "7", "FSMC-007", 7},
    {"LowEightBitsAreZero", "256", "ECHG-256", 0},
    {"Negative", "-1", "LMCM--001", 255},
    {"LargestInt", "2147483647", "LGMG-2147483647", 255},
    {"SmallestInt", "-2147483648", "LMCM--2147483648", 0},
};

class LastLine : public testing::TestWithParam<code_case> {};

TEST_P(LastLine, IsTheStatusText) {
    const temporary_directory directory;
    const std::string path = directory.path + "/s";
    const std::string answer = std::string("Response Status: BENG-") + GetParam().answered + "\n";
    peer daemon(path, {harness::expect(REQUEST), harness::reply(answer)});
    const run_result run = harness::lumocmd(bentel(path));
    EXPECT_EQ(daemon.finish(), "");
    EXPECT_EQ(run.output, std::string(GetParam().text) + "\n");
    EXPECT_EQ(run.errors, "");
    EXPECT_EQ(run.status, GetParam().status);
}

INSTANTIATE_TEST_SUITE_P(Table, LastLine, testing::ValuesIn(CODES),
                         [](const auto &row) { return row.param.name; });

TEST(MainProgram, LastLineIsNeverColoured) {
    const temporary_directory directory;
    const std::string path = directory.path + "/s";
    peer daemon(path, {harness::expect(REQUEST), harness::reply("Response Status: BENG-0\n")});
    harness::words words = bentel(path);
    words.insert(words.begin(), {"-v", "ON"});
    const run_result run = harness::lumocmd(words);
    EXPECT_EQ(daemon.finish(), "");
    EXPECT_EQ(
        run.output,
        transcript(run.pid, {green("[lumocmd] BENTEL Local request selected"),
                             green("[lumocmd] Socket selected: " + path),
                             green("[lumocmd] Function selected: SENDBENTELCOMMANDDATAGRAM"),
                             green("[lumocmd] Parameters selected: a|b|c|d"), plain("LMCM-0000")}));
    EXPECT_EQ(run.status, 0);
}

TEST(MainProgram, FailedConnectPrintsTwoLinesAndTheCode) {
    const temporary_directory directory;
    const run_result run = harness::lumocmd(bentel(directory.path + "/missing"));
    EXPECT_EQ(run.output, transcript(run.pid, unreachable(ENOENT)));
    EXPECT_EQ(run.errors, "");
    EXPECT_EQ(run.status, 1305 & 0xff);
}

TEST(MainProgram, SocketPathIsRelativeToTheWorkingDirectory) {
    const temporary_directory directory;
    peer daemon(directory.path + "/s",
                {harness::expect(REQUEST), harness::reply("Response Status: BENG-0\n")});
    const run_result run = harness::lumocmd(bentel("s"), {.directory = directory.path});
    EXPECT_EQ(daemon.finish(), "");
    EXPECT_EQ(run.output, "LMCM-0000\n");
}

// --- Dispatch

// One parameter too many names the client that was called.
TEST(MainProgram, EveryGatewayTypeCallsItsClient) {
    for (const protocol::gateway_row *gateway : protocol::GATEWAYS) {
        if (protocol::is_reachable(*gateway)) {
            const protocol::function_row &function = gateway->functions.front();
            const std::string line = std::string("-t ") + gateway->name + "LOCAL -s S -f " +
                                     function.name + " -p " +
                                     protocol::list_of(protocol::count_of(function) + 1);
            expect_transcript(line.c_str(),
                              {red(protocol::count_message(*gateway, function)), plain("LMCM-505")},
                              505);
        }
    }
}

// One of them, and what else main can do, spelt out.
const transcript_case CLIENTS[] = {
    {"Eib",
     "-t EIBLOCAL -s S -f SENDEIBUSSETDATAGRAM -p a",
     {red("localclientutil->make_eibuslocal_request error too few or too much parameters, "
          "SectionName, Destination, EISType, Payload are needed"),
      plain("LMCM-505")},
     505},
    {"Fsmcore",
     "-t FSMCORE -s '' -f GETSTATE -p a",
     {red("utility->make_localtcpclient_socket connect failed with error 'Invalid argument'"),
      red("FSMCoreutil->fsmcore_requeststatic error opening socket FSMCore clientside for "
          "function 'GETSTATE'"),
      plain("FSMC-006")},
     6},
    {"TypeStoppedBeforeAny", "-v maybe", {red(NOT_PARSED), plain("LMCM-505")}, 505},
    {"UnsupportedTypeStopped",
     "-t MARTINLOCAL -v maybe",
     {red("MARTIN requests unsupported!"), red(NOT_PARSED), plain("LMCM-505")},
     505},
    {"InternetTypeStopped",
     "-t EIBINTERNET -v maybe",
     {red(UNIMPLEMENTED), plain("LMCM-507")},
     507},
    // The parser stopped early, so nothing was required: absent texts reach the client.
    {"AbsentSocket", "-t BENTELLOCAL -f SENDBENTELCOMMANDDATAGRAM -p a|b|c|d -v maybe",
     unreachable(EINVAL), 1305},
    {"AbsentParameters",
     "-t BENTELLOCAL -f SENDBENTELCOMMANDDATAGRAM -v maybe",
     {red("localclientutil->make_bentellocal_request error too few or too much parameters, "
          "SectionName, UserCode, Command, Payload are needed"),
      plain("LMCM-505")},
     505},
};

class Dispatch : public testing::TestWithParam<transcript_case> {};

TEST_P(Dispatch, CallsTheClientOfTheType) {
    expect_transcript(GetParam().line, GetParam().output, GetParam().status);
}

INSTANTIATE_TEST_SUITE_P(Table, Dispatch, testing::ValuesIn(CLIENTS),
                         [](const auto &row) { return row.param.name; });

TEST(MainProgram, AbsentFunctionIsServedByNoClient) {
    for (const protocol::request_type_row &row :
         protocol::request_types_that([](const auto &each) { return each.carried; })) {
        const std::string line = "-t " + row.keyword;
        expect_transcript((line + " -v maybe").c_str(), {plain("LMCM-503")}, 503);
        expect_transcript((line + " -s S -p a -t NOSUCH").c_str(), {plain("LMCM-503")}, 503);
    }
}

// --- Missing streams and peers

// An unreadable number leaves the connection open to the end of the process, when all that was
// printed is written out: a connection in the place of standard output would receive it.
const char UNREADABLE_ANSWER[] = "Response Status: BENG-5x\n";

TEST(MainProgram, ClosedStandardOutputDoesNotReachTheDaemon) {
    const temporary_directory directory;
    const std::string path = directory.path + "/s";
    peer daemon(path, {harness::expect(REQUEST), harness::reply(UNREADABLE_ANSWER)});
    harness::words words = bentel(path);
    words.insert(words.begin(), {"-v", "ON"});
    const run_result run = harness::lumocmd(words, {.prepare = [] { close(STDOUT_FILENO); }});
    EXPECT_EQ(daemon.finish(), "");
    EXPECT_EQ(daemon.received(), REQUEST);
    EXPECT_EQ(run.output, "");
    EXPECT_EQ(run.errors, "");
    EXPECT_EQ(run.status, 1307 & 0xff);
}

// A wrapper needs standard error for itself.
const char RUN_WITHOUT_STREAMS[] = "test -n \"$LUMOCMD_WRAPPER\" || exec 2>&-; "
                                   "exec $LUMOCMD_WRAPPER \"$@\" <&- >&-";

TEST(MainProgram, EveryStandardStreamMayBeClosed) {
    const temporary_directory directory;
    const std::string path = directory.path + "/s";
    peer daemon(path, {harness::expect(REQUEST), harness::reply(UNREADABLE_ANSWER)});
    harness::words words = {"/bin/sh", "-c", RUN_WITHOUT_STREAMS, "sh", harness::lumocmd_path()};
    const harness::words request = bentel(path);
    words.insert(words.end(), request.begin(), request.end());
    const run_result run = harness::run(words);
    EXPECT_EQ(daemon.finish(), "");
    EXPECT_EQ(daemon.received(), REQUEST);
    EXPECT_EQ(run.status, 1307 & 0xff);
}

const char NOT_HIDDEN[] = "devices cannot be hidden: ";

/// Where there is no device to occupy them with, the standard descriptors stay as they are.
TEST(MainProgram, SystemWithoutANullDeviceIsServed) {
    SKIP_WHERE_MISSING(harness::missing_private_machine());
    const std::string seen = harness::on_private_machine([] {
        if (unshare(CLONE_NEWNS) != 0 ||
            mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
            mount("none", "/dev", "tmpfs", 0, nullptr) != 0) {
            return NOT_HIDDEN + std::string(strerror(errno));
        }
        const temporary_directory directory;
        const std::string path = directory.path + "/s";
        peer daemon(path,
                    {harness::expect(REQUEST), harness::reply("Response Status: BENG-0042\n")});
        const run_result run = harness::lumocmd(bentel(path));
        return daemon.finish() + run.output + run.errors;
    });
    if (seen.starts_with(NOT_HIDDEN)) {
        GTEST_SKIP() << seen;
    }
    EXPECT_EQ(seen, "FSMC-042\n");
}

TEST(MainProgram, DaemonThatClosesAtOnceIsAFailedRequest) {
    const temporary_directory directory;
    const std::string path = directory.path + "/s";
    peer daemon(path, {harness::close_connection()});
    const run_result run = harness::lumocmd(bentel(path));
    EXPECT_EQ(daemon.finish(), "");
    // Whether the request still leaves is a matter of who is faster.
    const bool sent = run.status != (1306 & 0xff);
    EXPECT_EQ(run.status, (sent ? 1307 : 1306) & 0xff);
    const std::string last_line = sent ? "\nBENT-1307\n" : "\nBENT-1306\n";
    EXPECT_NE(run.output.find(last_line), std::string::npos) << run.output;
}

// The shell keeps the only writing end of a pipe that nobody reads.
const char RUN_INTO_A_DEAD_PIPE[] = "exec 3<>\"$1\"; exec 4>\"$1\"; exec 3<&-; "
                                    "$LUMOCMD_WRAPPER \"$2\" -t NOSUCH >&4; echo \"$?\"";

TEST(MainProgram, OutputThatNobodyReadsKeepsTheExitStatus) {
    const temporary_directory directory;
    const std::string pipe = directory.path + "/pipe";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    const run_result run =
        harness::run({"/bin/sh", "-c", RUN_INTO_A_DEAD_PIPE, "sh", pipe, harness::lumocmd_path()});
    EXPECT_EQ(run.output, std::to_string(505 & 0xff) + "\n");
    EXPECT_EQ(run.errors, "");
}

} // namespace
