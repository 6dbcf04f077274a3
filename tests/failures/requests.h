// A request of every kind: to FSMCore, to a gateway, and to the web service for each status that a
// failed call has. What is answered, and what an answer or none of it looks like.

#pragma once

#include "tests/fsmcore/fsmcore_exchanges.h"
#include "tests/gateways/exchange_messages.h"
#include "tests/harness/console.h"
#include "tests/harness/peer.h"
#include "tests/webservice/http_peer.h"

#include <cerrno>
#include <cstring>
#include <gtest/gtest.h>
#include <span>
#include <string>
#include <vector>

namespace failure_tests {

struct request {
    bool is_service() const {
        return where == harness::family::LOOPBACK;
    }

    std::string name;
    harness::family where; ///< the daemons have sockets, the services ports
    harness::words arguments;
    harness::script answered; ///< of a daemon: all that it is sent, and its answer
    int failed_status = 0;    ///< of a service
};

inline const std::vector<request> &every_request() {
    using namespace harness;
    const protocol::gateway_row &gateway = protocol::any_gateway();
    const protocol::function_row &function = gateway.functions.front();
    const std::string result = "<result>LMWS-042</result>";
    static const std::vector<request> all = {
        {"Fsmcore",
         family::UNIX_SOCKET,
         {"-t", "FSMCORE", "-f", "GETSTATE", "-p", "12|on"},
         {expect("Request: GETSTATE\nParameter Count: 2\nParam000 Length: 2\nParam000:\n12\n"
                 "Param001 Length: 2\nParam001:\non\nWaittime: 5\n\n"),
          reply("Response Status: FSMC-0042\nParameter Count: 2\nParam000 Length: 3\nParam000:\n"
                "yes\nParam001 Length: 2\nParam001:\nno\n")}},
        {"Gateway",
         family::UNIX_SOCKET,
         {"-t", std::string(gateway.name) + "LOCAL", "-f", function.name, "-p", function.sample},
         {expect(sample_request(function, function.name)),
          reply("Response Status: " + std::string(gateway.prefix) + "0042\n")}},
        {"Text",
         family::LOOPBACK,
         {"-t", "SOAP", "-f", "SERVICE_RETRIEVECONFIGURATION", "-p", "s"},
         answering(http_response("retrieveconfiguration", result + "<url>http://c/</url>")),
         502},
        {"Record",
         family::LOOPBACK,
         {"-t", "SOAP", "-f", "SERVICE_GETELEMENTSTATUS", "-p", "s|i"},
         answering(http_response("getelementstatus", result + "<status>on</status>")),
         508},
    };
    return all;
}

inline std::span<const request> daemon_requests() {
    return std::span(every_request()).first(2);
}

inline std::span<const request> service_requests() {
    return std::span(every_request()).subspan(2);
}

/// The whole command for a peer.
inline harness::words arguments_of(const request &wanted, const harness::meeting_point &at) {
    harness::words all = wanted.arguments;
    all.emplace_back(wanted.is_service() ? "-u" : "-s");
    all.push_back(wanted.is_service() ? harness::url_of(*at.daemon) : at.path);
    return all;
}

// ---------------------------------------------------------------------------------------------

/// What is shown, and how the run ends.
struct outcome {
    std::string output;
    int status;
};

inline void expect_outcome(const harness::run_result &run, const outcome &wanted) {
    harness::expect_run(run, wanted.output, wanted.status);
}

/// Of every request that is answered.
inline const outcome ANSWERED = {"FSMC-042\n", 42};

/// Where an exchange with a daemon can fail, by the number of the gateway's message.
enum failure { OPENING = 1, SENDING = 3, RECEIVING, NO_STATUS_LINE, BAD_NUMBER = 7, FURTHER_TEXT };

inline outcome failed(const request &daemon, failure how, int error = 0) {
    const int step = how == OPENING ? 5 : how == SENDING ? 6 : 7;
    const std::string reason = strerror(error);
    if (daemon.name == "Fsmcore") {
        const int number = how == OPENING ? 1 : how == FURTHER_TEXT ? 12 : how - 1;
        return {harness::red(fsmcore_message(LOCAL, number, "GETSTATE", reason)) + "FSMC-00" +
                    std::to_string(step + 1) + "\n",
                step + 1};
    }
    const protocol::gateway_row &gateway = protocol::any_gateway();
    const int code = gateway.base + step;
    return {harness::red(exchange_message(gateway, how, gateway.functions.front().name, reason)) +
                shown_code(gateway, code) + "\n",
            code};
}

/// The red line of the connector, and the failure that follows from it.
inline outcome unconnected(const request &daemon, const std::string &call, int error) {
    outcome whole = failed(daemon, OPENING);
    whole.output.insert(0, harness::red("utility->make_localtcpclient_socket " + call +
                                        " failed with error '" + strerror(error) + "'"));
    return whole;
}

/// A service's failure is reported in the runtime's words, once.
inline void expect_reported(const request &service, const harness::run_result &run,
                            const std::string &reason = "") {
    const int code = service.failed_status;
    harness::expect_run(run, "LMCM-" + std::to_string(code) + "\n", code, run.errors);
    EXPECT_NE(run.errors.find(" fault "), std::string::npos) << run.errors;
    EXPECT_NE(run.errors.find(reason), std::string::npos) << run.errors;
    const std::size_t detail = run.errors.find("\nDetail: ");
    EXPECT_NE(detail, std::string::npos) << run.errors;
    EXPECT_EQ(detail, run.errors.rfind("\nDetail: ")) << run.errors;
}

// ---------------------------------------------------------------------------------------------

/// Whether memory and time are the shipped program's own. Instrumented and emulated ones are slow
/// and large: they get smaller floods and no bounds.
inline bool is_shipped_program() {
#ifdef NDEBUG
    return !harness::is_wrapped();
#else
    return false;
#endif
}

/// How much of a flood this program is sent.
inline std::size_t flooded(std::size_t size) {
    return is_shipped_program() ? size : size / 64;
}

} // namespace failure_tests
