// The places where the daemons listen: the directory, its lock, the socket files and the TCP
// port. Makes them, and removes exactly what it made.
#pragma once

#include "simulator/connection.h"
#include "simulator/options.h"

#include <boost/asio/basic_socket_acceptor.hpp>
#include <sys/types.h>

using stream_acceptor = asio::basic_socket_acceptor<any_protocol, loop_executor>;

struct daemon_listener {
    const daemon_row *daemon;
    stream_acceptor acceptor;
    std::string path; ///< socket file; empty for the TCP port
    dev_t device = 0; ///< device and inode of the socket file, to remove no other
    ino_t inode = 0;
    unsigned orders = 0; ///< how often it was told anew; a wait for an older order is over
};

struct listener_set {
    int lock = -1;
    std::string lock_path;
    std::vector<daemon_listener> rows; ///< in the order of DAEMONS
    std::string origin; ///< address of the web service, such as http://127.0.0.1:8080
};

/// Opens everything. Returns what went wrong and what to do, with everything removed again;
/// empty when all listen.
std::string open_listeners(event_loop &loop, const simulator_settings &settings,
                           listener_set &listeners);

/// Says where each daemon listens, and writes the ready file. The places are in the order of
/// DAEMONS. Returns what went wrong.
std::string announce_listeners(const simulator_settings &settings, const listener_set &listeners,
                               std::vector<std::string> &places);

/// Puts a socket that refuses connections in the place of one that listens. False when it cannot,
/// or cannot count them as it should.
bool stop_listening(event_loop &loop, daemon_listener &listener, bool counted);

void listen_again(daemon_listener &listener);

/// Refuses this many more connections, and lets the socket listen then. Tells of each that was
/// refused.
void refuse_connections(event_loop &loop, daemon_listener &listener, int count,
                        std::function<void()> refused, std::function<void()> then);

void close_listeners(listener_set &listeners);
