// Every allocation finds no memory in turn, alone or with all that follow, for every kind of
// request, until a run needs no more of them. The program's, its web-service runtime's among them,
// end it with one record in the system log; libc fails the call or goes on without its buffer.

#include "tests/faults/fault.h"
#include "tests/faults/requests.h"
#include "tests/faults/service_requests.h"

#include <functional>
#include <gtest/gtest.h>
#include <sstream>
#include <unistd.h>

namespace {

using namespace fault_tests;
using harness::peer;
using harness::run_result;
using harness::words;

constexpr int OUT_OF_MEMORY = 1;

/// An entry of the journal: "allocation 3 program calloc 21".
struct allocation {
    std::string name;
    int number = 0;
    std::string caller;
    std::string function;
    std::string size;
};

allocation taken_apart(const std::string &entry) {
    std::istringstream fields(entry);
    allocation parts;
    fields >> parts.name >> parts.number >> parts.caller >> parts.function >> parts.size;
    return parts;
}

std::string without_pid(const run_result &run) {
    const std::string tag = "<" + std::to_string(run.pid) + ">";
    std::string text = run.output;
    for (std::size_t at = 0; (at = text.find(tag, at)) != std::string::npos;) {
        text.erase(at, tag.size());
    }
    return text;
}

bool starts_with(const std::string &text, const std::string &start) {
    return text.compare(0, start.size(), start) == 0;
}

/// One report of the runtime's.
bool is_report(const std::string &errors) {
    return errors.find(" fault ") != std::string::npos &&
           errors.find("\nDetail: ") == errors.rfind("\nDetail: ") &&
           errors.find("\nDetail: ") != std::string::npos;
}

using request_runner = std::function<faulty_run(const fault &)>;
using judgement = std::function<void(const faulty_run &seen, const run_result &usual)>;

/// The end of a run without memory: one record, and nothing on the console but what was shown
/// before.
void expect_out_of_memory(const faulty_run &seen, const allocation &failed,
                          const run_result &usual) {
    EXPECT_EQ(seen.run.status, OUT_OF_MEMORY);
    EXPECT_EQ(seen.records, words{"0 xmalloc failed for size=" + failed.size + "\\n"});
    EXPECT_EQ(seen.run.output.find("LMCM"), std::string::npos) << seen.run.output;
    EXPECT_EQ(seen.run.output.find("memory"), std::string::npos) << seen.run.output;
    if (seen.run.errors.empty()) {
        EXPECT_TRUE(starts_with(without_pid(usual), without_pid(seen.run))) << seen.run.output;
    } else {
        // The runtime reported what had failed before; then the status text found no memory.
        EXPECT_TRUE(is_report(seen.run.errors)) << seen.run.errors;
    }
}

/// Makes a request again and again, and one allocation after the other fails. `of_others` judges a
/// run that did not fail for memory of the program's own.
void fail_every_allocation(const request_runner &make_request, const judgement &of_others) {
    const faulty_run usual = make_request({});
    const int last = calls_of(usual, "allocation");
    EXPECT_GT(last, 0);
    for (int i = 2; i < 2 * (last + 1); i++) {
        const fault wanted = {.call = "allocation", .number = i / 2, .onwards = i % 2 == 1};
        SCOPED_TRACE(described(wanted));
        const faulty_run seen = make_request(wanted);
        ASSERT_FALSE(seen.hits.empty()) << "no allocation failed";
        const allocation failed = taken_apart(seen.hits.back());
        if (failed.caller == "program") {
            expect_out_of_memory(seen, failed, usual.run);
        } else {
            EXPECT_EQ(seen.records, words());
            of_others(seen, usual.run);
        }
    }
    const faulty_run behind = make_request({.call = "allocation", .number = last + 1});
    EXPECT_EQ(behind.hits, words());
    EXPECT_EQ(without_pid(behind.run), without_pid(usual.run));
    EXPECT_EQ(behind.run.status, usual.run.status);
}

/// libc writes byte by byte where it gets no buffer.
void expect_nothing_lost(const faulty_run &seen, const run_result &usual) {
    EXPECT_EQ(without_pid(seen.run), without_pid(usual));
    EXPECT_EQ(seen.run.errors, usual.errors);
    EXPECT_EQ(seen.run.status, usual.status);
}

// ---------------------------------------------------------------------------------------------

class DaemonAllocations : public testing::TestWithParam<socket_request> {
  protected:
    void SetUp() override {
        SKIP_UNLESS_REACHABLE();
    }
};

TEST_P(DaemonAllocations, EachEndsTheRunWithOneRecord) {
    const socket_request &request = GetParam();
    const harness::temporary_directory directory;
    const std::string path = directory.path + "/s";
    fail_every_allocation(
        [&](const fault &wanted) {
            unlink(path.c_str());
            const peer daemon(
                path, {harness::collect_until("\n\n"), harness::reply(answer_of(request, "0042"))});
            return lumocmd_with(wanted, arguments_of(request, path));
        },
        expect_nothing_lost);
}

INSTANTIATE_TEST_SUITE_P(Table, DaemonAllocations, testing::ValuesIn(socket_requests()),
                         [](const auto &row) { return row.param.keyword; });

// ---------------------------------------------------------------------------------------------

class ServiceAllocations : public testing::TestWithParam<service_request> {
  protected:
    void SetUp() override {
        SKIP_UNLESS_REACHABLE();
    }

    static faulty_run run(const fault &wanted, const harness::script &steps) {
        peer service(steps);
        return lumocmd_with(wanted, arguments_of(GetParam(), service));
    }

    /// Only libc's allocations get here: its name resolution fails, its streams do without a
    /// buffer.
    static void expect_truth(const faulty_run &seen) {
        if (seen.run.errors.empty()) {
            expect_answered(GetParam(), seen.run);
        } else {
            expect_no_answer(GetParam(), seen.run);
        }
    }

    static void expect_no_answer(const service_request &request, const run_result &run) {
        EXPECT_EQ(run.output, green_lines(run.pid, request.failed) + request.failed_text);
        EXPECT_EQ(run.status, request.failed_status & 0xff);
        EXPECT_TRUE(is_report(run.errors)) << run.errors;
    }
};

TEST_P(ServiceAllocations, OfAnAnsweredRequest) {
    fail_every_allocation(
        [](const fault &wanted) { return run(wanted, answering_request(GetParam())); },
        [](const faulty_run &seen, const run_result &) { expect_truth(seen); });
}

/// The report of a failure needs memory of its own.
TEST_P(ServiceAllocations, OfAFailure) {
    const std::string fault_12 =
        harness::element("SOAP-ENV:Code", harness::element("SOAP-ENV:Value", "SOAP-ENV:Sender")) +
        harness::element("SOAP-ENV:Reason", "<SOAP-ENV:Text>busy</SOAP-ENV:Text>");
    const harness::script failures[] = {
        harness::after_request({harness::close_connection()}),
        harness::after_request({harness::reset()}),
        harness::answering(harness::http_answer("no", "404 Not Found", "text/plain")),
        harness::answering(harness::http_answer(
            harness::envelope(harness::fault_element("SOAP-ENV:Server", "busy")),
            "500 Internal Server Error")),
        harness::answering(harness::http_answer(
            harness::ENVELOPE_TAG_12 +
                harness::element("SOAP-ENV:Body", harness::element("SOAP-ENV:Fault", fault_12)) +
                "</SOAP-ENV:Envelope>",
            "500 Internal Server Error", "application/soap+xml; charset=utf-8")),
    };
    for (const harness::script &steps : failures) {
        SCOPED_TRACE(steps[1].bytes);
        fail_every_allocation([&steps](const fault &wanted) { return run(wanted, steps); },
                              [](const faulty_run &seen, const run_result &) {
                                  expect_no_answer(GetParam(), seen.run);
                              });
    }
}

INSTANTIATE_TEST_SUITE_P(Table, ServiceAllocations, testing::ValuesIn(SERVICE_REQUESTS),
                         [](const auto &row) { return row.param.name; });

// ---------------------------------------------------------------------------------------------

struct plain_row {
    const char *name;
    words arguments;
};

const plain_row PLAIN_ROWS[] = {
    {"Help", {"-?"}},
    {"UnknownOption", {"-x"}},
    {"UnknownType", {"-v", "ON", "-t", "NOSUCH"}},
    {"Unsupported", {"-t", "IBSLOCAL"}},
    {"Internet", {"-t", "EIBINTERNET", "-a", "1.2.3.4", "-d", "2000", "-f", "F", "-p", "a"}},
    {"UnknownFunction", {"-t", "SOAP", "-u", "U", "-f", "F"}},
    {"WrongCount", {"-t", "SOAP", "-u", "U", "-f", "SERVICE_LOGIN", "-p", "a|b|c"}},
    {"BadWaittime", {"-t", "SOAP", "-w", "x"}},
    {"Malformed", {"-t", "BENTELLOCAL", "-s", "S"}},
    {"NoDaemon",
     {"-t", "BENTELLOCAL", "-s", "/n", "-f", "SENDBENTELCOMMANDDATAGRAM", "-p", "a|b|c|d"}},
};

class PlainAllocations : public testing::TestWithParam<plain_row> {};

/// The help and the library's own complaints need no memory, or do without.
TEST_P(PlainAllocations, OfARequestThatNeverLeaves) {
    SKIP_UNLESS_REACHABLE();
    const words &arguments = GetParam().arguments;
    const faulty_run usual = lumocmd_with({}, arguments);
    if (calls_of(usual, "allocation") == 0) {
        EXPECT_EQ(usual.run.status, 506 & 0xff);
        return;
    }
    fail_every_allocation([&](const fault &wanted) { return lumocmd_with(wanted, arguments); },
                          expect_nothing_lost);
}

INSTANTIATE_TEST_SUITE_P(Table, PlainAllocations, testing::ValuesIn(PLAIN_ROWS),
                         [](const auto &row) { return row.param.name; });

} // namespace
