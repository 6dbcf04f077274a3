// The web service's answer, HTTP and XML, to each operation; and any url.

#include "program.h"
#include "tests/protocol/service_functions.h"

#include <cctype>
#include <cstdio>

/// The runtime copies the identifier of an element that bears it twice onto itself, byte by byte.
// NOLINTNEXTLINE(bugprone-reserved-identifier): the sanitizer names it
extern "C" const char *__asan_default_suppressions() {
    return "interceptor_via_fun:soap_id_enter\n";
}

namespace {

using fuzz::input;
using protocol::line_group;
using protocol::service_row;

std::string element(const std::string &name, const std::string &content) {
    return "<" + name + ">" + content + "</" + name + ">";
}

std::string response_of(const service_row &called, const std::string &children) {
    return element("ns:service-" + std::string(called.name) + "Response", children);
}

std::string envelope(const std::string &content) {
    return "<SOAP-ENV:Envelope xmlns:SOAP-ENV=\"http://schemas.xmlsoap.org/soap/envelope/\""
           " xmlns:SOAP-ENC=\"http://schemas.xmlsoap.org/soap/encoding/\""
           " xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\""
           " xmlns:xsd=\"http://www.w3.org/2001/XMLSchema\" xmlns:ns=\"urn:xmethods-lumows\">" +
           element("SOAP-ENV:Body", content) + "</SOAP-ENV:Envelope>";
}

/// An HTTP answer: its length announced, in one chunk, or up to the end.
std::string http_answer(const std::string &body, std::size_t form) {
    const std::string head = "HTTP/1.1 200 OK\r\nContent-Type: text/xml; charset=utf-8\r\n";
    if (form == 0) {
        return head + "Content-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body;
    }
    if (form == 1) {
        char length[32];
        snprintf(length, sizeof length, "%zx\r\n", body.size());
        return head + "Transfer-Encoding: chunked\r\n\r\n" + length + body + "\r\n0\r\n\r\n";
    }
    return head + "Connection: close\r\n\r\n" + body;
}

/// The letters and digits of a text, as a value that travels as it is.
std::string plain(std::string text) {
    std::erase_if(text, [](unsigned char byte) { return isalnum(byte) == 0; });
    return text;
}

/// What holds of a request that was sent, and of the status that follows.
void check_run(const service_row &called, const fuzz::ending &seen) {
    const std::size_t body = seen.sent.find("\r\n\r\n") + 4;
    const std::string length = "Content-Length: " + std::to_string(seen.sent.size() - body);
    std::string call = "<ns:service-" + std::string(called.name) + ">";
    for (const std::string &child : entries_of(called)) {
        call += element(child, "p");
    }
    fuzz::require(seen.sent.starts_with("POST /"), "the request is one of HTTP");
    fuzz::require(seen.sent.find("\r\n" + length + "\r\n") < body, "the request's length is right");
    fuzz::require(seen.sent.find(call, body) != std::string::npos, "the call is the operation's");
    if (!seen.report.empty()) {
        fuzz::require(seen.report.starts_with("SOAP 1.") || seen.report.starts_with("Error "),
                      "the report is the runtime's");
        fuzz::require(seen.status == (called.group == line_group::WITH_A_RESULT ? 508 : 502),
                      "the status of a failed call");
    }
}

std::vector<std::string> words_for(const service_row &called, const std::string &url) {
    return {"-v", "ON",
            "-t", "SOAP",
            "-u", url,
            "-f", function_name(called),
            "-p", protocol::list_of(entries_of(called).size())};
}

constexpr char URL[] = "http://192.0.2.7/cgi-bin/lumows";

void check_proper_response(const service_row &called, input *in, std::size_t form,
                           std::size_t piece) {
    const int number = static_cast<int>(fuzz::below(in, 256));
    std::string children;
    std::vector<std::string> shown;
    for (const std::string &field : called.response) {
        const std::string value =
            protocol::is_result(field) ? "LMWS-" + std::to_string(number) : plain(fuzz::field(in));
        children += element(field, value);
        for (const protocol::result_line &line : called.lines) {
            if (line.field == field) {
                shown.push_back(line.text + value + line.suffix + "\033[0;39m\n");
            }
        }
    }
    const std::string answer = http_answer(envelope(response_of(called, children)), form);
    const fuzz::ending seen = fuzz::run_program(words_for(called, URL), answer, piece);
    check_run(called, seen);
    fuzz::require(seen.report.empty(), "a proper response is not reported");
    fuzz::require(seen.status == number, "the status is the service's");
    for (const std::string &line : shown) {
        fuzz::require(seen.output.find(line) != std::string::npos, "each field is shown");
    }
}

/// No answer makes a report begin as that of a url that cannot be used.
void check_url(const service_row &called, const std::string &url) {
    const std::string answer = http_answer(envelope(response_of(called, "")), 0);
    const fuzz::ending seen = fuzz::run_program(words_for(called, url), answer);
    if (seen.report.starts_with("Error 3986 fault ")) {
        fuzz::require(seen.sent.empty(), "nothing is sent to a url that cannot be used");
    } else {
        fuzz::require(url.size() < 1024, "a long url cannot be used");
        check_run(called, seen);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    enum { ANY_ANSWER, ANY_BODY, ANY_CONTENT, ANY_CHILDREN, PROPER_RESPONSE, ANY_URL, SCENES };
    input in(reinterpret_cast<const char *>(data), size);
    const std::size_t scene = fuzz::below(&in, SCENES);
    const service_row &called =
        protocol::SERVICE_FUNCTIONS[fuzz::below(&in, std::size(protocol::SERVICE_FUNCTIONS))];
    const std::size_t form = fuzz::below(&in, 3);
    const std::size_t piece = fuzz::below(&in, 256);
    if (scene == PROPER_RESPONSE) {
        check_proper_response(called, &in, form, piece);
        return 0;
    }
    std::string text(in);
    if (scene == ANY_URL) {
        check_url(called, text.substr(0, text.find('\0')));
        return 0;
    }
    text = scene == ANY_CHILDREN ? response_of(called, text) : text;
    text = scene >= ANY_CONTENT ? envelope(text) : text;
    text = scene >= ANY_BODY ? http_answer(text, form) : text;
    check_run(called, fuzz::run_program(words_for(called, URL), text, piece));
    return 0;
}
