#include "tests/harness/peer.h"

#include <cerrno>
#include <chrono>
#include <cstring>
#include <fcntl.h>
#include <net/if.h>
#include <netdb.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sched.h>
#include <stdexcept>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace harness {

namespace {

void require(bool held, const char *what) {
    if (!held) {
        throw std::runtime_error(std::string(what) + ": " + strerror(errno));
    }
}

/// A connection to a listening socket.
int connect_to(int listener) {
    sockaddr_storage address = {};
    socklen_t size = sizeof address;
    auto *any = reinterpret_cast<sockaddr *>(&address);
    getsockname(listener, any, &size);
    const int connection = socket(address.ss_family, SOCK_STREAM | SOCK_CLOEXEC, 0);
    require(connect(connection, any, size) == 0, "connect");
    return connection;
}

/// Sends the bytes of a step, many at once, or until the client goes away.
void send_step(int connection, const step &sending) {
    std::string waiting;
    for (std::size_t left = sending.times; left > 0 || !waiting.empty();) {
        for (; left > 0 && waiting.size() < 65536; left--) {
            waiting += sending.bytes;
        }
        const ssize_t sent = send(connection, waiting.data(), waiting.size(), MSG_NOSIGNAL);
        if (sent < 0) {
            return;
        }
        waiting.erase(0, static_cast<std::size_t>(sent));
    }
}

/// Leaves the network of this process for one of its own, with the loopback interface up.
void leave_network() {
    require(unshare(CLONE_NEWNET) == 0 || unshare(CLONE_NEWUSER | CLONE_NEWNET) == 0, "unshare");
    ifreq loopback = {};
    memcpy(loopback.ifr_name, "lo", sizeof "lo");
    loopback.ifr_flags = IFF_UP;
    const int any_socket = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    require(ioctl(any_socket, SIOCSIFFLAGS, &loopback) == 0, "SIOCSIFFLAGS");
    close(any_socket);
}

} // namespace

int bind_to_loopback(int descriptor, in_port_t port) {
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(port);
    socklen_t size = sizeof address;
    auto *any = reinterpret_cast<sockaddr *>(&address);
    // A port that its last connection leaves may be another program's at once.
    const int reuse = 1;
    setsockopt(descriptor, SOL_SOCKET, SO_REUSEADDR, &reuse, sizeof reuse);
    require(bind(descriptor, any, size) == 0 && getsockname(descriptor, any, &size) == 0, "bind");
    return ntohs(address.sin_port);
}

void bind_to_path(int descriptor, const std::string &path) {
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    require(path.size() < sizeof address.sun_path, "socket path too long");
    memcpy(address.sun_path, path.c_str(), path.size());
    require(bind(descriptor, reinterpret_cast<sockaddr *>(&address), sizeof address) == 0, "bind");
}

peer::peer(const std::string &socket_path, script steps)
    : listener_(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    bind_to_path(listener_, socket_path);
    start(std::move(steps));
}

peer::peer(script steps, in_port_t port)
    : listener_(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    port_ = bind_to_loopback(listener_, port);
    start(std::move(steps));
}

peer::~peer() {
    finish();
    for (const int descriptor : {listener_, crowd_, stop_[0], stop_[1]}) {
        close(descriptor);
    }
}

void peer::start(script steps) {
    const bool is_crowded = !steps.empty() && steps[0].kind == step_kind::NEVER_ACCEPT;
    require(listen(listener_, is_crowded ? 0 : 4) == 0, "listen");
    require(pipe2(stop_, O_CLOEXEC) == 0, "pipe2");
    if (is_crowded) {
        crowd_ = connect_to(listener_); // such a queue holds one
        return;
    }
    thread_ = std::thread([this, steps = std::move(steps)] { serve(steps); });
}

bool peer::wait_for_await() {
    return awaiting_.try_acquire_for(std::chrono::milliseconds(PATIENCE_MS));
}

void peer::go_on() const {
    require(write(stop_[1], "", 1) == 1, "write");
}

std::string peer::finish() {
    // A client that is already gone has left its connection in the backlog: it is still served.
    close(std::exchange(stop_[1], -1));
    if (thread_.joinable()) {
        thread_.join();
    } else if (crowd_ >= 0) {
        close(std::exchange(listener_, -1)); // turns everybody away who waits
    }
    return visited_ ? complaint_ : "no client connected";
}

std::string peer::finish_unvisited() {
    finish();
    return visited_ ? "a client connected and sent: " + received_ : std::string();
}

/// A waiting client goes before the test's end; -1 when none came.
int peer::accept_client() const {
    pollfd watched[2] = {{listener_, POLLIN, 0}, {stop_[0], POLLIN, 0}};
    if (poll(watched, 2, PATIENCE_MS) <= 0 || (watched[0].revents & POLLIN) == 0) {
        return -1;
    }
    return accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
}

void peer::serve(const script &steps) {
    int connection = accept_client();
    if (connection < 0) {
        return;
    }
    visited_ = true;
    // A client that stops receiving must not hold the test either.
    const timeval patience = {PATIENCE_MS / 1000, 0};
    setsockopt(connection, SOL_SOCKET, SO_SNDTIMEO, &patience, sizeof patience);
    const int no_delay = 1;
    setsockopt(connection, IPPROTO_TCP, TCP_NODELAY, &no_delay, sizeof no_delay);
    follow(steps, &connection);
    const std::size_t scripted = received_.size();
    while (connection >= 0 && receive_some(connection)) {
    }
    if (complaint_.empty() && received_.size() > scripted && (scripted > 0 || steps.empty())) {
        complaint_ = "unexpected further bytes: " + received_.substr(scripted);
    }
    close(connection);
    if (const int second = accept_client(); second >= 0) {
        complaint_ += "a second client connected";
        close(second);
    }
}

bool peer::receive_some(int connection) {
    char bytes[65536];
    if (!is_readable(connection)) {
        complaint_ = "time-out: the client neither sent nor closed";
        return false;
    }
    const ssize_t count = recv(connection, bytes, sizeof bytes, 0);
    received_.append(bytes, static_cast<std::size_t>(std::max(count, ssize_t(0))));
    return count > 0;
}

bool peer::expect_bytes(int connection, const std::string &bytes) {
    std::string got;
    // Bytes that are wrong already need no waiting for the rest.
    while ((got = received_.substr(checked_)).size() < bytes.size() &&
           bytes.compare(0, got.size(), got) == 0 && receive_some(connection)) {
    }
    if (got != bytes) {
        complaint_ += "expected to receive:\n" + bytes + "\nbut received:\n" + got;
        return false;
    }
    checked_ = received_.size();
    return true;
}

/// Does the steps; a connection that they close is -1 afterwards.
void peer::follow(const script &steps, int *connection) {
    for (const step &now : steps) {
        pollfd gone[2] = {{*connection, POLLRDHUP, 0}, {stop_[0], POLLIN, 0}};
        char byte = 0;
        switch (now.kind) {
        case step_kind::EXPECT:
            if (!expect_bytes(*connection, now.bytes)) {
                close(std::exchange(*connection, -1)); // the client must not wait for an answer
                return;
            }
            break;
        case step_kind::COLLECT:
            while (received_.find(now.bytes, checked_) == std::string::npos) {
                if (!receive_some(*connection)) {
                    complaint_ += "the client closed before sending: " + now.bytes;
                    return;
                }
            }
            checked_ = received_.size();
            break;
        case step_kind::AWAIT:
            if (!is_readable(*connection)) {
                complaint_ = "time-out: the client did not send";
                return;
            }
            break;
        case step_kind::AWAIT_END:
            awaiting_.release();
            if (!is_readable(stop_[0]) || read(stop_[0], &byte, 1) < 0) {
                complaint_ = "time-out: the test did not end the script";
                return;
            }
            break;
        case step_kind::IGNORE:
            poll(gone, 2, PATIENCE_MS);
            break;
        case step_kind::SEND:
            send_step(*connection, now);
            break;
        case step_kind::HALF_CLOSE:
            shutdown(*connection, SHUT_WR);
            break;
        case step_kind::RESET: {
            const linger at_once = {1, 0};
            setsockopt(*connection, SOL_SOCKET, SO_LINGER, &at_once, sizeof at_once);
            [[fallthrough]];
        }
        case step_kind::CLOSE:
            close(std::exchange(*connection, -1));
            return;
        case step_kind::NEVER_ACCEPT:
            break;
        }
    }
}

deserted_point::deserted_point() : bound_(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    // A bound port without a listener refuses connections, and nobody else can take it.
    port = bind_to_loopback(bound_);
}

deserted_point::~deserted_point() {
    close(bound_);
}

std::string on_private_machine(const std::function<std::string()> &action) {
    const auto write_outcome = [&] {
        std::string text;
        try {
            leave_network();
            text = action();
        } catch (const std::exception &failure) {
            text = failure.what();
        }
        const ssize_t written = write(STDOUT_FILENO, text.data(), text.size());
        _exit(written == static_cast<ssize_t>(text.size()) ? 0 : 1);
    };
    // A process of its own has one thread only, which a new user namespace demands.
    const run_result seen = run({}, {.prepare = write_outcome});
    return seen.status == 0 ? seen.output : "the private machine broke down after: " + seen.output;
}

std::string missing_private_machine(const std::string &host) {
    return on_private_machine([&] {
        addrinfo *found = nullptr;
        const int error = getaddrinfo(host.c_str(), nullptr, nullptr, &found);
        return error == 0 ? "" : host + " has no address: " + gai_strerror(error);
    });
}

} // namespace harness
