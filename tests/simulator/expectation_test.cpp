// Lists of expected requests: what is compared, how it is told, and what a list may hold.
#include "tests/simulator/daemon_rows.h"
#include "tests/simulator/simulator_process.h"
#include "tests/simulator/soap_client.h"

#include <csignal>
#include <fstream>
#include <gtest/gtest.h>
#include <sys/socket.h>

namespace {

const std::string RECEIVE = "SMSTOOL: RECVSMSTOOLDATAGRAM 1|hi";
const std::string SEND = "SMSTOOL: SENDSMSTOOLDATAGRAM gsm|2|ho";
const std::string DONE = " -> SMST-000";
const std::string RECEIVED = RECEIVE + DONE + "\n";
const std::string SENT = SEND + DONE + "\n";
const std::string ANSWER = "SMSTOOL -> \"Response Status: SMST-000\\n\"\n";

struct ExpectCase {
    const char *name;
    std::string list;
    std::string asked; ///< r: the RECEIVE request, s: the SEND request
    int status;
    std::string comparison; ///< printed before "stopped"
    std::string complaint;  ///< after "not the requests of FILE: "
};

const ExpectCase IN_ORDER[] = {
    {"Same", RECEIVED + SENT, "rs", 0, "", ""},
    {"Nothing", "", "", 0, "", ""},
    {"AnyAnswer", RECEIVE + "\n" + SENT, "rs", 0, "", ""},
    {"BytesOfTheAnswer", RECEIVED + ANSWER + SENT, "rs", 0, "", ""},
    {"BytesWithoutOutcome", RECEIVE + "\n" + ANSWER, "r", 0, "", ""},
    {"CommentsAndEmptyLines", "# first\n\n" + RECEIVED + "\n# second\n" + SENT, "rs", 0, "", ""},
    {"LastLineWithoutEnd", RECEIVE + DONE, "r", 0, "", ""},
    {"WholeLog",
     "EIB listens on /tmp/x\nSOAP refuses on http://x\nready\nSMSTOOL <- \"x\"\n" + RECEIVED +
         ANSWER +
         "SMSTOOL: no request, the client closed before the end of its request\n"
         "SMSTOOL: the client did not take its answer\nstopped\n",
     "r", 0, "", ""},
    {"Missing", RECEIVED + SENT, "r", 3, " " + RECEIVED + "-" + SENT,
     "1 missing, 0 unexpected, 0 answered differently"},
    {"Unexpected", RECEIVED, "rs", 3, " " + RECEIVED + "+" + SENT,
     "0 missing, 1 unexpected, 0 answered differently"},
    {"MissingInTheMiddle", RECEIVED + SENT + RECEIVED, "rr", 3,
     " " + RECEIVED + "-" + SENT + " " + RECEIVED,
     "1 missing, 0 unexpected, 0 answered differently"},
    {"OnceTooOften", RECEIVED, "rr", 3, " " + RECEIVED + "+" + RECEIVED,
     "0 missing, 1 unexpected, 0 answered differently"},
    {"OtherOutcome", RECEIVE + " -> SMST-801\n" + SENT, "rs", 3,
     "-" + RECEIVE + " -> SMST-801\n+" + RECEIVED + " " + SENT,
     "0 missing, 0 unexpected, 1 answered differently"},
    {"OtherBytes", RECEIVED + "SMSTOOL -> \"x\"\n", "r", 3,
     "-" + RECEIVED + "-SMSTOOL -> \"x\"\n+" + RECEIVED + "+" + ANSWER,
     "0 missing, 0 unexpected, 1 answered differently"},
    {"OtherOrder", SENT + RECEIVED, "rs", 3, "-" + SENT + " " + RECEIVED + "+" + SENT,
     "1 missing, 1 unexpected, 0 answered differently"},
    {"NothingCame", RECEIVED, "", 3, "-" + RECEIVED,
     "1 missing, 0 unexpected, 0 answered differently"},
};

const ExpectCase IN_ANY_ORDER[] = {
    {"OtherOrder", SENT + RECEIVED, "rs", 0, "", ""},
    {"ARowWithoutAnswerLeavesTheOthers", RECEIVE + "\n" + RECEIVED + RECEIVED + ANSWER, "rrr", 0,
     "", ""},
    {"TooFew", RECEIVED + SENT + RECEIVED, "sr", 3, " " + RECEIVED + " " + SENT + "-" + RECEIVED,
     "1 missing, 0 unexpected, 0 answered differently"},
    {"TooMany", RECEIVED, "sr", 3, "+" + SENT + " " + RECEIVED,
     "0 missing, 1 unexpected, 0 answered differently"},
};

void ask(const Simulator &simulator, const std::string &asked) {
    for (const char letter : asked) {
        const std::string request =
            letter == 'r' ? "Request: RECVSMSTOOLDATAGRAM\nFrom: 1\nMsg: hi\n\n"
                          : "Request: SENDSMSTOOLDATAGRAM\nSectionName: gsm\nTo: 2\nMsg: ho\n\n";
        ASSERT_EQ(ask_daemon(simulator.home.path, "smstoolgateway", request),
                  "Response Status: SMST-000\n");
    }
}

void check(const ExpectCase &row, const std::vector<std::string> &more) {
    const FreshDirectory directory;
    const std::string path = directory.path + "/list";
    std::ofstream(path) << row.list;
    std::vector<std::string> options{"--expect", path};
    options.insert(options.end(), more.begin(), more.end());
    Simulator simulator(options);
    ASSERT_TRUE(simulator.ready) << simulator.program.errors;
    ask(simulator, row.asked);
    EXPECT_EQ(end_program(simulator.program, SIGTERM), row.status) << simulator.program.errors;
    const std::string &out = simulator.program.out;
    const std::string last = row.asked.empty()         ? "ready\n"
                             : row.asked.back() == 'r' ? "\n" + RECEIVED
                                                       : "\n" + SENT;
    EXPECT_TRUE(out.ends_with(last + row.comparison + "stopped\n")) << out;
    EXPECT_EQ(simulator.program.errors,
              row.complaint.empty()
                  ? ""
                  : "lumosim: not the requests of " + path + ": " + row.complaint + "\n");
}

std::string row_name(const testing::TestParamInfo<ExpectCase> &row) {
    return row.param.name;
}

class Expected : public testing::TestWithParam<ExpectCase> {};
TEST_P(Expected, IsCompared) {
    check(GetParam(), {});
}
INSTANTIATE_TEST_SUITE_P(Rows, Expected, testing::ValuesIn(IN_ORDER), row_name);

class ExpectedInAnyOrder : public testing::TestWithParam<ExpectCase> {};
TEST_P(ExpectedInAnyOrder, IsCompared) {
    check(GetParam(), {"--any-order"});
}
INSTANTIATE_TEST_SUITE_P(Rows, ExpectedInAnyOrder, testing::ValuesIn(IN_ANY_ORDER), row_name);

struct WrongList {
    std::string text;
    std::string complaint;
};

const WrongList WRONG_LISTS[] = {
    {"EBI: SENDEIBUSSETDATAGRAM\n", " line 1: 'EBI: SENDEIBUSSETDATAGRAM' is no line of the log"},
    {"\nEIB -> \"x\"\n", " line 2: an answer without a request before it"},
    {"EIB: x\nSMSTOOL -> \"x\"\n", " line 2: an answer without a request before it"},
    {"EIB: x\nEIB -> x\n", " line 2: the bytes of an answer stand between double quotes"},
    {"EIB: x\nEIB -> \"\\q\"\n", " line 2: the bytes hold an unknown escape"},
};

TEST(WrongLists, AreExplained) {
    for (const char *option : {"--expect", "--replay"}) {
        for (const WrongList &row : WRONG_LISTS) {
            const FreshDirectory directory;
            const std::string path = directory.path + "/list";
            std::ofstream(path) << row.text;
            Program program(usual_options(directory.path, {option, path}));
            EXPECT_EQ(end_program(program, 0), 1) << row.text;
            EXPECT_EQ(program.errors, "lumosim: " + path + row.complaint + "\n");
            EXPECT_EQ(program.out, "");
        }
    }
}

TEST(WrongLists, CannotBeRead) {
    Program program({"--port", "0", "--expect", "/nowhere/at/all"});
    EXPECT_EQ(end_program(program, 0), 1);
    EXPECT_EQ(program.errors, "lumosim: cannot read /nowhere/at/all\n");
}

TEST(Expected, HoldsTheRequestsOfTheService) {
    const FreshDirectory directory;
    const std::string path = directory.path + "/list";
    std::ofstream(path) << "SOAP: service-login demo|demo|(absent) -> LMWS-000 (session "
                           "DEMO-SESSION)\nSOAP: service-test 5\n";
    Simulator simulator({"--expect", path});
    ASSERT_TRUE(simulator.ready) << simulator.program.errors;
    call_service(simulator.port, "service-login", "<user>demo</user><pass>demo</pass>");
    call_service(simulator.port, "service-test", "<waittime>5</waittime>");
    EXPECT_EQ(end_program(simulator.program, SIGTERM), 0) << simulator.program.out;
}

struct SequenceCase {
    const char *statuses;
    std::vector<unsigned> answered;
};

const SequenceCase SEQUENCES[] = {
    {"107,0", {107, 0, 0}},
    {"107", {107, 107}},
    {"107,105,0", {107, 105, 0, 0}},
    {"0,107", {0, 107, 107}},
};

TEST(Sequences, AreAnsweredInTurnByEveryDaemon) {
    for (const SequenceCase &row : SEQUENCES) {
        std::vector<std::string> options{"--answer", std::string("soap=") + row.statuses};
        for (const DaemonRow &daemon : socket_daemons()) {
            options.insert(options.end(),
                           {"--answer", std::string(daemon.key) + "=" + row.statuses});
        }
        Simulator simulator(options);
        ASSERT_TRUE(simulator.ready) << simulator.program.errors;
        for (const unsigned status : row.answered) {
            for (const DaemonRow &daemon : socket_daemons()) {
                EXPECT_EQ(ask_daemon(simulator.home.path, std::string(daemon.socket),
                                     proper_request(daemon)),
                          status_answer(daemon, status))
                    << row.statuses;
            }
            EXPECT_EQ(
                call_service(simulator.port, "service-test", ""),
                wrap_response("service-test",
                              "<result>" + status_text(daemon_row("soap"), status) + "</result>"));
        }
    }
}

TEST(Sequences, AConnectionWithoutARequestTakesNone) {
    Simulator simulator({"--answer", "eib=107,0"});
    ASSERT_TRUE(simulator.ready);
    const int silent = connect_daemon(simulator.home.path, "eibgateway");
    ASSERT_EQ(shutdown(silent, SHUT_WR), 0);
    EXPECT_EQ(read_all(silent), "");
    EXPECT_EQ(ask_daemon(simulator.home.path, "eibgateway", proper_request(daemon_row("eib"))),
              "Response Status: EIBG-107\n");
}

} // namespace
