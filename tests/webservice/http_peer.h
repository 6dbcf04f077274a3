// The controller's web service as a script plays it: HTTP and SOAP written and read as plain text,
// without the client's own SOAP library.

#pragma once

#include "tests/harness/console.h"
#include "tests/harness/peer.h"

#include <string>

namespace harness {

/// One HTTP request, taken apart; what is no request leaves the texts empty.
struct http_request {
    std::string first_line;
    std::string headers; ///< with the line breaks around them
    std::string body;

    /// Value of the header with exactly this name; "(absent)" or "(repeated)" otherwise.
    std::string header(const std::string &name) const;
};

http_request split_request(const std::string &bytes);

/// The tag that opens every envelope, with the five prefixes that it declares in their order, and
/// the same with the namespaces of SOAP 1.2.
extern const char *const ENVELOPE_TAG;
extern const char *const ENVELOPE_TAG_12;

/// The body of the request that calls an operation, with these child elements.
std::string request_text(const std::string &operation, const std::string &children);

/// An envelope around the content of its body; `header` is a whole header element or nothing.
std::string envelope(const std::string &content, const std::string &header = "");

/// "<name>text</name>".
inline std::string element(const std::string &name, const std::string &text) {
    return "<" + name + ">" + text + "</" + name + ">";
}

/// The response element of an operation, such as "test" for service-test.
inline std::string response_element(const std::string &operation, const std::string &children) {
    return element("ns:service-" + operation + "Response", children);
}

/// A SOAP 1.1 fault with this code and reason; `more` follows the reason. And how the client
/// reports it on standard error.
std::string fault_element(const std::string &code, const std::string &reason,
                          const std::string &more = "");
std::string fault_report(const std::string &code, const std::string &reason,
                         const std::string &detail = "[no detail]");

/// A whole HTTP answer with a Content-Length, and the one of an operation with these children.
std::string http_answer(const std::string &body, const std::string &status = "200 OK",
                        const std::string &type = "text/xml; charset=utf-8");
inline std::string http_response(const std::string &operation, const std::string &children) {
    return http_answer(envelope(response_element(operation, children)));
}

/// One chunk of a body; an empty one is the last.
std::string http_chunk(const std::string &bytes);

/// One DIME record, padded to four bytes each: flags and lengths, the type, the bytes.
/// @param announced length of the bytes as the record states it.
std::string dime_record(unsigned flags, unsigned type_format, std::string type, std::string bytes,
                        std::size_t announced);

/// Reads one whole request, then does the further steps; or gives this answer and waits for the
/// client to close.
script after_request(script further);
inline script answering(std::string answer) {
    return after_request({reply(std::move(answer)), half_close()});
}

/// The web service's URL at a peer.
inline std::string url_of(const peer &service) {
    return "http://127.0.0.1:" + std::to_string(service.port()) + "/cgi-bin/lumows";
}

/// Runs the program with a SOAP request to a url, to a peer, or to one that gives this answer.
run_result call_at(const std::string &url, words further);
inline run_result call_service(const peer &service, const words &further) {
    return call_at(url_of(service), further);
}
run_result call_answered(const std::string &answer, const words &further);

/// Compares all that a run has left; `code` is the whole status.
void expect_run(const run_result &run, const std::string &output, int code,
                const std::string &errors = "");

/// Names a test's row.
constexpr auto NAME_OF_ROW = [](const auto &row) { return row.param.name; };

/// A call without lines.
inline const words SINGLE_CALL = {"-f", "SERVICE_TEST", "-v", "ON"};

/// A call whose line is shown in any case, and that line.
inline const words TEXT_CALL = {"-f", "SERVICE_RETRIEVECONFIGURATION", "-p", "s", "-v", "ON"};
inline std::string text_line(pid_t pid, const std::string &url) {
    return green(pid, "[lumocmd] Url: " + url);
}

/// A call whose lines are shown only with a result, what is usually answered, and the lines.
inline const words RECORD_CALL = {"-f", "SERVICE_GETELEMENTSTATUS", "-p", "s|i", "-v", "ON"};
inline const std::string USUAL_RECORD =
    "<result>LMWS-000</result><status>on</status><currentvalue>7</currentvalue>";
inline std::string record_lines(pid_t pid, const std::string &status, const std::string &value) {
    return green(pid, "[lumocmd] Status: " + status) +
           green(pid, "[lumocmd] Current Value: " + value);
}

} // namespace harness
