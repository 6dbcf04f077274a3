// SERVICE_RUNONELEMENT: a caller on the controller itself may leave out the session, any other
// sends its first six entries, however many there are. The local endpoint is at a well-known port,
// so its service listens on a private machine.

#include "tests/harness/console.h"
#include "tests/harness/private_machine.h"
#include "tests/webservice/http_peer.h"

#include <gtest/gtest.h>

namespace {

using namespace harness;

const char *const ACCEPTED = "<result>LMWS-000</result>";

/// The last two children are the same in every call.
std::string children_of(const std::string &children) {
    return children + "<callsource>COMMANDLINETOOL</callsource><waittime>7</waittime>";
}

// ---------------------------------------------------------------------------------------------
// Another endpoint

struct remote_case {
    const char *name;
    words list_option;
    const char *children;
};

const remote_case REMOTE_CASES[] = {
    {"NoList", {}, ""},
    {"EmptyList", {"-p", ""}, ""},
    {"One", {"-p", "s"}, "<sessionid>s</sessionid>"},
    {"Four",
     {"-p", "s|i|o|p"},
     "<sessionid>s</sessionid><idobject>i</idobject><operation>o</operation>"
     "<payload>p</payload>"},
    {"Five",
     {"-p", "s|i|o|p|x"},
     "<sessionid>s</sessionid><idobject>i</idobject><operation>o</operation>"
     "<payload>p</payload><optionals>x</optionals>"},
    {"Six",
     {"-p", "s|i|o|p|x|h"},
     "<sessionid>s</sessionid><idobject>i</idobject><operation>o</operation>"
     "<payload>p</payload><optionals>x</optionals><hashcode>h</hashcode>"},
    {"Seven",
     {"-p", "s|i|o|p|x|h|z"},
     "<sessionid>s</sessionid><idobject>i</idobject><operation>o</operation>"
     "<payload>p</payload><optionals>x</optionals><hashcode>h</hashcode>"},
    {"Twelve",
     {"-p", "s|i|o|p|x|h|1|2|3|4|5|6"},
     "<sessionid>s</sessionid><idobject>i</idobject><operation>o</operation>"
     "<payload>p</payload><optionals>x</optionals><hashcode>h</hashcode>"},
    {"EmptyEntryEndsTheList",
     {"-p", "s|i||p|x|h"},
     "<sessionid>s</sessionid><idobject>i</idobject>"},
};

class RemoteElement : public testing::TestWithParam<remote_case> {};

TEST_P(RemoteElement, SendsTheFirstSix) {
    const remote_case &row = GetParam();
    peer service(answering(http_answer(envelope(response_element("runonelement", ACCEPTED)))));
    words further = {"-w", "7", "-f", "SERVICE_RUNONELEMENT"};
    further.insert(further.end(), row.list_option.begin(), row.list_option.end());
    const run_result run = call_service(service, further);
    EXPECT_EQ(service.finish(), "");
    EXPECT_EQ(sent_envelope(service), request_text("runonelement", children_of(row.children)));
    EXPECT_EQ(run.output, "LMCM-0000\n");
    EXPECT_EQ(run.errors, "");
    EXPECT_EQ(run.status, 0);
}

INSTANTIATE_TEST_SUITE_P(Table, RemoteElement, testing::ValuesIn(REMOTE_CASES), NAME_OF_ROW);

// ---------------------------------------------------------------------------------------------
// The local endpoint

struct local_case {
    const char *name;
    const char *url;
    const char *list;     ///< null: no -p
    const char *target;   ///< host and path as they arrive; null: nothing is sent
    const char *children; ///< before the two common ones
};

const char *const FIVE_CHILDREN =
    "<sessionid>NO-SESSIONID</sessionid><idobject>i</idobject><operation>o</operation>"
    "<payload>p</payload><optionals>x</optionals><hashcode>h</hashcode>";
const char *const SIX_CHILDREN =
    "<sessionid>s</sessionid><idobject>i</idobject><operation>o</operation>"
    "<payload>p</payload><optionals>x</optionals><hashcode>h</hashcode>";
/// What five entries mean to an endpoint elsewhere.
const char *const FIVE_FROM_ELSEWHERE =
    "<sessionid>i</sessionid><idobject>o</idobject><operation>p</operation>"
    "<payload>x</payload><optionals>h</optionals>";

const char *const FIVE = "i|o|p|x|h";
const char *const SIX = "s|i|o|p|x|h";
const char *const BY_NAME = "http://localhost/cgi-bin/lumows";
const char *const BY_ADDRESS = "http://127.0.0.1/cgi-bin/lumows";

const local_case LOCAL_CASES[] = {
    {"FiveByName", BY_NAME, FIVE, "localhost/cgi-bin/lumows", FIVE_CHILDREN},
    {"SixByName", BY_NAME, SIX, "localhost/cgi-bin/lumows", SIX_CHILDREN},
    {"FiveByAddress", BY_ADDRESS, FIVE, "127.0.0.1/cgi-bin/lumows", FIVE_CHILDREN},
    {"SixByAddress", BY_ADDRESS, SIX, "127.0.0.1/cgi-bin/lumows", SIX_CHILDREN},
    {"FiveInCapitals", "http://LOCALHOST/CGI-BIN/LUMOWS", FIVE, "LOCALHOST/CGI-BIN/LUMOWS",
     FIVE_CHILDREN},
    {"FiveInMixedCase", "HTTP://127.0.0.1/Cgi-Bin/LumoWS", FIVE, "127.0.0.1/Cgi-Bin/LumoWS",
     FIVE_CHILDREN},
    {"NoList", BY_NAME, nullptr, nullptr, nullptr},
    {"EmptyList", BY_ADDRESS, "", nullptr, nullptr},
    {"FourByName", BY_NAME, "i|o|p|x", nullptr, nullptr},
    {"FourByAddress", BY_ADDRESS, "i|o|p|x", nullptr, nullptr},
    {"SevenByName", BY_NAME, "s|i|o|p|x|h|z", nullptr, nullptr},
    {"SevenByAddress", BY_ADDRESS, "s|i|o|p|x|h|z", nullptr, nullptr},
    {"SevenInCapitals", "HTTP://LOCALHOST/CGI-BIN/LUMOWS", "s|i|o|p|x|h|z", nullptr, nullptr},
    {"PortWrittenOutIsElsewhere", "http://127.0.0.1:80/cgi-bin/lumows", FIVE,
     "127.0.0.1/cgi-bin/lumows", FIVE_FROM_ELSEWHERE},
    {"OtherPathIsElsewhere", "http://127.0.0.1/cgi-bin/lumows/", FIVE, "127.0.0.1/cgi-bin/lumows/",
     FIVE_FROM_ELSEWHERE},
    {"OtherLoopbackIsElsewhere", "http://127.1/cgi-bin/lumows", FIVE, "127.1/cgi-bin/lumows",
     FIVE_FROM_ELSEWHERE},
};

/// What a run and its service have seen, as one text.
std::string account(const std::string &target, const std::string &envelope,
                    const std::string &output, const std::string &errors, int status) {
    return "target " + target + "\nenvelope " + envelope + "\noutput " + output + "\nerrors " +
           errors + "\nstatus " + std::to_string(status) + "\n";
}

std::string run_against_well_known_port(const words &arguments, const std::string &operation,
                                        const char *children) {
    return on_private_machine([&] {
        peer service(answering(http_answer(envelope(response_element(operation, children)))), 80);
        const run_result run = lumocmd(arguments);
        service.finish();
        const std::string &request = service.received();
        return account(split_request(request).header("Host") + split_request(request).path,
                       request.empty() ? "" : sent_envelope(request), run.output, run.errors,
                       run.status);
    });
}

class LocalElement : public testing::TestWithParam<local_case> {};

TEST_P(LocalElement, TakesFiveOrSix) {
    const local_case &row = GetParam();
    words arguments = {"-t", "SOAP", "-u", row.url, "-w", "7", "-f", "service_runonelement"};
    if (row.list != nullptr) {
        arguments.insert(arguments.end(), {"-p", row.list});
    }
    const std::string target = row.target != nullptr ? row.target : "127.0.0.1";
    SKIP_WHERE_MISSING(missing_private_machine(target.substr(0, target.find('/'))));
    const std::string seen = run_against_well_known_port(arguments, "runonelement", ACCEPTED);
    if (row.target != nullptr) {
        EXPECT_EQ(seen, account(row.target, request_text("runonelement", children_of(row.children)),
                                "LMCM-0000\n", "", 0));
    } else {
        EXPECT_EQ(seen, account("(absent)", "", "LMCM-502\n", "", 502 & 0xff));
    }
}

INSTANTIATE_TEST_SUITE_P(Table, LocalElement, testing::ValuesIn(LOCAL_CASES), NAME_OF_ROW);

// ---------------------------------------------------------------------------------------------
// No endpoint at all: the parser stops early at an unknown -v word and leaves it out

TEST(DefaultEndpoint, IsTheLocalOne) {
    SKIP_WHERE_MISSING(missing_private_machine("localhost"));
    EXPECT_EQ(
        run_against_well_known_port(
            {"-t", "SOAP", "-w", "10", "-f", "SERVICE_TEST", "-v", "perhaps"}, "test", ACCEPTED),
        account("localhost/cgi-bin/lumows", request_text("test", "<waittime>10</waittime>"),
                "LMCM-0000\n", "", 0));
}

TEST(DefaultEndpoint, CountsAsLocalForTheSession) {
    SKIP_WHERE_MISSING(missing_private_machine("localhost"));
    EXPECT_EQ(run_against_well_known_port({"-t", "SOAP", "-w", "7", "-f", "SERVICE_RUNONELEMENT",
                                           "-p", FIVE, "-v", "perhaps"},
                                          "runonelement", ACCEPTED),
              account("localhost/cgi-bin/lumows",
                      request_text("runonelement", children_of(FIVE_CHILDREN)), "LMCM-0000\n", "",
                      0));
}

} // namespace
