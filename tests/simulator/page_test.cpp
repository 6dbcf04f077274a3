// The page and its stream as HTTP, without a browser.
#include "tests/protocol/daemons.h"
#include "tests/simulator/simulator_process.h"
#include "tests/simulator/soap_client.h"

#include <csignal>
#include <fstream>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

using namespace harness;
using protocol::daemon_row;
using protocol::daemons;

using Json = nlohmann::json;

/// Somebody who watches the stream.
struct Watcher {
    explicit Watcher(int port) : descriptor(connect_port(port)) {
        const std::string host = "127.0.0.1:" + std::to_string(port);
        send_bytes(descriptor, "GET /events HTTP/1.1\r\nHost: " + host + "\r\n\r\n");
    }

    ~Watcher() {
        close(descriptor);
    }

    Watcher(const Watcher &) = delete;
    Watcher &operator=(const Watcher &) = delete;

    /// The next event; null when none comes in time.
    Json next() {
        std::size_t end = 0;
        while ((end = text.find("\n\n")) == std::string::npos) {
            std::array<char, 4096> chunk{};
            pollfd watched{descriptor, POLLIN, 0};
            const ssize_t count = poll(&watched, 1, PATIENCE_MS) > 0
                                      ? recv(descriptor, chunk.data(), chunk.size(), 0)
                                      : -1;
            if (count <= 0) {
                return nullptr;
            }
            text.append(chunk.data(), static_cast<std::size_t>(count));
        }
        const std::size_t start = text.find("data: ") + std::string("data: ").size();
        Json event = Json::parse(text.substr(start, end - start), nullptr, false);
        text.erase(0, end + 2);
        return event;
    }

    int descriptor;
    std::string text;
};

/// The record of this key in a list of them; null when there is none.
Json find_record(const Json &list, std::string_view key) {
    for (const Json &record : list) {
        if (record["key"] == key) {
            return record;
        }
    }
    return nullptr;
}

TEST(Page, IsServedWithAPolicy) {
    running_simulator simulator;
    const http_reply page = ask_http(simulator.port, "GET /");
    EXPECT_EQ(page.status, 200);
    for (const char *line : {"\r\nContent-Type: text/html; charset=utf-8\r\n",
                             "\r\nContent-Security-Policy: default-src 'none'"}) {
        EXPECT_NE(page.head.find(line), std::string::npos) << page.head;
    }
    EXPECT_TRUE(page.body.starts_with("<!DOCTYPE html>")) << page.body;
    EXPECT_TRUE(page.body.ends_with("</html>\n")) << page.body;
}

struct HostCase {
    std::string host; ///< PORT stands for the port
    int status;
};

const HostCase HOSTS[] = {{"127.0.0.1:PORT", 200},
                          {"localhost:PORT", 200},
                          {"127.0.0.1", 403},
                          {"house.example", 403},
                          {"house.example:PORT", 403}};

TEST(Page, IsForThisMachineOnly) {
    running_simulator simulator;
    for (const HostCase &row : HOSTS) {
        std::string host = row.host;
        if (const std::size_t at = host.find("PORT"); at != std::string::npos) {
            host.replace(at, host.size() - at, std::to_string(simulator.port));
        }
        const std::string header = "Host: " + host + "\r\n";
        EXPECT_EQ(ask_http(simulator.port, "GET /", header).status, row.status) << host;
        if (row.status != 200) {
            EXPECT_EQ(ask_http(simulator.port, "GET /events", header).status, row.status) << host;
        }
    }
}

TEST(Page, StreamsWhatHappens) {
    running_simulator simulator;
    Watcher watcher(simulator.port);
    const Json first = watcher.next();
    EXPECT_EQ(find_record(first["elements"], "LIVING-LAMP"),
              Json({{"key", "LIVING-LAMP"}, {"status", "OFF"}, {"value", "0"}}));
    EXPECT_EQ(first["daemons"].size(), daemons().size());
    for (const daemon_row &row : daemons()) {
        const Json daemon = find_record(first["daemons"], protocol::lower(row.name));
        EXPECT_EQ(daemon["label"], row.name);
        EXPECT_EQ(daemon["asked"], 0);
        EXPECT_EQ(daemon["latest"], Json::array());
    }
    call_service(simulator.port, "runonelement",
                 "<sessionid>DEMO-SESSION</sessionid><idobject>LIVING-LAMP</idobject>"
                 "<operation>ON</operation><payload>80</payload>");
    const Json second = watcher.next();
    EXPECT_EQ(find_record(second["elements"], "LIVING-LAMP"),
              Json({{"key", "LIVING-LAMP"}, {"status", "ON"}, {"value", "80"}}));
    const Json soap = find_record(second["daemons"], "soap");
    EXPECT_EQ(soap["asked"], 1);
    EXPECT_EQ(soap["latest"][0]["outcome"], "LMWS-000");
}

TEST(Page, HoldsTheLastRequestsOfEachDaemon) {
    running_simulator simulator;
    constexpr std::size_t asked = 8;
    for (std::size_t i = 1; i <= asked; ++i) {
        simulator.ask("lumo_fsmcore.socket",
                      "Request: " + std::to_string(i) + "\nParameter Count: 0\nWaittime: 5\n\n");
    }
    Watcher watcher(simulator.port);
    const Json daemon = find_record(watcher.next()["daemons"], "fsmcore");
    EXPECT_EQ(daemon["asked"], asked);
    Json latest = Json::array();
    for (const char *number : {"8", "7", "6", "5", "4"}) {
        latest.push_back({{"request", number}, {"outcome", "FSMC-000"}});
    }
    EXPECT_EQ(daemon["latest"], latest);
}

struct ToldCase {
    std::vector<std::string> options;
    const char *words;
};

const ToldCase TOLD[] = {
    {{}, ""},
    {{"--answer", "eib=107,0"}, "answers EIBG-107, EIBG-000"},
    {{"--answer-raw", "eib=abc"}, "answers 3 raw bytes"},
    {{"--close", "eib"}, "closed without an answer"},
    {{"--refuse", "eib"}, "refuses connections"},
    {{"--delay", "eib=20"}, "waits 20 ms"},
    {{"--close", "eib", "--delay", "eib=20"}, "closed without an answer, waits 20 ms"},
    {{"--replay", "/dev/null"}, "answers from a recording"},
    {{"--forward-sockets", "/tmp"}, "asks the real controller"},
};

TEST(Page, SaysWhatADaemonWasTold) {
    for (const ToldCase &row : TOLD) {
        running_simulator simulator(row.options);
        Watcher watcher(simulator.port);
        EXPECT_EQ(find_record(watcher.next()["daemons"], "eib")["told"], row.words);
    }
}

TEST(Page, IsNoRequest) {
    const temporary_directory directory;
    const std::string list = directory.path + "/list";
    std::ofstream(list) << "";
    running_simulator simulator({"--raw", "--expect", list, "--record", directory.path + "/record",
                                 "--answer-raw", "soap=x", "--delay", "soap=3600000"});
    ASSERT_EQ(ask_http(simulator.port, "GET /").status, 200);
    Watcher watcher(simulator.port);
    EXPECT_FALSE(watcher.next().is_null());
    EXPECT_EQ(simulator.end(), "");
    EXPECT_EQ(read_file(directory.path + "/record"), "");
    EXPECT_TRUE(watcher.next().is_null()) << "the stream ends with the simulator";
}

TEST(Page, OfManyWatchersEachSeesEverything) {
    running_simulator simulator;
    Watcher stays(simulator.port);
    EXPECT_FALSE(stays.next().is_null());
    {
        Watcher leaves(simulator.port);
        EXPECT_FALSE(leaves.next().is_null());
    }
    simulator.ask("lumo_fsmcore.socket", "Request: f\nParameter Count: 0\nWaittime: 5\n\n");
    EXPECT_EQ(find_record(stays.next()["daemons"], "fsmcore")["asked"], 1);
}

} // namespace
