#include "tests/harness/process.h"

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <poll.h>
#include <pty.h>
#include <regex>
#include <sstream>
#include <stdexcept>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>
#include <utmp.h>

namespace harness {

namespace {

/// A program that gives up does so at once; this is how long "at once" may take.
constexpr int MOMENT_MS = 300;

std::vector<char *> pointers(const words &texts) {
    std::vector<char *> all;
    for (const std::string &text : texts) {
        all.push_back(const_cast<char *>(text.c_str()));
    }
    all.push_back(nullptr);
    return all;
}

[[noreturn]] void become(const words &command, const start_options &options, int output,
                         int errors) {
    words settings = options.settings;
    for (char **old = environ; !options.empty_environment && *old != nullptr; old++) {
        settings.emplace_back(*old);
    }
    if (options.on_terminal) {
        settings.insert(settings.begin(), "TERM=dumb");
    }
    std::vector<char *> environment = pointers(settings);
    const std::string file = options.file.empty() && !command.empty() ? command[0] : options.file;
    dup2(open("/dev/null", O_RDONLY), STDIN_FILENO);
    dup2(errors, STDERR_FILENO);
    if (!options.on_terminal || login_tty(output) != 0) {
        dup2(output, STDOUT_FILENO);
    }
    for (const int number : {SIGHUP, SIGINT, SIGPIPE, SIGQUIT}) { // nohup or a shell ignores some
        signal(number, SIG_DFL);
    }
    environ = environment.data();
    if (options.directory.empty() || chdir(options.directory.c_str()) == 0) {
        if (options.prepare) {
            options.prepare();
        }
        execvp(file.c_str(), pointers(command).data());
    }
    _exit(127);
}

/// Adds what waits in a stream to its text, or closes it at its end.
void take_from(const pollfd &watched, int *stream, std::string *text) {
    char bytes[65536];
    const ssize_t count = watched.revents != 0 ? read(*stream, bytes, sizeof bytes) : 0;
    if (count > 0) {
        text->append(bytes, static_cast<std::size_t>(count));
    } else if (watched.revents != 0) {
        close(std::exchange(*stream, -1));
    }
}

int open_terminal(int ends[2]) {
    const winsize size = {100, 240, 0, 0};
    const int result = openpty(&ends[0], &ends[1], nullptr, nullptr, &size);
    return result == 0 ? fcntl(ends[0], F_SETFD, FD_CLOEXEC) : result;
}

std::string setting(const char *name, const char *usual) {
    const char *value = getenv(name);
    return value != nullptr && *value != '\0' ? value : usual;
}

} // namespace

bool is_readable(int descriptor, int patience_ms) {
    pollfd watched = {descriptor, POLLIN, 0};
    return poll(&watched, 1, patience_ms) > 0;
}

started_program::started_program(const words &command, const start_options &options) {
    int output[2];
    int errors[2];
    if ((options.on_terminal ? open_terminal(output) : pipe2(output, O_CLOEXEC)) != 0 ||
        pipe2(errors, O_CLOEXEC) != 0) {
        throw std::runtime_error("no pipe or terminal");
    }
    result_.pid = fork();
    if (result_.pid == 0) {
        become(command, options, output[1], errors[1]);
    }
    close(output[1]);
    close(errors[1]);
    output_ = output[0];
    errors_ = errors[0];
    process_ = result_.pid < 0 ? -1 : static_cast<int>(syscall(SYS_pidfd_open, result_.pid, 0));
    if (process_ < 0) {
        throw std::runtime_error("no process to watch");
    }
}

started_program::~started_program() {
    if (process_ >= 0) {
        kill(pid(), SIGKILL);
        waitpid(pid(), nullptr, 0);
    }
    for (const int descriptor : {process_, output_, errors_}) {
        close(descriptor);
    }
}

bool started_program::wait_until(const std::function<bool()> &holds) {
    using clock = std::chrono::steady_clock;
    using std::chrono::milliseconds;
    const auto deadline = clock::now() + milliseconds(PATIENCE_MS);
    while (!holds()) {
        const auto left = std::chrono::duration_cast<milliseconds>(deadline - clock::now());
        pollfd watched[] = {{output_, POLLIN, 0}, {errors_, POLLIN, 0}};
        if ((output_ < 0 && errors_ < 0) || left.count() <= 0 ||
            poll(watched, 2, static_cast<int>(left.count())) <= 0) {
            return false;
        }
        take_from(watched[0], &output_, &result_.output);
        take_from(watched[1], &errors_, &result_.errors);
    }
    return true;
}

bool started_program::wait_for_output(const std::string &text) {
    return wait_until([&] { return output().find(text) != std::string::npos; });
}

void started_program::type(const std::string &keys) const {
    if (write(output_, keys.data(), keys.size()) != static_cast<ssize_t>(keys.size())) {
        throw std::runtime_error("the terminal takes no keys");
    }
}

std::string started_program::shown_until(const std::string &end) {
    static const std::regex noise(
        "\x1b\\[[0-9;?>=]*[A-Za-z]|\x1b[=>]|\x1b\\][^\x07]*\x07|[\r\x07]");
    const bool has_come = wait_until([&] {
        result_.output = std::regex_replace(output(), noise, "");
        return output().find(end) != std::string::npos;
    });
    if (!has_come) {
        throw std::runtime_error(end + " was not shown, only: " + output());
    }
    std::string shown = output().substr(0, output().find(end) + end.size());
    result_.output.erase(0, shown.size());
    return shown;
}

bool started_program::wait_for_change(int change) const {
    siginfo_t news = {};
    waitid(P_PID, static_cast<id_t>(pid()), &news, change | WEXITED | WNOWAIT);
    return news.si_code == (change == WSTOPPED ? CLD_STOPPED : CLD_CONTINUED);
}

bool started_program::keeps_running() const {
    return !is_readable(process_, MOMENT_MS);
}

void started_program::send_signal(int number) const {
    if (kill(pid(), number) != 0) {
        throw std::runtime_error("the program took no signal");
    }
}

run_result started_program::finish() {
    wait_until([] { return false; });
    // With its streams closed a program can still be running.
    const bool has_ended = output_ < 0 && errors_ < 0 && is_readable(process_);
    if (!has_ended) {
        kill(pid(), SIGKILL);
    }
    int status = 0;
    rusage used = {};
    wait4(pid(), &status, 0, &used);
    close(std::exchange(process_, -1));
    result_.kilobytes = used.ru_maxrss;
    result_.status = WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
    result_.status = has_ended ? result_.status : -1;
    return result_;
}

run_result run(const words &command, const start_options &options) {
    return started_program(command, options).finish();
}

std::string lumocmd_path() {
    return setting("LUMOCMD_PROGRAM", LUMOCMD_BUILT_PROGRAM);
}

bool is_wrapped() {
    return !setting("LUMOCMD_WRAPPER", "").empty();
}

words lumocmd_command(const words &arguments) {
    words command;
    std::istringstream wrapper(setting("LUMOCMD_WRAPPER", ""));
    for (std::string word; wrapper >> word;) {
        command.push_back(word);
    }
    command.push_back(lumocmd_path());
    command.insert(command.end(), arguments.begin(), arguments.end());
    return command;
}

run_result lumocmd(const words &arguments, const start_options &options) {
    return run(lumocmd_command(arguments), options);
}

std::string missing_terminal() {
    int ends[2];
    if (open_terminal(ends) != 0) {
        return std::string("no pseudo-terminal: ") + strerror(errno);
    }
    close(ends[0]);
    close(ends[1]);
    return "";
}

temporary_directory::temporary_directory() {
    char name[] = "/tmp/lumocmd-test-XXXXXX";
    if (mkdtemp(name) == nullptr) {
        throw std::runtime_error("mkdtemp failed");
    }
    path = name;
}

temporary_directory::~temporary_directory() {
    std::error_code ignored;
    std::filesystem::remove_all(path, ignored);
}

} // namespace harness
