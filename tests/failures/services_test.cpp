// Answers of a web service that are wrong in themselves: what is shown is what the service sent, or
// there is no result; never anything in between.

#include "tests/harness/console.h"
#include "tests/webservice/http_peer.h"

#include <gtest/gtest.h>

namespace {

using namespace harness;
using namespace std::string_literals;

std::string http_head(const std::string &headers = "", const std::string &status = "200 OK",
                      const std::string &type = "text/xml; charset=utf-8") {
    return "HTTP/1.1 " + status + "\r\nContent-Type: " + type + "\r\n" + headers + "\r\n";
}

const std::string GOOD = envelope(response_element("getelementstatus", USUAL_RECORD));
const std::string LENGTH = std::to_string(GOOD.size());

std::string with_length(const std::string &length) {
    return http_head("Content-Length: " + length + "\r\n") + GOOD;
}

const std::string WHOLE = with_length(LENGTH);
const std::string LAST_CHUNK = http_chunk("");

std::string chunked(const std::string &body, const std::string &more_headers = "") {
    return http_head("Transfer-Encoding: chunked\r\n" + more_headers) + body;
}

std::string repeated(int times, const std::string &text) {
    std::string all;
    for (int i = 0; i < times; i++) {
        all += text;
    }
    return all;
}

enum class verdict {
    READ,             ///< all fields, no report
    NO_RESULT,        ///< and a report
    WHOLE_OR_NOTHING, ///< one of the two; HTTP leaves it open
};
using enum verdict;

/// One run against a service with this script, which begins with the request or not.
void expect_verdict(const script &steps, verdict wanted) {
    peer service(steps);
    const run_result run = call_service(service, RECORD_CALL);
    const bool is_read = wanted == READ || (wanted == WHOLE_OR_NOTHING && run.status == 0);
    EXPECT_EQ(run.output,
              is_read ? record_lines(run.pid, "on", "7") + "LMCM-0000\n" : "LMCM-508\n");
    EXPECT_EQ(run.errors.empty(), is_read) << run.errors;
    EXPECT_EQ(run.status, is_read ? 0 : 508 & 0xff);
    EXPECT_EQ(service.finish(), "");
}

TEST(ServiceAnswer, MayComeAtAnyTime) {
    expect_verdict({reply(WHOLE), collect_until("</SOAP-ENV:Envelope>\r\n"), close_connection()},
                   READ);
    expect_verdict({reply(WHOLE), ignore()}, READ);
    expect_verdict(after_request({reply(WHOLE.substr(0, WHOLE.size() / 2)), reset()}), NO_RESULT);
    expect_verdict(after_request({reply(WHOLE), reset()}), WHOLE_OR_NOTHING);
}

struct answer_case {
    std::string answer;
    verdict wanted = WHOLE_OR_NOTHING;
};

void expect_verdicts(std::initializer_list<answer_case> rows) {
    for (const answer_case &row : rows) {
        SCOPED_TRACE(row.answer.substr(0, 200));
        expect_verdict(after_request({reply(row.answer), close_connection()}), row.wanted);
    }
}

TEST(ServiceAnswer, OfAnOddLength) {
    for (const char *odd : {"-1", "10", "2147483648", "99999999999999999999", "many"}) {
        expect_verdicts({{with_length(odd)}});
    }
    for (const char *huge : {"ffffffffffffffff", "fffffffffffffffff", "7fffffff"}) {
        expect_verdicts({{chunked(huge + ("\r\n" + GOOD))}});
    }
    for (const char *wrong : {"-5", "zz", "10"}) {
        expect_verdicts({{chunked(wrong + ("\r\n" + GOOD + "\r\n" + LAST_CHUNK)), NO_RESULT}});
    }
    expect_verdicts({{with_length(LENGTH + "\r\nContent-Length: " + LENGTH), READ},
                     {chunked(http_chunk(GOOD) + LAST_CHUNK, "Content-Length: 10\r\n"), READ},
                     {chunked(std::string(100000, '0')), NO_RESULT},
                     {chunked(LAST_CHUNK + http_chunk(GOOD)), NO_RESULT}});
}

TEST(ServiceAnswer, WithAnOddHead) {
    const std::string proceed = "HTTP/1.1 100 Continue\r\n\r\n";
    expect_verdicts({
        {"HTTP/1.1 101 Switching\r\n\r\n" + WHOLE, NO_RESULT},
        {repeated(1000, proceed) + WHOLE, READ},
        {proceed, NO_RESULT},
        {http_head("Content-Encoding: gzip\r\n") + "\x1f\x8b\x08\x00 no more"s, NO_RESULT},
        {http_head("Content-Encoding: deflate\r\n") + GOOD, NO_RESULT},
        // The runtime would read behind a line without a realm.
        {http_head("WWW-Authenticate: Basic\r\n", "401 Who") + "who?", NO_RESULT},
        {http_head("WWW-Authenticate: Basic realm=\"x\"\r\n", "401 Who") + "who?", NO_RESULT},
        {http_head("Proxy-Authenticate: Basic realm=\"x\"\r\n", "407 Who") + GOOD, NO_RESULT},
        // What the runtime allocated for these would not be there.
        {http_head("Content-Length: 99999999999\r\n", "403 No") + "no", NO_RESULT},
        {http_head("Content-Length: 2147483647\r\n", "403 No") + "no", NO_RESULT},
    });
}

TEST(ServiceAnswer, WithOddBytesAndReferences) {
    const std::string result = "<result>LMWS-000</result>";
    const auto answer = [](const std::string &children) {
        return http_head() + envelope(response_element("getelementstatus", children));
    };
    expect_verdicts(
        {{"\0"s + WHOLE},
         {std::string(100000, '\0'), NO_RESULT},
         {answer("<result>LMWS-000\0 99</result><status>on\0off</status>"
                 "<currentvalue>7</currentvalue>"s),
          READ},
         {answer(result + "<status href=\"#a\"/><m id=\"a\" href=\"#a\"/>"), NO_RESULT},
         {answer(result + "<status id=\"a\" href=\"#a\"/>"), NO_RESULT},
         {answer("<result href=\"#a\"/><m id=\"a\" href=\"#b\"/><m id=\"b\" href=\"#a\"/>"),
          NO_RESULT}});
}

// ---------------------------------------------------------------------------------------------

/// The answer and an attachment that announces its size.
std::string with_dime(std::size_t announced) {
    return http_head("", "200 OK", "application/dime") +
           dime_record(4, 2, "http://schemas.xmlsoap.org/soap/envelope/", GOOD, GOOD.size()) +
           dime_record(2, 1, "text/plain", "attached", announced);
}

TEST(ServiceAnswer, WithAttachments) {
    expect_verdicts({{with_dime(8), READ}, {with_dime(0xffffffff), NO_RESULT}});
}

/// Its announced size is looked at before memory for it is: whatever the machine has, the report is
/// about the attachment.
TEST(ServiceAnswer, WithAHugeAttachmentIsRefusedBeforeItIsAllocated) {
    const run_result run = call_answered(with_dime(0x7ffffff0), RECORD_CALL);
    EXPECT_EQ(run.output, "LMCM-508\n");
    EXPECT_NE(run.errors.find("DIME"), std::string::npos) << run.errors;
}

/// The text of an HTTP error is reported whole up to 64 KiB.
TEST(ServiceAnswer, OfAnErrorIsReportedWhole) {
    const std::string text(65000, 'x');
    const std::string piece(5000, 'x');
    const std::string headers[] = {"Content-Length: " + std::to_string(text.size()) + "\r\n",
                                   "Transfer-Encoding: chunked\r\n"};
    for (const std::string &answer :
         {http_head(headers[0], "403 No") + text,
          http_head(headers[1], "403 No") + repeated(13, http_chunk(piece)) + LAST_CHUNK,
          http_head(headers[1], "403 No") + http_chunk(text) + LAST_CHUNK}) {
        const run_result run = call_answered(answer, RECORD_CALL);
        EXPECT_EQ(run.output, "LMCM-508\n");
        EXPECT_TRUE(run.errors.ends_with("Detail: " + text + "\n"));
    }
}

// ---------------------------------------------------------------------------------------------

/// Known entities are XML's own only; nothing is fetched for an answer.
TEST(ServiceAnswer, WithEntitiesExpandsAndFetchesNothing) {
    peer elsewhere({reply(http_head() + "secret")});
    const std::string url = "\"http://127.0.0.1:" + std::to_string(elsewhere.port()) + "/secret\"";
    std::string laughs = "<!ENTITY a0 \"ha\">"; // ten times ten times ... of the first one
    for (int i = 1; i <= 9; i++) {
        laughs += "<!ENTITY a" + std::to_string(i) + " \"" +
                  repeated(10, "&a" + std::to_string(i - 1) + ";") + "\">";
    }
    const struct {
        std::string declarations;
        const char *use;
        const char *never_shown;
    } rows[] = {
        {"<!ENTITY a \"secret\">", "&a;", "secret"},
        {laughs, "&a9;", "ha"},
        {"<!ENTITY a \"&a;\">", "&a;", "&a;"},
        {"<!ENTITY a SYSTEM \"file:///etc/passwd\">", "&a;", "root:"},
        {"<!ENTITY a SYSTEM " + url + ">", "&a;", "secret"},
        {"<!ENTITY % a SYSTEM " + url + "> %a;", "on", "secret"},
        {"", "&nosuch;", "nosuch"},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.declarations.substr(0, 100));
        std::string body = GOOD;
        body.replace(body.find(">on<") + 1, 2, row.use);
        const run_result run = call_answered(
            http_head() + "<!DOCTYPE a [" + row.declarations + "]>" + body, RECORD_CALL);
        EXPECT_NE(run.output.find("[lumocmd] Status: "), std::string::npos) << run.output;
        EXPECT_EQ(run.output.find(row.never_shown), std::string::npos) << run.output;
        EXPECT_TRUE(
            run.output.ends_with(green(run.pid, "[lumocmd] Current Value: 7") + "LMCM-0000\n"))
            << run.output;
        EXPECT_EQ(run.status, 0);
    }
    EXPECT_EQ(elsewhere.finish_unvisited(), "");
}

/// The request, session and all, goes nowhere but to the url that was given.
TEST(ServiceAnswer, ThatRedirectsIsNotFollowed) {
    peer elsewhere(answering(WHOLE));
    const std::string location = "Location: " + url_of(elsewhere) + "\r\nContent-Length: 0\r\n";
    for (const std::string status : {"300", "301", "302", "303", "305", "307", "308"}) {
        const run_result run = call_answered(http_head(location, status + " Gone"), RECORD_CALL);
        EXPECT_EQ(run.output, "LMCM-508\n");
        EXPECT_NE(run.errors.find(status), std::string::npos) << run.errors;
    }
    EXPECT_EQ(elsewhere.finish_unvisited(), "");
}

} // namespace
