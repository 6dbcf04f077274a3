#include "simulator/bench.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

constexpr int SCRIPT_NOT_STARTED = 126;
constexpr int SCRIPT_NOT_FOUND = 127;
constexpr int SIGNAL_STATUS = 128;

/// Sets the command's environment, with the simulator's own directory first in PATH.
void set_environment(const std::string &directory, const std::string &url) {
    std::error_code error;
    const auto program = std::filesystem::read_symlink("/proc/self/exe", error);
    const char *path = std::getenv("PATH"); // NOLINT(concurrency-mt-unsafe): one thread
    // Unknown without /proc; an empty entry in PATH would be the current directory.
    const std::string leading = error ? "" : program.parent_path().string() + ":";
    // NOLINTBEGIN(concurrency-mt-unsafe)
    setenv("PATH", (leading + (path == nullptr ? "/usr/bin:/bin" : path)).c_str(), 1);
    setenv("LUMO_DIRECTORY", std::filesystem::absolute(directory).c_str(), 1);
    setenv("LUMO_URL", url.c_str(), 1);
    // NOLINTEND(concurrency-mt-unsafe)
}

} // namespace

std::string start_script(script_run &script, const std::vector<std::string> &command,
                         const std::string &directory, const std::string &url) {
    set_environment(directory, url);
    std::vector<char *> words;
    words.reserve(command.size() + 1);
    for (const std::string &word : command) {
        words.push_back(const_cast<char *>(word.c_str())); // as execv wants them
    }
    words.push_back(nullptr);
    // The simulator ignores this signal; the command must not inherit that.
    sigset_t usual;
    sigemptyset(&usual);
    sigaddset(&usual, SIGPIPE);
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    posix_spawnattr_setsigdefault(&attributes, &usual);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGDEF);
    const int error =
        posix_spawnp(&script.pid, words[0], nullptr, &attributes, words.data(), environ);
    posix_spawnattr_destroy(&attributes);
    if (error == 0) {
        return "";
    }
    script.status = error == ENOENT ? SCRIPT_NOT_FOUND : SCRIPT_NOT_STARTED;
    return "cannot run " + command[0] + ": " +
           std::strerror(error); // NOLINT(concurrency-mt-unsafe): one thread
}

bool take_signal(script_run &script, int number) {
    if (number != SIGCHLD) {
        script.signal = number;
        kill(script.pid, number);
        return false;
    }
    int status = 0;
    if (waitpid(script.pid, &status, WNOHANG) != script.pid) {
        return false;
    }
    script.status = WIFEXITED(status) ? WEXITSTATUS(status) : SIGNAL_STATUS + WTERMSIG(status);
    return true;
}
