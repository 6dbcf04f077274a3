// The whole life of a process: which client is called, with what, the last line and the exit
// status.

#include "tests/front/transcript.h"
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

harness::words request(const std::string &path, const std::string &list = FUNCTION.sample) {
    return {"-t", std::string(GATEWAY.name) + "LOCAL", "-s", path, "-f", FUNCTION.name, "-p", list};
}

harness::script answering(const std::string &status) {
    return {harness::expect(protocol::sample_request(FUNCTION, FUNCTION.name)),
            harness::reply(std::string("Response Status: ") + GATEWAY.prefix + status + "\n")};
}

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
        // The path is relative to the working directory.
        peer daemon(directory.path + "/s", answering(row.answered));
        const run_result run = harness::lumocmd(request("s"), {.directory = directory.path});
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

TEST(EveryByte, TravelsToAGatewayAndIsShown) {
    const temporary_directory directory;
    const std::string path = directory.path + "/s";
    std::vector<std::string> items = protocol::entries_of(FUNCTION.sample);
    items.back() = every_byte();
    const std::string list = protocol::joined(items, "|");
    peer daemon(path, {harness::expect(protocol::request_text(
                           FUNCTION, FUNCTION.name, protocol::values_of_list(FUNCTION, list))),
                       harness::reply(std::string("Response Status: ") + GATEWAY.prefix + "0\n")});
    harness::words words = request(path, list);
    words.insert(words.begin(), {"-v", "ON"});
    const run_result run = harness::lumocmd(words);
    EXPECT_EQ(daemon.finish(), "");
    EXPECT_EQ(untagged_output(run), green(std::string(GATEWAY.name) + " Local request selected") +
                                        green("Socket selected: " + path) +
                                        green(std::string("Function selected: ") + FUNCTION.name) +
                                        green("Parameters selected: " + list) + plain("LMCM-0000"));
    EXPECT_EQ(run.status, 0);
}

TEST(EveryByte, TravelsToFsmcoreAndBack) {
    const temporary_directory directory;
    const std::string path = directory.path + "/s";
    const std::string parameter = "Param000 Length: 253\nParam000:\n" + every_byte() + "\n";
    peer daemon(
        path, {harness::expect("Request: F\nParameter Count: 1\n" + parameter + "Waittime: 5\n\n"),
               harness::reply("Response Status: FSMC-004\nParameter Count: 1\n" + parameter)});
    const run_result run =
        harness::lumocmd({"-t", "FSMCORE", "-s", path, "-f", "F", "-p", every_byte()});
    EXPECT_EQ(daemon.finish(), "");
    EXPECT_EQ(run.output, plain("FSMC-004"));
    EXPECT_EQ(run.status, 4);
}

// --- Dispatch

// One parameter too many names the client that was called.
TEST(Dispatch, CallsTheClientOfTheType) {
    for (const protocol::gateway_row *gateway : protocol::GATEWAYS) {
        if (protocol::is_reachable(*gateway)) {
            const protocol::function_row &function = gateway->functions.front();
            expect_transcript(
                std::string("-t ") + gateway->name + "LOCAL -s S -f " + function.name + " -p " +
                    protocol::list_of(protocol::count_of(function) + 1),
                red(protocol::count_message(*gateway, function)) + plain("LMCM-505"), 505);
        }
    }
}

// The parser stopped early, so nothing was required: absent texts reach the client.
TEST(Dispatch, AbsentTextsCountAsEmpty) {
    const std::string unreachable =
        red(std::string("utility->make_localtcpclient_socket connect failed with error '") +
            strerror(EINVAL) + "'") +
        red("FSMCoreutil->fsmcore_requeststatic error opening socket FSMCore clientside for "
            "function 'F'");
    for (const char *line : {"-t FSMCORE -f F -v maybe", "-t FSMCORE -s '' -f F -p ''"}) {
        expect_transcript(line, unreachable + plain("FSMC-006"), 6);
    }
    for (const protocol::request_type_row &row :
         protocol::request_types_that([](const auto &each) { return each.carried; })) {
        expect_transcript("-t " + row.keyword + " -s S -p a -t NOSUCH", plain("LMCM-503"), 503);
    }
}

} // namespace
