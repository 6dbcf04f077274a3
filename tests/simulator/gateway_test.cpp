// The gateways: every request they know, and what they refuse.
#include "tests/simulator/daemon_rows.h"
#include "tests/simulator/simulator_process.h"

#include <gtest/gtest.h>
#include <sys/socket.h>

namespace {

struct GatewayCase {
    const char *name; ///< name of the row
    const char *daemon;
    const char *request;
    const char *answer;
    const char *line; ///< what is printed about it
};

const GatewayCase CASES[] = {
    {"EibLowerCaseName", "eibgateway",
     "Request: sendeibussetdatagram\nSectionName: a\nDestination: b\nEISType: c\nPayload: d\n\n",
     "Response Status: EIBG-000\n", "EIB: sendeibussetdatagram a|b|c|d -> EIBG-000"},
    {"EibEmptyValues", "eibgateway",
     "Request: SENDEIBUSSETDATAGRAM\nSectionName: \nDestination: \nEISType: \nPayload: \n\n",
     "Response Status: EIBG-000\n", "EIB: SENDEIBUSSETDATAGRAM ||| -> EIBG-000"},
    {"EibUnknownName", "eibgateway", "Request: SENDBENTELCOMMANDDATAGRAM\n\n",
     "Response Status: EIBG-101\n", "EIB: SENDBENTELCOMMANDDATAGRAM -> EIBG-101 (unknown"},
    {"LintronicUnknownName", "lintronicgateway",
     "Request: SENDLINTRONICRAWDATAGRAM\nSectionName: bus\nDevice: 01\nCommand: 002\n"
     "Payload: x\n\n",
     "Response Status: LINT-1001\n", "LINTRONIC: SENDLINTRONICRAWDATAGRAM -> LINT-1001"},
    {"NoRequestLine", "eibgateway", "Hello\n\n", "Response Status: EIBG-102\n",
     "EIB: Hello\\n\\n -> EIBG-102 (line 1 is not 'Request: ...')"},
    {"MissingBlank", "eibgateway",
     "Request: SENDEIBUSSETDATAGRAM\nSectionName:a\nDestination: b\nEISType: c\nPayload: d\n\n",
     "Response Status: EIBG-102\n", "-> EIBG-102 (line 2 is not 'SectionName: ...')"},
    {"MissingLine", "bentelgateway",
     "Request: SENDBENTELCOMMANDDATAGRAM\nSectionName: a\nUserCode: b\nCommand: c\n\n",
     "Response Status: BENG-1302\n", "-> BENG-1302 (line 5 is not 'Payload: ...')"},
    {"ValueWithLineFeed", "eibgateway",
     "Request: SENDEIBUSSETDATAGRAM\nSectionName: a\nb\nDestination: b\nEISType: c\n"
     "Payload: d\n\n",
     "Response Status: EIBG-102\n", "-> EIBG-102 (line 3 is not 'Destination: ...')"},
    {"LineTooMany", "tutondogateway",
     "Request: SENDTUTONDOGETDATAGRAM\nSectionName: a\nCommand: c\nZone_Number: z\n"
     "Payload: p\n\n",
     "Response Status: TUTG-1502\n", "-> TUTG-1502 (a line too many)"},
    {"TutondoZoneFirst", "tutondogateway",
     "Request: SENDTUTONDOSETDATAGRAM\nSectionName: a\nZone_Number: z\nCommand: c\n"
     "Payload: p\n\n",
     "Response Status: TUTG-1502\n", "-> TUTG-1502 (line 3 is not 'Command: ...')"},
    {"HeaderNameInLowerCase", "smstoolgateway",
     "Request: RECVSMSTOOLDATAGRAM\nfrom: +39055\nMsg: hi\n\n", "Response Status: SMST-802\n",
     "-> SMST-802 (line 2 is not 'From: ...')"},
    {"VivaldiSetWithOtherCommand", "vivaldigateway",
     "Request: SENDVIVALDIGETDATAGRAM\nSectionName: s\nCentralNumber: 7\nCommand: 1\n"
     "RC20_Number: 2\n\n",
     "Response Status: VIVG-0903\n", "-> VIVG-0903 (Command: must be 2)"},
    {"LintronicShortDevice", "lintronicgateway",
     "Request: SENDLINTRONICDATAGRAM\nSectionName: bus\nDevice: 1\nCommand: 002\nPayload: x\n\n",
     "Response Status: LINT-1003\n", "-> LINT-1003 (Device: must be 2 characters long)"},
    {"LintronicLongCommand", "lintronicgateway",
     "Request: SENDLINTRONICDATAGRAM\nSectionName: bus\nDevice: 01\nCommand: 0002\n"
     "Payload: x\n\n",
     "Response Status: LINT-1003\n", "-> LINT-1003 (Command: must be 3 characters long)"},
    {"BytesAfterTheEnd", "smstoolgateway",
     "Request: RECVSMSTOOLDATAGRAM\nFrom: +39055\nMsg: hi\n\nmore", "Response Status: SMST-802\n",
     "-> SMST-802 (bytes after the empty line)"},
};

std::ostream &operator<<(std::ostream &out, const GatewayCase &row) {
    return out << row.name;
}

class GatewayFunction : public testing::TestWithParam<FunctionRow> {};

TEST_P(GatewayFunction, IsCarriedOut) {
    const FunctionRow &row = GetParam();
    const DaemonRow &daemon = daemon_row(row.daemon);
    Simulator simulator;
    ASSERT_TRUE(simulator.ready) << simulator.program.errors;
    const std::string request = function_request(row);
    ASSERT_EQ(ask_daemon(simulator.home.path, std::string(daemon.socket), request),
              status_answer(daemon, 0))
        << request;
    const std::string line = std::string(daemon.label) + ": " + std::string(row.name) + " " +
                             std::string(row.shown) + " -> " + status_text(daemon, 0) + "\n";
    EXPECT_TRUE(wait_for_output(simulator.program, line)) << line << simulator.program.out;
}

INSTANTIATE_TEST_SUITE_P(Rows, GatewayFunction,
                         testing::ValuesIn(FUNCTION_ROWS.begin(), FUNCTION_ROWS.end()),
                         [](const auto &row) { return std::string(row.param.name); });

TEST(GatewayFunctions, OthersAreUnknown) {
    Simulator simulator;
    ASSERT_TRUE(simulator.ready) << simulator.program.errors;
    for (const DaemonRow &daemon : gateways()) {
        const auto not_supported = static_cast<unsigned>(daemon.base) + 1;
        ASSERT_EQ(ask_daemon(simulator.home.path, std::string(daemon.socket), "Request: X\n\n"),
                  status_answer(daemon, not_supported));
        const std::string line = std::string(daemon.label) + ": X -> " +
                                 status_text(daemon, not_supported) + " (unknown request name)\n";
        EXPECT_TRUE(wait_for_output(simulator.program, line)) << line << simulator.program.out;
    }
}

class Gateway : public testing::TestWithParam<GatewayCase> {};

TEST_P(Gateway, Answers) {
    const GatewayCase &row = GetParam();
    Simulator simulator;
    ASSERT_TRUE(simulator.ready) << simulator.program.errors;
    EXPECT_EQ(ask_daemon(simulator.home.path, row.daemon, row.request), row.answer) << row.request;
    EXPECT_TRUE(wait_for_output(simulator.program, row.line)) << simulator.program.out;
}

INSTANTIATE_TEST_SUITE_P(Rows, Gateway, testing::ValuesIn(CASES),
                         [](const auto &row) { return std::string(row.param.name); });

TEST(GatewayReading, TakesRequestsInSingleBytes) {
    Simulator simulator;
    ASSERT_TRUE(simulator.ready);
    for (const FunctionRow &row : FUNCTION_ROWS) {
        const DaemonRow &daemon = daemon_row(row.daemon);
        EXPECT_EQ(ask_daemon(simulator.home.path, std::string(daemon.socket), function_request(row),
                             true),
                  status_answer(daemon, 0))
            << row.name;
    }
    for (const GatewayCase &row : CASES) {
        if (std::string_view(row.name) == "BytesAfterTheEnd") {
            continue; // sent one by one, those bytes come after the answer
        }
        EXPECT_EQ(ask_daemon(simulator.home.path, row.daemon, row.request, true), row.answer)
            << row.request;
    }
}

TEST(GatewayReading, RefusesAZeroByteAfterTheRequest) {
    Simulator simulator;
    ASSERT_TRUE(simulator.ready);
    const std::string request =
        std::string("Request: RECVSMSTOOLDATAGRAM\nFrom: 1\nMsg: hi\n\n") + '\0';
    EXPECT_EQ(ask_daemon(simulator.home.path, "smstoolgateway", request),
              "Response Status: SMST-802\n");
}

TEST(GatewayReading, RefusesAZeroByteInAValue) {
    Simulator simulator;
    ASSERT_TRUE(simulator.ready);
    const std::string request =
        std::string("Request: RECVSMSTOOLDATAGRAM\nFrom: 1\nMsg: h") + '\0' + "i\n\n";
    EXPECT_EQ(ask_daemon(simulator.home.path, "smstoolgateway", request),
              "Response Status: SMST-802\n");
}

TEST(GatewayReading, AnswersAHalfRequestWhenTheClientSaysNoMore) {
    Simulator simulator;
    ASSERT_TRUE(simulator.ready);
    const int descriptor = connect_daemon(simulator.home.path, "bentelgateway");
    ASSERT_GE(descriptor, 0);
    ASSERT_TRUE(send_bytes(descriptor, "Request: SENDBENTELCOMMANDDATAGRAM\nSectionName: a\n"));
    shutdown(descriptor, SHUT_WR);
    EXPECT_EQ(read_all(descriptor), "Response Status: BENG-1302\n");
}

TEST(GatewayReading, RefusesEndlessRequests) {
    Simulator simulator;
    ASSERT_TRUE(simulator.ready);
    const std::string endless = "Request: X\nSectionName: " + std::string(200000, 'a');
    EXPECT_EQ(ask_daemon(simulator.home.path, "eibgateway", endless),
              "Response Status: EIBG-104\n");
}

TEST(GatewayReading, GivesUpOnClientsThatDoNotFinish) {
    Simulator simulator({"--patience", "500"});
    ASSERT_TRUE(simulator.ready);
    EXPECT_EQ(ask_daemon(simulator.home.path, "eibgateway", "Request: "),
              "Response Status: EIBG-102\n");
    EXPECT_TRUE(wait_for_output(simulator.program, "took too long")) << simulator.program.out;
}

} // namespace
