#include "tests/peers/measured_program.h"

#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sstream>
#include <stdexcept>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace harness {

namespace {

/// A program that gives up does so at once; this is how long "at once" may take.
constexpr int MOMENT_MS = 300;

int open_memory(const char *name) {
    const int file = memfd_create(name, MFD_CLOEXEC);
    if (file < 0) {
        throw std::runtime_error("memfd_create failed");
    }
    return file;
}

std::string take_content(int file) {
    std::string text(static_cast<std::size_t>(lseek(file, 0, SEEK_END)), '\0');
    std::size_t length = 0;
    for (ssize_t count;
         length < text.size() && (count = pread(file, text.data() + length, text.size() - length,
                                                static_cast<off_t>(length))) > 0;) {
        length += static_cast<std::size_t>(count);
    }
    close(file);
    return text;
}

words whole_command(const words &arguments) {
    words command;
    const char *wrapper = getenv("LUMOCMD_WRAPPER");
    std::istringstream wrapper_words(wrapper == nullptr ? "" : wrapper);
    for (std::string word; wrapper_words >> word;) {
        command.push_back(word);
    }
    command.push_back(lumocmd_path());
    command.insert(command.end(), arguments.begin(), arguments.end());
    return command;
}

} // namespace

measured_program::measured_program(const words &arguments)
    : output_(open_memory("output")), errors_(open_memory("errors")) {
    const words command = whole_command(arguments);
    std::vector<char *> texts;
    for (const std::string &word : command) {
        texts.push_back(const_cast<char *>(word.c_str()));
    }
    texts.push_back(nullptr);
    pid_ = fork();
    if (pid_ == 0) {
        dup2(open("/dev/null", O_RDONLY), STDIN_FILENO);
        dup2(output_, STDOUT_FILENO);
        dup2(errors_, STDERR_FILENO);
        execvp(texts[0], texts.data());
        _exit(127);
    }
    process_ = pid_ < 0 ? -1 : static_cast<int>(syscall(SYS_pidfd_open, pid_, 0));
    if (process_ < 0) {
        throw std::runtime_error("no process to watch");
    }
}

measured_program::~measured_program() {
    if (process_ >= 0) {
        kill(pid_, SIGKILL);
        finish();
    }
}

bool measured_program::ends_within(int milliseconds) const {
    pollfd watched = {process_, POLLIN, 0};
    return poll(&watched, 1, milliseconds) > 0;
}

bool measured_program::keeps_waiting() const {
    return !ends_within(MOMENT_MS);
}

void measured_program::terminate() const {
    kill(pid_, SIGTERM);
}

measured_run measured_program::finish() {
    const bool ended = ends_within(PATIENCE_MS);
    if (!ended) {
        kill(pid_, SIGKILL);
    }
    int status = 0;
    rusage used = {};
    wait4(pid_, &status, 0, &used);
    close(process_);
    process_ = -1;
    measured_run measured = {};
    measured.kilobytes = used.ru_maxrss;
    measured.run.output = take_content(output_);
    measured.run.errors = take_content(errors_);
    measured.run.pid = pid_;
    if (!ended) {
        measured.run.status = -1;
    } else {
        measured.run.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    }
    return measured;
}

bool is_shipped_program() {
#ifdef NDEBUG
    return getenv("LUMOCMD_WRAPPER") == nullptr;
#else
    return false;
#endif
}

} // namespace harness
