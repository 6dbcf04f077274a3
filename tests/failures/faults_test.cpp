// Every call to the kernel and every allocation fails in turn. Under a daemon's request the
// message, the code and the last line are those of that step, and nothing is tried again. Under a
// service's the runtime sends on until all is sent, reads until it has all, and reports what it
// cannot mend. Without memory the program ends with one record in the system log.

#include "tests/failures/requests.h"
#include "tests/protocol/texts.h"

#include <fstream>
#include <map>
#include <netdb.h>

namespace {

using namespace failure_tests;
using namespace harness;

/// A call that fails. The default lets every call pass.
struct fault {
    std::string call = {};
    int number = 1;       ///< which of the calls of this name, from 1
    int error = 0;        ///< its error number
    int limit = -1;       ///< without an error: the most bytes that it takes
    bool onwards = false; ///< all later calls of this name fail as well
};

/// As the interposer is told it.
std::string described(const fault &wanted) {
    return std::to_string(wanted.number) + " " + std::to_string(wanted.error) + " " +
           std::to_string(wanted.limit) + (wanted.onwards ? " 1 " : " 0 ") + wanted.call;
}

struct faulty_run {
    run_result run;
    std::string complaint; ///< of the peer
    words calls;           ///< the names of the calls, in order, but for allocations
    words allocations;     ///< those: "allocation program malloc 21"
    words hits;            ///< the ones that failed
    words records;         ///< what went to the system log: "priority text"
};

class Faults : public testing::TestWithParam<request> {
  protected:
    void SetUp() override {
        if (is_wrapped() || run_with({}, wanted.answered).calls.empty()) {
            GTEST_SKIP() << "the program under test does not load the interposer";
        }
    }

    faulty_run run_with(const fault &failing, const script &steps) const {
        const meeting_point point(wanted.where, steps);
        const std::string path = point.directory.path + "/journal";
        std::ofstream(path).close();
        faulty_run seen;
        seen.run = lumocmd(arguments_of(wanted, point),
                           {.settings = {std::string("LD_PRELOAD=") + FAULT_INTERPOSER,
                                         "FAULT_JOURNAL=" + path, "FAULT=" + described(failing)}});
        seen.complaint = point.daemon->finish();
        std::ifstream file(path);
        for (std::string line; std::getline(file, line);) {
            if (line.starts_with("syslog ")) {
                seen.records.push_back(line.substr(line.find(' ') + 1));
                continue;
            }
            if (line.starts_with("! ")) {
                line.erase(0, 2);
                seen.hits.push_back(line);
            }
            (line.starts_with("allocation ") ? seen.allocations : seen.calls).push_back(line);
        }
        return seen;
    }

    const request &wanted = GetParam();
};

// ---------------------------------------------------------------------------------------------

class DaemonCalls : public Faults {
  protected:
    /// One run against a daemon with this script; all that it shows and calls is checked.
    void run(const fault &failing, const script &steps, const outcome &shown,
             const std::string &calls) const {
        SCOPED_TRACE(described(failing));
        const faulty_run seen = run_with(failing, steps);
        expect_outcome(seen.run, shown);
        EXPECT_EQ(seen.hits.size(), 1U) << "the call was never made";
        EXPECT_EQ(seen.records, words());
        EXPECT_EQ(protocol::joined(seen.calls, " "), calls);
        const bool is_connected = calls.find("send") != std::string::npos;
        EXPECT_EQ(seen.complaint.empty(), is_connected) << seen.complaint;
    }
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
    run({.call = "open", .error = EMFILE}, wanted.answered, ANSWERED,
        "open socket connect send recv close");
    run({.call = "close", .number = 1, .error = EINTR}, wanted.answered, ANSWERED, WHOLE);
    run({.call = "close", .number = 2, .error = EINTR}, wanted.answered, ANSWERED, WHOLE);
    run({.call = "close", .number = 2, .error = EINTR}, {wanted.answered[0], close_connection()},
        failed(wanted, NO_STATUS_LINE), WHOLE);
}

/// The daemon gets what the one call took and is parsed as far as the one call brought it.
TEST_P(DaemonCalls, PartsAreTakenForTheWhole) {
    const std::string &text = wanted.answered[0].bytes;
    for (const std::size_t taken : {std::size_t{0}, std::size_t{1}, text.size() - 1}) {
        run({.call = "send", .limit = static_cast<int>(taken)},
            {expect(text.substr(0, taken)), wanted.answered[1]}, ANSWERED, WHOLE);
    }
    const int tag = static_cast<int>(strlen("Response Status: "));
    for (const int brought : {0, 1, tag - 1}) {
        run({.call = "recv", .limit = brought}, wanted.answered, failed(wanted, NO_STATUS_LINE),
            WHOLE);
    }
}

INSTANTIATE_TEST_SUITE_P(Table, DaemonCalls, testing::ValuesIn(daemon_requests()), NAME_OF_ROW);

// ---------------------------------------------------------------------------------------------

class ServiceCalls : public Faults {
  protected:
    /// One run; true when it was answered, and then nothing may be lost.
    bool run(const fault &failing, const std::string &reason = "") const {
        SCOPED_TRACE(described(failing));
        const faulty_run seen = run_with(failing, wanted.answered);
        EXPECT_FALSE(seen.hits.empty()) << "the call was never made";
        EXPECT_EQ(seen.records, words());
        if (seen.run.status != ANSWERED.status) {
            expect_reported(wanted, seen.run, reason);
            return false;
        }
        expect_outcome(seen.run, ANSWERED);
        EXPECT_EQ(seen.complaint, "");
        return true;
    }
};

TEST_P(ServiceCalls, FailureIsReportedWithItsReason) {
    for (const auto &[call, error] : {std::pair("socket", EMFILE),
                                      {"connect", ETIMEDOUT},
                                      {"send", EPIPE},
                                      {"recv", ECONNRESET}}) {
        EXPECT_FALSE(run({.call = call, .error = error}, strerror(error)));
    }
    EXPECT_FALSE(run({.call = "getaddrinfo", .error = -EAI_AGAIN}, gai_strerror(EAI_AGAIN)));
    EXPECT_FALSE(run({.call = "recv", .limit = 0}, "End of file"));
}

TEST_P(ServiceCalls, OpenAndCloseChangeNothingAndPartsAddUp) {
    EXPECT_TRUE(run({.call = "open", .error = EMFILE}));
    EXPECT_TRUE(run({.call = "close", .error = EINTR, .onwards = true}));
    for (const int taken : {1, 100}) {
        EXPECT_TRUE(run({.call = "send", .limit = taken, .onwards = true}));
        EXPECT_TRUE(run({.call = "recv", .limit = taken, .onwards = true}));
    }
}

/// Whatever call it is and whatever its error: answered or reported, and no third.
TEST_P(ServiceCalls, EveryCallEndsInOneOfTheTwo) {
    const faulty_run usual = run_with({}, wanted.answered);
    expect_outcome(usual.run, ANSWERED);
    // No call has a time-out: they block.
    EXPECT_EQ(std::ranges::count(usual.calls, "poll"), 0);
    EXPECT_EQ(std::ranges::count(usual.calls, "select"), 0);
    std::map<std::string, int> made;
    for (const std::string &call : usual.calls) {
        made[call]++;
        for (const int error : {EAGAIN, EBADF, EINPROGRESS, EINTR, EINVAL}) {
            run({.call = call, .number = made[call], .error = error});
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Table, ServiceCalls, testing::ValuesIn(service_requests()), NAME_OF_ROW);

// ---------------------------------------------------------------------------------------------

class Memory : public Faults {
  protected:
    void fail_every_allocation(const script &steps) const {
        const faulty_run usual = run_with({}, steps);
        EXPECT_EQ(usual.records, words());
        const int count = static_cast<int>(usual.allocations.size());
        for (int number = 1; number <= count; ++number) {
            for (const bool onwards : {false, true}) {
                const fault failing = {.call = "allocation", .number = number, .onwards = onwards};
                SCOPED_TRACE(described(failing));
                expect_ended(run_with(failing, steps), usual);
            }
        }
    }

    /// The program's own allocations and its runtime's end it, with nothing on the console but the
    /// report of what had failed before. Of libc's the name resolution fails and is reported, and
    /// the streams do without: they write byte by byte.
    void expect_ended(const faulty_run &seen, const faulty_run &usual) const {
        ASSERT_FALSE(seen.hits.empty()) << "no allocation failed";
        const std::string &hit = seen.hits.back(); // "allocation program calloc 21"
        if (hit.find(" program ") != std::string::npos) {
            expect_run(seen.run, "", 1, seen.run.errors);
            EXPECT_EQ(seen.records,
                      words{"0 xmalloc failed for size=" + hit.substr(hit.rfind(' ') + 1)});
            EXPECT_EQ(seen.run.errors.empty(),
                      seen.run.errors.find(" fault ") == std::string::npos);
            return;
        }
        EXPECT_EQ(seen.records, words());
        if (!seen.run.errors.empty()) {
            expect_reported(wanted, seen.run);
        } else {
            expect_run(seen.run, usual.run.output, usual.run.status, usual.run.errors);
        }
    }
};

TEST_P(Memory, OfAnAnsweredRequest) {
    fail_every_allocation(wanted.answered);
}

/// The report of a service's failure needs memory of its own.
TEST_P(Memory, OfAFailedRequest) {
    const std::string fault = envelope(fault_element("SOAP-ENV:Server", "busy"));
    if (wanted.is_service()) {
        fail_every_allocation(after_request({reset()}));
        fail_every_allocation(answering(http_answer("no", "404 Not Found", "text/plain")));
        fail_every_allocation(answering(http_answer(fault, "500 Internal Server Error")));
    }
}

INSTANTIATE_TEST_SUITE_P(Table, Memory, testing::ValuesIn(every_request()), NAME_OF_ROW);

} // namespace
