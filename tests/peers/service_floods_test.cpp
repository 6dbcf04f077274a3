// Web services that send too much or nothing at all: the program takes no more memory than a few
// times what was sent, and no more time than the service does.

#include "tests/peers/web_service.h"
#include "tests/webservice/http_peer.h"

#include <csignal>
#include <gtest/gtest.h>

namespace {

using namespace harness;

constexpr std::size_t KIBIBYTE = 1024;
constexpr std::size_t MEBIBYTE = KIBIBYTE * KIBIBYTE;
constexpr std::size_t GIBIBYTE = KIBIBYTE * MEBIBYTE;
constexpr std::size_t PLENTY = 128 * MEBIBYTE; ///< for what takes its time

/// What the program needs for any answer.
constexpr std::size_t USUAL_KILOBYTES = 8 * KIBIBYTE;

constexpr auto NAME_OF_ROW = [](const auto &row) { return row.param.name; };

// ---------------------------------------------------------------------------------------------
// Floods

struct flood_case {
    const char *name;
    pieces answer;
    bool has_result;
    std::size_t growth; ///< most bytes of memory for a byte sent; 0: none at all
};

const std::string RESULT = "<result>LMWS-000</result>";

/// The good answer up to the place between its result and its end, and from there on.
const std::string START =
    soap_answer(RESULT).substr(0, soap_answer(RESULT).find(RESULT) + RESULT.size());
const std::string END = soap_answer(RESULT).substr(START.size());

pieces inside(const pieces &middle) {
    pieces answer = {{http_head() + START}};
    answer.insert(answer.end(), middle.begin(), middle.end());
    answer.push_back({END});
    return answer;
}

piece many(std::size_t size, char byte) {
    return {std::string(KIBIBYTE, byte), flooded(size) / KIBIBYTE};
}

/// Things that all have names of their own.
pieces numbered(std::size_t count, const std::string &before, const std::string &behind) {
    return {{before, flooded(count), behind}};
}

pieces in_element(const std::string &start, pieces middle, const std::string &end) {
    middle.insert(middle.begin(), {start});
    middle.push_back({end});
    return inside(middle);
}

constexpr std::size_t DEEP = 100000;

const flood_case HEAD_FLOODS[] = {
    {"HeaderLinesWithoutEnd",
     {{"HTTP/1.1 200 OK\r\n"}, {"X-Header: of no use\r\n", flooded(64 * MEBIBYTE) / 21}},
     false,
     0},
    {"HeaderLineOf10Mebibytes",
     {{"HTTP/1.1 200 OK\r\nX-Header: "}, many(10 * MEBIBYTE, 'a'), {"\r\n\r\n"}},
     false,
     0},
    {"HeaderNameOf10Mebibytes",
     {{"HTTP/1.1 200 OK\r\n"}, many(10 * MEBIBYTE, 'a'), {": a\r\n\r\n"}},
     false,
     0},
    {"StatusLineOf10Mebibytes", {{"HTTP/1.1 200 "}, many(10 * MEBIBYTE, 'a')}, false, 0},
    {"ContinueFor64Mebibytes",
     {{"HTTP/1.1 100 Continue\r\n\r\n", flooded(64 * MEBIBYTE) / 25}, {http_head() + START + END}},
     true,
     0},
};

const flood_case BODY_FLOODS[] = {
    {"Text", in_element("<status>", {many(PLENTY, 'x')}, "</status>"), true, 3},
    {"UnknownText", in_element("<more>", {many(PLENTY, 'x')}, "</more>"), true, 0},
    {"Blanks", inside({many(PLENTY, ' ')}), true, 0},
    {"GibibyteOfComment", in_element("<!--", {many(GIBIBYTE, 'x')}, "-->"), true, 0},
    {"TextWithoutEnd", {{http_head() + START + "<status>"}, many(PLENTY, 'x')}, false, 3},
    {"ErrorText",
     {{http_head("Content-Length: 1073741824\r\n", "403 No")}, many(GIBIBYTE, 'x')},
     false,
     0},
    {"ErrorTextInOneChunk",
     {{http_head("Transfer-Encoding: chunked\r\n", "403 No") + "4000000\r\n"},
      many(64 * MEBIBYTE, 'x')},
     false,
     0},
    {"GibibyteBehindTheEnvelope", {{http_head() + START + END}, many(GIBIBYTE, 'x')}, true, 0},
    {"GibibyteOfZeroBytes", {many(GIBIBYTE, '\0')}, false, 0},
    {"UnknownElementsNested", inside({{"<a>", DEEP}, {"</a>", DEEP}}), true, 0},
    {"TextElementsNested", in_element("<status>", {{"<a>", DEEP}, {"</a>", DEEP}}, "</status>"),
     true, 3},
    {"EnvelopesNested", {{http_head()}, {"<a>", DEEP}, {"</a>", DEEP}}, false, 0},
    {"ElementsNestedWithoutEnd", {{http_head() + START}, {"<a>", DEEP}}, false, 0},
    {"UnknownElements", inside({{"<a/>", flooded(16 * MEBIBYTE) / 4}}), true, 0},
    {"ElementName", inside({{"<"}, many(16 * MEBIBYTE, 'a'), {"/>"}}), true, 0},
    {"AttributeValue", inside({{"<a b=\""}, many(16 * MEBIBYTE, 'c'), {"\"/>"}}), true, 4},
    {"Attributes", in_element("<a", numbered(20000, " a", "=\"\""), "/>"), true, 32},
    {"AttributesKept",
     [] {
         pieces middle = numbered(10000, " a", "=\"\"");
         middle.push_back({"/>"});
         middle.push_back({"<b c=\"\"/>", flooded(20000)});
         return in_element("<a", middle, "");
     }(),
     true, 32},
    {"Namespaces", in_element("<a", numbered(10000, " xmlns:a", "=\"u\""), "/>"), true, 32},
    {"Identifiers", inside(numbered(100000, "<a id=\"i", "\"/>")), true, 0},
    {"ReferencesToNothing", inside(numbered(100000, "<a href=\"#i", "\"/>")), true, 0},
};

const char MIME[] = "multipart/related; boundary=B; type=\"text/xml\"; start=\"<r>\"";

const flood_case ATTACHMENT_FLOODS[] = {
    {"Mime",
     {{http_head("", "200 OK", MIME) + "--B\r\nContent-Type: text/xml\r\nContent-ID: <r>\r\n\r\n" +
       START + END + "\r\n--B\r\nContent-ID: <a>\r\n\r\n"},
      many(64 * MEBIBYTE, 'x'),
      {"\r\n--B--\r\n"}},
     true,
     3},
    {"MimeParts",
     {{http_head("", "200 OK", MIME) + "--B\r\nContent-Type: text/xml\r\nContent-ID: <r>\r\n\r\n" +
       START + END},
      {"\r\n--B\r\n\r\nx", flooded(100000)},
      {"\r\n--B--\r\n"}},
     true,
     16},
};

class Flood : public testing::TestWithParam<flood_case> {};

TEST_P(Flood, CostsAFewTimesItsSize) {
    const flood_case &row = GetParam();
    const std::size_t sent = size_of(row.answer);
    rude_peer peer(SOAP_REQUEST_END, row.answer);
    measured_program program(soap_call(peer.port(), true));
    const measured_run measured = program.finish();
    if (row.has_result) {
        EXPECT_EQ(measured.run.output, "LMCM-0000\n");
        EXPECT_EQ(measured.run.status, 0);
    } else {
        expect_no_result(measured);
    }
    EXPECT_EQ(measured.run.errors.empty(), row.has_result) << measured.run.errors;
    if (is_shipped_program()) {
        EXPECT_LE(static_cast<std::size_t>(measured.kilobytes),
                  USUAL_KILOBYTES + row.growth * sent / KIBIBYTE);
    }
    EXPECT_EQ(peer.finish(), 1);
}

INSTANTIATE_TEST_SUITE_P(Head, Flood, testing::ValuesIn(HEAD_FLOODS), NAME_OF_ROW);
INSTANTIATE_TEST_SUITE_P(Body, Flood, testing::ValuesIn(BODY_FLOODS), NAME_OF_ROW);
INSTANTIATE_TEST_SUITE_P(Attachment, Flood, testing::ValuesIn(ATTACHMENT_FLOODS), NAME_OF_ROW);

// ---------------------------------------------------------------------------------------------
// Silence: the program sets no limit to it, whoever starts the program does

struct silence_case {
    const char *name;
    std::string answer; ///< what comes before the silence
};

const silence_case SILENCE_CASES[] = {
    {"FromTheStart", ""},
    {"InTheStatusLine", "HTTP/1.1 20"},
    {"InTheHead", "HTTP/1.1 200 OK\r\nContent-Type: text/xml\r\n"},
    {"BehindContinue", "HTTP/1.1 100 Continue\r\n\r\n"},
    {"InTheBody", http_head() + START.substr(0, START.find("<result>"))},
    {"InAChunk", http_head("Transfer-Encoding: chunked\r\n") + "ffff\r\n<SOAP-ENV:Env"},
};

class Silence : public testing::TestWithParam<silence_case> {
  protected:
    const std::string &answer = GetParam().answer;
    rude_peer peer{
        SOAP_REQUEST_END, {{answer}}, {opening::AFTER_THE_REQUEST, pace::AT_ONCE, ending::SILENCE}};
};

TEST_P(Silence, IsWaitedForUntilTheServiceCloses) {
    measured_program program(soap_call(peer.port()));
    ASSERT_TRUE(peer.wait_for_silence());
    EXPECT_TRUE(program.keeps_waiting());
    EXPECT_EQ(peer.finish(), 1);
    const measured_run measured = program.finish();
    expect_no_result(measured);
    EXPECT_NE(measured.run.errors, "");
}

TEST_P(Silence, IsLeftOnASignal) {
    measured_program program(soap_call(peer.port()));
    ASSERT_TRUE(peer.wait_for_silence());
    program.terminate();
    const measured_run measured = program.finish();
    EXPECT_EQ(measured.run.output, "");
    EXPECT_EQ(measured.run.errors, "");
    EXPECT_EQ(measured.run.status, 128 + SIGTERM);
}

INSTANTIATE_TEST_SUITE_P(Table, Silence, testing::ValuesIn(SILENCE_CASES), NAME_OF_ROW);

TEST(NeverAcceptingService, IsWaitedForUntilItCloses) {
    crowded_socket crowded;
    measured_program program(soap_call(crowded.port()));
    EXPECT_TRUE(program.keeps_waiting());
    crowded.close_down();
    const measured_run measured = program.finish();
    expect_no_result(measured);
    EXPECT_NE(measured.run.errors, "");
}

} // namespace
