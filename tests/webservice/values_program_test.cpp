// Values travel as they were given: what a conforming XML reader takes out of the request is what
// stood in the parameter list, and what a service sends back comes out as the same bytes.

#include "tests/harness/console.h"
#include "tests/webservice/http_peer.h"

#include <gtest/gtest.h>
#include <pugixml.hpp>

namespace {

using namespace harness;

/// The longest argument that the system lets a program have is just above this.
constexpr std::size_t LONGEST_ARGUMENT = 120000;

std::string latin1_as_utf8(int first, int last, bool encoded) {
    std::string text;
    for (int code = first; code <= last; code++) {
        if (encoded) {
            text += static_cast<char>(0xc0 | (code >> 6));
            text += static_cast<char>(0x80 | (code & 0x3f));
        } else {
            text += static_cast<char>(code);
        }
    }
    return text;
}

struct value_case {
    const char *name;
    std::string given;
    std::string arrives; ///< as UTF-8
};

const value_case VALUE_CASES[] = {
    {"Plain", "a", "a"},
    {"Markup", "<a b=\"c\">&amp;</a>", "<a b=\"c\">&amp;</a>"},
    {"Quotes", "\"it's\"", "\"it's\""},
    {"Entities", "&lt;&#65;&nosuch;&", "&lt;&#65;&nosuch;&"},
    {"CDataEnd", "]]>", "]]>"},
    {"Comment", "<!-- a -->", "<!-- a -->"},
    {"Instruction", "<?xml version=\"1.0\"?>", "<?xml version=\"1.0\"?>"},
    {"LineBreaks", "a\nb\n\nc\n", "a\nb\n\nc\n"},
    {"CarriageReturns", "a\r\nb\rc", "a\r\nb\rc"},
    {"Tabs", "\ta\t\tb\t", "\ta\t\tb\t"},
    {"BlanksAround", "  a  ", "  a  "},
    {"BlankOnly", " ", " "},
    {"LineBreakOnly", "\n", "\n"},
    {"Percent", "%s%n%20", "%s%n%20"},
    {"UpperLatin1", latin1_as_utf8(0xa0, 0xff, false), latin1_as_utf8(0xa0, 0xff, true)},
    {"Latin1Controls", latin1_as_utf8(0x80, 0x9f, false), latin1_as_utf8(0x80, 0x9f, true)},
    // Every byte is a character of its own, also those that together would be one of UTF-8.
    {"Utf8", "\xc3\xa9", "\xc3\x83\xc2\xa9"},
    {"EndOfEnvelope", "</SOAP-ENV:Envelope>", "</SOAP-ENV:Envelope>"},
    {"LongerThanAListItemOnce", std::string(600, 'x'), std::string(600, 'x')},
    {"AsLongAsAnArgument", std::string(LONGEST_ARGUMENT, 'x'), std::string(LONGEST_ARGUMENT, 'x')},
    {"MarkupAsLongAsAnArgument", std::string(LONGEST_ARGUMENT, '<'),
     std::string(LONGEST_ARGUMENT, '<')},
};

class Value : public testing::TestWithParam<value_case> {};

TEST_P(Value, ArrivesAsGiven) {
    const value_case &row = GetParam();
    peer service(answering(
        http_answer(envelope(response_element("uploadlumolfile", "<result>LMWS-000</result>")))));
    const run_result run =
        call_service(service, {"-f", "SERVICE_UPLOADLUMOLFILE", "-p", "sess<ion|" + row.given});
    EXPECT_EQ(service.finish(), "");
    const http_request request = split_request(service.received());
    EXPECT_EQ(request.header("Content-Length"), std::to_string(request.body.size()));
    pugi::xml_document document;
    const pugi::xml_parse_result read = document.load_buffer(
        request.body.data(), request.body.size(),
        pugi::parse_default | pugi::parse_ws_pcdata_single, pugi::encoding_utf8);
    EXPECT_TRUE(read) << read.description();
    const pugi::xml_node call =
        document.child("SOAP-ENV:Envelope").child("SOAP-ENV:Body").first_child();
    EXPECT_STREQ(call.name(), "ns:service-uploadlumolfile");
    const pugi::xml_node session = call.first_child();
    EXPECT_STREQ(session.name(), "sessionid");
    EXPECT_EQ(std::string(session.text().get()), "sess<ion");
    const pugi::xml_node file = session.next_sibling();
    EXPECT_STREQ(file.name(), "lumolfile");
    EXPECT_TRUE(std::string(file.text().get()) == row.arrives)
        << std::string(file.text().get()).substr(0, 300);
    EXPECT_STREQ(file.next_sibling().name(), "waittime");
    EXPECT_FALSE(file.next_sibling().next_sibling());
    EXPECT_EQ(run.output, "LMCM-0000\n");
    EXPECT_EQ(run.errors, "");
    EXPECT_EQ(run.status, 0);
}

TEST_P(Value, ComesBackAsTheSameBytes) {
    const value_case &row = GetParam();
    std::string escaped;
    for (const char letter : row.arrives) {
        switch (letter) {
        case '&':
            escaped += "&amp;";
            break;
        case '<':
            escaped += "&lt;";
            break;
        case '>':
            escaped += "&gt;";
            break;
        case '\r':
            escaped += "&#13;";
            break;
        default:
            escaped += letter;
        }
    }
    peer service(answering(http_answer(envelope(response_element(
        "retrieveconfiguration", "<result>LMWS-000</result>" + element("url", escaped))))));
    const run_result run = call_service(service, TEXT_CALL);
    EXPECT_EQ(service.finish(), "");
    EXPECT_TRUE(run.output == text_line(run.pid, row.given) + "LMCM-0000\n")
        << run.output.substr(0, 300);
    EXPECT_EQ(run.errors, "");
}

INSTANTIATE_TEST_SUITE_P(Table, Value, testing::ValuesIn(VALUE_CASES), NAME_OF_ROW);

struct waittime_case {
    const char *name;
    words option;
    const char *text;
};

const waittime_case WAITTIME_CASES[] = {
    {"Absent", {}, "0"},
    {"Thirty", {"-w", "30"}, "30"},
    {"LeadingZeros", {"-w", "007"}, "7"},
    {"Negative", {"-w", "-5"}, "-5"},
    {"Lowest", {"-w", "-2147483648"}, "-2147483648"},
    {"Highest", {"-w", "2147483647"}, "2147483647"},
};

class WaitTime : public testing::TestWithParam<waittime_case> {};

TEST_P(WaitTime, TravelsAsDecimalText) {
    peer service(
        answering(http_answer(envelope(response_element("test", "<result>LMWS-000</result>")))));
    words further = {"-f", "SERVICE_TEST"};
    further.insert(further.end(), GetParam().option.begin(), GetParam().option.end());
    const run_result run = call_service(service, further);
    EXPECT_EQ(service.finish(), "");
    EXPECT_EQ(sent_envelope(service), request_text("test", element("waittime", GetParam().text)));
    EXPECT_EQ(run.output, "LMCM-0000\n");
}

INSTANTIATE_TEST_SUITE_P(Table, WaitTime, testing::ValuesIn(WAITTIME_CASES), NAME_OF_ROW);

} // namespace
