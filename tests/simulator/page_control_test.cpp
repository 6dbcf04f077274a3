// What the page's buttons do, as HTTP.
#include "tests/protocol/daemons.h"
#include "tests/protocol/service_functions.h"
#include "tests/simulator/watcher.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <set>

namespace {

using namespace harness;
using nlohmann::json;

/// A simulator and what its page knows of it.
struct opened_page {
    explicit opened_page(const words &options = {}) : simulator(options), watcher(simulator.port) {
        token = watcher.next()["run"];
    }

    http_reply order(const std::string &wish) const {
        return simulator.http("POST /control", "X-Lumosim-Token: " + token + "\r\n", wish);
    }

    std::string ask() const {
        return simulator.ask(CORE_SOCKET, CORE_REQUEST);
    }

    /// Reads events until one says that FSMCore is told this; false when none does.
    bool shows_told(const std::string &words) const {
        json event = watcher.next();
        while (!event.is_null() && find_record(event["daemons"], "fsmcore")["told"] != words) {
            event = watcher.next();
        }
        return !event.is_null();
    }

    running_simulator simulator;
    event_watcher watcher;
    std::string token;
};

TEST(Page, ChangesNothingWithoutItsToken) {
    opened_page page;
    const std::string token = page.token;
    const std::string wish = R"({"element": "LIVING-LAMP"})";
    EXPECT_EQ(token.size(), 32);
    EXPECT_NE(opened_page().token, token);
    for (const std::string &other : {std::string(), token.substr(1), token + "0"}) {
        page.token = other;
        EXPECT_EQ(page.order(wish).status, 403);
        EXPECT_EQ(find_record(page.watcher.next()["elements"], "LIVING-LAMP")["status"], "OFF");
    }
    EXPECT_TRUE(page.simulator.program.wait_for_output(
        "SOAP: POST /control -> HTTP 403 (not from this page)\n"));
    page.token = token;
    EXPECT_EQ(page.order(wish).status, 200);
    EXPECT_EQ(find_record(page.watcher.next()["elements"], "LIVING-LAMP")["status"], "ON");
}

TEST(Page, SwitchesAnElement) {
    opened_page page;
    page.simulator.ask("lumo_lintronicgateway.socket",
                       "Request: SENDLINTRONICDATAGRAM\nSectionName: s\nDevice: 07\n"
                       "Command: 012\nPayload: on\n\n");
    page.simulator.call("runonelement", children("sessionid=DEMO-SESSION|idobject=HALL-WINDOW|"
                                                 "operation=OPEN|payload=1"));
    for (const auto &[name, state, value] :
         {std::tuple("GARDEN-LAMP", "OFF", "OFF"), std::tuple("GARDEN-LAMP", "ON", "ON"),
          std::tuple("LIVING-LAMP", "ON", "1"), std::tuple("LIVING-LAMP", "OFF", "0"),
          std::tuple("HALL-WINDOW", "CLOSED", "0"), std::tuple("HALL-WINDOW", "OPEN", "1"),
          std::tuple("KITCHEN-THERMOSTAT", "OFF", "21.5")}) {
        EXPECT_EQ(page.order(json({{"element", name}}).dump()).status, 200);
        page.simulator.expect_response(
            {"getelementstatus", std::string("sessionid=DEMO-SESSION|idobject=") + name,
             std::string("result=LMWS-000|status=") + state + "|currentvalue=" + value});
    }
    EXPECT_TRUE(page.simulator.program.wait_for_output(
        "SOAP: told on the page: KITCHEN-THERMOSTAT OFF 21.5\n"));
}

TEST(Page, SwitchesAnElementWithALongName) {
    opened_page page;
    for (const char *last : {"B", "C"}) {
        page.simulator.call("runonelement",
                            children("sessionid=DEMO-SESSION|idobject=" + std::string(1000, 'A') +
                                     last + "|operation=ON|payload=1"));
    }
    const json elements = event_watcher(page.simulator.port).next()["elements"];
    ASSERT_TRUE(
        std::string(elements[0]["key"]).starts_with(std::string(200, 'A') + "...(1001 bytes) "));
    EXPECT_EQ(page.order(json({{"element", elements[1]["key"]}}).dump()).status, 200);
    const json after = event_watcher(page.simulator.port).next()["elements"];
    EXPECT_EQ(after[0]["status"], "ON");
    EXPECT_EQ(after[1]["status"], "OFF");
}

const std::string BAD = "Response Status: FSMC-003\nParameter Count: 0\n";
const std::string REFUSED = "(not sent)";

/// What the page tells FSMCore, how that is shown, and the answers after it; empty: closed without
/// one.
const std::tuple<json, const char *, words> ORDERS[] = {
    {{"--answer", "3", false}, "answers FSMC-003", {BAD, BAD}},
    {{"--answer", "3", true}, "answers FSMC-003 once", {BAD, CORE_DONE}},
    {{"--close", "", false}, "closes without an answer", {"", ""}},
    {{"--close", "", true}, "closes without an answer once", {"", CORE_DONE}},
    {{"--delay", "1", false}, "waits 1 ms", {CORE_DONE}},
    {{"--delay", "1", true}, "waits 1 ms once", {CORE_DONE}},
    {{"--refuse", "", false}, "refuses connections", {REFUSED, REFUSED}},
    {{"", "", false}, "", {CORE_DONE}},
    {{"--refuse", "", false}, "refuses connections", {REFUSED}},
    {{"--close", "", false}, "closes without an answer", {""}},
    {{"", "", false}, "", {CORE_DONE}},
    {{"--refuse", "", true}, "refuses connections once", {REFUSED}},
};

TEST(Page, TellsADaemonWhatToDo) {
    opened_page page;
    for (const auto &[wish, told, answers] : ORDERS) {
        EXPECT_EQ(page.order(json({{"daemon", "fsmcore"},
                                   {"option", wish[0]},
                                   {"argument", wish[1]},
                                   {"once", wish[2]}})
                                 .dump())
                      .status,
                  200);
        EXPECT_TRUE(page.shows_told(told)) << wish;
        for (const std::string &answer : answers) {
            EXPECT_EQ(page.ask(), answer) << wish;
        }
    }
    ASSERT_TRUE(page.simulator.program.wait_for_output("FSMCORE: listens from now on\n"));
    EXPECT_EQ(page.ask(), CORE_DONE);
    EXPECT_NE(page.simulator.program.output().find("FSMCORE: told on the page: nothing any more\n"),
              std::string::npos);
}

TEST(Page, TakesBackWhatTheOptionsTold) {
    for (const char *option : {"--refuse", "--close"}) {
        opened_page page({option, "fsmcore"});
        EXPECT_EQ(page.order(R"({"daemon": "fsmcore", "option": ""})").status, 200);
        EXPECT_EQ(page.ask(), CORE_DONE);
        page.simulator.end();
        EXPECT_FALSE(std::filesystem::exists(page.simulator.home.path + "/" + CORE_SOCKET));
    }
}

const std::pair<const char *, const char *> WRONG_ORDERS[] = {
    {"", "parse error"},
    {"[]", "cannot use"},
    {"{}", "'daemon' not found"},
    {R"({"element": "LAMP"})", "no such element"},
    {R"({"element": 7})", "type must be string"},
    {R"({"daemon": "eob"})", "no such daemon"},
    {R"({"daemon": "fsmcore", "option": "--answer-raw", "argument": "@/etc/passwd"})",
     "no option for a daemon that runs"},
    {R"({"daemon": "fsmcore", "option": "--answer", "argument": "x"})", "needs a number from "},
    {R"({"daemon": "soap", "option": "--refuse"})",
     "this page comes from here; let it close its requests instead"},
};

TEST(Page, IsToldWhatIsWrongWithAnOrder) {
    opened_page page;
    for (const auto &[wish, complaint] : WRONG_ORDERS) {
        const http_reply answer = page.order(wish);
        EXPECT_EQ(answer.status, 400) << wish;
        EXPECT_NE(answer.body.find(complaint), std::string::npos) << wish << answer.body;
    }
    EXPECT_EQ(page.ask(), CORE_DONE);
}

/// The functions that lumocmd can send to a daemon.
std::set<std::string> functions_of(const protocol::daemon_row &daemon) {
    std::set<std::string> names;
    if (daemon.gateway != nullptr) {
        for (const protocol::function_row &function : daemon.gateway->functions) {
            if (function.built == protocol::builder_answer::SENDS) {
                names.insert(function.name);
            }
        }
    } else if (daemon.socket.empty()) {
        for (const protocol::service_row &row : protocol::SERVICE_FUNCTIONS) {
            names.insert(protocol::function_name(row));
        }
    } else {
        names = {"RUNFUNCTION"};
    }
    return names;
}

/// Every command to copy does, in a shell, what the daemon takes for proper.
TEST(Page, HasACommandForEachFunction) {
    const running_simulator simulator;
    const json commands = event_watcher(simulator.port).next()["commands"];
    const std::string path = std::filesystem::path(lumocmd_path()).parent_path();
    for (const protocol::daemon_row &daemon : protocol::daemons()) {
        std::set<std::string> functions;
        for (const json &function : commands[protocol::lower(daemon.name)]) {
            functions.insert(function[0]);
            const run_result seen =
                run({"/bin/sh", "-c", "PATH=" + path + "\n" + function[1].get<std::string>()});
            EXPECT_TRUE(seen.status == 0 || seen.output.ends_with("LMWS-404\n"))
                << function << seen.output << seen.errors;
        }
        EXPECT_EQ(functions, functions_of(daemon));
    }
}

} // namespace
