#include "simulator/connection.h"

#include <algorithm>
#include <boost/asio/write.hpp>

namespace {

constexpr std::chrono::seconds SEND_TIME{10};
constexpr std::chrono::milliseconds DRAIN_TIME{500};

void drain(const ConnectionPtr &connection) {
    connection->socket.async_read_some(
        asio::buffer(connection->chunk), [connection](const error_code &error, std::size_t) {
            if (!error && Clock::now() < connection->timer.expiry()) {
                drain(connection);
            } else {
                connection->timer.cancel();
            }
        });
}

} // namespace

Connection::Connection(Loop &runs_in, Socket connected, std::size_t most_bytes,
                       std::chrono::milliseconds patience)
    : loop(runs_in), socket(std::move(connected)), timer(runs_in.context),
      deadline(Clock::now() + patience), limit(most_bytes) {
    loop.connections.insert(this);
}

Connection::~Connection() {
    loop.connections.erase(this);
}

void limit_time(const ConnectionPtr &connection, Clock::time_point moment) {
    connection->timer.expires_at(connection->loop.stopping ? Clock::now() : moment);
    connection->timer.async_wait([connection](const error_code &error) {
        // The timer may have been set anew while this was on its way.
        if (!error && connection->timer.expiry() <= Clock::now()) {
            error_code ignored;
            connection->socket.cancel(ignored);
        }
    });
}

Arrival arrival_of(const Connection &connection, const error_code &error) {
    if (!error) {
        return Arrival::data;
    }
    if (error == asio::error::eof) {
        return Arrival::end;
    }
    if (error == asio::error::operation_aborted) {
        return connection.loop.stopping ? Arrival::stopped : Arrival::late;
    }
    return Arrival::failed;
}

void receive_some(const ConnectionPtr &connection, std::function<void(Arrival)> then) {
    const std::size_t room = connection->limit - connection->received.size();
    if (room == 0) {
        then(Arrival::full);
        return;
    }
    limit_time(connection, connection->deadline);
    connection->socket.async_read_some(
        asio::buffer(connection->chunk, room),
        [connection, then = std::move(then)](const error_code &error, std::size_t count) {
            connection->timer.cancel();
            connection->received.append(connection->chunk.data(), count);
            then(arrival_of(*connection, error));
        });
}

void receive_pending(Connection &connection) {
    error_code ignored;
    connection.socket.non_blocking(true, ignored);
    const std::size_t count = connection.socket.read_some(asio::buffer(connection.chunk), ignored);
    connection.received.append(connection.chunk.data(), count);
}

void send_all(const ConnectionPtr &connection, std::string bytes, std::function<void(bool)> then) {
    connection->sent = std::move(bytes);
    limit_time(connection, Clock::now() + SEND_TIME);
    asio::async_write(connection->socket, asio::buffer(connection->sent),
                      [connection, then = std::move(then)](const error_code &error, std::size_t) {
                          connection->timer.cancel();
                          then(!error);
                      });
}

void wait(const ConnectionPtr &connection, std::chrono::milliseconds time,
          std::function<void()> then) {
    connection->timer.expires_after(connection->loop.stopping ? Clock::duration() : time);
    connection->timer.async_wait(
        [connection, then = std::move(then)](const error_code & /*error*/) { then(); });
}

void end_connection(const ConnectionPtr &connection) {
    error_code ignored;
    connection->socket.shutdown(asio::socket_base::shutdown_send, ignored);
    limit_time(connection, Clock::now() + DRAIN_TIME);
    drain(connection);
}

void stop_waiting(Loop &loop) {
    loop.stopping = true;
    for (Connection *connection : loop.connections) {
        error_code ignored;
        connection->timer.cancel();
        connection->socket.cancel(ignored);
    }
}
