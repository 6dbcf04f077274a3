// State files: what the house holds at the start and leaves at the end.
#include "tests/simulator/simulator_process.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <map>
#include <nlohmann/json.hpp>

namespace {

using namespace harness;
using json = nlohmann::json;

const char *const HOUSE = R"({
    "elements": {"HALL-LAMP": {"status": "ON", "value": "70"}},
    "links": {"eib 0/1": "HALL-LAMP", "vivaldi 2/3": "HALL-LAMP"},
    "sessions": {"MINE": "demo"},
    "neighbours": {"N1": {"name": "next", "address": "10.0.0.2", "port": "80", "optionals": ""}},
    "schedules": [{"object": "K", "mode": "heat", "type": "day", "schedule": "8-22"}],
    "messages": ["HALL-LAMP ON 70"],
    "configuration": "<é>"
})";

/// What the requests below make of the first house.
const char *const CHANGED = R"({
    "elements": {"HALL-LAMP": {"status": "OFF", "value": "0"}},
    "links": {"eib 0/1": "HALL-LAMP", "vivaldi 2/3": "HALL-LAMP"},
    "sessions": {"ADMIN-SESSION": "admin", "MINE": "demo"}, "neighbours": {},
    "schedules": [{"object": "K", "mode": "heat", "type": "day", "schedule": "8-22"}],
    "messages": ["HALL-LAMP ON 70", "HALL-LAMP OFF 0"], "configuration": "new"})";

const call_row CALLS[] = {
    {"getelementstatus", "sessionid=MINE|idobject=HALL-LAMP",
     "result=LMWS-000|status=ON|currentvalue=70"},
    {"getelementstatus", "sessionid=MINE|idobject=LIVING-LAMP",
     "result=LMWS-404|status=|currentvalue="},
    {"runonelement", "sessionid=MINE|idobject=HALL-LAMP|operation=OFF|payload=0",
     "result=LMWS-000"},
    {"installcrontab", "sessionid=DEMO-SESSION|newcrontabfile=x", "result=LMWS-403"},
    {"login", "user=admin|pass=admin", "result=LMWS-000"},
    {"search4neighbours", "", "result=LMWS-000|neighbourlist=N1,next,10.0.0.2,80,"},
    {"detach2neighbour", "neighbouruid=N1", "result=LMWS-000"},
    {"keltoclimateeventgettimeschedule", "sessionid=MINE|idobject=K|mode=heat|type=day",
     "result=LMWS-000|schedule=8-22"},
    {"uploadlumolfile", "sessionid=MINE|lumolfile=new", "result=LMWS-000"},
};

TEST(State, GoesInAndComesOut) {
    const temporary_directory directory;
    const std::string file = directory.path + "/state";
    const words options = {"--state", file, "--state-out", file + ".out"};
    const auto left = [&] { return json::parse(read_file(file + ".out")); };
    write_file(file, HOUSE);
    running_simulator(options).end();
    EXPECT_EQ(left(), json::parse(HOUSE));
    EXPECT_FALSE(std::filesystem::exists(file + ".out.new"));
    running_simulator simulator(options);
    for (const call_row &row : CALLS) {
        simulator.expect_response(row);
    }
    simulator.end();
    EXPECT_EQ(left(), json::parse(CHANGED));
}

/// The house at the start, printed after the last line.
json usual_house(const words &options = {}) {
    const temporary_directory directory;
    words all = {"--state-out", "-"};
    all.insert(all.end(), options.begin(), options.end());
    all.insert(all.end(), {"--", "true"});
    const run_result seen = run(simulator_command(directory.path, all));
    EXPECT_TRUE(seen.errors.ends_with("ready\nstopped\n")) << seen.errors;
    return json::parse(seen.output);
}

TEST(State, KeepsWhatTheFileLeavesOut) {
    json expected = usual_house();
    EXPECT_EQ(expected["sessions"], json({{"DEMO-SESSION", "demo"}}));
    const temporary_directory directory;
    const std::string file = directory.path + "/state";
    write_file(file, R"({"messages": ["x"]})");
    expected["messages"] = {"x"};
    EXPECT_EQ(usual_house({"--state", file}), expected);
}

const std::string LAMP = "EIBUSSETDATAGRAM\nSectionName: s\nDestination: 1/1/3\nEISType: ";

/// By the links of the usual house: a request behind its SEND, and the linked element after it.
const std::multimap<std::string, std::pair<std::string, std::string>> LINKED = {
    {"eib 1/1/3", {LAMP + "1\nPayload: 1", "status=ON|currentvalue=1"}},
    {"eib 1/1/3", {LAMP + "2\nPayload: 10", "status=ON|currentvalue=10"}},
    {"eib 1/1/3", {LAMP + "2\nPayload: 0.0", "status=OFF|currentvalue=0.0"}},
    {"eib 1/1/3", {LAMP + "1\nPayload: Off", "status=OFF|currentvalue=Off"}},
    {"eib 1/1/3",
     {"EIBUSSETDATAGRAM\nSectionName: s\nDestination: 1/1/4\nEISType: 1\nPayload: 1",
      "status=OFF|currentvalue=0"}},
    {"eib 1/1/3",
     {"EIBUSGETDATAGRAM\nSectionName: s\nDestination: 1/1/3\nEISType: 1\nPayload: 1",
      "status=OFF|currentvalue=0"}},
    {"eib 1/1/3", {LAMP + "1\nPayload: 1\nMore: 1", "status=OFF|currentvalue=0"}},
    {"lintronic 07",
     {"LINTRONICDATAGRAM\nSectionName: s\nDevice: 07\nCommand: 012\nPayload: on",
      "status=ON|currentvalue=on"}},
    {"tutondo 3",
     {"TUTONDOSETDATAGRAM\nSectionName: s\nCommand: VOLUME\nZone_Number: 3\nPayload: 20",
      "status=ON|currentvalue=20"}},
    {"vivaldi 1/4",
     {"VIVALDISETDATAGRAM\nSectionName: s\nCentralNumber: 1\nCommand: 1\nRC20_Number: 4\n"
      "RC20_OnOff: 0\nRC20_Volume: 35\nRC20_High: 5\nRC20_Low: 5\nRC20_Channel: 1\nRC20_Cd: 1\n"
      "RC20_Track: 1\nRC20_Tuner: 1",
      "status=OFF|currentvalue=35"}},
};

TEST(State, OfAnElementFollowsTheDatagramsToItsAddress) {
    const json links = usual_house()["links"];
    for (const auto &[link, element] : links.items()) {
        EXPECT_TRUE(LINKED.contains(link)) << link;
        const auto [from, to] = LINKED.equal_range(link);
        for (auto row = from; row != to; ++row) {
            const auto &[request, left] = row->second;
            SCOPED_TRACE(request);
            running_simulator simulator;
            simulator.ask("lumo_" + link.substr(0, link.find(' ')) + "gateway.socket",
                          "Request: SEND" + request + "\n\n");
            simulator.expect_response(
                {"getelementstatus",
                 "sessionid=DEMO-SESSION|idobject=" + element.get<std::string>(),
                 "result=LMWS-000|" + left});
        }
    }
}

TEST(State, ThatCannotBeWrittenIsTold) {
    running_simulator simulator({"--state-out", "/nowhere/at/all"});
    simulator.end(1);
    EXPECT_EQ(simulator.program.errors(), "lumosim: cannot write /nowhere/at/all\n");
}

} // namespace
