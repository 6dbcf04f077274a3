// The whole life of a process: which client is called, with what, the last line and the exit
// status.

#include "tests/front/transcript.h"
#include "tests/fsmcore/fsmcore_exchanges.h"
#include "tests/protocol/gateways.h"

#include <climits>

namespace {

using namespace front_tests;
using harness::family;
using harness::meeting_point;
using harness::run_result;

const protocol::gateway_row &GATEWAY = protocol::any_gateway();
const protocol::function_row &FUNCTION = GATEWAY.functions.front();

/// Asks the daemon for the function with this list, and shows the text of its answer's code.
void expect_carried(const protocol::function_case &row, const std::string &list, int code,
                    const std::string &text) {
    SCOPED_TRACE(name_of(row) + " " + text);
    const auto &[gateway, function] = row;
    const meeting_point point(
        family::UNIX_SOCKET,
        {harness::expect(
             request_text(function, function.name, protocol::values_of_list(function, list))),
         harness::reply(std::string("Response Status: ") + gateway.prefix + std::to_string(code) +
                        "\n")});
    const std::string name = gateway.name;
    // The path is relative to the working directory.
    const run_result run = harness::lumocmd(
        {"-v", "ON", "-t", name + "LOCAL", "-s", "s", "-f", function.name, "-p", list},
        {.directory = point.directory.path});
    EXPECT_EQ(point.daemon->finish(), "");
    EXPECT_EQ(untagged_output(run), green(name + " Local request selected") +
                                        green("Socket selected: s") +
                                        green(std::string("Function selected: ") + function.name) +
                                        green("Parameters selected: " + list) + plain(text));
    EXPECT_EQ(run.errors, "");
    EXPECT_EQ(run.status, code & 0xff);
}

TEST(LastLine, IsTheTextOfTheDaemonsStatusWhichIsTheExitStatus) {
    for (const auto &[code, text] : {std::pair{0, "LMCM-0000"},
                                     {1302, "BENT-1302"},
                                     {256, "ECHG-256"},
                                     {-1, "LMCM--001"},
                                     {INT_MIN, "LMCM--2147483648"}}) {
        expect_carried({GATEWAY, FUNCTION}, FUNCTION.sample, code, text);
    }
}

TEST(LastLine, StandsBehindTheSameColoursOnATerminal) {
    SKIP_WHERE_MISSING(harness::missing_terminal());
    run_result run = harness::lumocmd({"-t", "FSMCORE", "-f", "F", "-s", "/nowhere", "-p", "x"},
                                      {.on_terminal = true});
    std::erase(run.output, '\r');
    EXPECT_EQ(run.output, red("utility->make_localtcpclient_socket connect failed with error "
                              "'No such file or directory'") +
                              red(fsmcore_message(LOCAL, 1, "F")) + plain("FSMC-006"));
}

TEST(Dispatch, CarriesEveryFunctionToItsGateway) {
    for (const protocol::function_case &row : protocol::all_functions()) {
        if (is_reachable(row.gateway) && row.function.built == protocol::builder_answer::SENDS) {
            const int code = row.gateway.base + 2;
            expect_carried(row, row.function.sample, code, shown_code(row.gateway, code));
        }
    }
}

/// Whether or not the machine's char has a sign.
TEST(EveryByte, TravelsToAGatewayAndIsShown) {
    std::string bytes;
    for (int byte = 1; byte < 256; byte++) {
        if (byte != '\n' && byte != '|') { // these would end the line and the item
            bytes += static_cast<char>(byte);
        }
    }
    harness::words items = protocol::entries_of(FUNCTION.sample);
    items.back() = bytes;
    expect_carried({GATEWAY, FUNCTION}, protocol::joined(items, "|"), 0, "LMCM-0000");
}

// The parser stopped early, so nothing was required: absent texts reach the client.
TEST(Dispatch, AbsentTextsCountAsEmpty) {
    for (const char *line : {"-t FSMCORE -f F -v maybe", "-t FSMCORE -s S -s '' -f G -f F -p ''"}) {
        expect_transcript(line,
                          red("utility->make_localtcpclient_socket connect failed with error "
                              "'Invalid argument'") +
                              red(fsmcore_message(LOCAL, 1, "F")) + plain("FSMC-006"),
                          6);
    }
    for (const protocol::request_type_row &row : protocol::request_types()) {
        if (row.carried) {
            expect_transcript("-t " + row.keyword + " -s S -p a -t NOSUCH", plain("LMCM-503"), 503);
        }
    }
}

} // namespace
