// Every operation of the web service: a proper request with its whole answer, the same request
// with every child left out, and with its children turned round.
#include "tests/simulator/program_names.h"
#include "tests/simulator/simulator_process.h"
#include "tests/simulator/soap_client.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <sstream>

namespace {

struct OperationCase {
    const char *operation;
    const char *request;  ///< children with their values, as name=value
    const char *response; ///< children of the answer with their values
    const char *bare;     ///< result when all children are left out
};

const OperationCase CASES[] = {
    {"service-versioninfo", "waittime=0", "result=LMWS-000 version=LUMOSIM_Version:_1.0.0_-_",
     "LMWS-000"},
    {"service-systeminfo", "waittime=0", "result=LMWS-000 systemcode=LUMOSIM", "LMWS-000"},
    {"service-test", "waittime=0", "result=LMWS-000", "LMWS-000"},
    {"service-getelementstatus",
     "sessionid=DEMO-SESSION idobject=KITCHEN-THERMOSTAT retrivefromdevice=1 waittime=0",
     "result=LMWS-000 status=ON currentvalue=21.5", "LMWS-403"},
    {"service-getelementstatusarray", "sessionid=DEMO-SESSION idobjects=LIVING-LAMP waittime=0",
     "result=LMWS-000 currentstate=LIVING-LAMP=OFF currentvalues=LIVING-LAMP=0", "LMWS-403"},
    {"service-runonelement",
     "sessionid=DEMO-SESSION idobject=L operation=ON payload=1 optionals=o hashcode=h "
     "callsource=COMMANDLINETOOL waittime=0",
     "result=LMWS-000", "LMWS-403"},
    {"service-installcrontab", "sessionid=DEMO-SESSION newcrontabfile=f waittime=0",
     "result=LMWS-000", "LMWS-403"},
    {"service-elementhaschanged", "idobject=L idcaller=c currentvalue=7 waittime=0",
     "result=LMWS-000 currentvalue=7", "LMWS-406"},
    {"service-swapondemand", "sessionid=DEMO-SESSION payload=p waittime=0", "result=LMWS-000",
     "LMWS-403"},
    {"service-uploadlumolfile", "sessionid=DEMO-SESSION lumolfile=f waittime=0", "result=LMWS-000",
     "LMWS-403"},
    {"service-objectcyclesavoidance", "idobject-source=a idobject-destination=b waittime=0",
     "result=LMWS-000", "LMWS-000"},
    {"service-retrieveconfiguration", "sessionid=DEMO-SESSION waittime=0",
     "result=LMWS-000 url=http://127.0.0.1:PORT/configuration", "LMWS-403"},
    {"service-login", "user=admin pass=admin waittime=0", "result=LMWS-000", "LMWS-406"},
    {"service-retrievemessages", "sessionid=DEMO-SESSION type=t count=5 from=f to=t waittime=0",
     "result=LMWS-000 messagecount=0 message=", "LMWS-403"},
    {"service-flushondemand", "payload=p waittime=0", "result=LMWS-000", "LMWS-000"},
    {"service-search4neighbours", "ipmcast=224.0.0.1 port=5000 waittime=0",
     "result=LMWS-000 neighbourlist=u1,garage,10.0.0.2,1025,none", "LMWS-000"},
    {"service-attach2neighbour",
     "remoteip=10.0.0.3 remoteport=1026 neighbouruid=u2 neighbourname=n neighbouroptionals=o "
     "waittime=0",
     "result=LMWS-000", "LMWS-406"},
    {"service-detach2neighbour", "remoteip=10.0.0.2 remoteport=1025 neighbouruid=u1 waittime=0",
     "result=LMWS-000", "LMWS-406"},
    {"service-discover2neighbour", "remoteip=10.0.0.2 remoteport=1025 neighbouruid=u1 waittime=0",
     "result=LMWS-000 interfacesidlist=1;2 interfacesnamelist=KITCHEN-THERMOSTAT;LIVING-LAMP "
     "interfacestypelist=ELEMENT;ELEMENT interfacesvaluelist=21.5;0 "
     "interfacesaccessmodelist=RW;RW",
     "LMWS-406"},
    {"service-openobjectchannel",
     "remoteip=10.0.0.2 remoteport=1025 idremoteinterface=1 nameremoteinterface=n "
     "typeremoteinterface=t idlocalinterface=2 waittime=0",
     "result=LMWS-000", "LMWS-406"},
    {"service-abbmacreadtagdata", "sessionid=DEMO-SESSION idobject=reader waittime=0",
     "result=LMWS-000 tagnumber=1 tagtype=GUEST tagtypeoptionals=0 tagplantcode=0001 isblank=0 "
     "hasvalidplantcode=1 expiredatetime=2030-12-31_12:00:00 ispresent=1",
     "LMWS-403"},
    {"service-databasesocketoperation",
     "clientaddress=1.2.3.4 sessionid=DEMO-SESSION function=f type=t statement-len=8 "
     "statement=SELECT_1 waittime=0",
     "result-len=8 result=LMWS-000 payload-len=8 payload=SELECT_1", "LMWS-403"},
    {"service-multidatabasesocketoperation",
     "clientaddress=1.2.3.4 sessionid=DEMO-SESSION function=f type=t statement-len=8 "
     "statement=SELECT_1 databaseport=5432 waittime=0",
     "result-len=8 result=LMWS-000 payload-len=8 payload=SELECT_1", "LMWS-403"},
    {"service-keltoclimateeventgettimeschedule",
     "sessionid=DEMO-SESSION idobject=K mode=m type=t weekday=1 season=s waittime=0",
     "result=LMWS-000 schedule=08:00-20:00", "LMWS-403"},
    {"service-keltoclimateeventsettimeschedule",
     "sessionid=DEMO-SESSION idobject=K mode=m type=t schedule=s waittime=0", "result=LMWS-000",
     "LMWS-403"},
    {"service-keltosaigetusergrants", "sessionid=DEMO-SESSION pin=1234 waittime=0",
     "result=LMWS-000 partializationgrants=PERIMETER;INSIDE", "LMWS-403"},
    {"service-keltosaistopalarm", "sessionid=DEMO-SESSION pin=1234 waittime=0", "result=LMWS-000",
     "LMWS-403"},
    {"service-keltorunproducttests", "", "result=LMWS-000", "LMWS-000"},
    {"service-rundailyschedule", "waittime=0", "result=LMWS-000", "LMWS-000"},
    {"service-reloadalldailyschedule", "waittime=0", "result=LMWS-000", "LMWS-000"},
    {"service-reloaddailyschedule", "objectID=o waittime=0", "result=LMWS-000", "LMWS-406"},
    {"service-logindatareload", "waittime=0", "results=LMWS-000", "LMWS-000"},
    {"service-checklogged", "username=demo sessionid=DEMO-SESSION waittime=0", "result=LMWS-000",
     "LMWS-403"},
};

std::ostream &operator<<(std::ostream &out, const OperationCase &row) {
    return out << row.operation;
}

struct Child {
    std::string name;
    std::string value;
};

/// Takes "name=value name=value" apart; in values _ stands for a blank, PORT for the port.
std::vector<Child> read_children(const std::string &text, int port) {
    std::vector<Child> children;
    std::istringstream words(text);
    for (std::string word; words >> word;) {
        const std::size_t equals = word.find('=');
        Child child{word.substr(0, equals), word.substr(equals + 1)};
        std::replace(child.value.begin(), child.value.end(), '_', ' ');
        if (const std::size_t at = child.value.find("PORT"); at != std::string::npos) {
            child.value.replace(at, 4, std::to_string(port));
        }
        children.push_back(child);
    }
    return children;
}

std::string write_children(const std::vector<Child> &children) {
    std::string text;
    for (const auto &[name, value] : children) {
        text.append("<").append(name).append(">").append(value).append("</").append(name).append(
            ">");
    }
    return text;
}

/// The answer when the operation did nothing: its children in order, the result as given, and
/// nothing in the others but the length of the result.
std::string write_refusal(const std::string &response, const std::string &result) {
    std::vector<Child> children = read_children(response, 0);
    for (Child &child : children) {
        const bool holds_result = child.name == "result" || child.name == "results";
        child.value = holds_result ? result : child.name == "result-len" ? "8" : "";
    }
    return write_children(children);
}

class Operation : public testing::TestWithParam<OperationCase> {
  protected:
    void SetUp() override {
        ASSERT_TRUE(simulator.ready) << simulator.program.errors;
    }

    std::string call(const std::string &children) {
        return call_service(simulator.port, GetParam().operation, children);
    }

    Simulator simulator;
};

TEST_P(Operation, AnswersAProperRequest) {
    const OperationCase &row = GetParam();
    call_service(simulator.port, "service-attach2neighbour",
                 "<remoteip>10.0.0.2</remoteip><remoteport>1025</remoteport>"
                 "<neighbouruid>u1</neighbouruid><neighbourname>garage</neighbourname>"
                 "<neighbouroptionals>none</neighbouroptionals>");
    call_service(simulator.port, "service-keltoclimateeventsettimeschedule",
                 "<sessionid>DEMO-SESSION</sessionid><idobject>K</idobject><mode>m</mode>"
                 "<type>t</type><schedule>08:00-20:00</schedule>");
    EXPECT_EQ(
        call(write_children(read_children(row.request, simulator.port))),
        wrap_response(row.operation, write_children(read_children(row.response, simulator.port))));
}

TEST_P(Operation, AnswersARequestWithoutChildren) {
    const OperationCase &row = GetParam();
    const std::string answer = call("");
    if (std::string(row.bare) == "LMWS-000") {
        EXPECT_NE(answer.find(">LMWS-000</result"), std::string::npos) << answer;
    } else {
        EXPECT_EQ(answer, wrap_response(row.operation, write_refusal(row.response, row.bare)));
    }
}

TEST_P(Operation, RefusesChildrenOutOfOrder) {
    const OperationCase &row = GetParam();
    std::vector<Child> children = read_children(row.request, simulator.port);
    if (children.size() < 2) {
        children.push_back({"stranger", "x"}); // nothing to turn round: one that is not its own
    }
    std::reverse(children.begin(), children.end());
    EXPECT_EQ(call(write_children(children)),
              wrap_response(row.operation, write_refusal(row.response, "LMWS-402")));
}

TEST_P(Operation, RefusesARepeatedChild) {
    const OperationCase &row = GetParam();
    std::vector<Child> children = read_children(row.request, simulator.port);
    children.push_back(children.empty() ? Child{"waittime", "0"} : children.back());
    EXPECT_EQ(call(write_children(children)),
              wrap_response(row.operation, write_refusal(row.response, "LMWS-402")));
}

TEST(Operations, AllHaveARow) {
    std::set<std::string> rows;
    for (const OperationCase &row : CASES) {
        EXPECT_TRUE(rows.insert(row.operation).second) << row.operation << " has two rows";
    }
    EXPECT_EQ(differing_names(program_operations(), rows), "")
        << "the tests' rows stand in tests/simulator/operations_test.cpp, the program's in "
           "simulator/operations.cpp";
}

INSTANTIATE_TEST_SUITE_P(Rows, Operation, testing::ValuesIn(CASES), [](const auto &row) {
    return std::string(row.param.operation).substr(std::string("service-").size());
});

} // namespace
