// The description of the web service that is installed for other clients: what it states, and an
// independent client that knows nothing else and calls every operation of the simulated controller.

#include "tests/protocol/service_functions.h"
#include "tests/recipes/shell_room.h"

#include <algorithm>
#include <map>
#include <pugixml.hpp>
#include <sstream>

namespace {

using namespace harness;

/// The system's own python, which finds the libraries of packages; it writes nothing beside its
/// sources and asks no proxy.
run_result python(words arguments) {
    const words program = {"/usr/bin/env", "PYTHONPATH=" PROJECT_DIRECTORY "/docs/examples",
                           "no_proxy=127.0.0.1", "/usr/bin/python3", "-B"};
    arguments.insert(arguments.begin(), program.begin(), program.end());
    return run(arguments);
}

TEST(Description, LetsAnIndependentClientCallEveryOperation) {
    const temporary_directory directory;
    const std::string record = directory.path + "/record";
    running_simulator simulator({"--record", record});
    const run_result client = python({PROJECT_DIRECTORY "/tests/recipes/description_client.py",
                                      LUMOWS_DESCRIPTION, simulator.url});
    ASSERT_EQ(client.errors, "");
    ASSERT_EQ(client.status, 0);
    simulator.end();
    const std::string log = "\n" + read_file(record);

    std::map<std::string, words> calls;
    std::istringstream lines(client.output);
    for (std::string line; std::getline(lines, line);) {
        calls[line.substr(0, line.find('\t'))] = protocol::split(line, '\t');
    }
    EXPECT_EQ(calls.size(), std::size(protocol::SERVICE_FUNCTIONS));
    for (const protocol::service_row &row : protocol::SERVICE_FUNCTIONS) {
        const std::string name = std::string("service-") + row.name;
        SCOPED_TRACE(name);
        const words call = calls[name];
        ASSERT_EQ(call.size(), 5U);
        // The simulator takes no child that is unknown or out of order, and shows an absent one.
        EXPECT_NE(log.find("\nSOAP: " + call[1] + " -> LMWS-000"), std::string::npos) << call[1];
        EXPECT_EQ(call[1].find("(absent)"), std::string::npos);
        words known = protocol::split(call[2], ' ');
        std::erase_if(known, [&](const std::string &child) {
            return std::count(row.request.begin(), row.request.end(), child) == 0;
        });
        EXPECT_EQ(known, row.request);
        EXPECT_EQ(protocol::split(call[3], ' '), row.response);
        const std::string response = "ns:" + name + "Response>";
        EXPECT_NE(log.find("<" + response + call[4] + "</" + response), std::string::npos);
    }
}

/// The program of the page, with the addresses of this run.
TEST(Description, ServesThePagesLinesOfPython) {
    running_simulator simulator;
    std::size_t at = 0;
    const std::string shown =
        text_between(read_file(PROJECT_DIRECTORY "/docs/protocols.md"), at, "```python\n", "```");
    const std::string lines =
        replaced(replaced(shown, "build/release/description/lumows.wsdl", LUMOWS_DESCRIPTION),
                 "http://127.0.0.1:8080/cgi-bin/lumows", simulator.url);
    const run_result client = python({"-c", lines});
    EXPECT_EQ(client.errors, "");
    EXPECT_EQ(client.output, "LMWS-000 OFF 0\n");
    EXPECT_EQ(simulator.end(),
              "SOAP: service-getelementstatus DEMO-SESSION|LIVING-LAMP|(absent)|0 -> LMWS-000\n");
}

TEST(Description, StatesHowMessagesTravel) {
    pugi::xml_document document;
    ASSERT_TRUE(document.load_file(LUMOWS_DESCRIPTION));
    const auto count = [&](const std::string &path) {
        return document.select_nodes(path.c_str()).size();
    };
    const pugi::xml_node root = document.child("definitions");
    EXPECT_STREQ(root.attribute("targetNamespace").value(), "urn:xmethods-lumows");
    EXPECT_STREQ(root.attribute("xmlns:SOAP").value(), "http://schemas.xmlsoap.org/wsdl/soap/");
    const std::string binding =
        "SOAP:binding[@style='rpc' and @transport='http://schemas.xmlsoap.org/soap/http']";
    const std::string body =
        "/SOAP:body[@use='encoded' and @namespace='urn:xmethods-lumows' and not(@parts) and "
        "@encodingStyle='http://schemas.xmlsoap.org/soap/encoding/']";
    const std::string action = "SOAP:operation[@soapAction='urn:xmethods-lumows' and @style='rpc']";
    EXPECT_EQ(count("//binding[" + binding + "]/operation[" + action + "][input" + body +
                    "][output" + body + "]"),
              std::size(protocol::SERVICE_FUNCTIONS));
    EXPECT_EQ(count("//message/part[not(@type='xsd:string')]"), 0U);
    EXPECT_EQ(count("//port/SOAP:address[@location='http://localhost/cgi-bin/lumows']"), 1U);
}

} // namespace
