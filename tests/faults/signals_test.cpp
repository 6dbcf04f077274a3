// Signals that arrive while a request waits for its answer.

#include "tests/faults/requests.h"
#include "tests/faults/start.h"

#include <csignal>
#include <cstring>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using namespace fault_tests;

/// A daemon that a test plays itself, one step at a time.
class played_daemon {
  public:
    explicit played_daemon(const std::string &path)
        : listener_(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        sockaddr_un address = {};
        address.sun_family = AF_UNIX;
        path.copy(address.sun_path, sizeof address.sun_path - 1);
        EXPECT_EQ(bind(listener_, reinterpret_cast<sockaddr *>(&address), sizeof address), 0);
        EXPECT_EQ(listen(listener_, 1), 0);
    }
    ~played_daemon() {
        close(connection_);
        close(listener_);
    }
    played_daemon(const played_daemon &) = delete;
    played_daemon &operator=(const played_daemon &) = delete;

    /// The whole request of the client; empty when it did not come in time.
    std::string take_request() {
        std::string request;
        if (is_readable(listener_)) {
            connection_ = accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
        }
        char bytes[2048];
        while (!request.ends_with("\n\n") && is_readable(connection_)) {
            const ssize_t count = recv(connection_, bytes, sizeof bytes, 0);
            if (count <= 0) {
                return "";
            }
            request.append(bytes, static_cast<std::size_t>(count));
        }
        return request;
    }

    void answer(const std::string &text) const {
        EXPECT_EQ(send(connection_, text.data(), text.size(), MSG_NOSIGNAL),
                  static_cast<ssize_t>(text.size()));
    }

    /// Whether the client closes without another byte.
    bool sees_the_end() const {
        char byte = 0;
        return is_readable(connection_) && recv(connection_, &byte, 1, 0) == 0;
    }

  private:
    static bool is_readable(int descriptor) {
        pollfd watched = {descriptor, POLLIN, 0};
        return descriptor >= 0 && poll(&watched, 1, harness::PATIENCE_MS) == 1;
    }

    int listener_;
    int connection_ = -1;
};

class Signals : public testing::TestWithParam<socket_request> {
  protected:
    void SetUp() override {
        SKIP_BEHIND_A_WRAPPER();
    }

    odd_start start() const {
        return {.arguments = arguments_of(request, path), .prepare = no_core};
    }

    static void no_core() {
        const rlimit none = {0, 0};
        setrlimit(RLIMIT_CORE, &none);
    }

    void expect_answered(const ending &end) const {
        expect_status(end, 42);
        EXPECT_EQ(end.output, progress_of(request, path, end.pid) + "FSMC-042\n");
        EXPECT_EQ(end.errors, "");
    }

    const socket_request &request = GetParam();
    harness::temporary_directory directory;
    std::string path = directory.path + "/s";
};

TEST_P(Signals, WithoutAnEffectAreWaitedOut) {
    played_daemon daemon(path);
    started_lumocmd client(start());
    EXPECT_EQ(daemon.take_request(), request.request);
    for (const int number : {SIGWINCH, SIGCHLD, SIGURG, SIGCONT, SIGPIPE}) {
        client.send_signal(number);
    }
    daemon.answer(answer_of(request, "0042"));
    expect_answered(client.finish());
    EXPECT_TRUE(daemon.sees_the_end());
}

TEST_P(Signals, StoppedAndContinuedStillTakesItsAnswer) {
    played_daemon daemon(path);
    started_lumocmd client(start());
    EXPECT_EQ(daemon.take_request(), request.request);
    for (int i = 0; i < 3; i++) {
        client.send_signal(SIGSTOP);
        client.await(WSTOPPED);
        client.send_signal(SIGCONT);
        client.await(WCONTINUED);
    }
    client.send_signal(SIGSTOP);
    client.await(WSTOPPED);
    daemon.answer(answer_of(request, "0042"));
    client.send_signal(SIGCONT);
    expect_answered(client.finish());
    EXPECT_TRUE(daemon.sees_the_end());
}

TEST_P(Signals, ThatKillDoSo) {
    for (const int number : {SIGHUP, SIGINT, SIGQUIT, SIGALRM, SIGTERM, SIGUSR1, SIGUSR2}) {
        SCOPED_TRACE(strsignal(number));
        unlink(path.c_str());
        played_daemon daemon(path);
        started_lumocmd client(start());
        EXPECT_EQ(daemon.take_request(), request.request);
        client.send_signal(number);
        const ending end = client.finish();
        EXPECT_TRUE(end.in_time);
        EXPECT_EQ(end.signal, number);
        EXPECT_EQ(end.output.find("FSMC-"), std::string::npos);
        EXPECT_EQ(end.errors, "");
        EXPECT_TRUE(daemon.sees_the_end());
    }
}

/// What the caller blocked or ignored stays so.
TEST_P(Signals, BlockedByTheCallerAreWaitedOut) {
    played_daemon daemon(path);
    odd_start blocked = start();
    blocked.prepare = [] {
        sigset_t all;
        sigfillset(&all);
        sigprocmask(SIG_BLOCK, &all, nullptr);
        signal(SIGCHLD, SIG_IGN);
        no_core();
    };
    started_lumocmd client(blocked);
    EXPECT_EQ(daemon.take_request(), request.request);
    for (const int number : {SIGTERM, SIGINT, SIGUSR1, SIGCHLD, SIGALRM}) {
        client.send_signal(number);
    }
    daemon.answer(answer_of(request, "0042"));
    expect_answered(client.finish());
}

INSTANTIATE_TEST_SUITE_P(Table, Signals, testing::ValuesIn(socket_requests()),
                         [](const auto &row) { return row.param.keyword; });

} // namespace
