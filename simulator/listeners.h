// The places where the daemons listen: the directory, its lock, the socket files and the TCP
// port. Makes them, and removes exactly what it made.
#pragma once

#include "simulator/connection.h"
#include "simulator/options.h"

#include <boost/asio/basic_socket_acceptor.hpp>
#include <string>
#include <sys/types.h>
#include <vector>

using Acceptor = asio::basic_socket_acceptor<Protocol, Executor>;

struct Listener {
    const Daemon *daemon;
    Acceptor acceptor;
    std::string path; ///< socket file; empty for the TCP port
    dev_t device;     ///< device and inode of the socket file, to remove no other
    ino_t inode;
};

struct Listeners {
    int lock = -1;
    std::string lock_path;
    std::vector<Listener> rows; ///< in the order of DAEMONS
    std::string origin;         ///< address of the web service, such as http://127.0.0.1:8080
};

/// Opens everything. Returns what went wrong and what to do, with everything removed again;
/// empty when all listen.
std::string open_listeners(Loop &loop, const Settings &settings, Listeners &listeners);

/// Closes everything and removes the files.
void close_listeners(Listeners &listeners);
