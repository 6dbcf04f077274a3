// The harness: fork and exec with pipes, bounded waits with poll, raw stream sockets.
#include "tests/simulator/simulator_process.h"

#include <arpa/inet.h>
#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <poll.h>
#include <sstream>
#include <stdexcept>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using Clock = std::chrono::steady_clock;

int time_left(Clock::time_point start) {
    const auto gone =
        std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start).count();
    return gone >= PATIENCE_MS ? 0 : static_cast<int>(PATIENCE_MS - gone);
}

/// Reads what comes next on either output; false when both have ended or the time is up.
bool read_outputs(Program &program, Clock::time_point start) {
    std::array<pollfd, 2> watched{
        {{program.out_descriptor, POLLIN, 0}, {program.error_descriptor, POLLIN, 0}}};
    if ((watched[0].fd < 0 && watched[1].fd < 0) ||
        poll(watched.data(), 2, time_left(start)) <= 0) {
        return false;
    }
    std::array<std::pair<int *, std::string *>, 2> streams{
        {{&program.out_descriptor, &program.out}, {&program.error_descriptor, &program.errors}}};
    for (std::size_t i = 0; i < streams.size(); ++i) {
        if (watched[i].revents == 0) {
            continue;
        }
        std::array<char, 65536> chunk{};
        const ssize_t count = read(*streams[i].first, chunk.data(), chunk.size());
        if (count > 0) {
            streams[i].second->append(chunk.data(), static_cast<std::size_t>(count));
        } else {
            close(*streams[i].first);
            *streams[i].first = -1;
        }
    }
    return true;
}

std::vector<std::string> command_line(const std::vector<std::string> &arguments) {
    std::vector<std::string> words;
    if (const char *wrapper = std::getenv("LUMOSIM_WRAPPER")) {
        std::istringstream text(wrapper);
        words.assign(std::istream_iterator<std::string>(text), {});
    }
    words.emplace_back(LUMOSIM_PROGRAM);
    words.insert(words.end(), arguments.begin(), arguments.end());
    return words;
}

void start(Program &program, std::vector<std::string> words) {
    std::vector<char *> pointers;
    pointers.reserve(words.size() + 1);
    for (std::string &word : words) {
        pointers.push_back(word.data());
    }
    pointers.push_back(nullptr);
    std::array<int, 2> out_pipe{};
    std::array<int, 2> error_pipe{};
    if (pipe2(out_pipe.data(), O_CLOEXEC) != 0 || pipe2(error_pipe.data(), O_CLOEXEC) != 0) {
        throw std::runtime_error("pipe failed");
    }
    program.pid = fork();
    if (program.pid == 0) {
        dup2(out_pipe[1], STDOUT_FILENO);
        dup2(error_pipe[1], STDERR_FILENO);
        execvp(pointers[0], pointers.data());
        _exit(127);
    }
    close(out_pipe[1]);
    close(error_pipe[1]);
    program.out_descriptor = out_pipe[0];
    program.error_descriptor = error_pipe[0];
}

/// Whether the body is as long as the head says, where it does: some servers do not close.
bool is_whole_http_answer(const std::string &answer) {
    const std::string tag = "\r\nContent-Length:";
    const std::size_t end = answer.find("\r\n\r\n");
    const std::size_t at = answer.find(tag);
    return end != std::string::npos && at < end &&
           answer.size() - end - 4 >= std::stoul(answer.substr(at + tag.size()));
}

} // namespace

FreshDirectory::FreshDirectory() : path("/tmp/simtest-XXXXXX") {
    if (mkdtemp(path.data()) == nullptr) {
        throw std::runtime_error("mkdtemp failed");
    }
}

FreshDirectory::~FreshDirectory() {
    std::error_code ignored;
    std::filesystem::remove_all(path, ignored);
}

Program::Program(const std::vector<std::string> &arguments) {
    start(*this, command_line(arguments));
}

Program::Program(const std::string &name, const std::vector<std::string> &arguments) {
    std::vector<std::string> words{name};
    words.insert(words.end(), arguments.begin(), arguments.end());
    start(*this, std::move(words));
}

Program::~Program() {
    if (pid > 0) {
        kill(pid, SIGKILL);
        waitpid(pid, nullptr, 0);
    }
    close(out_descriptor);
    close(error_descriptor);
}

bool wait_for_output(Program &program, std::string_view text) {
    const auto start = Clock::now();
    while (program.out.find(text) == std::string::npos) {
        if (!read_outputs(program, start)) {
            return false;
        }
    }
    return true;
}

int end_program(Program &program, int signal_number) {
    if (signal_number != 0) {
        kill(program.pid, signal_number);
    }
    const auto start = Clock::now();
    while (read_outputs(program, start)) {
    }
    if (program.out_descriptor >= 0) {
        return -2;
    }
    int status = 0;
    waitpid(program.pid, &status, 0);
    program.pid = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

std::vector<std::string> usual_options(const std::string &directory,
                                       const std::vector<std::string> &more) {
    std::vector<std::string> options{"--directory", directory,      "--port",
                                     "0",           "--ready-file", directory + "/ready"};
    options.insert(options.end(), more.begin(), more.end());
    return options;
}

Simulator::Simulator(const std::vector<std::string> &options)
    : program(usual_options(home.path, options)) {
    ready = wait_for_output(program, "ready\n");
    const std::string text = read_file(home.path + "/ready");
    const std::string tag = "url=http://127.0.0.1:";
    const std::size_t at = text.find(tag);
    if (at != std::string::npos) {
        port = std::stoi(text.substr(at + tag.size()));
    }
}

int connect_daemon(const std::string &directory, const std::string &name) {
    const std::string path = directory + "/lumo_" + name + ".socket";
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::memcpy(static_cast<char *>(address.sun_path), path.c_str(), path.size());
    const int descriptor = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    // The length is that of the path alone, as clients of these daemons give it.
    const auto length = static_cast<socklen_t>(sizeof address.sun_family + path.size());
    if (connect(descriptor, reinterpret_cast<sockaddr *>(&address), length) != 0) {
        const int reason = errno;
        close(descriptor);
        errno = reason;
        return -1;
    }
    return descriptor;
}

int connect_port(int port) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<in_port_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    const int descriptor = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (connect(descriptor, reinterpret_cast<sockaddr *>(&address), sizeof address) != 0) {
        const int reason = errno;
        close(descriptor);
        errno = reason;
        return -1;
    }
    return descriptor;
}

bool send_bytes(int descriptor, std::string_view bytes, bool drip) {
    while (!bytes.empty()) {
        const std::size_t size = drip ? 1 : bytes.size();
        const ssize_t count = send(descriptor, bytes.data(), size, MSG_NOSIGNAL);
        if (count <= 0) {
            return false;
        }
        bytes.remove_prefix(static_cast<std::size_t>(count));
    }
    return true;
}

std::string read_all(int descriptor, bool (*is_whole)(const std::string &)) {
    const auto start = Clock::now();
    std::string answer;
    while (is_whole == nullptr || !is_whole(answer)) {
        pollfd watched{descriptor, POLLIN, 0};
        if (poll(&watched, 1, time_left(start)) <= 0) {
            answer += "(late)";
            break;
        }
        std::array<char, 65536> chunk{};
        const ssize_t count = recv(descriptor, chunk.data(), chunk.size(), 0);
        if (count < 0) {
            answer += "(broken)";
        }
        if (count <= 0) {
            break;
        }
        answer.append(chunk.data(), static_cast<std::size_t>(count));
    }
    close(descriptor);
    return answer;
}

std::string ask_daemon(const std::string &directory, const std::string &name,
                       std::string_view request, bool drip) {
    const int descriptor = connect_daemon(directory, name);
    if (descriptor < 0) {
        return "(no connection)";
    }
    if (!send_bytes(descriptor, request, drip)) {
        close(descriptor);
        return "(not sent)";
    }
    return read_all(descriptor);
}

HttpAnswer ask_http(int port, const std::string &method_and_path, const std::string &headers,
                    const std::string &body) {
    std::string request = method_and_path + " HTTP/1.1\r\nConnection: close\r\n" + headers;
    if (headers.find("Host: ") == std::string::npos) {
        request += "Host: 127.0.0.1:" + std::to_string(port) + "\r\n";
    }
    request += "Content-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body;
    const int descriptor = connect_port(port);
    if (descriptor < 0) {
        return {0, "", ""};
    }
    // Who refuses a request may not read all of it: what then counts is the answer.
    send_bytes(descriptor, request);
    const std::string answer = read_all(descriptor, is_whole_http_answer);
    const std::size_t end = answer.find("\r\n\r\n");
    if (!answer.starts_with("HTTP/1.") || end == std::string::npos) {
        return {0, "", ""};
    }
    return {std::atoi(answer.c_str() + answer.find(' ')), answer.substr(0, end + 2),
            answer.substr(end + 4)};
}

std::string read_file(const std::string &path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}
