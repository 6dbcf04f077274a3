// Answers that break off: whatever came of the result, there is none. Each framing is cut at every
// byte.

#include "tests/front/fresh_globals.h"
#include "tests/harness/console.h"
#include "tests/webservice/http_peer.h"
#include "webservice/soapcallsclientutil.h"

#include <gtest/gtest.h>
#include <unistd.h>

namespace {

using namespace harness;

constexpr char SOAP_NAMESPACE[] = "http://schemas.xmlsoap.org/soap/envelope/";

/// As short as an envelope can be, in two parts: every byte of a part is one call.
std::string start_of(const std::string &operation) {
    return std::string("<E:Envelope xmlns:E=\"") + SOAP_NAMESPACE + "\"><E:Body><n:service-" +
           operation + "Response xmlns:n=\"urn:xmethods-lumows\">";
}

std::string rest_of(const std::string &operation, const std::string &children,
                    const std::string &behind = "") {
    return children + "</n:service-" + operation + "Response>" + behind + "</E:Body></E:Envelope>";
}

const std::string START = start_of("test");
const std::string REST = rest_of("test", "<result>LMWS-042</result>");

std::string head(const std::string &status, const std::string &headers) {
    return "HTTP/1.1 " + status + "\r\n" + headers + "\r\n";
}

std::string length_of(const std::string &body) {
    return "Content-Length: " + std::to_string(body.size()) + "\r\n";
}

const std::string CHUNKED = head("200 OK", "Transfer-Encoding: chunked\r\n");
const std::string DIME = head("200 OK", "Content-Type: application/dime\r\n");

std::string chunks_of_one_byte(const std::string &body) {
    std::string chunks;
    for (const char byte : body) {
        chunks += http_chunk(std::string(1, byte));
    }
    return chunks + http_chunk("");
}

std::string dime(const std::string &body) {
    constexpr unsigned first_and_last = 6;
    return dime_record(first_and_last, 2, SOAP_NAMESPACE, body, body.size());
}

/// A call of one of the groups of functions.
struct called {
    const char *function;
    const char *parameters;
    std::string lines;         ///< with the result
    std::string lines_without; ///< and without
    int status_without;
};

struct framing {
    const char *name;
    std::string head;       ///< goes before the part that is cut
    std::string cut = REST; ///< as a whole it says 42
    /// What becomes of the first bytes of it.
    std::string (*frame)(const std::string &part) = [](const std::string &part) { return part; };
};

using CutAnswer = front_tests::FreshGlobals;

/// Cuts at every byte.
void has_its_result_or_none(const framing &row, const called &call) {
    g_config.verbose = 1;
    for (std::size_t length = 0; length <= row.cut.size(); length++) {
        const std::string part = row.cut.substr(0, length);
        SCOPED_TRACE(std::string(row.name) + ": " + part);
        peer service(answering(row.head + row.frame(part)));
        int status = 0;
        std::string output;
        const std::string errors = captured_output(
            [&] {
                output = captured_output([&] {
                    status = make_webservice_request(url_of(service).c_str(), call.function,
                                                     call.parameters, 0);
                });
            },
            stderr);
        EXPECT_EQ(service.finish(), "");
        const bool has_result = length == row.cut.size() || status == 42;
        EXPECT_EQ(status, has_result ? 42 : call.status_without);
        EXPECT_EQ(output, has_result ? call.lines : call.lines_without);
        EXPECT_EQ(errors.empty(), has_result) << errors;
    }
}

TEST_F(CutAnswer, HasItsOwnResultOrNoneInAnyFraming) {
    const std::string body = START + REST;
    const std::string error = "500 Internal Server Error";
    const framing framings[] = {
        {"LengthOfTheCut", "", REST,
         [](const std::string &part) {
             return head("200 OK", length_of(START + part)) + START + part;
         }},
        {"ResultWithPrefix", head("200 OK", "") + START,
         rest_of("test", "<n:result>LMWS-042</n:result>")},
        {"ResultByReference", head("200 OK", "") + START,
         rest_of("test", "<result href=\"#r\"/>", "<multiRef id=\"r\">LMWS-042</multiRef>")},
        {"UntilTheEnd", head("200 OK", "") + START},
        {"WithoutHead", START},
        {"OldVersion", "HTTP/1.0 200 OK\r\n\r\n" + START},
        {"BadRequest", head("400 Bad Request", "") + START},
        {"BadRequestWithLength", head("400 Bad Request", length_of(body)) + START},
        {"ServerError", head(error, "") + START},
        {"ServerErrorWithLength", head(error, length_of(body)) + START},
        {"OneChunk", CHUNKED + http_chunk(body).substr(0, START.size() + 4),
         http_chunk(body).substr(START.size() + 4) + http_chunk("")},
        {"ChunksOfOneByte", CHUNKED + http_chunk(START), chunks_of_one_byte(REST)},
        {"ChunkBeforeABadSize", CHUNKED, REST,
         [](const std::string &part) { return http_chunk(START + part) + "zz\r\n"; }},
        {"ChunkBeforeTheLast", CHUNKED, REST,
         [](const std::string &part) { return http_chunk(START + part) + http_chunk(""); }},
        {"Mime",
         head("200 OK", "Content-Type: multipart/related; boundary=B; start=\"<r>\"\r\n") +
             "--B\r\nContent-ID: <r>\r\n\r\n" + START,
         REST + "\r\n--B--\r\n"},
        {"Dime", DIME, dime(body)},
        {"DimeRecordOfTheCut", DIME, REST,
         [](const std::string &part) { return dime(START + part); }},
    };
    for (const framing &row : framings) {
        has_its_result_or_none(row, {"SERVICE_TEST", nullptr, "", "", 502});
    }
}

TEST_F(CutAnswer, ShowsTheFieldsOfARecordOrNone) {
    const called call = {"SERVICE_GETELEMENTSTATUS", "s|i", record_lines(getpid(), "on", "7"), "",
                         508};
    const std::string start = start_of("getelementstatus");
    const std::string result = "<result>LMWS-042</result>";
    const std::string fields = "<status>on</status><currentvalue>7</currentvalue>";
    const std::string rest = rest_of("getelementstatus", fields + result);
    has_its_result_or_none(
        {"HeadAndAll", "", head("200 OK", length_of(start + rest)) + start + rest}, call);
    has_its_result_or_none({"ResultFirst", head("200 OK", length_of(start + rest)) + start,
                            rest_of("getelementstatus", result + fields)},
                           call);
}

TEST_F(CutAnswer, ShowsTheLinesOfATextGroupWithoutTheirFields) {
    has_its_result_or_none(
        {"Rest", head("500 Internal Server Error", "") + start_of("retrieveconfiguration"),
         rest_of("retrieveconfiguration", "<url>u</url><result>LMWS-042</result>")},
        {"SERVICE_RETRIEVECONFIGURATION", "s", text_line(getpid(), "u"),
         text_line(getpid(), "(null)"), 502});
}

} // namespace
