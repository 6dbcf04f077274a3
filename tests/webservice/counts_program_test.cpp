// How many entries a function takes: a wrong list is refused with its message and nothing is sent.

#include "tests/harness/console.h"
#include "tests/protocol/service_functions.h"
#include "tests/webservice/http_peer.h"

#include <gtest/gtest.h>

namespace {

using namespace harness;
using namespace protocol;

constexpr int MALFORMED = 505 & 0xff;

bool is_counted(const service_row &row) {
    return row.needed != nullptr;
}

bool has_no_entries(const service_row &row) {
    return entries_of(row).empty();
}

TEST(EntryCountRules, EveryFunctionWithEntriesCountsThemButOne) {
    for (const service_row &row : service_functions_that(
             [](const service_row &each) { return is_counted(each) == has_no_entries(each); })) {
        EXPECT_STREQ(row.name, "runonelement");
    }
}

class EntryCount : public testing::TestWithParam<service_row> {
  protected:
    static std::size_t count() {
        return entries_of(GetParam()).size();
    }

    /// The list must be refused without a connection.
    static void refuses(const words &list_option) {
        peer service({close_connection()});
        words further = {"-f", function_name(GetParam())};
        further.insert(further.end(), list_option.begin(), list_option.end());
        const run_result run = call_service(service, further);
        EXPECT_EQ(service.finish_unvisited(), "");
        EXPECT_EQ(run.output, red(count_message(GetParam())) + "LMCM-505\n");
        EXPECT_EQ(run.errors, "");
        EXPECT_EQ(run.status, MALFORMED);
    }
};

TEST_P(EntryCount, OneTooFew) {
    refuses({"-p", list_of(count() - 1)});
}

TEST_P(EntryCount, OneTooMany) {
    refuses({"-p", list_of(count() + 1)});
}

TEST_P(EntryCount, NoList) {
    refuses({});
}

TEST_P(EntryCount, EmptyList) {
    refuses({"-p", ""});
}

TEST_P(EntryCount, EmptyFirstEntryEndsTheList) {
    refuses({"-p", "|" + list_of(count())});
}

TEST_P(EntryCount, RightCountIsSent) {
    peer service(after_request({close_connection()}));
    const run_result run =
        call_service(service, {"-f", function_name(GetParam()), "-p", list_of(count()) + "|"});
    EXPECT_EQ(service.finish(), "");
    EXPECT_EQ(split_request(service.received()).method, "POST");
    EXPECT_NE(run.status, MALFORMED);
}

INSTANTIATE_TEST_SUITE_P(Rows, EntryCount, testing::ValuesIn(service_functions_that(is_counted)),
                         NAME_OF_ROW);

TEST(EntryCountMessage, BearsTheTagWhenVerbose) {
    peer service({close_connection()});
    const run_result run =
        call_service(service, {"-v", "ON", "-f", "service_login", "-p", "a|b|c"});
    EXPECT_EQ(service.finish_unvisited(), "");
    EXPECT_EQ(run.output,
              green(run.pid, "[lumocmd] Function selected: service_login") +
                  green(run.pid, "[lumocmd] Parameters selected: a|b|c") +
                  tagged_red(run.pid,
                             "soapcallsclientutil->make_webservice_request error too few or "
                             "too much parameters, user, pass are needed") +
                  "LMCM-505\n");
    EXPECT_EQ(run.status, MALFORMED);
}

/// The functions that do not read their list.
class UnreadList : public testing::TestWithParam<service_row> {};

TEST_P(UnreadList, IsIgnored) {
    const service_row &row = GetParam();
    std::string children;
    for (const std::string &child : row.request) {
        children += element(child, "0");
    }
    peer service(answering(
        http_answer(envelope(response_element(row.name, "<result>LMWS-401</result>"
                                                        "<results>LMWS-401</results>")))));
    const run_result run =
        call_service(service, {"-f", function_name(row), "-p", "one||three|four|five"});
    EXPECT_EQ(service.finish(), "");
    EXPECT_EQ(sent_envelope(service), request_text(row.name, children));
    EXPECT_EQ(run.output, "LMWS-401\n");
    EXPECT_EQ(run.errors, "");
    EXPECT_EQ(run.status, 401 & 0xff);
}

INSTANTIATE_TEST_SUITE_P(Rows, UnreadList,
                         testing::ValuesIn(service_functions_that(has_no_entries)), NAME_OF_ROW);

struct unknown_case {
    const char *name;
    words function_option;
};

const unknown_case UNKNOWN_CASES[] = {
    {"OtherName", {"-f", "SERVICE_NOSUCH"}},
    {"EmptyName", {"-f", ""}},
    {"LongerName", {"-f", "SERVICE_TESTS"}},
    {"ShorterName", {"-f", "SERVICE_TES"}},
    {"OperationName", {"-f", "service-test"}},
    {"BlankBehind", {"-f", "SERVICE_TEST "}},
    {"WithList", {"-f", "SERVICE_NOSUCH", "-p", "a|b"}},
    {"NoNameAfterAnEarlyEnd", {"-v", "perhaps"}},
};

class UnknownFunction : public testing::TestWithParam<unknown_case> {};

TEST_P(UnknownFunction, IsNotSupportedAndSaysNothing) {
    peer service({close_connection()});
    const run_result run = call_service(service, GetParam().function_option);
    EXPECT_EQ(service.finish_unvisited(), "");
    EXPECT_EQ(run.output, "LMCM-503\n");
    EXPECT_EQ(run.errors, "");
    EXPECT_EQ(run.status, 503 & 0xff);
}

INSTANTIATE_TEST_SUITE_P(Table, UnknownFunction, testing::ValuesIn(UNKNOWN_CASES), NAME_OF_ROW);

} // namespace
