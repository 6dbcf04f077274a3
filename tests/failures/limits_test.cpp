// Callers that leave little: no room for output, closed streams, few descriptors, an environment
// that misleads other programs.

#include "tests/failures/requests.h"

#include <csignal>
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/select.h>
#include <unistd.h>

namespace {

using namespace failure_tests;
using namespace harness;

class Limits : public testing::Test {
  protected:
    void SetUp() override {
        if (is_wrapped()) {
            GTEST_SKIP() << "what the caller does would hit the wrapper";
        }
    }
};

/// Makes every request and has it answered.
void expect_every_answer(const start_options &options, bool is_output_lost = false) {
    for (const request &wanted : every_request()) {
        SCOPED_TRACE(wanted.name);
        const meeting_point point(wanted.where, wanted.answered);
        expect_outcome(lumocmd(arguments_of(wanted, point), options),
                       {is_output_lost ? "" : ANSWERED.output, ANSWERED.status});
        EXPECT_EQ(point.daemon->finish(), "");
    }
}

/// What a peer is told and the status tells are true all the same.
TEST_F(Limits, OutputThatIsNotTaken) {
    expect_every_answer({.prepare = [] { dup2(open("/dev/full", O_WRONLY), STDOUT_FILENO); }},
                        true);
    const auto leave_no_reader = [] {
        int ends[2];
        if (pipe2(ends, O_CLOEXEC) == 0 && dup2(ends[1], STDOUT_FILENO) >= 0) {
            close(ends[0]);
        }
    };
    expect_every_answer({.prepare = leave_no_reader}, true);
}

/// The daemon gets the request alone, what is open shows its part, and the status is true. An
/// unreadable number leaves the connection open to the end, when what was printed is written out:
/// in the place of standard output it would receive that.
TEST_F(Limits, EveryChoiceOfClosedStreams) {
    for (unsigned closed = 1; closed < 8; closed++) {
        SCOPED_TRACE(closed);
        const start_options options = {.prepare = [closed] {
            for (int i = 0; i < 3; i++) {
                if ((closed & (1U << i)) != 0) {
                    close(i);
                }
            }
        }};
        const bool is_output_lost = (closed & 2U) != 0;
        expect_every_answer(options, is_output_lost);
        for (const request &daemon : daemon_requests()) {
            script steps = daemon.answered;
            steps[1].bytes.insert(steps[1].bytes.find("0042") + 4, "x");
            const meeting_point point(daemon.where, steps);
            const outcome shown = failed(daemon, BAD_NUMBER);
            expect_outcome(lumocmd(arguments_of(daemon, point), options),
                           {is_output_lost ? "" : shown.output, shown.status});
            EXPECT_EQ(point.daemon->finish(), "");
            EXPECT_EQ(point.daemon->received(), steps[0].bytes);
        }
        const run_result help = lumocmd({"-?"}, options);
        expect_run(help, "", 506, help.errors);
        EXPECT_EQ(help.errors.empty(), (closed & 4U) != 0);
    }
}

/// The loader needs one more than the standard streams, and so does the program. Of a caller that
/// left many open the connection lies beyond what a set for select can hold.
TEST_F(Limits, FewDescriptorsAndMany) {
    const auto limit = [](rlim_t most) {
        const rlimit both = {most, most};
        setrlimit(RLIMIT_NOFILE, &both);
    };
    const auto leave_one = [limit] {
        closefrom(STDERR_FILENO + 1);
        limit(4);
    };
    const auto take_many = [limit] {
        limit(2 * FD_SETSIZE);
        while (fcntl(STDIN_FILENO, F_DUPFD, 0) < FD_SETSIZE) {
        }
    };
    expect_every_answer({.prepare = leave_one});
    expect_every_answer({.prepare = take_many});
}

/// Keywords and messages follow no language, and nothing goes through a proxy.
TEST_F(Limits, EnvironmentIsNotRead) {
    const start_options options = {.settings = {"LC_ALL=tr_TR.UTF-8", "LANGUAGE=de:fr",
                                                "http_proxy=http://127.0.0.1:1/",
                                                "RES_OPTIONS=ndots:99 attempts:-1", "=", ""}};
    expect_every_answer(options);
    expect_outcome(
        lumocmd({"-t", "fsmcore", "-s", "/nowhere", "-f", "GETSTATE", "-p", "a"}, options),
        unconnected(daemon_requests()[0], "connect", ENOENT));
}

} // namespace
