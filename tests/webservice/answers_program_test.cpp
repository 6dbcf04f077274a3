// Answers as real services send them: whatever is valid is read, in any order and any wrapping.

#include "tests/harness/console.h"
#include "tests/webservice/http_peer.h"

#include <cstdio>
#include <gtest/gtest.h>

namespace {

using namespace harness;

std::string status_response(const std::string &children) {
    return response_element("getelementstatus", children);
}

/// An answer whose envelope holds a response with these children.
std::string with_children(const std::string &children) {
    return http_answer(envelope(status_response(children)));
}

/// An answer whose body has this content.
std::string with_body(const std::string &content) {
    return http_answer(envelope(content));
}

const std::string RESULT = "<result>LMWS-000</result>";

const std::string HEAD_OF_CHUNKS = "HTTP/1.1 200 OK\r\nContent-Type: text/xml; charset=utf-8\r\n"
                                   "Transfer-Encoding: chunked\r\nConnection: close\r\n\r\n";

std::string in_chunks(const std::string &body, std::size_t size,
                      const std::string &head = HEAD_OF_CHUNKS) {
    std::string answer = head;
    for (std::size_t from = 0; from < body.size(); from += size) {
        const std::string chunk = body.substr(from, size);
        char length[32];
        snprintf(length, sizeof length, "%zx\r\n", chunk.size());
        answer += length + chunk + "\r\n";
    }
    return answer + "0\r\n\r\n";
}

struct answer_case {
    const char *name;
    std::string answer;
    std::string status; ///< as it is shown
    std::string value;
};

const std::string ABSENT = "(null)";

const answer_case CHILDREN_CASES[] = {
    {"InOrder", with_children(USUAL_RECORD), "on", "7"},
    {"Reversed",
     with_children("<currentvalue>7</currentvalue><status>on</status><result>LMWS-000</result>"),
     "on", "7"},
    {"FirstOfTwoCounts",
     with_children(RESULT + "<status>on</status><status>off</status><currentvalue>7</currentvalue>"
                            "<currentvalue>8</currentvalue>"),
     "on", "7"},
    {"FirstOfTwoResultsCounts",
     with_children(RESULT + "<status>on</status><result>LMWS-402</result>"), "on", ABSENT},
    {"EmptyFirstOfTwoCounts", with_children(RESULT + "<status/><status>off</status>"), "", ABSENT},
    {"Empty", with_children(RESULT + "<status></status><currentvalue/>"), "", ""},
    {"Nil",
     with_children(RESULT +
                   "<status xsi:nil=\"true\"/><currentvalue xsi:nil=\"true\"></currentvalue>"),
     ABSENT, ABSENT},
    {"NotNil", with_children(RESULT + "<status xsi:nil=\"false\">on</status>"), "on", ABSENT},
    {"Unknown",
     with_children("<more>1<deep>2</deep></more>" + USUAL_RECORD +
                   "<q:other xmlns:q=\"urn:q\" a=\"b\">3</q:other>"),
     "on", "7"},
    {"UnknownEmpty", with_children("<more/>" + USUAL_RECORD + "<more/>"), "on", "7"},
    {"OtherCaseIsUnknown",
     with_children(RESULT + "<Status>on</Status><currentvalue>7</currentvalue>"), ABSENT, "7"},
    {"FirstOfTwoCountsWhateverThePrefix",
     with_children(USUAL_RECORD + "<ns:status>off</ns:status>"), "on", "7"},
    {"Prefixed",
     with_children(RESULT + "<ns:status>on</ns:status>"
                            "<o:currentvalue xmlns:o=\"urn:other\">7</o:currentvalue>"),
     "on", "7"},
    {"PrefixedAndNil", with_children(RESULT + "<ns:status xsi:nil=\"true\"/><ns:currentvalue/>"),
     ABSENT, ""},
    {"PrefixedByAReference",
     with_body(status_response(RESULT + "<ns:status href=\"#a\"/>") +
               "<multiRef id=\"a\" xsi:type=\"xsd:string\">on</multiRef>"),
     "on", ABSENT},
    {"LongerNameIsUnknown",
     with_children(RESULT + "<ns:xstatus>a</ns:xstatus>"
                            "<ns:status-x>b</ns:status-x>"),
     ABSENT, ABSENT},
    {"OtherDefaultNamespace",
     with_children(RESULT + "<status xmlns=\"urn:other\">on</status>"
                            "<currentvalue xmlns=\"\">7</currentvalue>"),
     "on", "7"},
    {"WithType",
     with_children("<result xsi:type=\"xsd:string\">LMWS-000</result>"
                   "<status xsi:type=\"xsd:int\">on</status>"
                   "<currentvalue xsi:type=\"ns:nosuch\">7</currentvalue>"),
     "on", "7"},
    {"MarkedMustUnderstand",
     with_children(RESULT + "<status SOAP-ENV:mustUnderstand=\"1\">on</status>"), "on", ABSENT},
};

const answer_case REFERENCE_CASES[] = {
    {"ChildBehindTheResponse",
     with_body(status_response(RESULT + "<status href=\"#a\"/><currentvalue href=\"#b\"/>") +
               "<multiRef id=\"b\" xsi:type=\"xsd:string\">7</multiRef>"
               "<multiRef id=\"a\" xsi:type=\"xsd:string\">on</multiRef>"),
     "on", "7"},
    {"ChildWithoutType",
     with_body(status_response(RESULT + "<status href=\"#a\"/>") +
               "<multiRef id=\"a\">on</multiRef>"),
     "on", ABSENT},
    {"TwoChildrenShareOne",
     with_body(status_response(RESULT + "<status href=\"#a\"/><currentvalue href=\"#a\"/>") +
               "<multiRef id=\"a\" xsi:type=\"xsd:string\">same</multiRef>"),
     "same", "same"},
    {"ToAnEarlierChild",
     with_children(RESULT + "<status id=\"a\">same</status><currentvalue href=\"#a\"/>"), "same",
     "same"},
    {"Result",
     with_body(status_response("<result href=\"#r\"/><status>on</status>") +
               "<multiRef id=\"r\" xsi:type=\"xsd:string\">LMWS-000</multiRef>"),
     "on", ABSENT},
    {"WholeResponse",
     with_body("<ns:service-getelementstatusResponse href=\"#r\"/>"
               "<ns:service-getelementstatusResponse id=\"r\">" +
               USUAL_RECORD + "</ns:service-getelementstatusResponse>"),
     "on", "7"},
    {"WholeResponseAsMultiRef",
     with_body("<ns:service-getelementstatusResponse href=\"#r\"/>"
               "<multiRef id=\"r\" xsi:type=\"ns:service-getelementstatusResponse\">" +
               USUAL_RECORD + "</multiRef>"),
     "on", "7"},
};

const answer_case WRAPPING_CASES[] = {
    {"ResponseInDefaultNamespace",
     with_body("<service-getelementstatusResponse xmlns=\"urn:xmethods-lumows\">" + USUAL_RECORD +
               "</service-getelementstatusResponse>"),
     "on", "7"},
    {"ResponseWithOtherPrefix",
     with_body("<m:service-getelementstatusResponse xmlns:m=\"urn:xmethods-lumows\">" +
               USUAL_RECORD + "</m:service-getelementstatusResponse>"),
     "on", "7"},
    {"ResponseWithForeignType",
     with_body("<ns:service-getelementstatusResponse xsi:type=\"ns:nosuch\">" + USUAL_RECORD +
               "</ns:service-getelementstatusResponse>"),
     "on", "7"},
    {"Soap12Envelope",
     http_answer(ENVELOPE_TAG_12 + element("SOAP-ENV:Body", status_response(USUAL_RECORD)) +
                 "</SOAP-ENV:Envelope>"),
     "on", "7"},
    {"HeaderPlain",
     http_answer(envelope(status_response(USUAL_RECORD),
                          "<SOAP-ENV:Header><t:id xmlns:t=\"urn:t\">1</t:id></SOAP-ENV:Header>")),
     "on", "7"},
    {"HeaderEmpty", http_answer(envelope(status_response(USUAL_RECORD), "<SOAP-ENV:Header/>")),
     "on", "7"},
    {"HeaderNeedNotBeUnderstood",
     http_answer(envelope(status_response(USUAL_RECORD),
                          "<SOAP-ENV:Header><t:id xmlns:t=\"urn:t\" SOAP-ENV:mustUnderstand=\"0\">"
                          "1</t:id></SOAP-ENV:Header>")),
     "on", "7"},
    {"XmlDeclaration",
     http_answer("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n" +
                 envelope(status_response(USUAL_RECORD))),
     "on", "7"},
    {"ByteOrderMark", http_answer("\xef\xbb\xbf" + envelope(status_response(USUAL_RECORD))), "on",
     "7"},
    {"Comments",
     http_answer("<!-- 1 -->" +
                 envelope("<!-- 2 -->" + status_response("<!-- 3 -->" + RESULT +
                                                         "<status>o<!-- <a> -->n</status>")) +
                 "<!-- 4 -->"),
     "on", ABSENT},
    {"ProcessingInstruction", with_children("<?page break?>" + USUAL_RECORD), "on", "7"},
    {"CData",
     with_children("<result><![CDATA[LMWS-000]]></result>"
                   "<status><![CDATA[<a> & &amp; ]] b]]></status>"
                   "<currentvalue>1<![CDATA[<2>]]>3</currentvalue>"),
     "<a> & &amp; ]] b", "1<2>3"},
    {"BlanksBetweenElements",
     with_body("\r\n  " + status_response("\n\t" + RESULT + "\n\t<status>on</status>\n") + "\n"),
     "on", ABSENT},
    {"Chunked", in_chunks(envelope(status_response(USUAL_RECORD)), 50), "on", "7"},
    {"ChunksOfOneByte", in_chunks(envelope(status_response(USUAL_RECORD)), 1), "on", "7"},
    {"OneChunk", in_chunks(envelope(status_response(USUAL_RECORD)), 100000), "on", "7"},
    {"NoLengthUntilTheEnd",
     "HTTP/1.0 200 OK\r\nContent-Type: text/xml\r\n\r\n" + envelope(status_response(USUAL_RECORD)),
     "on", "7"},
    {"HeadersOfNoUse",
     "HTTP/1.1 200 OK\r\nExpect: 100-continue\r\nWWW-Authenticate: Basic\r\n"
     "Proxy-Authenticate: Basic\r\nLocation: http://127.0.0.1:1/\r\nSOAPAction: \"\"\r\n\r\n" +
         envelope(status_response(USUAL_RECORD)),
     "on", "7"},
    {"HeaderNamesInOtherCase",
     in_chunks(envelope(status_response(USUAL_RECORD)), 50,
               "HTTP/1.1 200 OK\r\ncontent-TYPE: text/xml\r\nTRANSFER-encoding: chunked\r\n\r\n"),
     "on", "7"},
    {"StatusLineWithoutReason", "HTTP/1.1 200\r\n\r\n" + envelope(status_response(USUAL_RECORD)),
     "on", "7"},
    {"ErrorStatusWithAnAnswer",
     http_answer(envelope(status_response(USUAL_RECORD)), "500 Internal Server Error"), "on", "7"},
    {"BadRequestWithAnAnswer",
     http_answer(envelope(status_response(USUAL_RECORD)), "400 Bad Request"), "on", "7"},
    {"ContinueFirst", "HTTP/1.1 100 Continue\r\n\r\n" + with_children(USUAL_RECORD), "on", "7"},
};

const answer_case TEXT_CASES[] = {
    {"Entities",
     with_children(RESULT + "<status>&lt;a&gt; &amp;amp; &quot;b&quot; &apos;c&apos;</status>"
                            "<currentvalue>&#65;&#x42;&#10;&#13;&#9;.</currentvalue>"),
     "<a> &amp; \"b\" 'c'", "AB\n\r\t."},
    {"LineBreaksAndTabs",
     with_children(RESULT + "<status> a\n\tb \n</status><currentvalue>\n</currentvalue>"),
     " a\n\tb \n", "\n"},
    {"Latin1FromUtf8", with_children(RESULT + "<status>\xc2\x80\xc3\xa9\xc3\xbf</status>"),
     "\x80\xe9\xff", ABSENT},
    {"Latin1FromReferences", with_children(RESULT + "<status>&#128;&#xE9;&#255;</status>"),
     "\x80\xe9\xff", ABSENT},
    {"PercentSigns", with_children(RESULT + "<status>%s%n%d</status>"), "%s%n%d", ABSENT},
    {"OneMegabyte", with_children(RESULT + element("status", std::string(1 << 20, 'x'))),
     std::string(1 << 20, 'x'), ABSENT},
    {"LikeMarkupOfOurs", with_children(RESULT + "<status>&lt;/status&gt;</status>"), "</status>",
     ABSENT},
};

class Answer : public testing::TestWithParam<answer_case> {};

TEST_P(Answer, IsRead) {
    const answer_case &row = GetParam();
    peer service(after_request({reply(row.answer), half_close()}));
    const run_result run = call_service(service, RECORD_CALL);
    EXPECT_EQ(service.finish(), "");
    EXPECT_EQ(run.output, record_lines(run.pid, row.status, row.value) + "LMCM-0000\n");
    EXPECT_EQ(run.errors, "");
    EXPECT_EQ(run.status, 0);
    // Nothing is sent behind the request.
    EXPECT_TRUE(service.received().ends_with("</SOAP-ENV:Envelope>\r\n"));
}

INSTANTIATE_TEST_SUITE_P(Children, Answer, testing::ValuesIn(CHILDREN_CASES), NAME_OF_ROW);
INSTANTIATE_TEST_SUITE_P(Reference, Answer, testing::ValuesIn(REFERENCE_CASES), NAME_OF_ROW);
INSTANTIATE_TEST_SUITE_P(Wrapping, Answer, testing::ValuesIn(WRAPPING_CASES), NAME_OF_ROW);
INSTANTIATE_TEST_SUITE_P(Text, Answer, testing::ValuesIn(TEXT_CASES), NAME_OF_ROW);

TEST(AnswerInDrops, IsRead) {
    peer service(after_request({drip(with_children(USUAL_RECORD)), close_connection()}));
    const run_result run = call_service(service, {"-f", "SERVICE_GETELEMENTSTATUS", "-p", "s|i"});
    EXPECT_EQ(service.finish(), "");
    EXPECT_EQ(run.output, "LMCM-0000\n");
    EXPECT_EQ(run.errors, "");
}

// ---------------------------------------------------------------------------------------------
// Bytes that are no valid UTF-8, and characters that Latin-1 lacks: what is shown for them is open,
// the fields around them are not

struct invalid_case {
    const char *name;
    const char *bytes;
    bool hides_the_end = false; ///< the end tag's "<" counts as the character's last byte
};

const invalid_case INVALID_CASES[] = {
    {"LoneByte", "a\xff."},
    {"LoneContinuation", "\x80\x80"},
    {"CutOffPair", "\xc3"},
    {"CutOffTriple", "\xe2\x82", true},
    {"CutOffQuadruple", "\xf0\x9f", true},
    {"LongestLead", "\xfd\xfe"},
    {"CharacterBeyondLatin1", "\xe2\x82\xac"},
    {"Overlong", "\xc0\x80."},
    {"Surrogate", "\xed\xa0\x80"},
    {"BeyondUnicode", "\xf7\xbf\xbf\xbf"},
};

class InvalidUtf8 : public testing::TestWithParam<invalid_case> {};

TEST_P(InvalidUtf8, NeitherCrashesNorHangs) {
    peer service(answering(with_children(RESULT + "<currentvalue>before</currentvalue>" +
                                         element("status", GetParam().bytes))));
    const run_result run = call_service(service, RECORD_CALL);
    EXPECT_EQ(service.finish(), "");
    if (GetParam().hides_the_end) {
        EXPECT_EQ(run.output, "LMCM-508\n");
        return;
    }
    EXPECT_NE(run.output.find("[lumocmd] Status: "), std::string::npos);
    EXPECT_NE(run.output.find(green(run.pid, "[lumocmd] Current Value: before")),
              std::string::npos);
    EXPECT_EQ(run.output.substr(run.output.rfind('\n', run.output.size() - 2) + 1), "LMCM-0000\n");
    EXPECT_EQ(run.status, 0);
}

INSTANTIATE_TEST_SUITE_P(Table, InvalidUtf8, testing::ValuesIn(INVALID_CASES), NAME_OF_ROW);

} // namespace
