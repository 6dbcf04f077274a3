// Every call to the kernel fails in turn under a web-service request: it is answered, or the
// runtime reports its failure and the status tells of no answer.

#include "tests/faults/fault.h"
#include "tests/faults/service_requests.h"

#include <cerrno>
#include <cstring>
#include <netdb.h>

namespace {

using namespace fault_tests;
using harness::peer;

/// What a fault comes to.
enum class outcome {
    ANSWERED, ///< nothing is lost
    FAILED,   ///< reported, without an answer
    EITHER,   ///< the runtime decides
};

class ServiceCalls : public testing::TestWithParam<service_request> {
  protected:
    void SetUp() override {
        SKIP_UNLESS_REACHABLE();
    }

    void run(const fault &wanted, outcome expected, const std::string &reason = "") {
        SCOPED_TRACE(described(wanted));
        peer service(answering_request(request));
        const faulty_run seen = lumocmd_with(wanted, arguments_of(request, service));
        const std::string complaint = service.finish();
        EXPECT_FALSE(seen.hits.empty()) << "the call was never made";
        EXPECT_EQ(seen.records, harness::words());
        if (expected == outcome::FAILED ||
            (expected == outcome::EITHER && seen.run.status != SERVICE_STATUS)) {
            expect_failed(request, seen.run, reason);
        } else {
            expect_answered(request, seen.run);
            EXPECT_EQ(complaint, "");
        }
    }

    const service_request &request = GetParam();
};

TEST_P(ServiceCalls, FailureIsReportedWithItsReason) {
    struct {
        const char *call;
        std::vector<int> errors;
    } const rows[] = {
        {"socket", {EACCES, EMFILE, ENFILE, ENOBUFS, ENOMEM}},
        {"connect", {EACCES, EADDRNOTAVAIL, ECONNREFUSED, EHOSTUNREACH, ENETUNREACH, ETIMEDOUT}},
        {"send", {ECONNRESET, ENOBUFS, ENOMEM, EPIPE, ETIMEDOUT}},
        {"recv", {ECONNRESET, EHOSTUNREACH, ENOMEM, ETIMEDOUT}},
    };
    for (const auto &row : rows) {
        for (const int error : row.errors) {
            run({.call = row.call, .error = error}, outcome::FAILED, strerror(error));
        }
    }
}

TEST_P(ServiceCalls, UnresolvedHostIsReported) {
    for (const int error : {EAI_AGAIN, EAI_FAIL, EAI_MEMORY, EAI_NONAME}) {
        run({.call = "getaddrinfo", .error = -error}, outcome::FAILED, gai_strerror(error));
    }
}

TEST_P(ServiceCalls, OpenAndCloseChangeNothing) {
    for (const int error : {EINTR, EIO, EMFILE}) {
        run({.call = "open", .error = error}, outcome::ANSWERED);
        run({.call = "close", .error = error, .onwards = true}, outcome::ANSWERED);
    }
}

/// Unlike the daemons' exchanges the runtime sends on until all is sent, and reads until it has
/// all.
TEST_P(ServiceCalls, PartsAddUpToTheWhole) {
    for (const int taken : {1, 7, 100}) {
        run({.call = "send", .limit = taken, .onwards = true}, outcome::ANSWERED);
        run({.call = "recv", .limit = taken, .onwards = true}, outcome::ANSWERED);
    }
}

TEST_P(ServiceCalls, EndOfTheAnswerIsReported) {
    run({.call = "recv", .limit = 0}, outcome::FAILED, "End of file");
}

TEST_P(ServiceCalls, LostOutputKeepsTheStatus) {
    peer service(answering_request(request));
    const faulty_run seen =
        lumocmd_with({.call = "standard-output", .error = ENOSPC}, arguments_of(request, service));
    EXPECT_EQ(service.finish(), "");
    EXPECT_EQ(seen.hits.size(), 1U);
    EXPECT_EQ(seen.run.output, "");
    EXPECT_EQ(seen.run.errors, "");
    EXPECT_EQ(seen.run.status, SERVICE_STATUS);
}

/// Whatever call it is and whatever its error: one of the two outcomes, and no third.
TEST_P(ServiceCalls, EveryCallEndsInOneOfTheTwo) {
    peer service(answering_request(request));
    const faulty_run usual = lumocmd_with({}, arguments_of(request, service));
    ASSERT_EQ(service.finish(), "");
    expect_answered(request, usual.run);
    for (const std::string &line : usual.journal) {
        const std::string call = line.substr(0, line.find(' '));
        if (call == "allocation") {
            continue;
        }
        const int number = std::stoi(line.substr(line.find(' ')));
        for (const int error : {EAGAIN, EBADF, ECONNRESET, EINPROGRESS, EINTR, EINVAL, ENOMEM}) {
            run({.call = call.c_str(), .number = number, .error = error}, outcome::EITHER);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Table, ServiceCalls, testing::ValuesIn(SERVICE_REQUESTS),
                         [](const auto &row) { return row.param.name; });

} // namespace
