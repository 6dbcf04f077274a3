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

int allocations_of(const faulty_run &seen) {
    return static_cast<int>(
        std::count_if(seen.journal.begin(), seen.journal.end(),
                      [](const std::string &line) { return line.starts_with("allocation "); }));
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

/// Makes a request again and again, and one allocation after the other fails. `judge_other` looks
/// at a run that did not fail for memory of the program's own.
void fail_every_allocation(
    const std::function<faulty_run(const fault &)> &make_request,
    const std::function<void(const run_result &, const run_result &usual)> &judge_other) {
    const faulty_run usual = make_request({});
    const int last = allocations_of(usual);
    for (int i = 2; i < 2 * (last + 1); i++) {
        const fault wanted = {.call = "allocation", .number = i / 2, .onwards = i % 2 == 1};
        SCOPED_TRACE(described(wanted));
        const faulty_run seen = make_request(wanted);
        ASSERT_FALSE(seen.hits.empty()) << "no allocation failed";
        const std::string &failed = seen.hits.back(); // "allocation 3 program calloc 21"
        if (failed.find(" program ") != std::string::npos) {
            expect_out_of_memory(seen, failed.substr(failed.rfind(' ') + 1), usual.run);
        } else {
            EXPECT_EQ(seen.records, words());
            judge_other(seen.run, usual.run);
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

    faulty_run run(const fault &failing, const harness::script &steps) const {
        const meeting_point point(wanted.where, steps);
        return lumocmd_with(failing, arguments_of(wanted, point));
    }

    const request &wanted = GetParam();
};

/// Of libc's allocations the service's name resolution fails, and the streams do without.
TEST_P(Memory, OfAnAnsweredRequest) {
    fail_every_allocation([&](const fault &failing) { return run(failing, wanted.answered); },
                          [&](const run_result &seen, const run_result &usual) {
                              if (wanted.failed_status == 0 || seen.errors.empty()) {
                                  expect_usual(seen, usual);
                              } else {
                                  expect_reported(wanted, seen);
                              }
                          });
}

/// The report of a failure needs memory of its own.
TEST_P(Memory, OfAFailedRequest) {
    using namespace harness;
    if (wanted.failed_status == 0) {
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
        fail_every_allocation([&](const fault &failing) { return run(failing, steps); },
                              [&](const run_result &seen, const run_result & /*usual*/) {
                                  expect_reported(wanted, seen);
                              });
    }
}

INSTANTIATE_TEST_SUITE_P(Table, Memory, testing::ValuesIn(every_request()),
                         [](const auto &row) { return row.param.name; });

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
        fail_every_allocation([&](const fault &wanted) { return lumocmd_with(wanted, arguments); },
                              expect_usual);
    }
    EXPECT_EQ(allocations_of(lumocmd_with({}, {"-?"})), 0);
    EXPECT_EQ(allocations_of(lumocmd_with({}, {"-x"})), 0);
}

} // namespace
