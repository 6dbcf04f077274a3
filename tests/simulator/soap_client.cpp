#include "tests/simulator/soap_client.h"

#include "tests/protocol/texts.h"
#include "tests/webservice/http_peer.h"

#include <gtest/gtest.h>

namespace harness {

namespace {

const std::string DECLARATION = R"(<?xml version="1.0" encoding="UTF-8"?>)";

std::string encoded_envelope(const std::string &content) {
    return std::string(ENVELOPE_TAG) +
           R"(<SOAP-ENV:Body SOAP-ENV:encodingStyle="http://schemas.xmlsoap.org/soap/encoding/">)" +
           content + "</SOAP-ENV:Body></SOAP-ENV:Envelope>";
}

} // namespace

std::string children(const std::string &list) {
    std::string text;
    for (const std::string &entry : protocol::entries_of(list)) {
        const std::size_t equals = entry.find('=');
        text += entry.empty() ? "" : element(entry.substr(0, equals), entry.substr(equals + 1));
    }
    return text;
}

std::string wrap_request(const std::string &content) {
    return DECLARATION + "\n" + encoded_envelope(content);
}

std::string wrap_response(const std::string &operation, const std::string &children) {
    return DECLARATION + encoded_envelope(response_element(operation, children));
}

std::string wrap_fault(const std::string &code, const std::string &text) {
    return DECLARATION + envelope(fault_element("SOAP-ENV:" + code, text));
}

http_reply post_message(int port, const std::string &message, const std::string &action,
                        const std::string &type) {
    return ask_http(port, "POST /cgi-bin/lumows",
                    "SOAPAction: " + action + "\r\nContent-Type: " + type + "\r\n", message);
}

std::string call_service(int port, const std::string &operation, const std::string &children) {
    return post_message(port, wrap_request(element("ns:service-" + operation, children))).body;
}

void expect_response(int port, const call_row &call) {
    EXPECT_EQ(call_service(port, call.operation, children(call.request)),
              wrap_response(call.operation, children(call.response)))
        << call.request;
}

} // namespace harness
