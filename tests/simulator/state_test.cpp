// State files: what the house holds at the start and leaves at the end.
#include "tests/simulator/soap_client.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace {

using namespace harness;
using json = nlohmann::json;

const char *const HOUSE = R"({
    "elements": {"HALL-LAMP": {"status": "ON", "value": "70"}},
    "sessions": {"MINE": "demo"},
    "neighbours": {"N1": {"name": "next", "address": "10.0.0.2", "port": "80", "optionals": ""}},
    "schedules": [{"object": "K", "mode": "heat", "type": "day", "schedule": "8-22"}],
    "messages": ["HALL-LAMP ON 70"],
    "configuration": "<é>"
})";

/// What a simulator that starts from nothing has.
const char *const USUAL = R"({
    "elements": {"KITCHEN-THERMOSTAT": {"status": "ON", "value": "21.5"},
                 "LIVING-LAMP": {"status": "OFF", "value": "0"}},
    "sessions": {"DEMO-SESSION": "demo"},
    "neighbours": {}, "schedules": [], "messages": [], "configuration": ""})";

/// A request in the first house, what it answers, and the part of the state that it leaves.
struct state_row {
    const char *operation;
    const char *request;
    const char *response;
    const char *part;
    const char *left;
};

const state_row REQUESTS[] = {
    {"getelementstatus", "sessionid=MINE|idobject=HALL-LAMP",
     "result=LMWS-000|status=ON|currentvalue=70", "elements",
     R"({"HALL-LAMP": {"status": "ON", "value": "70"}})"},
    {"getelementstatus", "sessionid=MINE|idobject=LIVING-LAMP",
     "result=LMWS-404|status=|currentvalue=", "elements",
     R"({"HALL-LAMP": {"status": "ON", "value": "70"}})"},
    {"runonelement", "sessionid=MINE|idobject=HALL-LAMP|operation=OFF|payload=0", "result=LMWS-000",
     "messages", R"(["HALL-LAMP ON 70", "HALL-LAMP OFF 0"])"},
    {"installcrontab", "sessionid=DEMO-SESSION|newcrontabfile=x", "result=LMWS-403", "sessions",
     R"({"MINE": "demo"})"},
    {"login", "user=admin|pass=admin", "result=LMWS-000", "sessions",
     R"({"ADMIN-SESSION": "admin", "MINE": "demo"})"},
    {"search4neighbours", "", "result=LMWS-000|neighbourlist=N1,next,10.0.0.2,80,", "neighbours",
     R"({"N1": {"name": "next", "address": "10.0.0.2", "port": "80", "optionals": ""}})"},
    {"detach2neighbour", "neighbouruid=N1", "result=LMWS-000", "neighbours", "{}"},
    {"keltoclimateeventgettimeschedule", "sessionid=MINE|idobject=K|mode=heat|type=day",
     "result=LMWS-000|schedule=8-22", "schedules",
     R"([{"object": "K", "mode": "heat", "type": "day", "schedule": "8-22"}])"},
    {"uploadlumolfile", "sessionid=MINE|lumolfile=new", "result=LMWS-000", "configuration",
     R"("new")"},
};

TEST(State, GoesInAndComesOut) {
    const temporary_directory directory;
    const std::string file = directory.path + "/state";
    const words options = {"--state", file, "--state-out", file + ".out"};
    const auto left = [&] { return json::parse(read_file(file + ".out")); };
    for (const auto &[text, expected] : {std::pair(HOUSE, HOUSE), std::pair("{}", USUAL)}) {
        write_file(file, text);
        running_simulator(options).end();
        EXPECT_EQ(left(), json::parse(expected));
        EXPECT_FALSE(std::filesystem::exists(file + ".out.new"));
    }
    write_file(file, HOUSE);
    for (const state_row &row : REQUESTS) {
        running_simulator simulator(options);
        EXPECT_EQ(call_service(simulator.port, row.operation, children(row.request)),
                  wrap_response(row.operation, children(row.response)));
        simulator.end();
        EXPECT_EQ(left()[row.part], json::parse(row.left)) << row.operation;
    }
}

TEST(State, IsPrintedAfterTheLastLine) {
    const temporary_directory directory;
    const run_result seen =
        run(simulator_command(directory.path, {"--state-out", "-", "--", "true"}));
    EXPECT_EQ(json::parse(seen.output), json::parse(USUAL));
    EXPECT_TRUE(seen.errors.ends_with("ready\nstopped\n")) << seen.errors;
}

TEST(State, ThatCannotBeWrittenIsTold) {
    running_simulator simulator({"--state-out", "/nowhere/at/all"});
    simulator.end(1);
    EXPECT_EQ(simulator.program.errors(), "lumosim: cannot write /nowhere/at/all\n");
}

struct wrong_state {
    const char *text;
    const char *complaint;
};

const wrong_state WRONG_STATES[] = {
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

TEST(State, ThatIsWrongIsExplained) {
    const temporary_directory directory;
    const std::string path = directory.path + "/state";
    for (const wrong_state &row : WRONG_STATES) {
        write_file(path, row.text);
        const run_result seen = run(simulator_command(directory.path, {"--state", path}));
        EXPECT_EQ(seen.status, 1) << row.text;
        EXPECT_TRUE(seen.errors.starts_with("lumosim: " + path + ": ")) << seen.errors;
        EXPECT_NE(seen.errors.find(row.complaint), std::string::npos) << seen.errors;
    }
}

} // namespace
