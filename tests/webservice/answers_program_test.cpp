// Answers as real services send them: whatever is valid is read, in any wrapping.

#include "tests/harness/console.h"
#include "tests/webservice/http_peer.h"

#include <gtest/gtest.h>

namespace {

using namespace harness;

struct answer_case {
    const char *name;
    std::string answer;
    std::string status = "on"; ///< as it is shown
    std::string value = "7";
};

template <std::size_t Count> void expect_read(const answer_case (&rows)[Count]) {
    for (const answer_case &row : rows) {
        SCOPED_TRACE(row.name);
        const run_result run = call_answered(row.answer, RECORD_CALL);
        expect_run(run, record_lines(run.pid, row.status, row.value) + "LMCM-0000\n", 0);
    }
}

const std::string ABSENT = "(null)";
const std::string RESULT = "<result>LMWS-000</result>";
const std::string RESPONSE = response_element("getelementstatus", USUAL_RECORD);

std::string with_children(const std::string &children) {
    return http_response("getelementstatus", children);
}

std::string with_body(const std::string &content) {
    return http_answer(envelope(content));
}

TEST(Answer, ChildrenAreFoundByTheirLocalNames) {
    expect_read({
        {"FirstOfTwoCounts",
         with_children(USUAL_RECORD + "<ns:status>off</ns:status><currentvalue>8</currentvalue>"
                                      "<result>LMWS-402</result>")},
        {"FirstOfTwoCountsAlsoWhenEmpty",
         with_children(RESULT + "<status></status><status>off</status><currentvalue/>"), "", ""},
        {"Nil",
         with_children(RESULT + "<ns:status xsi:nil=\"true\"/><currentvalue xsi:nil=\"true\">"
                                "</currentvalue>"),
         ABSENT, ABSENT},
        {"NilOfAnotherYear",
         with_children(RESULT + "<status xmlns:x=\"http://www.w3.org/1999/XMLSchema-instance\" "
                                "x:nil=\"true\"/>"),
         ABSENT, ABSENT},
        {"OtherNamesAreUnknown",
         with_children(RESULT + "<Status>a</Status><ns:xstatus>b</ns:xstatus>"
                                "<ns:status-x>c</ns:status-x>"),
         ABSENT, ABSENT},
        {"OtherDefaultNamespace",
         with_children(RESULT + "<status xmlns=\"urn:other\">on</status>"
                                "<currentvalue xmlns=\"\">7</currentvalue>")},
        {"AttributesOfNoAccount",
         with_body("<ns:service-getelementstatusResponse xsi:type=\"ns:nosuch\">"
                   "<result xsi:type=\"xsd:string\">LMWS-000</result>"
                   "<status xsi:type=\"xsd:int\" SOAP-ENV:mustUnderstand=\"1\">on</status>"
                   "<currentvalue xsi:type=\"ns:nosuch\" xsi:nil=\"false\">7</currentvalue>"
                   "</ns:service-getelementstatusResponse>")},
    });
}

TEST(Answer, ReferencesAreFollowed) {
    expect_read({
        {"ToElementsBehindTheResponse",
         with_body(response_element("getelementstatus",
                                    "<result href=\"#r\"/><ns:status href=\"#a\"/>"
                                    "<currentvalue href=\"#b\"/>") +
                   "<multiRef id=\"b\">7</multiRef>"
                   "<multiRef id=\"a\" xsi:type=\"xsd:string\">on</multiRef>"
                   "<multiRef id=\"r\" xsi:type=\"xsd:string\">LMWS-000</multiRef>")},
        {"ToTheSameElement",
         with_body(response_element("getelementstatus", RESULT + "<status href=\"#a\"/>"
                                                                 "<currentvalue href=\"#a\"/>") +
                   "<multiRef id=\"a\" xsi:type=\"xsd:string\">same</multiRef>"),
         "same", "same"},
        {"ToAnEarlierChild",
         with_children(RESULT + "<status id=\"a\">same</status><currentvalue href=\"#a\"/>"),
         "same", "same"},
        {"ToTheResponse", with_body("<ns:service-getelementstatusResponse href=\"#r\"/>"
                                    "<ns:service-getelementstatusResponse id=\"r\">" +
                                    USUAL_RECORD + "</ns:service-getelementstatusResponse>")},
        {"ToTheResponseByItsType",
         with_body("<ns:service-getelementstatusResponse href=\"#r\"/>"
                   "<multiRef id=\"r\" xsi:type=\"ns:service-getelementstatusResponse\">" +
                   USUAL_RECORD + "</multiRef>")},
    });
}

TEST(Answer, WrappingIsOfNoAccount) {
    expect_read({
        {"ResponseInDefaultNamespace",
         with_body("<service-getelementstatusResponse xmlns=\"urn:xmethods-lumows\">" +
                   USUAL_RECORD + "</service-getelementstatusResponse>")},
        {"ResponseWithOtherPrefix",
         with_body("<m:service-getelementstatusResponse xmlns:m=\"urn:xmethods-lumows\">" +
                   USUAL_RECORD + "</m:service-getelementstatusResponse>")},
        {"Soap12Envelope", http_answer(ENVELOPE_TAG_12 + element("SOAP-ENV:Body", RESPONSE) +
                                       "</SOAP-ENV:Envelope>")},
        {"Header", http_answer(envelope(RESPONSE, "<SOAP-ENV:Header><t:id xmlns:t=\"urn:t\" "
                                                  "SOAP-ENV:mustUnderstand=\"0\">1</t:id><plain/>"
                                                  "</SOAP-ENV:Header>"))},
        {"ByteOrderMarkAndXmlDeclaration",
         http_answer("\xef\xbb\xbf<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n" +
                     envelope(RESPONSE))},
        {"CommentsAndInstructionsAndBlanks",
         http_answer("<!-- 1 -->" +
                     envelope("\r\n <!-- 2 -->" +
                              response_element("getelementstatus",
                                               "<!-- 3 --><?page break?>\n\t" + RESULT +
                                                   "\n<status>o<!-- <a> -->n</status>\n\t"
                                                   "<currentvalue>7</currentvalue>\n")) +
                     "\n<!-- 4 -->")},
    });
}

TEST(Answer, TextIsDecoded) {
    expect_read({
        {"Entities",
         with_children(RESULT +
                       "<status>&lt;a&gt; &amp;amp; &quot;b&quot; &apos;c&apos;</status>"
                       "<currentvalue>&#65;&#x42;&#10;&#13;&#9;&#128;&#xE9;.</currentvalue>"),
         "<a> &amp; \"b\" 'c'", "AB\n\r\t\x80\xe9."},
        {"CData",
         with_children("<result><![CDATA[LMWS-000]]></result>"
                       "<status><![CDATA[<a> & &amp; ]] b]]></status>"
                       "<currentvalue>1<![CDATA[<2>]]>3</currentvalue>"),
         "<a> & &amp; ]] b", "1<2>3"},
    });
}

TEST(Answer, HttpHeadSaysOnlyHowTheBodyIsToBeRead) {
    const std::string body = envelope(RESPONSE);
    expect_read({
        {"HeadersOfNoUse",
         "HTTP/1.1 200 OK\r\nExpect: 100-continue\r\nWWW-Authenticate: Basic\r\n"
         "Proxy-Authenticate: Basic\r\nLocation: http://127.0.0.1:1/\r\nSOAPAction: \"\"\r\n\r\n" +
             body},
        {"ChunksAndHeaderNamesInOtherCase",
         "HTTP/1.1 200 OK\r\ncontent-TYPE: text/xml\r\nTRANSFER-encoding: chunked\r\n\r\n" +
             http_chunk(body.substr(0, 255)) + http_chunk(body.substr(255)) + http_chunk("")},
        {"StatusLineWithoutReason", "HTTP/1.1 200\r\n\r\n" + body},
    });
}

/// Such an answer ends by what its head says, not with the connection.
TEST(Answer, ConnectionMayStayOpen) {
    const std::string body = envelope(RESPONSE);
    for (const std::string &answer :
         {http_answer(body), "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n" +
                                 http_chunk(body) + http_chunk("")}) {
        peer service(after_request({reply(answer)}));
        const run_result run = call_service(service, RECORD_CALL);
        EXPECT_EQ(service.finish(), "");
        expect_run(run, record_lines(run.pid, "on", "7") + "LMCM-0000\n", 0);
    }
}

/// What is shown for them is open, the fields around them are not.
TEST(Answer, NoBytesDoHarm) {
    for (const char *bytes : {"a\xff.", "\x80\x80", "\xc3", "\xfd\xfe", "\xe2\x82\xac", "\xc0\x80.",
                              "\xed\xa0\x80", "\xf7\xbf\xbf\xbf"}) {
        const run_result run = call_answered(
            with_children(RESULT + element("status", bytes) + "<currentvalue>7</currentvalue>"),
            RECORD_CALL);
        EXPECT_TRUE(run.output.ends_with(
            "\033[0;39m\n" + green(run.pid, "[lumocmd] Current Value: 7") + "LMCM-0000\n"))
            << run.output;
        EXPECT_EQ(run.status, 0);
    }
    // Characters whose last byte is taken from the end tag.
    for (const char *bytes : {"\xe2\x82", "\xf0\x9f"}) {
        const run_result run =
            call_answered(with_children(RESULT + element("status", bytes)), RECORD_CALL);
        EXPECT_EQ(run.output, "LMCM-508\n");
    }
}

} // namespace
