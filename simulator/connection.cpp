// Non-blocking descriptor input and output on top of poll(2). Every wait also watches the stop
// descriptor, so that no client can hold up the shutdown.
#include "connection.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::size_t CHUNK_BYTES = 16384;
constexpr long long LONGEST_POLL_MS = 3600000;
constexpr std::chrono::seconds SEND_TIME{10};
constexpr std::chrono::milliseconds DRAIN_TIME{500};

enum class Wait { ready, late, stopped };

int milliseconds_until(Clock::time_point deadline) {
    const auto left =
        std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count();
    return static_cast<int>(std::clamp<long long>(left + 1, 0, LONGEST_POLL_MS));
}

/// Waits for `events` on `descriptor`; a negative descriptor waits for the deadline alone.
Wait wait_for(const Connection &connection, int descriptor, short events,
              Clock::time_point deadline) {
    while (true) {
        std::array<pollfd, 2> watched{
            {{connection.stop_descriptor, POLLIN, 0}, {descriptor, events, 0}}};
        const int ready = poll(watched.data(), watched.size(), milliseconds_until(deadline));
        if (watched[0].revents != 0) {
            return Wait::stopped;
        }
        if (ready > 0) {
            return Wait::ready;
        }
        if (Clock::now() >= deadline) {
            return Wait::late;
        }
    }
}

} // namespace

Arrival receive_some(Connection &connection) {
    if (connection.received.size() >= connection.limit) {
        return Arrival::full;
    }
    while (true) {
        switch (wait_for(connection, connection.descriptor, POLLIN, connection.deadline)) {
        case Wait::late:
            return Arrival::late;
        case Wait::stopped:
            return Arrival::stopped;
        case Wait::ready:
            break;
        }
        std::array<char, CHUNK_BYTES> chunk{};
        const std::size_t room = connection.limit - connection.received.size();
        const ssize_t count =
            recv(connection.descriptor, chunk.data(), std::min(room, chunk.size()), 0);
        if (count > 0) {
            connection.received.append(chunk.data(), static_cast<std::size_t>(count));
            return Arrival::data;
        }
        if (count == 0) {
            return Arrival::end;
        }
        if (errno != EAGAIN && errno != EINTR) {
            return Arrival::failed;
        }
    }
}

void receive_pending(Connection &connection) {
    std::array<char, CHUNK_BYTES> chunk{};
    const ssize_t count = recv(connection.descriptor, chunk.data(), chunk.size(), MSG_DONTWAIT);
    if (count > 0) {
        connection.received.append(chunk.data(), static_cast<std::size_t>(count));
    }
}

bool send_all(const Connection &connection, std::string_view bytes) {
    const auto deadline = Clock::now() + SEND_TIME;
    while (!bytes.empty()) {
        const ssize_t count = send(connection.descriptor, bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (count >= 0) {
            bytes.remove_prefix(static_cast<std::size_t>(count));
            continue;
        }
        if (errno == EINTR) {
            continue;
        }
        if (errno != EAGAIN ||
            wait_for(connection, connection.descriptor, POLLOUT, deadline) != Wait::ready) {
            return false;
        }
    }
    return true;
}

bool wait_until_writable(const Connection &connection) {
    return wait_for(connection, connection.descriptor, POLLOUT, connection.deadline) == Wait::ready;
}

bool wait_milliseconds(const Connection &connection, int milliseconds) {
    const auto deadline = Clock::now() + std::chrono::milliseconds(milliseconds);
    return milliseconds <= 0 || wait_for(connection, -1, 0, deadline) == Wait::late;
}

void end_connection(Connection &connection) {
    shutdown(connection.descriptor, SHUT_WR);
    const auto deadline = Clock::now() + DRAIN_TIME;
    std::array<char, CHUNK_BYTES> chunk{};
    while (wait_for(connection, connection.descriptor, POLLIN, deadline) == Wait::ready) {
        const ssize_t count = recv(connection.descriptor, chunk.data(), chunk.size(), 0);
        if (count == 0 || (count < 0 && errno != EAGAIN && errno != EINTR) ||
            Clock::now() >= deadline) {
            break;
        }
    }
    close(connection.descriptor);
    connection.descriptor = -1;
}

const char *describe_arrival(Arrival arrival) {
    switch (arrival) {
    case Arrival::data:
        return "";
    case Arrival::end:
        return "the client closed before the end of its request";
    case Arrival::late:
        return "the client took too long over its request";
    case Arrival::stopped:
        return "the simulator shuts down";
    case Arrival::full:
        return "the request is too long";
    case Arrival::failed:
        return "the connection broke";
    }
    return "";
}
