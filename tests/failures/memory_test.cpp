// Every allocation finds no memory in turn, alone or with all that follow, until a run needs no
// more of them. The program's, its web-service runtime's among them, end it with one record in the
// system log; libc fails the call or goes on without its buffer.

#include "tests/failures/fault.h"
#include "tests/failures/requests.h"
#include "tests/webservice/http_peer.h"

#include <functional>
#include <gtest/gtest.h>
#include <regex>

namespace {

using namespace failure_tests;
using harness::meeting_point;
using harness::run_result;
using harness::words;

constexpr int OUT_OF_MEMORY = 1;

std::string without_pid(const run_result &run) {
    return std::regex_replace(run.output, std::regex("<" + std::to_string(run.pid) + ">"), "");
}

/// One record, and nothing on the console but what is shown before, or the runtime's report of what
/// had failed before.
void expect_out_of_memory(const faulty_run &seen, const std::string &size,
                          const run_result &usual) {
    EXPECT_EQ(seen.run.status, OUT_OF_MEMORY);
    EXPECT_EQ(seen.records, words{"0 xmalloc failed for size=" + size + "\\n"});
    EXPECT_EQ(seen.run.output.find("LMCM"), std::string::npos) << seen.run.output;
    if (seen.run.errors.empty()) {
        EXPECT_TRUE(without_pid(usual).starts_with(without_pid(seen.run))) << seen.run.output;
    } else {
        EXPECT_NE(seen.run.errors.find(" fault "), std::string::npos) << seen.run.errors;
    }
}

/// Nothing is lost: libc writes byte by byte where it gets no buffer.
void expect_usual(const run_result &seen, const run_result &usual) {
    EXPECT_EQ(without_pid(seen), without_pid(usual));
    EXPECT_EQ(seen.errors, usual.errors);
    EXPECT_EQ(seen.status, usual.status);
}

/// Makes a request again and again, and one allocation after the other fails. Of libc's allocations
/// the service's name resolution fails and is reported, and the streams do without.
void fail_every_allocation(const request *service,
                           const std::function<faulty_run(const fault &)> &make_request) {
    const faulty_run usual = make_request({});
    const int last = static_cast<int>(usual.allocations.size());
    for (int i = 2; i < 2 * (last + 1); i++) {
        const fault wanted = {.call = "allocation", .number = i / 2, .onwards = i % 2 == 1};
        SCOPED_TRACE(described(wanted));
        const faulty_run seen = make_request(wanted);
        ASSERT_FALSE(seen.hits.empty()) << "no allocation failed";
        const std::string &failed = seen.hits.back(); // "allocation program calloc 21"
        if (failed.find(" program ") != std::string::npos) {
            expect_out_of_memory(seen, failed.substr(failed.rfind(' ') + 1), usual.run);
            continue;
        }
        EXPECT_EQ(seen.records, words());
        if (service != nullptr && !seen.run.errors.empty()) {
            expect_reported(*service, seen.run);
        } else {
            expect_usual(seen.run, usual.run);
        }
    }
    const faulty_run behind = make_request({.call = "allocation", .number = last + 1});
    EXPECT_EQ(behind.hits, words());
    expect_usual(behind.run, usual.run);
}

class Memory : public testing::TestWithParam<request> {
  protected:
    void SetUp() override {
        SKIP_WHERE_MISSING(unreachable_reason());
    }

    void fail_every_allocation_of(const harness::script &steps) const {
        fail_every_allocation(wanted.is_service() ? &wanted : nullptr, [&](const fault &failing) {
            const meeting_point point(wanted.where, steps);
            return lumocmd_with(failing, arguments_of(wanted, point));
        });
    }

    const request &wanted = GetParam();
};

TEST_P(Memory, OfAnAnsweredRequest) {
    fail_every_allocation_of(wanted.answered);
}

/// The report of a failure needs memory of its own.
TEST_P(Memory, OfAFailedRequest) {
    using namespace harness;
    if (!wanted.is_service()) {
        GTEST_SKIP() << "a daemon's failure needs no other memory than its answer";
    }
    const std::string status = "500 Internal Server Error";
    const std::string fault_12 =
        element("SOAP-ENV:Code", element("SOAP-ENV:Value", "SOAP-ENV:Sender")) +
        element("SOAP-ENV:Reason", "<SOAP-ENV:Text>busy</SOAP-ENV:Text>");
    const script failures[] = {
        after_request({reset()}),
        answering(http_answer("no", "404 Not Found", "text/plain")),
        answering(http_answer(envelope(fault_element("SOAP-ENV:Server", "busy")), status)),
        answering(http_answer(ENVELOPE_TAG_12 +
                                  element("SOAP-ENV:Body", element("SOAP-ENV:Fault", fault_12)) +
                                  "</SOAP-ENV:Envelope>",
                              status, "application/soap+xml; charset=utf-8")),
    };
    for (const script &steps : failures) {
        SCOPED_TRACE(steps[1].bytes);
        fail_every_allocation_of(steps);
    }
}

INSTANTIATE_TEST_SUITE_P(Table, Memory, testing::ValuesIn(every_request()), harness::NAME_OF_ROW);

/// The help and the library's own complaints need no memory, or do without.
TEST(MemoryOfARefusal, IsNeededForTheStatusAtMost) {
    SKIP_WHERE_MISSING(unreachable_reason());
    const words rows[] = {
        {"-v", "ON", "-t", "NOSUCH"},
        {"-t", "IBSLOCAL"},
        {"-t", "EIBINTERNET", "-a", "1.2.3.4", "-d", "2000", "-f", "F", "-p", "a"},
        {"-t", "SOAP", "-u", "U", "-f", "F"},
        {"-t", "SOAP", "-u", "U", "-f", "SERVICE_LOGIN", "-p", "a|b|c"},
        {"-t", "SOAP", "-w", "x"},
        {"-t", "BENTELLOCAL", "-s", "S"},
        {"-t", "BENTELLOCAL", "-s", "/n", "-f", "SENDBENTELCOMMANDDATAGRAM", "-p", "a|b|c|d"}};
    for (const words &arguments : rows) {
        SCOPED_TRACE(arguments.back());
        fail_every_allocation(nullptr,
                              [&](const fault &wanted) { return lumocmd_with(wanted, arguments); });
    }
    EXPECT_EQ(lumocmd_with({}, {"-?"}).allocations, words());
    EXPECT_EQ(lumocmd_with({}, {"-x"}).allocations, words());
}

} // namespace
