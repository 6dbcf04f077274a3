// Daemons that were told what to answer, and the log that tells what they did.
#include "tests/protocol/daemons.h"
#include "tests/simulator/simulator_process.h"

#include <cerrno>
#include <chrono>
#include <csignal>
#include <gtest/gtest.h>
#include <regex>
#include <sys/stat.h>
#include <thread>

namespace {

using namespace harness;
using namespace protocol;

/// Options that say the same of every daemon.
words tell_all(const std::string &option, const std::string &argument) {
    words options;
    for (const daemon_row &daemon : daemons()) {
        options.insert(options.end(), {option, lower(daemon.name) + argument});
    }
    return options;
}

TEST(Told, EveryDaemonAnswersStatusesInTurn) {
    running_simulator simulator(tell_all("--answer", "=107,0,42"));
    for (const int number : {107, 0, 42, 42}) {
        for (const daemon_row &daemon : daemons()) {
            const std::string status = status_text(daemon, number);
            if (daemon.socket.empty()) {
                simulator.expect_response({"test", "", "result=" + status});
            } else {
                EXPECT_EQ(
                    simulator.ask(daemon.socket, daemon.gateway ? "Request: x\n\n" : CORE_REQUEST),
                    "Response Status: " + status +
                        (daemon.gateway ? "\n" : "\nParameter Count: 0\n"));
            }
        }
    }
}

TEST(Told, EveryDaemonRefusesConnections) {
    running_simulator simulator(tell_all("--refuse", ""));
    for (const daemon_row &daemon : daemons()) {
        EXPECT_EQ(daemon.socket.empty() ? connect_port(simulator.port)
                                        : connect_socket(simulator.home.path + "/" + daemon.socket),
                  -1);
        EXPECT_EQ(errno, ECONNREFUSED) << daemon.name;
    }
    EXPECT_EQ(simulator.end(), "");
}

const std::string CLOSED = "FSMCORE: f -> closed without an answer\n";
const std::string LINE = "FSMCORE: f -> FSMC-000\n";

/// Options, the answers to one request after the other, and the log.
const std::tuple<words, words, std::string> TOLD[] = {
    {{"--answer=fsmcore=-4"},
     {"Response Status: FSMC--004\nParameter Count: 0\n"},
     "FSMCORE: f -> FSMC--004\n"},
    {{"--answer", "soap=7"}, {CORE_DONE}, LINE},
    {{"--answer-raw", "fsmcore=a\\n\\r\\t\\0\\\\\\\"\\xFFb=c"},
     {std::string("a\n\r\t\0\\\"\xFF", 8) + "b=c"},
     "FSMCORE: f -> 11 raw bytes\n"},
    {{"--answer-raw", "fsmcore=@" LUMOSIM_UNIT},
     {read_file(LUMOSIM_UNIT)},
     "FSMCORE: f -> " + std::to_string(read_file(LUMOSIM_UNIT).size()) + " raw bytes\n"},
    {{"--close", "fsmcore=2"}, {"", "", CORE_DONE}, CLOSED + CLOSED + LINE},
    {{"--close", "fsmcore=1", "--delay", "fsmcore=1,2"},
     {"", CORE_DONE, CORE_DONE},
     CLOSED + LINE + LINE},
};

TEST(Told, DaemonsAnswer) {
    for (const auto &[options, answers, log] : TOLD) {
        running_simulator simulator(options);
        for (const std::string &answer : answers) {
            EXPECT_EQ(simulator.ask(CORE_SOCKET, CORE_REQUEST), answer) << joined(options, " ");
        }
        EXPECT_EQ(simulator.end(), log);
    }
}

TEST(Told, TheServiceAnswersRawBytesOrNone) {
    running_simulator raw({"--answer-raw", "soap=HTTP/1.0 503 Busy\\r\\n\\r\\nbusy"});
    EXPECT_EQ(raw.call("test", ""), "busy");
    EXPECT_EQ(raw.end(), "SOAP: service-test (absent) -> 25 raw bytes\n");
    running_simulator closed({"--close", "soap"});
    EXPECT_EQ(closed.post(wrap_request("<ns:service-test/>")).status, 0);
    EXPECT_EQ(closed.end(), "SOAP: service-test (absent) -> closed without an answer\n");
}

/// An attempt counts once the simulator has taken back the access time of the socket.
void wait_until_counted(const std::string &path) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(PATIENCE_MS);
    struct stat found {};
    while (stat(path.c_str(), &found) == 0 && found.st_atim.tv_sec != 0 &&
           std::chrono::steady_clock::now() < end) {
        std::this_thread::yield();
    }
}

TEST(Told, RefusesTheFirstConnectionsOnly) {
    const temporary_directory directory;
    started_program program(simulator_command(directory.path, {"--refuse", "fsmcore=2"}));
    if (!program.wait_for_output("ready\n")) {
        const std::string errors = program.finish().errors;
        ASSERT_NE(errors.find("notes no accesses"), std::string::npos) << errors;
        GTEST_SKIP() << errors;
    }
    const std::string path = directory.path + "/" + CORE_SOCKET;
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(connect_socket(path), -1);
        wait_until_counted(path);
    }
    ASSERT_TRUE(program.wait_for_output("FSMCORE: listens from now on\n"));
    EXPECT_EQ(ask_daemon(path, CORE_REQUEST), CORE_DONE);
}

TEST(Told, DelayHoldsTheAnswerBack) {
    running_simulator simulator({"--delay", "fsmcore=300"});
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(simulator.ask(CORE_SOCKET, CORE_REQUEST), CORE_DONE);
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(300));
}

TEST(Told, DelayHoldsUpNobodyElse) {
    running_simulator simulator({"--raw", "--delay", "fsmcore=3600000,1"});
    const int waiting = connect_socket(simulator.home.path + "/" + CORE_SOCKET);
    ASSERT_TRUE(send_bytes(waiting, CORE_REQUEST));
    ASSERT_TRUE(simulator.program.wait_for_output("FSMCORE <- "));
    EXPECT_EQ(simulator.ask(CORE_SOCKET, CORE_REQUEST), CORE_DONE);
    simulator.end();
    EXPECT_EQ(read_all(waiting), "");
}

const std::string ODD_REQUEST = "Request: \"\xC3\xA9\\\nParameter Count: 0\nWaittime: 5\n\n";

TEST(Log, ShowsTheBytesOfBothDirections) {
    running_simulator simulator({"--raw"});
    simulator.ask(CORE_SOCKET, ODD_REQUEST);
    EXPECT_EQ(simulator.end(),
              "FSMCORE <- \"Request: \\\"\\xC3\\xA9\\\\\\nParameter Count: 0\\n"
              "Waittime: 5\\n\\n\"\nFSMCORE: \"\xC3\xA9\\ -> FSMC-000\n"
              "FSMCORE -> \"Response Status: FSMC-000\\nParameter Count: 0\\n\"\n");
}

TEST(Log, HoldsAnObjectPerLineForMachines) {
    running_simulator simulator({"--log-format", "json", "--raw", "--expect", "/dev/null"});
    EXPECT_EQ(simulator.ask(CORE_SOCKET, ODD_REQUEST), CORE_DONE);
    const run_result seen = end_program(simulator.program, SIGTERM);
    EXPECT_EQ(seen.status, 3) << seen.errors;
    std::string expected;
    for (const daemon_row &daemon : daemons()) {
        expected +=
            R"({"event":"listens","daemon":")" + lower(daemon.name) + R"(","place":")" +
            (daemon.socket.empty() ? simulator.url : simulator.home.path + "/" + daemon.socket) +
            "\"}\n";
    }
    // The bytes are one character each.
    expected += R"({"event":"ready"}
{"event":"bytes","daemon":"fsmcore","direction":"<-",)"
                R"("bytes":"Request: \"Ã©\\\nParameter Count: 0\nWaittime: 5\n\n"}
{"event":"request","daemon":"fsmcore","request":"\"é\\","outcome":"FSMC-000"}
{"event":"bytes","daemon":"fsmcore","direction":"->",)"
                R"("bytes":"Response Status: FSMC-000\nParameter Count: 0\n"}
{"event":"comparison","side":"unexpected","line":"FSMCORE: \"é\\ -> FSMC-000"}
{"event":"stopped"}
)";
    const std::regex time(R"-("time":"\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d\.\d{3}Z",)-");
    EXPECT_EQ(std::regex_replace(seen.output, time, ""), expected);
}

} // namespace
