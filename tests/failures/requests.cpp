#include "tests/failures/requests.h"

#include "tests/fsmcore/fsmcore_exchanges.h"
#include "tests/gateways/exchange_messages.h"
#include "tests/harness/console.h"
#include "tests/webservice/http_peer.h"

#include <cstring>

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
    return {.name = "Gateway",
            .where = family::UNIX_SOCKET,
            .arguments = {"-t", std::string(row.name) + "LOCAL", "-f", function.name, "-p",
                          function.sample},
            .answered = {},
            .text = protocol::sample_request(function, function.name),
            .prefix = row.prefix,
            .base = row.base,
            .shown = [](int code) { return protocol::shown_code(sample_gateway(), code); },
            .message =
                [](failure how, const std::string &reason) {
                    return exchange_message(sample_gateway(), how == OPENING ? 1 : how + 2,
                                            sample_gateway().functions.front().name, reason);
                }};
}

request fsmcore_request() {
    return {.name = "Fsmcore",
            .where = family::UNIX_SOCKET,
            .arguments = {"-t", "FSMCORE", "-f", "GETSTATE", "-p", "12|on"},
            .answered = {},
            .text = "Request: GETSTATE\nParameter Count: 2\nParam000 Length: 2\nParam000:\n12\n"
                    "Param001 Length: 2\nParam001:\non\nWaittime: 5\n\n",
            .prefix = "FSMC-",
            .rest = "Parameter Count: 2\nParam000 Length: 3\nParam000:\nyes\n"
                    "Param001 Length: 2\nParam001:\nno\n",
            .base = 1,
            .shown = [](int code) { return "FSMC-00" + std::to_string(code); },
            .message =
                [](failure how, const std::string &reason) {
                    return fsmcore_message(LOCAL, how == FURTHER_TEXT ? 12 : how + 1, "GETSTATE",
                                           reason);
                }};
}

request service_request(const char *name, const char *operation, const words &call,
                        const std::string &children, int failed_status,
                        std::string (*lines)(pid_t, bool)) {
    const std::string answer =
        harness::http_response(operation, "<result>LMWS-042</result>" + children);
    return {.name = name,
            .where = family::LOOPBACK,
            .arguments = call,
            .answered = harness::answering(answer),
            .lines = lines,
            .failed_status = failed_status};
}

std::vector<request> all_requests() {
    std::vector<request> all = {fsmcore_request(), gateway_request()};
    for (request &daemon : all) {
        daemon.answered = {harness::expect(daemon.text), harness::reply(answer_of(daemon, "0042"))};
    }
    all.push_back(service_request("Single", "test", harness::SINGLE_CALL, "", 502, no_lines));
    all.push_back(service_request("Text", "retrieveconfiguration", harness::TEXT_CALL,
                                  "<url>http://c/</url>", 502, [](pid_t pid, bool is_answered) {
                                      return harness::text_line(pid, is_answered ? "http://c/"
                                                                                 : "(null)");
                                  }));
    all.push_back(service_request(
        "Record", "getelementstatus", harness::RECORD_CALL,
        "<status>on</status><currentvalue>7</currentvalue>", 508, [](pid_t pid, bool is_answered) {
            return is_answered ? harness::record_lines(pid, "on", "7") : "";
        }));
    return all;
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
    if (wanted.is_service()) {
        all = {"-t", "SOAP", "-u", harness::url_of(*at.daemon)};
    }
    all.insert(all.end(), wanted.arguments.begin(), wanted.arguments.end());
    return all;
}

outcome failed(const request &daemon, failure how, int error) {
    const int code = daemon.base + (how == OPENING ? 5 : how == SENDING ? 6 : 7);
    return {harness::red(daemon.message(how, strerror(error))) + daemon.shown(code) + "\n", code};
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
    const std::string whole = wanted.lines(run.pid, true) + ANSWERED_TEXT;
    expect_outcome(run, {is_output_lost ? "" : whole, ANSWERED});
}

void expect_every_answer(const harness::start_options &options, bool is_output_lost) {
    for (const request &wanted : every_request()) {
        SCOPED_TRACE(wanted.name);
        const harness::meeting_point point(wanted.where, wanted.answered);
        expect_answered(wanted, harness::lumocmd(arguments_of(wanted, point), options),
                        is_output_lost);
        EXPECT_EQ(point.daemon->finish(), "");
    }
}

void expect_reported(const request &service, const harness::run_result &run,
                     const std::string &reason) {
    EXPECT_EQ(run.output, service.lines(run.pid, false) + "LMCM-" +
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
