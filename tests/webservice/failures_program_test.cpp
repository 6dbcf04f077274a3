// Answers that are faults, no answers, or broken ones: each is reported on standard error and has
// no result, whatever came before.

#include "tests/harness/console.h"
#include "tests/harness/meeting_point.h"
#include "tests/harness/private_machine.h"
#include "tests/webservice/http_peer.h"

#include <gtest/gtest.h>

namespace {

using namespace harness;

constexpr int NO_RESULT = 508 & 0xff;
constexpr int BAD_PARAMETER = 502 & 0xff;

std::string usual_envelope() {
    return envelope(response_element("getelementstatus", USUAL_RECORD));
}

/// The envelope up to the last occurrence of a piece of it.
std::string cut_before(const std::string &piece) {
    return usual_envelope().substr(0, usual_envelope().rfind(piece));
}

// ---------------------------------------------------------------------------------------------
// Faults: the report shows the service's own words

struct fault_case {
    const char *name;
    const char *code;
    std::string more;   ///< behind the reason
    const char *detail; ///< as reported
};

const fault_case FAULT_CASES[] = {
    {"Server", "SOAP-ENV:Server", "", "[no detail]"},
    {"Receiver", "SOAP-ENV:Receiver", "", "[no detail]"},
    {"Client", "SOAP-ENV:Client", "", "[no detail]"},
    {"Sender", "SOAP-ENV:Sender", "", "[no detail]"},
    {"MustUnderstand", "SOAP-ENV:MustUnderstand", "", "[no detail]"},
    {"VersionMismatch", "SOAP-ENV:VersionMismatch", "", "[no detail]"},
    {"OwnCode", "ns:busy", "", "[no detail]"},
    {"DottedCode", "SOAP-ENV:Server.Busy", "", "[no detail]"},
    {"Actor", "SOAP-ENV:Server", "<faultactor>urn:me</faultactor>", "[no detail]"},
    {"DetailText", "SOAP-ENV:Server", "<detail>wires cut</detail>", "wires cut"},
    {"DetailMarkup", "SOAP-ENV:Server",
     "<faultactor>urn:me</faultactor><detail><why>wires cut</why></detail>",
     "<why>wires cut</why>"},
};

class Fault : public testing::TestWithParam<fault_case> {
  protected:
    static void is_reported(const std::string &http_status) {
        const fault_case &row = GetParam();
        peer service(answering(http_answer(
            envelope(fault_element(row.code, "Out of &lt;order&gt;", row.more)), http_status)));
        const run_result run = call_service(service, RECORD_CALL);
        EXPECT_EQ(service.finish(), "");
        EXPECT_EQ(run.output, "LMCM-508\n");
        EXPECT_EQ(run.errors, fault_report(row.code, "Out of <order>", row.detail));
        EXPECT_EQ(run.status, NO_RESULT);
    }
};

TEST_P(Fault, WithHttpStatus500) {
    is_reported("500 Internal Server Error");
}

TEST_P(Fault, WithHttpStatus200) {
    is_reported("200 OK");
}

INSTANTIATE_TEST_SUITE_P(Table, Fault, testing::ValuesIn(FAULT_CASES), NAME_OF_ROW);

struct fault_12_case {
    const char *name;
    const char *code;
    const char *subcode; ///< may be empty
    const char *report;
};

const fault_12_case FAULT_12_CASES[] = {
    {"Receiver", "SOAP-ENV:Receiver", "",
     "SOAP 1.2 fault SOAP-ENV:Receiver [no subcode]\n\"busy\"\nDetail: wires cut\n"},
    {"Sender", "SOAP-ENV:Sender", "",
     "SOAP 1.2 fault SOAP-ENV:Sender [no subcode]\n\"busy\"\nDetail: wires cut\n"},
    {"Subcode", "SOAP-ENV:Receiver",
     "<SOAP-ENV:Subcode><SOAP-ENV:Value>ns:line</SOAP-ENV:Value></SOAP-ENV:Subcode>",
     "SOAP 1.2 fault SOAP-ENV:Receiver [ns:line]\n\"busy\"\nDetail: wires cut\n"},
};

class Fault12 : public testing::TestWithParam<fault_12_case> {};

TEST_P(Fault12, IsReported) {
    const fault_12_case &row = GetParam();
    const std::string fault =
        element("SOAP-ENV:Code", element("SOAP-ENV:Value", row.code) + row.subcode) +
        element("SOAP-ENV:Reason", "<SOAP-ENV:Text xml:lang=\"en\">busy</SOAP-ENV:Text>") +
        element("SOAP-ENV:Detail", "wires cut");
    peer service(answering(
        http_answer(ENVELOPE_TAG_12 + element("SOAP-ENV:Body", element("SOAP-ENV:Fault", fault)) +
                        "</SOAP-ENV:Envelope>",
                    "500 Internal Server Error", "application/soap+xml; charset=utf-8")));
    const run_result run = call_service(service, RECORD_CALL);
    EXPECT_EQ(service.finish(), "");
    EXPECT_EQ(run.output, "LMCM-508\n");
    EXPECT_EQ(run.errors, row.report);
    EXPECT_EQ(run.status, NO_RESULT);
}

INSTANTIATE_TEST_SUITE_P(Table, Fault12, testing::ValuesIn(FAULT_12_CASES), NAME_OF_ROW);

// ---------------------------------------------------------------------------------------------
// No fault and no response: the words are the runtime's, what they must tell is in the table

struct failure_case {
    const char *name;
    script further; ///< after the request has come
    words report;   ///< pieces of standard error, in order
};

/// Goes on receiving behind the answer.
script sends(const std::string &answer) {
    return {reply(answer), half_close()};
}

const std::string HTML = "<html><body>Nobody is at home</body></html>";

const failure_case FAILURE_CASES[] = {
    {"NotFoundWithHtml", sends(http_answer(HTML, "404 Not Found", "text/html")), {"404"}},
    {"ServerErrorWithHtml",
     sends(http_answer(HTML, "500 Internal Server Error", "text/html")),
     {"500"}},
    {"Unauthorized", sends(http_answer("no", "401 Unauthorized", "text/plain")), {"401"}},
    {"Unavailable", sends(http_answer("", "503 Service Unavailable", "text/plain")), {"503"}},
    {"Redirected",
     sends("HTTP/1.1 302 Found\r\nLocation: http://127.0.0.1:1/\r\nContent-Length: 0\r\n\r\n"),
     {"302"}},
    {"SuccessWithHtml", sends(http_answer(HTML, "200 OK", "text/html")), {"SOAP-ENV:Client"}},
    {"EmptyHttpBody", sends(http_answer("")), {"SOAP-ENV:Client"}},
    {"AcceptedWithoutBody", sends(http_answer("", "202 Accepted")), {"fault"}},
    {"EmptySoapBody", sends(http_answer(envelope(""))), {"SOAP-ENV:Client"}},
    {"TextInSoapBody", sends(http_answer(envelope("on"))), {"SOAP-ENV:Client"}},
    {"ResponseOfAnotherOperation",
     sends(http_answer(envelope(response_element("test", USUAL_RECORD)))),
     {"SOAP-ENV:Client"}},
    {"RequestEchoed",
     sends(http_answer(envelope(element("ns:service-getelementstatus", USUAL_RECORD)))),
     {"SOAP-ENV:Client"}},
    {"OtherNamespace",
     sends(http_answer(envelope("<m:service-getelementstatusResponse xmlns:m=\"urn:other\">" +
                                USUAL_RECORD + "</m:service-getelementstatusResponse>"))),
     {"SOAP-ENV:Client"}},
    {"NoNamespace",
     sends(http_answer(envelope(element("service-getelementstatusResponse", USUAL_RECORD)))),
     {"SOAP-ENV:Client"}},
    {"ForeignElementFirst",
     sends(http_answer(envelope("<more/>" + response_element("getelementstatus", USUAL_RECORD)))),
     {"SOAP-ENV:Client"}},
    {"ForeignEnvelope",
     sends(http_answer("<e:Envelope xmlns:e=\"urn:other\"><e:Body/></e:Envelope>")),
     {"fault"}},
    {"HeaderMustBeUnderstood",
     sends(http_answer(envelope(response_element("getelementstatus", USUAL_RECORD),
                                "<SOAP-ENV:Header><t:id xmlns:t=\"urn:t\" "
                                "SOAP-ENV:mustUnderstand=\"1\">1</t:id></SOAP-ENV:Header>"))),
     {"SOAP-ENV:MustUnderstand", "t:id"}},
    {"UnknownChildMustBeUnderstood",
     sends(http_answer(envelope(response_element(
         "getelementstatus", "<more SOAP-ENV:mustUnderstand=\"1\">1</more>" + USUAL_RECORD)))),
     {"SOAP-ENV:MustUnderstand", "more"}},
    {"UnknownChildOfTheEnvelope",
     sends(http_answer(envelope(
         response_element("getelementstatus", "<SOAP-ENV:more>1</SOAP-ENV:more>" + USUAL_RECORD)))),
     {"SOAP-ENV:Client", "SOAP-ENV:more"}},
    {"TruncatedInTheEnvelope", sends(http_answer(cut_before("<SOAP-ENV:Body"))), {"End of file"}},
    {"TruncatedInTheResponse", sends(http_answer(cut_before("<result>"))), {"End of file"}},
    {"TruncatedInATag", sends(http_answer(cut_before("><result>"))), {"fault"}},
    {"ShorterThanAnnounced",
     sends("HTTP/1.1 200 OK\r\nContent-Type: text/xml\r\nContent-Length: 9999\r\n\r\n" +
           cut_before("<result>")),
     {"End of file"}},
    {"ChunkCutOff",
     sends("HTTP/1.1 200 OK\r\nContent-Type: text/xml\r\nTransfer-Encoding: chunked\r\n\r\n"
           "ffff\r\n" +
           cut_before("<result>")),
     {"End of file"}},
    {"TruncatedBehindTheResponse",
     sends(http_answer(cut_before("</SOAP-ENV:Body>"))),
     {"End of file"}},
    {"ReferenceToNothing",
     sends(http_answer(envelope(
         response_element("getelementstatus", "<result>LMWS-000</result><status href=\"#nowhere\"/>"
                                              "<currentvalue>7</currentvalue>")))),
     {"nowhere"}},
    {"OptionsRequest", sends("OPTIONS * HTTP/1.1\r\nHost: a\r\n\r\n"), {"HTTP"}},
    {"HeadRequest", sends("HEAD / HTTP/1.1\r\n\r\n"), {"HTTP"}},
    {"GetRequest", sends("GET /cgi-bin/lumows HTTP/1.1\r\n\r\n"), {"HTTP"}},
    {"PostRequest",
     sends("POST / HTTP/1.1\r\nContent-Type: text/xml\r\n\r\n" + usual_envelope()),
     {"HTTP"}},
    {"StatusLineOfAnotherProtocol", sends("ICY 200 OK\r\n\r\n" + usual_envelope()), {"HTTP"}},
    {"StatusOfTwoDigits", sends("HTTP/1.1 12 Odd\r\n\r\n" + usual_envelope()), {"HTTP"}},
    {"StatusOfFourDigits", sends("HTTP/1.1 2000 OK\r\n\r\n" + usual_envelope()), {"HTTP"}},
    {"StatusBeginningWithZero", sends("HTTP/1.1 012 Odd\r\n\r\n" + usual_envelope()), {"HTTP"}},
    {"LineBeforeTheEnvelope", sends("Hello\r\n\r\n" + usual_envelope()), {"HTTP"}},
    // Read like a fault, but with the envelope of no release: its report names the runtime's error.
    {"FaultInAnEnvelopeOfNoRelease",
     sends("<E:Envelope xmlns:E=\"http://www.w3.org/2099/soap-envelope\">"
           "<n:service-getelementstatusResponse xmlns:n=\"urn:xmethods-lumows\"><E:Fault>"
           "<faultcode>x</faultcode><faultstring>url 'http://x' cannot be used</faultstring>"
           "</E:Fault></n:service-getelementstatusResponse></E:Envelope>"),
     {"Error 12 fault "}},
    {"NoHttp", sends("What do you want?\r\n\r\n"), {"fault"}},
    {"StatusLineOnly", sends("HTTP/1.1 200 OK\r\n"), {"fault"}},
    {"ClosedWithoutAnAnswer", {close_connection()}, {"End of file"}},
    {"HalfClosedWithoutAnAnswer", {half_close()}, {"End of file"}},
    {"Reset", {reset()}, {"fault"}},
};

void expect_report(const std::string &errors, const words &pieces) {
    std::size_t from = 0;
    for (const std::string &piece : pieces) {
        const std::size_t at = errors.find(piece, from);
        EXPECT_NE(at, std::string::npos) << "no \"" << piece << "\" in: " << errors;
        from = at == std::string::npos ? from : at + piece.size();
    }
    // One report and nothing else.
    EXPECT_EQ(errors.find("\"\nDetail: "), errors.rfind("\nDetail: ") - 1) << errors;
    EXPECT_EQ(errors.empty() ? '\0' : errors.back(), '\n') << errors;
}

class Failure : public testing::TestWithParam<failure_case> {};

TEST_P(Failure, OfARecordIsNoResult) {
    peer service(after_request(GetParam().further));
    const run_result run = call_service(service, RECORD_CALL);
    EXPECT_EQ(service.finish(), "");
    EXPECT_EQ(run.output, "LMCM-508\n");
    expect_report(run.errors, GetParam().report);
    EXPECT_EQ(run.status, NO_RESULT);
    // Nothing is sent behind the request.
    EXPECT_TRUE(service.received().ends_with("</SOAP-ENV:Envelope>\r\n"));
}

INSTANTIATE_TEST_SUITE_P(Table, Failure, testing::ValuesIn(FAILURE_CASES), NAME_OF_ROW);

// ---------------------------------------------------------------------------------------------
// Nobody there

TEST(Connection, RefusedLeavesATextGroupsLine) {
    const deserted_point nobody;
    words arguments = {"-t", "SOAP", "-u",
                       "http://127.0.0.1:" + std::to_string(nobody.port) + "/x"};
    arguments.insert(arguments.end(), TEXT_CALL.begin(), TEXT_CALL.end());
    const run_result run = lumocmd(arguments);
    EXPECT_EQ(run.output, text_line(run.pid, "(null)") + "LMCM-502\n");
    expect_report(run.errors, {"Connection refused"});
    EXPECT_EQ(run.status, BAD_PARAMETER);
}

TEST(Connection, ResetBeforeTheRequestIsReported) {
    peer service({reset()});
    const run_result run = call_service(service, TEXT_CALL);
    EXPECT_EQ(service.finish(), "");
    EXPECT_EQ(run.output, text_line(run.pid, "(null)") + "LMCM-502\n");
    expect_report(run.errors, {"fault"});
    EXPECT_EQ(run.status, BAD_PARAMETER);
}

TEST(Connection, UnknownHostIsReported) {
    SKIP_WHERE_MISSING(missing_private_machine());
    const std::string seen = on_private_machine([] {
        const run_result run =
            lumocmd({"-t", "SOAP", "-u", "http://no-such-host.invalid/", "-f", "SERVICE_TEST"});
        return std::to_string(run.status) + " " + run.output + run.errors;
    });
    EXPECT_EQ(seen.substr(0, seen.find("SOAP 1.1 fault")), "246 LMCM-502\n");
    expect_report(seen, {"fault", "getaddrinfo"});
}

} // namespace
