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

std::string upper_latin1() {
    std::string text;
    for (int code = 0x80; code <= 0xff; code++) {
        text += static_cast<char>(code);
    }
    return text;
}

/// Every byte is a character of its own, also those that together would be one of UTF-8.
std::string as_utf8(const std::string &latin1) {
    std::string text;
    for (const char letter : latin1) {
        const auto code = static_cast<unsigned char>(letter);
        text += code < 0x80 ? std::string(1, letter)
                            : std::string{static_cast<char>(0xc0 | code >> 6),
                                          static_cast<char>(0x80 | (code & 0x3f))};
    }
    return text;
}

/// As a service writes it.
std::string escaped(const std::string &text) {
    std::string xml;
    for (const char letter : text) {
        xml += letter == '&'    ? "&amp;"
               : letter == '<'  ? "&lt;"
               : letter == '\r' ? "&#13;"
                                : std::string(1, letter);
    }
    return xml;
}

TEST(Value, ArrivesAsGivenAndComesBackAsTheSameBytes) {
    for (const std::string &value : {
             std::string("<a b=\"c\">&amp;'&lt;&#65;&nosuch;&</a>"),
             std::string("]]><!-- a --><?xml version=\"1.0\"?></SOAP-ENV:Envelope>"),
             std::string("  a\nb\n\nc\n\r\nd\re\t\t  "),
             std::string(" "),
             std::string("\n"),
             std::string("%s%n%20\xc3\xa9"),
             upper_latin1(),
             std::string(600, 'x'), // longer than an item of a gateway's list
             std::string(LONGEST_ARGUMENT, 'x'),
             std::string(LONGEST_ARGUMENT, '<'),
         }) {
        SCOPED_TRACE(value.substr(0, 100));
        peer service(answering(http_response(
            "elementhaschanged",
            "<result>LMWS-000</result>" + element("currentvalue", as_utf8(escaped(value))))));
        const run_result run = call_service(
            service, {"-f", "SERVICE_ELEMENTHASCHANGED", "-p", "<i|c|" + value, "-v", "ON"});
        EXPECT_EQ(service.finish(), "");
        const http_request request = split_request(service.received());
        EXPECT_EQ(request.header("Content-Length"), std::to_string(request.body.size()));
        pugi::xml_document document;
        const pugi::xml_parse_result read = document.load_buffer(
            request.body.data(), request.body.size(),
            pugi::parse_default | pugi::parse_ws_pcdata_single, pugi::encoding_utf8);
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
        EXPECT_EQ(service.finish(), "");
        EXPECT_EQ(sent_text(service), request_text("test", element("waittime", number)));
    }
}

} // namespace
