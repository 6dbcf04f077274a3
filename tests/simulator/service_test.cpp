// The web service: what its operations answer and remember, whom it lets in, and which messages it
// refuses.
#include "tests/protocol/service_functions.h"
#include "tests/simulator/simulator_process.h"
#include "tests/webservice/http_peer.h"

#include <gtest/gtest.h>
#include <map>

namespace {

using namespace harness;
using protocol::service_row;

using values = std::map<std::string, std::string>;

/// The values of a list such as "user=demo|pass=demo".
values read_values(const std::string &list) {
    values read;
    for (const std::string &entry : protocol::entries_of(list)) {
        read[entry.substr(0, entry.find('='))] = entry.substr(entry.find('=') + 1);
    }
    return read;
}

/// What the children of every operation are sent, the others "x", and what those of its answer hold
/// then.
const values SENT =
    read_values("sessionid=DEMO-SESSION|idobject=LIVING-LAMP|idobjects=LIVING-LAMP|username=demo|"
                "user=admin|pass=admin|remoteip=10.0.0.2|remoteport=1025|neighbouruid=u1|count=5|"
                "pin=1234|currentvalue=0|statement=SELECT 1");
const values ANSWERED = read_values(
    "result=LMWS-000|results=LMWS-000|result-len=8|version=LUMOSIM Version: 1.0.0 - |"
    "systemcode=LUMOSIM|status=OFF|currentvalue=0|currentstate=LIVING-LAMP=OFF|"
    "currentvalues=LIVING-LAMP=0|messagecount=2|message=LIVING-LAMP ON 1;LIVING-LAMP OFF 0|"
    "neighbourlist=u1,garage,10.0.0.2,1025,none|interfacesidlist=1;2|"
    "interfacesnamelist=HEATING;LIVING-LAMP|interfacestypelist=ELEMENT;ELEMENT|"
    "interfacesvaluelist=21.5;0|interfacesaccessmodelist=RW;RW|tagnumber=1|"
    "tagtype=GUEST|tagtypeoptionals=0|tagplantcode=0001|isblank=0|hasvalidplantcode=1|"
    "expiredatetime=2030-12-31 12:00:00|ispresent=1|payload-len=8|payload=SELECT 1|"
    "schedule=8-20|partializationgrants=PERIMETER;INSIDE");
const std::string HOUSE = R"({"elements": {"HEATING": {"status": "ON", "value": "21.5"},
                 "LIVING-LAMP": {"status": "OFF", "value": "0"}},
    "messages": ["LIVING-LAMP ON 1", "LIVING-LAMP OFF 0"],
    "schedules": [{"object": "LIVING-LAMP", "mode": "x", "type": "x", "schedule": "8-20"}],
    "neighbours": {"u1": {"name": "garage", "address": "10.0.0.2", "port": "1025",
                          "optionals": "none"}}})";

/// Operations with one of these cannot do without it.
const words NEEDED = {"idobject", "user",           "username",  "neighbouruid", "remoteip",
                      "objectID", "newcrontabfile", "lumolfile", "pin"};

std::string elements(const words &names, const values &known, const char *otherwise) {
    std::string text;
    for (const std::string &name : names) {
        text += element(name, known.contains(name) ? known.at(name) : otherwise);
    }
    return text;
}

bool has_any(const words &names, const words &wanted) {
    return std::find_first_of(names.begin(), names.end(), wanted.begin(), wanted.end()) !=
           names.end();
}

TEST(Operations, AnswerProperRequests) {
    const temporary_directory directory;
    write_file(directory.path + "/house", HOUSE);
    for (const service_row &row : protocol::SERVICE_FUNCTIONS) {
        running_simulator simulator({"--state", directory.path + "/house"});
        values answered = ANSWERED;
        answered["url"] = simulator.origin + "/configuration";
        EXPECT_EQ(simulator.call(row.name, elements(contract_children(row), SENT, "x")),
                  wrap_response(row.name, elements(row.response, answered, "")));
    }
}

/// Refusals have all the children of an answer, empty but the result and its length.
TEST(Operations, NeedASessionAndAField) {
    running_simulator simulator;
    for (const service_row &row : protocol::SERVICE_FUNCTIONS) {
        const bool session = has_any(row.request, {"sessionid"});
        const char *refused = has_any(row.request, NEEDED) ? "LMWS-406" : "LMWS-000";
        for (const auto &[request, status] :
             {std::pair("", session ? "LMWS-403" : refused),
              std::pair("<sessionid>DEMO-SESSION</sessionid>", session ? refused : "LMWS-402")}) {
            const std::string answer = simulator.call(row.name, request);
            if (status == std::string("LMWS-000")) {
                EXPECT_NE(answer.find(">LMWS-000</result"), std::string::npos) << answer;
            } else {
                const values answered = {
                    {"result", status}, {"results", status}, {"result-len", "8"}};
                EXPECT_EQ(answer, wrap_response(row.name, elements(row.response, answered, "")));
            }
        }
    }
}

const std::string SESSION = "sessionid=DEMO-SESSION|";
const std::string NEIGHBOUR = "remoteip=10.0.0.2|remoteport=1025|neighbouruid=u1|neighbourname=g";
const std::string DONE = "result=LMWS-000";
const std::string PLACE = SESSION + "idobject=K|mode=m|type=t";

/// One after the other, in a house with a heating.
const call_row CALLS[] = {
    // An element that was run is seen, and its value changes without its status.
    {"getelementstatus", SESSION + "idobject=new", "result=LMWS-404|status=|currentvalue="},
    {"runonelement", "sessionid=NO-SESSIONID|idobject=new|operation=DIM|payload=40", DONE},
    {"getelementstatus", SESSION + "idobject=new", DONE + "|status=DIM|currentvalue=40"},
    {"retrievemessages", SESSION, DONE + "|messagecount=1|message=new DIM 40"},
    {"elementhaschanged", "idobject=new|currentvalue=8", DONE + "|currentvalue=8"},
    {"getelementstatusarray", SESSION,
     DONE + "|currentstate=HEATING=ON;new=DIM|currentvalues=HEATING=21.5;new=8"},
    {"getelementstatusarray", SESSION + "idobjects=new;nobody",
     "result=LMWS-404|currentstate=|currentvalues="},
    // Values keep their characters.
    {"elementhaschanged", "idobject=x|currentvalue= &lt;&amp;\xC3\x83\xC2\xA9&#13;\n\t ",
     DONE + "|currentvalue= &lt;&amp;\xC3\x83\xC2\xA9&#13;\n\t "},
    // Neighbours come and go.
    {"search4neighbours", "", DONE + "|neighbourlist="},
    {"discover2neighbour", "neighbouruid=u1",
     "result=LMWS-404|interfacesidlist=|interfacesnamelist=|interfacestypelist=|"
     "interfacesvaluelist=|interfacesaccessmodelist="},
    {"attach2neighbour", NEIGHBOUR, DONE},
    {"search4neighbours", "", DONE + "|neighbourlist=u1,g,10.0.0.2,1025,"},
    {"openobjectchannel", "remoteip=10.0.0.9|remoteport=1025", "result=LMWS-404"},
    {"detach2neighbour", "neighbouruid=u1", DONE},
    {"detach2neighbour", "neighbouruid=u1", "result=LMWS-404"},
    // Schedules are kept per object, mode and type.
    {"keltoclimateeventsettimeschedule", PLACE + "|schedule=8-20", DONE},
    {"keltoclimateeventgettimeschedule", PLACE, DONE + "|schedule=8-20"},
    {"keltoclimateeventgettimeschedule", PLACE + "u", "result=LMWS-404|schedule="},
    // A login opens the user's session.
    {"checklogged", "username=admin|sessionid=ADMIN-SESSION", "result=LMWS-403"},
    {"login", "user=admin|pass=wrong", "result=LMWS-405"},
    {"checklogged", "username=admin|sessionid=ADMIN-SESSION", "result=LMWS-403"},
    {"login", "user=admin|pass=admin", DONE},
    {"checklogged", "username=admin|sessionid=ADMIN-SESSION", DONE},
    {"checklogged", "username=demo|sessionid=ADMIN-SESSION", "result=LMWS-403"},
    {"checklogged", "username=demo|sessionid=MINE", DONE},
    {"swapondemand", "sessionid=NO-SESSIONID", "result=LMWS-403"},
    {"runonelement", "sessionid=OTHER|idobject=x", "result=LMWS-403"},
    {"keltosaistopalarm", SESSION + "pin=0000", "result=LMWS-405"},
    // Children in another order, repeated, unknown, or no plain text.
    {"runonelement", "idobject=x|sessionid=DEMO-SESSION", "result=LMWS-402"},
    {"test", "waittime=0|waittime=0", "result=LMWS-402"},
    {"test", "stranger=0", "result=LMWS-402"},
    {"test", "ns:waittime=0", "result=LMWS-402"},
    {"test", "waittime=<a/>", "result=LMWS-402"},
};

TEST(Service, RemembersAndChecks) {
    const temporary_directory directory;
    const std::string house = directory.path + "/house";
    write_file(house, R"({"elements": {"HEATING": {"status": "ON", "value": "21.5"}}})");
    running_simulator simulator({"--session", "MINE", "--state", house});
    for (const call_row &row : CALLS) {
        simulator.expect_response(row);
    }
    for (const char *children :
         {"<waittime xsi:type=\"xsd:string\">0</waittime>", "text<waittime>0</waittime>"}) {
        EXPECT_EQ(simulator.call("test", children),
                  wrap_response("test", "<result>LMWS-402</result>"));
    }
    const std::string log = simulator.end();
    EXPECT_NE(log.find("SOAP: service-login admin|admin|(absent) -> LMWS-000 "
                       "(session ADMIN-SESSION)\n"),
              std::string::npos)
        << log;
}

TEST(Service, ServesTheUploadedFile) {
    running_simulator simulator;
    const std::string file(1 << 20, 'x');
    simulator.expect_response({"uploadlumolfile", SESSION + "lumolfile=" + file, DONE});
    EXPECT_TRUE(simulator.http("GET /configuration").body == file);
    EXPECT_EQ(simulator.end(), "SOAP: service-uploadlumolfile DEMO-SESSION|" +
                                   std::string(200, 'x') +
                                   "...(1048576 bytes)|(absent) -> LMWS-000\n"
                                   "SOAP: GET /configuration -> HTTP 200\n");
}

struct fault_row {
    const char *from; ///< part of a proper message
    const char *to;   ///< what stands there instead
    const char *text;
    const char *code = "Client";
};

const fault_row FAULTS[] = {
    {"ns:service-test", "ns:service-tset", "unknown operation 'ns:service-tset'"},
    {"ns:service-test", "service-test", "unknown operation 'service-test'"},
    {"<waittime>0</waittime></ns:service-test>", "</ns:service-test><a/>",
     "the body does not hold exactly one operation"},
    {"\"urn:xmethods-lumows\"", "\"urn:other\"",
     "the envelope lacks xmlns:ns=\"urn:xmethods-lumows\""},
    {"SOAP-ENV:Envelope", "SOAP-ENV:Letter", "the document is no envelope"},
    {"http://schemas.xmlsoap.org/soap/envelope/", "http://www.w3.org/2003/05/soap-envelope",
     "the envelope is not a SOAP 1.1 envelope", "VersionMismatch"},
    {"xmlns:SOAP-ENC=", "xmlns:other=",
     "the envelope lacks xmlns:SOAP-ENC=\"http://schemas.xmlsoap.org/soap/encoding/\""},
    {"SOAP-ENV:encodingStyle=", "SOAP-ENV:other=",
     "the body does not state the SOAP encoding style"},
    {"</SOAP-ENV:Envelope>", "", "malformed XML: Start-end tags mismatch"},
    {"?>", "?><!DOCTYPE a>", "the message is not exactly one element without a document type"},
    {"<SOAP-ENV:Body ", "text<SOAP-ENV:Body ", "the envelope does not hold exactly one body"},
    {"<waittime>0", "<waittime>\xE9", "the message is not UTF-8 text"},
    {"<SOAP-ENV:Body ",
     "<SOAP-ENV:Header><t SOAP-ENV:mustUnderstand=\"1\"/></SOAP-ENV:Header><SOAP-ENV:Body ",
     "a header entry is not understood", "MustUnderstand"},
};

TEST(Service, AnswersFaults) {
    running_simulator simulator;
    const std::string proper =
        wrap_request("<ns:service-test><waittime>0</waittime></ns:service-test>");
    const auto expect_fault = [](const http_reply &reply, const std::string &text,
                                 const char *code = "Client") {
        EXPECT_EQ(reply.status, 500);
        EXPECT_EQ(reply.body, wrap_fault(code, text));
    };
    EXPECT_EQ(simulator.post(proper).status, 200);
    for (const fault_row &row : FAULTS) {
        expect_fault(simulator.post(protocol::replaced(proper, row.from, row.to)), row.text,
                     row.code);
    }
    expect_fault(simulator.post(proper, "urn:xmethods-lumows"),
                 "SOAPAction is not \"urn:xmethods-lumows\"");
    expect_fault(simulator.post(proper, "\"urn:xmethods-lumows\"", "application/soap+xml"),
                 "Content-Type is not text/xml; charset=utf-8");
}

TEST(Service, IsAnHttpServer) {
    running_simulator simulator;
    EXPECT_EQ(simulator.http("GET /cgi-bin/lumows").status, 404);
    EXPECT_EQ(simulator.http("POST /lumows", "", "x").status, 404);
    EXPECT_EQ(simulator.post(std::string(5 << 20, 'x')).status, 413);
    const std::string message = wrap_request("<ns:service-test></ns:service-test>");
    const std::string answer = wrap_response("test", "<result>LMWS-000</result>");
    const int drip = connect_port(simulator.port);
    ASSERT_TRUE(send_bytes(drip,
                           "POST /cgi-bin/lumows HTTP/1.1\r\nHost: localhost\r\n"
                           "Content-Type: text/xml; charset=utf-8\r\n"
                           "SOAPAction: \"urn:xmethods-lumows\"\r\nContent-Length: " +
                               std::to_string(message.size()) + "\r\n\r\n" + message,
                           true));
    EXPECT_EQ(read_all(drip), "HTTP/1.1 200 OK\r\nConnection: close\r\nContent-Length: " +
                                  std::to_string(answer.size()) +
                                  "\r\nContent-Type: text/xml; charset=utf-8\r\n\r\n" + answer);
}

} // namespace
