#include "simulator/connection.h"

#include <algorithm>
#include <boost/asio/write.hpp>

namespace {

constexpr std::chrono::seconds SEND_TIME{10};
constexpr std::chrono::milliseconds DRAIN_TIME{500};

void drain(const connection_ptr &connection) {
    connection->socket.async_read_some(
        asio::buffer(connection->chunk), [connection](const error_code &error, std::size_t) {
            if (!error && loop_clock::now() < connection->timer.expiry()) {
                drain(connection);
            } else {
                connection->timer.cancel();
            }
        });
}

arrival_kind arrival_of(const stream_connection &connection, const error_code &error) {
    if (!error) {
        return arrival_kind::DATA;
    }
    if (error == asio::error::eof) {
        return arrival_kind::END;
    }
    if (error == asio::error::operation_aborted) {
        return connection.loop.stopping ? arrival_kind::STOPPED : arrival_kind::LATE;
    }
    return arrival_kind::FAILED;
}

} // namespace

stream_connection::stream_connection(event_loop &runs_in, stream_socket connected,
                                     std::size_t most_bytes, std::chrono::milliseconds patience)
    : loop(runs_in), socket(std::move(connected)), timer(runs_in.context),
      deadline(loop_clock::now() + patience), limit(most_bytes) {
    loop.connections.insert(this);
}

stream_connection::~stream_connection() {
    loop.connections.erase(this);
}

void limit_time(const connection_ptr &connection, loop_clock::time_point moment) {
    connection->timer.expires_at(connection->loop.stopping ? loop_clock::now() : moment);
    connection->timer.async_wait([connection](const error_code &error) {
        // The timer may have been restarted after this callback was queued.
        if (!error && connection->timer.expiry() <= loop_clock::now()) {
            error_code ignored;
            connection->socket.cancel(ignored);
        }
    });
}

void receive_some(const connection_ptr &connection, std::function<void(arrival_kind)> then) {
    const std::size_t room = connection->limit - connection->received.size();
    if (room == 0) {
        then(arrival_kind::FULL);
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

void receive_pending(stream_connection &connection) {
    error_code ignored;
    connection.socket.non_blocking(true, ignored);
    const std::size_t count = connection.socket.read_some(asio::buffer(connection.chunk), ignored);
    connection.received.append(connection.chunk.data(), count);
}

void send_all(const connection_ptr &connection, std::string bytes, std::function<void(bool)> then) {
    connection->sent = std::move(bytes);
    limit_time(connection, loop_clock::now() + SEND_TIME);
    asio::async_write(connection->socket, asio::buffer(connection->sent),
                      [connection, then = std::move(then)](const error_code &error, std::size_t) {
                          connection->timer.cancel();
                          then(!error);
                      });
}

void wait(const connection_ptr &connection, std::chrono::milliseconds time,
          std::function<void()> then) {
    connection->timer.expires_after(connection->loop.stopping ? loop_clock::duration() : time);
    connection->timer.async_wait(
        [connection, then = std::move(then)](const error_code & /*error*/) { then(); });
}

void end_connection(const connection_ptr &connection) {
    error_code ignored;
    connection->socket.shutdown(asio::socket_base::shutdown_send, ignored);
    limit_time(connection, loop_clock::now() + DRAIN_TIME);
    drain(connection);
}

void stop_waiting(event_loop &loop) {
    loop.stopping = true;
    for (stream_connection *connection : loop.connections) {
        error_code ignored;
        connection->timer.cancel();
        connection->socket.cancel(ignored);
    }
}
