#include "tests/failures/requests.h"

#include "tests/fsmcore/fsmcore_exchanges.h"
#include "tests/gateways/exchange_messages.h"
#include "tests/harness/console.h"
#include "tests/webservice/http_peer.h"

#include <cstring>
#include <gtest/gtest.h>

namespace failure_tests {

using harness::family;
using harness::words;

const protocol::gateway_row &sample_gateway() {
    return protocol::any_gateway();
}

namespace {

request gateway_request() {
    const protocol::gateway_row &row = sample_gateway();
    const protocol::function_row &function = row.functions.front();
    request made = {.name = "Gateway",
                    .where = family::UNIX_SOCKET,
                    .arguments = {"-t", std::string(row.name) + "LOCAL", "-f", function.name, "-p",
                                  function.sample},
                    .answered = {},
                    .text = protocol::sample_request(function, function.name),
                    .prefix = row.prefix,
                    .base = row.base,
                    .shown = [](int code) { return protocol::shown_code(sample_gateway(), code); }};
    const int numbers[FAILURES] = {1, 3, 4, 5, 6, 7, 8};
    for (int i = 0; i < FAILURES; i++) {
        made.messages[i] = exchange_message(row, numbers[i], function.name, "%s");
    }
    return made;
}

request fsmcore_request() {
    request made = {.name = "Fsmcore",
                    .where = family::UNIX_SOCKET,
                    .arguments = {"-t", "FSMCORE", "-f", "GETSTATE", "-p", "12|on"},
                    .answered = {},
                    .text = "Request: GETSTATE\nParameter Count: 2\nParam000 Length: 2\nParam000:\n"
                            "12\nParam001 Length: 2\nParam001:\non\nWaittime: 5\n\n",
                    .prefix = "FSMC-",
                    .rest = "Parameter Count: 2\nParam000 Length: 3\nParam000:\nyes\n"
                            "Param001 Length: 2\nParam001:\nno\n",
                    .base = 1,
                    .shown = [](int code) { return "FSMC-00" + std::to_string(code); }};
    const int numbers[FAILURES] = {1, 2, 3, 4, 5, 6, 12};
    for (int i = 0; i < FAILURES; i++) {
        made.messages[i] = fsmcore_message(LOCAL, numbers[i], "GETSTATE", "%s");
    }
    return made;
}

request service_request(const char *name, const char *operation, const words &call,
                        const char *children) {
    using namespace harness;
    request made = {.name = name, .where = family::LOOPBACK, .arguments = call, .answered = {}};
    made.answered =
        answering(http_response(operation, std::string("<result>LMWS-042</result>") + children));
    made.failed_status = 502;
    return made;
}

std::vector<request> all_requests() {
    std::vector<request> all = {fsmcore_request(), gateway_request()};
    for (request &daemon : all) {
        daemon.answered = {harness::expect(daemon.text), harness::reply(answer_of(daemon, "0042"))};
    }
    all.push_back(service_request("Single", "test", {"-f", "SERVICE_TEST", "-v", "ON"}, ""));
    all.push_back(service_request("Text", "retrieveconfiguration", harness::TEXT_CALL,
                                  "<url>http://c/</url>"));
    all.back().lines = {"[lumocmd] Url: http://c/"};
    all.back().failed_lines = {"[lumocmd] Url: (null)"};
    all.push_back(service_request("Record", "getelementstatus", harness::RECORD_CALL,
                                  "<status>on</status><currentvalue>7</currentvalue>"));
    all.back().lines = {"[lumocmd] Status: on", "[lumocmd] Current Value: 7"};
    all.back().failed_status = 508;
    return all;
}

std::string green_lines(pid_t pid, const words &lines) {
    std::string whole;
    for (const std::string &line : lines) {
        whole += harness::green(pid, line);
    }
    return whole;
}

} // namespace

std::span<const request> every_request() {
    static const std::vector<request> all = all_requests();
    return all;
}

std::span<const request> daemon_requests() {
    return every_request().first(2);
}

std::span<const request> service_requests() {
    return every_request().subspan(2);
}

std::string answer_of(const request &daemon, const std::string &number) {
    return "Response Status: " + daemon.prefix + number + "\n" + daemon.rest;
}

words arguments_of(const request &wanted, const harness::meeting_point &at) {
    words all = {"-s", at.path};
    if (wanted.where == family::LOOPBACK) {
        all = {"-t", "SOAP", "-u", harness::url_of(*at.daemon)};
    }
    all.insert(all.end(), wanted.arguments.begin(), wanted.arguments.end());
    return all;
}

outcome failed(const request &daemon, failure how, int error) {
    std::string message = daemon.messages[how];
    if (const std::size_t at = message.find("%s"); at != std::string::npos) {
        message.replace(at, 2, strerror(error));
    }
    const int code = daemon.base + (how == OPENING ? 5 : how == SENDING ? 6 : 7);
    return {harness::red(message) + daemon.shown(code) + "\n", code & 0xff};
}

outcome unconnected(const request &daemon, const std::string &call, int error) {
    outcome whole = failed(daemon, OPENING);
    whole.output.insert(0, harness::red("utility->make_localtcpclient_socket " + call +
                                        " failed with error '" + strerror(error) + "'"));
    return whole;
}

void expect_outcome(const harness::run_result &run, const outcome &wanted) {
    EXPECT_EQ(run.output, wanted.output);
    EXPECT_EQ(run.errors, "");
    EXPECT_EQ(run.status, wanted.status & 0xff);
}

void expect_answered(const request &wanted, const harness::run_result &run, bool is_output_lost) {
    const std::string whole = green_lines(run.pid, wanted.lines) + ANSWERED_TEXT;
    expect_outcome(run, {is_output_lost ? "" : whole, ANSWERED});
}

void expect_reported(const request &service, const harness::run_result &run,
                     const std::string &reason) {
    EXPECT_EQ(run.output, green_lines(run.pid, service.failed_lines) + "LMCM-" +
                              std::to_string(service.failed_status) + "\n");
    EXPECT_EQ(run.status, service.failed_status & 0xff);
    EXPECT_NE(run.errors.find(" fault "), std::string::npos) << run.errors;
    EXPECT_NE(run.errors.find(reason), std::string::npos) << run.errors;
    const std::size_t detail = run.errors.find("\nDetail: ");
    EXPECT_NE(detail, std::string::npos) << run.errors;
    EXPECT_EQ(detail, run.errors.rfind("\nDetail: ")) << run.errors;
}

bool is_shipped_program() {
#ifdef NDEBUG
    return !harness::is_wrapped();
#else
    return false;
#endif
}

std::size_t flooded(std::size_t size) {
    return is_shipped_program() ? size : size / 64;
}

} // namespace failure_tests
