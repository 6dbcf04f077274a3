// What becomes of a service's answer: one that is valid is read, in any wrapping; a fault, a broken
// one or none is reported on standard error and has no result; a result is the run's status.

#include "tests/webservice/http_peer.h"

#include <gtest/gtest.h>

namespace {

using namespace harness;

const std::string ABSENT = "(null)";
const std::string RESULT = "<result>LMWS-000</result>";
const std::string RESPONSE = response_element("getelementstatus", USUAL_RECORD);

std::string with_children(const std::string &children) {
    return http_response("getelementstatus", children);
}

std::string with_body(const std::string &content) {
    return http_answer(envelope(content));
}

// ---------------------------------------------------------------------------------------------
// Answers that are read

/// Both fields as they are shown.
void expect_read(const std::string &answer, const std::string &status = "on",
                 const std::string &value = "7") {
    SCOPED_TRACE(answer);
    const run_result run = call_answered(answer, RECORD_CALL);
    expect_run(run, record_lines(run.pid, status, value) + "LMCM-0000\n", 0);
}

TEST(Answer, ChildrenAreFoundByTheirLocalNames) {
    // The first of two counts, also when it is empty.
    expect_read(with_children(USUAL_RECORD + "<ns:status>off</ns:status>"
                                             "<currentvalue>8</currentvalue><result>x</result>"));
    expect_read(with_children(RESULT + "<status></status><status>off</status><currentvalue/>"), "",
                "");
    // Nil is of the instance namespace of any year.
    expect_read(with_children(RESULT +
                              "<ns:status xsi:nil=\"true\"/><currentvalue x:nil=\"true\" xmlns:x="
                              "\"http://www.w3.org/2035/XMLSchema-instance\"></currentvalue>"),
                ABSENT, ABSENT);
    expect_read(with_children(RESULT + "<Status>a</Status><ns:xstatus>b</ns:xstatus>"
                                       "<ns:status-x>c</ns:status-x>"),
                ABSENT, ABSENT);
    expect_read(with_children(RESULT + "<status xmlns=\"urn:other\">on</status>"
                                       "<currentvalue xmlns=\"\">7</currentvalue>"));
    // Attributes of no account
    expect_read(with_body("<ns:service-getelementstatusResponse xsi:type=\"ns:nosuch\">"
                          "<result xsi:type=\"xsd:string\">LMWS-000</result>"
                          "<status xsi:type=\"xsd:int\" SOAP-ENV:mustUnderstand=\"1\">on</status>"
                          "<currentvalue xsi:type=\"ns:nosuch\" xsi:nil=\"false\">7</currentvalue>"
                          "</ns:service-getelementstatusResponse>"));
}

TEST(Answer, ReferencesAreFollowed) {
    expect_read(with_body(response_element("getelementstatus",
                                           "<result href=\"#r\"/><ns:status href=\"#a\"/>"
                                           "<currentvalue href=\"#b\"/>") +
                          "<multiRef id=\"b\">7</multiRef>"
                          "<multiRef id=\"a\" xsi:type=\"xsd:string\">on</multiRef>"
                          "<multiRef id=\"r\" xsi:type=\"xsd:string\">LMWS-000</multiRef>"));
    expect_read(with_children(RESULT + "<status id=\"a\">same</status><currentvalue href=\"#a\"/>"),
                "same", "same");
    expect_read(with_body("<ns:service-getelementstatusResponse href=\"#r\"/>"
                          "<multiRef id=\"r\" xsi:type=\"ns:service-getelementstatusResponse\">" +
                          USUAL_RECORD + "</multiRef>"));
}

TEST(Answer, WrappingIsOfNoAccount) {
    expect_read(with_body("<service-getelementstatusResponse xmlns=\"urn:xmethods-lumows\">" +
                          USUAL_RECORD + "</service-getelementstatusResponse>"));
    expect_read(
        http_answer(ENVELOPE_TAG_12 + element("SOAP-ENV:Body", RESPONSE) + "</SOAP-ENV:Envelope>"));
    expect_read(http_answer(
        envelope(RESPONSE, "<SOAP-ENV:Header><t:id xmlns:t=\"urn:t\" SOAP-ENV:mustUnderstand=\"0\">"
                           "1</t:id><plain/></SOAP-ENV:Header>")));
    // A byte order mark and an XML declaration; comments, instructions and blanks.
    expect_read(http_answer("\xef\xbb\xbf<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n" +
                            envelope(RESPONSE)));
    expect_read(http_answer(
        "<!-- 1 -->" +
        envelope("\r\n <!-- 2 -->" +
                 response_element("getelementstatus", "<!-- 3 --><?page break?>\n\t" + RESULT +
                                                          "\n<status>o<!-- <a> -->n</status>\n\t"
                                                          "<currentvalue>7</currentvalue>\n")) +
        "\n<!-- 4 -->"));
}

TEST(Answer, TextIsDecoded) {
    expect_read(with_children(
                    RESULT + "<status>&lt;a&gt; &amp;amp; &quot;b&quot; &apos;c&apos;</status>"
                             "<currentvalue>&#65;&#x42;&#10;&#13;&#9;&#128;&#xE9;.</currentvalue>"),
                "<a> &amp; \"b\" 'c'", "AB\n\r\t\x80\xe9.");
    expect_read(with_children("<result><![CDATA[LMWS-000]]></result>"
                              "<status><![CDATA[<a> & &amp; ]] b]]></status>"
                              "<currentvalue>1<![CDATA[<2>]]>3</currentvalue>"),
                "<a> & &amp; ]] b", "1<2>3");
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
}

TEST(Answer, HttpHeadSaysOnlyHowTheBodyIsToBeRead) {
    const std::string body = envelope(RESPONSE);
    expect_read("HTTP/1.1 200 OK\r\nExpect: 100-continue\r\nWWW-Authenticate: Basic\r\n"
                "Proxy-Authenticate: Basic\r\nLocation: http://127.0.0.1:1/\r\nSOAPAction: \"\"\r\n"
                "\r\n" +
                body);
    expect_read("HTTP/1.1 200\r\n\r\n" + body);
    // Chunks end the answer while the connection stays open.
    peer service(after_request(
        {reply("HTTP/1.1 200 OK\r\ncontent-TYPE: text/xml\r\nTRANSFER-encoding: chunked\r\n\r\n" +
               http_chunk(body.substr(0, 255)) + http_chunk(body.substr(255)) + http_chunk(""))}));
    const run_result run = call_service(service, RECORD_CALL);
    EXPECT_EQ(service.finish(), "");
    expect_run(run, record_lines(run.pid, "on", "7") + "LMCM-0000\n", 0);
}

// ---------------------------------------------------------------------------------------------
// Faults: the report shows the service's own words

TEST(Fault, IsReported) {
    const struct {
        const char *code;
        const char *http_status;
        const char *more; ///< behind the reason
        const char *detail = "[no detail]";
    } rows[] = {
        {"SOAP-ENV:Server", "500 Internal Server Error", ""},
        {"ns:busy", "400 Bad Request", "<faultactor>urn:me</faultactor>"},
        {"SOAP-ENV:Server.Busy", "500 No", "<detail>wires cut</detail>", "wires cut"},
        {"SOAP-ENV:Client", "200 OK", "<detail><why>cut</why></detail>", "<why>cut</why>"},
    };
    for (const auto &row : rows) {
        const std::string fault = fault_element(row.code, "Out of &lt;order&gt;", row.more);
        expect_run(call_answered(http_answer(envelope(fault), row.http_status), RECORD_CALL),
                   "LMCM-508\n", 508, fault_report(row.code, "Out of <order>", row.detail));
    }
}

TEST(Fault, OfSoap12IsReported) {
    const std::string fault = element(
        "SOAP-ENV:Fault",
        element("SOAP-ENV:Code",
                element("SOAP-ENV:Value", "SOAP-ENV:Receiver") +
                    element("SOAP-ENV:Subcode", element("SOAP-ENV:Value", "ns:line"))) +
            element("SOAP-ENV:Reason", "<SOAP-ENV:Text xml:lang=\"en\">busy</SOAP-ENV:Text>") +
            element("SOAP-ENV:Detail", "wires cut"));
    const std::string answer =
        http_answer(ENVELOPE_TAG_12 + element("SOAP-ENV:Body", fault) + "</SOAP-ENV:Envelope>",
                    "500 Internal Server Error", "application/soap+xml; charset=utf-8");
    expect_run(call_answered(answer, RECORD_CALL), "LMCM-508\n", 508,
               "SOAP 1.2 fault SOAP-ENV:Receiver [ns:line]\n\"busy\"\nDetail: wires cut\n");
}

// ---------------------------------------------------------------------------------------------
// No fault and no response: the words are the runtime's

/// One report and nothing else, with these texts in it.
void expect_failure(const std::string &answer, const std::string &code,
                    const std::string &reason = "") {
    SCOPED_TRACE(answer);
    const run_result run = call_answered(answer, RECORD_CALL);
    expect_run(run, "LMCM-508\n", 508, run.errors);
    EXPECT_NE(run.errors.find(reason, run.errors.find(code)), std::string::npos) << run.errors;
    EXPECT_EQ(run.errors.find("\"\nDetail: "), run.errors.rfind("\nDetail: ") - 1) << run.errors;
    EXPECT_TRUE(run.errors.ends_with('\n')) << run.errors;
}

TEST(Failure, OfHttp) {
    const std::string html = "<html><body>Nobody is at home</body></html>";
    expect_failure(http_answer(html, "404 Not Found", "text/html"), "404");
    expect_failure(http_answer(html, "500 Internal Server Error", "text/html"), "500");
    expect_failure(http_answer("", "503 Service Unavailable", "text/plain"), "503");
    expect_failure(http_answer(html, "200 OK", "text/html"), "SOAP-ENV:Client");
    expect_failure(http_answer(""), "SOAP-ENV:Client");
    expect_failure(http_answer("", "202 Accepted"), "fault");
    for (const std::string no_status_line :
         {"OPTIONS * HTTP/1.1\r\nHost: a", "POST / HTTP/1.1\r\nContent-Type: text/xml", "Hello",
          "ICY 200 OK", "HTTP/2.0 200 OK", "HTTP/1.x 200 OK", "HTTP/1.1 12 Odd", "HTTP/1.1 2000 OK",
          "HTTP/1.1 012 Odd", "HTTP/1.1 20x OK", "HTTP/1.1 200OK"}) {
        expect_failure(no_status_line + "\r\n\r\n" + envelope(RESPONSE), "SOAP-ENV:Client",
                       "HTTP processing error");
    }
}

TEST(Failure, OfTheEnvelope) {
    for (const std::string &content :
         {std::string(), std::string("on"), element("ns:service-getelementstatus", USUAL_RECORD),
          element("service-getelementstatusResponse", USUAL_RECORD), "<more/>" + RESPONSE,
          "<m:service-getelementstatusResponse xmlns:m=\"urn:xmethods-other\">" + USUAL_RECORD +
              "</m:service-getelementstatusResponse>"}) {
        expect_failure(with_body(content), "SOAP-ENV:Client");
    }
    expect_failure(http_answer("<e:Envelope xmlns:e=\"urn:other\"><e:Body/></e:Envelope>"),
                   "fault");
    expect_failure(http_answer(envelope(RESPONSE, "<SOAP-ENV:Header><t:id xmlns:t=\"urn:t\" "
                                                  "SOAP-ENV:mustUnderstand=\"1\">1</t:id>"
                                                  "</SOAP-ENV:Header>")),
                   "SOAP-ENV:MustUnderstand", "t:id");
    expect_failure(with_children("<more SOAP-ENV:mustUnderstand=\"1\">1</more>" + USUAL_RECORD),
                   "SOAP-ENV:MustUnderstand", "more");
    expect_failure(with_children("<SOAP-ENV:more>1</SOAP-ENV:more>" + USUAL_RECORD),
                   "SOAP-ENV:Client", "SOAP-ENV:more");
    expect_failure(with_children(RESULT + "<status href=\"#nowhere\"/>"), "nowhere");
    // Characters whose last byte is taken from the end tag.
    expect_failure(with_children(RESULT + "<status>\xe2\x82</status>"), "fault");
    expect_failure(with_children(RESULT + "<status>\xf0\x9f</status>"), "fault");
    // Read like a fault, but with the envelope of no release: its report names the runtime's error
    // and not the one of a url that was refused here.
    expect_failure(
        http_answer("<E:Envelope xmlns:E=\"http://www.w3.org/2099/soap-envelope\">"
                    "<n:service-getelementstatusResponse xmlns:n=\"urn:xmethods-lumows\"><E:Fault>"
                    "<faultcode>x</faultcode><faultstring>url 'http://x' cannot be used"
                    "</faultstring></E:Fault></n:service-getelementstatusResponse></E:Envelope>"),
        "Error 12 fault ");
}

// ---------------------------------------------------------------------------------------------
// What the result makes of the status, in each group of functions

/// @param result a whole element; another one than "result" is as good as none.
/// @param message in red, if there is one.
void expect_status(const std::string &result, const std::string &last, int code,
                   const std::string &message = "") {
    SCOPED_TRACE(result);
    const auto expect_end = [&](const run_result &run, const std::string &lines) {
        const std::string complaint = message.empty() ? "" : tagged_red(run.pid, message);
        expect_run(run, lines + complaint + last, code);
    };
    expect_end(call_answered(http_response("test", result), SINGLE_CALL), "");
    const run_result text =
        call_answered(http_response("retrieveconfiguration", "<url>u</url>" + result), TEXT_CALL);
    expect_end(text, text_line(text.pid, "u"));
    const run_result record =
        call_answered(with_children("<status>on</status>" + result), RECORD_CALL);
    if (result.starts_with("<result>")) {
        expect_end(record, record_lines(record.pid, "on", ABSENT));
    } else {
        expect_run(record, "LMCM-508\n", 508);
    }
}

TEST(Result, IsTheStatus) {
    expect_status("<result>BENG-1302</result>", "BENT-1302\n", 1302);
    expect_status("<result>OK</result>", "LMCM-502\n", 502,
                  "2 - Invalid argument for utility->extract_error_code OK ");
    expect_status("<result></result>", "LMCM-502\n", 502);
    expect_status("<result xsi:nil=\"true\"/>", "LMCM-502\n", 502);
    expect_status("<results>LMWS-000</results>", "LMCM-502\n", 502); // which is another operation's
    expect_run(
        call_answered(http_response("logindatareload", RESULT), {"-f", "SERVICE_LOGINDATARELOAD"}),
        "LMCM-502\n", 502);
}

} // namespace
