// What the result text of an answer makes of the run's status, and what its absence does.

#include "tests/harness/console.h"
#include "tests/webservice/http_peer.h"

#include <functional>
#include <gtest/gtest.h>

namespace {

using namespace harness;

struct result_case {
    const char *name;
    const char *result;  ///< whole element
    const char *message; ///< red line, or null
    const char *last;    ///< last line
    int status;
};

const result_case RESULT_CASES[] = {
    {"Success", "<result>LMWS-000</result>", nullptr, "LMCM-0000", 0},
    {"OwnBlock", "<result>LMWS-402</result>", nullptr, "LMWS-402", 402},
    {"AnotherModule", "<result>BENG-1302</result>", nullptr, "BENT-1302", 1302},
    {"AnyPrefix", "<result>ABCD-007</result>", nullptr, "FSMC-007", 7},
    {"Negative", "<result>LMWS--5</result>", nullptr, "LMCM--005", -5},
    {"NumberMissing", "<result>LMWS-</result>", nullptr, "LMCM-0000", 0},
    {"Empty", "<result></result>", nullptr, "LMCM-502", 502},
    {"TooLong", "<result>EIBDG-1901</result>",
     "1 - Invalid argument for utility->extract_error_code EIBDG-1901 ", "LMCM-502", 502},
    {"LetterBehind", "<result>LMWS-40x</result>",
     "2 - Invalid argument for utility->extract_error_code LMWS-40x ", "LMCM-502", 502},
    {"TooShort", "<result>OK</result>", "2 - Invalid argument for utility->extract_error_code OK ",
     "LMCM-502", 502},
};

class Result : public testing::TestWithParam<result_case> {
  protected:
    static void concludes(const words &call, const std::string &operation,
                          const std::function<std::string(pid_t)> &lines) {
        const result_case &row = GetParam();
        peer service(answering(http_answer(envelope(response_element(operation, row.result)))));
        const run_result run = call_service(service, call);
        EXPECT_EQ(service.finish(), "");
        EXPECT_EQ(run.output, lines(run.pid) +
                                  (row.message == nullptr ? "" : tagged_red(run.pid, row.message)) +
                                  row.last + "\n");
        EXPECT_EQ(run.errors, "");
        EXPECT_EQ(run.status, row.status & 0xff);
    }
};

TEST_P(Result, OfASingleOperation) {
    concludes({"-f", "SERVICE_TEST", "-v", "ON"}, "test", [](pid_t) { return std::string(); });
}

TEST_P(Result, OfATextGroup) {
    concludes(TEXT_CALL, "retrieveconfiguration",
              [](pid_t pid) { return text_line(pid, "(null)"); });
}

TEST_P(Result, OfARecord) {
    concludes(RECORD_CALL, "getelementstatus",
              [](pid_t pid) { return record_lines(pid, "(null)", "(null)"); });
}

INSTANTIATE_TEST_SUITE_P(Table, Result, testing::ValuesIn(RESULT_CASES), NAME_OF_ROW);

TEST(NilResult, IsAnAbsentOne) {
    peer service(answering(http_answer(envelope(
        response_element("getelementstatus", "<result xsi:nil=\"true\"/><status>on</status>")))));
    const run_result run = call_service(service, RECORD_CALL);
    EXPECT_EQ(service.finish(), "");
    EXPECT_EQ(run.output, "LMCM-508\n");
    EXPECT_EQ(run.errors, "");
}

TEST(PrefixedResult, IsTheResult) {
    for (const char *result : {"<ns:result>LMWS-403</ns:result>",
                               "<o:result xmlns:o=\"urn:other\">LMWS-403</o:result>"}) {
        peer service(answering(http_answer(envelope(response_element("test", result)))));
        const run_result run = call_service(service, {"-f", "SERVICE_TEST"});
        EXPECT_EQ(service.finish(), "");
        EXPECT_EQ(run.output, "LMWS-403\n");
        EXPECT_EQ(run.errors, "");
    }
}

TEST(AbsentVersion, LeavesTheVersionConstantAlone) {
    peer service(answering(
        http_answer(envelope(response_element("versioninfo", "<version xsi:nil=\"true\"/>")))));
    const run_result run = call_service(service, {"-f", "SERVICE_VERSIONINFO", "-v", "ON"});
    EXPECT_EQ(service.finish(), "");
    EXPECT_EQ(run.output, green(run.pid, "[lumocmd] Software Version: LUMOCMD Version: "
                                         "2.6.16_arlo [rev.7655] -") +
                              "LMCM-502\n");
    EXPECT_EQ(run.status, 502 & 0xff);
}

} // namespace
