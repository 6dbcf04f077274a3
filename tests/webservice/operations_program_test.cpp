// Every SERVICE_ function end to end: what goes over the wire, what is shown, what the status is.

#include "tests/protocol/service_functions.h"
#include "tests/webservice/http_peer.h"

#include <cstring>
#include <gtest/gtest.h>
#include <numeric>
#include <pugixml.hpp>

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

/// What the service has received.
http_request finish_request(peer *service) {
    EXPECT_EQ(service->finish(), "");
    return split_request(service->received());
}

/// Children are found in any order, under any prefix and between unknown ones.
void expect_the_whole_request_and_the_lines(const service_row &row) {
    const auto given = [](const std::string &child) { return "given " + child; };
    words values = entries_of(row);
    std::transform(values.begin(), values.end(), values.begin(), given);
    // What reads no list takes any.
    const std::string list = values.empty() ? "one||three|four" : joined(values, "|");
    const std::string unknown = "<more/><o:more a=\"b\">1<deep>2</deep></o:more>";
    std::string children = unknown;
    for (const std::string &child : row.response) {
        children.insert(0, element("o:" + child, usual_value(child)));
    }
    const std::string response = std::string("ns:service-") + row.name + "Response";
    peer service(answering(http_answer(envelope("<" + response + " xmlns:o=\"urn:other\">" +
                                                unknown + children + "</" + response + ">"))));
    const run_result run = lumocmd({"-v", "ON", "-t", "SOAP", "-u", url_of(service), "-w", "30",
                                    "-f", function_name(row), "-p", list});
    const http_request request = finish_request(&service);
    EXPECT_TRUE(request.first_line.starts_with("POST /cgi-bin/lumows HTTP/1."))
        << request.first_line;
    EXPECT_EQ(request.header("User-Agent"), "gSOAP/2.7");
    EXPECT_EQ(request.header("Content-Type"), "text/xml; charset=utf-8");
    EXPECT_EQ(request.header("Content-Length"), std::to_string(request.body.size()));
    EXPECT_EQ(request.header("SOAPAction"), "\"urn:xmethods-lumows\"");
    EXPECT_EQ(request.body, request_text(row.name, request_children(row, "30", given)));
    expect_run(run,
               green(run.pid, "[lumocmd] Soap request selected") +
                   green(run.pid, "[lumocmd] Url selected: " + url_of(service)) +
                   green(run.pid, "[lumocmd] Waittime selected: 30") +
                   green(run.pid, "[lumocmd] Function selected: " + function_name(row)) +
                   green(run.pid, "[lumocmd] Parameters selected: " + list) +
                   result_lines(row, run.pid) + "LMWS-402\n",
               402);
}

/// And equal values are written out one by one.
void expect_no_other_response(const service_row &row) {
    const std::string list = joined(words(entries_of(row).size(), "5"), "|");
    peer service(answering(http_response("other", "<result>LMWS-402</result>")));
    const run_result run = call_service(
        service, {"-f", std::string("service_") + row.name, "-p", list, "-w", "5", "-v", "ON"});
    EXPECT_EQ(finish_request(&service).body,
              request_text(row.name, request_children(row, "5", [](auto &&) { return "5"; })));
    const int code = row.group == line_group::WITH_A_RESULT ? 508 : 502;
    expect_run(run,
               (row.group == line_group::ALWAYS ? result_lines(row, run.pid, true) : "") + "LMCM-" +
                   std::to_string(code) + "\n",
               code, run.errors);
    EXPECT_TRUE(run.errors.starts_with("SOAP 1.1 fault SOAP-ENV:Client [")) << run.errors;
}

TEST(Operation, OfEveryFunction) {
    for (const service_row &row : SERVICE_FUNCTIONS) {
        SCOPED_TRACE(row.name);
        expect_the_whole_request_and_the_lines(row);
        expect_no_other_response(row);
    }
}

// ---------------------------------------------------------------------------------------------
// SERVICE_RUNONELEMENT: a caller on the controller itself may leave out the session, any other
// sends its first six entries, however many there are

/// The body with these first fields, and the two that are the same in every call.
std::string run_on_element_text(const words &values) {
    const char *const names[] = {"sessionid", "idobject",  "operation",
                                 "payload",   "optionals", "hashcode"};
    std::string children;
    for (std::size_t i = 0; i < values.size(); i++) {
        children += element(names[i], values[i]);
    }
    return request_text("runonelement", children + "<callsource>COMMANDLINETOOL</callsource>"
                                                   "<waittime>7</waittime>");
}

words run_on_element(const words &options) {
    words call = {"-t", "SOAP", "-w", "7", "-f", "service_runonelement"};
    call.insert(call.end(), options.begin(), options.end());
    return call;
}

const std::string ACCEPTED = http_response("runonelement", "<result>LMWS-000</result>");

TEST(RemoteElement, SendsTheFirstSix) {
    const std::pair<words, words> rows[] = {
        {{}, {}},
        {{"-p", "i|o|p|x|h"}, {"i", "o", "p", "x", "h"}},
        {{"-p", "s|i|o|p|x|h|1|2|3|4|5|6"}, {"s", "i", "o", "p", "x", "h"}},
        {{"-p", "s|i||p|x|h"}, {"s", "i"}},
    };
    for (const auto &[list, values] : rows) {
        peer service(answering(ACCEPTED));
        words call = run_on_element(list);
        call.insert(call.end(), {"-u", url_of(service)});
        expect_run(lumocmd(call), "LMCM-0000\n", 0);
        EXPECT_EQ(finish_request(&service).body, run_on_element_text(values));
    }
}

/// The local endpoint is at a well-known port, so its service listens on a private machine.
TEST(LocalElement, TakesFiveOrSix) {
    SKIP_WHERE_MISSING(missing_private_machine("localhost"));
    const std::string url = "http://localhost/cgi-bin/lumows";
    const words without_session = {"NO-SESSIONID", "i", "o", "p", "x", "h"};
    const struct {
        words options;
        words values; ///< none: nothing is sent
    } rows[] = {
        {{"-u", url, "-p", "i|o|p|x|h"}, without_session},
        {{"-u", url, "-p", "s|i|o|p|x|h"}, {"s", "i", "o", "p", "x", "h"}},
        {{"-u", url, "-p", "i|o|p|x"}, {}},
        {{"-u", url, "-p", "s|i|o|p|x|h|z"}, {}},
        {{"-u", url}, {}},
        // The parser stops early at an unknown word, without a url.
        {{"-p", "i|o|p|x|h", "-v", "perhaps"}, without_session},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(joined(row.options, " "));
        const std::string seen = on_private_machine([&] {
            peer service(answering(ACCEPTED), 80);
            const run_result run = lumocmd(run_on_element(row.options));
            service.finish();
            const http_request request = split_request(service.received());
            return request.header("Host") + " " +
                   request.first_line.substr(0, request.first_line.rfind("HTTP")) + request.body +
                   run.output + run.errors + std::to_string(run.status);
        });
        EXPECT_EQ(seen, row.values.empty() ? "(absent) LMCM-502\n246"
                                           : "localhost POST /cgi-bin/lumows " +
                                                 run_on_element_text(row.values) + "LMCM-0000\n0");
    }
}

// ---------------------------------------------------------------------------------------------
// Values travel as they were given: what a conforming XML reader takes out of the request is what
// stood in the parameter list, and what a service sends back comes out as the same bytes

/// Every byte is a character of its own, also those that together would be one of UTF-8.
std::string as_utf8(const std::string &latin1) {
    std::wstring text;
    for (const char letter : latin1) {
        text += static_cast<unsigned char>(letter);
    }
    return pugi::as_utf8(text);
}

/// As a service writes it.
std::string escaped(const std::string &text) {
    std::string xml;
    for (const char letter : text) {
        const bool is_plain = strchr("&<\r", letter) == nullptr;
        xml += is_plain ? std::string(1, letter) : "&#" + std::to_string(letter) + ";";
    }
    return xml;
}

TEST(Value, ArrivesAsGivenAndComesBackAsTheSameBytes) {
    constexpr std::size_t longest_argument = 120000; // that the system lets a program have, nearly
    std::string upper_latin1(128, '\0');
    std::iota(upper_latin1.begin(), upper_latin1.end(), '\x80');
    for (const std::string &value :
         {std::string("<a b=\"c\">&amp;'&lt;&#65;&nosuch;&</a>"),
          std::string("]]><!-- a --><?xml version=\"1.0\"?></SOAP-ENV:Envelope>"),
          std::string("  a\nb\n\nc\n\r\nd\re\t\t  "), std::string(" "),
          std::string("%s%n%20\xc3\xa9"), upper_latin1, std::string(longest_argument, '<')}) {
        SCOPED_TRACE(value.substr(0, 100));
        peer service(answering(http_response(
            "elementhaschanged",
            "<result>LMWS-000</result>" + element("currentvalue", as_utf8(escaped(value))))));
        const run_result run = call_service(
            service, {"-f", "SERVICE_ELEMENTHASCHANGED", "-p", "<i|c|" + value, "-v", "ON"});
        const std::string sent = finish_request(&service).body;
        pugi::xml_document document;
        const pugi::xml_parse_result read = document.load_buffer(
            sent.data(), sent.size(), pugi::parse_default | pugi::parse_ws_pcdata_single,
            pugi::encoding_utf8);
        EXPECT_TRUE(read) << read.description();
        const pugi::xml_node call = document.first_child().first_child().first_child();
        EXPECT_STREQ(call.child_value("idobject"), "<i");
        EXPECT_TRUE(call.child_value("currentvalue") == as_utf8(value));
        EXPECT_TRUE(run.output ==
                    green(run.pid, "[lumocmd] Current Value: " + value) + "LMCM-0000\n");
        EXPECT_EQ(run.errors, "");
        EXPECT_EQ(run.status, 0);
    }
}

TEST(WaitTime, TravelsAsDecimalText) {
    for (const char *number : {"0", "-5", "-2147483648", "2147483647"}) {
        peer service(answering(http_response("test", "<result>LMWS-000</result>")));
        words call = {"-f", "SERVICE_TEST", "-w", number};
        call.resize(*number == '0' ? 2 : 4); // it is the usual one
        expect_run(call_service(service, call), "LMCM-0000\n", 0);
        EXPECT_EQ(finish_request(&service).body, request_text("test", element("waittime", number)));
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
        const std::string output = red(count_message(row)) + "LMCM-505\n";
        const std::size_t count = entries_of(row).size();
        expect_refusal({"-f", function_name(row), "-p", list_of(count - 1)}, output, 505);
        expect_refusal({"-f", function_name(row), "-p", list_of(count + 1)}, output, 505);
        expect_refusal({"-f", function_name(row)}, output, 505);
    }
}

TEST(Refusal, OfAnUnknownFunction) {
    for (const char *name :
         {"SERVICE_NOSUCH", "", "SERVICE_TESTS", "SERVICE_TES", "service-test", "SERVICE_TEST "}) {
        const run_result run = call_at("unusable", {"-v", "ON", "-f", name, "-p", "a|b"});
        const std::size_t start = run.output.rfind("Parameters selected: a|b");
        EXPECT_EQ(run.output.substr(std::min(start, run.output.size())),
                  "Parameters selected: a|b\033[0;39m\nLMCM-503\n")
            << run.output;
        EXPECT_EQ(run.errors, "");
        EXPECT_EQ(run.status, 503 & 0xff);
    }
}

} // namespace
