// Callers that leave little: streams, descriptors, stack, address space, room for output.

#include "tests/failures/requests.h"

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/select.h>
#include <unistd.h>

namespace {

using namespace failure_tests;
using harness::lumocmd;
using harness::meeting_point;
using harness::run_result;
using harness::start_options;
using harness::words;

void limit(__rlimit_resource resource, rlim_t most) {
    const rlimit both = {most, most};
    setrlimit(resource, &both);
}

class Limits : public unwrapped_test {};

/// What lets nothing through, by the reason that the kernel gives.
const struct {
    int reason;
    void (*prepare)();
} LOST_OUTPUTS[] = {
    {EBADF, [] { dup2(open("/dev/null", O_RDONLY), STDOUT_FILENO); }},
    {ENOSPC, [] { dup2(open("/dev/full", O_WRONLY), STDOUT_FILENO); }},
    {EPIPE,
     [] {
         int ends[2];
         if (pipe2(ends, O_CLOEXEC) == 0 && dup2(ends[1], STDOUT_FILENO) >= 0) {
             close(ends[0]);
         }
     }},
    {EAGAIN,
     [] {
         int ends[2];
         if (pipe2(ends, O_NONBLOCK) == 0 && dup2(ends[1], STDOUT_FILENO) >= 0) {
             while (write(STDOUT_FILENO, "", 1) > 0) {
             }
         }
     }},
    {EFBIG,
     [] {
         dup2(open("/tmp", O_TMPFILE | O_WRONLY, 0600), STDOUT_FILENO);
         signal(SIGXFSZ, SIG_IGN);
         limit(RLIMIT_FSIZE, 0);
     }},
};

/// What a peer is told and the status tells are true all the same.
TEST_F(Limits, OutputThatIsNotTaken) {
    for (const auto &row : LOST_OUTPUTS) {
        SCOPED_TRACE(strerror(row.reason));
        expect_every_answer({.prepare = row.prepare}, true);
    }
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
            const meeting_point point(daemon.where, {harness::expect(daemon.text),
                                                     harness::reply(answer_of(daemon, "4x"))});
            const outcome shown = failed(daemon, BAD_NUMBER);
            expect_outcome(lumocmd(arguments_of(daemon, point), options),
                           {is_output_lost ? "" : shown.output, shown.status});
            EXPECT_EQ(point.daemon->finish(), "");
            EXPECT_EQ(point.daemon->received(), daemon.text);
        }
        const harness::deserted_point nobody;
        const std::string url = "http://127.0.0.1:" + std::to_string(nobody.port);
        for (const words &arguments :
             {words{"-?"}, {"-t", "SOAP", "-u", url, "-f", "SERVICE_TEST"}}) {
            const run_result run = lumocmd(arguments, options);
            EXPECT_EQ(run.output, is_output_lost || arguments.size() == 1 ? "" : "LMCM-502\n");
            EXPECT_EQ(run.errors.empty(), (closed & 4U) != 0);
            EXPECT_EQ(run.status, (arguments.size() == 1 ? 506 : 502) & 0xff);
        }
    }
}

/// The loader needs one more than the standard streams, and so does the program. Of a caller that
/// left many open the connection lies beyond what a set for select can hold.
TEST_F(Limits, FewDescriptorsAndMany) {
    const auto leave_one = [] {
        closefrom(STDERR_FILENO + 1);
        limit(RLIMIT_NOFILE, 4);
    };
    const auto take_many = [] {
        limit(RLIMIT_NOFILE, 2 * FD_SETSIZE);
        while (fcntl(STDIN_FILENO, F_DUPFD, 0) < FD_SETSIZE) {
        }
    };
    expect_every_answer({.prepare = leave_one});
    expect_every_answer({.prepare = take_many});
}

TEST_F(Limits, SmallStack) {
    expect_every_answer({.prepare = [] { limit(RLIMIT_STACK, 256 * 1024); }});
    const start_options smaller = {.prepare = [] { limit(RLIMIT_STACK, 64 * 1024); }};
    for (const request &daemon : daemon_requests()) {
        const meeting_point point(daemon.where, daemon.answered);
        expect_answered(daemon, lumocmd(arguments_of(daemon, point), smaller));
    }
    EXPECT_EQ(lumocmd({"-?"}, smaller).status, 506 & 0xff);
}

} // namespace
