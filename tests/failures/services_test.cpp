// Answers of a web service that are wrong in themselves or too much: what is shown is what the
// service sent, or there is no result; never anything in between. No answer takes more memory than
// a few times what was sent.

#include "tests/failures/requests.h"

namespace {

using namespace harness;
using failure_tests::flooded;
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
    const std::string read = record_lines(run.pid, "on", "7") + "LMCM-0000\n";
    expect_run(run, is_read ? read : "LMCM-508\n", is_read ? 0 : 508, run.errors);
    EXPECT_EQ(run.errors.empty(), is_read) << run.errors;
    EXPECT_EQ(service.finish(), "");
}

TEST(ServiceAnswer, MayComeAtAnyTime) {
    expect_verdict({reply(WHOLE), collect_until("</SOAP-ENV:Envelope>\r\n"), close_connection()},
                   READ);
    expect_verdict({reply(WHOLE), ignore()}, READ);
    expect_verdict(after_request({reply(WHOLE.substr(0, WHOLE.size() / 2)), reset()}), NO_RESULT);
    expect_verdict(after_request({reply(WHOLE), reset()}), WHOLE_OR_NOTHING);
}

/// The answer and an attachment that announces its size.
std::string with_dime(std::size_t announced) {
    return http_head("", "200 OK", "application/dime") +
           dime_record(4, 2, "http://schemas.xmlsoap.org/soap/envelope/", GOOD, GOOD.size()) +
           dime_record(2, 1, "text/plain", "attached", announced);
}

std::string with_children(const std::string &children) {
    return http_head() + envelope(response_element("getelementstatus", children));
}

TEST(ServiceAnswer, IsReadWholeOrNotAtAll) {
    const std::string result = "<result>LMWS-000</result>";
    const struct {
        std::string answer;
        verdict wanted = WHOLE_OR_NOTHING;
    } rows[] = {
        // Lengths
        {with_length("-1")},
        {with_length("10")},
        {with_length("99999999999999999999")},
        {with_length("many")},
        {with_length(LENGTH + "\r\nContent-Length: " + LENGTH), READ},
        {chunked("ffffffffffffffff\r\n" + GOOD)},
        {chunked("7fffffff\r\n" + GOOD)},
        {chunked("-5\r\n" + GOOD + "\r\n" + LAST_CHUNK), NO_RESULT},
        {chunked("10\r\n" + GOOD + "\r\n" + LAST_CHUNK), NO_RESULT},
        {chunked(http_chunk(GOOD) + LAST_CHUNK, "Content-Length: 10\r\n"), READ},
        {chunked(std::string(100000, '0')), NO_RESULT},
        {chunked(LAST_CHUNK + http_chunk(GOOD)), NO_RESULT},
        {with_dime(8), READ},
        {with_dime(0xffffffff), NO_RESULT},
        // Heads
        {"HTTP/1.1 101 Switching\r\n\r\n" + WHOLE, NO_RESULT},
        {"HTTP/1.1 100 Continue\r\n\r\n", NO_RESULT},
        {http_head("Content-Encoding: gzip\r\n") + "\x1f\x8b\x08\x00 no more"s, NO_RESULT},
        {http_head("Content-Encoding: deflate\r\n") + GOOD, NO_RESULT},
        // The runtime would read behind a line without a realm.
        {http_head("WWW-Authenticate: Basic\r\n", "401 Who") + "who?", NO_RESULT},
        {http_head("Proxy-Authenticate: Basic realm=\"x\"\r\n", "407 Who") + GOOD, NO_RESULT},
        // What the runtime allocated for these would not be there.
        {http_head("Content-Length: 99999999999\r\n", "403 No") + "no", NO_RESULT},
        {http_head("Content-Length: 2147483647\r\n", "403 No") + "no", NO_RESULT},
        // Bytes and references
        {"\0"s + WHOLE},
        {std::string(100000, '\0'), NO_RESULT},
        {with_children("<result>LMWS-000\0 99</result><status>on\0off</status>"
                       "<currentvalue>7</currentvalue>"s),
         READ},
        {with_children(result + "<status href=\"#a\"/><m id=\"a\" href=\"#a\"/>"), NO_RESULT},
        {with_children(result + "<status id=\"a\" href=\"#a\"/>"), NO_RESULT},
        {with_children("<result href=\"#a\"/><m id=\"a\" href=\"#b\"/><m id=\"b\" href=\"#a\"/>"),
         NO_RESULT},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.answer.substr(0, 200));
        expect_verdict(after_request({reply(row.answer), close_connection()}), row.wanted);
    }
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
    const std::string in_chunks = http_head("Transfer-Encoding: chunked\r\n", "403 No");
    const words chunks(13, http_chunk(text.substr(0, 5000)));
    for (const std::string &answer : {http_head("Content-Length: 65000\r\n", "403 No") + text,
                                      in_chunks + protocol::joined(chunks, "") + LAST_CHUNK,
                                      in_chunks + http_chunk(text) + LAST_CHUNK}) {
        const run_result run = call_answered(answer, RECORD_CALL);
        EXPECT_EQ(run.output, "LMCM-508\n");
        EXPECT_TRUE(run.errors.ends_with("Detail: " + text + "\n"));
    }
}

/// Known entities are XML's own only; nothing is fetched for an answer.
TEST(ServiceAnswer, WithEntitiesExpandsAndFetchesNothing) {
    peer elsewhere({reply(http_head() + "secret")});
    const std::string url = "\"http://127.0.0.1:" + std::to_string(elsewhere.port()) + "/secret\"";
    const struct {
        std::string declarations;
        const char *use;
        const char *never_shown;
    } rows[] = {
        {"<!ENTITY a \"secret\"><!ENTITY b \"&a;&a;\">", "&b;", "secret"},
        {"<!ENTITY a \"&a;\">", "&a;", "&a;"},
        {"<!ENTITY a SYSTEM \"file:///etc/passwd\">", "&a;", "root:"},
        {"<!ENTITY a SYSTEM " + url + ">", "&a;", "secret"},
        {"<!ENTITY % a SYSTEM " + url + "> %a;", "on", "secret"},
        {"", "&nosuch;", "nosuch"},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.declarations + row.use);
        const run_result run =
            call_answered(http_head() + "<!DOCTYPE a [" + row.declarations + "]>" +
                              protocol::replaced(GOOD, ">on<", ">"s + row.use + "<"),
                          RECORD_CALL);
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

// ---------------------------------------------------------------------------------------------
// Floods

constexpr std::size_t MEBIBYTE = std::size_t{1} << 20;
constexpr std::size_t GIBIBYTE = 1024 * MEBIBYTE;
constexpr std::size_t PLENTY = 128 * MEBIBYTE; ///< for what takes its time
constexpr std::size_t DEEP = 100000;

/// What the program needs for any answer, in MiB.
constexpr long USUAL = 8;

struct flood_case {
    const char *name;
    script answer;
    verdict wanted;
    long growth = 0; ///< MiB beyond the usual
};

/// The good answer up to the place behind its result, and from behind its fields on.
const std::string START = http_head() + GOOD.substr(0, GOOD.find("<status>"));
const std::string END = GOOD.substr(GOOD.find("</ns:"));

step many(std::size_t size, char byte) {
    return reply(std::string(1024, byte), flooded(size) / 1024);
}

/// Attributes that all have names of their own.
step attributes(int count, const char *start, const char *value) {
    std::string all;
    for (int i = 0; i < count; i++) {
        all += start + std::to_string(i) + value;
    }
    return reply(all);
}

/// Inside the good answer.
script inside(const std::string &start, script middle, const std::string &end) {
    middle.insert(middle.begin(), reply(START + start));
    middle.push_back(reply(end + END));
    return middle;
}

const std::string MIME =
    http_head("", "200 OK", "multipart/related; boundary=B; type=\"text/xml\"; start=\"<r>\"") +
    "--B\r\nContent-Type: text/xml\r\nContent-ID: <r>\r\n\r\n" + GOOD;

const flood_case FLOODS[] = {
    {"HeaderLinesWithoutEnd",
     {reply("HTTP/1.1 200 OK\r\n"), reply("X-Header: of no use\r\n", flooded(3 * MEBIBYTE))},
     NO_RESULT},
    {"HeaderLine",
     {reply("HTTP/1.1 200 OK\r\nX-Header: "), many(10 * MEBIBYTE, 'a'), reply("\r\n\r\n")},
     NO_RESULT},
    {"Continue",
     {reply("HTTP/1.1 100 Continue\r\n\r\n", flooded(2 * MEBIBYTE)), reply(WHOLE)},
     READ},
    {"Text", inside("<status>", {many(PLENTY, 'x')}, "</status>"), READ, 384},
    {"TextWithoutEnd", {reply(START + "<status>"), many(PLENTY, 'x')}, NO_RESULT, 384},
    {"Comment", inside("<!--", {many(GIBIBYTE, 'x')}, "-->"), READ},
    {"ErrorText",
     {reply(http_head("Content-Length: 1073741824\r\n", "403 No")), many(GIBIBYTE, 'x')},
     NO_RESULT},
    {"ErrorTextInOneChunk",
     {reply(http_head("Transfer-Encoding: chunked\r\n", "403 No") + "4000000\r\n"),
      many(64 * MEBIBYTE, 'x')},
     NO_RESULT},
    {"BehindTheEnvelope", {reply(START + END), many(GIBIBYTE, 'x')}, READ},
    {"ZeroBytes", {many(GIBIBYTE, '\0')}, NO_RESULT},
    {"UnknownElementsNested", inside("", {reply("<a>", DEEP), reply("</a>", DEEP)}, ""), READ},
    {"AttributeValue", inside("<a b=\"", {many(16 * MEBIBYTE, 'c')}, "\"/>"), READ, 64},
    {"Attributes", inside("<a", {attributes(20000, " a", "=\"\"")}, "/>"), READ, 6},
    {"AttributesKept",
     inside("<a",
            {attributes(10000, " a", "=\"\""), reply("/>"), reply("<b c=\"\"/>", flooded(20000))},
            ""),
     READ, 6},
    {"Namespaces", inside("<a", {attributes(10000, " xmlns:a", "=\"u\"")}, "/>"), READ, 4},
    {"MimePart",
     {reply(MIME + "\r\n--B\r\nContent-ID: <a>\r\n\r\n"), many(64 * MEBIBYTE, 'x'),
      reply("\r\n--B--\r\n")},
     READ,
     192},
    {"MimeParts",
     {reply(MIME), reply("\r\n--B\r\n\r\nx", flooded(DEEP)), reply("\r\n--B--\r\n")},
     READ,
     15},
};

class Flood : public testing::TestWithParam<flood_case> {};

TEST_P(Flood, CostsAFewTimesItsSize) {
    const flood_case &row = GetParam();
    script steps = row.answer;
    steps.push_back(close_connection());
    peer service(after_request(steps));
    const run_result run = call_service(service, {"-f", "SERVICE_GETELEMENTSTATUS", "-p", "s|i"});
    const bool is_read = row.wanted == READ;
    expect_run(run, is_read ? "LMCM-0000\n" : "LMCM-508\n", is_read ? 0 : 508, run.errors);
    EXPECT_EQ(run.errors.empty(), is_read) << run.errors;
    if (failure_tests::is_shipped_program()) {
        EXPECT_LE(run.kilobytes, (USUAL + row.growth) * 1024);
    }
    EXPECT_EQ(service.finish(), "");
}

INSTANTIATE_TEST_SUITE_P(Table, Flood, testing::ValuesIn(FLOODS), NAME_OF_ROW);

} // namespace
