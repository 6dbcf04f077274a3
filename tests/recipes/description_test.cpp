// The description of the web service that is installed for other clients: what it states, and an
// independent client that knows nothing else and calls every operation of the simulated controller.

#include "tests/protocol/service_functions.h"
#include "tests/recipes/shell_room.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <pugixml.hpp>
#include <set>
#include <sstream>

namespace {

using namespace harness;

const char *const ENCODING = "http://schemas.xmlsoap.org/soap/encoding/";
const char *const NAMESPACE = "urn:xmethods-lumows";

std::set<std::string> known_names() {
    std::set<std::string> names;
    for (const protocol::service_row &row : protocol::SERVICE_FUNCTIONS) {
        names.insert(std::string("service-") + row.name);
    }
    return names;
}

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

    std::set<std::string> called;
    std::istringstream lines(client.output);
    std::string name, request, sent, answered, children;
    while (std::getline(lines, name, '\t') && std::getline(lines, request, '\t') &&
           std::getline(lines, sent, '\t') && std::getline(lines, answered, '\t') &&
           std::getline(lines, children)) {
        SCOPED_TRACE(name);
        called.insert(name);
        // The simulator takes no child that is unknown or out of order, and shows an absent one.
        EXPECT_NE(log.find("\nSOAP: " + request + " -> LMWS-000"), std::string::npos) << request;
        EXPECT_EQ(request.find("(absent)"), std::string::npos);
        const std::string response = "ns:" + name + "Response>";
        EXPECT_NE(log.find("<" + response + children + "</" + response), std::string::npos);
        for (const protocol::service_row &row : protocol::SERVICE_FUNCTIONS) {
            if (name == std::string("service-") + row.name) {
                words known = protocol::split(sent, ' ');
                std::erase_if(known, [&](const std::string &child) {
                    return std::count(row.request.begin(), row.request.end(), child) == 0;
                });
                EXPECT_EQ(known, row.request);
                EXPECT_EQ(protocol::split(answered, ' '), row.response);
            }
        }
    }
    EXPECT_EQ(called, known_names());
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
    EXPECT_NE(lines, shown);
    const run_result client = python({"-c", lines});
    EXPECT_EQ(client.errors, "");
    EXPECT_EQ(client.output, "LMWS-000 OFF 0\n");
    EXPECT_EQ(client.status, 0);
    EXPECT_EQ(simulator.end(),
              "SOAP: service-getelementstatus DEMO-SESSION|LIVING-LAMP|(absent)|0 -> LMWS-000\n");
}

void expect_body(const pugi::xml_node &direction) {
    const pugi::xml_node body = direction.child("SOAP:body");
    EXPECT_STREQ(body.attribute("use").value(), "encoded");
    EXPECT_STREQ(body.attribute("encodingStyle").value(), ENCODING);
    EXPECT_STREQ(body.attribute("namespace").value(), NAMESPACE);
    EXPECT_FALSE(body.attribute("parts"));
}

TEST(Description, StatesHowMessagesTravel) {
    pugi::xml_document document;
    ASSERT_TRUE(document.load_file(LUMOWS_DESCRIPTION));
    const pugi::xml_node root = document.child("definitions");
    EXPECT_STREQ(root.attribute("targetNamespace").value(), NAMESPACE);
    EXPECT_STREQ(root.attribute("xmlns:SOAP").value(), "http://schemas.xmlsoap.org/wsdl/soap/");
    const pugi::xml_node binding = root.child("binding");
    EXPECT_STREQ(binding.child("SOAP:binding").attribute("style").value(), "rpc");
    EXPECT_STREQ(binding.child("SOAP:binding").attribute("transport").value(),
                 "http://schemas.xmlsoap.org/soap/http");
    std::set<std::string> operations;
    for (const pugi::xml_node operation : binding.children("operation")) {
        const std::string name = operation.attribute("name").value();
        SCOPED_TRACE(name);
        EXPECT_TRUE(operations.insert(name).second) << "described twice";
        EXPECT_STREQ(operation.child("SOAP:operation").attribute("soapAction").value(), NAMESPACE);
        EXPECT_STREQ(operation.child("SOAP:operation").attribute("style").value(), "rpc");
        expect_body(operation.child("input"));
        expect_body(operation.child("output"));
    }
    EXPECT_EQ(operations, known_names());
    for (const pugi::xml_node message : root.children("message")) {
        for (const pugi::xml_node part : message.children("part")) {
            EXPECT_STREQ(part.attribute("type").value(), "xsd:string");
        }
    }
    const pugi::xml_node port = root.child("service").child("port");
    EXPECT_STREQ(port.child("SOAP:address").attribute("location").value(),
                 "http://localhost/cgi-bin/lumows");
}

} // namespace
