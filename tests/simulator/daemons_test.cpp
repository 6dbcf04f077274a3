// FSMCore and the gateways: which requests they carry out, and which they refuse.
#include "tests/protocol/daemons.h"
#include "tests/simulator/simulator_process.h"

#include <gtest/gtest.h>
#include <regex>
#include <sys/socket.h>

namespace {

using namespace harness;
using namespace protocol;

const daemon_row CORE = daemons()[0];
const daemon_row SAMPLE = daemons()[1];

/// All but FSMCore and the web service.
std::vector<daemon_row> gateways() {
    const std::vector<daemon_row> all = daemons();
    return {all.begin() + 1, all.end() - 1};
}

std::string status_line(const daemon_row &daemon, int error) {
    return "Response Status: " + status_text(daemon, error == 0 ? 0 : daemon.base + error) + "\n";
}

/// A proper request with its first match of the pattern replaced.
std::string damaged(const std::string &request, const std::string &pattern, const std::string &by) {
    return std::regex_replace(request, std::regex(pattern), by,
                              std::regex_constants::format_first_only);
}

/// What the log says behind the last arrow of each line.
std::string outcomes(const std::string &log) {
    return std::regex_replace(log, std::regex(".* -> (.*\n)"), "$1");
}

TEST(Gateways, CarryOutEveryRequest) {
    running_simulator simulator;
    std::string log;
    for (const daemon_row &daemon : gateways()) {
        for (const function_row &function : daemon.gateway->functions) {
            for (const std::string &name : {std::string(function.name), lower(function.name)}) {
                // In one write, and in single bytes.
                const bool drip = name != function.name;
                EXPECT_EQ(simulator.ask(daemon.socket, sample_request(function, name), drip),
                          status_line(daemon, 0))
                    << name << " is a row of simulator/daemons.cpp or of tests/protocol/gateways.h";
                log += daemon.name + ": " + name + " " + sample_values(function) + " -> " +
                       status_text(daemon, 0) + "\n";
            }
        }
    }
    EXPECT_EQ(simulator.end(), log);
}

TEST(Gateways, RefuseMalformedRequests) {
    const function_row &function = SAMPLE.gateway->functions[0];
    const words tags = names_of(function.lines);
    const std::string end = std::to_string(tags.size() + 1);
    /// A pattern, what stands there instead, the error, and the complaint.
    const std::tuple<const char *, std::string, int, std::string> damages[] = {
        {"^Request: ", "Hello ", 2, "line 1 is not 'Request: ...'"},
        {"^(.*)", "Request: X", 1, "unknown request name"},
        {"\n(\\w+): ", "\n$1:", 2, "line 2 is not '" + tags[0] + ": ...'"},
        {"\n\\w", "\nx", 2, "line 2 is not '" + tags[0] + ": ...'"},
        {"(\n.*)(\n.*)", "$2$1", 2, "line 2 is not '" + tags[0] + ": ...'"},
        {"(\n.*)\n", "$1\nb\n", 2, "line 3 is not '" + tags[1] + ": ...'"},
        {"\n.*\n\n$", "\n\n", 2, "line " + end + " is not '" + tags.back() + ": ...'"},
        {"\n\n$", "\nMore: x\n\n", 2, "a line too many"},
        {"\n\n$", "\n\nmore", 2, "bytes after the empty line"},
        {"\n\n$", std::string("\n\n\0", 3), 2, "bytes after the empty line"},
        {"(\n.*)", std::string("$1\0", 3), 2, tags[0] + ": holds a zero byte"},
    };
    running_simulator simulator;
    std::string expected;
    for (const auto &[pattern, by, error, complaint] : damages) {
        const std::string request = damaged(sample_request(function, function.name), pattern, by);
        EXPECT_EQ(simulator.ask(SAMPLE.socket, request), status_line(SAMPLE, error)) << request;
        expected += status_text(SAMPLE, SAMPLE.base + error) + " (" + complaint + ")\n";
    }
    EXPECT_EQ(outcomes(simulator.end()), expected);
}

TEST(Gateways, RefuseOtherFixedValuesAndWidths) {
    running_simulator simulator;
    std::string expected;
    for (const daemon_row &daemon : gateways()) {
        const auto refuse = [&](const std::string &request, const std::string &complaint) {
            EXPECT_EQ(simulator.ask(daemon.socket, request), status_line(daemon, 3)) << request;
            expected += status_text(daemon, daemon.base + 3) + " (" + complaint + ")\n";
        };
        for (const function_row &function : daemon.gateway->functions) {
            const std::string request = sample_request(function, function.name);
            for (const width_row &width : function.widths) {
                const std::string tag = names_of(function.lines)[width.item - 1] + ": ";
                refuse(damaged(request, tag, tag + "0"),
                       tag + "must be " + std::to_string(width.width) + " characters long");
            }
            std::smatch fixed;
            const std::string lines = function.lines;
            if (std::regex_search(lines, fixed, std::regex("(\\w+: )([^{}\n]+)\n"))) {
                refuse(damaged(request, fixed.str(1), fixed.str(1) + "0"),
                       fixed.str(1) + "must be " + fixed.str(2));
            }
        }
    }
    EXPECT_EQ(outcomes(simulator.end()), expected);
    EXPECT_NE(expected, "");
}

const std::string PARAMETERS = "Request: f\nParameter Count: 3\nParam000 Length: 1\nParam000:\na\n"
                               "Param001 Length: 0\nParam001:\n\nParam002 Length: 5\nParam002:\n"
                               "b\n\nc:\nWaittime: 5\n\n";

/// An empty parameter comes back as its length line alone.
const std::string PARAMETERS_ANSWER =
    "Response Status: FSMC-000\nParameter Count: 3\nParam000 Length: 1\nParam000:\na\n"
    "Param001 Length: 0\nParam002 Length: 5\nParam002:\nb\n\nc:\n";

const std::pair<const char *, const char *> CORE_DAMAGES[] = {
    {"Length: 5", "Length: 4"},
    {"Length: 5", "Length: 6"},
    {"Length: 5", "Length: 5x"},
    {"Length: 5", "Length: 05"},
    {"Count: 3", "Count: -3"},
    {"Count: 3", "Count: 2"},
    {"Count: 3", "Count: 4"},
    {"Count: 3\n", "Count: 3\r\n"},
    {"Param000 Length", "Param001 Length"},
    {"Param000:", "Param001:"},
    {"Waittime: 5\n", ""},
    {"Waittime: 5", "Waittime: x"},
    {"Request: f", "Request: "},
    {"$", "more"},
};

TEST(FsmCore, ReturnsParametersAndRefusesMalformedRequests) {
    running_simulator simulator;
    for (const bool drip : {false, true}) {
        EXPECT_EQ(simulator.ask(CORE.socket, PARAMETERS, drip), PARAMETERS_ANSWER);
    }
    for (const auto &[part, by] : CORE_DAMAGES) {
        EXPECT_EQ(simulator.ask(CORE.socket, damaged(PARAMETERS, part, by)),
                  "Response Status: FSMC-002\nParameter Count: 0\n")
            << part << by;
    }
    const std::string log = simulator.end();
    const std::string line = "FSMCORE: f a||b\\n\\nc: -> FSMC-000\n";
    EXPECT_TRUE(log.starts_with(line + line)) << log;
}

/// What comes of a request that has no end.
TEST(Reading, IsBounded) {
    running_simulator simulator({"--patience", "500"});
    std::string expected;
    for (const daemon_row &daemon : {CORE, SAMPLE}) {
        const std::string rest = daemon.gateway == nullptr ? "Parameter Count: 0\n" : "";
        const int half = connect_socket(simulator.home.path + "/" + daemon.socket);
        ASSERT_TRUE(send_bytes(half, "Request: f"));
        shutdown(half, SHUT_WR);
        EXPECT_EQ(read_all(half), status_line(daemon, 2) + rest);
        EXPECT_EQ(simulator.ask(daemon.socket, "Request: f"), status_line(daemon, 2) + rest);
        EXPECT_EQ(simulator.ask(daemon.socket, "Request: " + std::string(200000, 'a')),
                  status_line(daemon, 4) + rest);
        for (const auto &[error, reason] :
             {std::pair(2, "the client closed before the end of its request"),
              std::pair(2, "the client took too long over its request"),
              std::pair(4, "the request is too long")}) {
            expected += status_text(daemon, daemon.base + error) + " (" + reason + ")\n";
        }
    }
    EXPECT_EQ(outcomes(simulator.end()), expected);
}

} // namespace
