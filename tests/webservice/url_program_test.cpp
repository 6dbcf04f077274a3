// Urls that the runtime would misread: without a host it would write the request to standard output
// and wait on standard input, a long one it would cut, another transport might wait forever. They
// are said at once and answered like a connection that failed.

#include "tests/harness/console.h"
#include "tests/harness/peer.h"
#include "tests/harness/process.h"

#include <gtest/gtest.h>

namespace {

using namespace harness;

struct url_case {
    const char *name;
    std::string url;
};

const url_case UNUSABLE_URLS[] = {
    {"Empty", ""},
    {"SchemeAlone", "http://"},
    {"PathAlone", "/cgi-bin/lumows"},
    {"SchemeAndPath", "http:///cgi-bin/lumows"},
    {"PortAlone", ":80"},
    {"SchemeAndPort", "http://:80/cgi-bin/lumows"},
    {"AnotherTransport", "soap.udp://127.0.0.1:9/cgi-bin/lumows"},
    {"SecureTransport", "https://127.0.0.1/cgi-bin/lumows"},
    {"BlankInside", "http://127.0.0.1:1/cgi-bin/lumows x"},
    {"LineFeedInside", "http://127.0.0.1:1/cgi-bin/lumows\nx"},
    {"ControlCharacterInside", "http://127.0.0.1:1/cgi-bin/\x7f"},
    {"UserEndsWithinAnEscape", "http://u%@127.0.0.1:1/cgi-bin/lumows"},
    {"UserEndsWithinAnEscapeOfOneDigit", "http://u%4@127.0.0.1:1/cgi-bin/lumows"},
    {"UserWithAQuotation", "http://\"a@127.0.0.1:1/cgi-bin/lumows"},
    {"HostWithoutItsEndingBracket", "http://[::1"},
    {"HostWithoutItsEndingBracketBehindAUser", "http://u@[::1:80/cgi-bin/lumows"},
    {"TooLong", "http://127.0.0.1:1/" + std::string(1024 - 19, 'a')},
};

std::string complaint(const std::string &url) {
    return "soapcallsclientutil->make_webservice_request error url '" + url +
           "' cannot be used, one like http://localhost/cgi-bin/lumows of at most 1023 characters "
           "is needed";
}

class UnusableUrl : public testing::TestWithParam<url_case> {
  protected:
    const std::string &url() const {
        return GetParam().url;
    }
};

TEST_P(UnusableUrl, IsSaidWithoutAnyCall) {
    const struct {
        const char *function;
        const char *parameters;
        int status;
    } rows[] = {
        {"SERVICE_TEST", "", 502},
        {"SERVICE_SYSTEMINFO", "", 502},
        {"SERVICE_RUNONELEMENT", "a|b", 502},
        {"SERVICE_GETELEMENTSTATUS", "a|b", 508},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.function);
        const run_result run =
            lumocmd({"-t", "SOAP", "-u", url(), "-f", row.function, "-p", row.parameters});
        EXPECT_EQ(run.output, red(complaint(url())) + "LMCM-" + std::to_string(row.status) + "\n");
        EXPECT_EQ(run.errors, "");
        EXPECT_EQ(run.status, row.status & 0xff);
    }
}

TEST_P(UnusableUrl, StillShowsTheLinesOfATextRow) {
    const run_result run =
        lumocmd({"-t", "SOAP", "-u", "x", "-u", url(), "-f", "SERVICE_VERSIONINFO", "-v", "ON"});
    EXPECT_EQ(run.output, tagged_red(run.pid, complaint(url())) +
                              green(run.pid, "[lumocmd] Software Version: LUMOCMD Version: "
                                             "2.6.16_arlo [rev.7655] -") +
                              "LMCM-502\n");
}

TEST_P(UnusableUrl, MattersLessThanAWrongCount) {
    const run_result run = lumocmd({"-t", "SOAP", "-u", url(), "-f", "SERVICE_LOGIN", "-p", "a"});
    EXPECT_EQ(run.output, red("soapcallsclientutil->make_webservice_request error too few or too "
                              "much parameters, user, pass are needed") +
                              "LMCM-505\n");
    EXPECT_EQ(run.status, 505 & 0xff);
}

INSTANTIATE_TEST_SUITE_P(Table, UnusableUrl, testing::ValuesIn(UNUSABLE_URLS),
                         [](const auto &row) { return row.param.name; });

/// The longest url is sent to its last character.
TEST(LongestUrl, IsSentWhole) {
    peer service({collect_until("</SOAP-ENV:Envelope>"), close_connection()});
    std::string url = "http://127.0.0.1:" + std::to_string(service.port()) + "/";
    const std::string path(1023 - url.size() - 4, 'a');
    url += path + "/END";
    const run_result run = lumocmd({"-t", "SOAP", "-u", url, "-f", "SERVICE_TEST"});
    EXPECT_EQ(service.finish(), "");
    EXPECT_EQ(service.received().substr(0, service.received().find("\r\n")),
              "POST /" + path + "/END HTTP/1.1");
    EXPECT_EQ(run.output, "LMCM-502\n");
}

} // namespace
