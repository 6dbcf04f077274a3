#include "tests/webservice/http_peer.h"

#include "tests/harness/console.h"

#include <sstream>

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

namespace {

/// The client ends its envelope with a line break and counts it in.
const char *const REQUEST_END = "</SOAP-ENV:Envelope>\r\n";

} // namespace

std::string http_request::header(const std::string &name) const {
    std::string found = "(absent)";
    for (const auto &[key, value] : headers) {
        if (key == name) {
            found = found == "(absent)" ? value : "(repeated)";
        }
    }
    return found;
}

http_request split_request(const std::string &bytes) {
    http_request request;
    const std::size_t end = bytes.find("\r\n\r\n");
    if (end == std::string::npos) {
        return request;
    }
    request.body = bytes.substr(end + 4);
    std::istringstream head(bytes.substr(0, end + 2));
    std::string line;
    std::getline(head, line);
    line.pop_back();
    std::istringstream(line) >> request.method >> request.path >> request.version;
    while (std::getline(head, line)) {
        line.pop_back();
        const std::size_t colon = line.find(": ");
        request.headers.emplace_back(line.substr(0, colon),
                                     colon == std::string::npos ? "" : line.substr(colon + 2));
    }
    return request;
}

std::string request_text(const std::string &operation, const std::string &children) {
    return std::string(ENVELOPE_TAG) +
           "<SOAP-ENV:Body SOAP-ENV:encodingStyle=\"http://schemas.xmlsoap.org/soap/encoding/\">" +
           element("ns:service-" + operation, children) + "</SOAP-ENV:Body>" + REQUEST_END;
}

std::string envelope(const std::string &content, const std::string &header) {
    return ENVELOPE_TAG + header + element("SOAP-ENV:Body", content) + "</SOAP-ENV:Envelope>";
}

std::string element(const std::string &name, const std::string &text) {
    return "<" + name + ">" + text + "</" + name + ">";
}

std::string response_element(const std::string &operation, const std::string &children) {
    return element("ns:service-" + operation + "Response", children);
}

std::string fault_element(const std::string &code, const std::string &reason,
                          const std::string &more) {
    return element("SOAP-ENV:Fault",
                   element("faultcode", code) + element("faultstring", reason) + more);
}

std::string http_answer(const std::string &body, const std::string &status,
                        const std::string &type) {
    return "HTTP/1.1 " + status + "\r\nContent-Type: " + type +
           "\r\nContent-Length: " + std::to_string(body.size()) + "\r\nConnection: close\r\n\r\n" +
           body;
}

std::string dime_record(unsigned flags, unsigned type_format, std::string type, std::string bytes,
                        std::size_t announced) {
    std::string record;
    const auto put = [&record](std::size_t number, int size) {
        while (size-- > 0) {
            record += static_cast<char>(number >> (8 * size) & 0xff);
        }
    };
    put(1U << 3 | flags, 1);
    put(type_format << 4, 1);
    put(0, 2); // options
    put(0, 2); // identifier
    put(type.size(), 2);
    put(announced, 4);
    type.resize((type.size() + 3) / 4 * 4);
    bytes.resize((bytes.size() + 3) / 4 * 4);
    return record + type + bytes;
}

script after_request(script further) {
    script steps = {collect_until(REQUEST_END)};
    steps.insert(steps.end(), further.begin(), further.end());
    return steps;
}

script answering(std::string answer) {
    return after_request({reply(std::move(answer)), close_connection()});
}

std::string url_of(const peer &service) {
    return "http://127.0.0.1:" + std::to_string(service.port()) + "/cgi-bin/lumows";
}

std::string sent_envelope(const std::string &request) {
    const std::string body = split_request(request).body;
    return body.substr(body.find('\n') + 1);
}

std::string sent_envelope(const peer &service) {
    return sent_envelope(service.received());
}

run_result call_service(const peer &service, const words &further) {
    words arguments = {"-t", "SOAP", "-u", url_of(service)};
    arguments.insert(arguments.end(), further.begin(), further.end());
    return lumocmd(arguments);
}

std::string record_lines(pid_t pid, const std::string &status, const std::string &value) {
    return green(pid, "[lumocmd] Status: " + status) +
           green(pid, "[lumocmd] Current Value: " + value);
}

std::string text_line(pid_t pid, const std::string &url) {
    return green(pid, "[lumocmd] Url: " + url);
}

std::string fault_report(const std::string &code, const std::string &reason,
                         const std::string &detail) {
    return "SOAP 1.1 fault " + code + " [no subcode]\n\"" + reason + "\"\nDetail: " + detail + "\n";
}

} // namespace harness
