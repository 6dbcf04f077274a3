// State files and the log for machines.
#include "tests/simulator/daemon_rows.h"
#include "tests/simulator/simulator_process.h"
#include "tests/simulator/soap_client.h"

#include <csignal>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <sstream>

namespace {

using Json = nlohmann::json;

const char *const HOUSE = R"({
    "elements": {"HALL-LAMP": {"status": "ON", "value": "70"}},
    "sessions": {"MINE": "demo"},
    "neighbours": {"N1": {"name": "next", "address": "10.0.0.2", "port": "80", "optionals": ""}},
    "schedules": [{"object": "K", "mode": "heat", "type": "day", "schedule": "8-22"}],
    "messages": ["HALL-LAMP ON 70"],
    "configuration": "<é>"
})";

/// What a simulator that started from this text leaves after the requests.
struct Visit {
    explicit Visit(const std::string &text, const std::vector<std::string> &more = {}) {
        std::ofstream(directory.path + "/state") << text;
        std::vector<std::string> options{"--state", directory.path + "/state", "--state-out",
                                         directory.path + "/out"};
        options.insert(options.end(), more.begin(), more.end());
        simulator.emplace(options);
    }

    Json end() {
        EXPECT_EQ(end_program(simulator->program, SIGTERM), 0) << simulator->program.errors;
        return Json::parse(read_file(directory.path + "/out"), nullptr, false);
    }

    FreshDirectory directory;
    std::optional<Simulator> simulator;
};

TEST(State, ComesOutAsItWentIn) {
    Visit visit(HOUSE);
    ASSERT_TRUE(visit.simulator->ready) << visit.simulator->program.errors;
    EXPECT_EQ(visit.end(), Json::parse(HOUSE));
    EXPECT_FALSE(std::filesystem::exists(visit.directory.path + "/out.new"));
}

TEST(State, WithoutAFileIsTheUsualOne) {
    Visit visit("{}");
    ASSERT_TRUE(visit.simulator->ready) << visit.simulator->program.errors;
    EXPECT_EQ(visit.end(), Json::parse(R"({
        "elements": {"KITCHEN-THERMOSTAT": {"status": "ON", "value": "21.5"},
                     "LIVING-LAMP": {"status": "OFF", "value": "0"}},
        "sessions": {"DEMO-SESSION": "demo"},
        "neighbours": {}, "schedules": [], "messages": [], "configuration": ""})"));
}

/// A request, what it answers in the house above, and the part of the state that it leaves.
struct RequestCase {
    const char *name;
    std::string operation;
    std::string children;
    std::string response;
    const char *part;
    const char *left;
};

const RequestCase REQUESTS[] = {
    {"Element", "service-getelementstatus",
     "<sessionid>MINE</sessionid><idobject>HALL-LAMP</idobject>",
     "<result>LMWS-000</result><status>ON</status><currentvalue>70</currentvalue>", "elements",
     R"({"HALL-LAMP": {"status": "ON", "value": "70"}})"},
    {"ElementGone", "service-getelementstatus",
     "<sessionid>MINE</sessionid><idobject>LIVING-LAMP</idobject>",
     "<result>LMWS-404</result><status></status><currentvalue></currentvalue>", "elements",
     R"({"HALL-LAMP": {"status": "ON", "value": "70"}})"},
    {"ElementRun", "service-runonelement",
     "<sessionid>MINE</sessionid><idobject>HALL-LAMP</idobject><operation>OFF</operation>"
     "<payload>0</payload>",
     "<result>LMWS-000</result>", "messages", R"(["HALL-LAMP ON 70", "HALL-LAMP OFF 0"])"},
    {"SessionGone", "service-installcrontab",
     "<sessionid>DEMO-SESSION</sessionid><newcrontabfile>x</newcrontabfile>",
     "<result>LMWS-403</result>", "sessions", R"({"MINE": "demo"})"},
    {"SessionOpened", "service-login", "<user>admin</user><pass>admin</pass>",
     "<result>LMWS-000</result>", "sessions", R"({"ADMIN-SESSION": "admin", "MINE": "demo"})"},
    {"Neighbour", "service-search4neighbours", "",
     "<result>LMWS-000</result><neighbourlist>N1,next,10.0.0.2,80,</neighbourlist>", "neighbours",
     R"({"N1": {"name": "next", "address": "10.0.0.2", "port": "80", "optionals": ""}})"},
    {"NeighbourGone", "service-detach2neighbour", "<neighbouruid>N1</neighbouruid>",
     "<result>LMWS-000</result>", "neighbours", "{}"},
    {"Schedule", "service-keltoclimateeventgettimeschedule",
     "<sessionid>MINE</sessionid><idobject>K</idobject><mode>heat</mode><type>day</type>",
     "<result>LMWS-000</result><schedule>8-22</schedule>", "schedules",
     R"([{"object": "K", "mode": "heat", "type": "day", "schedule": "8-22"}])"},
    {"Upload", "service-uploadlumolfile", "<sessionid>MINE</sessionid><lumolfile>new</lumolfile>",
     "<result>LMWS-000</result>", "configuration", R"("new")"},
};

class StateRequest : public testing::TestWithParam<RequestCase> {};
TEST_P(StateRequest, SeesAndChangesTheState) {
    const RequestCase &row = GetParam();
    Visit visit(HOUSE);
    ASSERT_TRUE(visit.simulator->ready) << visit.simulator->program.errors;
    EXPECT_EQ(call_service(visit.simulator->port, row.operation, row.children),
              wrap_response(row.operation, row.response));
    EXPECT_EQ(visit.end()[row.part], Json::parse(row.left));
}
INSTANTIATE_TEST_SUITE_P(Rows, StateRequest, testing::ValuesIn(REQUESTS),
                         [](const auto &row) { return std::string(row.param.name); });

struct WrongState {
    const char *text;
    const char *complaint;
};

const WrongState WRONG_STATES[] = {
    {"", "parse error"},
    {"{\"elements\": {}", "parse error"},
    {"[]", "is no object"},
    {R"({"element": {}})", "unknown part 'element'"},
    {R"({"elements": []})", "'elements': is no object"},
    {R"({"elements": {"A": "ON"}})", "'elements': a record is no object"},
    {R"({"elements": {"A": {"state": "ON"}}})", "'elements': unknown field 'state'"},
    {R"({"elements": {"A": {"value": 7}}})", "'elements': "},
    {R"({"sessions": {"A": 1}})", "'sessions': "},
    {R"({"schedules": [1]})", "'schedules': a record is no object"},
    {R"({"messages": "x"})", "'messages': "},
};

TEST(WrongStates, AreExplained) {
    for (const WrongState &row : WRONG_STATES) {
        const FreshDirectory directory;
        const std::string path = directory.path + "/state";
        std::ofstream(path) << row.text;
        Program program(usual_options(directory.path, {"--state", path}));
        EXPECT_EQ(end_program(program, 0), 1) << row.text;
        EXPECT_TRUE(program.errors.starts_with("lumosim: " + path + ": ")) << program.errors;
        EXPECT_NE(program.errors.find(row.complaint), std::string::npos) << row.text << "\n"
                                                                         << program.errors;
    }
}

TEST(State, IsPrintedAfterTheLastLine) {
    Simulator simulator({"--state-out", "-"});
    ASSERT_TRUE(simulator.ready);
    EXPECT_EQ(end_program(simulator.program, SIGTERM), 0);
    const std::string &out = simulator.program.out;
    const std::string end = "\nstopped\n";
    const std::size_t at = out.find(end);
    ASSERT_NE(at, std::string::npos) << out;
    const Json state = Json::parse(out.substr(at + end.size()), nullptr, false);
    ASSERT_TRUE(state.is_object()) << out;
    EXPECT_EQ(state["elements"]["LIVING-LAMP"]["status"], "OFF");
}

TEST(State, ThatCannotBeWrittenIsTold) {
    Simulator simulator({"--state-out", "/nowhere/at/all"});
    ASSERT_TRUE(simulator.ready);
    EXPECT_EQ(end_program(simulator.program, SIGTERM), 1);
    EXPECT_EQ(simulator.program.errors, "lumosim: cannot write /nowhere/at/all\n");
}

TEST(LogForMachines, HoldsAnObjectPerLine) {
    const FreshDirectory directory;
    std::ofstream(directory.path + "/list") << "EIB: x\n";
    Program program(usual_options(
        directory.path, {"--log-format", "json", "--raw", "--expect", directory.path + "/list"}));
    ASSERT_TRUE(wait_for_output(program, "\"event\":\"ready\"}\n")) << program.errors;
    const std::string request = "Request: RECVSMSTOOLDATAGRAM\nFrom: 1\nMsg: \"\xC3\xA9\"\n\n";
    ask_daemon(directory.path, "smstoolgateway", request);
    EXPECT_EQ(end_program(program, SIGTERM), 3) << program.errors;

    std::vector<Json> expected;
    for (const DaemonRow &daemon : socket_daemons()) {
        expected.push_back(
            {{"event", "listens"},
             {"daemon", daemon.key},
             {"place", directory.path + "/lumo_" + std::string(daemon.socket) + ".socket"}});
    }
    expected.push_back({{"event", "listens"}, {"daemon", "soap"}});
    expected.push_back({{"event", "ready"}});
    expected.push_back({{"event", "bytes"},
                        {"daemon", "smstool"},
                        {"direction", "<-"},
                        {"bytes", "Request: RECVSMSTOOLDATAGRAM\nFrom: 1\n"
                                  "Msg: \"\xC3\x83\xC2\xA9\"\n\n"}});
    expected.push_back({{"event", "request"},
                        {"daemon", "smstool"},
                        {"request", "RECVSMSTOOLDATAGRAM 1|\"\xC3\xA9\""},
                        {"outcome", "SMST-000"}});
    expected.push_back({{"event", "bytes"},
                        {"daemon", "smstool"},
                        {"direction", "->"},
                        {"bytes", "Response Status: SMST-000\n"}});
    expected.push_back({{"event", "comparison"}, {"side", "missing"}, {"line", "EIB: x"}});
    expected.push_back({{"event", "comparison"},
                        {"side", "unexpected"},
                        {"line", "SMSTOOL: RECVSMSTOOLDATAGRAM 1|\"\xC3\xA9\" -> SMST-000"}});
    expected.push_back({{"event", "stopped"}});

    std::istringstream lines(program.out);
    std::vector<Json> printed;
    for (std::string line; std::getline(lines, line);) {
        Json object = Json::parse(line, nullptr, false);
        ASSERT_TRUE(object.is_object()) << line;
        const std::string time = object["time"];
        EXPECT_EQ(time.size(), std::string("2026-11-21T08:15:00.250Z").size()) << time;
        object.erase("time");
        if (object["event"] == "listens" && object["daemon"] == "soap") {
            object.erase("place"); // the port is the system's choice
        }
        printed.push_back(object);
    }
    EXPECT_EQ(printed, expected);
}

} // namespace
