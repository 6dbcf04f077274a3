// A url without a host is a mistake of the caller, usually an empty shell variable: it is said at
// once, nothing is written to standard output but the message, and standard input is not waited
// for.

#include "tests/harness/console.h"
#include "tests/harness/process.h"

#include <gtest/gtest.h>

namespace {

using namespace harness;

struct url_case {
    const char *name;
    std::string url;
};

const url_case URLS_WITHOUT_HOST[] = {
    {"Empty", ""},
    {"SchemeAlone", "http://"},
    {"PathAlone", "/cgi-bin/lumows"},
    {"SchemeAndPath", "http:///cgi-bin/lumows"},
    {"PortAlone", ":80"},
    {"SchemeAndPort", "http://:80/cgi-bin/lumows"},
};

class UrlWithoutHost : public testing::TestWithParam<url_case> {};

TEST_P(UrlWithoutHost, IsRefused) {
    const std::string &url = GetParam().url;
    for (const char *function : {"SERVICE_TEST", "SERVICE_SYSTEMINFO", "SERVICE_RUNONELEMENT"}) {
        SCOPED_TRACE(function);
        const run_result run = lumocmd({"-t", "SOAP", "-u", url, "-f", function, "-p", "a|b"});
        EXPECT_EQ(run.output,
                  red("soapcallsclientutil->make_webservice_request error url '" + url +
                      "' names no host, something like http://localhost/cgi-bin/lumows is needed") +
                      "LMCM-502\n");
        EXPECT_EQ(run.errors, "");
        EXPECT_EQ(run.status, 502 & 0xff);
    }
}

TEST_P(UrlWithoutHost, MattersLessThanAWrongCount) {
    const run_result run =
        lumocmd({"-t", "SOAP", "-u", GetParam().url, "-f", "SERVICE_LOGIN", "-p", "a"});
    EXPECT_EQ(run.output, red("soapcallsclientutil->make_webservice_request error too few or too "
                              "much parameters, user, pass are needed") +
                              "LMCM-505\n");
    EXPECT_EQ(run.status, 505 & 0xff);
}

INSTANTIATE_TEST_SUITE_P(Table, UrlWithoutHost, testing::ValuesIn(URLS_WITHOUT_HOST),
                         [](const auto &row) { return row.param.name; });

} // namespace
