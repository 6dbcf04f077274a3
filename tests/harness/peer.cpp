#include "tests/harness/peer.h"

#include "tests/harness/process.h"

#include <arpa/inet.h>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <netinet/in.h>
#include <poll.h>
#include <stdexcept>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>
#include <unistd.h>

namespace harness {

step expect(std::string bytes) {
    return {step_kind::EXPECT, std::move(bytes)};
}
step await_bytes() {
    return {step_kind::AWAIT, {}};
}
step await_end() {
    return {step_kind::AWAIT_END, {}};
}
step collect_until(std::string end) {
    return {step_kind::COLLECT, std::move(end)};
}
step reply(std::string bytes) {
    return {step_kind::SEND, std::move(bytes)};
}
step drip(std::string bytes) {
    return {step_kind::DRIP, std::move(bytes)};
}
step close_connection() {
    return {step_kind::CLOSE, {}};
}
step half_close() {
    return {step_kind::HALF_CLOSE, {}};
}
step reset() {
    return {step_kind::RESET, {}};
}
step hang() {
    return {step_kind::HANG, {}};
}
step endless(std::string bytes) {
    return {step_kind::ENDLESS, std::move(bytes)};
}

namespace {

void require(bool held, const char *what) {
    if (!held) {
        throw std::runtime_error(std::string(what) + ": " + strerror(errno));
    }
}

bool send_all(int connection, const char *bytes, std::size_t length) {
    while (length > 0) {
        const ssize_t sent = send(connection, bytes, length, MSG_NOSIGNAL);
        if (sent < 0) {
            return false;
        }
        bytes += sent;
        length -= static_cast<std::size_t>(sent);
    }
    return true;
}

void reset_connection(int connection) {
    const linger at_once = {1, 0};
    setsockopt(connection, SOL_SOCKET, SO_LINGER, &at_once, sizeof at_once);
    close(connection);
}

} // namespace

int bind_to_loopback(int descriptor) {
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    require(bind(descriptor, reinterpret_cast<sockaddr *>(&address), size) == 0, "bind");
    require(getsockname(descriptor, reinterpret_cast<sockaddr *>(&address), &size) == 0,
            "getsockname");
    return ntohs(address.sin_port);
}

peer::peer(const std::string &socket_path, script steps) {
    listener_ = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    require(socket_path.size() < sizeof address.sun_path, "socket path too long");
    memcpy(address.sun_path, socket_path.c_str(), socket_path.size());
    require(bind(listener_, reinterpret_cast<sockaddr *>(&address), sizeof address) == 0, "bind");
    start(std::move(steps));
}

peer::peer(script steps) {
    listener_ = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    port_ = bind_to_loopback(listener_);
    start(std::move(steps));
}

peer::~peer() {
    finish();
    close(listener_);
    close(stop_[0]);
    close(stop_[1]);
}

void peer::start(script steps) {
    require(listen(listener_, 4) == 0, "listen");
    require(pipe2(stop_, O_CLOEXEC) == 0, "pipe2");
    thread_ = std::thread([this, steps = std::move(steps)] { serve(steps); });
}

std::string peer::finish() {
    if (thread_.joinable()) {
        // A client that is already gone has left its connection in the backlog: it is still served.
        const bool told = write(stop_[1], "", 1) == 1;
        thread_.join();
        if (!told) {
            complaint_ += "the peer could not be told to stop";
        }
    }
    return visited_ ? complaint_ : "no client connected";
}

std::string peer::finish_unvisited() {
    finish();
    return visited_ ? "a client connected and sent: " + received_ : std::string();
}

void peer::serve(const script &steps) {
    pollfd watched[2] = {{listener_, POLLIN, 0}, {stop_[0], POLLIN, 0}};
    if (poll(watched, 2, PATIENCE_MS) <= 0 || (watched[0].revents & POLLIN) == 0) {
        return;
    }
    int connection = accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
    if (connection < 0) {
        return;
    }
    visited_ = true;
    // A client that stops receiving must not hold the test either.
    const timeval patience = {PATIENCE_MS / 1000, 0};
    setsockopt(connection, SOL_SOCKET, SO_SNDTIMEO, &patience, sizeof patience);
    const std::size_t scripted_from = received_.size();
    follow(steps, &connection);
    if (connection < 0) {
        return;
    }
    const std::size_t scripted_to = received_.size();
    while (receive_some(connection)) {
    }
    if (complaint_.empty() && received_.size() > scripted_to && scripted_to > scripted_from) {
        complaint_ = "unexpected further bytes: " + received_.substr(scripted_to);
    }
    close(connection);
}

bool peer::wait_readable(int descriptor) const {
    pollfd watched = {descriptor, POLLIN, 0};
    return poll(&watched, 1, PATIENCE_MS) > 0;
}

bool peer::receive_some(int connection) {
    char bytes[65536];
    if (!wait_readable(connection)) {
        complaint_ = "time-out: the client neither sent nor closed";
        return false;
    }
    const ssize_t count = recv(connection, bytes, sizeof bytes, 0);
    if (count <= 0) {
        return false;
    }
    received_.append(bytes, static_cast<std::size_t>(count));
    return true;
}

void peer::follow(const script &steps, int *connection) {
    std::size_t checked = 0;
    for (const step &now : steps) {
        switch (now.kind) {
        case step_kind::EXPECT: {
            std::string got;
            // Bytes that are wrong already need no waiting for the rest.
            while ((got = received_.substr(checked)).size() < now.bytes.size() &&
                   now.bytes.compare(0, got.size(), got) == 0 && receive_some(*connection)) {
            }
            if (got != now.bytes) {
                complaint_ += "expected to receive:\n" + now.bytes + "\nbut received:\n" + got;
                close(*connection); // the client must not wait for an answer
                *connection = -1;
                return;
            }
            checked = received_.size();
            break;
        }
        case step_kind::AWAIT:
            if (!wait_readable(*connection)) {
                complaint_ = "time-out: the client did not send";
                return;
            }
            break;
        case step_kind::AWAIT_END:
            if (!wait_readable(stop_[0])) {
                complaint_ = "time-out: the test did not end the script";
                return;
            }
            break;
        case step_kind::COLLECT:
            while (received_.find(now.bytes, checked) == std::string::npos) {
                if (!receive_some(*connection)) {
                    complaint_ += "the client closed before sending: " + now.bytes;
                    return;
                }
            }
            checked = received_.size();
            break;
        case step_kind::SEND:
            send_all(*connection, now.bytes.data(), now.bytes.size());
            break;
        case step_kind::DRIP:
            for (const char &byte : now.bytes) {
                send_all(*connection, &byte, 1);
            }
            break;
        case step_kind::HALF_CLOSE:
            shutdown(*connection, SHUT_WR);
            break;
        case step_kind::CLOSE:
            close(*connection);
            *connection = -1;
            return;
        case step_kind::RESET:
            reset_connection(*connection);
            *connection = -1;
            return;
        case step_kind::HANG:
            while (receive_some(*connection)) {
            }
            return;
        case step_kind::ENDLESS:
            while (send_all(*connection, now.bytes.data(), now.bytes.size())) {
            }
            return;
        }
    }
}

} // namespace harness
