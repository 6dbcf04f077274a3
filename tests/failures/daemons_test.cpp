// Daemons that misbehave: the program reads once, takes what has come for the answer, and says what
// is wrong with it. Its words and its status follow from the bytes alone.

#include "tests/failures/requests.h"

#include <cerrno>
#include <csignal>
#include <fstream>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

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
    const temporary_directory directory;

    outcome accepted() const {
        return {ANSWERED_TEXT, ANSWERED};
    }
    outcome unread() const {
        return failed(daemon, NO_STATUS_LINE);
    }
    words command(const std::string &path) const {
        words all = daemon.arguments;
        all.insert(all.end(), {"-s", path});
        return lumocmd_command(all);
    }

    /// One run against a daemon with this script, and what it costs.
    void expect_run(const script &steps, const outcome &wanted) const {
        const meeting_point point(daemon.where, steps);
        const run_result seen = run(command(point.path));
        expect_outcome(seen, wanted);
        if (is_shipped_program()) {
            EXPECT_LE(seen.kilobytes, MOST_KILOBYTES);
        }
        EXPECT_EQ(point.daemon->finish(), "");
    }
};

TEST_P(Daemon, MayAnswerAtAnyTimeAndStay) {
    const step request = expect(daemon.text);
    const step answer = reply(answer_of(daemon, "0042"));
    expect_run({answer, request, close_connection()}, accepted());
    expect_run({answer, ignore()}, accepted());
    expect_run({request, answer}, accepted());
    expect_run({request, reply("R")}, unread());
    // A connection that ends with the request unread is a reset one, behind whatever was sent.
    expect_run({await_bytes(), reply("Response St"), close_connection()}, unread());
}

TEST_P(Daemon, MaySendAnyBytes) {
    const std::string good = answer_of(daemon, "0042");
    const std::string tag = "Response Status: ";
    const struct {
        std::string answer;
        outcome wanted;
    } rows[] = {
        {"\0"s + good, unread()},
        {"Response\0Status: "s + daemon.prefix + "0\n", unread()},
        {tag + "\0"s + daemon.prefix + "0\n", failed(daemon, WRONG_PREFIX)},
        {good + "\0no more\n"s, accepted()},
        {std::string(1024, '\0'), unread()},
        {"\xff\xfe" + good, unread()},
        {tag + daemon.prefix + "\xc3\x28\n", failed(daemon, BAD_NUMBER)},
        {good + "\xf0\x9f\n", failed(daemon, FURTHER_TEXT)},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.answer);
        expect_run({expect(daemon.text), reply(row.answer), close_connection()}, row.wanted);
    }
}

TEST_P(Daemon, FloodIsReadOnceInLittleMemory) {
    const step good = reply(answer_of(daemon, "0042"));
    const std::size_t times = flooded(GIBIBYTE) / 1024;
    const std::string text(1024, 'x');
    const step request = expect(daemon.text);
    expect_run({request, reply(text, times)}, unread());
    expect_run({request, reply(std::string(1024, '\0'), times)}, unread());
    expect_run({request, good, reply(std::string(1024, '\n'), times)}, accepted());
    expect_run({request, reply(answer_of(daemon, "0042") + text), reply(text, times)},
               failed(daemon, FURTHER_TEXT));
}

/// How much has come byte by byte when the program reads is the machine's affair.
TEST_P(Daemon, DripIsJudgedAsFarAsItCame) {
    const meeting_point point(daemon.where, {expect(daemon.text), drip("Response Status: ")});
    const run_result seen = run(command(point.path));
    expect_outcome(seen, seen.output == unread().output ? unread() : failed(daemon, WRONG_PREFIX));
    EXPECT_EQ(point.daemon->finish(), "");
}

// ---------------------------------------------------------------------------------------------
// Silence, and sockets that are none

/// A client that waits for the answer of a daemon, which the test lets it have.
struct waiting_client {
    waiting_client(const request &daemon, const step &answer)
        : point(daemon.where, {expect(daemon.text), await_end(), answer, await_end()}),
          program(lumocmd_command(arguments_of(daemon, point))) {
        EXPECT_TRUE(point.daemon->wait_for_await());
        EXPECT_TRUE(program.keeps_running());
    }

    void let_it_have_its_answer() const {
        point.daemon->go_on();
        EXPECT_TRUE(point.daemon->wait_for_await());
    }

    void expect_end(const outcome &wanted) {
        expect_outcome(program.finish(), wanted);
        EXPECT_EQ(point.daemon->finish(), "");
    }

    meeting_point point;
    started_program program;
};

TEST_P(Daemon, SilenceIsWaitedForUntilItsEnd) {
    waiting_client client(daemon, half_close());
    client.let_it_have_its_answer();
    client.expect_end(unread());
}

TEST_P(Daemon, SilenceIsLeftOnASignal) {
    for (const int number : {SIGHUP, SIGINT, SIGALRM, SIGTERM, SIGUSR1}) {
        waiting_client client(daemon, half_close());
        client.program.send_signal(number);
        client.expect_end({"", 128 + number});
    }
}

/// Signals without an effect are waited out, and so is a stop.
TEST_P(Daemon, SilenceBehindHarmlessSignalsIsWaitedFor) {
    if (is_wrapped()) {
        GTEST_SKIP() << "the signals would hit the wrapper";
    }
    waiting_client client(daemon, reply(answer_of(daemon, "0042")));
    for (const int number : {SIGWINCH, SIGCHLD, SIGURG, SIGCONT, SIGPIPE}) {
        client.program.send_signal(number);
    }
    client.program.send_signal(SIGSTOP);
    EXPECT_TRUE(client.program.wait_for_change(WSTOPPED));
    client.let_it_have_its_answer();
    client.program.send_signal(SIGCONT);
    client.expect_end(accepted());
}

TEST_P(Daemon, NeverAcceptingIsWaitedForUntilItCloses) {
    const meeting_point crowded(daemon.where, {never_accept()});
    started_program program(command(crowded.path));
    EXPECT_TRUE(program.keeps_running());
    EXPECT_EQ(crowded.daemon->finish_unvisited(), "");
    expect_outcome(program.finish(), unconnected(daemon, "connect", ECONNREFUSED));
}

TEST_P(Daemon, OfAnotherTypeIsNone) {
    for (const int type : {SOCK_DGRAM, SOCK_SEQPACKET}) {
        const std::string path = directory.path + "/" + std::to_string(type);
        const int foreign = socket(AF_UNIX, type | SOCK_CLOEXEC, 0);
        bind_to_path(foreign, path);
        EXPECT_EQ(listen(foreign, 4), type == SOCK_SEQPACKET ? 0 : -1);
        expect_outcome(run(command(path)), unconnected(daemon, "connect", EPROTOTYPE));
        close(foreign);
    }
    const std::string file = directory.path + "/file";
    std::ofstream(file) << "Response Status: ";
    expect_outcome(run(command(file)), unconnected(daemon, "connect", ECONNREFUSED));
}

INSTANTIATE_TEST_SUITE_P(Table, Daemon, testing::ValuesIn(daemon_requests()),
                         [](const auto &row) { return row.param.name; });

} // namespace
