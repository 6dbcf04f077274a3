#include "tests/harness/process.h"

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <poll.h>
#include <sstream>
#include <stdexcept>
#include <sys/wait.h>
#include <unistd.h>

namespace harness {

namespace {

using clock = std::chrono::steady_clock;

struct pipe_ends {
    int read;
    int write;
};

pipe_ends make_pipe() {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) {
        throw std::runtime_error("pipe2 failed");
    }
    return {ends[0], ends[1]};
}

[[noreturn]] void become(const words &command, const run_options &options, int output, int errors) {
    std::vector<char *> arguments;
    for (const std::string &word : command) {
        arguments.push_back(const_cast<char *>(word.c_str()));
    }
    arguments.push_back(nullptr);
    dup2(open("/dev/null", O_RDONLY), STDIN_FILENO);
    dup2(output, STDOUT_FILENO);
    dup2(errors, STDERR_FILENO);
    if (options.close_output) {
        close(STDOUT_FILENO);
    }
    signal(SIGPIPE, SIG_DFL);
    if (options.directory.empty() || chdir(options.directory.c_str()) == 0) {
        execvp(arguments[0], arguments.data());
    }
    _exit(127);
}

/// Reads both pipes until they end; false when that took too long.
bool collect(int output, int errors, run_result *result) {
    const auto deadline = clock::now() + std::chrono::milliseconds(PATIENCE_MS);
    pollfd pipes[2] = {{output, POLLIN, 0}, {errors, POLLIN, 0}};
    std::string *texts[2] = {&result->output, &result->errors};
    int open_pipes = 2;
    while (open_pipes > 0) {
        const auto left =
            std::chrono::duration_cast<std::chrono::milliseconds>(deadline - clock::now());
        if (left.count() <= 0 || poll(pipes, 2, static_cast<int>(left.count())) <= 0) {
            return false;
        }
        for (int i = 0; i < 2; i++) {
            char bytes[65536];
            if (pipes[i].fd < 0 || pipes[i].revents == 0) {
                continue;
            }
            const ssize_t count = read(pipes[i].fd, bytes, sizeof bytes);
            if (count > 0) {
                texts[i]->append(bytes, static_cast<std::size_t>(count));
            } else {
                pipes[i].fd = -1;
                open_pipes--;
            }
        }
    }
    return true;
}

std::string setting(const char *name, const char *usual) {
    const char *value = getenv(name);
    return value != nullptr && *value != '\0' ? value : usual;
}

} // namespace

run_result run(const words &command, const run_options &options) {
    const pipe_ends output = make_pipe();
    const pipe_ends errors = make_pipe();
    run_result result = {};
    result.pid = fork();
    if (result.pid < 0) {
        throw std::runtime_error("fork failed");
    }
    if (result.pid == 0) {
        become(command, options, output.write, errors.write);
    }
    close(output.write);
    close(errors.write);
    const bool ended = collect(output.read, errors.read, &result);
    close(output.read);
    close(errors.read);
    if (!ended) {
        kill(result.pid, SIGKILL);
    }
    int status = 0;
    waitpid(result.pid, &status, 0);
    if (!ended) {
        result.status = -1;
    } else {
        result.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    }
    return result;
}

std::string lumocmd_path() {
    return setting("LUMOCMD_PROGRAM", LUMOCMD_BUILT_PROGRAM);
}

run_result lumocmd(const words &arguments, const run_options &options) {
    words command;
    std::istringstream wrapper(setting("LUMOCMD_WRAPPER", ""));
    for (std::string word; wrapper >> word;) {
        command.push_back(word);
    }
    command.push_back(lumocmd_path());
    command.insert(command.end(), arguments.begin(), arguments.end());
    return run(command, options);
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
