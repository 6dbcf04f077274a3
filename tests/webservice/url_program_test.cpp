// Urls that the runtime would misread: without a host it would write the request to standard output
// and wait on standard input, a long one it would cut, another transport might wait forever, an "@"
// in a path would lead elsewhere. They are failed calls, reported with the reason.

#include "tests/harness/console.h"
#include "tests/harness/peer.h"
#include "tests/harness/process.h"
#include "tests/webservice/http_peer.h"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

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
    {"Datagrams", "udp:@127.0.0.1:9/"},
    {"DatagramsWithSlashes", "udp://127.0.0.1:9/"},
    {"SoapDatagrams", "soap.udp:@127.0.0.1:9/"},
    {"WithoutScheme", "127.0.0.1:1/cgi-bin/lumows"},
    {"SchemeWithOneSlash", "http:/127.0.0.1:1/"},
    {"AtInThePath", "http://127.0.0.1:9/x/@127.0.0.2:8/"},
    {"AtInTheQuery", "http://127.0.0.1:9/x?mail=a@other"},
    {"AtInTheQueryOfAHost", "http://127.0.0.1?a@other"},
    {"AtInTheFragment", "http://127.0.0.1:9/x#a@other"},
    {"FragmentOfAHost", "http://127.0.0.1#a@other/"},
    {"FragmentBehindAHost", "http://127.0.0.1#a"},
    {"FragmentBehindAPort", "http://127.0.0.1:1#a"},
    {"QueryBehindAPort", "http://127.0.0.1:1?a"},
    {"SecondAtInTheHost", "http://a@b@127.0.0.1:1/"},
    {"EmptyUser", "http://@127.0.0.1:1/"},
    {"PasswordWithoutUser", "http://:p@127.0.0.1:1/"},
    {"UserWithoutHost", "http://u@"},
    {"PortMissing", "http://127.0.0.1:/"},
    {"PortOfLetters", "http://127.0.0.1:http/"},
    {"PortWithALetter", "http://127.0.0.1:1x/"},
    {"PortNegative", "http://127.0.0.1:-1/"},
    {"PortBeyondTheLast", "http://127.0.0.1:65536/"},
    {"PortBeyondAnyNumber", "http://127.0.0.1:99999999999999999999/"},
    {"HostOfAnyAddress", "http://*:8/"},
    {"HostWithAnEscape", "http://127.0.0.%33/"},
    {"HostWithABackslash", "http://127.0.0.1\\@127.0.0.2:8/"},
    {"UserWithABackslash", "http://u\\x@127.0.0.2:8/"},
    {"UserWithAZeroByte", "http://u%00x@127.0.0.1:8/"},
    {"NameInBrackets", "http://[localhost]/"},
    {"AddressOfIPv4InBrackets", "http://[127.0.0.3]/"},
    {"FutureAddressInBrackets", "http://[v1.127.0.0.3]/"},
    {"ZoneInBrackets", "http://[fe80::1%251]:8/"},
    {"FragmentInThePath", "http://127.0.0.1:9/a#b"},
    {"BracketsAlone", "http://[]/"},
    {"TextBehindTheBracket", "http://[::1]x/"},
    {"BracketEndsInThePath", "http://[::1/]"},
    {"SecureTransport", "https://127.0.0.1/cgi-bin/lumows"},
    {"BlankInside", "http://127.0.0.1:1/cgi-bin/lumows x"},
    {"LineFeedInside", "http://127.0.0.1:1/cgi-bin/lumows\nx"},
    {"ControlCharacterInside", "http://127.0.0.1:1/cgi-bin/\x7f"},
    {"UserEndsWithinAnEscape", "http://u%@127.0.0.1:1/cgi-bin/lumows"},
    {"UserEndsWithinAnEscapeOfOneDigit", "http://u%4@127.0.0.1:1/cgi-bin/lumows"},
    {"UserEndsWithinAnEscapeOfOneLetter", "http://u%F@127.0.0.1:1/cgi-bin/lumows"},
    {"UserWithAnEscapeOfAnotherLetter", "http://u%g4@127.0.0.1:1/cgi-bin/lumows"},
    {"UserWithAnEscapeOfADigitAndAnotherLetter", "http://u%4g@127.0.0.1:1/cgi-bin/lumows"},
    {"PasswordEndsWithinAnEscape", "http://u:p%@127.0.0.1:1/cgi-bin/lumows"},
    {"PercentBeforeTheOnlyAt", "http://127.0.0.1:1/100%@b"},
    {"UserWithAQuotation", "http://\"a@127.0.0.1:1/cgi-bin/lumows"},
    {"HostWithoutItsEndingBracket", "http://[::1"},
    {"HostWithoutItsEndingBracketBehindAUser", "http://u@[::1:80/cgi-bin/lumows"},
    {"HostWithoutItsEndingBracketBehindABracketedUser", "http://[u]@[::1:80/cgi-bin/lumows"},
    {"TooLong", "http://127.0.0.1:1/" + std::string(1024 - 19, 'a')},
};

/// The report on standard error. Its first line is the runtime's.
void expect_reported(const run_result &run, const std::string &url) {
    EXPECT_TRUE(run.errors.starts_with("Error 3986 fault ")) << run.errors;
    EXPECT_EQ(run.errors.substr(run.errors.find('\n') + 1),
              "\"url '" + url +
                  "' cannot be used\"\n"
                  "Detail: one like http://localhost/cgi-bin/lumows of at most 1023 characters is "
                  "needed\n");
}

class UnusableUrl : public testing::TestWithParam<url_case> {
  protected:
    const std::string &url() const {
        return GetParam().url;
    }
};

TEST_P(UnusableUrl, IsAFailedCall) {
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
        EXPECT_EQ(run.output, "LMCM-" + std::to_string(row.status) + "\n");
        expect_reported(run, url());
        EXPECT_EQ(run.status, row.status & 0xff);
    }
}

TEST_P(UnusableUrl, StillShowsTheLinesOfATextRow) {
    const run_result run =
        lumocmd({"-t", "SOAP", "-u", "x", "-u", url(), "-f", "SERVICE_VERSIONINFO", "-v", "ON"});
    EXPECT_EQ(run.output, green(run.pid, "[lumocmd] Software Version: LUMOCMD Version: "
                                         "2.6.16_arlo [rev.7655] -") +
                              "LMCM-502\n");
    expect_reported(run, url());
}

TEST_P(UnusableUrl, MattersLessThanAWrongCount) {
    const run_result run = lumocmd({"-t", "SOAP", "-u", url(), "-f", "SERVICE_LOGIN", "-p", "a"});
    EXPECT_EQ(run.output, red("soapcallsclientutil->make_webservice_request error too few or too "
                              "much parameters, user, pass are needed") +
                              "LMCM-505\n");
    EXPECT_EQ(run.errors, "");
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

// Close to what is refused, and sent all the same.

struct usable_case {
    const char *name;
    const char *user;          ///< with its "@", or nothing
    const char *host;          ///< as it stands in the url and in the request
    const char *path;          ///< from its "/" on
    const char *authorization; ///< what becomes of the user
};

const usable_case USABLE_URLS[] = {
    {"WithoutUser", "", "127.0.0.1", "/", "(absent)"},
    {"EscapeInTheUser", "u%41@", "127.0.0.1", "/", "Basic dUE6"},
    {"EscapeIsTheUser", "%41@", "127.0.0.1", "/", "Basic QTo="},
    {"EscapesInLowerCase", "u%4a:p%2fw@", "127.0.0.1", "/", "Basic dUo6cC93"},
    {"EscapesInUpperCase", "u%4A:p%2Fw@", "127.0.0.1", "/", "Basic dUo6cC93"},
    {"PercentInThePath", "", "127.0.0.1", "/100%", "(absent)"},
    {"PercentBehindTheUser", "u@", "127.0.0.1", "/100%", "Basic dTo="},
    {"QuotationBehindTheUser", "u@", "127.0.0.1", "/a\"b", "Basic dTo="},
    {"QuotationInThePath", "", "127.0.0.1", "/a\"b", "(absent)"},
    {"AtInThePath", "u@", "127.0.0.1", "/a@b", "Basic dTo="},
    {"PercentBeforeAnotherAt", "u@", "127.0.0.1", "/100%@b", "Basic dTo="},
    {"QuotationBeforeAnotherAt", "u@", "127.0.0.1", "/a\"@b", "Basic dTo="},
    {"QueryWithAnAtBehindAUser", "u@", "127.0.0.1", "/x?mail=a@other", "Basic dTo="},
    {"BracketInThePath", "", "127.0.0.1", "/[", "(absent)"},
    {"BracketBehindAnAtInThePath", "u@", "127.0.0.1", "/a@[b", "Basic dTo="},
    {"BracketInTheUser", "[u@", "127.0.0.1", "/", "Basic W3U6"},
};

class UsableUrl : public testing::TestWithParam<usable_case> {};

void expect_sent(const usable_case &row) {
    peer service(
        answering(http_answer(envelope(response_element("test", "<result>LMWS-402</result>")))));
    const std::string host = std::string(row.host) + ":" + std::to_string(service.port());
    const run_result run = lumocmd(
        {"-t", "SOAP", "-u", "http://" + (row.user + host) + row.path, "-f", "SERVICE_TEST"});
    EXPECT_EQ(service.finish(), "");
    const http_request request = split_request(service.received());
    EXPECT_EQ(request.method, "POST");
    EXPECT_EQ(request.path, row.path);
    EXPECT_EQ(request.header("Host"), host);
    EXPECT_EQ(request.header("Authorization"), row.authorization);
    EXPECT_EQ(run.output, "LMWS-402\n");
    EXPECT_EQ(run.errors, "");
}

TEST_P(UsableUrl, IsCalled) {
    expect_sent(GetParam());
}

INSTANTIATE_TEST_SUITE_P(Table, UsableUrl, testing::ValuesIn(USABLE_URLS), NAME_OF_ROW);

TEST(SchemeInAnyCase, IsCalled) {
    for (const char *scheme : {"HTTP://", "Http://"}) {
        peer service(answering(
            http_answer(envelope(response_element("test", "<result>LMWS-402</result>")))));
        const run_result run = lumocmd(
            {"-t", "SOAP", "-u", scheme + ("127.0.0.1:" + std::to_string(service.port())) + "/",
             "-f", "SERVICE_TEST"});
        EXPECT_EQ(service.finish(), "");
        EXPECT_EQ(run.output, "LMWS-402\n");
        EXPECT_EQ(run.errors, "");
    }
}

/// The address is the loopback's of IPv4, written as one of IPv6.
TEST(NumericHostInBrackets, IsCalled) {
    const int descriptor = socket(AF_INET6, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (descriptor < 0) {
        GTEST_SKIP() << "this system has no IPv6";
    }
    close(descriptor);
    expect_sent({"Alone", "", "[::ffff:127.0.0.1]", "/cgi-bin/lumows", "(absent)"});
    expect_sent({"BehindAUser", "u%41@", "[::ffff:127.0.0.1]", "/", "Basic dUE6"});
}

} // namespace
