#include "tests/webservice/private_machine.h"

#include "tests/harness/process.h"

#include <arpa/inet.h>
#include <cerrno>
#include <cstring>
#include <exception>
#include <fcntl.h>
#include <net/if.h>
#include <netdb.h>
#include <netinet/in.h>
#include <poll.h>
#include <sched.h>
#include <stdexcept>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

namespace harness {

namespace {

constexpr in_port_t WELL_KNOWN_PORT = 80;

void require(bool held, const char *what) {
    if (!held) {
        throw std::runtime_error(std::string("private machine, ") + what + ": " + strerror(errno));
    }
}

void leave_network() {
    require(unshare(CLONE_NEWNET) == 0 || unshare(CLONE_NEWUSER | CLONE_NEWNET) == 0, "unshare");
    ifreq loopback = {};
    memcpy(loopback.ifr_name, "lo", sizeof "lo");
    const int any_socket = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    require(ioctl(any_socket, SIOCGIFFLAGS, &loopback) == 0, "SIOCGIFFLAGS");
    loopback.ifr_flags = static_cast<short>(loopback.ifr_flags | IFF_UP);
    require(ioctl(any_socket, SIOCSIFFLAGS, &loopback) == 0, "SIOCSIFFLAGS");
    close(any_socket);
}

std::string outcome_of(const std::function<std::string()> &action) {
    try {
        leave_network();
        return action();
    } catch (const std::exception &failure) {
        return failure.what();
    }
}

std::string read_all(int descriptor) {
    std::string text;
    char bytes[4096];
    for (ssize_t count; (count = read(descriptor, bytes, sizeof bytes)) > 0;) {
        text.append(bytes, static_cast<std::size_t>(count));
    }
    return text;
}

/// True when the descriptor has something to read or to accept; false when `stop` has, or too late.
bool wait_for(int descriptor, int stop) {
    pollfd watched[2] = {{descriptor, POLLIN, 0}, {stop, POLLIN, 0}};
    return poll(watched, 2, PATIENCE_MS) > 0 && (watched[0].revents & POLLIN) != 0;
}

} // namespace

std::string on_private_machine(const std::function<std::string()> &action) {
    int ends[2];
    require(pipe2(ends, O_CLOEXEC) == 0, "pipe2");
    // A process of its own has one thread only, which a new user namespace demands.
    const pid_t child = fork();
    require(child >= 0, "fork");
    if (child == 0) {
        const std::string text = outcome_of(action);
        const bool written =
            write(ends[1], text.data(), text.size()) == static_cast<ssize_t>(text.size());
        _exit(written ? 0 : 1);
    }
    close(ends[1]);
    const std::string text = read_all(ends[0]);
    close(ends[0]);
    int status = 0;
    waitpid(child, &status, 0);
    return status == 0 ? text : "the private machine broke down after: " + text;
}

std::string missing_private_machine(const std::string &host) {
    return on_private_machine([&] {
        addrinfo *found = nullptr;
        const int error = getaddrinfo(host.c_str(), nullptr, nullptr, &found);
        if (error != 0) {
            return host + " has no address: " + gai_strerror(error);
        }
        freeaddrinfo(found);
        return std::string();
    });
}

well_known_service::well_known_service(std::string answer) {
    listener_ = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(WELL_KNOWN_PORT);
    require(bind(listener_, reinterpret_cast<sockaddr *>(&address), sizeof address) == 0, "bind");
    require(listen(listener_, 4) == 0, "listen");
    require(pipe2(stop_, O_CLOEXEC) == 0, "pipe2");
    thread_ = std::thread([this, answer = std::move(answer)] { serve(answer); });
}

well_known_service::~well_known_service() {
    finish();
    close(listener_);
    close(stop_[0]);
}

std::string well_known_service::finish() {
    if (thread_.joinable()) {
        close(stop_[1]); // wakes the thread unless a client has come
        thread_.join();
    }
    return received_;
}

void well_known_service::serve(const std::string &answer) {
    if (!wait_for(listener_, stop_[0])) {
        return;
    }
    const int connection = accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
    char bytes[4096];
    while (received_.find("</SOAP-ENV:Envelope>\r\n") == std::string::npos &&
           wait_for(connection, -1)) {
        const ssize_t count = recv(connection, bytes, sizeof bytes, 0);
        if (count <= 0) {
            break;
        }
        received_.append(bytes, static_cast<std::size_t>(count));
    }
    send(connection, answer.data(), answer.size(), MSG_NOSIGNAL);
    close(connection);
}

} // namespace harness
