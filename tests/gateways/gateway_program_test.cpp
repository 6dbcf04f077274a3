// The gateways end to end: the real program against a scripted daemon.

#include "tests/gateways/exchange_messages.h"
#include "tests/harness/console.h"
#include "tests/harness/peer.h"
#include "tests/harness/process.h"

#include <cerrno>
#include <cstring>
#include <gtest/gtest.h>
#include <unistd.h>

namespace {

using namespace harness;
using namespace protocol;

class GatewayProgram : public testing::TestWithParam<function_case> {
  protected:
    const gateway_row &gateway = *GetParam().gateway;
    const function_row &function = *GetParam().function;
    const std::string keyword = std::string(gateway.name) + "LOCAL";
    temporary_directory directory;
    std::string path = directory.path + "/" + gateway.socket;

    words command(const words &options = {}) const {
        words all = options;
        const words rest = {"-t", keyword, "-s", path, "-f", function.name, "-p", function.sample};
        all.insert(all.end(), rest.begin(), rest.end());
        return all;
    }

    std::string answer(const std::string &number) const {
        return std::string("Response Status: ") + gateway.prefix + number + "\n";
    }

    /// The progress lines of command({"-v", "ON"}).
    std::string progress(pid_t pid) const {
        return green(pid, std::string("[lumocmd] ") + gateway.name + " Local request selected") +
               green(pid, "[lumocmd] Socket selected: " + path) +
               green(pid, std::string("[lumocmd] Function selected: ") + function.name) +
               green(pid, std::string("[lumocmd] Parameters selected: ") + function.sample);
    }

    std::string message(int number, int error_number = 0) const {
        return exchange_message(gateway, number, function.name, strerror(error_number));
    }

    std::string last_line(int code) const {
        return shown_code(gateway, code) + "\n";
    }

    // What is left of a code in eight bits is the exit status: 105 stays, 805 becomes 37.
    static void expect_run(const run_result &run, const std::string &output, int code) {
        EXPECT_EQ(run.output, output);
        EXPECT_EQ(run.errors, "");
        EXPECT_EQ(run.status, code & 0xff);
    }
};

/// A number in the four digits that the daemons write.
std::string four_digits(int number) {
    const std::string digits = std::to_string(number);
    return std::string("0000").substr(0, 4 - digits.size()) + digits;
}

TEST_P(GatewayProgram, AnsweredRequest) {
    const int own = gateway.base + 2;
    const int malformed = gateway.base + 7;
    struct {
        words options;
        std::string number;
        std::string text;
        int code;
    } const runs[] = {{{}, "0000", "LMCM-0000\n", 0},
                      {{"-v", "OFF"}, "0003", "FSMC-003\n", 3},
                      {{"-v", "ON"}, "0003", "FSMC-003\n", 3},
                      {{"-v", "OFF"}, four_digits(own), last_line(own), own},
                      {{"-v", "ON"}, four_digits(own), last_line(own), own},
                      {{"-v", "OFF"}, std::to_string(own), last_line(own), own},
                      {{"-v", "ON"}, std::to_string(own), last_line(own), own},
                      {{"-v", "OFF"}, four_digits(malformed), last_line(malformed), malformed},
                      {{"-v", "ON"}, four_digits(malformed), last_line(malformed), malformed}};
    for (const auto &wanted : runs) {
        SCOPED_TRACE(wanted.number);
        unlink(path.c_str());
        peer daemon(
            path, {expect(sample_request(function, function.name)), reply(answer(wanted.number))});
        const run_result run = lumocmd(command(wanted.options));
        const bool shown = wanted.options == words{"-v", "ON"};
        expect_run(run, (shown ? progress(run.pid) : "") + wanted.text, wanted.code);
        EXPECT_EQ(daemon.finish(), "");
    }
}

TEST_P(GatewayProgram, LowerCaseAndARelativeSocket) {
    const std::string lower_case = lower(function.name);
    peer daemon(path, {expect(sample_request(function, lower_case)), reply(answer("0"))});
    expect_run(
        lumocmd({"-t", keyword, "-s", gateway.socket, "-f", lower_case, "-p", function.sample},
                {.directory = directory.path}),
        "LMCM-0000\n", 0);
    EXPECT_EQ(daemon.finish(), "");
}

TEST_P(GatewayProgram, ConnectionRefused) {
    const char connector[] = "utility->make_localtcpclient_socket connect failed with error 'No "
                             "such file or directory'";
    const int code = gateway.base + 5;
    expect_run(lumocmd(command()), red(connector) + red(message(1)) + last_line(code), code);
    const run_result run = lumocmd(command({"-v", "ON"}));
    expect_run(run,
               progress(run.pid) + tagged_red(run.pid, connector) +
                   tagged_red(run.pid, message(1)) + last_line(code),
               code);
}

TEST_P(GatewayProgram, UnreadableAnswer) {
    const int code = gateway.base + 7;
    struct {
        script steps;
        std::string message;
    } const runs[] = {{{collect_until("\n\n"), reply(answer("0003\r"))}, message(7)},
                      {{collect_until("\n\n"), close_connection()}, message(5)},
                      {{await_bytes(), close_connection()}, message(4, ECONNRESET)}};
    for (const auto &wanted : runs) {
        SCOPED_TRACE(wanted.message);
        unlink(path.c_str());
        peer daemon(path, wanted.steps);
        const run_result run = lumocmd(command({"-v", "ON"}));
        expect_run(run, progress(run.pid) + tagged_red(run.pid, wanted.message) + last_line(code),
                   code);
        EXPECT_EQ(daemon.finish(), "");
    }
}

bool is_carried(const gateway_row &gateway, const function_row &function) {
    return is_reachable(gateway) && function.built == builder_answer::SENDS;
}

INSTANTIATE_TEST_SUITE_P(Rows, GatewayProgram, testing::ValuesIn(functions_that(is_carried)),
                         [](const auto &row) { return name_of(row.param); });

/// Last lines spelt out, where the digits or the prefix differ from the daemon's.
TEST(GatewayProgramRules, ShownCodesInFull) {
    EXPECT_EQ(shown_code(gateway_named("EIB"), 105), "EIBG-105");
    EXPECT_EQ(shown_code(gateway_named("SMSTOOL"), 805), "SMST-805");
    EXPECT_EQ(shown_code(gateway_named("VIVALDI"), 902), "VIVG-0902");
    EXPECT_EQ(shown_code(gateway_named("TECNOUT"), 1207), "TECN-1207");
    EXPECT_EQ(shown_code(gateway_named("BENTEL"), 1305), "BENT-1305");
}

const char BENTEL_FUNCTION[] = "SENDBENTELCOMMANDDATAGRAM";

TEST(GatewayProgramRules, LineFeedInAValueSplitsItsLine) {
    const temporary_directory directory;
    const std::string path = directory.path + "/s";
    peer daemon(path, {expect("Request: SENDBENTELCOMMANDDATAGRAM\nSectionName: a\nUserCode: b\n"
                              "Injected: c\nCommand: d\nPayload: e\n\n"),
                       reply("Response Status: BENG-0000\n")});
    const run_result run = lumocmd(
        {"-t", "BENTELLOCAL", "-s", path, "-f", BENTEL_FUNCTION, "-p", "a|b\nInjected: c|d|e"});
    EXPECT_EQ(daemon.finish(), "");
    EXPECT_EQ(run.output, "LMCM-0000\n");
    EXPECT_EQ(run.status, 0);
}

/// Whether the daemon is gone before or after the request was sent, the process reports it and
/// lives on to print its last line.
TEST(GatewayProgramRules, DaemonThatClosesAtOnceDoesNotEndTheProcess) {
    for (int i = 0; i < 20; i++) {
        const temporary_directory directory;
        const std::string path = directory.path + "/s";
        peer daemon(path, {close_connection()});
        const run_result run =
            lumocmd({"-t", "BENTELLOCAL", "-s", path, "-f", BENTEL_FUNCTION, "-p", "a|b|c|d"});
        EXPECT_EQ(daemon.finish(), "");
        if (run.status == (1306 & 0xff)) {
            EXPECT_EQ(run.output,
                      red("BENTELGatewayutil->bentelgateway_local_request send writing request "
                          "failed with error 'Broken pipe' for function "
                          "'SENDBENTELCOMMANDDATAGRAM'") +
                          "BENT-1306\n");
        } else {
            EXPECT_EQ(run.output,
                      red("BENTELGatewayutil->bentelgateway_local_request recv reading response "
                          "failed with error 'Connection reset by peer' for function "
                          "'SENDBENTELCOMMANDDATAGRAM'") +
                          "BENT-1307\n");
            EXPECT_EQ(run.status, 1307 & 0xff);
        }
    }
}

TEST(GatewayProgramRules, UnservedFunctionIsRefusedSilently) {
    const temporary_directory directory;
    const std::string path = directory.path + "/s";
    peer daemon(path, {});
    for (const words &request :
         {words{"LINTRONICLOCAL", "SENDLINTRONICRAWDATAGRAM", "cellar|07|012|on"},
          words{"VIVALDILOCAL", "SENDVIVALDIGETDATAGRAM", "music|1|2"},
          words{"EIBLOCAL", "SENDBENTELCOMMANDDATAGRAM", "a|b|c|d"}}) {
        const run_result run =
            lumocmd({"-t", request[0], "-s", path, "-f", request[1], "-p", request[2]});
        EXPECT_EQ(run.output, "LMCM-503\n");
        EXPECT_EQ(run.errors, "");
        EXPECT_EQ(run.status, 503 & 0xff);
    }
    EXPECT_EQ(daemon.finish_unvisited(), "");
}

TEST(GatewayProgramRules, WrongCountAndWrongFormat) {
    const temporary_directory directory;
    const std::string path = directory.path + "/s";
    peer daemon(path, {});
    const run_result empty =
        lumocmd({"-t", "TUTONDOLOCAL", "-s", path, "-f", "SENDTUTONDOSETDATAGRAM", "-p", ""});
    EXPECT_EQ(empty.output,
              red("localclientutil->make_tutondolocal_request error too few or too much "
                  "parameters, SectionName,  ZoneNumber, Command, Payload are needed") +
                  "LMCM-505\n");
    EXPECT_EQ(empty.status, 505 & 0xff);
    const run_result device = lumocmd({"-t", "LINTRONICLOCAL", "-s", path, "-f",
                                       "SENDLINTRONICDATAGRAM", "-p", "cellar|7|012|on"});
    EXPECT_EQ(device.output, red("localclientutil->make_lintroniclocal_request error Device is not "
                                 "in 2-digit-zero-filled format") +
                                 "LMCM-502\n");
    EXPECT_EQ(device.status, 502 & 0xff);
    EXPECT_EQ(daemon.finish_unvisited(), "");
}

/// The parser stops at an unknown -v value, so the later options stay absent.
TEST(GatewayProgramRules, AbsentStrings) {
    const run_result no_function =
        lumocmd({"-t", "EIBLOCAL", "-s", "/nowhere", "-p", "a|b|c|d", "-v", "maybe"});
    EXPECT_EQ(no_function.output, "LMCM-503\n");
    EXPECT_EQ(no_function.status, 503 & 0xff);
    const run_result no_socket = lumocmd({"-t", "BENTELLOCAL", "-f", BENTEL_FUNCTION, "-p",
                                          "a|b|c|d", "-v", "maybe", "-s", "/nowhere"});
    EXPECT_EQ(no_socket.output,
              red("utility->make_localtcpclient_socket connect failed with error 'Invalid "
                  "argument'") +
                  red("BENTELGatewayutil->bentelgateway_local_request error opening socket "
                      "BENTELGateway clientside for function 'SENDBENTELCOMMANDDATAGRAM'") +
                  "BENT-1305\n");
    EXPECT_EQ(no_socket.status, 1305 & 0xff);
}

TEST(GatewayProgramRules, NegativeNumberOfTheDaemon) {
    const temporary_directory directory;
    const std::string path = directory.path + "/s";
    peer daemon(path, {collect_until("\n\n"), reply("Response Status: BENG--4\n")});
    const run_result run =
        lumocmd({"-t", "BENTELLOCAL", "-s", path, "-f", BENTEL_FUNCTION, "-p", "a|b|c|d"});
    EXPECT_EQ(daemon.finish(), "");
    EXPECT_EQ(run.output, "LMCM--004\n");
    EXPECT_EQ(run.status, 252);
}

} // namespace
