// Stream sockets on top of Boost.Asio: bounded reading, whole writing, waiting and closing, each of
// which ends early when the simulator shuts down. Knows nothing of what the bytes mean.
#pragma once

#include "simulator/daemons.h"

#include <boost/asio/basic_stream_socket.hpp>
#include <boost/asio/basic_waitable_timer.hpp>
#include <boost/asio/generic/stream_protocol.hpp>
#include <boost/asio/io_context.hpp>
#include <chrono>
#include <functional>
#include <memory>
#include <set>

namespace asio = boost::asio;
using boost::system::error_code;
using loop_clock = std::chrono::steady_clock;
using any_protocol = asio::generic::stream_protocol;
using loop_executor = asio::io_context::executor_type;
using stream_socket = asio::basic_stream_socket<any_protocol, loop_executor>;
using loop_timer =
    asio::basic_waitable_timer<loop_clock, asio::wait_traits<loop_clock>, loop_executor>;

struct stream_connection;

/// The event loop of the only thread.
struct event_loop {
    asio::io_context context{1};
    bool stopping = false;
    std::set<stream_connection *> connections;
};

/// A connection and all bytes that the client sent, kept for the raw trace. Each pending operation
/// holds a reference; the last one closes the connection.
struct stream_connection {
    stream_connection(event_loop &runs_in, stream_socket connected, std::size_t most_bytes,
                      std::chrono::milliseconds patience);
    ~stream_connection();
    stream_connection(const stream_connection &) = delete;
    stream_connection &operator=(const stream_connection &) = delete;

    event_loop &loop;
    stream_socket socket;
    loop_timer timer;
    loop_clock::time_point deadline; ///< of the whole request
    std::size_t limit;               ///< most bytes read
    std::string received;
    std::string sent;
    std::array<char, 16384> chunk = {};
};

using connection_ptr = std::shared_ptr<stream_connection>;

/// Cancels the socket's operations at a time, or at once when the simulator shuts down. A later
/// call replaces an earlier one.
void limit_time(const connection_ptr &connection, loop_clock::time_point moment);

/// Waits for more bytes and appends them to `received`, or appends what has already arrived.
void receive_some(const connection_ptr &connection, std::function<void(arrival_kind)> then);
void receive_pending(stream_connection &connection);

/// Sends all bytes; false when the peer is gone, does not read, or the simulator shuts down.
void send_all(const connection_ptr &connection, std::string bytes, std::function<void(bool)> then);

/// Waits, unless the timer is cancelled or the simulator shuts down.
void wait(const connection_ptr &connection, std::chrono::milliseconds time,
          std::function<void()> then);

/// Ends the connection after an answer. What the client still sends is read for a moment, since
/// closing with unread bytes would reset the connection and could take the answer with it.
void end_connection(const connection_ptr &connection);

void stop_waiting(event_loop &loop);
