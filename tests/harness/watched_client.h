// Watches and disturbs the socket calls of a client that runs in the test's own thread: the
// library's exchanges that no command line reaches. The calls of every other thread, a peer's among
// them, pass untouched.

#pragma once

#include <functional>
#include <string>

namespace harness {

/// What a call of a client wrote, returned and left behind.
struct client_outcome {
    std::string output;
    int status;
    bool left_open; ///< its connection, until now
};

/// An error number that a call fails with; 0 leaves it alone.
struct client_fault {
    int send_error = 0;
    int recv_error = 0;
};

/// Runs a client's call.
client_outcome watched(const std::function<int()> &call, const client_fault &fault = {});

} // namespace harness
