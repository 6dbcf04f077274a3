// Daemons that were told not to answer properly.
#include "simulator_process.h"
#include "soap_client.h"

#include <cerrno>
#include <chrono>
#include <csignal>
#include <fstream>
#include <gtest/gtest.h>

namespace {

/// A daemon's option name, its socket, a request that it knows, and its answer with number 42.
struct DaemonCase {
    const char *key;
    const char *socket;
    const char *request;
    const char *answer_42;
};

const DaemonCase DAEMONS[] = {
    {"fsmcore", "fsmcore", "Request: f\nParameter Count: 0\nWaittime: 5\n\n",
     "Response Status: FSMC-042\nParameter Count: 0\n"},
    {"eib", "eibgateway",
     "Request: SENDEIBUSSETDATAGRAM\nSectionName: a\nDestination: b\nEISType: c\nPayload: d\n\n",
     "Response Status: EIBG-042\n"},
    {"smstool", "smstoolgateway", "Request: RECVSMSTOOLDATAGRAM\nFrom: a\nMsg: b\n\n",
     "Response Status: SMST-042\n"},
    {"lintronic", "lintronicgateway",
     "Request: SENDLINTRONICDATAGRAM\nSectionName: a\nDevice: 01\nCommand: 001\nPayload: d\n\n",
     "Response Status: LINT-042\n"},
    {"tecnout", "tecnoutgateway",
     "Request: SENDTECNOUTCOMMANDDATAGRAM\nSectionName: a\nUserCode: b\nCommand: c\n"
     "Payload: d\n\n",
     "Response Status: TECG-0042\n"},
    {"vivaldi", "vivaldigateway",
     "Request: SENDVIVALDIGETDATAGRAM\nSectionName: a\nCentralNumber: b\nCommand: 2\n"
     "RC20_Number: d\n\n",
     "Response Status: VIVG-0042\n"},
    {"bentel", "bentelgateway",
     "Request: SENDBENTELCOMMANDDATAGRAM\nSectionName: a\nUserCode: b\nCommand: c\nPayload: d\n\n",
     "Response Status: BENG-0042\n"},
    {"tutondo", "tutondogateway",
     "Request: SENDTUTONDOGETDATAGRAM\nSectionName: a\nCommand: c\nZone_Number: z\n\n",
     "Response Status: TUTG-0042\n"},
};

const std::string SERVICE_TEST = "<ns:service-test></ns:service-test>";

TEST(Misbehaviour, EveryDaemonAnswersAGivenStatus) {
    std::vector<std::string> options;
    for (const DaemonCase &row : DAEMONS) {
        options.insert(options.end(), {"--answer", std::string(row.key) + "=42"});
    }
    Simulator simulator(options);
    ASSERT_TRUE(simulator.ready) << simulator.program.errors;
    for (const DaemonCase &row : DAEMONS) {
        EXPECT_EQ(ask_daemon(simulator.home.path, row.socket, row.request), row.answer_42);
    }
}

TEST(Misbehaviour, GivenStatusMayBeNegative) {
    Simulator simulator({"--answer=eib=-4"});
    ASSERT_TRUE(simulator.ready);
    EXPECT_EQ(ask_daemon(simulator.home.path, "eibgateway", DAEMONS[1].request),
              "Response Status: EIBG--004\n");
}

TEST(Misbehaviour, ServiceAnswersAGivenStatus) {
    Simulator simulator({"--answer", "soap=499"});
    ASSERT_TRUE(simulator.ready);
    EXPECT_EQ(call_service(simulator.port, "service-test", ""),
              wrap_response("service-test", "<result>LMWS-499</result>"));
}

TEST(Misbehaviour, EveryDaemonAnswersRawBytes) {
    std::vector<std::string> options;
    for (const DaemonCase &row : DAEMONS) {
        options.insert(options.end(),
                       {"--answer-raw", std::string(row.key) + "=a\\n\\r\\t\\0\\\\\\\"\\xFFb=c"});
    }
    Simulator simulator(options);
    ASSERT_TRUE(simulator.ready) << simulator.program.errors;
    const std::string expected("a\n\r\t\0\\\"\xFF"
                               "b=c",
                               11);
    for (const DaemonCase &row : DAEMONS) {
        EXPECT_EQ(ask_daemon(simulator.home.path, row.socket, row.request), expected);
    }
}

TEST(Misbehaviour, RawBytesComeFromAFile) {
    const FreshDirectory directory;
    const std::string bytes(300000, 'z');
    std::ofstream(directory.path + "/bytes") << bytes;
    Simulator simulator({"--answer-raw", "bentel=@" + directory.path + "/bytes"});
    ASSERT_TRUE(simulator.ready) << simulator.program.errors;
    const std::string answer = ask_daemon(simulator.home.path, "bentelgateway", DAEMONS[6].request);
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
    std::vector<std::string> options{"--close", "soap"};
    for (const DaemonCase &row : DAEMONS) {
        options.insert(options.end(), {"--close", row.key});
    }
    Simulator simulator(options);
    ASSERT_TRUE(simulator.ready) << simulator.program.errors;
    for (const DaemonCase &row : DAEMONS) {
        EXPECT_EQ(ask_daemon(simulator.home.path, row.socket, row.request), "") << row.key;
    }
    EXPECT_EQ(post_message(simulator.port, wrap_request(SERVICE_TEST)).status, 0);
    EXPECT_TRUE(wait_for_output(simulator.program,
                                "SOAP: service-test (absent) -> closed without an answer\n"))
        << simulator.program.out;
}

TEST(Misbehaviour, EveryDaemonRefusesConnections) {
    std::vector<std::string> options{"--refuse", "soap"};
    for (const DaemonCase &row : DAEMONS) {
        options.insert(options.end(), {"--refuse", row.key});
    }
    Simulator simulator(options);
    ASSERT_TRUE(simulator.ready) << simulator.program.errors;
    for (const DaemonCase &row : DAEMONS) {
        const int descriptor = connect_daemon(simulator.home.path, row.socket);
        EXPECT_LT(descriptor, 0) << row.key;
        EXPECT_EQ(errno, ECONNREFUSED) << row.key;
    }
    ASSERT_GT(simulator.port, 0);
    EXPECT_LT(connect_port(simulator.port), 0);
    EXPECT_EQ(errno, ECONNREFUSED);
    EXPECT_EQ(end_program(simulator.program, SIGTERM), 0);
}

TEST(Misbehaviour, DelayHoldsTheAnswerBack) {
    Simulator simulator({"--delay", "eib=300"});
    ASSERT_TRUE(simulator.ready);
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(ask_daemon(simulator.home.path, "eibgateway", DAEMONS[1].request),
              "Response Status: EIBG-000\n");
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(300));
}

TEST(Misbehaviour, DelayOfOneDaemonHoldsUpNoOther) {
    Simulator simulator({"--raw", "--delay", "eib=3600000"});
    ASSERT_TRUE(simulator.ready);
    const int waiting = connect_daemon(simulator.home.path, "eibgateway");
    ASSERT_TRUE(send_bytes(waiting, DAEMONS[1].request));
    ASSERT_TRUE(wait_for_output(simulator.program, "EIB <- ")) << simulator.program.out;
    EXPECT_EQ(ask_daemon(simulator.home.path, "bentelgateway", DAEMONS[6].request),
              "Response Status: BENG-0000\n");
    EXPECT_EQ(end_program(simulator.program, SIGTERM), 0);
    EXPECT_EQ(read_all(waiting), "");
}

TEST(Misbehaviour, OthersAnswerProperly) {
    Simulator simulator({"--answer", "eib=7"});
    ASSERT_TRUE(simulator.ready);
    EXPECT_EQ(ask_daemon(simulator.home.path, "smstoolgateway", DAEMONS[2].request),
              "Response Status: SMST-000\n");
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
