// A scripted daemon together with everything that a client needs to find it.

#pragma once

#include "tests/harness/peer.h"
#include "tests/harness/process.h"

#include <memory>
#include <string>

namespace harness {

/// Where a daemon can listen.
enum class family { UNIX_SOCKET, LOOPBACK };

/// A daemon on a Unix-domain socket in a directory of its own, or on a loopback port.
struct meeting_point {
    meeting_point(family where, script steps) : path(directory.path + "/s") {
        if (where == family::UNIX_SOCKET) {
            daemon = std::make_unique<peer>(path, std::move(steps));
        } else {
            daemon = std::make_unique<peer>(std::move(steps));
        }
        port = daemon->port();
    }

    temporary_directory directory;
    std::string path;
    std::unique_ptr<peer> daemon;
    int port = 0;
};

/// A loopback port and a socket path where nobody listens, as long as this is in scope.
struct deserted_point {
    deserted_point();
    ~deserted_point();
    deserted_point(const deserted_point &) = delete;
    deserted_point &operator=(const deserted_point &) = delete;

    temporary_directory directory;
    std::string path;
    int port = 0;

  private:
    int bound_;
};

} // namespace harness
