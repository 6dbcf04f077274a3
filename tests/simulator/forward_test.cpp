// Recording, replaying, and standing between a client and a real controller: the house here is a
// second simulator, or a socket of the test's own.
#include "tests/simulator/daemon_rows.h"
#include "tests/simulator/simulator_process.h"
#include "tests/simulator/soap_client.h"

#include <chrono>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace {

const std::string RECEIVE = "Request: RECVSMSTOOLDATAGRAM\nFrom: 1\nMsg: hi\n\n";
const std::string CORE_REQUEST =
    "Request: f\nParameter Count: 1\nParam000 Length: 2\nParam000:\na\n\nWaittime: 5\n\n";
const std::string CORE_ANSWER =
    "Response Status: FSMC-000\nParameter Count: 1\nParam000 Length: 2\nParam000:\na\n\n";
const std::string LAMP = "<sessionid>DEMO-SESSION</sessionid><idobject>LIVING-LAMP</idobject>";
const std::string LAMP_CALL = "service-getelementstatus";
const std::string LAMP_AT_42 =
    "<result>LMWS-000</result><status>ON</status><currentvalue>42</currentvalue>";

/// A house whose lamp and answers are not the usual ones.
struct House {
    explicit House(const std::vector<std::string> &more = {}) {
        std::ofstream(directory.path + "/state")
            << R"({"elements": {"LIVING-LAMP": {"status": "ON", "value": "42"}}})";
        std::vector<std::string> options{"--state", directory.path + "/state", "--answer",
                                         "eib=144"};
        options.insert(options.end(), more.begin(), more.end());
        simulator.emplace(options);
    }

    /// The options of a simulator that asks this house.
    std::vector<std::string> forwarding(const std::vector<std::string> &more = {}) const {
        std::vector<std::string> options{"--forward-sockets", simulator->home.path, "--forward-url",
                                         "http://127.0.0.1:" + std::to_string(simulator->port)};
        options.insert(options.end(), more.begin(), more.end());
        return options;
    }

    FreshDirectory directory;
    std::optional<Simulator> simulator;
};

/// Asks what the house answers in its own way.
void expect_answers_of_the_house(const Simulator &desk) {
    EXPECT_EQ(ask_daemon(desk.home.path, "eibgateway", proper_request(daemon_row("eib"))),
              "Response Status: EIBG-144\n");
    EXPECT_EQ(ask_daemon(desk.home.path, "fsmcore", CORE_REQUEST), CORE_ANSWER);
    EXPECT_EQ(call_service(desk.port, LAMP_CALL, LAMP), wrap_response(LAMP_CALL, LAMP_AT_42));
    EXPECT_EQ(post_message(desk.port, "no envelope").status, 500);
}

const std::string HOUSE_LINES[] = {
    "EIB: SENDEIBUSSETDATAGRAM living|1/1/3|1|1 -> EIBG-144\n",
    "FSMCORE: f a\\n -> FSMC-000\n",
    "SOAP: service-getelementstatus DEMO-SESSION|LIVING-LAMP|(absent)|(absent) -> LMWS-000\n",
};

TEST(Forwarding, AnswersWhatTheHouseAnswers) {
    House house;
    ASSERT_TRUE(house.simulator->ready) << house.simulator->program.errors;
    Simulator desk(house.forwarding());
    ASSERT_TRUE(desk.ready) << desk.program.errors;
    expect_answers_of_the_house(desk);
    for (const std::string &line : HOUSE_LINES) {
        EXPECT_TRUE(wait_for_output(desk.program, line)) << line << desk.program.out;
        EXPECT_TRUE(wait_for_output(house.simulator->program, line)) << line;
    }
}

TEST(Forwarding, AsksEveryDaemon) {
    House house;
    ASSERT_TRUE(house.simulator->ready);
    Simulator desk(house.forwarding());
    ASSERT_TRUE(desk.ready);
    for (const DaemonRow &row : socket_daemons()) {
        EXPECT_EQ(ask_daemon(desk.home.path, std::string(row.socket), proper_request(row)),
                  status_answer(row, row.key == "eib" ? 144 : 0));
        EXPECT_TRUE(wait_for_output(house.simulator->program, std::string(row.label) + ": "))
            << row.key;
    }
}

TEST(Forwarding, LeavesOutDaemonsThatAreToldWhatToAnswer) {
    House house;
    ASSERT_TRUE(house.simulator->ready);
    Simulator desk(house.forwarding({"--answer", "eib=107", "--close", "tutondo"}));
    ASSERT_TRUE(desk.ready) << desk.program.errors;
    EXPECT_EQ(ask_daemon(desk.home.path, "eibgateway", proper_request(daemon_row("eib"))),
              "Response Status: EIBG-107\n");
    EXPECT_EQ(ask_daemon(desk.home.path, "tutondogateway", proper_request(daemon_row("tutondo"))),
              "");
    EXPECT_EQ(ask_daemon(desk.home.path, "smstoolgateway", RECEIVE), "Response Status: SMST-000\n");
    EXPECT_EQ(end_program(house.simulator->program, SIGTERM), 0);
    const std::string &out = house.simulator->program.out;
    EXPECT_EQ(out.find("EIB: "), std::string::npos) << out;
    EXPECT_EQ(out.find("TUTONDO: "), std::string::npos) << out;
    EXPECT_NE(out.find("SMSTOOL: "), std::string::npos) << out;
}

TEST(Forwarding, UsesThePathOfTheAddress) {
    House house;
    ASSERT_TRUE(house.simulator->ready);
    const std::string origin = "http://127.0.0.1:" + std::to_string(house.simulator->port);
    for (const auto &[path, status] :
         {std::pair("/cgi-bin/lumows", 200), std::pair("/elsewhere", 404)}) {
        Simulator desk({"--forward-url", origin + path});
        ASSERT_TRUE(desk.ready);
        EXPECT_EQ(
            post_message(desk.port, wrap_request("<ns:service-test></ns:service-test>")).status,
            status);
    }
}

TEST(Forwarding, ClosesWhenTheHouseIsAway) {
    const FreshDirectory nowhere;
    const DaemonRow &eib = daemon_row("eib");
    Simulator closed({"--refuse", "soap"});
    ASSERT_TRUE(closed.ready);
    const std::string url = "http://127.0.0.1:" + std::to_string(closed.port);
    Simulator desk({"--forward-sockets", nowhere.path, "--forward-url", url});
    ASSERT_TRUE(desk.ready);
    EXPECT_EQ(ask_daemon(desk.home.path, "eibgateway", proper_request(eib)), "");
    EXPECT_TRUE(wait_for_output(desk.program, " -> closed without an answer (" + nowhere.path +
                                                  "/lumo_eibgateway.socket: No such file or "
                                                  "directory)\n"))
        << desk.program.out;
    EXPECT_EQ(post_message(desk.port, wrap_request("<ns:service-test></ns:service-test>")).status,
              0);
    EXPECT_TRUE(wait_for_output(desk.program,
                                " -> closed without an answer (" + url + ": Connection refused)\n"))
        << desk.program.out;
}

/// A socket where the test itself is the EIB gateway of the house.
struct OwnGateway {
    OwnGateway() {
        const std::string path = directory.path + "/lumo_eibgateway.socket";
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        std::memcpy(static_cast<char *>(address.sun_path), path.c_str(), path.size());
        listener = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
        EXPECT_EQ(bind(listener, reinterpret_cast<sockaddr *>(&address), sizeof address), 0);
        EXPECT_EQ(listen(listener, 1), 0);
    }

    ~OwnGateway() {
        close(listener);
    }

    OwnGateway(const OwnGateway &) = delete;
    OwnGateway &operator=(const OwnGateway &) = delete;

    int accept_one() const {
        pollfd watched{listener, POLLIN, 0};
        return poll(&watched, 1, PATIENCE_MS) > 0 ? accept(listener, nullptr, nullptr) : -1;
    }

    FreshDirectory directory;
    int listener = -1;
};

TEST(Forwarding, DoesNotNeedTheHouseToClose) {
    const OwnGateway gateway;
    Simulator desk({"--forward-sockets", gateway.directory.path});
    ASSERT_TRUE(desk.ready);
    const int client = connect_daemon(desk.home.path, "eibgateway");
    ASSERT_TRUE(send_bytes(client, proper_request(daemon_row("eib"))));
    const int asked = gateway.accept_one();
    ASSERT_GE(asked, 0);
    ASSERT_TRUE(send_bytes(asked, "Response Status: EIBG-0199\nand more"));
    EXPECT_EQ(read_all(client), "Response Status: EIBG-0199\nand more");
    close(asked);
    EXPECT_TRUE(wait_for_output(desk.program, " -> EIBG-0199\n")) << desk.program.out;
}

TEST(Forwarding, WaitsNoLongerThanThePatience) {
    const OwnGateway gateway;
    Simulator desk({"--forward-sockets", gateway.directory.path, "--patience", "300"});
    ASSERT_TRUE(desk.ready);
    EXPECT_EQ(ask_daemon(desk.home.path, "eibgateway", proper_request(daemon_row("eib"))), "");
    EXPECT_TRUE(wait_for_output(desk.program, "socket: the answer did not come to its end)\n"))
        << desk.program.out;
}

TEST(Forwarding, EndsWithTheSimulator) {
    const OwnGateway gateway;
    Simulator desk({"--forward-sockets", gateway.directory.path, "--patience", "3600000"});
    ASSERT_TRUE(desk.ready);
    const int client = connect_daemon(desk.home.path, "eibgateway");
    ASSERT_TRUE(send_bytes(client, proper_request(daemon_row("eib"))));
    const int asked = gateway.accept_one();
    ASSERT_GE(asked, 0);
    EXPECT_EQ(end_program(desk.program, SIGTERM), 0);
    EXPECT_EQ(read_all(client), "");
    close(asked);
}

TEST(Recording, HoldsEachRequestWithItsAnswer) {
    const FreshDirectory directory;
    const std::string path = directory.path + "/list";
    Simulator simulator({"--record", path, "--close", "eib"});
    ASSERT_TRUE(simulator.ready) << simulator.program.errors;
    ask_daemon(simulator.home.path, "smstoolgateway", RECEIVE);
    ask_daemon(simulator.home.path, "eibgateway", "Request: x\n\n");
    ask_daemon(simulator.home.path, "fsmcore", CORE_REQUEST);
    EXPECT_EQ(read_file(path), "SMSTOOL: RECVSMSTOOLDATAGRAM 1|hi -> SMST-000\n"
                               "SMSTOOL -> \"Response Status: SMST-000\\n\"\n"
                               "EIB: x -> closed without an answer\n"
                               "FSMCORE: f a\\n -> FSMC-000\n"
                               "FSMCORE -> \"Response Status: FSMC-000\\nParameter Count: 1\\n"
                               "Param000 Length: 2\\nParam000:\\na\\n\\n\"\n");
    const auto rights = std::filesystem::status(path).permissions();
    EXPECT_EQ(rights, std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
}

TEST(Recording, ThatCannotBeWrittenIsTold) {
    Program program({"--port", "0", "--record", "/nowhere/at/all"});
    EXPECT_EQ(end_program(program, 0), 1);
    EXPECT_EQ(program.errors,
              "lumosim: cannot write /nowhere/at/all; choose another with --record\n");
}

TEST(Recording, OfAHouseIsReplayedAndExpected) {
    const FreshDirectory directory;
    const std::string path = directory.path + "/house";
    {
        House house;
        ASSERT_TRUE(house.simulator->ready);
        Simulator desk(house.forwarding({"--record", path}));
        ASSERT_TRUE(desk.ready) << desk.program.errors;
        expect_answers_of_the_house(desk);
        EXPECT_EQ(end_program(desk.program, SIGTERM), 0);
    }
    Simulator replayed({"--replay", path, "--expect", path});
    ASSERT_TRUE(replayed.ready) << replayed.program.errors;
    expect_answers_of_the_house(replayed);
    EXPECT_EQ(end_program(replayed.program, SIGTERM), 0)
        << replayed.program.errors << replayed.program.out;
}

struct ReplayCase {
    const char *name;
    std::string list;
    std::vector<std::string> answers; ///< to the RECEIVE request, one after the other
    std::string line;                 ///< of the last of them
};

const std::string RECEIVE_LINE = "SMSTOOL: RECVSMSTOOLDATAGRAM 1|hi";

const ReplayCase REPLAYS[] = {
    {"Bytes", RECEIVE_LINE + " -> A\nSMSTOOL -> \"a\\n\"\n", {"a\n"}, RECEIVE_LINE + " -> A\n"},
    {"InTurn",
     RECEIVE_LINE + " -> A\nSMSTOOL -> \"a\"\n" + RECEIVE_LINE + " -> B\nSMSTOOL -> \"b\"\n",
     {"a", "b", "b"},
     RECEIVE_LINE + " -> B\n"},
    {"NoAnswer",
     RECEIVE_LINE + " -> closed without an answer\n",
     {""},
     RECEIVE_LINE + " -> closed without an answer\n"},
    {"RequestAlone",
     RECEIVE_LINE + "\nSMSTOOL -> \"abc\"\n",
     {"abc"},
     RECEIVE_LINE + " -> 3 raw bytes\n"},
    {"NotRecorded",
     "EIB: x -> EIBG-101\nEIB -> \"x\"\n",
     {"Response Status: SMST-000\n"},
     RECEIVE_LINE + " -> SMST-000 (not in the recording)\n"},
    {"WithoutBytes",
     RECEIVE_LINE + " -> SMST-000\n",
     {"Response Status: SMST-000\n"},
     RECEIVE_LINE + " -> SMST-000 (not in the recording)\n"},
    {"OtherDaemon",
     "EIB: RECVSMSTOOLDATAGRAM 1|hi -> A\nEIB -> \"a\"\n",
     {"Response Status: SMST-000\n"},
     RECEIVE_LINE + " -> SMST-000 (not in the recording)\n"},
};

class Replay : public testing::TestWithParam<ReplayCase> {};
TEST_P(Replay, Answers) {
    const ReplayCase &row = GetParam();
    const FreshDirectory directory;
    std::ofstream(directory.path + "/list") << row.list;
    Simulator simulator({"--replay", directory.path + "/list"});
    ASSERT_TRUE(simulator.ready) << simulator.program.errors;
    for (const std::string &answer : row.answers) {
        EXPECT_EQ(ask_daemon(simulator.home.path, "smstoolgateway", RECEIVE), answer);
    }
    EXPECT_TRUE(wait_for_output(simulator.program, row.line)) << simulator.program.out;
}
INSTANTIATE_TEST_SUITE_P(Rows, Replay, testing::ValuesIn(REPLAYS),
                         [](const auto &row) { return std::string(row.param.name); });

} // namespace
