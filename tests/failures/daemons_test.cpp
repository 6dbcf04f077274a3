// Servers that misbehave. Of a daemon the program reads once and takes what has come for the
// answer. A silent server is waited for.

#include "tests/failures/requests.h"

#include <csignal>

namespace {

using namespace failure_tests;
using namespace harness;

/// The shipped program needs less than this for any daemon's answer.
constexpr long MOST_KILOBYTES = 8 * 1024;

class Daemon : public testing::TestWithParam<request> {
  protected:
    const request &daemon = GetParam();
    const step asked = daemon.answered[0];
    const std::string good = daemon.answered[1].bytes;
    const outcome unread = failed(daemon, NO_STATUS_LINE);

    /// One run against a daemon with this script, and what it costs.
    void expect_run(const script &steps, const outcome &wanted) const {
        const meeting_point point(daemon.where, steps);
        const run_result seen = lumocmd(arguments_of(daemon, point));
        expect_outcome(seen, wanted);
        if (is_shipped_program()) {
            EXPECT_LE(seen.kilobytes, MOST_KILOBYTES);
        }
        EXPECT_EQ(point.daemon->finish(), "");
    }
};

TEST_P(Daemon, MayAnswerAtAnyTimeAndStay) {
    expect_run({reply(good), asked, close_connection()}, ANSWERED);
    expect_run({reply(good), ignore()}, ANSWERED);
    expect_run({asked, reply(good)}, ANSWERED);
    expect_run({asked, reply("R")}, unread);
    // A connection that ends with the request unread is a reset one, behind whatever was sent.
    expect_run({await_bytes(), reply("Response St"), close_connection()}, unread);
}

TEST_P(Daemon, FloodIsReadOnceInLittleMemory) {
    const std::size_t times = flooded(std::size_t{1} << 30) / 1024;
    const std::string text(1024, 'x');
    expect_run({asked, reply(text, times)}, unread);
    expect_run({asked, reply(good), reply(std::string(1024, '\n'), times)}, ANSWERED);
    expect_run({asked, reply(good + text), reply(text, times)}, failed(daemon, FURTHER_TEXT));
}

INSTANTIATE_TEST_SUITE_P(Table, Daemon, testing::ValuesIn(daemon_requests()), NAME_OF_ROW);

// ---------------------------------------------------------------------------------------------

/// The program sets no limit to it, whoever starts the program does.
class Silence : public testing::TestWithParam<request> {
  protected:
    void expect_failure(const run_result &run, const outcome &of_daemon) const {
        if (wanted.is_service()) {
            expect_reported(wanted, run);
        } else {
            expect_outcome(run, of_daemon);
        }
    }

    const request &wanted = GetParam();
};

TEST_P(Silence, IsWaitedForUntilItsEnd) {
    const std::string &answer = wanted.answered[1].bytes;
    std::vector<std::size_t> lengths = {0};
    if (wanted.is_service()) { // and a part of it is waited behind
        lengths = {0, 12, answer.find("\r\n\r\n") + 2, answer.size() / 2};
    }
    for (const std::size_t length : lengths) {
        const std::string begun = answer.substr(0, length);
        SCOPED_TRACE(begun);
        const meeting_point point(wanted.where,
                                  {wanted.answered[0], reply(begun), await_end(), half_close()});
        started_program program(lumocmd_command(arguments_of(wanted, point)));
        EXPECT_TRUE(point.daemon->wait_for_await());
        EXPECT_TRUE(program.keeps_running());
        EXPECT_EQ(point.daemon->finish(), "");
        expect_failure(program.finish(), failed(wanted, NO_STATUS_LINE));
    }
}

TEST_P(Silence, IsLeftOnASignal) {
    const meeting_point point(wanted.where, {wanted.answered[0], await_end()});
    started_program program(lumocmd_command(arguments_of(wanted, point)));
    EXPECT_TRUE(point.daemon->wait_for_await());
    program.send_signal(SIGTERM);
    expect_outcome(program.finish(), {"", 128 + SIGTERM});
}

TEST_P(Silence, OfAServerThatNeverAcceptsIsWaitedForUntilItCloses) {
    const meeting_point crowded(wanted.where, {never_accept()});
    started_program program(lumocmd_command(arguments_of(wanted, crowded)));
    EXPECT_TRUE(program.keeps_running());
    EXPECT_EQ(crowded.daemon->finish_unvisited(), "");
    expect_failure(program.finish(), unconnected(wanted, "connect", ECONNREFUSED));
}

INSTANTIATE_TEST_SUITE_P(Table, Silence, testing::ValuesIn(every_request()), NAME_OF_ROW);

} // namespace
