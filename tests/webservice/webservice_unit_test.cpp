// The client's functions by themselves: what a url means, what becomes of an answer that breaks
// off, and what the generated calls return.

#include "tests/front/fresh_globals.h"
#include "tests/webservice/http_peer.h"
#include "webservice/client_runtime.h"
#include "webservice/endpoint.h"
#include "webservice/service_calls.h"
#include "webservice/soapcallsclientutil.h"

#include <gtest/gtest.h>
#include <unistd.h>

namespace {

using namespace harness;

// ---------------------------------------------------------------------------------------------
// Urls that the runtime would misread: without a host it would write the request to standard output
// and wait on standard input, a long one it would cut, another transport might wait forever, an "@"
// in a path would lead elsewhere. And those that mean this very machine.

TEST(Endpoint, IsUnusableWhereTheRuntimeWouldMisreadIt) {
    for (const char *url :
         {// Another transport, or none.
          "", "/cgi-bin/lumows", ":80", "127.0.0.1:1/cgi-bin/lumows", "http:/127.0.0.1:1/",
          "https://127.0.0.1/", "udp://127.0.0.1:9/", "soap.udp:@127.0.0.1:9/",
          // No host.
          "http://", "http:///cgi-bin/lumows", "http://:80/", "http://u@", "http://?a",
          // A host that is none, or another one to the runtime.
          "http://*:8/", "http://127.0.0.%33/", "http://127.0.0.1\\@127.0.0.2:8/",
          "http://a@b@127.0.0.1:1/", "http://[localhost]/", "http://[127.0.0.3]/",
          "http://[v1.127.0.0.3]/", "http://[fe80::1%251]:8/", "http://[]/", "http://[::1]x/",
          "http://[::1/]", "http://u@[::1:80/", "http://[u]@[::1:80/",
          "http://[::1\0/", // what follows the end must not be read
          "http://[1111:2222:3333:4444:5555:6666:7777:127.127.127.1270]/",
          // A port that is none.
          "http://127.0.0.1:/", "http://127.0.0.1:http/", "http://127.0.0.1:1x/",
          "http://127.0.0.1:-1/", "http://127.0.0.1:+1/", "http://127.0.0.1: 1/",
          "http://127.0.0.1:65536/", "http://127.0.0.1:99999999999999999999/",
          "http://127.0.0.1:1?a",
          // An "@" that ends no user.
          "http://127.0.0.1:9/x/@127.0.0.2:8/", "http://127.0.0.1:9/x?mail=a@other",
          "http://127.0.0.1?a@b", "http://127.0.0.1:1/100%@b",
          // A user that the runtime would not decode, or end too early.
          "http://@127.0.0.1:1/", "http://:p@127.0.0.1:1/", "http://u\\x@127.0.0.2:8/",
          "http://\"a@127.0.0.1:1/", "http://u%00x@127.0.0.1:8/", "http://u%@127.0.0.1:1/",
          "http://u%4@127.0.0.1:1/", "http://u%F@127.0.0.1:1/", "http://u%g4@127.0.0.1:1/",
          "http://u%4g@127.0.0.1:1/", "http://u:p%@127.0.0.1:1/",
          // A fragment, a blank, a control character.
          "http://127.0.0.1#a", "http://127.0.0.1:1#a", "http://127.0.0.1:9/a#b",
          "http://127.0.0.1:9/x#a@b", "http://127.0.0.1:1/a b", "http://127.0.0.1:1/a\nb",
          "http://127.0.0.1:1/\x7f", "http://127.0.0.1:1/\x01"}) {
        EXPECT_FALSE(is_usable_endpoint(url)) << url;
    }
}

TEST(Endpoint, IsUsableCloseToThat) {
    for (const char *url :
         {"http://h", "HTTP://h/", "http://h?q", "http://h:0/", "http://h:65535", "http://[::1]",
          "http://[::1]:1/[", "http://[u@h/a@[b", "http://u%41:p%2f%30@h/", "http://%4A@h",
          "http://u@h/100%@b", "http://u@h/a\"@b", "http://u@h/x?mail=a@b",
          "http://h/100%\"\\*:[]!~\xff",
          "http://[1111:2222:3333:4444:5555:6666:127.127.127.127]/"}) {
        EXPECT_TRUE(is_usable_endpoint(url)) << url;
    }
    EXPECT_TRUE(is_usable_endpoint(nullptr)); // the default one
    const std::string longest = "http://h/" + std::string(1023 - 9, 'a');
    EXPECT_TRUE(is_usable_endpoint(longest.c_str()));
    EXPECT_FALSE(is_usable_endpoint((longest + "a").c_str()));
    EXPECT_EQ(longest_endpoint(), 1023);
}

TEST(Endpoint, IsLocalByNameAndByAddressInAnyCase) {
    for (const char *url : {"http://localhost/cgi-bin/lumows", "http://127.0.0.1/cgi-bin/lumows",
                            "HTTP://LOCALHOST/CGI-BIN/LUMOWS", "HTTP://127.0.0.1/Cgi-Bin/LumoWS"}) {
        EXPECT_TRUE(is_local_endpoint(url)) << url;
    }
    EXPECT_TRUE(is_local_endpoint(nullptr)); // the default one
    for (const char *url :
         {"http://localhost:80/cgi-bin/lumows", "http://localhost/cgi-bin/lumows/",
          "http://localhost/cgi-bin/lumow", "http://127.1/cgi-bin/lumows"}) {
        EXPECT_FALSE(is_local_endpoint(url)) << url;
    }
}

// ---------------------------------------------------------------------------------------------
// Answers that break off: whatever came of the result, there is none

constexpr char ENVELOPE_NAMESPACE[] = "http://schemas.xmlsoap.org/soap/envelope/";

/// As short as an envelope can be, in two parts: every byte of a part is one call.
std::string start_of(const std::string &operation) {
    return std::string("<E:Envelope xmlns:E=\"") + ENVELOPE_NAMESPACE + "\"><E:Body><n:service-" +
           operation + "Response xmlns:n=\"urn:xmethods-lumows\">";
}

std::string rest_of(const std::string &operation, const std::string &children,
                    const std::string &behind = "") {
    return children + "</n:service-" + operation + "Response>" + behind + "</E:Body></E:Envelope>";
}

const std::string RESULT = "<result>LMWS-042</result>";
const std::string START = start_of("test");
const std::string REST = rest_of("test", RESULT);

std::string head(const std::string &headers = "", const std::string &status = "200 OK") {
    return "HTTP/1.1 " + status + "\r\n" + headers + "\r\n";
}

std::string length_of(const std::string &body) {
    return "Content-Length: " + std::to_string(body.size()) + "\r\n";
}

/// A call of one of the groups of functions.
struct called {
    const char *function;
    const char *parameters;
    std::string lines;         ///< with the result
    std::string lines_without; ///< and without
    int status_without;
};

using CutAnswer = front_tests::FreshGlobals;

/// What becomes of the first bytes of a part that is cut.
using framing = std::string (*)(const std::string &part);

/// Cuts behind a head at every byte. As a whole it says 42.
void has_its_result_or_none(
    const std::string &head, const std::string &whole,
    const called &call = {"SERVICE_TEST", nullptr, "", "", 502},
    framing framed = [](const std::string &part) { return part; }) {
    g_config.verbose = 1;
    for (std::size_t length = 0; length <= whole.size(); length++) {
        const std::string answer = head + framed(whole.substr(0, length));
        SCOPED_TRACE(answer);
        peer service(answering(answer));
        int status = 0;
        std::string output;
        const auto make_call = [&] {
            status =
                make_webservice_request(url_of(service).c_str(), call.function, call.parameters, 0);
        };
        const std::string errors =
            captured_output([&] { output = captured_output(make_call); }, stderr);
        EXPECT_EQ(service.finish(), "");
        const bool has_result = length == whole.size() || status == 42;
        EXPECT_EQ(status, has_result ? 42 : call.status_without);
        EXPECT_EQ(output, has_result ? call.lines : call.lines_without);
        EXPECT_EQ(errors.empty(), has_result) << errors;
    }
}

TEST_F(CutAnswer, HasItsOwnResultOrNoneInAnyFraming) {
    const std::string body = START + REST;
    has_its_result_or_none(head() + START, REST);
    has_its_result_or_none(START, REST);
    has_its_result_or_none("HTTP/1.0 200 OK\r\n\r\n" + START, REST);
    has_its_result_or_none(head("", "400 Bad Request") + START, REST);
    has_its_result_or_none(head(length_of(body), "500 Internal Server Error") + START, REST);
    has_its_result_or_none(head() + START, rest_of("test", "<result href=\"#r\"/>",
                                                   "<multiRef id=\"r\">LMWS-042</multiRef>"));
    has_its_result_or_none(head("Content-Type: multipart/related; boundary=B; start=\"<r>\"\r\n") +
                               "--B\r\nContent-ID: <r>\r\n\r\n" + START,
                           REST + "\r\n--B--\r\n");

    const std::string chunked = head("Transfer-Encoding: chunked\r\n");
    const std::string chunk = http_chunk(body);
    has_its_result_or_none(chunked + chunk.substr(0, START.size() + 4),
                           chunk.substr(START.size() + 4) + http_chunk(""));
    std::string chunks_of_one_byte;
    for (const char byte : REST) {
        chunks_of_one_byte += http_chunk(std::string(1, byte));
    }
    has_its_result_or_none(chunked + http_chunk(START), chunks_of_one_byte + http_chunk(""));

    const std::string dime = head("Content-Type: application/dime\r\n");
    const framing dime_of = [](const std::string &text) {
        constexpr unsigned first_and_last = 6;
        return dime_record(first_and_last, 2, ENVELOPE_NAMESPACE, text, text.size());
    };
    has_its_result_or_none(dime, dime_of(body));

    // The frame is whole, what it holds is not.
    const called call = {"SERVICE_TEST", nullptr, "", "", 502};
    has_its_result_or_none("", body, call,
                           [](const std::string &part) { return head(length_of(part)) + part; });
    has_its_result_or_none(chunked, body, call,
                           [](const std::string &part) { return http_chunk(part) + "zz\r\n"; });
    has_its_result_or_none(chunked, body, call, [](const std::string &part) {
        return http_chunk(part) + http_chunk("");
    });
    has_its_result_or_none(dime, body, call, dime_of);
}

TEST_F(CutAnswer, ShowsTheFieldsOfARecordOrNone) {
    const called call = {"SERVICE_GETELEMENTSTATUS", "s|i", record_lines(getpid(), "on", "7"), "",
                         508};
    const std::string start = start_of("getelementstatus");
    const std::string fields = "<status>on</status><currentvalue>7</currentvalue>";
    const std::string rest = rest_of("getelementstatus", fields + RESULT);
    has_its_result_or_none("", head(length_of(start + rest)) + start + rest, call);
    has_its_result_or_none(head() + start, rest_of("getelementstatus", RESULT + fields), call);
}

TEST_F(CutAnswer, ShowsTheLinesOfATextGroupWithoutTheirFields) {
    has_its_result_or_none(head("", "500 Internal Server Error") +
                               start_of("retrieveconfiguration"),
                           rest_of("retrieveconfiguration", "<url>u</url>" + RESULT),
                           {"SERVICE_RETRIEVECONFIGURATION", "s", text_line(getpid(), "u"),
                            text_line(getpid(), "(null)"), 502});
}

// ---------------------------------------------------------------------------------------------
// Generated calls

TEST(ClientRuntime, BothLanguagesSeeTheSameContext) {
    EXPECT_EQ(lumows_context_size(), sizeof(struct soap));
}

/// A body that is neither response nor fault is the tag mismatch of release 2.7; later ones take
/// the HTTP status.
TEST(Call, ReturnsTheRuntimesCode) {
    const std::pair<std::string, int> rows[] = {
        {response_element("test", RESULT), SOAP_OK},
        {fault_element("SOAP-ENV:Server", "why"), 2},
        {fault_element("SOAP-ENV:Receiver", "why"), 2},
        {fault_element("SOAP-ENV:Client", "why"), 1},
        {fault_element("SOAP-ENV:Sender", "why"), 1},
        {fault_element("SOAP-ENV:MustUnderstand", "why"), 8},
        {fault_element("SOAP-ENV:VersionMismatch", "why"), SOAP_VERSIONMISMATCH},
        {fault_element("ns:busy", "why"), 12},
        {response_element("test", "<SOAP-ENV:more/>"), 3},
        {response_element("login", RESULT), 200},
    };
    for (const auto &[content, wanted] : rows) {
        SCOPED_TRACE(content);
        peer service(answering(http_answer(envelope(content))));
        struct soap *context = soap_new();
        char waittime[] = "10";
        struct ns__service_testResponse response = {waittime}; // something stale
        const int code = soap_call_ns__service_test(context, url_of(service).c_str(), nullptr,
                                                    waittime, &response);
        EXPECT_EQ(service.finish(), "");
        EXPECT_TRUE(code == wanted || (wanted == 200 && code == 3)) << code;
        EXPECT_EQ(context->error, code);
        EXPECT_STREQ(response.result, wanted == SOAP_OK ? "LMWS-042" : nullptr);
        soap_destroy(context);
        soap_end(context);
        soap_free(context);
    }
}

} // namespace
