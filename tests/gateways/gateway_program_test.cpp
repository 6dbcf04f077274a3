// The gateways end to end: the real program against a scripted daemon.

#include "tests/gateways/exchange_messages.h"
#include "tests/harness/console.h"
#include "tests/harness/peer.h"
#include "tests/harness/process.h"

#include <gtest/gtest.h>
#include <tuple>

namespace {

using namespace harness;
using namespace protocol;

std::string keyword_of(const function_case &row) {
    return std::string(row.gateway->name) + "LOCAL";
}

/// What the daemon at that path is asked with these options.
run_result ask(const function_case &row, const std::string &path, const words &options) {
    words all = options;
    all.insert(all.end(), {"-t", keyword_of(row), "-s", path, "-f", row.function->name, "-p",
                           row.function->sample});
    return lumocmd(all);
}

// What is left of a code in eight bits is the exit status: 105 stays, 805 becomes 37.
void expect_run(const run_result &run, const std::string &output, int code) {
    EXPECT_EQ(run.output, output);
    EXPECT_EQ(run.errors, "");
    EXPECT_EQ(run.status, code & 0xff);
}

std::vector<function_case> functions_carried() {
    return functions_that([](const gateway_row &gateway, const function_row &function) {
        return is_reachable(gateway) && function.built == builder_answer::SENDS;
    });
}

TEST(GatewayProgram, CarriesEveryFunction) {
    const temporary_directory directory;
    for (const function_case &row : functions_carried()) {
        SCOPED_TRACE(name_of(row));
        const auto &[gateway, function] = row;
        const std::string path = directory.path + "/" + function->name;
        const int code = gateway->base + 2; // a code of the daemon's own
        peer daemon(path, {expect(sample_request(*function, function->name)),
                           reply(std::string("Response Status: ") + gateway->prefix +
                                 std::to_string(code) + "\n")});
        const run_result run = ask(row, path, {"-v", "ON"});
        expect_run(
            run,
            green(run.pid, std::string("[lumocmd] ") + gateway->name + " Local request selected") +
                green(run.pid, "[lumocmd] Socket selected: " + path) +
                green(run.pid, std::string("[lumocmd] Function selected: ") + function->name) +
                green(run.pid, std::string("[lumocmd] Parameters selected: ") + function->sample) +
                shown_code(*gateway, code) + "\n",
            code);
        EXPECT_EQ(daemon.finish(), "");
    }
}

TEST(GatewayProgram, ShowsAnyNumberOfTheDaemon) {
    const temporary_directory directory;
    const function_case row = functions_carried().front();
    for (const auto &[number, text, code] : {std::tuple{"0000", "LMCM-0000\n", 0},
                                             {"0003", "FSMC-003\n", 3},
                                             {"1307", "BENT-1307\n", 1307},
                                             {"-4", "LMCM--004\n", -4}}) {
        SCOPED_TRACE(number);
        const std::string path = directory.path + "/" + number;
        peer daemon(path, {collect_until("\n\n"),
                           reply(std::string("Response Status: ") + row.gateway->prefix + number)});
        expect_run(ask(row, path, {"-v", "OFF"}), text, code);
        EXPECT_EQ(daemon.finish(), "");
    }
}

/// The parser stops at an unknown -v value, so the later options stay absent.
TEST(GatewayProgram, DoesWithoutAFunctionOrASocket) {
    const function_case row = functions_carried().front();
    expect_run(lumocmd({"-t", keyword_of(row), "-s", "/nowhere", "-v", "maybe"}), "LMCM-503\n",
               503);
    const int code = row.gateway->base + 5;
    expect_run(
        lumocmd({"-t", keyword_of(row), "-f", row.function->name, "-p", row.function->sample, "-v",
                 "maybe"}),
        red("utility->make_localtcpclient_socket connect failed with error 'Invalid argument'") +
            red(exchange_message(*row.gateway, 1, row.function->name)) +
            shown_code(*row.gateway, code) + "\n",
        code);
}

} // namespace
