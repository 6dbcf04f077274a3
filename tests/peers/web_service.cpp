#include "tests/peers/web_service.h"

#include "tests/harness/console.h"
#include "tests/webservice/http_peer.h"

#include <gtest/gtest.h>

namespace harness {

const char *const SOAP_REQUEST_END = "</SOAP-ENV:Envelope>\r\n";

const char *const GOOD_CHILDREN =
    "<result>LMWS-000</result><status>on</status><currentvalue>7</currentvalue>";

words soap_call(int port, bool quiet) {
    return {"-t", "SOAP",
            "-u", "http://127.0.0.1:" + std::to_string(port) + "/cgi-bin/lumows",
            "-f", "SERVICE_GETELEMENTSTATUS",
            "-p", "s|i",
            "-v", quiet ? "OFF" : "ON"};
}

std::string soap_answer(const std::string &children) {
    return envelope(response_element("getelementstatus", children));
}

std::string http_head(const std::string &headers, const std::string &status,
                      const std::string &type) {
    return "HTTP/1.1 " + status + "\r\nContent-Type: " + type + "\r\n" + headers + "\r\n";
}

std::string shown(pid_t pid, const std::string &status, const std::string &value) {
    return green(pid, "[lumocmd] Status: " + status) +
           green(pid, "[lumocmd] Current Value: " + value) + "LMCM-0000\n";
}

std::size_t flooded(std::size_t size) {
    return is_shipped_program() ? size : size / 64;
}

void expect_no_result(const measured_run &measured) {
    EXPECT_EQ(measured.run.output, "LMCM-508\n");
    EXPECT_EQ(measured.run.status, 508 & 0xff);
}

} // namespace harness
