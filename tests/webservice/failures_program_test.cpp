// Faults, no answers and broken ones: each is reported on standard error and has no result. What
// the result of an answer makes of the run's status.

#include "tests/harness/console.h"
#include "tests/harness/peer.h"
#include "tests/webservice/http_peer.h"

#include <gtest/gtest.h>

namespace {

using namespace harness;

const std::string RESPONSE = response_element("getelementstatus", USUAL_RECORD);

// ---------------------------------------------------------------------------------------------
// Faults: the report shows the service's own words

TEST(Fault, IsReported) {
    const struct {
        const char *code;
        const char *more; ///< behind the reason
        const char *http_status;
        const char *detail = "[no detail]";
    } rows[] = {
        {"SOAP-ENV:Server", "", "500 Internal Server Error"},
        {"SOAP-ENV:Client", "", "200 OK"},
        {"ns:busy", "", "400 Bad Request"},
        {"SOAP-ENV:Server.Busy", "<faultactor>urn:me</faultactor>", "500 Internal Server Error"},
        {"SOAP-ENV:Server", "<detail>wires cut</detail>", "500 Internal Server Error", "wires cut"},
        {"SOAP-ENV:Server", "<detail><why>wires cut</why></detail>", "200 OK",
         "<why>wires cut</why>"},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(std::string(row.code) + row.more);
        const std::string fault = fault_element(row.code, "Out of &lt;order&gt;", row.more);
        expect_run(call_answered(http_answer(envelope(fault), row.http_status), RECORD_CALL),
                   "LMCM-508\n", 508, fault_report(row.code, "Out of <order>", row.detail));
    }
}

TEST(Fault, OfSoap12IsReported) {
    const std::string subcode = element("SOAP-ENV:Subcode", element("SOAP-ENV:Value", "ns:line"));
    const std::string rest =
        element("SOAP-ENV:Reason", "<SOAP-ENV:Text xml:lang=\"en\">busy</SOAP-ENV:Text>") +
        element("SOAP-ENV:Detail", "wires cut");
    for (const auto &[code, shown] :
         {std::pair<std::string, std::string>{"", "[no subcode]"}, {subcode, "[ns:line]"}}) {
        const std::string fault =
            element("SOAP-ENV:Code", element("SOAP-ENV:Value", "SOAP-ENV:Receiver") + code) + rest;
        const std::string answer = http_answer(
            ENVELOPE_TAG_12 + element("SOAP-ENV:Body", element("SOAP-ENV:Fault", fault)) +
                "</SOAP-ENV:Envelope>",
            "500 Internal Server Error", "application/soap+xml; charset=utf-8");
        expect_run(call_answered(answer, RECORD_CALL), "LMCM-508\n", 508,
                   "SOAP 1.2 fault SOAP-ENV:Receiver " + shown + "\n\"busy\"\nDetail: wires cut\n");
    }
}

// ---------------------------------------------------------------------------------------------
// No fault and no response: the words are the runtime's, what they must tell is in the table

/// One report and nothing else, with these pieces in their order.
void expect_report(const std::string &errors, const words &pieces) {
    std::size_t from = 0;
    for (const std::string &piece : pieces) {
        const std::size_t at = errors.find(piece, from);
        EXPECT_NE(at, std::string::npos) << "no \"" << piece << "\" in: " << errors;
        from = at == std::string::npos ? from : at + piece.size();
    }
    EXPECT_EQ(errors.find("\"\nDetail: "), errors.rfind("\nDetail: ") - 1) << errors;
    EXPECT_TRUE(errors.ends_with('\n')) << errors;
}

struct failure_case {
    std::string answer; ///< empty: none
    words report;       ///< pieces of standard error, in order
};

template <std::size_t Count> void expect_failures(const failure_case (&rows)[Count]) {
    for (const failure_case &row : rows) {
        SCOPED_TRACE(row.answer);
        const run_result run = call_answered(row.answer, RECORD_CALL);
        expect_run(run, "LMCM-508\n", 508, run.errors);
        expect_report(run.errors, row.report);
    }
}

TEST(Failure, OfHttp) {
    const std::string html = "<html><body>Nobody is at home</body></html>";
    const std::string page = "\r\n\r\n" + envelope(RESPONSE);
    const words no_http = {"SOAP-ENV:Client", "HTTP processing error"};
    expect_failures({
        {"", {"End of file"}},
        {"HTTP/1.1 200 OK\r\n", {"fault"}},
        {"What do you want?\r\n\r\n", {"fault"}},
        {http_answer(html, "404 Not Found", "text/html"), {"404"}},
        {http_answer(html, "500 Internal Server Error", "text/html"), {"500"}},
        {http_answer("", "503 Service Unavailable", "text/plain"), {"503"}},
        {http_answer(html, "200 OK", "text/html"), {"SOAP-ENV:Client"}},
        {http_answer(""), {"SOAP-ENV:Client"}},
        {http_answer("", "202 Accepted"), {"fault"}},
        // No status line.
        {"OPTIONS * HTTP/1.1\r\nHost: a\r\n\r\n", no_http},
        {"POST / HTTP/1.1\r\nContent-Type: text/xml" + page, no_http},
        {"Hello" + page, no_http},
        {"ICY 200 OK" + page, no_http},
        {"HTTP/2.0 200 OK" + page, no_http},
        {"HTTP/1.x 200 OK" + page, no_http},
        {"HTTP/1.1 12 Odd" + page, no_http},
        {"HTTP/1.1 2000 OK" + page, no_http},
        {"HTTP/1.1 012 Odd" + page, no_http},
        {"HTTP/1.1 20x OK" + page, no_http},
        {"HTTP/1.1 200OK" + page, no_http},
    });
}

TEST(Failure, OfTheEnvelope) {
    const auto with_body = [](const std::string &content) {
        return http_answer(envelope(content));
    };
    const auto with_children = [](const std::string &children) {
        return http_response("getelementstatus", children);
    };
    expect_failures({
        {with_body(""), {"SOAP-ENV:Client"}},
        {with_body("on"), {"SOAP-ENV:Client"}},
        {with_body(element("ns:service-getelementstatus", USUAL_RECORD)), {"SOAP-ENV:Client"}},
        {with_body("<m:service-getelementstatusResponse xmlns:m=\"urn:other\">" + USUAL_RECORD +
                   "</m:service-getelementstatusResponse>"),
         {"SOAP-ENV:Client"}},
        {with_body(element("service-getelementstatusResponse", USUAL_RECORD)), {"SOAP-ENV:Client"}},
        {with_body("<more/>" + RESPONSE), {"SOAP-ENV:Client"}},
        {http_answer("<e:Envelope xmlns:e=\"urn:other\"><e:Body/></e:Envelope>"), {"fault"}},
        {http_answer(envelope(RESPONSE,
                              "<SOAP-ENV:Header><t:id xmlns:t=\"urn:t\" "
                              "SOAP-ENV:mustUnderstand=\"1\">1</t:id></SOAP-ENV:Header>")),
         {"SOAP-ENV:MustUnderstand", "t:id"}},
        {with_children("<more SOAP-ENV:mustUnderstand=\"1\">1</more>" + USUAL_RECORD),
         {"SOAP-ENV:MustUnderstand", "more"}},
        {with_children("<SOAP-ENV:more>1</SOAP-ENV:more>" + USUAL_RECORD),
         {"SOAP-ENV:Client", "SOAP-ENV:more"}},
        {with_children("<result>LMWS-000</result><status href=\"#nowhere\"/>"), {"nowhere"}},
        // Read like a fault, but with the envelope of no release: its report names the runtime's
        // error and not the one of a url that was refused here.
        {http_answer("<E:Envelope xmlns:E=\"http://www.w3.org/2099/soap-envelope\">"
                     "<n:service-getelementstatusResponse xmlns:n=\"urn:xmethods-lumows\"><E:Fault>"
                     "<faultcode>x</faultcode><faultstring>url 'http://x' cannot be used"
                     "</faultstring></E:Fault></n:service-getelementstatusResponse></E:Envelope>"),
         {"Error 12 fault "}},
    });
}

/// Shows the line of a text group all the same.
TEST(Failure, OfTheConnection) {
    const auto expect_failure = [](const run_result &run, const char *reason) {
        expect_run(run, text_line(run.pid, "(null)") + "LMCM-502\n", 502, run.errors);
        expect_report(run.errors, {reason});
    };
    for (const script &steps : {script{reset()}, after_request({reset()})}) {
        peer service(steps);
        expect_failure(call_service(service, TEXT_CALL), "fault");
        EXPECT_EQ(service.finish(), "");
    }
    const deserted_point nobody;
    expect_failure(call_at("http://127.0.0.1:" + std::to_string(nobody.port), TEXT_CALL),
                   "Connection refused");
}

// ---------------------------------------------------------------------------------------------
// What the result makes of the status, in each group of functions

TEST(Result, IsTheStatus) {
    const struct {
        std::string result;  ///< whole element
        const char *message; ///< in red; null: none
        const char *last;
        int code;
        bool is_there = true;
    } rows[] = {
        {"<result>BENG-1302</result>", nullptr, "BENT-1302\n", 1302},
        {"<result></result>", nullptr, "LMCM-502\n", 502},
        {"<result>OK</result>", "2 - Invalid argument for utility->extract_error_code OK ",
         "LMCM-502\n", 502},
        {"", nullptr, "LMCM-502\n", 502, false},
        {"<result xsi:nil=\"true\"/>", nullptr, "LMCM-502\n", 502, false},
        // Which is another operation's.
        {"<results>LMWS-000</results>", nullptr, "LMCM-502\n", 502, false},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.result);
        const auto expect_end = [&](const run_result &run, const std::string &lines) {
            const std::string message =
                row.message == nullptr ? "" : tagged_red(run.pid, row.message);
            expect_run(run, lines + message + row.last, row.code);
        };
        expect_end(call_answered(http_response("test", row.result), SINGLE_CALL), "");
        const run_result text = call_answered(
            http_response("retrieveconfiguration", "<url>u</url>" + row.result), TEXT_CALL);
        expect_end(text, text_line(text.pid, "u"));
        const run_result record = call_answered(
            http_response("getelementstatus", "<status>on</status>" + row.result), RECORD_CALL);
        if (row.is_there) {
            expect_end(record, record_lines(record.pid, "on", "(null)"));
        } else {
            expect_run(record, "LMCM-508\n", 508);
        }
    }
    expect_run(call_answered(http_response("logindatareload", "<result>LMWS-000</result>"),
                             {"-f", "SERVICE_LOGINDATARELOAD"}),
               "LMCM-502\n", 502);
}

} // namespace
