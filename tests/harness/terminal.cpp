#include "tests/harness/terminal.h"

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <poll.h>
#include <pty.h>
#include <regex>
#include <stdexcept>
#include <sys/wait.h>
#include <unistd.h>

namespace harness {

namespace {

using clock = std::chrono::steady_clock;

std::string plain(const std::string &shown) {
    static const std::regex noise(
        "\x1b\\[[0-9;?>=]*[A-Za-z]|\x1b[=>]|\x1b\\][^\x07]*\x07|[\r\x07]");
    return std::regex_replace(shown, noise, "");
}

} // namespace

std::string missing_terminal() {
    int ends[2];
    if (openpty(&ends[0], &ends[1], nullptr, nullptr, nullptr) != 0) {
        return std::string("no pseudo-terminal: ") + strerror(errno);
    }
    close(ends[0]);
    close(ends[1]);
    return "";
}

terminal::terminal(const words &command) {
    std::vector<char *> arguments;
    for (const std::string &word : command) {
        arguments.push_back(const_cast<char *>(word.c_str()));
    }
    arguments.push_back(nullptr);
    const winsize size = {100, 240, 0, 0};
    child_ = forkpty(&master_, nullptr, nullptr, &size);
    if (child_ < 0) {
        throw std::runtime_error("forkpty failed");
    }
    if (child_ == 0) {
        setenv("TERM", "dumb", 1);
        execvp(arguments[0], arguments.data());
        _exit(127);
    }
}

terminal::~terminal() {
    close(master_);
    kill(child_, SIGKILL);
    waitpid(child_, nullptr, 0);
}

void terminal::type(const std::string &keys) const {
    if (write(master_, keys.data(), keys.size()) != static_cast<ssize_t>(keys.size())) {
        throw std::runtime_error("the terminal takes no keys");
    }
}

std::string terminal::shown_until(const std::string &end) {
    const auto deadline = clock::now() + std::chrono::milliseconds(PATIENCE_MS);
    for (;;) {
        const std::string shown = plain(unread_);
        const std::size_t found = shown.find(end);
        if (found != std::string::npos) {
            unread_ = shown.substr(found + end.size());
            return shown.substr(0, found + end.size());
        }
        const auto left =
            std::chrono::duration_cast<std::chrono::milliseconds>(deadline - clock::now());
        pollfd waiting = {master_, POLLIN, 0};
        char bytes[4096];
        ssize_t count = 0;
        if (left.count() > 0 && poll(&waiting, 1, static_cast<int>(left.count())) > 0) {
            count = read(master_, bytes, sizeof bytes);
        }
        if (count <= 0) {
            std::string complaint = end;
            complaint.append(" was not shown, only: ").append(shown);
            throw std::runtime_error(complaint);
        }
        unread_.append(bytes, static_cast<std::size_t>(count));
    }
}

} // namespace harness
