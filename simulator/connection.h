// Stream sockets on top of Boost.Asio: bounded reading, whole writing, waiting and closing, each of
// which ends early when the simulator shuts down. Knows nothing of what the bytes mean.
#pragma once

#include "simulator/daemons.h"

#include <array>
#include <boost/asio/basic_stream_socket.hpp>
#include <boost/asio/basic_waitable_timer.hpp>
#include <boost/asio/generic/stream_protocol.hpp>
#include <boost/asio/io_context.hpp>
#include <chrono>
#include <functional>
#include <memory>
#include <set>
#include <string>

namespace asio = boost::asio;
using boost::system::error_code;
using Clock = std::chrono::steady_clock;
using Protocol = asio::generic::stream_protocol;
using Executor = asio::io_context::executor_type;
using Socket = asio::basic_stream_socket<Protocol, Executor>;
using Timer = asio::basic_waitable_timer<Clock, asio::wait_traits<Clock>, Executor>;

struct Connection;

/// The one thread's loop, in which everything happens.
struct Loop {
    asio::io_context context{1};
    bool stopping = false;
    std::set<Connection *> connections;
};

/// A connection and everything that the other side sent, kept whole for the raw trace. It closes
/// with the last reference to it; each operation that is under way holds one.
struct Connection {
    Connection(Loop &runs_in, Socket connected, std::size_t most_bytes,
               std::chrono::milliseconds patience);
    ~Connection();
    Connection(const Connection &) = delete;
    Connection &operator=(const Connection &) = delete;

    Loop &loop;
    Socket socket;
    Timer timer;
    Clock::time_point deadline; ///< end of the other side's time
    std::size_t limit;          ///< most bytes read
    std::string received;
    std::string sent;
    std::array<char, 16384> chunk = {};
};

using ConnectionPtr = std::shared_ptr<Connection>;

/// Cancels what the socket does when the moment has come, or at once when the simulator shuts down.
/// A later call takes the place of an earlier one.
void limit_time(const ConnectionPtr &connection, Clock::time_point moment);

/// What the end of an operation means.
Arrival arrival_of(const Connection &connection, const error_code &error);

/// Waits for more bytes and appends them to `received`.
void receive_some(const ConnectionPtr &connection, std::function<void(Arrival)> then);

/// Appends what has already arrived, without waiting.
void receive_pending(Connection &connection);

/// Sends all bytes; false when the peer is gone, does not read, or the simulator shuts down.
void send_all(const ConnectionPtr &connection, std::string bytes, std::function<void(bool)> then);

/// Waits, unless the timer is cancelled or the simulator shuts down.
void wait(const ConnectionPtr &connection, std::chrono::milliseconds time,
          std::function<void()> then);

/// Ends the connection after an answer. What the client still sends is read for a moment, since
/// closing with unread bytes would reset the connection and could take the answer with it.
void end_connection(const ConnectionPtr &connection);

/// Ends whatever connections wait for.
void stop_waiting(Loop &loop);
