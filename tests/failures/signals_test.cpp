// Signals that arrive while a request waits for its answer.

#include "tests/failures/requests.h"

#include <csignal>
#include <cstring>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>

namespace {

using namespace failure_tests;
using harness::await_end;
using harness::expect;
using harness::reply;

void leave_no_core() {
    const rlimit none = {0, 0};
    setrlimit(RLIMIT_CORE, &none);
}

/// A client that waits for the answer of a daemon, which the test lets it have.
struct waiting_client {
    explicit waiting_client(const request &wanted,
                            const std::function<void()> &prepare = leave_no_core)
        : point(wanted.where, {expect(wanted.text), await_end(), wanted.answered[1], await_end()}),
          program(harness::lumocmd_command(arguments_of(wanted, point)), {.prepare = prepare}) {
        EXPECT_TRUE(point.daemon->wait_for_await());
    }

    void expect_signals_waited_out(std::initializer_list<int> signals) {
        for (const int number : signals) {
            program.send_signal(number);
        }
        let_it_have_its_answer();
        expect_end();
    }

    void let_it_have_its_answer() const {
        point.daemon->go_on();
        EXPECT_TRUE(point.daemon->wait_for_await());
    }

    void expect_end() {
        expect_outcome(program.finish(), {ANSWERED_TEXT, ANSWERED});
        EXPECT_EQ(point.daemon->finish(), "");
    }

    harness::meeting_point point;
    harness::started_program program;
};

class Signals : public testing::TestWithParam<request> {
  protected:
    void SetUp() override {
        if (harness::is_wrapped()) {
            GTEST_SKIP() << "the signals would hit the wrapper";
        }
    }
};

TEST_P(Signals, WithoutAnEffectAreWaitedOut) {
    waiting_client client(GetParam());
    client.expect_signals_waited_out({SIGWINCH, SIGCHLD, SIGURG, SIGCONT, SIGPIPE});
}

/// What the caller blocked or ignored stays so.
TEST_P(Signals, BlockedByTheCallerAreWaitedOut) {
    waiting_client client(GetParam(), [] {
        sigset_t all;
        sigfillset(&all);
        sigprocmask(SIG_BLOCK, &all, nullptr);
        signal(SIGCHLD, SIG_IGN);
    });
    client.expect_signals_waited_out({SIGTERM, SIGINT, SIGUSR1, SIGCHLD, SIGALRM});
}

TEST_P(Signals, StoppedAndContinuedStillTakesItsAnswer) {
    waiting_client client(GetParam());
    for (int i = 0; i < 2; i++) {
        client.program.send_signal(SIGSTOP);
        EXPECT_TRUE(client.program.wait_for_change(WSTOPPED));
        client.program.send_signal(SIGCONT);
        EXPECT_TRUE(client.program.wait_for_change(WCONTINUED));
    }
    client.program.send_signal(SIGSTOP);
    EXPECT_TRUE(client.program.wait_for_change(WSTOPPED));
    client.let_it_have_its_answer();
    client.program.send_signal(SIGCONT);
    client.expect_end();
}

TEST_P(Signals, ThatKillDoSo) {
    for (const int number : {SIGHUP, SIGINT, SIGQUIT, SIGALRM, SIGTERM, SIGUSR1, SIGUSR2}) {
        SCOPED_TRACE(strsignal(number));
        waiting_client client(GetParam());
        client.program.send_signal(number);
        const harness::run_result run = client.program.finish();
        EXPECT_EQ(run.signal, number);
        EXPECT_EQ(run.output + run.errors, "");
        EXPECT_EQ(client.point.daemon->finish(), "");
    }
}

INSTANTIATE_TEST_SUITE_P(Table, Signals, testing::ValuesIn(daemon_requests()),
                         [](const auto &row) { return row.param.name; });

} // namespace
