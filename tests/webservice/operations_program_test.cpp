// Every SERVICE_ function end to end: what goes over the wire, what is shown, what the status is.

#include "tests/harness/console.h"
#include "tests/protocol/service_functions.h"
#include "tests/webservice/http_peer.h"

#include <gtest/gtest.h>

namespace {

using namespace harness;
using namespace protocol;

/// The status that the service answers in these tests, another one for every function.
int code_of(const service_row &row) {
    const auto *found =
        std::find_if(std::begin(SERVICE_FUNCTIONS), std::end(SERVICE_FUNCTIONS),
                     [&](const service_row &each) { return each.name == std::string(row.name); });
    return 401 + static_cast<int>(found - std::begin(SERVICE_FUNCTIONS));
}

std::string status_text(const service_row &row) {
    return "LMWS-" + std::to_string(code_of(row));
}

std::string usual_value(const service_row &row, const std::string &field) {
    return is_result(field) ? status_text(row) : "answered " + field;
}

/// The list of -p in which every entry tells its field, or is `same` for all when that is given.
std::string parameter_list(const service_row &row, const std::string &same = "") {
    words values;
    for (const std::string &child : entries_of(row)) {
        values.push_back(same.empty() ? "given " + child : same);
    }
    return joined(values, "|");
}

std::string request_children(const service_row &row, const std::string &waittime,
                             const std::string &same = "") {
    std::string children;
    for (const std::string &child : row.request) {
        std::string text = same.empty() ? "given " + child : same;
        if (child == "waittime") {
            text = waittime;
        } else if (child == "callsource") {
            text = "COMMANDLINETOOL";
        }
        children += element(child, text);
    }
    return children;
}

/// The XML declaration is the only thing before the envelope.
std::string body_text(const service_row &row, const std::string &children) {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n" + request_text(row.name, children);
}

std::string answer_with_all(const service_row &row) {
    std::string children;
    for (const std::string &child : row.response) {
        children += element(child, usual_value(row, child));
    }
    return http_answer(envelope(response_element(row.name, children)));
}

words arguments_of(const service_row &row, const std::string &same = "") {
    words arguments = {"-f", function_name(row)};
    const std::string list = parameter_list(row, same);
    if (!list.empty()) {
        arguments.insert(arguments.end(), {"-p", list});
    }
    return arguments;
}

/// The result lines; `absent` shows what stands for every field, or null for the answered values.
std::string result_lines(const service_row &row, pid_t pid, const char *absent = nullptr) {
    std::string lines;
    for (const result_line &line : row.lines) {
        std::string value = absent != nullptr ? absent : usual_value(row, line.field);
        // The version line is put together beforehand: there an absent field is empty.
        if (absent != nullptr && *line.suffix != '\0') {
            value.clear();
        }
        lines += green(pid, std::string("[lumocmd] ") + line.text + value + line.suffix);
    }
    return lines;
}

std::string without_result_status(const service_row &row) {
    return row.group == line_group::WITH_A_RESULT ? "LMCM-508\n" : "LMCM-502\n";
}

int without_result_exit(const service_row &row) {
    return (row.group == line_group::WITH_A_RESULT ? 508 : 502) & 0xff;
}

class Operation : public testing::TestWithParam<service_row> {};

TEST_P(Operation, SendsTheWholeRequestAndShowsTheLines) {
    const service_row &row = GetParam();
    peer service(answering(answer_with_all(row)));
    words arguments = {"-v", "ON", "-t", "SOAP", "-u", url_of(service), "-w", "30"};
    const words further = arguments_of(row);
    arguments.insert(arguments.end(), further.begin(), further.end());
    const run_result run = lumocmd(arguments);
    EXPECT_EQ(service.finish(), "");

    const http_request request = split_request(service.received());
    EXPECT_EQ(request.method, "POST");
    EXPECT_EQ(request.path, "/cgi-bin/lumows");
    EXPECT_EQ(request.version.substr(0, 7), "HTTP/1.");
    EXPECT_EQ(request.header("Host"), "127.0.0.1:" + std::to_string(service.port()));
    EXPECT_EQ(request.header("User-Agent"), "gSOAP/2.7");
    EXPECT_EQ(request.header("Content-Type"), "text/xml; charset=utf-8");
    EXPECT_EQ(request.header("Content-Length"), std::to_string(request.body.size()));
    EXPECT_EQ(request.header("SOAPAction"), "\"urn:xmethods-lumows\"");
    EXPECT_EQ(request.header("Transfer-Encoding"), "(absent)");
    EXPECT_EQ(request.header("Cookie"), "(absent)");
    EXPECT_EQ(request.body, body_text(row, request_children(row, "30")));

    const std::string list = parameter_list(row);
    EXPECT_EQ(run.output,
              green(run.pid, "[lumocmd] Soap request selected") +
                  green(run.pid, "[lumocmd] Url selected: " + url_of(service)) +
                  green(run.pid, "[lumocmd] Waittime selected: 30") +
                  green(run.pid, "[lumocmd] Function selected: " + function_name(row)) +
                  (list.empty() ? "" : green(run.pid, "[lumocmd] Parameters selected: " + list)) +
                  result_lines(row, run.pid) + status_text(row) + "\n");
    EXPECT_EQ(run.errors, "");
    EXPECT_EQ(run.status, code_of(row) & 0xff);
}

TEST_P(Operation, IsQuietAndSelectedInLowerCase) {
    const service_row &row = GetParam();
    peer service(answering(answer_with_all(row)));
    words arguments = arguments_of(row);
    arguments[1] = std::string("service_") + row.name;
    const run_result run = call_service(service, arguments);
    EXPECT_EQ(service.finish(), "");
    EXPECT_EQ(split_request(service.received()).body, body_text(row, request_children(row, "0")));
    EXPECT_EQ(run.output, status_text(row) + "\n");
    EXPECT_EQ(run.errors, "");
    EXPECT_EQ(run.status, code_of(row) & 0xff);
}

TEST_P(Operation, WritesEqualValuesOutOneByOne) {
    const service_row &row = GetParam();
    peer service(answering(answer_with_all(row)));
    words arguments = arguments_of(row, "5");
    arguments.insert(arguments.end(), {"-w", "5"});
    const run_result run = call_service(service, arguments);
    EXPECT_EQ(service.finish(), "");
    EXPECT_EQ(split_request(service.received()).body,
              body_text(row, request_children(row, "5", "5")));
    EXPECT_EQ(run.output, status_text(row) + "\n");
    EXPECT_EQ(run.errors, "");
}

TEST_P(Operation, FaultLeavesEveryFieldAbsent) {
    const service_row &row = GetParam();
    peer service(answering(http_answer(envelope(fault_element("SOAP-ENV:Server", "out of service")),
                                       "500 Internal Server Error")));
    words arguments = arguments_of(row);
    arguments.insert(arguments.end(), {"-v", "ON"});
    const run_result run = call_service(service, arguments);
    EXPECT_EQ(service.finish(), "");
    EXPECT_EQ(run.output,
              (row.group == line_group::ALWAYS ? result_lines(row, run.pid, "(null)") : "") +
                  without_result_status(row));
    EXPECT_EQ(run.errors, fault_report("SOAP-ENV:Server", "out of service"));
    EXPECT_EQ(run.status, without_result_exit(row));
}

TEST_P(Operation, AnswerWithoutResult) {
    const service_row &row = GetParam();
    std::string children;
    for (const std::string &child : row.response) {
        children += is_result(child) ? "" : element(child, usual_value(row, child));
    }
    // The other operations' spelling is an unknown child here.
    children += element(result_child(row) == "results" ? "result" : "results", status_text(row));
    peer service(answering(http_answer(envelope(response_element(row.name, children)))));
    words arguments = arguments_of(row);
    arguments.insert(arguments.end(), {"-v", "ON"});
    const run_result run = call_service(service, arguments);
    EXPECT_EQ(service.finish(), "");
    EXPECT_EQ(run.output, (row.group == line_group::ALWAYS ? result_lines(row, run.pid) : "") +
                              without_result_status(row));
    EXPECT_EQ(run.errors, "");
    EXPECT_EQ(run.status, without_result_exit(row));
}

TEST_P(Operation, AnswerWithNothingButTheResult) {
    const service_row &row = GetParam();
    peer service(answering(http_answer(
        envelope(response_element(row.name, element(result_child(row), status_text(row)))))));
    words arguments = arguments_of(row);
    arguments.insert(arguments.end(), {"-v", "ON"});
    const run_result run = call_service(service, arguments);
    EXPECT_EQ(service.finish(), "");
    EXPECT_EQ(run.output, result_lines(row, run.pid, "(null)") + status_text(row) + "\n");
    EXPECT_EQ(run.errors, "");
    EXPECT_EQ(run.status, code_of(row) & 0xff);
}

/// The answer with every child under a prefix that is chosen by its position.
std::string prefixed_children(const service_row &row, const words &prefixes) {
    std::string children;
    std::size_t position = 0;
    for (const std::string &child : row.response) {
        children +=
            element(prefixes[position++ % prefixes.size()] + child, usual_value(row, child));
    }
    return children;
}

TEST_P(Operation, ReadsChildrenUnderAnyPrefix) {
    const service_row &row = GetParam();
    const std::string unknown = "<o:unknown>no</o:unknown><ns:unknown><deep/></ns:unknown>";
    for (const words &prefixes :
         {words{"ns:"}, words{"o:"}, words{"o:", "", "ns:"}, words{"", "ns:", "o:"}}) {
        SCOPED_TRACE(prefixes.front());
        const std::string children = unknown + prefixed_children(row, prefixes) + unknown;
        const std::string response = "<ns:service-" + std::string(row.name) +
                                     "Response xmlns:o=\"urn:other\">" + children +
                                     "</ns:service-" + row.name + "Response>";
        peer service(answering(http_answer(envelope(response))));
        words arguments = arguments_of(row);
        arguments.insert(arguments.end(), {"-v", "ON"});
        const run_result run = call_service(service, arguments);
        EXPECT_EQ(service.finish(), "");
        EXPECT_EQ(run.output, result_lines(row, run.pid) + status_text(row) + "\n");
        EXPECT_EQ(run.errors, "");
        EXPECT_EQ(run.status, code_of(row) & 0xff);
    }
}

TEST_P(Operation, TakesNoOtherResponse) {
    const service_row &row = GetParam();
    std::string children;
    for (const std::string &child : row.response) {
        children += element(child, usual_value(row, child));
    }
    peer service(answering(http_answer(envelope(response_element("other", children)))));
    words arguments = arguments_of(row);
    arguments.insert(arguments.end(), {"-v", "ON"});
    const run_result run = call_service(service, arguments);
    EXPECT_EQ(service.finish(), "");
    EXPECT_EQ(run.output,
              (row.group == line_group::ALWAYS ? result_lines(row, run.pid, "(null)") : "") +
                  without_result_status(row));
    EXPECT_EQ(run.errors.substr(0, run.errors.find(" [")), "SOAP 1.1 fault SOAP-ENV:Client");
    EXPECT_EQ(run.status, without_result_exit(row));
}

INSTANTIATE_TEST_SUITE_P(Rows, Operation, testing::ValuesIn(SERVICE_FUNCTIONS), NAME_OF_ROW);

} // namespace
