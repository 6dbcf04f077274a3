// Daemons that were told not to answer properly.
#include "tests/simulator/daemon_rows.h"
#include "tests/simulator/simulator_process.h"
#include "tests/simulator/soap_client.h"

#include <cerrno>
#include <chrono>
#include <csignal>
#include <fstream>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

namespace {

/// The options that say the same of every daemon on a socket.
std::vector<std::string> tell_daemons(const std::string &option, const std::string &argument) {
    std::vector<std::string> options;
    for (const DaemonRow &row : socket_daemons()) {
        options.insert(options.end(), {option, std::string(row.key) + argument});
    }
    return options;
}

/// Sends a proper request to a daemon and returns its answer.
std::string ask_properly(const Simulator &simulator, const DaemonRow &row) {
    return ask_daemon(simulator.home.path, std::string(row.socket), proper_request(row));
}

const std::string SERVICE_TEST = "<ns:service-test></ns:service-test>";

TEST(Misbehaviour, EveryDaemonAnswersAGivenStatus) {
    Simulator simulator(tell_daemons("--answer", "=42"));
    ASSERT_TRUE(simulator.ready) << simulator.program.errors;
    for (const DaemonRow &row : socket_daemons()) {
        EXPECT_EQ(ask_properly(simulator, row), status_answer(row, 42));
    }
}

TEST(Misbehaviour, GivenStatusMayBeNegative) {
    Simulator simulator({"--answer=eib=-4"});
    ASSERT_TRUE(simulator.ready);
    EXPECT_EQ(ask_properly(simulator, daemon_row("eib")), "Response Status: EIBG--004\n");
}

TEST(Misbehaviour, ServiceAnswersAGivenStatus) {
    Simulator simulator({"--answer", "soap=499"});
    ASSERT_TRUE(simulator.ready);
    EXPECT_EQ(call_service(simulator.port, "service-test", ""),
              wrap_response("service-test", "<result>LMWS-499</result>"));
}

TEST(Misbehaviour, EveryDaemonAnswersRawBytes) {
    Simulator simulator(tell_daemons("--answer-raw", "=a\\n\\r\\t\\0\\\\\\\"\\xFFb=c"));
    ASSERT_TRUE(simulator.ready) << simulator.program.errors;
    const std::string expected("a\n\r\t\0\\\"\xFF"
                               "b=c",
                               11);
    for (const DaemonRow &row : socket_daemons()) {
        EXPECT_EQ(ask_properly(simulator, row), expected);
    }
}

TEST(Misbehaviour, RawBytesComeFromAFile) {
    const FreshDirectory directory;
    const std::string bytes(300000, 'z');
    std::ofstream(directory.path + "/bytes") << bytes;
    Simulator simulator({"--answer-raw", "bentel=@" + directory.path + "/bytes"});
    ASSERT_TRUE(simulator.ready) << simulator.program.errors;
    const std::string answer = ask_properly(simulator, daemon_row("bentel"));
    EXPECT_TRUE(answer == bytes) << answer.size();
}

TEST(Misbehaviour, ServiceAnswersRawBytes) {
    Simulator simulator({"--answer-raw", "soap=HTTP/1.0 503 Busy\\r\\n\\r\\nbusy"});
    ASSERT_TRUE(simulator.ready);
    const HttpAnswer answer = post_message(simulator.port, wrap_request(SERVICE_TEST));
    EXPECT_EQ(answer.status, 503);
    EXPECT_EQ(answer.body, "busy");
    EXPECT_TRUE(wait_for_output(simulator.program, "SOAP: service-test (absent) -> 25 raw bytes"))
        << simulator.program.out;
}

TEST(Misbehaviour, EveryDaemonClosesWithoutAnAnswer) {
    std::vector<std::string> options = tell_daemons("--close", "");
    options.insert(options.end(), {"--close", "soap"});
    Simulator simulator(options);
    ASSERT_TRUE(simulator.ready) << simulator.program.errors;
    for (const DaemonRow &row : socket_daemons()) {
        EXPECT_EQ(ask_properly(simulator, row), "") << row.key;
    }
    EXPECT_EQ(post_message(simulator.port, wrap_request(SERVICE_TEST)).status, 0);
    EXPECT_TRUE(wait_for_output(simulator.program,
                                "SOAP: service-test (absent) -> closed without an answer\n"))
        << simulator.program.out;
}

TEST(Misbehaviour, EveryDaemonRefusesConnections) {
    std::vector<std::string> options = tell_daemons("--refuse", "");
    options.insert(options.end(), {"--refuse", "soap"});
    Simulator simulator(options);
    ASSERT_TRUE(simulator.ready) << simulator.program.errors;
    for (const DaemonRow &row : socket_daemons()) {
        const int descriptor = connect_daemon(simulator.home.path, std::string(row.socket));
        EXPECT_LT(descriptor, 0) << row.key;
        EXPECT_EQ(errno, ECONNREFUSED) << row.key;
    }
    ASSERT_GT(simulator.port, 0);
    EXPECT_LT(connect_port(simulator.port), 0);
    EXPECT_EQ(errno, ECONNREFUSED);
    EXPECT_EQ(end_program(simulator.program, SIGTERM), 0);
}

const std::string DONE = "Response Status: EIBG-000\n";

/// How often connections to the EIB gateway are refused before it listens, each awaited.
int count_refusals(Simulator &simulator, int most) {
    int count = 0;
    int descriptor = -1;
    const auto start = std::chrono::steady_clock::now();
    while (count < most && descriptor < 0) {
        descriptor = connect_daemon(simulator.home.path, "eibgateway");
        count += descriptor < 0 ? 1 : 0;
        // The next attempt is one of its own when this one has been seen.
        const std::string path = simulator.home.path + "/lumo_eibgateway.socket";
        struct stat found {};
        while (descriptor < 0 && stat(path.c_str(), &found) == 0 && found.st_atim.tv_sec != 0 &&
               std::chrono::steady_clock::now() - start < std::chrono::seconds(10)) {
            std::this_thread::yield();
        }
    }
    close(descriptor);
    return count;
}

TEST(Misbehaviour, RefusesTheFirstConnectionsOnly) {
    Simulator simulator({"--refuse", "eib=2"});
    if (simulator.program.errors.find("notes no accesses") != std::string::npos) {
        GTEST_SKIP() << simulator.program.errors;
    }
    ASSERT_TRUE(simulator.ready) << simulator.program.errors;
    EXPECT_EQ(count_refusals(simulator, 2), 2);
    ASSERT_TRUE(wait_for_output(simulator.program, "EIB: listens from now on\n"));
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(ask_properly(simulator, daemon_row("eib")), DONE);
    }
}

struct TimesCase {
    std::vector<std::string> options;
    std::vector<std::string> answers;
};

const TimesCase TIMES[] = {
    {{"--close", "eib=1"}, {"", DONE, DONE}},
    {{"--close", "eib=2"}, {"", "", DONE}},
    {{"--close", "eib"}, {"", "", ""}},
    {{"--close", "eib=1", "--delay", "eib=1,2"}, {"", DONE, DONE}},
};

TEST(Misbehaviour, EndsAfterTheFirstRequests) {
    for (const TimesCase &row : TIMES) {
        Simulator simulator(row.options);
        ASSERT_TRUE(simulator.ready) << simulator.program.errors;
        for (const std::string &answer : row.answers) {
            EXPECT_EQ(ask_properly(simulator, daemon_row("eib")), answer) << row.options[1];
        }
    }
}

TEST(Misbehaviour, DelayOfTheFirstHoldsUpNoSecond) {
    Simulator simulator({"--raw", "--delay", "eib=3600000,1"});
    ASSERT_TRUE(simulator.ready) << simulator.program.errors;
    const int waiting = connect_daemon(simulator.home.path, "eibgateway");
    ASSERT_TRUE(send_bytes(waiting, proper_request(daemon_row("eib"))));
    ASSERT_TRUE(wait_for_output(simulator.program, "EIB <- ")) << simulator.program.out;
    EXPECT_EQ(ask_properly(simulator, daemon_row("eib")), DONE);
    EXPECT_EQ(end_program(simulator.program, SIGTERM), 0);
    EXPECT_EQ(read_all(waiting), "");
}

TEST(Misbehaviour, DelayHoldsTheAnswerBack) {
    Simulator simulator({"--delay", "eib=300"});
    ASSERT_TRUE(simulator.ready);
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(ask_properly(simulator, daemon_row("eib")), "Response Status: EIBG-000\n");
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(300));
}

TEST(Misbehaviour, DelayOfOneDaemonHoldsUpNoOther) {
    Simulator simulator({"--raw", "--delay", "eib=3600000"});
    ASSERT_TRUE(simulator.ready);
    const int waiting = connect_daemon(simulator.home.path, "eibgateway");
    ASSERT_TRUE(send_bytes(waiting, proper_request(daemon_row("eib"))));
    ASSERT_TRUE(wait_for_output(simulator.program, "EIB <- ")) << simulator.program.out;
    EXPECT_EQ(ask_properly(simulator, daemon_row("bentel")), "Response Status: BENG-0000\n");
    EXPECT_EQ(end_program(simulator.program, SIGTERM), 0);
    EXPECT_EQ(read_all(waiting), "");
}

TEST(Misbehaviour, OthersAnswerProperly) {
    Simulator simulator({"--answer", "eib=7"});
    ASSERT_TRUE(simulator.ready);
    EXPECT_EQ(ask_properly(simulator, daemon_row("smstool")), "Response Status: SMST-000\n");
}

TEST(Trace, RawShowsBothDirections) {
    Simulator simulator({"--raw"});
    ASSERT_TRUE(simulator.ready);
    ask_daemon(simulator.home.path, "smstoolgateway",
               "Request: RECVSMSTOOLDATAGRAM\nFrom: \"\xC3\xA9\"\nMsg: b\\\n\n");
    EXPECT_TRUE(wait_for_output(
        simulator.program,
        "SMSTOOL <- \"Request: RECVSMSTOOLDATAGRAM\\nFrom: \\\"\\xC3\\xA9\\\"\\nMsg: b\\\\\\n\\n\"\n"
        "SMSTOOL: RECVSMSTOOLDATAGRAM \"\xC3\xA9\"|b\\ -> SMST-000\n"
        "SMSTOOL -> \"Response Status: SMST-000\\n\"\n"))
        << simulator.program.out;
}

} // namespace
