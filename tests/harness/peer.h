// A daemon that follows a script: it listens on a Unix-domain socket or a loopback port, accepts
// one connection and does its steps in order. A test is a few steps beside a command line.

#pragma once

#include "tests/harness/script.h"

#include <netinet/in.h>
#include <semaphore>
#include <string>
#include <thread>

namespace harness {

/// Binds a socket to a loopback port and returns it; 0 is a port of the kernel's choice.
int bind_to_loopback(int descriptor, in_port_t port = 0);

/// Binds a Unix-domain socket, of whatever type, to a path.
void bind_to_path(int descriptor, const std::string &path);

/// One scripted daemon. Its socket listens before the constructor returns, so nothing needs to wait
/// for it. After the last step it receives until the client closes.
class peer {
  public:
    /// Listens on a Unix-domain socket of this path.
    peer(const std::string &socket_path, script steps);

    /// Listens on a loopback port; 0 is one that the system chooses.
    explicit peer(script steps, in_port_t port = 0);

    ~peer();
    peer(const peer &) = delete;
    peer &operator=(const peer &) = delete;

    /// The loopback port.
    int port() const {
        return port_;
    }

    /// Waits until the script has come to an await_end(); false when it did not in time.
    bool wait_for_await();

    /// Ends one await_end().
    void go_on() const;

    /// Ends the script, waiting for the client to close if it is still connected.
    /// @return what went wrong, empty when everything went as scripted. A client that never came is
    ///         a complaint as well, and so is a second one.
    std::string finish();

    /// Like finish() for a peer that nobody may connect to.
    /// @return a complaint when a client came, or empty.
    std::string finish_unvisited();

    /// All bytes that the client sent; complete after finish().
    const std::string &received() const {
        return received_;
    }

  private:
    void start(script steps);
    int accept_client() const;
    void serve(const script &steps);
    void follow(const script &steps, int *connection);
    bool expect_bytes(int connection, const std::string &bytes);
    bool wait_readable(int descriptor) const;
    bool receive_some(int connection);

    int listener_ = -1;
    int crowd_ = -1; ///< fills the queue
    int stop_[2] = {-1, -1};
    int port_ = 0;
    bool visited_ = false;
    std::size_t checked_ = 0; ///< bytes that a step has looked at
    std::string received_;
    std::string complaint_;
    std::counting_semaphore<> awaiting_{0};
    std::thread thread_;
};

} // namespace harness
