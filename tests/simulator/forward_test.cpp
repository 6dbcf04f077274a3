// Standing between a client and a real controller: the house here is a second simulator, or a
// daemon of the test's own.
#include "tests/harness/peer.h"
#include "tests/protocol/daemons.h"
#include "tests/simulator/simulator_process.h"

#include <csignal>
#include <gtest/gtest.h>

namespace {

using namespace harness;
using namespace protocol;

const std::string LAMP = children("sessionid=DEMO-SESSION|idobject=LIVING-LAMP");

/// Asks each daemon, and the service for what the house alone answers; what was answered.
words ask_all(const running_simulator &desk) {
    words answers;
    for (const daemon_row &daemon : daemons()) {
        if (daemon.gateway != nullptr) {
            const function_row &function = daemon.gateway->functions[0];
            answers.push_back(desk.ask(daemon.socket, sample_request(function, function.name)));
        }
    }
    answers.push_back(desk.ask(CORE_SOCKET, CORE_REQUEST));
    answers.push_back(std::to_string(desk.post("no envelope").status));
    answers.push_back(desk.call("getelementstatus", LAMP));
    return answers;
}

TEST(Forwarding, AnswersWhatTheHouseAnswersAndCanBeReplayed) {
    const temporary_directory directory;
    const std::string list = directory.path + "/list";
    write_file(directory.path + "/state",
               R"({"elements": {"LIVING-LAMP": {"status": "ON", "value": "42"}}})");
    running_simulator house({"--state", directory.path + "/state", "--answer", "fsmcore=144"});
    const words answers = ask_all(house);
    EXPECT_EQ(answers.front(), "Response Status: " + status_text(daemons()[1], 0) + "\n");
    EXPECT_EQ(*(answers.end() - 3), "Response Status: FSMC-144\nParameter Count: 0\n");
    EXPECT_EQ(answers.back(), wrap_response("getelementstatus",
                                            children("result=LMWS-000|status=ON|currentvalue=42")));
    running_simulator desk(
        {"--forward-sockets", house.home.path, "--forward-url", house.origin, "--record", list});
    EXPECT_EQ(ask_all(desk), answers);
    const std::string log = desk.end();
    EXPECT_NE(log, "");
    EXPECT_EQ(house.end(), log + log);
    running_simulator replayed({"--replay", list, "--expect", list});
    EXPECT_EQ(ask_all(replayed), answers);
    EXPECT_EQ(replayed.end(), log);
}

TEST(Forwarding, LeavesOutDaemonsThatAreToldWhatToAnswer) {
    running_simulator house;
    running_simulator desk({"--forward-sockets", house.home.path, "--forward-url", house.origin,
                            "--answer", "fsmcore=107", "--close", "soap"});
    EXPECT_EQ(desk.ask(CORE_SOCKET, CORE_REQUEST),
              "Response Status: FSMC-107\nParameter Count: 0\n");
    EXPECT_EQ(desk.call("test", ""), "");
    const daemon_row sample = daemons()[1];
    EXPECT_EQ(desk.ask(sample.socket, "Request: X\n\n"),
              "Response Status: " + status_text(sample, sample.base + 1) + "\n");
    EXPECT_EQ(house.end(), sample.name + ": X -> " + status_text(sample, sample.base + 1) +
                               " (unknown request name)\n");
}

TEST(Forwarding, UsesThePathOfTheAddress) {
    running_simulator house;
    for (const auto &[path, status] :
         {std::pair("/cgi-bin/lumows", 200), std::pair("/elsewhere", 404)}) {
        running_simulator desk({"--forward-url", house.origin + path});
        EXPECT_EQ(desk.post(wrap_request("<ns:service-test/>")).status, status);
    }
}

TEST(Forwarding, ClosesWhenTheHouseIsAway) {
    const temporary_directory nowhere;
    running_simulator closed({"--refuse", "soap"});
    running_simulator desk({"--forward-sockets", nowhere.path, "--forward-url", closed.origin});
    EXPECT_EQ(desk.ask(CORE_SOCKET, CORE_REQUEST), "");
    EXPECT_EQ(desk.call("test", ""), "");
    EXPECT_EQ(desk.end(), "FSMCORE: f -> closed without an answer (" + nowhere.path + "/" +
                              CORE_SOCKET +
                              ": No such file or directory)\n"
                              "SOAP: service-test (absent) -> closed without an answer (" +
                              closed.origin + ": Connection refused)\n");
}

TEST(Forwarding, DoesNotNeedTheHouseToClose) {
    const temporary_directory house;
    peer core(house.path + "/" + CORE_SOCKET,
              {collect_until("\n\n"), reply("Response Status: FSMC-0199\nand more"), await_end()});
    running_simulator desk({"--forward-sockets", house.path});
    EXPECT_EQ(desk.ask(CORE_SOCKET, CORE_REQUEST), "Response Status: FSMC-0199\nand more");
    EXPECT_EQ(desk.end(), "FSMCORE: f -> FSMC-0199\n");
    core.finish();
    EXPECT_EQ(core.received(), CORE_REQUEST);
}

TEST(Forwarding, WaitsForTheHouseUntilThePatienceOrTheSimulatorEnds) {
    for (const char *patience : {"300", "3600000"}) {
        const temporary_directory house;
        peer core(house.path + "/" + CORE_SOCKET, {collect_until("\n\n"), await_end()});
        running_simulator desk({"--forward-sockets", house.path, "--patience", patience});
        const int client = connect_socket(desk.home.path + "/" + CORE_SOCKET);
        ASSERT_TRUE(send_bytes(client, CORE_REQUEST));
        ASSERT_TRUE(core.wait_for_await());
        if (patience == std::string("300")) {
            EXPECT_TRUE(desk.program.wait_for_output("\nFSMCORE: f -> closed without an answer (" +
                                                     house.path + "/" + CORE_SOCKET +
                                                     ": the answer did not come to its end)\n"));
        }
        desk.end();
        EXPECT_EQ(read_all(client), "");
    }
}

} // namespace
