// The whole life of a process: which client is called, with what, the last line and the exit
// status.

#include "tests/front/transcript.h"
#include "tests/fsmcore/fsmcore_exchanges.h"
#include "tests/gateways/exchange_messages.h"
#include "tests/harness/peer.h"
#include "tests/protocol/request_types.h"

#include <cerrno>
#include <cstring>

namespace {

using namespace front_tests;
using harness::peer;
using harness::run_result;
using harness::temporary_directory;

const protocol::gateway_row &GATEWAY = protocol::any_gateway();
const protocol::function_row &FUNCTION = GATEWAY.functions.front();

TEST(LastLine, IsTheTextOfTheDaemonsStatusWhichIsTheExitStatus) {
    const struct {
        const char *answered;
        const char *text;
        int status; ///< as the shell sees it
    } rows[] = {
        {"0000", "LMCM-0000", 0},
        {"1302", "BENT-1302", 22},
        {"402", "LMWS-402", 146},
        {"256", "ECHG-256", 0},
        {"-1", "LMCM--001", 255},
        {"2147483647", "LGMG-2147483647", 255},
        {"-2147483648", "LMCM--2147483648", 0},
    };
    for (const auto &row : rows) {
        const temporary_directory directory;
        peer daemon(directory.path + "/s", {harness::collect_until("\n\n"),
                                            harness::reply(std::string("Response Status: ") +
                                                           GATEWAY.prefix + row.answered + "\n")});
        // The path is relative to the working directory.
        const run_result run = harness::lumocmd({"-t", std::string(GATEWAY.name) + "LOCAL", "-s",
                                                 "s", "-f", FUNCTION.name, "-p", FUNCTION.sample},
                                                {.directory = directory.path});
        EXPECT_EQ(daemon.finish(), "");
        EXPECT_EQ(run.output, plain(row.text));
        EXPECT_EQ(run.errors, "");
        EXPECT_EQ(run.status, row.status);
    }
}

// --- Values are bytes, not characters, whether or not the machine's char has a sign

/// Every byte but zero, the line feed (it would end the line) and the bar (it would end the item).
std::string every_byte() {
    std::string bytes;
    for (int byte = 1; byte < 256; byte++) {
        if (byte != '\n' && byte != '|') {
            bytes += static_cast<char>(byte);
        }
    }
    return bytes;
}

/// The daemon is asked for the function with this list, and a code of its own comes back.
void expect_carried(const protocol::function_case &row, const std::string &list) {
    SCOPED_TRACE(name_of(row));
    const auto &[gateway, function] = row;
    const temporary_directory directory;
    const int code = gateway.base + 2;
    peer daemon(directory.path + "/s",
                {harness::expect(protocol::request_text(function, function.name,
                                                        protocol::values_of_list(function, list))),
                 harness::reply(std::string("Response Status: ") + gateway.prefix +
                                std::to_string(code) + "\n")});
    const std::string name = gateway.name;
    const run_result run = harness::lumocmd(
        {"-v", "ON", "-t", name + "LOCAL", "-s", "s", "-f", function.name, "-p", list},
        {.directory = directory.path});
    EXPECT_EQ(daemon.finish(), "");
    EXPECT_EQ(untagged_output(run), green(name + " Local request selected") +
                                        green("Socket selected: s") +
                                        green(std::string("Function selected: ") + function.name) +
                                        green("Parameters selected: " + list) +
                                        plain(protocol::shown_code(gateway, code)));
    EXPECT_EQ(run.errors, "");
    EXPECT_EQ(run.status, code & 0xff);
}

TEST(EveryByte, TravelsToAGatewayAndIsShown) {
    std::vector<std::string> items = protocol::entries_of(FUNCTION.sample);
    items.back() = every_byte();
    expect_carried({GATEWAY, FUNCTION}, protocol::joined(items, "|"));
}

/// Returned parameters are not shown, and the wait time is the web service's.
TEST(EveryByte, TravelsToFsmcoreAndBack) {
    const temporary_directory directory;
    const std::string list = every_byte() + "|on";
    const std::string parameter = "Param000 Length: 253\nParam000:\n" + every_byte() + "\n";
    peer daemon(directory.path + "/s",
                {harness::expect("Request: F\nParameter Count: 2\n" + parameter +
                                 "Param001 Length: 2\nParam001:\non\nWaittime: 5\n\n"),
                 harness::reply("Response Status: FSMC-004\nParameter Count: 1\n" + parameter)});
    const run_result run = harness::lumocmd(
        {"-v", "ON", "-t", "fsmcore", "-s", "s", "-f", "F", "-p", list, "-w", "30"},
        {.directory = directory.path});
    EXPECT_EQ(daemon.finish(), "");
    EXPECT_EQ(untagged_output(run),
              green("FSMCore local request selected") + green("Socket selected: s") +
                  green("Function selected: F") + green("Parameters selected: " + list) +
                  green("Waittime selected: 30") + plain("FSMC-004"));
    EXPECT_EQ(run.errors, "");
    EXPECT_EQ(run.status, 4);
}

// --- Dispatch

TEST(Dispatch, CarriesEveryFunctionToItsGateway) {
    for (const protocol::function_case &row : protocol::all_functions()) {
        if (is_reachable(row.gateway) && row.function.built == protocol::builder_answer::SENDS) {
            expect_carried(row, row.function.sample);
        }
    }
}

// The parser stopped early, so nothing was required: absent texts reach the client.
TEST(Dispatch, AbsentTextsCountAsEmpty) {
    const std::string no_socket =
        red(std::string("utility->make_localtcpclient_socket connect failed with error '") +
            strerror(EINVAL) + "'");
    for (const char *line : {"-t FSMCORE -f F -v maybe", "-t FSMCORE -s '' -f F -p ''"}) {
        expect_transcript(line, no_socket + red(fsmcore_message(LOCAL, 1, "F")) + plain("FSMC-006"),
                          6);
    }
    const int code = GATEWAY.base + 5;
    expect_transcript(std::string("-t ") + GATEWAY.name + "LOCAL -f " + FUNCTION.name + " -p '" +
                          FUNCTION.sample + "' -v maybe",
                      no_socket + red(exchange_message(GATEWAY, 1, FUNCTION.name)) +
                          plain(protocol::shown_code(GATEWAY, code)),
                      code);
    for (const protocol::request_type_row &row : protocol::request_types()) {
        if (row.carried) {
            expect_transcript("-t " + row.keyword + " -s S -p a -t NOSUCH", plain("LMCM-503"), 503);
        }
    }
}

} // namespace
