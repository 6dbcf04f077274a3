// Web-service requests as clients write them, and the answers expected to them.
#pragma once

#include "tests/simulator/simulator_process.h"

#include <string>

namespace harness {

/// Child elements from a list such as "user=demo|pass=demo".
std::string children(const std::string &list);

/// An envelope around the content of its body.
std::string wrap_request(const std::string &content);

/// The whole answer to service-OPERATION with these children.
std::string wrap_response(const std::string &operation, const std::string &children);

/// The whole answer body of a fault.
std::string wrap_fault(const std::string &code, const std::string &text);

/// Posts a message with chosen headers.
http_reply post_message(int port, const std::string &message,
                        const std::string &action = "\"urn:xmethods-lumows\"",
                        const std::string &type = "text/xml; charset=utf-8");

/// Calls service-OPERATION with these children and returns the answer body.
std::string call_service(int port, const std::string &operation, const std::string &children);

/// A call of service-OPERATION with a list of children, and such a list of its answer.
struct call_row {
    std::string operation;
    std::string request;
    std::string response;
};

void expect_response(int port, const call_row &call);

} // namespace harness
