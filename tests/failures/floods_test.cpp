// Web services that send too much or nothing at all: the program takes no more memory than a few
// times what was sent, and no more time than the service does.

#include "tests/failures/requests.h"
#include "tests/webservice/http_peer.h"

#include <csignal>
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

script between(const std::string &start, script middle, const std::string &end) {
    middle.insert(middle.begin(), reply(start));
    middle.push_back(reply(end));
    return middle;
}

/// Inside the good answer.
script inside(const std::string &start, const script &middle, const std::string &end) {
    return between(START + start, middle, end + END);
}

std::string mime(const std::string &behind) {
    return "HTTP/1.1 200 OK\r\nContent-Type: multipart/related; boundary=B; type=\"text/xml\"; "
           "start=\"<r>\"\r\n\r\n--B\r\nContent-Type: text/xml\r\nContent-ID: <r>\r\n\r\n" +
           ENVELOPE + behind;
}

const flood_case FLOODS[] = {
    {"HeaderLinesWithoutEnd",
     {reply("HTTP/1.1 200 OK\r\n"), reply("X-Header: of no use\r\n", flooded(3 * MEBIBYTE))},
     NO_RESULT},
    {"HeaderLine", between("HTTP/1.1 200 OK\r\nX-Header: ", {many(10 * MEBIBYTE, 'a')}, "\r\n\r\n"),
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
    {"Namespaces", inside("<a", {attributes(10000, " xmlns:a", "=\"u\"")}, "/>"), READ, 4},
    {"MimePart",
     between(mime("\r\n--B\r\nContent-ID: <a>\r\n\r\n"), {many(64 * MEBIBYTE, 'x')},
             "\r\n--B--\r\n"),
     READ, 192},
    {"MimeParts", between(mime(""), {reply("\r\n--B\r\n\r\nx", flooded(DEEP))}, "\r\n--B--\r\n"),
     READ, 15},
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

/// The program sets no limit to silence, whoever starts the program does.
TEST(SilentService, IsWaitedForUntilItsEndOrASignal) {
    for (const std::string &begun :
         {std::string(), std::string("HTTP/1.1 20"), HEAD.substr(0, HEAD.size() - 2), START}) {
        for (const bool by_signal : {false, true}) {
            SCOPED_TRACE(begun);
            peer service(after_request({reply(begun), await_end(), close_connection()}));
            words arguments = {"-t", "SOAP", "-u", url_of(service)};
            arguments.insert(arguments.end(), RECORD_CALL.begin(), RECORD_CALL.end());
            started_program program(lumocmd_command(arguments));
            ASSERT_TRUE(service.wait_for_await());
            EXPECT_TRUE(program.keeps_running());
            if (by_signal) {
                program.send_signal(SIGTERM);
            } else {
                service.go_on();
            }
            const run_result run = program.finish();
            EXPECT_EQ(run.output, by_signal ? "" : "LMCM-508\n");
            EXPECT_EQ(run.errors.empty(), by_signal) << run.errors;
            EXPECT_EQ(run.status, by_signal ? 128 + SIGTERM : 508 & 0xff);
            EXPECT_EQ(service.finish(), "");
        }
    }
}

TEST(NeverAcceptingService, IsWaitedForUntilItCloses) {
    peer crowded({never_accept()});
    started_program program(
        lumocmd_command({"-t", "SOAP", "-u", url_of(crowded), "-f", "SERVICE_TEST"}));
    EXPECT_TRUE(program.keeps_running());
    EXPECT_EQ(crowded.finish_unvisited(), "");
    const run_result run = program.finish();
    EXPECT_EQ(run.output, "LMCM-502\n");
    EXPECT_NE(run.errors, "");
}

} // namespace
