// The gateways end to end: the real program against a scripted daemon.

#include "tests/gateways/exchange_messages.h"
#include "tests/harness/console.h"
#include "tests/harness/peer.h"
#include "tests/harness/process.h"

#include <gtest/gtest.h>
#include <unistd.h>

namespace {

using namespace harness;
using namespace protocol;

class GatewayProgram : public testing::Test {
  protected:
    temporary_directory directory;
    std::string path = directory.path + "/s";

    words command(const function_case &row, const words &options = {}) const {
        words all = options;
        all.insert(all.end(), {"-t", std::string(row.gateway->name) + "LOCAL", "-s", path, "-f",
                               row.function->name, "-p", row.function->sample});
        return all;
    }

    /// The progress lines of that command with -v ON.
    std::string progress(pid_t pid, const function_case &row) const {
        return green(pid,
                     std::string("[lumocmd] ") + row.gateway->name + " Local request selected") +
               green(pid, "[lumocmd] Socket selected: " + path) +
               green(pid, std::string("[lumocmd] Function selected: ") + row.function->name) +
               green(pid, std::string("[lumocmd] Parameters selected: ") + row.function->sample);
    }

    // What is left of a code in eight bits is the exit status: 105 stays, 805 becomes 37.
    static void expect_run(const run_result &run, const std::string &output, int code) {
        EXPECT_EQ(run.output, output);
        EXPECT_EQ(run.errors, "");
        EXPECT_EQ(run.status, code & 0xff);
    }
};

std::vector<function_case> functions_carried() {
    return functions_that([](const gateway_row &gateway, const function_row &function) {
        return is_reachable(gateway) && function.built == builder_answer::SENDS;
    });
}

TEST_F(GatewayProgram, CarriesEveryFunction) {
    for (const function_case &row : functions_carried()) {
        SCOPED_TRACE(name_of(row));
        unlink(path.c_str());
        const int code = row.gateway->base + 2; // a code of the daemon's own
        peer daemon(path, {expect(sample_request(*row.function, row.function->name)),
                           reply(std::string("Response Status: ") + row.gateway->prefix +
                                 std::to_string(code) + "\n")});
        const run_result run = lumocmd(command(row, {"-v", "ON"}));
        expect_run(run, progress(run.pid, row) + shown_code(*row.gateway, code) + "\n", code);
        EXPECT_EQ(daemon.finish(), "");
    }
}

TEST_F(GatewayProgram, ShowsAnyNumberOfTheDaemon) {
    const function_case row = functions_carried().front();
    struct {
        const char *number;
        const char *text;
        int code;
    } const answers[] = {{"0000", "LMCM-0000\n", 0},
                         {"0003", "FSMC-003\n", 3},
                         {"1307", "BENT-1307\n", 1307},
                         {"-4", "LMCM--004\n", -4}};
    for (const auto &answer : answers) {
        SCOPED_TRACE(answer.number);
        unlink(path.c_str());
        peer daemon(path, {collect_until("\n\n"), reply(std::string("Response Status: ") +
                                                        row.gateway->prefix + answer.number)});
        expect_run(lumocmd(command(row, {"-v", "OFF"})), answer.text, answer.code);
        EXPECT_EQ(daemon.finish(), "");
    }
}

TEST_F(GatewayProgram, SaysWhyThereIsNoConnection) {
    const function_case row = functions_carried().front();
    const char connector[] = "utility->make_localtcpclient_socket connect failed with error 'No "
                             "such file or directory'";
    const int code = row.gateway->base + 5;
    const std::string message = exchange_message(*row.gateway, 1, row.function->name);
    const std::string last_line = shown_code(*row.gateway, code) + "\n";
    expect_run(lumocmd(command(row)), red(connector) + red(message) + last_line, code);
    const run_result run = lumocmd(command(row, {"-v", "ON"}));
    expect_run(run,
               progress(run.pid, row) + tagged_red(run.pid, connector) +
                   tagged_red(run.pid, message) + last_line,
               code);
}

/// The parser stops at an unknown -v value, so the later options stay absent.
TEST_F(GatewayProgram, DoesWithoutAFunctionOrASocket) {
    const function_case row = functions_carried().front();
    const std::string keyword = std::string(row.gateway->name) + "LOCAL";
    expect_run(lumocmd({"-t", keyword, "-s", "/nowhere", "-v", "maybe"}), "LMCM-503\n", 503);
    const int code = row.gateway->base + 5;
    expect_run(
        lumocmd(
            {"-t", keyword, "-f", row.function->name, "-p", row.function->sample, "-v", "maybe"}),
        red("utility->make_localtcpclient_socket connect failed with error 'Invalid argument'") +
            red(exchange_message(*row.gateway, 1, row.function->name)) +
            shown_code(*row.gateway, code) + "\n",
        code);
}

} // namespace
