// The page and its stream as HTTP, without a browser.
#include "tests/protocol/daemons.h"
#include "tests/simulator/watcher.h"

#include <gtest/gtest.h>

namespace {

using namespace harness;
using nlohmann::json;

TEST(Page, IsServedWithAPolicyAndHasAHead) {
    running_simulator simulator;
    const http_reply page = simulator.http("GET /");
    EXPECT_EQ(page.status, 200);
    for (const char *line : {"\r\nContent-Type: text/html; charset=utf-8\r\n",
                             "\r\nX-Content-Type-Options: nosniff\r\n",
                             "\r\nContent-Security-Policy: default-src 'none'"}) {
        EXPECT_NE(page.head.find(line), std::string::npos) << page.head;
    }
    EXPECT_TRUE(page.body.starts_with("<!DOCTYPE html>")) << page.body;
    EXPECT_TRUE(page.body.ends_with("</html>\n")) << page.body;
    simulator.ask(CORE_SOCKET, CORE_REQUEST);
    for (const std::string path : {"/", "/events", "/requests/1"}) {
        const http_reply seen = simulator.http("HEAD " + path);
        EXPECT_EQ(seen.status, 200) << path;
        EXPECT_NE(seen.head.find("\r\nX-Content-Type-Options: nosniff\r\n"), std::string::npos)
            << path << seen.head;
        EXPECT_EQ(seen.body, "") << path;
    }
}

const std::string LONG_HOST = "Host: " + std::string(60000, 'a') + "\r\n";

/// Who a request says that it goes to and comes from, with PORT for the port, and what of that is
/// foreign, null when nothing is.
const std::pair<const char *, const char *> SENDERS[] = {
    {"Host: 127.0.0.1:PORT\r\n", nullptr},
    {"Host: LocalHost:PORT\r\n", nullptr},
    {"Host: localhost:1\r\n", nullptr},
    {"Host: 192.168.1.2\r\n", nullptr},
    {"Host: [::1]:PORT\r\n", nullptr},
    {"Host: \r\n", nullptr},
    {"Host: localhost:PORT\r\nOrigin: http://localhost:PORT\r\n", nullptr},
    {"Host: house.example\r\n", "Host"},
    {"Host: house.example:PORT\r\nOrigin: http://house.example:PORT\r\n", "Host"},
    {"Host: localhost.example:PORT\r\n", "Host"},
    {"Host: 1:2:3\r\n", "Host"},
    {LONG_HOST.c_str(), "Host"},
    {"Host: localhost:PORT\r\nOrigin: http://house.example\r\n", "Origin"},
    {"Host: localhost:PORT\r\nOrigin: http://localhost:1\r\n", "Origin"},
    {"Host: localhost:PORT\r\nOrigin: https://localhost:PORT\r\n", "Origin"},
    {"Host: localhost:PORT\r\nOrigin: null\r\n", "Origin"},
    {"Host: localhost\r\nHost: localhost\r\n", "Host"},
    {"Host: localhost\r\nOrigin: http://localhost\r\nOrigin: http://localhost\r\n", "Origin"},
    {"Sec-Fetch-Site: same-origin\r\n", nullptr},
    {"Sec-Fetch-Site: none\r\n", nullptr},
    {"Sec-Fetch-Site: same-site\r\n", "Sec-Fetch-Site"},
    {"Sec-Fetch-Site: cross-site\r\n", "Sec-Fetch-Site"},
    {"Sec-Fetch-Site: \r\n", "Sec-Fetch-Site"},
    {"Sec-Fetch-Site: none\r\nSec-Fetch-Site: none\r\n", "Sec-Fetch-Site"},
};

/// What may be asked, and the status where the sender is none to refuse.
const std::pair<const char *, int> ASKED[] = {
    {"GET /", 200},        {"GET /configuration", 200}, {"GET /requests/1", 200},
    {"GET /control", 404}, {"POST /control", 403},      {"POST /cgi-bin/lumows", 500}};

TEST(Page, AndTheServiceRefuseWhoComesFromElsewhere) {
    running_simulator simulator;
    simulator.ask(CORE_SOCKET, CORE_REQUEST);
    for (const auto &[row, foreign] : SENDERS) {
        const std::string headers = protocol::replaced(row, "PORT", std::to_string(simulator.port));
        for (const auto &[asked, status] : ASKED) {
            EXPECT_EQ(simulator.http(asked, headers).status, foreign == nullptr ? status : 403)
                << asked << "\n"
                << headers;
        }
        if (foreign != nullptr) {
            EXPECT_EQ(simulator.http("GET /events", headers).status, 403) << headers;
            EXPECT_TRUE(simulator.program.wait_for_output(
                std::string("SOAP: GET /events -> HTTP 403 (foreign ") + foreign + ")\n"));
        }
    }
}

TEST(Page, LetsNobodyFromElsewhereAskTheRealController) {
    running_simulator house;
    running_simulator desk({"--forward-url", house.origin});
    EXPECT_EQ(desk.http("GET /configuration", "Host: house.example\r\n").status, 403);
    EXPECT_EQ(house.end(), "");
}

TEST(Page, StreamsWhatHappens) {
    running_simulator simulator;
    event_watcher watcher(simulator.port);
    const json first = watcher.next();
    EXPECT_EQ(
        find_record(first["elements"], "LIVING-LAMP"),
        json({{"key", "LIVING-LAMP"}, {"status", "OFF"}, {"value", "0"}, {"links", "eib 1/1/3"}}));
    EXPECT_EQ(first["requests"], json::array());
    EXPECT_EQ(first["daemons"].size(), protocol::daemons().size());
    for (const protocol::daemon_row &row : protocol::daemons()) {
        json daemon = find_record(first["daemons"], protocol::lower(row.name));
        daemon.erase("place");
        EXPECT_EQ(daemon, json({{"key", protocol::lower(row.name)},
                                {"label", row.name},
                                {"told", ""},
                                {"condition", "healthy"},
                                {"base", row.base},
                                {"asked", 0}}));
    }
    simulator.call("runonelement",
                   children("sessionid=DEMO-SESSION|idobject=LIVING-LAMP|operation=ON|payload=80"));
    const json second = watcher.next();
    EXPECT_EQ(find_record(second["elements"], "LIVING-LAMP")["value"], "80");
    EXPECT_EQ(find_record(second["daemons"], "soap")["asked"], 1);
    simulator.ask(CORE_SOCKET, "Request: f\n\n");
    json third = watcher.next();
    ASSERT_EQ(third["requests"].size(), 1) << "what was seen comes only once";
    third["requests"][0].erase("time");
    EXPECT_EQ(third["requests"][0],
              json({{"number", 2},
                    {"daemon", "fsmcore"},
                    {"request", "f"},
                    {"outcome", "FSMC-002 (expected \"Parameter Count: \" before )"},
                    {"word", "failed"}}));
    EXPECT_FALSE(third.contains("commands"));
}

TEST(Page, CutsLongRequestsBetweenCharacters) {
    running_simulator simulator;
    std::string accents;
    for (int i = 0; i < 60; ++i) {
        accents += "\u00E9";
    }
    simulator.ask("lumo_eibgateway.socket",
                  "Request: SENDEIBUSSETDATAGRAM\nSectionName: " + std::string(250, 'x') +
                      "\nDestination: x" + accents + "\nEISType: 1\nPayload: 1\n\n");
    EXPECT_EQ(event_watcher(simulator.port).next()["requests"][0]["request"],
              "SENDEIBUSSETDATAGRAM " + std::string(200, 'x') + "...(250 bytes)|x" +
                  accents.substr(0, 62) + "...");
}

TEST(Page, ShowsTheBytesOfBothDirections) {
    running_simulator simulator({"--close", "fsmcore=1"});
    simulator.ask(CORE_SOCKET, std::string(9000, 'x'));
    simulator.ask(CORE_SOCKET, "Request: \xFF\r\n\n");
    EXPECT_EQ(json::parse(simulator.http("GET /requests/2").body),
              json({{"received", "\"Request: \\xFF\\r\\n\"\n\"\\n\"\n"},
                    {"sent", "\"Response Status: FSMC-002\\n\"\n\"Parameter Count: 0\\n\"\n"}}));
    EXPECT_EQ(
        json::parse(simulator.http("GET /requests/1").body),
        json({{"received", "\"" + std::string(8192, 'x') + "\"\nand more"}, {"sent", "nothing"}}));
    for (const char *number : {"0", "3", "x", ""}) {
        EXPECT_EQ(simulator.http(std::string("GET /requests/") + number).status, 404);
    }
}

/// Options, what they say of FSMCore, its condition, what becomes of a request, and the condition
/// after it.
const char *const TOLD[][5] = {
    {"--raw", "", "healthy", "done", "healthy"},
    {"--answer fsmcore=107,0", "answers FSMC-107, FSMC-000", "told to fail", "failed", "healthy"},
    {"--answer-raw fsmcore=abc", "answers 3 raw bytes", "told to fail", "raw", "told to fail"},
    {"--close fsmcore=2", "closes without an answer 2 times", "told to fail", "closed",
     "told to fail"},
    {"--refuse fsmcore=1", "refuses connections once", "refusing", "refused", "healthy"},
    {"--delay fsmcore=20", "waits 20 ms", "slow", "done", "slow"},
    {"--delay fsmcore=20,1", "waits 20 ms once", "slow", "done", "healthy"},
    {"--close fsmcore --delay fsmcore=20", "closes without an answer, waits 20 ms", "told to fail",
     "closed", "told to fail"},
    {"--replay /dev/null", "answers from a recording", "healthy", "done", "healthy"},
    {"--forward-sockets /nowhere/at/all", "asks the real controller", "healthy", "closed",
     "healthy"},
};

TEST(Page, SaysWhatADaemonWasToldAndWhatBecameOfARequest) {
    for (const auto &[options, told, condition, word, then] : TOLD) {
        running_simulator simulator(protocol::split(options, ' '));
        const event_watcher watcher(simulator.port);
        const json daemon = find_record(watcher.next()["daemons"], "fsmcore");
        EXPECT_EQ(daemon["told"], told);
        EXPECT_EQ(daemon["condition"], condition) << told;
        simulator.ask(CORE_SOCKET, CORE_REQUEST);
        const json event = watcher.next();
        EXPECT_EQ(event["requests"][0]["word"], word) << told;
        EXPECT_EQ(find_record(event["daemons"], "fsmcore")["condition"], then) << told;
    }
}

TEST(Page, IsNoRequest) {
    const temporary_directory directory;
    const std::string list = directory.path + "/list";
    write_file(list, "");
    running_simulator simulator({"--raw", "--expect", list, "--record", directory.path + "/record",
                                 "--answer-raw", "soap=x", "--delay", "soap=3600000"});
    ASSERT_EQ(simulator.http("GET /").status, 200);
    event_watcher watcher(simulator.port);
    EXPECT_FALSE(watcher.next().is_null());
    EXPECT_EQ(simulator.end(), "");
    EXPECT_EQ(read_file(directory.path + "/record"), "");
    EXPECT_TRUE(watcher.next().is_null()) << "the stream ends with the simulator";
}

TEST(Page, OfManyWatchersEachSeesEverything) {
    running_simulator simulator;
    event_watcher stays(simulator.port);
    EXPECT_FALSE(stays.next().is_null());
    {
        event_watcher leaves(simulator.port);
        EXPECT_FALSE(leaves.next().is_null());
    }
    simulator.ask(CORE_SOCKET, CORE_REQUEST);
    EXPECT_EQ(find_record(stays.next()["daemons"], "fsmcore")["asked"], 1);
}

} // namespace
