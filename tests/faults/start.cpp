#include "tests/faults/start.h"

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <stdexcept>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace fault_tests {

namespace {

std::vector<char *> pointers(const harness::words &texts) {
    std::vector<char *> all;
    for (const std::string &text : texts) {
        all.push_back(const_cast<char *>(text.c_str()));
    }
    all.push_back(nullptr);
    return all;
}

[[noreturn]] void become(const odd_start &start, int output, int errors) {
    harness::words vector;
    if (!start.empty_vector) {
        vector = start.arguments;
        vector.insert(vector.begin(), harness::lumocmd_path());
    }
    harness::words environment = start.settings;
    for (char **old = environ; !start.empty_environment && *old != nullptr; old++) {
        environment.emplace_back(*old);
    }
    const std::string path = harness::lumocmd_path();
    dup2(open("/dev/null", O_RDONLY), STDIN_FILENO);
    dup2(output, STDOUT_FILENO);
    dup2(errors, STDERR_FILENO);
    signal(SIGPIPE, SIG_DFL);
    if (start.prepare) {
        start.prepare();
    }
    execve(path.c_str(), pointers(vector).data(), pointers(environment).data());
    _exit(127);
}

using clock = std::chrono::steady_clock;

int milliseconds_until(clock::time_point deadline) {
    const auto left =
        std::chrono::duration_cast<std::chrono::milliseconds>(deadline - clock::now());
    return left.count() > 0 ? static_cast<int>(left.count()) : 0;
}

} // namespace

started_lumocmd::started_lumocmd(const odd_start &start) {
    int output[2];
    int errors[2];
    if (pipe2(output, O_CLOEXEC) != 0 || pipe2(errors, O_CLOEXEC) != 0) {
        throw std::runtime_error("pipe2 failed");
    }
    pid_ = fork();
    if (pid_ == 0) {
        become(start, output[1], errors[1]);
    }
    close(output[1]);
    close(errors[1]);
    output_ = output[0];
    errors_ = errors[0];
    if (pid_ < 0) {
        throw std::runtime_error("fork failed");
    }
}

started_lumocmd::~started_lumocmd() {
    if (pid_ > 0) {
        kill(pid_, SIGKILL);
        waitpid(pid_, nullptr, 0);
    }
    close(output_);
    close(errors_);
}

void started_lumocmd::send_signal(int number) const {
    ASSERT_EQ(kill(pid_, number), 0) << strerror(errno);
}

void started_lumocmd::await(int change) const {
    siginfo_t news = {};
    ASSERT_EQ(waitid(P_PID, static_cast<id_t>(pid_), &news, change | WEXITED | WNOWAIT), 0);
    ASSERT_EQ(news.si_code, change == WSTOPPED ? CLD_STOPPED : CLD_CONTINUED);
}

ending started_lumocmd::finish() {
    const auto deadline = clock::now() + std::chrono::milliseconds(harness::PATIENCE_MS);
    ending end;
    end.pid = pid_;
    const int process = static_cast<int>(syscall(SYS_pidfd_open, pid_, 0));
    pollfd watched[3] = {{process, POLLIN, 0}, {output_, POLLIN, 0}, {errors_, POLLIN, 0}};
    std::string *texts[3] = {nullptr, &end.output, &end.errors};
    while (watched[0].fd >= 0 || watched[1].fd >= 0 || watched[2].fd >= 0) {
        if (poll(watched, 3, milliseconds_until(deadline)) <= 0) {
            break;
        }
        for (int i = 0; i < 3; i++) {
            char bytes[65536];
            if (watched[i].fd < 0 || watched[i].revents == 0) {
                continue;
            }
            const ssize_t count = i == 0 ? 0 : read(watched[i].fd, bytes, sizeof bytes);
            if (count > 0) {
                texts[i]->append(bytes, static_cast<std::size_t>(count));
            } else {
                watched[i].fd = -1;
            }
        }
    }
    end.in_time = watched[0].fd < 0;
    close(process);
    if (!end.in_time) {
        kill(pid_, SIGKILL);
    }
    int status = 0;
    waitpid(pid_, &status, 0);
    pid_ = -1;
    end.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    end.signal = WIFSIGNALED(status) ? WTERMSIG(status) : 0;
    return end;
}

ending run_oddly(const odd_start &start) {
    return started_lumocmd(start).finish();
}

void expect_status(const ending &end, int status) {
    EXPECT_TRUE(end.in_time) << "it did not end";
    EXPECT_EQ(end.signal, 0) << strsignal(end.signal);
    EXPECT_EQ(end.status, status & 0xff);
}

} // namespace fault_tests
