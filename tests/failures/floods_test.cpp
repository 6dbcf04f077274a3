// Web services that send too much: the program takes no more memory than a few times what was sent.

#include "tests/failures/requests.h"
#include "tests/webservice/http_peer.h"

#include <gtest/gtest.h>

namespace {

using namespace harness;
using failure_tests::flooded;

constexpr std::size_t KIBIBYTE = 1024;
constexpr std::size_t MEBIBYTE = KIBIBYTE * KIBIBYTE;
constexpr std::size_t GIBIBYTE = KIBIBYTE * MEBIBYTE;
constexpr std::size_t PLENTY = 128 * MEBIBYTE; ///< for what takes its time
constexpr std::size_t DEEP = 100000;

/// What the program needs for any answer, in MiB.
constexpr long USUAL = 8;

constexpr bool READ = true;
constexpr bool NO_RESULT = false;

struct flood_case {
    const char *name;
    script answer;
    bool has_result;
    long growth = 0; ///< MiB beyond the usual
};

const std::string HEAD = "HTTP/1.1 200 OK\r\nContent-Type: text/xml; charset=utf-8\r\n\r\n";
const std::string RESULT = "<result>LMWS-000</result>";
const std::string ENVELOPE = envelope(response_element("getelementstatus", RESULT));

/// The good answer up to the place behind its result, and from there on.
const std::size_t MIDDLE = ENVELOPE.find(RESULT) + RESULT.size();
const std::string START = HEAD + ENVELOPE.substr(0, MIDDLE);
const std::string END = ENVELOPE.substr(MIDDLE);

step many(std::size_t size, char byte) {
    return reply(std::string(KIBIBYTE, byte), flooded(size) / KIBIBYTE);
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
    "HTTP/1.1 200 OK\r\nContent-Type: multipart/related; boundary=B; type=\"text/xml\"; "
    "start=\"<r>\"\r\n\r\n--B\r\nContent-Type: text/xml\r\nContent-ID: <r>\r\n\r\n" +
    ENVELOPE;

const flood_case FLOODS[] = {
    {"HeaderLinesWithoutEnd",
     {reply("HTTP/1.1 200 OK\r\n"), reply("X-Header: of no use\r\n", flooded(3 * MEBIBYTE))},
     NO_RESULT},
    {"HeaderLine",
     {reply("HTTP/1.1 200 OK\r\nX-Header: "), many(10 * MEBIBYTE, 'a'), reply("\r\n\r\n")},
     NO_RESULT},
    {"Continue",
     {reply("HTTP/1.1 100 Continue\r\n\r\n", flooded(2 * MEBIBYTE)), reply(START + END)},
     READ},
    {"Text", inside("<status>", {many(PLENTY, 'x')}, "</status>"), READ, 384},
    {"TextWithoutEnd", {reply(START + "<status>"), many(PLENTY, 'x')}, NO_RESULT, 384},
    {"Comment", inside("<!--", {many(GIBIBYTE, 'x')}, "-->"), READ},
    {"ErrorText",
     {reply("HTTP/1.1 403 No\r\nContent-Length: 1073741824\r\n\r\n"), many(GIBIBYTE, 'x')},
     NO_RESULT},
    {"ErrorTextInOneChunk",
     {reply("HTTP/1.1 403 No\r\nTransfer-Encoding: chunked\r\n\r\n4000000\r\n"),
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
    EXPECT_EQ(run.output, row.has_result ? "LMCM-0000\n" : "LMCM-508\n");
    EXPECT_EQ(run.status, row.has_result ? 0 : 508 & 0xff);
    EXPECT_EQ(run.errors.empty(), row.has_result) << run.errors;
    if (failure_tests::is_shipped_program()) {
        EXPECT_LE(run.kilobytes, (USUAL + row.growth) * 1024);
    }
    EXPECT_EQ(service.finish(), "");
}

INSTANTIATE_TEST_SUITE_P(Table, Flood, testing::ValuesIn(FLOODS), NAME_OF_ROW);

} // namespace
