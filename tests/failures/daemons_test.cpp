// Servers that misbehave. Of a daemon the program reads once, takes what has come for the answer,
// and says what is wrong with it. A silent server is waited for.

#include "tests/failures/requests.h"
#include "tests/webservice/http_peer.h"

#include <cerrno>
#include <csignal>
#include <gtest/gtest.h>
#include <sys/wait.h>

namespace {

using namespace failure_tests;
using namespace harness;
using namespace std::string_literals;

/// The shipped program needs less than this for any daemon's answer.
constexpr long MOST_KILOBYTES = 8 * 1024;

constexpr std::size_t GIBIBYTE = std::size_t{1} << 30;

class Daemon : public testing::TestWithParam<request> {
  protected:
    const request &daemon = GetParam();
    const step asked = expect(daemon.text);
    const std::string good = answer_of(daemon, "0042");
    const outcome accepted = {ANSWERED_TEXT, ANSWERED};
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
    expect_run({reply(good), asked, close_connection()}, accepted);
    expect_run({reply(good), ignore()}, accepted);
    expect_run({asked, reply(good)}, accepted);
    expect_run({asked, reply("R")}, unread);
    // A connection that ends with the request unread is a reset one, behind whatever was sent.
    expect_run({await_bytes(), reply("Response St"), close_connection()}, unread);
}

TEST_P(Daemon, MaySendAnyBytes) {
    const std::string tag = "Response Status: ";
    expect_run({asked, reply("\0"s + good)}, unread);
    expect_run({asked, reply("\xff\xfe" + good)}, unread);
    expect_run({asked, reply(tag + "\0"s + daemon.prefix + "0\n")}, failed(daemon, WRONG_PREFIX));
    expect_run({asked, reply(tag + daemon.prefix + "\xc3\x28\n")}, failed(daemon, BAD_NUMBER));
    expect_run({asked, reply(good + "\0no more\n"s)}, accepted);
}

TEST_P(Daemon, FloodIsReadOnceInLittleMemory) {
    const std::size_t times = flooded(GIBIBYTE) / 1024;
    const std::string text(1024, 'x');
    expect_run({asked, reply(text, times)}, unread);
    expect_run({asked, reply(std::string(1024, '\0'), times)}, unread);
    expect_run({asked, reply(good), reply(std::string(1024, '\n'), times)}, accepted);
    expect_run({asked, reply(good + text), reply(text, times)}, failed(daemon, FURTHER_TEXT));
}

// ---------------------------------------------------------------------------------------------
// Silence. The program sets no limit to it, whoever starts the program does.

/// A program that waits for the rest of an answer, which the test lets it have.
struct waiting_client {
    waiting_client(const request &wanted, const std::string &begun, const step &rest)
        : point(wanted.where,
                {wanted.answered.front(), reply(begun), await_end(), rest, await_end()}),
          program(lumocmd_command(arguments_of(wanted, point))) {
        EXPECT_TRUE(point.daemon->wait_for_await());
        EXPECT_TRUE(program.keeps_running());
    }

    void let_it_have_the_rest() const {
        point.daemon->go_on();
        EXPECT_TRUE(point.daemon->wait_for_await());
    }

    run_result end() {
        const run_result run = program.finish();
        EXPECT_EQ(point.daemon->finish(), "");
        return run;
    }

    meeting_point point;
    started_program program;
};

class Silence : public testing::TestWithParam<request> {
  protected:
    const request &wanted = GetParam();

    void expect_failure(const run_result &run, failure of_daemon) const {
        if (wanted.is_service()) {
            expect_reported(wanted, run);
        } else if (of_daemon == OPENING) {
            expect_outcome(run, unconnected(wanted, "connect", ECONNREFUSED));
        } else {
            expect_outcome(run, failed(wanted, of_daemon));
        }
    }
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
        waiting_client client(wanted, begun, half_close());
        client.let_it_have_the_rest();
        expect_failure(client.end(), NO_STATUS_LINE);
    }
}

TEST_P(Silence, IsLeftOnASignal) {
    for (const int number : {SIGHUP, SIGINT, SIGALRM, SIGTERM, SIGUSR1}) {
        waiting_client client(wanted, "", half_close());
        client.program.send_signal(number);
        expect_outcome(client.end(), {"", 128 + number});
    }
}

TEST_P(Silence, OfAServerThatNeverAcceptsIsWaitedForUntilItCloses) {
    const meeting_point crowded(wanted.where, {never_accept()});
    started_program program(lumocmd_command(arguments_of(wanted, crowded)));
    EXPECT_TRUE(program.keeps_running());
    EXPECT_EQ(crowded.daemon->finish_unvisited(), "");
    expect_failure(program.finish(), OPENING);
}

INSTANTIATE_TEST_SUITE_P(Table, Silence, testing::ValuesIn(every_request()), NAME_OF_ROW);

/// Signals without an effect are waited out, and so is a stop.
TEST_P(Daemon, IsWaitedForBehindHarmlessSignals) {
    if (is_wrapped()) {
        GTEST_SKIP() << "the signals would hit the wrapper";
    }
    waiting_client client(daemon, "", reply(good));
    for (const int number : {SIGWINCH, SIGCHLD, SIGURG, SIGCONT, SIGPIPE}) {
        client.program.send_signal(number);
    }
    client.program.send_signal(SIGSTOP);
    EXPECT_TRUE(client.program.wait_for_change(WSTOPPED));
    client.let_it_have_the_rest();
    client.program.send_signal(SIGCONT);
    expect_outcome(client.end(), accepted);
}

INSTANTIATE_TEST_SUITE_P(Table, Daemon, testing::ValuesIn(daemon_requests()), NAME_OF_ROW);

} // namespace
