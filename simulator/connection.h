// One accepted connection: bounded reading, whole writing, waiting and closing, each of which
// ends early when the simulator shuts down. Knows nothing of what the bytes mean.
#pragma once

#include <chrono>
#include <cstddef>
#include <string>
#include <string_view>

/// A connection and everything that the client sent, kept whole for the raw trace.
struct Connection {
    int descriptor;
    int stop_descriptor; ///< readable from the moment the simulator shuts down
    std::chrono::steady_clock::time_point deadline; ///< end of the client's time for its request
    std::size_t limit;                              ///< most bytes read from the client
    std::string received;
};

enum class Arrival { data, end, late, stopped, full, failed };

/// Waits for more bytes and appends them to `received`.
Arrival receive_some(Connection &connection);

/// Appends what has already arrived, without waiting.
void receive_pending(Connection &connection);

/// Sends all bytes, in one call where the system takes them; false when the peer is gone, does
/// not read, or the simulator shuts down.
bool send_all(const Connection &connection, std::string_view bytes);

/// Waits until the connection takes bytes; false at its deadline or the shutdown.
bool wait_until_writable(const Connection &connection);

/// Waits; false when the simulator shut down meanwhile.
bool wait_milliseconds(const Connection &connection, int milliseconds);

/// Ends the connection after an answer. What the client still sends is read for a moment, since
/// closing with unread bytes would reset the connection and could take the answer with it.
void end_connection(Connection &connection);

/// Why no whole request came, in words for a request line; `data` has none.
const char *describe_arrival(Arrival arrival);
