// Callers that pass odd things: no arguments at all, thousands, endless ones, control characters, a
// hostile environment.

#include "tests/faults/requests.h"
#include "tests/faults/service_requests.h"
#include "tests/faults/start.h"

namespace {

using namespace fault_tests;
using harness::expect;
using harness::peer;
using harness::red;
using harness::reply;
using harness::words;

/// The longest argument that the kernel passes on, its terminator not counted.
constexpr std::size_t LONGEST_ARGUMENT = 131071;

const char NOT_PARSED[] = "main->main error on parsing command line";
const char BENTEL_FUNCTION[] = "SENDBENTELCOMMANDDATAGRAM";
const char BENTEL_REQUEST[] = "Request: SENDBENTELCOMMANDDATAGRAM\nSectionName: a\nUserCode: b\n"
                              "Command: c\nPayload: d\n\n";
const char BENTEL_TAG[] = "BENTELGatewayutil->bentelgateway_local_request ";

class Callers : public testing::Test {
  protected:
    void SetUp() override {
        SKIP_BEHIND_A_WRAPPER();
    }
};

words bentel(const std::string &path, const std::string &parameters = "a|b|c|d") {
    return {"-t", "BENTELLOCAL", "-s", path, "-f", BENTEL_FUNCTION, "-p", parameters};
}

ending run_with(const words &arguments) {
    return run_oddly({.arguments = arguments});
}

void expect_ending(const ending &end, const std::string &output, int status,
                   const std::string &errors = "") {
    expect_status(end, status);
    EXPECT_EQ(end.output, output);
    EXPECT_EQ(end.errors, errors);
}

/// The daemon gets the usual request.
void expect_usual_request(const std::function<words(const std::string &path)> &arguments) {
    const harness::temporary_directory directory;
    const std::string path = directory.path + "/s";
    peer daemon(path, {expect(BENTEL_REQUEST), reply("Response Status: BENG-42\n")});
    expect_ending(run_with(arguments(path)), "FSMC-042\n", 42);
    EXPECT_EQ(daemon.finish(), "");
}

// ---------------------------------------------------------------------------------------------
// How many

/// The kernel passes an empty name where there is none.
TEST_F(Callers, EmptyArgumentVector) {
    std::string help = run_with({}).errors;
    const std::string name = harness::lumocmd_path();
    ASSERT_NE(help.find(name), std::string::npos);
    expect_ending(run_oddly({.empty_vector = true}), "", 506,
                  help.erase(help.find(name), name.size()));
}

TEST_F(Callers, ThousandsOfOptions) {
    expect_usual_request([](const std::string &path) {
        words all;
        for (int i = 0; i < 3000; i++) {
            all.insert(all.end(), {"-v", "ON", "-v", "OFF", "-p", std::to_string(i), "-w", "7",
                                   "-s", "/nowhere", "-t", "SOAP"});
        }
        const words last = bentel(path);
        all.insert(all.end(), last.begin(), last.end());
        return all;
    });
}

TEST_F(Callers, ThousandsOfWords) {
    const std::string malformed = red("utility->parse_cmd_line malformed request");
    expect_ending(run_with(words(20000, "extra")), malformed, 505);
    expect_ending(run_with(words(20000, "")), malformed, 505);
    expect_ending(run_with(words(20000, "-")), malformed, 505);
    expect_ending(run_with(words(20000, "--")), malformed, 505);
}

// ---------------------------------------------------------------------------------------------
// How long

TEST_F(Callers, LongestNumber) {
    const std::string digits(LONGEST_ARGUMENT, '9');
    expect_ending(run_with({"-d", digits}),
                  red("utility->parse_cmd_line bad parameter: service port must be a number and "
                      "upper than 1024"),
                  502);
    expect_ending(run_with({"-w", digits}),
                  red("utility->parse_cmd_line bad parameter: waittime must be a number"), 502);
}

TEST_F(Callers, LongestKeyword) {
    const std::string text(LONGEST_ARGUMENT, 'S');
    expect_ending(run_with({"-t", text}), red(NOT_PARSED) + "LMCM-505\n", 505);
    expect_ending(run_with({"-v", text}), red(NOT_PARSED) + "LMCM-505\n", 505);
}

TEST_F(Callers, LongestFunction) {
    const std::string text(LONGEST_ARGUMENT, 'F');
    expect_ending(run_with({"-t", "BENTELLOCAL", "-s", "/n", "-f", text, "-p", "a|b|c|d"}),
                  "LMCM-503\n", 503);
    expect_ending(run_with({"-t", "SOAP", "-u", "http://127.0.0.1/", "-f", text}), "LMCM-503\n",
                  503);
    // Any name is FSMCore's; this one makes too long a request.
    const ending core = run_with({"-t", "FSMCORE", "-s", "/nowhere", "-f", text, "-p", "a"});
    expect_status(core, 8);
    EXPECT_TRUE(core.output.ends_with("\nFSMC-008\n"));
}

TEST_F(Callers, LongestSocketPath) {
    // Cut to what an address holds it is a directory of the caller's.
    const harness::temporary_directory directory;
    std::string path = directory.path;
    path.resize(LONGEST_ARGUMENT, '/');
    const ending end = run_with(bentel(path));
    expect_ending(end,
                  red("utility->make_localtcpclient_socket connect failed with error 'Connection "
                      "refused'") +
                      red(std::string(BENTEL_TAG) +
                          "error opening socket BENTELGateway clientside for function '" +
                          BENTEL_FUNCTION + "'") +
                      "BENT-1305\n",
                  1305);
}

TEST_F(Callers, LongestLists) {
    const std::string wrong_count =
        red("localclientutil->make_bentellocal_request error too few or too much parameters, "
            "SectionName, UserCode, Command, Payload are needed") +
        "LMCM-505\n";
    expect_ending(run_with(bentel("/n", std::string(LONGEST_ARGUMENT, 'a'))), wrong_count, 505);
    expect_ending(run_with(bentel("/n", std::string(LONGEST_ARGUMENT, '|'))), wrong_count, 505);
    std::string many;
    while (many.size() + 2 <= LONGEST_ARGUMENT) {
        many += "a|";
    }
    expect_ending(run_with(bentel("/n", many)), wrong_count, 505);
    // Four items, one of them longer than any request.
    const harness::temporary_directory directory;
    const std::string path = directory.path + "/s";
    peer daemon(path, {});
    const ending end = run_with(bentel(path, "a|b|c|" + std::string(LONGEST_ARGUMENT - 6, 'd')));
    expect_status(end, 1306);
    EXPECT_TRUE(end.output.ends_with("\nBENT-1306\n"));
    EXPECT_EQ(daemon.finish(), "");
    EXPECT_EQ(daemon.received(), "");
}

TEST_F(Callers, LongestListOfAService) {
    const std::string payload(LONGEST_ARGUMENT, 'p');
    peer service(harness::answering(harness::http_answer(harness::envelope(
        harness::response_element("flushondemand", "<result>LMWS-042</result>")))));
    expect_ending(run_with({"-t", "SOAP", "-u", harness::url_of(service), "-f",
                            "SERVICE_FLUSHONDEMAND", "-p", payload}),
                  SERVICE_STATUS_TEXT, SERVICE_STATUS);
    EXPECT_EQ(service.finish(), "");
    EXPECT_NE(service.received().find(harness::element("payload", payload)), std::string::npos);
}

TEST_F(Callers, LongestUrl) {
    const ending end =
        run_with({"-t", "SOAP", "-u", "http://" + std::string(LONGEST_ARGUMENT - 7, 'h'), "-f",
                  "SERVICE_TEST"});
    expect_status(end, 502);
    EXPECT_TRUE(end.output.ends_with("LMCM-502\n"));
}

// ---------------------------------------------------------------------------------------------
// Control characters are shown as they are

const char ODD_TEXT[] = "\033[2J\033]0;t\a\r\x7f\x01%s%n%\xff\xc3\x28";

TEST_F(Callers, ControlCharactersInArguments) {
    const std::string odd = ODD_TEXT;
    const ending end = run_with({"-v", "ON", "-t", "SOAP", "-a", odd, "-s", odd, "-p", odd, "-f",
                                 odd, "-u", "http://127.0.0.1:1/"});
    std::string output = harness::green(end.pid, "[lumocmd] Soap request selected");
    for (const char *name : {"Internet service address", "Socket", "Parameters", "Function"}) {
        output += harness::green(end.pid, std::string("[lumocmd] ") + name + " selected: " + odd);
    }
    output += harness::green(end.pid, "[lumocmd] Url selected: http://127.0.0.1:1/");
    expect_ending(end, output + "LMCM-503\n", 503);
}

TEST_F(Callers, ControlCharactersInARequest) {
    const std::string odd = ODD_TEXT;
    const harness::temporary_directory directory;
    const std::string path = directory.path + "/s";
    peer daemon(path, {expect("Request: SENDBENTELCOMMANDDATAGRAM\nSectionName: " + odd +
                              "\nUserCode: b\nCommand: " + odd + "\nPayload: d\n\n"),
                       reply("Response Status: BENG-42\n")});
    expect_ending(run_with(bentel(path, odd + "|b|" + odd + "|d")), "FSMC-042\n", 42);
    EXPECT_EQ(daemon.finish(), "");
}

TEST_F(Callers, ControlCharactersInMessages) {
    const std::string odd = ODD_TEXT;
    const ending end = run_with({"-t", "FSMCORE", "-s", "/nowhere", "-f", odd, "-p", "a"});
    expect_ending(end,
                  red("utility->make_localtcpclient_socket connect failed with error 'No such file "
                      "or directory'") +
                      red("FSMCoreutil->fsmcore_requeststatic error opening socket FSMCore "
                          "clientside for function '" +
                          odd + "'") +
                      "FSMC-006\n",
                  6);
}

/// A length line shorter than its tag is complained about and counts as empty.
TEST_F(Callers, ControlCharactersInAnAnswer) {
    const std::string odd = "\033[2J\r%s%n\a";
    const harness::temporary_directory directory;
    const std::string path = directory.path + "/s";
    peer daemon(path, {harness::collect_until("\n\n"),
                       reply("Response Status: FSMC-042\nParameter Count: 1\n" + odd + "\n")});
    const ending end = run_with({"-t", "FSMCORE", "-s", path, "-f", "GETSTATE", "-p", "a"});
    expect_ending(end,
                  red("memory->cut_message_to_preserve_newline len is greater than string length; "
                      "returning a null string. str = " +
                      odd + ", len = " + std::to_string(odd.size())) +
                      "FSMC-042\n",
                  42);
    EXPECT_EQ(daemon.finish(), "");
}

TEST_F(Callers, ControlCharactersInAServicesAnswer) {
    peer service(harness::answering(harness::http_answer(harness::envelope(
        harness::response_element("retrieveconfiguration",
                                  "<result>\x1b[2J%s%n\x7f--</result><url>\x1b[31m%n\a</url>")))));
    const ending end = run_with({"-t", "SOAP", "-u", harness::url_of(service), "-v", "ON", "-f",
                                 "SERVICE_RETRIEVECONFIGURATION", "-p", "s"});
    EXPECT_EQ(service.finish(), "");
    expect_ending(end,
                  harness::green(end.pid, "[lumocmd] Function selected: "
                                          "SERVICE_RETRIEVECONFIGURATION") +
                      harness::green(end.pid, "[lumocmd] Parameters selected: s") +
                      harness::green(end.pid, "[lumocmd] Url: \x1b[31m%n\a") +
                      harness::tagged_red(end.pid,
                                          "1 - Invalid argument for utility->extract_error_code "
                                          "\x1b[2J%s%n\x7f-- ") +
                      "LMCM-502\n",
                  502);
}

// ---------------------------------------------------------------------------------------------
// The environment is not read

const words ENVIRONMENTS[] = {
    {"LC_ALL=xx_XX.NOSUCH", "LANG=tr_TR.UTF-8", "LANGUAGE=de:fr", "LC_NUMERIC=de_DE.UTF-8"},
    {"LC_ALL=C.UTF-8"},
    {"LC_ALL=../../../../tmp", "LOCPATH=/dev/null", "NLSPATH=%N", "GCONV_PATH=/nowhere"},
    {"POSIXLY_CORRECT=1"},
    {"MALLOC_PERTURB_=165"},
    {"MALLOC_ARENA_MAX=1", "MALLOC_ARENA_TEST=1", "MALLOC_TOP_PAD_=1", "MALLOC_MMAP_THRESHOLD_=1"},
    {"GLIBC_TUNABLES=glibc.malloc.perturb=90:glibc.malloc.mmap_threshold=1"},
    {"GLIBC_TUNABLES=glibc.malloc.tcache_count=0"},
    {"TERM=garbage", "COLUMNS=-1", "LINES=0", "NO_COLOR=1", "TZ=:/dev/zero"},
    {"RES_OPTIONS=ndots:99 attempts:-1", "LOCALDOMAIN=.", "HOSTALIASES=/dev/null"},
    {"http_proxy=http://127.0.0.1:1/", "HTTP_PROXY=http://127.0.0.1:1/", "all_proxy=x"},
    {"HUGE=" + std::string(100000, 'x'), "=", "no equals sign", ""},
};

TEST_F(Callers, HostileEnvironments) {
    for (const words &settings : ENVIRONMENTS) {
        for (const bool alone : {false, true}) {
            SCOPED_TRACE(settings.front().substr(0, 40) + (alone ? " alone" : ""));
            odd_start start = {.empty_environment = alone, .settings = settings};
            for (const socket_request &request : socket_requests()) {
                const harness::temporary_directory directory;
                const std::string path = directory.path + "/s";
                peer daemon(path, {expect(request.request), reply(answer_of(request, "42"))});
                start.arguments = arguments_of(request, path);
                const ending end = run_oddly(start);
                expect_ending(end, progress_of(request, path, end.pid) + "FSMC-042\n", 42);
                EXPECT_EQ(daemon.finish(), "");
            }
            for (const service_request &request : SERVICE_REQUESTS) {
                peer service(answering_request(request));
                start.arguments = arguments_of(request, service);
                const ending end = run_oddly(start);
                expect_ending(end, green_lines(end.pid, request.answered) + SERVICE_STATUS_TEXT,
                              SERVICE_STATUS);
                EXPECT_EQ(service.finish(), "");
            }
            // Keywords and messages do not follow the language either.
            start.arguments = {"-t",   "eibinternet", "-a", "1.2.3.4", "-d",
                               "2000", "-f",          "F",  "-p",      "a"};
            expect_ending(run_oddly(start),
                          red("main->main error unimplemented feature") + "LMCM-507\n", 507);
            start.arguments = bentel("/nowhere");
            start.arguments[1] = "bentellocal";
            expect_ending(run_oddly(start),
                          red("utility->make_localtcpclient_socket connect failed with error 'No "
                              "such file or directory'") +
                              red(std::string(BENTEL_TAG) +
                                  "error opening socket BENTELGateway clientside for function '" +
                                  BENTEL_FUNCTION + "'") +
                              "BENT-1305\n",
                          1305);
        }
    }
}

/// The order of words is the system library's affair: with this setting it stops at the first word.
TEST_F(Callers, PosixOrderOfWords) {
    odd_start start = {.arguments = {"extra", "-t", "NOSUCH"}};
    expect_ending(run_oddly(start), red(NOT_PARSED) + "LMCM-505\n", 505);
    start.settings = {"POSIXLY_CORRECT=1"};
    expect_ending(run_oddly(start), red("utility->parse_cmd_line malformed request"), 505);
}

} // namespace
