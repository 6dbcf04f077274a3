// Answers that break off: whatever came of the result, there is none. Each framing is cut at every
// byte.

#include "tests/harness/console.h"
#include "tests/webservice/http_peer.h"

#include <cstdio>
#include <gtest/gtest.h>

namespace {

using namespace harness;

std::string head(const std::string &status, const std::string &headers) {
    return "HTTP/1.1 " + status + "\r\n" + headers + "\r\n";
}

/// As short as an envelope can be: every byte is one run.
std::string enveloped(const std::string &children, const std::string &behind = "") {
    return "<E:Envelope xmlns:E=\"http://schemas.xmlsoap.org/soap/envelope/\"><E:Body>"
           "<n:service-getelementstatusResponse xmlns:n=\"urn:xmethods-lumows\">" +
           children + "</n:service-getelementstatusResponse>" + behind + "</E:Body></E:Envelope>";
}

const std::string BODY =
    enveloped("<status>on</status><currentvalue>7</currentvalue><result>LMWS-042</result>");
const std::string RESULT_FIRST =
    enveloped("<result>LMWS-042</result><status>on</status><currentvalue>7</currentvalue>");
const std::string WITH_PREFIX =
    enveloped("<n:status>on</n:status><n:currentvalue>7</n:currentvalue><n:result>LMWS-042"
              "</n:result>");
const std::string BY_REFERENCE =
    enveloped("<status>on</status><currentvalue>7</currentvalue><result href=\"#r\"/>",
              "<multiRef id=\"r\">LMWS-042</multiRef>");

std::string hexadecimal(std::size_t number) {
    char text[32];
    snprintf(text, sizeof text, "%zx", number);
    return text;
}

std::string length_header(const std::string &body) {
    return "Content-Length: " + std::to_string(body.size()) + "\r\n";
}

constexpr char CHUNKED[] = "Transfer-Encoding: chunked\r\n";
constexpr char SOAP_TYPE[] = "http://schemas.xmlsoap.org/soap/envelope/";

std::string drops(const std::string &body) {
    std::string chunks;
    for (const char byte : body) {
        chunks += std::string("1\r\n") + byte + "\r\n";
    }
    return chunks + "0\r\n\r\n";
}

std::string dime(const std::string &body) {
    constexpr unsigned first_and_last = 6;
    return dime_record(first_and_last, 2, SOAP_TYPE, body, body.size());
}

/// A framing: what goes before the part that is cut, and what becomes of the first bytes of it.
struct framing_case {
    const char *name;
    std::string head;
    std::string cut; ///< as a whole it says 42, "on" and "7"
    std::string (*frame)(const std::string &part) = [](const std::string &part) { return part; };
};

const framing_case FRAMING_CASES[] = {
    {"HeadAndLength", "", head("200 OK", length_header(BODY)) + BODY},
    {"LengthOfTheCut", "", BODY,
     [](const std::string &part) { return head("200 OK", length_header(part)) + part; }},
    {"ResultFirst", head("200 OK", length_header(RESULT_FIRST)), RESULT_FIRST},
    {"ResultWithPrefix", head("200 OK", length_header(WITH_PREFIX)), WITH_PREFIX},
    {"ResultByReference", head("200 OK", length_header(BY_REFERENCE)), BY_REFERENCE},
    {"UntilTheEnd", head("200 OK", ""), BODY},
    {"WithoutHead", "", BODY},
    {"OldVersion", "HTTP/1.0 200 OK\r\n\r\n", BODY},
    {"BadRequest", head("400 Bad Request", ""), BODY},
    {"BadRequestWithLength", head("400 Bad Request", length_header(BODY)), BODY},
    {"ServerError", head("500 Internal Server Error", ""), BODY},
    {"ServerErrorWithLength", head("500 Internal Server Error", length_header(BODY)), BODY},
    {"OneChunk", head("200 OK", CHUNKED),
     hexadecimal(BODY.size()) + "\r\n" + BODY + "\r\n0\r\n\r\n"},
    {"ChunksOfOneByte", head("200 OK", CHUNKED), drops(BODY)},
    {"ChunkBeforeABadSize", head("200 OK", CHUNKED), BODY,
     [](const std::string &part) {
         return hexadecimal(part.size()) + "\r\n" + part + "\r\nzz\r\n";
     }},
    {"ChunkBeforeTheLast", head("200 OK", CHUNKED), BODY,
     [](const std::string &part) {
         return hexadecimal(part.size()) + "\r\n" + part + "\r\n0\r\n\r\n";
     }},
    {"Mime",
     head("200 OK", "Content-Type: multipart/related; boundary=B; start=\"<r>\"\r\n") +
         "--B\r\nContent-ID: <r>\r\n\r\n",
     BODY + "\r\n--B--\r\n"},
    {"Dime", head("200 OK", "Content-Type: application/dime\r\n"), dime(BODY)},
    {"DimeRecordOfTheCut", head("200 OK", "Content-Type: application/dime\r\n"), BODY, dime},
};

// Instrumented programs take their time: there every seventh byte must do.
#ifdef NDEBUG
constexpr std::size_t STEP = 1;
#else
constexpr std::size_t STEP = 7;
#endif

class CutFraming : public testing::TestWithParam<framing_case> {};

TEST_P(CutFraming, HasItsOwnResultOrNone) {
    const framing_case &row = GetParam();
    std::size_t results = 0;
    for (std::size_t length = row.cut.size() % STEP; length <= row.cut.size(); length += STEP) {
        SCOPED_TRACE(row.cut.substr(0, length));
        peer service(answering(row.head + row.frame(row.cut.substr(0, length))));
        const run_result run = call_service(service, RECORD_CALL);
        EXPECT_EQ(service.finish(), "");
        const std::string whole = record_lines(run.pid, "on", "7") + "FSMC-042\n";
        EXPECT_TRUE(run.output == whole || run.output == "LMCM-508\n") << run.output;
        EXPECT_EQ(run.status, run.output == whole ? 42 : (508 & 0xff));
        EXPECT_EQ(run.errors.empty(), run.output == whole) << run.errors;
        results += run.output == whole ? 1U : 0U;
    }
    EXPECT_GT(results, 0U) << "not even the whole answer was read";
}

INSTANTIATE_TEST_SUITE_P(Table, CutFraming, testing::ValuesIn(FRAMING_CASES), NAME_OF_ROW);

// What the other groups of functions make of a cut.

TEST(CutAnswer, LeavesASingleResultOr502) {
    const std::string body =
        "<E:Envelope xmlns:E=\"http://schemas.xmlsoap.org/soap/envelope/\"><E:Body>"
        "<n:service-testResponse xmlns:n=\"urn:xmethods-lumows\"><result>LMWS-042</result>"
        "</n:service-testResponse></E:Body></E:Envelope>";
    for (std::size_t length = body.size() % STEP; length <= body.size(); length += STEP) {
        SCOPED_TRACE(body.substr(0, length));
        peer service(answering(head("400 Bad Request", "") + body.substr(0, length)));
        const run_result run = call_service(service, {"-f", "SERVICE_TEST"});
        EXPECT_EQ(service.finish(), "");
        EXPECT_EQ(run.output, length == body.size() ? "FSMC-042\n" : "LMCM-502\n");
    }
}

TEST(CutAnswer, LeavesTheLinesOfATextRowWithoutTheirFields) {
    peer service(answering(head("500 Internal Server Error", "") +
                           "<E:Envelope xmlns:E=\"http://schemas.xmlsoap.org/soap/envelope/\">"
                           "<E:Body><n:service-retrieveconfigurationResponse "
                           "xmlns:n=\"urn:xmethods-lumows\"><url>http://a/</url><result>LMWS-0"));
    const run_result run = call_service(service, TEXT_CALL);
    EXPECT_EQ(service.finish(), "");
    EXPECT_EQ(run.output, text_line(run.pid, "(null)") + "LMCM-502\n");
}

} // namespace
