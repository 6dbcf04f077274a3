#include "tests/peers/rude_peer.h"

#include <arpa/inet.h>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <stdexcept>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>
#include <unistd.h>

namespace harness {

namespace {

constexpr std::size_t MOST_AT_ONCE = 65536;

void require(bool held, const char *what) {
    if (!held) {
        throw std::runtime_error(std::string("rude peer, ") + what + ": " + strerror(errno));
    }
}

/// Where a socket can stand: a path, or a loopback port that the system chooses.
struct place {
    sockaddr_storage address = {};
    socklen_t size = 0;
};

place place_at(const std::string &path) {
    place at;
    auto *address = reinterpret_cast<sockaddr_un *>(&at.address);
    address->sun_family = AF_UNIX;
    require(path.size() < sizeof address->sun_path, "socket path too long");
    memcpy(address->sun_path, path.c_str(), path.size());
    at.size = sizeof *address;
    return at;
}

place any_loopback_port() {
    place at;
    auto *address = reinterpret_cast<sockaddr_in *>(&at.address);
    address->sin_family = AF_INET;
    address->sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    at.size = sizeof *address;
    return at;
}

/// A bound socket; the place learns its port.
int bound_socket(place *at, int type) {
    const int bound = socket(at->address.ss_family, type | SOCK_CLOEXEC, 0);
    auto *address = reinterpret_cast<sockaddr *>(&at->address);
    require(bind(bound, address, at->size) == 0, "bind");
    if (at->address.ss_family == AF_INET) {
        require(getsockname(bound, address, &at->size) == 0, "getsockname");
    }
    return bound;
}

int port_of(const place &at) {
    return at.address.ss_family == AF_INET
               ? ntohs(reinterpret_cast<const sockaddr_in *>(&at.address)->sin_port)
               : 0;
}

bool wait_readable(int descriptor, int stop) {
    pollfd watched[2] = {{descriptor, POLLIN, 0}, {stop, POLLIN, 0}};
    return poll(watched, 2, PATIENCE_MS) > 0 && watched[0].revents != 0;
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

/// One repetition of a piece.
std::string repetition(const piece &part, std::size_t number) {
    return part.numbered.empty() ? part.bytes : part.bytes + std::to_string(number) + part.numbered;
}

/// Sends an answer; false when the client went away before its end.
bool send_pieces(int connection, const pieces &answer, std::size_t at_once) {
    std::string waiting;
    for (const piece &part : answer) {
        for (std::size_t i = 0; i < part.times; i++) {
            waiting += repetition(part, i);
            std::size_t sent = 0;
            for (; waiting.size() - sent >= at_once; sent += at_once) {
                if (!send_all(connection, waiting.data() + sent, at_once)) {
                    return false;
                }
            }
            waiting.erase(0, sent);
        }
    }
    return send_all(connection, waiting.data(), waiting.size());
}

/// Takes in what the client sends until it closes or the test ends the silence.
void hold(int connection, int stop, bool reading) {
    char bytes[4096];
    if (!reading) {
        pollfd watched[2] = {{connection, POLLRDHUP, 0}, {stop, POLLIN, 0}};
        poll(watched, 2, PATIENCE_MS);
        return;
    }
    while (wait_readable(connection, stop) && recv(connection, bytes, sizeof bytes, 0) > 0) {
    }
}

} // namespace

std::size_t size_of(const pieces &answer) {
    std::size_t size = 0;
    for (const piece &part : answer) {
        if (part.numbered.empty()) {
            size += part.bytes.size() * part.times;
            continue;
        }
        for (std::size_t i = 0; i < part.times; i++) {
            size += repetition(part, i).size();
        }
    }
    return size;
}

rude_peer::rude_peer(const std::string &socket_path, std::string request_end, pieces answer,
                     manners manner) {
    place at = place_at(socket_path);
    listener_ = bound_socket(&at, SOCK_STREAM);
    start(std::move(request_end), std::move(answer), manner);
}

rude_peer::rude_peer(std::string request_end, pieces answer, manners manner) {
    place at = any_loopback_port();
    listener_ = bound_socket(&at, SOCK_STREAM);
    port_ = port_of(at);
    start(std::move(request_end), std::move(answer), manner);
}

rude_peer::~rude_peer() {
    finish();
    for (const int descriptor : {listener_, stop_[0], stop_[1], silent_[0], silent_[1]}) {
        close(descriptor);
    }
}

void rude_peer::start(std::string request_end, pieces answer, manners manner) {
    request_end_ = std::move(request_end);
    answer_ = std::move(answer);
    manner_ = manner;
    require(listen(listener_, 4) == 0, "listen");
    require(pipe2(stop_, O_CLOEXEC) == 0 && pipe2(silent_, O_CLOEXEC) == 0, "pipe2");
    thread_ = std::thread([this] { serve(); });
}

bool rude_peer::wait_for_silence() const {
    return wait_readable(silent_[0], -1);
}

int rude_peer::finish() {
    if (thread_.joinable()) {
        told_ = write(stop_[1], "", 1) == 1;
        thread_.join();
    }
    return told_ ? clients_ : -1;
}

void rude_peer::serve() {
    // A waiting client goes before the end, so that finish() cannot overtake one that is gone.
    while (wait_readable(listener_, stop_[0])) {
        const int connection = accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
        if (connection < 0) {
            return;
        }
        clients_++;
        const timeval patience = {PATIENCE_MS / 1000, 0};
        setsockopt(connection, SOL_SOCKET, SO_SNDTIMEO, &patience, sizeof patience);
        const int no_delay = 1;
        setsockopt(connection, IPPROTO_TCP, TCP_NODELAY, &no_delay, sizeof no_delay);
        treat(connection);
        close(connection);
    }
}

bool rude_peer::receive_request(int connection) const {
    std::string received;
    char bytes[4096];
    while (received.find(request_end_) == std::string::npos) {
        const ssize_t count =
            wait_readable(connection, -1) ? recv(connection, bytes, sizeof bytes, 0) : 0;
        if (count <= 0) {
            return false;
        }
        received.append(bytes, static_cast<std::size_t>(count));
    }
    return true;
}

void rude_peer::treat(int connection) {
    if (manner_.begins == opening::AFTER_THE_REQUEST && !receive_request(connection)) {
        return;
    }
    const std::size_t at_once = manner_.speaks == pace::BYTE_BY_BYTE ? 1 : MOST_AT_ONCE;
    const bool sent = send_pieces(connection, answer_, at_once);
    if (sent && manner_.begins == opening::BEFORE_THE_REQUEST) {
        receive_request(connection);
    }
    if (manner_.ends == ending::SILENCE) {
        require(write(silent_[1], "", 1) == 1, "write");
        hold(connection, stop_[0], manner_.begins != opening::NEVER_READING);
    } else if (manner_.ends == ending::RESET) {
        const linger at_once_gone = {1, 0};
        setsockopt(connection, SOL_SOCKET, SO_LINGER, &at_once_gone, sizeof at_once_gone);
    }
}

crowded_socket::crowded_socket(const std::string &socket_path) {
    place at = place_at(socket_path);
    listener_ = bound_socket(&at, SOCK_STREAM);
    require(listen(listener_, 0) == 0, "listen");
    int refused = 0;
    while (refused == 0) {
        const int one = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
        refused = connect(one, reinterpret_cast<sockaddr *>(&at.address), at.size);
        crowd_.push_back(one);
    }
    require(errno == EAGAIN, "connect");
}

crowded_socket::crowded_socket() {
    place at = any_loopback_port();
    listener_ = bound_socket(&at, SOCK_STREAM);
    port_ = port_of(at);
    require(listen(listener_, 0) == 0, "listen");
    // The queue holds one; the system takes it in before connect() returns.
    const int one = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    require(connect(one, reinterpret_cast<sockaddr *>(&at.address), at.size) == 0, "connect");
    crowd_.push_back(one);
}

crowded_socket::~crowded_socket() {
    close_down();
    for (const int one : crowd_) {
        close(one);
    }
}

void crowded_socket::close_down() {
    if (listener_ >= 0) {
        close(listener_);
        listener_ = -1;
    }
}

foreign_socket::foreign_socket(const std::string &socket_path, int type) {
    place at = place_at(socket_path);
    socket_ = bound_socket(&at, type);
    if (type == SOCK_SEQPACKET) {
        require(listen(socket_, 4) == 0, "listen");
    }
}

foreign_socket::~foreign_socket() {
    close(socket_);
}

} // namespace harness
