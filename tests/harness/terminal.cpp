#include "tests/harness/terminal.h"

#include <cerrno>
#include <cstring>
#include <pty.h>
#include <regex>
#include <stdexcept>
#include <unistd.h>

namespace harness {

namespace {

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

terminal::terminal(const words &command)
    : program_(command, {.settings = {"TERM=dumb"}, .on_terminal = true}) {}

std::string terminal::shown_until(const std::string &end) {
    std::string shown;
    std::size_t found = 0;
    const bool has_come = program_.wait_until([&] {
        unread_ += program_.take_output();
        shown = plain(unread_);
        found = shown.find(end);
        return found != std::string::npos;
    });
    if (!has_come) {
        throw std::runtime_error(end + " was not shown, only: " + shown);
    }
    unread_ = shown.substr(found + end.size());
    return shown.substr(0, found + end.size());
}

} // namespace harness
