// Callers that leave little: descriptors, stack, address space, room for output.

#include "tests/faults/fault.h"
#include "tests/faults/requests.h"
#include "tests/faults/service_requests.h"
#include "tests/faults/start.h"
#include "tests/harness/meeting_point.h"

#include <algorithm>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

namespace {

using namespace fault_tests;
using harness::peer;
using harness::words;

using preparation = std::function<void()>;

void limit(__rlimit_resource resource, rlim_t most) {
    const rlimit both = {most, most};
    setrlimit(resource, &both);
}

class Limits : public testing::Test {
  protected:
    void SetUp() override {
        SKIP_BEHIND_A_WRAPPER();
    }
};

/// A daemon's request, answered; everything that is shown is checked unless `output_is_lost`.
void expect_answer_of_daemon(const socket_request &request, const preparation &prepare,
                             bool output_is_lost = false) {
    SCOPED_TRACE(request.keyword);
    const harness::temporary_directory directory;
    const std::string path = directory.path + "/s";
    peer daemon(path, {harness::expect(request.request), harness::reply(answer_of(request, "42"))});
    const ending end = run_oddly({.arguments = arguments_of(request, path), .prepare = prepare});
    expect_status(end, 42);
    EXPECT_EQ(end.output, output_is_lost ? "" : progress_of(request, path, end.pid) + "FSMC-042\n");
    EXPECT_EQ(end.errors, "");
    EXPECT_EQ(daemon.finish(), "");
}

void expect_answer_of_service(const service_request &request, const preparation &prepare,
                              bool output_is_lost = false) {
    SCOPED_TRACE(request.name);
    peer service(answering_request(request));
    const ending end = run_oddly({.arguments = arguments_of(request, service), .prepare = prepare});
    expect_status(end, SERVICE_STATUS);
    EXPECT_EQ(end.output,
              output_is_lost ? "" : green_lines(end.pid, request.answered) + SERVICE_STATUS_TEXT);
    EXPECT_EQ(end.errors, "");
    EXPECT_EQ(service.finish(), "");
}

void expect_every_answer(const preparation &prepare, bool output_is_lost = false) {
    for (const socket_request &request : socket_requests()) {
        expect_answer_of_daemon(request, prepare, output_is_lost);
    }
    for (const service_request &request : SERVICE_REQUESTS) {
        expect_answer_of_service(request, prepare, output_is_lost);
    }
}

// ---------------------------------------------------------------------------------------------
// Standard streams

/// An unreadable number leaves the connection open to the end of the process, when what was printed
/// is written out: a connection in the place of standard output would receive it.
void expect_nothing_told_to_the_daemon(const socket_request &request, const preparation &prepare) {
    SCOPED_TRACE(request.keyword);
    const harness::temporary_directory directory;
    const std::string path = directory.path + "/s";
    peer daemon(path, {harness::expect(request.request), harness::reply(answer_of(request, "4x"))});
    const ending end = run_oddly({.arguments = arguments_of(request, path), .prepare = prepare});
    expect_status(end, request.answer_status);
    EXPECT_EQ(daemon.finish(), "");
    EXPECT_EQ(daemon.received(), request.request);
}

/// Whatever is closed: the daemon gets the request alone, what is open shows its part, and the
/// status is true.
TEST_F(Limits, EveryChoiceOfClosedStreams) {
    for (unsigned closed = 1; closed < 8; closed++) {
        SCOPED_TRACE(closed);
        const auto close_them = [closed] {
            for (int i = 0; i < 3; i++) {
                if ((closed & (1U << i)) != 0) {
                    close(i);
                }
            }
        };
        const bool is_output_closed = (closed & 2U) != 0;
        const bool are_errors_closed = (closed & 4U) != 0;
        expect_every_answer(close_them, is_output_closed);
        for (const socket_request &request : socket_requests()) {
            expect_nothing_told_to_the_daemon(request, close_them);
        }

        const ending help = run_oddly({.arguments = {"-?"}, .prepare = close_them});
        expect_status(help, 506);
        EXPECT_EQ(help.output, "");
        EXPECT_EQ(help.errors.empty(), are_errors_closed);

        const harness::deserted_point nobody;
        const ending refused = run_oddly(
            {.arguments = {"-t", "SOAP", "-u", "http://127.0.0.1:" + std::to_string(nobody.port),
                           "-f", "SERVICE_TEST"},
             .prepare = close_them});
        expect_status(refused, 502);
        EXPECT_EQ(refused.output, is_output_closed ? "" : "LMCM-502\n");
        EXPECT_EQ(refused.errors.empty(), are_errors_closed);
    }
}

/// A full device takes nothing, and the exit status still tells the truth.
TEST_F(Limits, FullDevice) {
    expect_every_answer([] { dup2(open("/dev/full", O_WRONLY), STDOUT_FILENO); }, true);
    const auto fill_both = [] {
        const int full = open("/dev/full", O_WRONLY);
        dup2(full, STDOUT_FILENO);
        dup2(full, STDERR_FILENO);
    };
    expect_every_answer(fill_both, true);
    struct {
        words arguments;
        int status;
    } const rows[] = {
        {{"-?"}, 506},
        {{}, 506},
        {{"-t", "NOSUCH"}, 505},
        {{"-t", "SOAP", "-w", "x"}, 502},
        {{"-t", "SOAP", "-u", "http://127.0.0.1:1/", "-f", "SERVICE_TEST"}, 502},
        {{"-t", "EIBLOCAL", "-s", "/n", "-f", "SENDEIBUSSETDATAGRAM", "-p", "a|b|c|d"}, 105}};
    for (const auto &row : rows) {
        const ending end = run_oddly({.arguments = row.arguments, .prepare = fill_both});
        expect_status(end, row.status);
        EXPECT_EQ(end.output + end.errors, "");
    }
}

/// A reader that is slow or gone, a file that may not grow.
TEST_F(Limits, OutputThatIsNotTaken) {
    expect_every_answer(
        [] {
            int ends[2];
            if (pipe2(ends, 0) == 0) {
                dup2(ends[1], STDOUT_FILENO);
                close(ends[0]);
                close(ends[1]);
            }
        },
        true);
    expect_every_answer(
        [] {
            int ends[2];
            if (pipe2(ends, O_NONBLOCK) == 0) {
                char bytes[4096] = {};
                while (write(ends[1], bytes, sizeof bytes) > 0) {
                }
                while (write(ends[1], bytes, 1) > 0) {
                }
                dup2(ends[1], STDOUT_FILENO);
            }
        },
        true);
    const harness::temporary_directory directory;
    const std::string file = directory.path + "/output";
    expect_every_answer(
        [&file] {
            dup2(open(file.c_str(), O_WRONLY | O_CREAT, 0600), STDOUT_FILENO);
            signal(SIGXFSZ, SIG_IGN);
            limit(RLIMIT_FSIZE, 0);
        },
        true);
}

// ---------------------------------------------------------------------------------------------
// Descriptors

/// The loader needs one more than the standard streams, and so does the program.
TEST_F(Limits, FourDescriptorsAreEnough) {
    expect_every_answer([] {
        closefrom(STDERR_FILENO + 1); // what whoever started the tests left open
        limit(RLIMIT_NOFILE, 4);
    });
}

/// With the streams alone not even the loader comes far; it says so.
TEST_F(Limits, ThreeDescriptorsAreNotEnoughForTheLoader) {
    SKIP_UNLESS_REACHABLE();
    const ending end = run_oddly({.arguments = {"-?"}, .prepare = [] { limit(RLIMIT_NOFILE, 3); }});
    expect_status(end, 127);
    EXPECT_EQ(end.output, "");
    EXPECT_NE(end.errors, "");
}

/// A caller that left many files open moves the connection beyond what a set for select can hold.
TEST_F(Limits, ManyInheritedDescriptors) {
    const auto leave_open = [] {
        limit(RLIMIT_NOFILE, 2 * FD_SETSIZE);
        while (fcntl(STDIN_FILENO, F_DUPFD, 0) < FD_SETSIZE) {
        }
    };
    expect_every_answer(leave_open);
}

// ---------------------------------------------------------------------------------------------
// Stack and address space

TEST_F(Limits, SmallStack) {
    for (const socket_request &request : socket_requests()) {
        expect_answer_of_daemon(request, [] { limit(RLIMIT_STACK, 64 * 1024); });
    }
    for (const service_request &request : SERVICE_REQUESTS) {
        expect_answer_of_service(request, [] { limit(RLIMIT_STACK, 256 * 1024); });
    }
    const ending help =
        run_oddly({.arguments = {"-?"}, .prepare = [] { limit(RLIMIT_STACK, 64 * 1024); }});
    expect_status(help, 506);
}

class AddressSpace : public testing::TestWithParam<socket_request> {
  protected:
    void SetUp() override {
        SKIP_UNLESS_REACHABLE();
    }
};

constexpr rlim_t SPACE_STEP = 16 * 1024;
constexpr rlim_t MOST_SPACE = 64 * 1024 * 1024;

/// From the least space in which the program is reached at all to the least in which it works: it
/// ends out of memory, properly.
TEST_P(AddressSpace, TooLittleIsOutOfMemory) {
    const socket_request &request = GetParam();
    const harness::temporary_directory directory;
    const std::string path = directory.path + "/s";
    int out_of_memory = 0;
    for (rlim_t space = SPACE_STEP; space <= MOST_SPACE; space += SPACE_STEP) {
        SCOPED_TRACE(space);
        unlink(path.c_str());
        peer daemon(path,
                    {harness::collect_until("\n\n"), harness::reply(answer_of(request, "42"))});
        const journal_file journal;
        const ending end = run_oddly({.arguments = arguments_of(request, path),
                                      .settings = journal.settings({}),
                                      .prepare = [space] { limit(RLIMIT_AS, space); }});
        const faulty_run seen = journal.read();
        if (seen.journal.empty()) {
            ASSERT_NE(end.status, 0) << "the program was not reached";
            continue;
        }
        ASSERT_EQ(end.signal, 0) << strsignal(end.signal);
        if (end.status == 1) {
            ASSERT_EQ(seen.records.size(), 1U);
            ASSERT_EQ(seen.records[0].rfind("0 xmalloc failed for size=", 0), 0U);
            ASSERT_EQ(end.errors, "");
            out_of_memory++;
            continue;
        }
        expect_status(end, 42);
        EXPECT_EQ(end.output, progress_of(request, path, end.pid) + "FSMC-042\n");
        EXPECT_EQ(daemon.finish(), "");
        EXPECT_GT(out_of_memory, 0) << "memory was never short";
        return;
    }
    FAIL() << "no space was enough";
}

INSTANTIATE_TEST_SUITE_P(Table, AddressSpace,
                         testing::Values(socket_requests().front(), socket_requests().back()),
                         [](const auto &row) { return row.param.keyword; });

} // namespace
