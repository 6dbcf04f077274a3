// Answers of a web service that are wrong in themselves: what is shown is what the service sent, or
// there is no result; never anything in between.

#include "tests/harness/console.h"
#include "tests/peers/web_service.h"
#include "tests/webservice/http_peer.h"

#include <cstdio>
#include <gtest/gtest.h>

namespace {

using namespace harness;
using namespace std::string_literals;

enum class verdict {
    READ,              ///< all fields, no report
    WHOLE_OR_NOTHING,  ///< all fields, or no result and a report; HTTP leaves it open
    NO_RESULT,         ///< and a report
    NO_RESULT_QUIETLY, ///< XML that is read, but has no result in it
};

struct answer_case {
    const char *name;
    std::string answer;
    verdict wanted;
    const char *status = "on"; ///< as shown where it is read
    const char *value = "7";
    manners manner = {};
};

const std::string GOOD = soap_answer(GOOD_CHILDREN);
const std::string LENGTH = std::to_string(GOOD.size());
const std::string WHOLE = http_head("Content-Length: " + LENGTH + "\r\n") + GOOD;

std::string hexadecimal(std::size_t number) {
    char text[32];
    snprintf(text, sizeof text, "%zx", number);
    return text;
}

const std::string LENGTH_LINE = hexadecimal(GOOD.size()) + "\r\n";

std::string with_length(const std::string &length) {
    return http_head("Content-Length: " + length + "\r\n") + GOOD;
}

std::string chunked(const std::string &body, const std::string &more_headers = "") {
    return http_head("Transfer-Encoding: chunked\r\n" + more_headers) + body;
}

/// An answer that ends with the connection.
std::string unmeasured(const std::string &body) {
    return http_head() + body;
}

// ---------------------------------------------------------------------------------------------

const manners EARLY = {opening::BEFORE_THE_REQUEST, pace::AT_ONCE, ending::CLOSE};
const manners EARLY_DRIP = {opening::BEFORE_THE_REQUEST, pace::BYTE_BY_BYTE, ending::CLOSE};
const manners DEAF = {opening::NEVER_READING, pace::AT_ONCE, ending::SILENCE};
const manners RESETTING = {opening::AFTER_THE_REQUEST, pace::AT_ONCE, ending::RESET};

const answer_case TIMING_CASES[] = {
    {"BeforeTheRequest", WHOLE, verdict::READ, "on", "7", EARLY},
    {"ByteByByteBeforeTheRequest", WHOLE, verdict::READ, "on", "7", EARLY_DRIP},
    {"RequestNeverRead", WHOLE, verdict::READ, "on", "7", DEAF},
    {"HalfThenReset", WHOLE.substr(0, WHOLE.size() / 2), verdict::NO_RESULT, "", "", RESETTING},
    {"WholeThenReset", WHOLE, verdict::WHOLE_OR_NOTHING, "on", "7", RESETTING},
};

const answer_case LENGTH_CASES[] = {
    {"Negative", with_length("-1"), verdict::WHOLE_OR_NOTHING},
    {"TooShort", with_length("10"), verdict::WHOLE_OR_NOTHING},
    {"Zero", with_length("0"), verdict::WHOLE_OR_NOTHING},
    {"TwoGibibytes", with_length("2147483648"), verdict::WHOLE_OR_NOTHING},
    {"BeyondAnyNumber", with_length("99999999999999999999"), verdict::WHOLE_OR_NOTHING},
    {"NoNumber", with_length("many"), verdict::WHOLE_OR_NOTHING},
    {"Empty", with_length(""), verdict::WHOLE_OR_NOTHING},
    {"RepeatedAndEqual", with_length(LENGTH + "\r\nContent-Length: " + LENGTH), verdict::READ},
    {"RepeatedFirstRight", with_length(LENGTH + "\r\nContent-Length: 10"),
     verdict::WHOLE_OR_NOTHING},
    {"RepeatedLastRight", with_length("10\r\nContent-Length: " + LENGTH),
     verdict::WHOLE_OR_NOTHING},
    {"BesideChunks", chunked(LENGTH_LINE + GOOD + "\r\n0\r\n\r\n", "Content-Length: 10\r\n"),
     verdict::READ},
};

const answer_case CHUNK_CASES[] = {
    {"NegativeSize", chunked("-5\r\n" + GOOD + "\r\n0\r\n\r\n"), verdict::NO_RESULT},
    {"SizeOfAllBits", chunked("ffffffffffffffff\r\n" + GOOD), verdict::WHOLE_OR_NOTHING},
    {"SizeBeyondAnyNumber", chunked("fffffffffffffffff\r\n" + GOOD), verdict::WHOLE_OR_NOTHING},
    {"SizeOfTwoGibibytes", chunked("7fffffff\r\n" + GOOD), verdict::WHOLE_OR_NOTHING},
    {"SizeThatIsNoNumber", chunked("zz\r\n" + GOOD + "\r\n0\r\n\r\n"), verdict::NO_RESULT},
    {"SizeTooSmall", chunked("10\r\n" + GOOD + "\r\n0\r\n\r\n"), verdict::NO_RESULT},
    {"SizeMissing", chunked(GOOD), verdict::NO_RESULT},
    {"SizeLineWithoutEnd", chunked(std::string(100000, '0')), verdict::NO_RESULT},
    {"LastChunkMissing", chunked(LENGTH_LINE + GOOD), verdict::WHOLE_OR_NOTHING},
    {"LastChunkFirst", chunked("0\r\n\r\n" + LENGTH_LINE + GOOD), verdict::NO_RESULT},
    {"Extension", chunked(hexadecimal(GOOD.size()) + ";a=b\r\n" + GOOD + "\r\n0\r\n\r\n"),
     verdict::READ},
};

const answer_case HEAD_CASES[] = {
    {"NoHeadAtAll", GOOD, verdict::WHOLE_OR_NOTHING},
    {"EmptyLinesOnly", "\r\n\r\n", verdict::NO_RESULT},
    {"StatusNegative", http_head("", "-5 Less") + GOOD, verdict::NO_RESULT},
    {"StatusBeyondAnyNumber", http_head("", "99999999999 Much") + GOOD, verdict::NO_RESULT},
    {"StatusWithoutMeaning", http_head("", "999 Whatever") + GOOD, verdict::NO_RESULT},
    {"SwitchingProtocols", "HTTP/1.1 101 Switching\r\n\r\n" + WHOLE, verdict::NO_RESULT},
    {"ContinueAgainAndAgain",
     [] {
         std::string answer;
         for (int i = 0; i < 1000; i++) {
             answer += "HTTP/1.1 100 Continue\r\n\r\n";
         }
         return answer + WHOLE;
     }(),
     verdict::READ},
    {"ContinueOnly", "HTTP/1.1 100 Continue\r\n\r\n", verdict::NO_RESULT},
    {"Compressed", http_head("Content-Encoding: gzip\r\n") + "\x1f\x8b\x08\x00 no more"s,
     verdict::NO_RESULT},
    {"CompressedInNameOnly", http_head("Content-Encoding: deflate\r\n") + GOOD, verdict::NO_RESULT},
    {"ChallengeWithoutARealm", http_head("WWW-Authenticate: Basic\r\n", "401 Who") + "who?",
     verdict::NO_RESULT},
    {"ProxyChallengeWithoutARealm", http_head("Proxy-Authenticate: Basic\r\n") + GOOD,
     verdict::READ},
    {"ProxyChallenge", http_head("Proxy-Authenticate: Basic realm=\"x\"\r\n", "407 Who") + GOOD,
     verdict::NO_RESULT},
    // What the runtime allocated for these would not be there.
    {"ErrorBeyondAnyMemory", http_head("Content-Length: 99999999999\r\n", "403 No") + "no",
     verdict::NO_RESULT},
    {"ErrorOfTwoGibibytes", http_head("Content-Length: 2147483647\r\n", "403 No") + "no",
     verdict::NO_RESULT},
    {"Challenge", http_head("WWW-Authenticate: Basic realm=\"x\"\r\n", "401 Who") + "who?",
     verdict::NO_RESULT},
};

const answer_case ZERO_BYTE_CASES[] = {
    {"First", "\0"s + WHOLE, verdict::WHOLE_OR_NOTHING},
    {"InAHeader", http_head("X-A: a\0b\r\n"s) + GOOD, verdict::WHOLE_OR_NOTHING},
    {"BeforeTheEnvelope", unmeasured("\0"s + GOOD), verdict::WHOLE_OR_NOTHING},
    {"InATag", unmeasured(soap_answer("<re\0sult>LMWS-000</result>"s)), verdict::NO_RESULT_QUIETLY},
    {"EndsAText",
     unmeasured(soap_answer("<result>LMWS-000\0 99</result><status>on\0off</status>"
                            "<currentvalue>7</currentvalue>"s)),
     verdict::READ},
    {"NothingElse", std::string(100000, '\0'), verdict::NO_RESULT},
};

const answer_case CIRCLE_CASES[] = {
    {"OfOne",
     unmeasured(soap_answer("<result>LMWS-000</result><status href=\"#a\"/><m id=\"a\" "
                            "href=\"#a\"/><currentvalue>7</currentvalue>")),
     verdict::NO_RESULT},
    {"OfTwo",
     unmeasured(
         soap_answer("<result>LMWS-000</result><status href=\"#a\"/><m id=\"a\" "
                     "href=\"#b\"/><m id=\"b\" href=\"#a\"/><currentvalue>7</currentvalue>")),
     verdict::NO_RESULT},
    {"OfAFieldWithItself",
     unmeasured(soap_answer("<result>LMWS-000</result><status id=\"a\" href=\"#a\"/>"
                            "<currentvalue>7</currentvalue>")),
     verdict::NO_RESULT},
    {"OfTheResult",
     unmeasured(soap_answer("<result href=\"#a\"/><status id=\"a\" href=\"#b\"/>"
                            "<m id=\"b\" href=\"#a\"/>")),
     verdict::NO_RESULT},
    {"OfTheResponse",
     unmeasured(envelope("<ns:service-getelementstatusResponse id=\"a\" href=\"#a\"/>")),
     verdict::NO_RESULT},
};

const char MIME[] = "multipart/related; boundary=B; type=\"text/xml\"; start=\"<r>\"";

std::string mime_parts(const std::string &end) {
    return "--B\r\nContent-Type: text/xml\r\nContent-ID: <r>\r\n\r\n" + GOOD +
           "\r\n--B\r\nContent-Type: text/plain\r\nContent-ID: <a>\r\n\r\nattached" + end;
}

std::string dime_parts(std::size_t announced) {
    return dime_record(4, 2, "http://schemas.xmlsoap.org/soap/envelope/", GOOD, GOOD.size()) +
           dime_record(2, 1, "text/plain", "attached", announced);
}

const answer_case ATTACHMENT_CASES[] = {
    {"Mime", http_head("", "200 OK", MIME) + mime_parts("\r\n--B--\r\n"), verdict::READ},
    {"MimeWithoutEnd", http_head("", "200 OK", MIME) + mime_parts(""), verdict::NO_RESULT},
    {"MimeWithoutParts", http_head("", "200 OK", MIME) + "--B--\r\n", verdict::NO_RESULT},
    {"Dime", http_head("", "200 OK", "application/dime") + dime_parts(8), verdict::READ},
    {"DimeOfFourGibibytes", http_head("", "200 OK", "application/dime") + dime_parts(0xffffffff),
     verdict::NO_RESULT},
    {"DimeThatIsNone", http_head("", "200 OK", "application/dime") + GOOD, verdict::NO_RESULT},
};

class ServiceAnswer : public testing::TestWithParam<answer_case> {};

TEST_P(ServiceAnswer, IsShownAsSentOrNotAtAll) {
    const answer_case &row = GetParam();
    rude_peer peer(SOAP_REQUEST_END, {{row.answer}}, row.manner);
    measured_program program(soap_call(peer.port()));
    const measured_run measured = program.finish();
    const run_result &run = measured.run;
    verdict wanted = row.wanted;
    if (wanted == verdict::WHOLE_OR_NOTHING) {
        wanted = run.status == 0 ? verdict::READ : verdict::NO_RESULT;
    }
    if (wanted == verdict::READ) {
        EXPECT_EQ(run.output, shown(run.pid, row.status, row.value));
        EXPECT_EQ(run.status, 0);
    } else {
        expect_no_result(measured);
    }
    EXPECT_EQ(!run.errors.empty(), wanted == verdict::NO_RESULT) << run.errors;
    EXPECT_EQ(peer.finish(), 1);
}

constexpr auto NAME_OF_ROW = [](const auto &row) { return row.param.name; };
INSTANTIATE_TEST_SUITE_P(Timing, ServiceAnswer, testing::ValuesIn(TIMING_CASES), NAME_OF_ROW);
INSTANTIATE_TEST_SUITE_P(Length, ServiceAnswer, testing::ValuesIn(LENGTH_CASES), NAME_OF_ROW);
INSTANTIATE_TEST_SUITE_P(Chunk, ServiceAnswer, testing::ValuesIn(CHUNK_CASES), NAME_OF_ROW);
INSTANTIATE_TEST_SUITE_P(Head, ServiceAnswer, testing::ValuesIn(HEAD_CASES), NAME_OF_ROW);
INSTANTIATE_TEST_SUITE_P(ZeroByte, ServiceAnswer, testing::ValuesIn(ZERO_BYTE_CASES), NAME_OF_ROW);
INSTANTIATE_TEST_SUITE_P(Circle, ServiceAnswer, testing::ValuesIn(CIRCLE_CASES), NAME_OF_ROW);
INSTANTIATE_TEST_SUITE_P(Attachment, ServiceAnswer, testing::ValuesIn(ATTACHMENT_CASES),
                         NAME_OF_ROW);

/// Its announced size is looked at before memory for it is: whatever the machine has, the report is
/// about the attachment.
TEST(HugeAttachment, IsRefusedBeforeItIsAllocated) {
    rude_peer peer(SOAP_REQUEST_END,
                   {{http_head("", "200 OK", "application/dime") + dime_parts(0x7ffffff0)}});
    measured_program program(soap_call(peer.port()));
    const measured_run measured = program.finish();
    expect_no_result(measured);
    EXPECT_NE(measured.run.errors.find("DIME"), std::string::npos) << measured.run.errors;
    EXPECT_EQ(peer.finish(), 1);
}

// ---------------------------------------------------------------------------------------------
// The text of an HTTP error is reported whole up to 64 KiB

TEST(ErrorText, IsReportedWhole) {
    const std::string text(65000, 'x');
    std::string chunks;
    for (std::size_t at = 0; at < text.size(); at += 4096) {
        const std::string chunk = text.substr(at, 4096);
        chunks += hexadecimal(chunk.size()) + "\r\n" + chunk + "\r\n";
    }
    const std::string length = "Content-Length: " + std::to_string(text.size()) + "\r\n";
    const std::string chunked_header = "Transfer-Encoding: chunked\r\n";
    for (const std::string &answer :
         {http_head(length, "403 No") + text,
          http_head(chunked_header, "403 No") + chunks + "0\r\n\r\n",
          http_head(chunked_header, "403 No") + hexadecimal(text.size()) + "\r\n" + text +
              "\r\n0\r\n\r\n"}) {
        rude_peer peer(SOAP_REQUEST_END, {{answer}});
        measured_program program(soap_call(peer.port()));
        const measured_run measured = program.finish();
        expect_no_result(measured);
        EXPECT_TRUE(measured.run.errors.ends_with("Detail: " + text + "\n"));
        EXPECT_EQ(peer.finish(), 1);
    }
}

// ---------------------------------------------------------------------------------------------
// Entities: known ones of XML's own only; nothing is fetched for an answer

struct entity_case {
    const char *name;
    std::string declarations; ///< "%" stands for the port of a web server that must stay alone
    const char *use;
    const char *never_shown;
};

std::string laughs() {
    std::string declarations = "<!ENTITY a0 \"ha\">";
    for (int i = 1; i <= 9; i++) {
        const std::string one = "&a" + std::to_string(i - 1) + ";";
        declarations += "<!ENTITY a" + std::to_string(i) + " \"";
        for (int j = 0; j < 10; j++) {
            declarations += one;
        }
        declarations += "\">";
    }
    return declarations;
}

const entity_case ENTITY_CASES[] = {
    {"Internal", "<!ENTITY a \"secret\">", "&a;", "secret"},
    {"BillionLaughs", laughs(), "&a9;", "ha"},
    {"OfItself", "<!ENTITY a \"&a;\">", "&a;", "&a;"},
    {"ExternalFile", "<!ENTITY a SYSTEM \"file:///etc/passwd\">", "&a;", "root:"},
    {"ExternalUrl", "<!ENTITY a SYSTEM \"http://127.0.0.1:%/secret\">", "&a;", "secret"},
    {"Parameter", "<!ENTITY % a SYSTEM \"http://127.0.0.1:%/secret\"> %a;", "on", "secret"},
    {"Undeclared", "", "&nosuch;", "nosuch"},
};

class Entity : public testing::TestWithParam<entity_case> {};

TEST_P(Entity, IsNeitherExpandedNorFetched) {
    const entity_case &row = GetParam();
    rude_peer elsewhere("\r\n\r\n", {{http_head() + "secret"}});
    std::string declarations = row.declarations;
    if (const std::size_t mark = declarations.rfind("%/"); mark != std::string::npos) {
        declarations.replace(mark, 1, std::to_string(elsewhere.port()));
    }
    const std::string answer =
        unmeasured("<!DOCTYPE a [" + declarations + "]>" +
                   soap_answer("<result>LMWS-000</result><currentvalue>7</currentvalue><status>" +
                               std::string(row.use) + "</status>"));
    rude_peer peer(SOAP_REQUEST_END, {{answer}});
    measured_program program(soap_call(peer.port()));
    const measured_run measured = program.finish();
    const run_result &run = measured.run;
    const std::string::size_type line = run.output.find("[lumocmd] Status: ");
    EXPECT_NE(line, std::string::npos) << run.output;
    EXPECT_EQ(run.output.find(row.never_shown, line), std::string::npos) << run.output;
    EXPECT_NE(run.output.find("[lumocmd] Current Value: 7"), std::string::npos) << run.output;
    EXPECT_TRUE(run.output.ends_with("\nLMCM-0000\n")) << run.output;
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(peer.finish(), 1);
    EXPECT_EQ(elsewhere.finish(), 0);
}

INSTANTIATE_TEST_SUITE_P(Table, Entity, testing::ValuesIn(ENTITY_CASES), NAME_OF_ROW);

// ---------------------------------------------------------------------------------------------
// Redirections: the request, session and all, goes nowhere but to the url that was given

class Redirection : public testing::TestWithParam<const char *> {};

TEST_P(Redirection, IsNotFollowed) {
    rude_peer elsewhere(SOAP_REQUEST_END, {{WHOLE}});
    const std::string answer =
        http_head("Location: http://127.0.0.1:" + std::to_string(elsewhere.port()) +
                      "/cgi-bin/lumows\r\nContent-Length: 0\r\n",
                  std::string(GetParam()) + " Elsewhere");
    rude_peer peer(SOAP_REQUEST_END, {{answer}});
    measured_program program(soap_call(peer.port()));
    const measured_run measured = program.finish();
    expect_no_result(measured);
    EXPECT_NE(measured.run.errors.find(GetParam()), std::string::npos) << measured.run.errors;
    EXPECT_EQ(peer.finish(), 1);
    EXPECT_EQ(elsewhere.finish(), 0);
}

INSTANTIATE_TEST_SUITE_P(Status, Redirection,
                         testing::Values("300", "301", "302", "303", "305", "307", "308"),
                         [](const auto &row) { return row.param; });

} // namespace
