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
    "links": {"eib 0/1": "HALL-LAMP", "vivaldi 2/3": "HALL-LAMP"},
    "sessions": {"MINE": "demo"},
    "neighbours": {"N1": {"name": "next", "address": "10.0.0.2", "port": "80", "optionals": ""}},
    "schedules": [{"object": "K", "mode": "heat", "type": "day", "schedule": "8-22"}],
    "messages": ["HALL-LAMP ON 70"],
    "configuration": "<é>"
})";

/// What a simulator that starts from nothing has.
const char *const USUAL = R"({
    "elements": {"BATH-RADIO": {"status": "OFF", "value": "0"},
                 "GARDEN-LAMP": {"status": "OFF", "value": "0"},
                 "KITCHEN-RADIO": {"status": "OFF", "value": "0"},
                 "KITCHEN-THERMOSTAT": {"status": "ON", "value": "21.5"},
                 "LIVING-LAMP": {"status": "OFF", "value": "0"}},
    "links": {"eib 1/1/3": "LIVING-LAMP", "lintronic 07": "GARDEN-LAMP",
              "tutondo 3": "KITCHEN-RADIO", "vivaldi 1/4": "BATH-RADIO"},
    "sessions": {"DEMO-SESSION": "demo"},
    "neighbours": {}, "schedules": [], "messages": [], "configuration": ""})";

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
    for (const auto &[text, expected] : {std::pair(HOUSE, HOUSE), std::pair("{}", USUAL)}) {
        write_file(file, text);
        running_simulator(options).end();
        EXPECT_EQ(left(), json::parse(expected));
        EXPECT_FALSE(std::filesystem::exists(file + ".out.new"));
    }
    write_file(file, HOUSE);
    running_simulator simulator(options);
    for (const call_row &row : CALLS) {
        expect_response(simulator.port, row);
    }
    simulator.end();
    EXPECT_EQ(left(), json::parse(CHANGED));
}

/// A request to a gateway, and an element of the usual house after it.
struct linked_row {
    std::string gateway;
    std::string request;
    std::string status; ///< of the answer
    std::string element;
    std::string left;
};

const std::string LAMP = "SectionName: s\nDestination: 1/1/3\nEISType: ";

const linked_row LINKED[] = {
    {"eib", "SENDEIBUSSETDATAGRAM\n" + LAMP + "1\nPayload: 1", "EIBG-000", "LIVING-LAMP",
     "status=ON|currentvalue=1"},
    {"eib", "SENDEIBUSSETDATAGRAM\n" + LAMP + "2\nPayload: 10", "EIBG-000", "LIVING-LAMP",
     "status=ON|currentvalue=10"},
    {"eib", "SENDEIBUSSETDATAGRAM\n" + LAMP + "2\nPayload: 0.0", "EIBG-000", "LIVING-LAMP",
     "status=OFF|currentvalue=0.0"},
    {"eib", "SENDEIBUSSETDATAGRAM\n" + LAMP + "1\nPayload: Off", "EIBG-000", "LIVING-LAMP",
     "status=OFF|currentvalue=Off"},
    {"eib", "SENDEIBUSSETDATAGRAM\nSectionName: s\nDestination: 1/1/4\nEISType: 1\nPayload: 1",
     "EIBG-000", "LIVING-LAMP", "status=OFF|currentvalue=0"},
    {"eib", "SENDEIBUSGETDATAGRAM\n" + LAMP + "1\nPayload: 1", "EIBG-000", "LIVING-LAMP",
     "status=OFF|currentvalue=0"},
    {"eib", "SENDEIBUSSETDATAGRAM\n" + LAMP + "1\nPayload: 1\nMore: 1", "EIBG-102", "LIVING-LAMP",
     "status=OFF|currentvalue=0"},
    {"lintronic", "SENDLINTRONICDATAGRAM\nSectionName: s\nDevice: 07\nCommand: 012\nPayload: on",
     "LINT-000", "GARDEN-LAMP", "status=ON|currentvalue=on"},
    {"tutondo",
     "SENDTUTONDOSETDATAGRAM\nSectionName: s\nCommand: VOLUME\nZone_Number: 3\nPayload: 20",
     "TUTG-0000", "KITCHEN-RADIO", "status=ON|currentvalue=20"},
    {"vivaldi",
     "SENDVIVALDISETDATAGRAM\nSectionName: s\nCentralNumber: 1\nCommand: 1\nRC20_Number: 4\n"
     "RC20_OnOff: 0\nRC20_Volume: 35\nRC20_High: 5\nRC20_Low: 5\nRC20_Channel: 1\nRC20_Cd: 1\n"
     "RC20_Track: 1\nRC20_Tuner: 1",
     "VIVG-0000", "BATH-RADIO", "status=OFF|currentvalue=35"},
};

TEST(State, OfAnElementFollowsTheDatagramsToItsAddress) {
    for (const linked_row &row : LINKED) {
        SCOPED_TRACE(row.request);
        running_simulator simulator;
        EXPECT_EQ(simulator.ask("lumo_" + row.gateway + "gateway.socket",
                                "Request: " + row.request + "\n\n"),
                  "Response Status: " + row.status + "\n");
        expect_response(simulator.port,
                        {"getelementstatus", "sessionid=DEMO-SESSION|idobject=" + row.element,
                         "result=LMWS-000|" + row.left});
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

} // namespace
