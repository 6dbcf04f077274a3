// Callers that pass odd things: no arguments at all, thousands, endless ones, control characters, a
// hostile environment.

#include "tests/failures/requests.h"
#include "tests/harness/console.h"

#include <cerrno>
#include <gtest/gtest.h>

namespace {

using namespace failure_tests;
using harness::lumocmd;
using harness::meeting_point;
using harness::red;
using harness::run_result;
using harness::words;

/// The longest argument that the kernel passes on, its terminator not counted.
constexpr std::size_t LONGEST_ARGUMENT = 131071;

const std::string NOT_PARSED = red("main->main error on parsing command line") + "LMCM-505\n";
const std::string MALFORMED = red("utility->parse_cmd_line malformed request");

class Callers : public unwrapped_test {
  protected:
    const request &gateway = daemon_requests()[1];
};

/// The gateway's request with another list at another place.
words gateway_call(const std::string &path, const std::string &list) {
    words all = daemon_requests()[1].arguments;
    all.back() = list;
    all.insert(all.end(), {"-s", path});
    return all;
}

/// The kernel passes an empty name where there is none.
TEST_F(Callers, EmptyArgumentVector) {
    std::string help = lumocmd({}).errors;
    const std::string name = harness::lumocmd_path();
    ASSERT_NE(help.find(name), std::string::npos);
    const run_result run = harness::run({}, {.file = name});
    EXPECT_EQ(run.errors, help.erase(help.find(name), name.size()));
    EXPECT_EQ(run.output, "");
    EXPECT_EQ(run.status, 506 & 0xff);
}

TEST_F(Callers, ThousandsOfArguments) {
    const meeting_point point(gateway.where, gateway.answered);
    words all;
    for (int i = 0; i < 3000; i++) {
        all.insert(all.end(), {"-v", "ON", "-v", "OFF", "-p", std::to_string(i), "-w", "7", "-s",
                               "/nowhere", "-t", "SOAP"});
    }
    const words last = arguments_of(gateway, point);
    all.insert(all.end(), last.begin(), last.end());
    expect_answered(gateway, lumocmd(all));
    EXPECT_EQ(point.daemon->finish(), "");
    for (const char *word : {"extra", "", "-", "--"}) {
        expect_outcome(lumocmd(words(20000, word)), {MALFORMED, 505});
    }
}

TEST_F(Callers, LongestArguments) {
    const std::string nines(LONGEST_ARGUMENT, '9');
    const std::string letters(LONGEST_ARGUMENT, 'S');
    const outcome wrong_count = {
        red(count_message(sample_gateway(), sample_gateway().functions.front())) + "LMCM-505\n",
        505};
    const std::string parser = "utility->parse_cmd_line bad parameter: ";
    const struct {
        words arguments;
        outcome wanted;
    } rows[] = {
        {{"-d", nines}, {red(parser + "service port must be a number and upper than 1024"), 502}},
        {{"-w", nines}, {red(parser + "waittime must be a number"), 502}},
        {{"-t", letters}, {NOT_PARSED, 505}},
        {{"-v", letters}, {NOT_PARSED, 505}},
        {{"-t", "SOAP", "-u", "http://127.0.0.1/", "-f", letters}, {"LMCM-503\n", 503}},
        {{"-t", gateway.arguments[1], "-s", "/n", "-f", letters, "-p", "a"}, {"LMCM-503\n", 503}},
        {gateway_call("/n", letters), wrong_count},
        {gateway_call("/n", std::string(LONGEST_ARGUMENT, '|')), wrong_count},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.arguments[0] + row.arguments[1].substr(0, 9));
        expect_outcome(lumocmd(row.arguments), row.wanted);
    }
    const run_result run =
        lumocmd({"-t", "SOAP", "-u", "http://" + letters.substr(7), "-f", "SERVICE_TEST"});
    EXPECT_EQ(run.output, "LMCM-502\n");
    EXPECT_EQ(run.status, 502 & 0xff);
}

// ---------------------------------------------------------------------------------------------
// Control characters are shown as they are

const std::string ODD = "\033[2J\033]0;t\a\r\x7f\x01%s%n%\xff\xc3\x28";

TEST_F(Callers, ControlCharactersOfACaller) {
    const run_result run = lumocmd({"-v", "ON", "-t", "SOAP", "-a", ODD, "-s", ODD, "-p", ODD, "-f",
                                    ODD, "-u", "http://127.0.0.1:1/"});
    std::string output = harness::green(run.pid, "[lumocmd] Soap request selected");
    for (const char *name : {"Internet service address", "Socket", "Parameters", "Function"}) {
        output += harness::green(run.pid, std::string("[lumocmd] ") + name + " selected: " + ODD);
    }
    output += harness::green(run.pid, "[lumocmd] Url selected: http://127.0.0.1:1/");
    expect_outcome(run, {output + "LMCM-503\n", 503});
}

// ---------------------------------------------------------------------------------------------
// The environment is not read

const words ENVIRONMENTS[] = {
    {"LC_ALL=xx_XX.NOSUCH", "LANG=tr_TR.UTF-8", "LANGUAGE=de:fr", "LC_NUMERIC=de_DE.UTF-8"},
    {"LC_ALL=../../../../tmp", "LOCPATH=/dev/null", "NLSPATH=%N", "GCONV_PATH=/nowhere"},
    {"GLIBC_TUNABLES=glibc.malloc.perturb=90:glibc.malloc.mmap_threshold=1"},
    {"TERM=garbage", "COLUMNS=-1", "LINES=0", "NO_COLOR=1", "TZ=:/dev/zero"},
    {"RES_OPTIONS=ndots:99 attempts:-1", "LOCALDOMAIN=.", "HOSTALIASES=/dev/null"},
    {"http_proxy=http://127.0.0.1:1/", "HTTP_PROXY=http://127.0.0.1:1/", "all_proxy=x"},
    {"HUGE=" + std::string(100000, 'x'), "=", "no equals sign", ""},
};

TEST_F(Callers, HostileEnvironments) {
    for (const words &settings : ENVIRONMENTS) {
        for (const bool alone : {false, true}) {
            SCOPED_TRACE(settings.front().substr(0, 40) + (alone ? " alone" : ""));
            const harness::start_options options = {.settings = settings,
                                                    .empty_environment = alone};
            expect_every_answer(options);
            // Keywords and messages do not follow the language either.
            words call = gateway_call("/nowhere", gateway.arguments.back());
            call[1] = protocol::lower(call[1]);
            expect_outcome(lumocmd(call, options), unconnected(gateway, "connect", ENOENT));
        }
    }
}

/// The order of words is the system library's affair: with this setting it stops at the first word.
TEST_F(Callers, PosixOrderOfWords) {
    const words call = {"extra", "-t", "NOSUCH"};
    expect_outcome(lumocmd(call), {NOT_PARSED, 505});
    expect_outcome(lumocmd(call, {.settings = {"POSIXLY_CORRECT=1"}}), {MALFORMED, 505});
}

} // namespace
