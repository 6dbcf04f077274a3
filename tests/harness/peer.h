// A daemon that follows a script: it listens on a Unix-domain socket or a loopback port, accepts
// one connection and does its steps in order. A test is a few steps beside a command line.

#pragma once

#include "tests/harness/process.h"

#include <memory>
#include <netinet/in.h>
#include <semaphore>
#include <thread>
#include <utility>

namespace harness {

/// What a scripted daemon does, step by step.
enum class step_kind {
    EXPECT,      ///< receive exactly these bytes
    COLLECT,     ///< receive until these bytes have come, keep everything for received()
    AWAIT,       ///< wait until bytes have come, leave them unreceived
    AWAIT_END,   ///< wait until the test calls go_on() or finish()
    IGNORE,      ///< leave everything unreceived until the client or the test goes away
    SEND,        ///< send these bytes
    CLOSE,       ///< close the connection
    HALF_CLOSE,  ///< end the sending side, keep receiving
    RESET,       ///< close so that the client sees a reset
    NEVER_ACCEPT ///< as the only step: the queue is full, and nobody empties it
};

struct step {
    step_kind kind;
    std::string bytes = {};
    std::size_t times = 1; ///< how often they are sent; they never stand in memory as a whole
};

// The vocabulary of scripts.
inline step expect(std::string bytes) {
    return {step_kind::EXPECT, std::move(bytes)};
}
inline step collect_until(std::string end) {
    return {step_kind::COLLECT, std::move(end)};
}
inline step reply(std::string bytes, std::size_t times = 1) {
    return {step_kind::SEND, std::move(bytes), times};
}
constexpr auto await_bytes = [] { return step{step_kind::AWAIT}; };
constexpr auto await_end = [] { return step{step_kind::AWAIT_END}; };
constexpr auto ignore = [] { return step{step_kind::IGNORE}; };
constexpr auto close_connection = [] { return step{step_kind::CLOSE}; };
constexpr auto half_close = [] { return step{step_kind::HALF_CLOSE}; };
constexpr auto reset = [] { return step{step_kind::RESET}; };
constexpr auto never_accept = [] { return step{step_kind::NEVER_ACCEPT}; };

using script = std::vector<step>;

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

    int port() const {
        return port_;
    }

    /// Waits until the script has come to an await_end(); false when it did not in time.
    bool wait_for_await();

    /// Ends one await_end().
    void go_on() const;

    /// Ends the script, waiting for the client to close if it is still connected.
    /// @return what went wrong, or empty. A client that never came is a complaint as well, and so
    ///         is a second one.
    std::string finish();

    /// Like finish() for a peer that nobody may connect to.
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

/// Where a daemon can listen.
enum class family { UNIX_SOCKET, LOOPBACK };

/// A daemon on a Unix-domain socket in a directory of its own, or on a loopback port.
struct meeting_point {
    meeting_point(family where, const script &steps)
        : path(directory.path + "/s"),
          daemon(where == family::UNIX_SOCKET ? std::make_unique<peer>(path, steps)
                                              : std::make_unique<peer>(steps)),
          port(daemon->port()) {}

    temporary_directory directory;
    std::string path;
    std::unique_ptr<peer> daemon;
    int port;
};

/// A loopback port and a socket path where nobody listens, as long as this is in scope.
struct deserted_point {
    deserted_point();
    ~deserted_point();

    temporary_directory directory;
    std::string path = directory.path + "/none";
    int port;

  private:
    int bound_;
};

/// Runs `action` in a process of its own whose network is the loopback interface alone, so that the
/// well-known port of the local web service is free. Needs root, or leave to create user
/// namespaces.
/// @return the action's text, or a complaint when there is no such process to be had.
std::string on_private_machine(const std::function<std::string()> &action);

/// Why no service of such a process can be called by this name of its host; empty when it can.
std::string missing_private_machine(const std::string &host = "127.0.0.1");

} // namespace harness
