// The bytes that docs/protocols.md shows, sent and expected; and the example daemon that is written
// after it.

#include "tests/recipes/shell_room.h"
#include "tests/webservice/http_peer.h"

#include <regex>
#include <sstream>

namespace {

using namespace harness;

const std::string PAGE = read_file(PROJECT_DIRECTORY "/docs/protocols.md");

std::string bytes(const std::string &name) {
    std::size_t at = 0;
    return text_between(PAGE, at, "<!-- bytes " + name + " -->\n```text\n", "```\n");
}

/// An HTTP message as it travels, up to the end of its XML: its head's lines with carriage returns,
/// its XML unbroken.
std::string http_bytes(const std::string &name) {
    const std::string text = bytes(name);
    const std::size_t body = text.find("\n\n") + 2;
    const std::size_t envelope = text.find("?>\n") + 3;
    const std::string line = std::regex_replace(text.substr(envelope), std::regex(">\n *"), ">");
    return replaced(text.substr(0, body), "\n", "\r\n") + text.substr(body, envelope - body) +
           std::regex_replace(line, std::regex("\n *"), " ");
}

/// A row of an answer table: what the daemon sends, nothing where it closes at once, and the last
/// line of the tool.
using answer_row = std::pair<std::string, std::string>;

std::vector<answer_row> answers(const std::string &name) {
    std::vector<answer_row> rows;
    const std::regex row(R"(\| (?:`(.*)`|nothing, .*) \| `(.*)` \|)");
    std::size_t at = 0;
    text_between(PAGE, at, "<!-- answers " + name + " -->\n", "---|\n");
    std::istringstream table(text_between(PAGE, at, "---|\n", "\n\n"));
    for (std::string line; std::getline(table, line);) {
        std::smatch found;
        EXPECT_TRUE(std::regex_match(line, found, row)) << line;
        rows.emplace_back(replaced(replaced(found[1], "\\n", "\n"), "\\r", "\r"), found[2]);
    }
    EXPECT_FALSE(rows.empty()) << name;
    return rows;
}

std::string last_line(const std::string &output) {
    const std::string text = output.substr(0, output.rfind('\n'));
    return text.substr(text.rfind('\n') + 1);
}

const std::pair<std::string, words> DAEMONS[] = {
    {"gateway",
     {"-t", "BENTELLOCAL", "-f", "SENDBENTELCOMMANDDATAGRAM", "-p", "hall|1234|ARM|1", "-s"}},
    {"fsmcore", {"-t", "FSMCORE", "-f", "GETSTATE", "-p", "12|on", "-s"}}};
const words GETELEMENTSTATUS = {
    "-f", "SERVICE_GETELEMENTSTATUS", "-p", "DEMO-SESSION|LIVING-LAMP", "-v", "ON"};

std::string call(words arguments, const std::string &path) {
    arguments.push_back(path);
    return lumocmd(arguments).output;
}

TEST(Protocols, ShowExchangesOfDaemonsAndWhatBecomesOfAnswers) {
    for (const auto &[name, arguments] : DAEMONS) {
        std::vector<answer_row> rows = answers(name);
        rows.emplace_back(bytes(name + "_answer"), "LMCM-0000");
        for (const auto &[answer, last] : rows) {
            SCOPED_TRACE(answer);
            const meeting_point daemon(family::UNIX_SOCKET, {expect(bytes(name + "_request")),
                                                             reply(answer), close_connection()});
            EXPECT_EQ(last_line(call(arguments, daemon.path)), last);
            EXPECT_EQ(daemon.daemon->finish(), "");
        }
    }
}

/// The simulated daemon takes the request that the page shows.
TEST(Protocols, ShowRequestsThatDaemonsTake) {
    running_simulator simulator;
    EXPECT_EQ(simulator.ask("lumo_bentelgateway.socket", bytes("gateway_request")),
              bytes("gateway_answer"));
    const std::string answer = simulator.ask(CORE_SOCKET, bytes("fsmcore_request"));
    EXPECT_EQ(answer.rfind("Response Status: FSMC-000\nParameter Count: 2\n", 0), 0U) << answer;
    const int connection = connect_port(simulator.port);
    ASSERT_GE(connection, 0);
    ASSERT_TRUE(send_bytes(connection, http_bytes("service_request") + "\r\n"));
    const std::string service = read_all(connection);
    EXPECT_NE(service.find("<result>LMWS-000</result>"), std::string::npos) << service;
}

TEST(Protocols, ShowTheServicesExchange) {
    peer service(answering(http_bytes("service_answer")));
    const std::string host = "Host: 127.0.0.1:" + std::to_string(service.port());
    const run_result seen = call_service(service, GETELEMENTSTATUS);
    EXPECT_EQ(service.finish(), "");
    EXPECT_EQ(service.received(),
              replaced(http_bytes("service_request"), "Host: localhost", host) + "\r\n");
    const http_request request = split_request(service.received());
    EXPECT_EQ(request.header("Content-Length"), std::to_string(request.body.size()));
    EXPECT_NE(seen.output.find("[lumocmd] Status: OFF"), std::string::npos) << seen.output;
    EXPECT_EQ(last_line(seen.output), "LMCM-0000");
    EXPECT_EQ(seen.errors, "");
}

TEST(Protocols, ShowTheServicesFault) {
    for (const auto &[arguments, last] :
         {std::pair(GETELEMENTSTATUS, "LMCM-508"), {{"-f", "SERVICE_TEST"}, "LMCM-502"}}) {
        const run_result seen = call_answered(http_bytes("service_fault"), arguments);
        EXPECT_EQ(seen.errors, fault_report("SOAP-ENV:Client", "no such operation"));
        EXPECT_EQ(last_line(seen.output), last);
    }
}

TEST(Protocols, ShowWhatBecomesOfTheServicesResults) {
    const std::string shown = "<result>LMWS-000</result>";
    const std::string answer = http_bytes("service_answer");
    for (const auto &[text, last] : answers("service")) {
        SCOPED_TRACE(text);
        const std::string result = text.empty() ? "" : element("result", text);
        const run_result seen = call_answered(replaced(answer, shown, result), GETELEMENTSTATUS);
        EXPECT_EQ(last_line(seen.output), last);
    }
}

/// What the program does not send, and its answer.
const std::pair<const char *, const char *> ODD_REQUESTS[] = {
    {"Request: SENDBENTELCOMMANDDATAGRAM\nSectionName: a\nUserCode: 1234\nCommand: b\n"
     "Payload: c: d\n\n",
     "Response Status: BENG-0000\n"},
    {"Request: SENDBENTELCOMMANDDATAGRAM\nSectionName: a\nCommand: b\nUserCode: 1234\n"
     "Payload: c\n\n",
     "Response Status: BENG-1302\n"},
    {"Request: OTHER\n\n", "Response Status: BENG-1301\n"},
    {"\n\n", "Response Status: BENG-1302\n"},
    {"Request: \xff\n\n", "Response Status: BENG-1301\n"},
};

TEST(ExampleDaemon, ServesTheProgramAndRefusesWhatIsNoRequest) {
    const temporary_directory directory;
    const std::string path = directory.path + "/lumo_bentelgateway.socket";
    started_program daemon(
        {"/usr/bin/python3", PROJECT_DIRECTORY "/docs/examples/gateway_daemon.py", path});
    ASSERT_TRUE(daemon.wait_for_output("ready\n")) << daemon.errors();
    const auto arm = [&](const char *function, const std::string &list) {
        return call({"-t", "BENTELLOCAL", "-f", function, "-p", list, "-s"}, path);
    };
    const char *const function = "SENDBENTELCOMMANDDATAGRAM";
    EXPECT_EQ(arm(function, "hall|1234|ARM|1"), "LMCM-0000\n");
    EXPECT_EQ(arm("sendbentelcommanddatagram", "hall|9|ARM|1"), "BENT-1303\n");
    // The program connects and sends nothing; the daemon goes on.
    const std::string text(400, 'a');
    EXPECT_EQ(last_line(arm(function, text + "|" + text + "|" + text + "|1")), "BENT-1306");
    // A value with a line feed brings a line of its own.
    EXPECT_EQ(arm(function, "hall|1234|ARM\nPayload: 0|1"), "BENT-1302\n");
    for (const bool drip : {false, true}) {
        for (const auto &[sent, answer] : ODD_REQUESTS) {
            EXPECT_EQ(ask_daemon(path, sent, drip), answer) << sent;
        }
    }
    const std::string answer = ask_daemon(path, std::string(2000, 'x'));
    EXPECT_EQ(answer.rfind("Response Status: BENG-1302\n", 0), 0U) << answer;
    EXPECT_EQ(arm(function, "hall|1234|ARM|1"), "LMCM-0000\n");
    EXPECT_TRUE(daemon.wait_for_output("hall: ARM 1\n"));
}

} // namespace
