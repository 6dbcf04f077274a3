// Every call to the kernel fails in turn. Under a daemon's request the message, the code and the
// last line are those of that step, and nothing is tried again. Under a service's the runtime sends
// on until all is sent, reads until it has all, and reports what it cannot mend.

#include "tests/failures/fault.h"
#include "tests/failures/requests.h"
#include "tests/protocol/texts.h"
#include "tests/webservice/http_peer.h"

#include <cerrno>
#include <climits>
#include <cstring>
#include <gtest/gtest.h>
#include <map>
#include <netdb.h>

namespace {

using namespace failure_tests;
using harness::expect;
using harness::meeting_point;
using harness::NAME_OF_ROW;
using harness::reply;
using harness::words;

class Calls : public testing::TestWithParam<request> {
  protected:
    void SetUp() override {
        SKIP_WHERE_MISSING(unreachable_reason());
    }
    const request &wanted = GetParam();
};

// ---------------------------------------------------------------------------------------------

class DaemonCalls : public Calls {
  protected:
    /// One run against a daemon with this script; all that it shows and calls is checked.
    void run(const fault &failing, const harness::script &steps, const outcome &shown,
             const std::string &calls) const {
        SCOPED_TRACE(described(failing));
        const meeting_point point(wanted.where, steps);
        const faulty_run seen = lumocmd_with(failing, arguments_of(wanted, point));
        expect_outcome(seen.run, shown);
        EXPECT_EQ(seen.hits.size(), 1U) << "the call was never made";
        EXPECT_EQ(seen.records, words());
        EXPECT_EQ(protocol::joined(seen.calls, " "), calls);
        EXPECT_EQ(calls.find("send") == std::string::npos ? point.daemon->finish_unvisited()
                                                          : point.daemon->finish(),
                  "");
    }

    const outcome answered = {ANSWERED_TEXT, ANSWERED};
};

const std::string OPENED = "open close socket"; // the null device comes first
const std::string SENT = OPENED + " connect send";
const std::string WHOLE = SENT + " recv close";

TEST_P(DaemonCalls, ThatFailAreNotMadeAgain) {
    for (const int error : {EAGAIN, EINTR}) {
        run({.call = "socket", .error = error}, {}, unconnected(wanted, "socket", error), OPENED);
        run({.call = "connect", .error = error}, {}, unconnected(wanted, "connect", error),
            OPENED + " connect");
        run({.call = "send", .error = error}, {}, failed(wanted, SENDING, error), SENT + " close");
        run({.call = "recv", .error = error}, wanted.answered, failed(wanted, RECEIVING, error),
            WHOLE);
    }
}

/// Without a null device the program goes on as it stands; a close has done its work when it fails.
TEST_P(DaemonCalls, OpenAndCloseChangeNothing) {
    for (const int error : {EINTR, EMFILE}) {
        run({.call = "open", .error = error}, wanted.answered, answered,
            "open socket connect send recv close");
        run({.call = "close", .number = 1, .error = error}, wanted.answered, answered, WHOLE);
        run({.call = "close", .number = 2, .error = error}, wanted.answered, answered, WHOLE);
        run({.call = "close", .number = 2, .error = error},
            {expect(wanted.text), harness::close_connection()}, failed(wanted, NO_STATUS_LINE),
            WHOLE);
    }
}

/// The daemon gets what the one call took and is parsed as far as the one call brought it.
TEST_P(DaemonCalls, PartsAreTakenForTheWhole) {
    for (const std::size_t taken : {std::size_t{0}, std::size_t{1}, wanted.text.size() - 1}) {
        run({.call = "send", .limit = static_cast<int>(taken)},
            {expect(wanted.text.substr(0, taken)), wanted.answered[1]}, answered, WHOLE);
    }
    const int tag = static_cast<int>(strlen("Response Status: "));
    for (const int brought : {0, 1, tag - 1}) {
        run({.call = "recv", .limit = brought}, wanted.answered, failed(wanted, NO_STATUS_LINE),
            WHOLE);
    }
}

INSTANTIATE_TEST_SUITE_P(Table, DaemonCalls, testing::ValuesIn(daemon_requests()), NAME_OF_ROW);

// ---------------------------------------------------------------------------------------------

class ServiceCalls : public Calls {
  protected:
    /// One run; true when it was answered, and then nothing may be lost.
    bool run(const fault &failing, const std::string &reason = "") const {
        SCOPED_TRACE(described(failing));
        const meeting_point point(wanted.where, wanted.answered);
        const faulty_run seen = lumocmd_with(failing, arguments_of(wanted, point));
        const std::string complaint = point.daemon->finish();
        EXPECT_FALSE(seen.hits.empty()) << "the call was never made";
        EXPECT_EQ(seen.records, words());
        if (seen.run.status != ANSWERED) {
            expect_reported(wanted, seen.run, reason);
            return false;
        }
        expect_answered(wanted, seen.run);
        EXPECT_EQ(complaint, "");
        return true;
    }
};

TEST_P(ServiceCalls, FailureIsReportedWithItsReason) {
    struct {
        const char *call;
        std::vector<int> errors;
    } const rows[] = {{"socket", {EACCES, EMFILE, ENOBUFS}},
                      {"connect", {ECONNREFUSED, EHOSTUNREACH, ETIMEDOUT}},
                      {"send", {ECONNRESET, EPIPE, ETIMEDOUT}},
                      {"recv", {ECONNRESET, EHOSTUNREACH, ETIMEDOUT}}};
    for (const auto &row : rows) {
        for (const int error : row.errors) {
            EXPECT_FALSE(run({.call = row.call, .error = error}, strerror(error)));
        }
    }
    for (const int error : {EAI_AGAIN, EAI_FAIL, EAI_NONAME}) {
        EXPECT_FALSE(run({.call = "getaddrinfo", .error = -error}, gai_strerror(error)));
    }
    EXPECT_FALSE(run({.call = "recv", .limit = 0}, "End of file"));
}

TEST_P(ServiceCalls, OpenAndCloseChangeNothingAndPartsAddUp) {
    for (const int error : {EINTR, EIO, EMFILE}) {
        EXPECT_TRUE(run({.call = "open", .error = error}));
        EXPECT_TRUE(run({.call = "close", .error = error, .onwards = true}));
    }
    for (const int taken : {1, 7, 100}) {
        EXPECT_TRUE(run({.call = "send", .limit = taken, .onwards = true}));
        EXPECT_TRUE(run({.call = "recv", .limit = taken, .onwards = true}));
    }
}

/// Whatever call it is and whatever its error: answered or reported, and no third.
TEST_P(ServiceCalls, EveryCallEndsInOneOfTheTwo) {
    const meeting_point point(wanted.where, wanted.answered);
    const faulty_run usual = lumocmd_with({}, arguments_of(wanted, point));
    expect_answered(wanted, usual.run);
    std::map<std::string, int> made;
    for (const std::string &call : usual.calls) {
        made[call]++;
        for (const int error : {EAGAIN, EBADF, EINPROGRESS, EINTR, EINVAL}) {
            run({.call = call, .number = made[call], .error = error});
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Table, ServiceCalls, testing::ValuesIn(service_requests()), NAME_OF_ROW);

} // namespace
