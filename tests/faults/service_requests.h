// A web-service request of each group of functions, what it shows when it is answered, and what
// when nothing came of it.

#pragma once

#include "tests/harness/console.h"
#include "tests/webservice/http_peer.h"

#include <gtest/gtest.h>
#include <string>

namespace fault_tests {

struct service_request {
    const char *name;
    const char *operation;
    harness::words arguments;
    std::string children;    ///< of the response
    harness::words answered; ///< green lines of an answer
    harness::words failed;   ///< green lines of no answer
    const char *failed_text;
    int failed_status;
};

inline const service_request SERVICE_REQUESTS[] = {
    {"Single",
     "test",
     {"-f", "SERVICE_TEST"},
     "<result>LMWS-042</result>",
     {},
     {},
     "LMCM-502\n",
     502},
    {"Text",
     "retrieveconfiguration",
     {"-f", "SERVICE_RETRIEVECONFIGURATION", "-p", "s"},
     "<result>LMWS-042</result><url>http://c/</url>",
     {"[lumocmd] Url: http://c/"},
     {"[lumocmd] Url: (null)"},
     "LMCM-502\n",
     502},
    {"Record",
     "getelementstatus",
     {"-f", "SERVICE_GETELEMENTSTATUS", "-p", "s|i"},
     "<result>LMWS-042</result><status>on</status><currentvalue>7</currentvalue>",
     {"[lumocmd] Status: on", "[lumocmd] Current Value: 7"},
     {},
     "LMCM-508\n",
     508},
};

/// The service's own number, and how it is shown.
constexpr int SERVICE_STATUS = 42;
inline const char *const SERVICE_STATUS_TEXT = "FSMC-042\n";

/// One request and its answer.
inline harness::script answering_request(const service_request &request) {
    return harness::answering(harness::http_answer(
        harness::envelope(harness::response_element(request.operation, request.children))));
}

/// The green lines stand behind `-v ON`, which comes last.
inline harness::words arguments_of(const service_request &request, const harness::peer &service) {
    harness::words all = {"-t", "SOAP", "-u", harness::url_of(service)};
    all.insert(all.end(), request.arguments.begin(), request.arguments.end());
    all.insert(all.end(), {"-v", "ON"});
    return all;
}

inline std::string green_lines(pid_t pid, const harness::words &lines) {
    std::string whole;
    for (const std::string &line : lines) {
        whole += harness::green(pid, line);
    }
    return whole;
}

inline void expect_answered(const service_request &request, const harness::run_result &run) {
    EXPECT_EQ(run.output, green_lines(run.pid, request.answered) + SERVICE_STATUS_TEXT);
    EXPECT_EQ(run.errors, "");
    EXPECT_EQ(run.status, SERVICE_STATUS);
}

/// The runtime's words are its own; it says them once.
inline void expect_failed(const service_request &request, const harness::run_result &run,
                          const std::string &reason = "") {
    EXPECT_EQ(run.output, green_lines(run.pid, request.failed) + request.failed_text);
    EXPECT_EQ(run.status, request.failed_status & 0xff);
    const std::string start = "SOAP 1.1 fault ";
    EXPECT_EQ(run.errors.rfind(start), 0U) << run.errors;
    EXPECT_NE(run.errors.find(reason), std::string::npos) << run.errors;
}

} // namespace fault_tests
