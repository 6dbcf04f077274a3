// Watches and disturbs the socket calls of a client that runs in the test's own thread: the
// library's exchanges that no command line reaches. The calls of every other thread, a peer's among
// them, pass untouched.

#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <string>
#include <sys/socket.h>
#include <sys/types.h>

namespace harness {

/// Watches this thread's connect, send and recv calls while it is in scope; one at a time. What the
/// client left open is closed at the end.
struct watched_client {
    watched_client();
    ~watched_client();
    watched_client(const watched_client &) = delete;
    watched_client &operator=(const watched_client &) = delete;

    // Faults. An error number makes the next calls fail with it; 0 leaves them alone.
    int connect_error = 0; ///< no connection is attempted
    int send_error = 0;
    int recv_error = 0;

    // What the client called.
    int connects = 0;
    sockaddr_storage address = {}; ///< of the last connect
    int sends = 0;
    int receives = 0;
    int flags = 0;                ///< all send and recv flags together
    std::size_t receive_size = 0; ///< size of the last receive

    /// The sockets that it connected, with what tells each from a later one of the same number.
    std::map<int, ino_t> connected;

    /// Closes the connections that the client left open; whether there were any.
    bool close_left_open();

    /// What a call of the client wrote, returned and left behind.
    struct outcome {
        std::string output;
        int status;
        bool left_open;
    };
    outcome run(const std::function<int()> &call);
};

} // namespace harness
