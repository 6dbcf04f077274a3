// The web service as a whole: what it remembers, whom it lets in, which messages it refuses.
#include "tests/simulator/simulator_process.h"
#include "tests/simulator/soap_client.h"

#include <gtest/gtest.h>

namespace {

const std::string SESSION = "<sessionid>DEMO-SESSION</sessionid>";

class Service : public testing::Test {
  protected:
    void SetUp() override {
        ASSERT_TRUE(simulator.ready) << simulator.program.errors;
    }

    /// Calls an operation and compares the children of its response.
    void expect(const std::string &operation, const std::string &request,
                const std::string &response) {
        EXPECT_EQ(call_service(simulator.port, operation, request),
                  wrap_response(operation, response))
            << request;
    }

    Simulator simulator{{"--session", "MINE"}};
};

TEST_F(Service, RunOnElementIsSeenInItsStatus) {
    expect("service-getelementstatus", SESSION + "<idobject>new</idobject>",
           "<result>LMWS-404</result><status></status><currentvalue></currentvalue>");
    expect("service-runonelement",
           "<sessionid>NO-SESSIONID</sessionid><idobject>new</idobject>"
           "<operation>DIM</operation><payload>40</payload>",
           "<result>LMWS-000</result>");
    expect("service-getelementstatus", SESSION + "<idobject>new</idobject>",
           "<result>LMWS-000</result><status>DIM</status><currentvalue>40</currentvalue>");
    expect("service-retrievemessages", SESSION,
           "<result>LMWS-000</result><messagecount>1</messagecount><message>new DIM 40</message>");
}

TEST_F(Service, ElementHasChangedKeepsTheStatus) {
    expect("service-elementhaschanged",
           "<idobject>LIVING-LAMP</idobject><currentvalue>88</currentvalue>",
           "<result>LMWS-000</result><currentvalue>88</currentvalue>");
    expect("service-getelementstatus", SESSION + "<idobject>LIVING-LAMP</idobject>",
           "<result>LMWS-000</result><status>OFF</status><currentvalue>88</currentvalue>");
}

TEST_F(Service, StatusArrayWithoutObjectsListsAll) {
    expect("service-getelementstatusarray", SESSION + "<waittime>0</waittime>",
           "<result>LMWS-000</result>"
           "<currentstate>KITCHEN-THERMOSTAT=ON;LIVING-LAMP=OFF</currentstate>"
           "<currentvalues>KITCHEN-THERMOSTAT=21.5;LIVING-LAMP=0</currentvalues>");
    expect("service-getelementstatusarray", SESSION + "<idobjects>LIVING-LAMP;nobody</idobjects>",
           "<result>LMWS-404</result><currentstate></currentstate><currentvalues></currentvalues>");
}

TEST_F(Service, NeighboursComeAndGo) {
    const std::string uid = "<neighbouruid>u1</neighbouruid>";
    expect("service-search4neighbours", "",
           "<result>LMWS-000</result><neighbourlist></neighbourlist>");
    expect(
        "service-discover2neighbour", uid,
        "<result>LMWS-404</result><interfacesidlist></interfacesidlist><interfacesnamelist></interfacesnamelist>"
        "<interfacestypelist></interfacestypelist><interfacesvaluelist></interfacesvaluelist><interfacesaccessmodelist></interfacesaccessmodelist>");
    expect("service-attach2neighbour",
           "<remoteip>10.0.0.2</remoteip><remoteport>1025</remoteport>" + uid +
               "<neighbourname>garage</neighbourname>",
           "<result>LMWS-000</result>");
    expect("service-search4neighbours", "",
           "<result>LMWS-000</result><neighbourlist>u1,garage,10.0.0.2,1025,</neighbourlist>");
    expect("service-openobjectchannel", "<remoteip>10.0.0.9</remoteip>",
           "<result>LMWS-404</result>");
    expect("service-detach2neighbour", uid, "<result>LMWS-000</result>");
    expect("service-detach2neighbour", uid, "<result>LMWS-404</result>");
    expect("service-search4neighbours", "",
           "<result>LMWS-000</result><neighbourlist></neighbourlist>");
}

TEST_F(Service, SchedulesAreKeptPerObjectModeAndType) {
    const std::string place = SESSION + "<idobject>K</idobject><mode>m</mode>";
    expect("service-keltoclimateeventsettimeschedule",
           place + "<type>t</type><schedule>8-20</schedule>", "<result>LMWS-000</result>");
    expect("service-keltoclimateeventgettimeschedule", place + "<type>t</type>",
           "<result>LMWS-000</result><schedule>8-20</schedule>");
    expect("service-keltoclimateeventgettimeschedule", place + "<type>u</type>",
           "<result>LMWS-404</result><schedule></schedule>");
}

TEST_F(Service, LoginOpensTheUsersSession) {
    const std::string logged = "<username>admin</username><sessionid>ADMIN-SESSION</sessionid>";
    expect("service-checklogged", logged, "<result>LMWS-403</result>");
    expect("service-login", "<user>admin</user><pass>wrong</pass>", "<result>LMWS-405</result>");
    expect("service-login", "<user>nobody</user><pass>admin</pass>", "<result>LMWS-405</result>");
    expect("service-checklogged", logged, "<result>LMWS-403</result>");
    expect("service-login", "<user>admin</user><pass>admin</pass>", "<result>LMWS-000</result>");
    expect("service-checklogged", logged, "<result>LMWS-000</result>");
    expect("service-checklogged", "<username>demo</username><sessionid>ADMIN-SESSION</sessionid>",
           "<result>LMWS-403</result>");
    EXPECT_TRUE(wait_for_output(
        simulator.program,
        "SOAP: service-login admin|admin|(absent) -> LMWS-000 (session ADMIN-SESSION)\n"))
        << simulator.program.out;
}

TEST_F(Service, SessionRules) {
    expect("service-checklogged", "<username>demo</username><sessionid>MINE</sessionid>",
           "<result>LMWS-000</result>");
    expect("service-swapondemand", "<sessionid>NO-SESSIONID</sessionid>",
           "<result>LMWS-403</result>");
    expect("service-runonelement", "<sessionid>OTHER</sessionid><idobject>x</idobject>",
           "<result>LMWS-403</result>");
    expect("service-keltosaistopalarm", SESSION + "<pin>0000</pin>", "<result>LMWS-405</result>");
}

TEST_F(Service, UploadedFileIsServed) {
    const std::string file(1 << 20, 'x');
    expect("service-uploadlumolfile", SESSION + "<lumolfile>" + file + "</lumolfile>",
           "<result>LMWS-000</result>");
    const std::string served = ask_http(simulator.port, "GET /configuration").body;
    EXPECT_TRUE(served == file) << served.size();
    EXPECT_TRUE(wait_for_output(simulator.program, "x...(1048576 bytes)|(absent) -> LMWS-000"));
}

TEST_F(Service, ValuesKeepTheirCharacters) {
    expect(
        "service-elementhaschanged",
        "<idobject>x</idobject><currentvalue> &lt;&amp;\xC3\x83\xC2\xA9&#13;\n\t </currentvalue>",
        "<result>LMWS-000</result>"
        "<currentvalue> &lt;&amp;\xC3\x83\xC2\xA9&#13;\n\t </currentvalue>");
    expect("service-elementhaschanged", "<idobject>x</idobject><currentvalue> </currentvalue>",
           "<result>LMWS-000</result><currentvalue> </currentvalue>");
}

TEST_F(Service, OtherPathsAndMethodsAreNotFound) {
    EXPECT_EQ(ask_http(simulator.port, "GET /cgi-bin/lumows").status, 404);
    EXPECT_EQ(ask_http(simulator.port, "POST /lumows", "Content-Type: text/xml\r\n", "x").status,
              404);
}

TEST_F(Service, TakesRequestsInSingleBytes) {
    const std::string message = wrap_request("<ns:service-test></ns:service-test>");
    const int descriptor = connect_port(simulator.port);
    ASSERT_GE(descriptor, 0);
    ASSERT_TRUE(send_bytes(descriptor,
                           "POST /cgi-bin/lumows HTTP/1.1\r\nHost: h\r\n"
                           "Content-Type: text/xml; charset=utf-8\r\n"
                           "SOAPAction: \"urn:xmethods-lumows\"\r\nContent-Length: " +
                               std::to_string(message.size()) + "\r\n\r\n" + message,
                           true));
    const std::string body = wrap_response("service-test", "<result>LMWS-000</result>");
    EXPECT_EQ(read_all(descriptor), "HTTP/1.1 200 OK\r\nConnection: close\r\nContent-Length: " +
                                        std::to_string(body.size()) +
                                        "\r\nContent-Type: text/xml; charset=utf-8\r\n\r\n" + body);
}

TEST_F(Service, RefusesTooLongBodies) {
    const std::string message(5 << 20, 'x');
    EXPECT_EQ(post_message(simulator.port, message).status, 413);
}

struct FaultCase {
    const char *name;
    const char *from; ///< part of a proper message
    const char *to;   ///< what stands there instead
    const char *code;
    const char *text;
};

const FaultCase FAULTS[] = {
    {"UnknownOperation", "ns:service-test", "ns:service-tset", "Client",
     "unknown operation 'ns:service-tset'"},
    {"OperationWithoutPrefix", "ns:service-test", "service-test", "Client",
     "unknown operation 'service-test'"},
    {"OtherServiceNamespace", "\"urn:xmethods-lumows\"", "\"urn:other\"", "Client",
     "the envelope lacks xmlns:ns=\"urn:xmethods-lumows\""},
    {"Soap12Envelope", "http://schemas.xmlsoap.org/soap/envelope/",
     "http://www.w3.org/2003/05/soap-envelope", "VersionMismatch",
     "the envelope is not a SOAP 1.1 envelope"},
    {"NoEncodingNamespace", "xmlns:SOAP-ENC=", "xmlns:other=", "Client",
     "the envelope lacks xmlns:SOAP-ENC=\"http://schemas.xmlsoap.org/soap/encoding/\""},
    {"NoEncodingStyle", "SOAP-ENV:encodingStyle=", "SOAP-ENV:other=", "Client",
     "the body does not state the SOAP encoding style"},
    {"UnfinishedDocument", "</SOAP-ENV:Envelope>", "", "Client",
     "malformed XML: Start-end tags mismatch"},
    {"DocumentType", "?>", "?><!DOCTYPE a>", "Client",
     "the message is not exactly one element without a document type"},
    {"NoBody", "SOAP-ENV:Body", "SOAP-ENV:Head", "Client",
     "the envelope does not hold exactly one body"},
    {"NotUtf8", "<waittime>0", "<waittime>\xE9", "Client", "the message is not UTF-8 text"},
    {"HeaderThatMustBeUnderstood", "<SOAP-ENV:Body ",
     "<SOAP-ENV:Header><t SOAP-ENV:mustUnderstand=\"1\"/></SOAP-ENV:Header><SOAP-ENV:Body ",
     "MustUnderstand", "a header entry is not understood"},
};

std::string proper_message() {
    return wrap_request("<ns:service-test><waittime>0</waittime></ns:service-test>");
}

std::string replace_all(std::string text, const std::string &from, const std::string &to) {
    for (std::size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += to.size()) {
        text.replace(at, from.size(), to);
    }
    return text;
}

TEST_F(Service, AnswersFaults) {
    ASSERT_EQ(post_message(simulator.port, proper_message()).status, 200);
    for (const FaultCase &row : FAULTS) {
        const std::string message = replace_all(proper_message(), row.from, row.to);
        ASSERT_NE(message, proper_message()) << row.name;
        const HttpAnswer answer = post_message(simulator.port, message);
        EXPECT_EQ(answer.status, 500) << row.name;
        EXPECT_EQ(answer.body, wrap_fault(row.code, row.text)) << row.name;
    }
}

TEST_F(Service, AnswersFaultsToWrongHeaders) {
    const HttpAnswer action = post_message(simulator.port, proper_message(), "urn:xmethods-lumows");
    EXPECT_EQ(action.status, 500);
    EXPECT_EQ(action.body, wrap_fault("Client", "SOAPAction is not \"urn:xmethods-lumows\""));
    const HttpAnswer type = post_message(simulator.port, proper_message(),
                                         "\"urn:xmethods-lumows\"", "application/soap+xml");
    EXPECT_EQ(type.status, 500);
    EXPECT_EQ(type.body, wrap_fault("Client", "Content-Type is not text/xml; charset=utf-8"));
}

TEST_F(Service, RefusesChildrenThatAreNoPlainText) {
    const std::string refused = "<result>LMWS-402</result>";
    expect("service-test", "<waittime xsi:type=\"xsd:string\">0</waittime>", refused);
    expect("service-test", "<ns:waittime>0</ns:waittime>", refused);
    expect("service-test", "<waittime><a/></waittime>", refused);
    expect("service-test", "text<waittime>0</waittime>", refused);
    expect("service-test", "<waittime>0</waittime>", "<result>LMWS-000</result>");
}

} // namespace
