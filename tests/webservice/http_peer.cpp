#include "tests/webservice/http_peer.h"

#include <arpa/inet.h>
#include <cstdio>
#include <gtest/gtest.h>

namespace harness {

#define NAMESPACES(ENVELOPE, ENCODING)                                                             \
    "<SOAP-ENV:Envelope"                                                                           \
    " xmlns:SOAP-ENV=\"" ENVELOPE "\""                                                             \
    " xmlns:SOAP-ENC=\"" ENCODING "\""                                                             \
    " xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\""                                     \
    " xmlns:xsd=\"http://www.w3.org/2001/XMLSchema\""                                              \
    " xmlns:ns=\"urn:xmethods-lumows\">"

const char *const ENVELOPE_TAG = NAMESPACES("http://schemas.xmlsoap.org/soap/envelope/",
                                            "http://schemas.xmlsoap.org/soap/encoding/");
const char *const ENVELOPE_TAG_12 = NAMESPACES("http://www.w3.org/2003/05/soap-envelope",
                                               "http://www.w3.org/2003/05/soap-encoding");

/// The client ends its envelope with a line break and counts it in.
static const char *const REQUEST_END = "</SOAP-ENV:Envelope>\r\n";

std::string http_request::header(const std::string &name) const {
    const std::string start = "\r\n" + name + ": ";
    const std::size_t at = headers.find(start);
    if (at == std::string::npos || headers.find(start, at + 1) != std::string::npos) {
        return at == std::string::npos ? "(absent)" : "(repeated)";
    }
    const std::size_t value = at + start.size();
    return headers.substr(value, headers.find("\r\n", value) - value);
}

http_request split_request(const std::string &bytes) {
    const std::size_t line = bytes.find("\r\n");
    const std::size_t head = bytes.find("\r\n\r\n");
    if (head == std::string::npos) {
        return {};
    }
    return {bytes.substr(0, line), bytes.substr(line, head + 2 - line), bytes.substr(head + 4)};
}

std::string request_text(const std::string &operation, const std::string &children) {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n" + std::string(ENVELOPE_TAG) +
           "<SOAP-ENV:Body SOAP-ENV:encodingStyle=\"http://schemas.xmlsoap.org/soap/encoding/\">" +
           element("ns:service-" + operation, children) + "</SOAP-ENV:Body>" + REQUEST_END;
}

std::string envelope(const std::string &content, const std::string &header) {
    return ENVELOPE_TAG + header + element("SOAP-ENV:Body", content) + "</SOAP-ENV:Envelope>";
}

std::string fault_element(const std::string &code, const std::string &reason,
                          const std::string &more) {
    return element("SOAP-ENV:Fault",
                   element("faultcode", code) + element("faultstring", reason) + more);
}

std::string fault_report(const std::string &code, const std::string &reason,
                         const std::string &detail) {
    return "SOAP 1.1 fault " + code + " [no subcode]\n\"" + reason + "\"\nDetail: " + detail + "\n";
}

std::string http_answer(const std::string &body, const std::string &status,
                        const std::string &type) {
    return "HTTP/1.1 " + status + "\r\nContent-Type: " + type +
           "\r\nContent-Length: " + std::to_string(body.size()) + "\r\nConnection: close\r\n\r\n" +
           body;
}

std::string http_chunk(const std::string &bytes) {
    char length[32];
    snprintf(length, sizeof length, "%zx\r\n", bytes.size());
    return length + bytes + "\r\n";
}

std::string dime_record(unsigned flags, unsigned type_format, std::string type, std::string bytes,
                        std::size_t announced) {
    const std::uint32_t head[] = {htonl((1U << 3 | flags) << 24 | type_format << 20),
                                  htonl(static_cast<std::uint32_t>(type.size())),
                                  htonl(static_cast<std::uint32_t>(announced))};
    type.resize((type.size() + 3) / 4 * 4);
    bytes.resize((bytes.size() + 3) / 4 * 4);
    return std::string(reinterpret_cast<const char *>(head), sizeof head) + type + bytes;
}

script after_request(script further) {
    further.insert(further.begin(), collect_until(REQUEST_END));
    return further;
}

run_result call_at(const std::string &url, words further) {
    further.insert(further.begin(), {"-t", "SOAP", "-u", url});
    return lumocmd(further);
}

run_result call_answered(const std::string &answer, const words &further) {
    peer service(answering(answer));
    run_result run = call_service(service, further);
    EXPECT_EQ(service.finish(), "");
    return run;
}

void expect_run(const run_result &run, const std::string &output, int code,
                const std::string &errors) {
    EXPECT_EQ(run.output, output);
    EXPECT_EQ(run.errors, errors);
    EXPECT_EQ(run.status, code & 0xff);
}

} // namespace harness
