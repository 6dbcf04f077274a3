// Every SERVICE_ function end to end: what goes over the wire, what is shown, what the status is.

#include "tests/harness/console.h"
#include "tests/protocol/service_functions.h"
#include "tests/webservice/http_peer.h"

#include <gtest/gtest.h>

namespace {

using namespace harness;
using namespace protocol;

std::string usual_value(const std::string &field) {
    return is_result(field) ? "LMWS-402" : "answered " + field;
}

/// The request's children; `given` is what the list holds for a child.
template <typename Given>
std::string request_children(const service_row &row, const std::string &waittime, Given given) {
    std::string children;
    for (const std::string &child : row.request) {
        children += element(child, child == "waittime"     ? waittime
                                   : child == "callsource" ? "COMMANDLINETOOL"
                                                           : given(child));
    }
    return children;
}

std::string usual_children(const service_row &row) {
    std::string children;
    for (const std::string &child : row.response) {
        children += element(child, usual_value(child));
    }
    return children;
}

/// The result lines of the usual values, or of absent ones.
std::string result_lines(const service_row &row, pid_t pid, bool absent = false) {
    std::string lines;
    for (const result_line &line : row.lines) {
        // A line with a suffix is put together beforehand: there an absent field is empty.
        const char *nothing = *line.suffix != '\0' ? "" : "(null)";
        lines += green(pid, std::string("[lumocmd] ") + line.text +
                                (absent ? nothing : usual_value(line.field)) + line.suffix);
    }
    return lines;
}

/// Arguments with the same text for every entry; a function that reads no list has none.
words call_of(const service_row &row, const std::string &function, const char *entry) {
    words all = {"-f", function, "-w", "5", "-v", "ON"};
    if (const std::size_t count = entries_of(row).size(); count != 0) {
        all.insert(all.begin(), {"-p", joined(words(count, entry), "|")});
    }
    return all;
}

void expect_the_whole_request_and_the_lines(const service_row &row) {
    const auto given = [](const std::string &child) { return "given " + child; };
    words values = entries_of(row);
    std::transform(values.begin(), values.end(), values.begin(), given);
    // What reads no list takes any.
    const std::string list = values.empty() ? "one||three|four" : joined(values, "|");
    peer service(answering(http_response(row.name, usual_children(row))));
    const run_result run = lumocmd({"-v", "ON", "-t", "SOAP", "-u", url_of(service), "-w", "30",
                                    "-f", function_name(row), "-p", list});
    EXPECT_EQ(service.finish(), "");

    const http_request request = split_request(service.received());
    EXPECT_TRUE(request.first_line.starts_with("POST /cgi-bin/lumows HTTP/1."))
        << request.first_line;
    EXPECT_EQ(request.header("Host"), "127.0.0.1:" + std::to_string(service.port()));
    EXPECT_EQ(request.header("User-Agent"), "gSOAP/2.7");
    EXPECT_EQ(request.header("Content-Type"), "text/xml; charset=utf-8");
    EXPECT_EQ(request.header("Content-Length"), std::to_string(request.body.size()));
    EXPECT_EQ(request.header("SOAPAction"), "\"urn:xmethods-lumows\"");
    EXPECT_EQ(request.header("Transfer-Encoding"), "(absent)");
    EXPECT_EQ(request.header("Cookie"), "(absent)");
    EXPECT_EQ(sent_text(service), request_text(row.name, request_children(row, "30", given)));
    expect_run(run,
               green(run.pid, "[lumocmd] Soap request selected") +
                   green(run.pid, "[lumocmd] Url selected: " + url_of(service)) +
                   green(run.pid, "[lumocmd] Waittime selected: 30") +
                   green(run.pid, "[lumocmd] Function selected: " + function_name(row)) +
                   green(run.pid, "[lumocmd] Parameters selected: " + list) +
                   result_lines(row, run.pid) + "LMWS-402\n",
               402);
}

/// Equal values are written out one by one. Children are found in any order, under any prefix and
/// between unknown ones.
void expect_equal_values_and_children_in_any_form(const service_row &row) {
    const std::string unknown = "<more/><o:more a=\"b\">1<deep>2</deep></o:more>";
    std::string children = unknown;
    for (const std::string &child : row.response) {
        children = element("o:" + child, usual_value(child)) + children;
    }
    peer service(answering(http_answer(
        envelope("<ns:service-" + std::string(row.name) + "Response xmlns:o=\"urn:other\">" +
                 unknown + children + "</ns:service-" + row.name + "Response>"))));
    const run_result run =
        call_service(service, call_of(row, std::string("service_") + row.name, "5"));
    EXPECT_EQ(service.finish(), "");
    EXPECT_EQ(sent_text(service),
              request_text(row.name, request_children(row, "5", [](auto &&) { return "5"; })));
    expect_run(run, result_lines(row, run.pid) + "LMWS-402\n", 402);
}

void expect_no_other_response(const service_row &row) {
    const run_result run = call_answered(http_response("other", usual_children(row)),
                                         call_of(row, function_name(row), "p"));
    const int code = row.group == line_group::WITH_A_RESULT ? 508 : 502;
    EXPECT_EQ(run.output,
              (row.group == line_group::ALWAYS ? result_lines(row, run.pid, true) : "") + "LMCM-" +
                  std::to_string(code) + "\n");
    EXPECT_TRUE(run.errors.starts_with("SOAP 1.1 fault SOAP-ENV:Client [")) << run.errors;
    EXPECT_EQ(run.status, code & 0xff);
}

TEST(Operation, OfEveryFunction) {
    for (const service_row &row : SERVICE_FUNCTIONS) {
        SCOPED_TRACE(row.name);
        expect_the_whole_request_and_the_lines(row);
        expect_equal_values_and_children_in_any_form(row);
        expect_no_other_response(row);
    }
}

// ---------------------------------------------------------------------------------------------
// Nothing is sent

/// The url comes to nothing: it matters less than the count and the name.
void expect_refusal(const words &arguments, const std::string &output, int code) {
    SCOPED_TRACE(joined(arguments, " "));
    expect_run(call_at("unusable", arguments), output, code);
}

TEST(Refusal, OfAListOfAnotherLength) {
    for (const service_row &row : SERVICE_FUNCTIONS) {
        if (row.needed == nullptr) {
            continue;
        }
        const std::size_t count = entries_of(row).size();
        for (const words &list :
             {words{"-p", list_of(count - 1)}, words{"-p", list_of(count + 1)}, words{}}) {
            words arguments = list;
            arguments.insert(arguments.end(), {"-f", function_name(row)});
            expect_refusal(arguments, red(count_message(row)) + "LMCM-505\n", 505);
        }
    }
}

TEST(Refusal, OfAnUnknownFunction) {
    for (const char *name :
         {"SERVICE_NOSUCH", "", "SERVICE_TESTS", "SERVICE_TES", "service-test", "SERVICE_TEST "}) {
        expect_refusal({"-f", name, "-p", "a|b"}, "LMCM-503\n", 503);
    }
}

} // namespace
