// What the page's buttons do, as HTTP.
#include "tests/protocol/daemons.h"
#include "tests/protocol/service_functions.h"
#include "tests/simulator/soap_client.h"
#include "tests/simulator/watcher.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <set>

namespace {

using namespace harness;
using nlohmann::json;

/// A simulator and what its page knows of it.
struct opened_page {
    opened_page() : watcher(simulator.port) {
        token = watcher.next()["run"];
    }

    http_reply order(const json &wish, const std::string &sent_token) const {
        return ask_http(simulator.port, "POST /control", "X-Lumosim-Token: " + sent_token + "\r\n",
                        wish.dump());
    }

    std::string ask() const {
        return simulator.ask(CORE_SOCKET, CORE_REQUEST);
    }

    /// Reads events until one says that FSMCore is told this; false when none does.
    bool shows_told(const std::string &words) {
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
    EXPECT_EQ(page.token.size(), 32);
    EXPECT_NE(opened_page().token, page.token);
    const json wish{{"element", "LIVING-LAMP"}};
    for (const std::string &token : {std::string(), page.token.substr(1), page.token + "0"}) {
        EXPECT_EQ(page.order(wish, token).status, 403);
        EXPECT_EQ(find_record(page.watcher.next()["elements"], "LIVING-LAMP")["status"], "OFF");
    }
    EXPECT_TRUE(page.simulator.program.wait_for_output(
        "SOAP: POST /control -> HTTP 403 (not from this page)\n"));
    EXPECT_EQ(
        ask_http(page.simulator.port, "GET /control", "X-Lumosim-Token: " + page.token + "\r\n")
            .status,
        404);
    page.watcher.next();
    EXPECT_EQ(page.order(wish, page.token).status, 200);
    EXPECT_EQ(find_record(page.watcher.next()["elements"], "LIVING-LAMP")["status"], "ON");
}

TEST(Page, SwitchesAnElement) {
    opened_page page;
    const auto status = [&page](const std::string &name) {
        return call_service(page.simulator.port, "getelementstatus",
                            children("sessionid=DEMO-SESSION|idobject=" + name));
    };
    const auto expected = [](const std::string &state, const std::string &value) {
        return wrap_response("getelementstatus", children("result=LMWS-000|status=" + state +
                                                          "|currentvalue=" + value));
    };
    page.simulator.ask("lumo_lintronicgateway.socket",
                       "Request: SENDLINTRONICDATAGRAM\nSectionName: s\nDevice: 07\n"
                       "Command: 012\nPayload: on\n\n");
    for (const auto &[name, state, value] :
         {std::tuple("GARDEN-LAMP", "OFF", "OFF"), std::tuple("GARDEN-LAMP", "ON", "ON"),
          std::tuple("LIVING-LAMP", "ON", "1"), std::tuple("LIVING-LAMP", "OFF", "0"),
          std::tuple("KITCHEN-THERMOSTAT", "OFF", "21.5")}) {
        EXPECT_EQ(page.order({{"element", name}}, page.token).status, 200);
        EXPECT_EQ(status(name), expected(state, value));
    }
    EXPECT_TRUE(page.simulator.program.wait_for_output(
        "SOAP: told on the page: KITCHEN-THERMOSTAT OFF 21.5\n"));
}

/// What the page tells FSMCore, how that is shown, and the answers after it; empty: closed without
/// one.
struct order_case {
    json wish;
    const char *told;
    words answers;
};

const std::string BAD = "Response Status: FSMC-003\nParameter Count: 0\n";
const std::string REFUSED = "(not sent)";

const order_case ORDERS[] = {
    {{{"option", "--answer"}, {"argument", "3"}}, "answers FSMC-003", {BAD, BAD}},
    {{{"option", "--answer"}, {"argument", "3"}, {"once", true}},
     "answers FSMC-003 once",
     {BAD, CORE_DONE}},
    {{{"option", "--close"}, {"argument", ""}}, "closes without an answer", {"", ""}},
    {{{"option", "--close"}, {"argument", ""}, {"once", true}},
     "closes without an answer once",
     {"", CORE_DONE}},
    {{{"option", "--delay"}, {"argument", "1"}}, "waits 1 ms", {CORE_DONE}},
    {{{"option", "--delay"}, {"argument", "1"}, {"once", true}}, "waits 1 ms once", {CORE_DONE}},
    {{{"option", "--refuse"}, {"argument", ""}}, "refuses connections", {REFUSED, REFUSED}},
    {{{"option", ""}}, "", {CORE_DONE}},
    {{{"option", "--refuse"}, {"argument", ""}, {"once", true}},
     "refuses connections once",
     {REFUSED}},
    {{{"option", ""}}, "", {CORE_DONE}},
    {{{"option", "--refuse"}, {"argument", ""}}, "refuses connections", {REFUSED}},
    {{{"option", "--close"}, {"argument", ""}}, "closes without an answer", {""}},
};

TEST(Page, SwitchesAnElementWithALongName) {
    opened_page page;
    const std::string name(1000, 'A');
    for (const char *last : {"B", "C"}) {
        call_service(
            page.simulator.port, "runonelement",
            children("sessionid=DEMO-SESSION|idobject=" + name + last + "|operation=ON|payload=1"));
    }
    const json elements = event_watcher(page.simulator.port).next()["elements"];
    ASSERT_TRUE(
        std::string(elements[0]["key"]).starts_with(std::string(200, 'A') + "...(1001 bytes) "));
    EXPECT_EQ(page.order({{"element", elements[1]["key"]}}, page.token).status, 200);
    const json after = event_watcher(page.simulator.port).next()["elements"];
    EXPECT_EQ(after[0]["status"], "ON");
    EXPECT_EQ(after[1]["status"], "OFF");
}

TEST(Page, TellsADaemonWhatToDo) {
    opened_page page;
    for (const order_case &row : ORDERS) {
        json wish = row.wish;
        wish["daemon"] = "fsmcore";
        EXPECT_EQ(page.order(wish, page.token).status, 200) << wish;
        EXPECT_TRUE(page.shows_told(row.told)) << wish;
        for (const std::string &answer : row.answers) {
            EXPECT_EQ(page.ask(), answer) << wish;
        }
    }
    EXPECT_TRUE(
        page.simulator.program.wait_for_output("FSMCORE: told on the page: nothing any more\n"));
}

TEST(Page, LetsADaemonListenAfterWhatItRefusedOnce) {
    opened_page page;
    page.order({{"daemon", "fsmcore"}, {"option", "--refuse"}, {"once", true}}, page.token);
    EXPECT_EQ(page.ask(), REFUSED);
    ASSERT_TRUE(page.simulator.program.wait_for_output("FSMCORE: listens from now on\n"));
    EXPECT_EQ(page.ask(), CORE_DONE);
}

TEST(Page, TakesBackWhatTheOptionsTold) {
    for (const char *option : {"--refuse", "--close"}) {
        running_simulator simulator({option, "fsmcore"});
        const std::string token = event_watcher(simulator.port).next()["run"];
        EXPECT_EQ(ask_http(simulator.port, "POST /control", "X-Lumosim-Token: " + token + "\r\n",
                           R"({"daemon": "fsmcore", "option": ""})")
                      .status,
                  200);
        EXPECT_EQ(simulator.ask(CORE_SOCKET, CORE_REQUEST), CORE_DONE);
        simulator.end();
        EXPECT_FALSE(std::filesystem::exists(simulator.home.path + "/" + CORE_SOCKET));
    }
}

const std::pair<const char *, const char *> WRONG_ORDERS[] = {
    {"", "parse error"},
    {"[]", "cannot use"},
    {"{}", "'daemon' not found"},
    {R"({"element": "LAMP"})", "no such element"},
    {R"({"element": 7})", "type must be string"},
    {R"({"daemon": "eob"})", "no such daemon"},
    {R"({"daemon": "fsmcore", "option": "--nothing"})", "no option for a daemon that runs"},
    {R"({"daemon": "fsmcore", "option": "--answer-raw", "argument": "@/etc/passwd"})",
     "no option for a daemon that runs"},
    {R"({"daemon": "fsmcore", "option": "--answer", "argument": "x"})", "needs a number from "},
    {R"({"daemon": "fsmcore", "option": "--delay", "argument": "3600001"})",
     "needs a number from 0 to 3600000"},
    {R"({"daemon": "soap", "option": "--refuse"})",
     "this page comes from here; let it close its requests instead"},
};

TEST(Page, IsToldWhatIsWrongWithAnOrder) {
    opened_page page;
    for (const auto &[wish, complaint] : WRONG_ORDERS) {
        const http_reply answer = ask_http(page.simulator.port, "POST /control",
                                           "X-Lumosim-Token: " + page.token + "\r\n", wish);
        EXPECT_EQ(answer.status, 400) << wish;
        EXPECT_NE(answer.body.find(complaint), std::string::npos) << wish << answer.body;
    }
    EXPECT_EQ(page.ask(), CORE_DONE);
}

/// The functions that lumocmd can send to a daemon.
std::set<std::string> functions_of(const protocol::daemon_row &daemon) {
    std::set<std::string> names;
    for (const auto &function : daemon.gateway == nullptr ? std::vector<protocol::function_row>()
                                                          : daemon.gateway->functions) {
        if (function.built == protocol::builder_answer::SENDS) {
            names.insert(function.name);
        }
    }
    if (daemon.socket.empty()) {
        for (const protocol::service_row &row : protocol::SERVICE_FUNCTIONS) {
            names.insert(protocol::function_name(row));
        }
    }
    return names.empty() ? std::set<std::string>{"RUNFUNCTION"} : names;
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
