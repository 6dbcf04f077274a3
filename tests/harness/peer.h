// A daemon that follows a script: it listens on a fresh Unix-domain socket or loopback port,
// accepts one connection and does its steps in order. A test is a few steps beside a command line.

#pragma once

#include <string>
#include <thread>
#include <vector>

namespace harness {

enum class step_kind {
    EXPECT,     ///< receive exactly these bytes
    AWAIT,      ///< wait until bytes have come, leave them unreceived
    AWAIT_END,  ///< wait until the test calls finish()
    COLLECT,    ///< receive until these bytes have come, keep everything for received()
    SEND,       ///< send these bytes in one write
    DRIP,       ///< send these bytes one per write
    CLOSE,      ///< close the connection
    HALF_CLOSE, ///< end the sending side, keep receiving
    RESET,      ///< close so that the client sees a reset
    HANG,       ///< say nothing more until the client goes away
    ENDLESS,    ///< send these bytes again and again until the client goes away
};

struct step {
    step_kind kind;
    std::string bytes;
};

/// Binds a socket to a loopback port of the kernel's choice and returns the port.
int bind_to_loopback(int descriptor);

// The vocabulary of scripts.
step expect(std::string bytes);
step await_bytes();
step await_end();
step collect_until(std::string end);
step reply(std::string bytes);
step drip(std::string bytes);
step close_connection();
step half_close();
step reset();
step hang();
step endless(std::string bytes);

using script = std::vector<step>;

/// One scripted daemon. Its socket listens before the constructor returns, so nothing needs to wait
/// for it. After the last step it receives until the client closes.
class peer {
  public:
    /// Listens on a Unix-domain socket of this path.
    peer(const std::string &socket_path, script steps);

    /// Listens on a loopback port that the system chooses.
    explicit peer(script steps);

    ~peer();
    peer(const peer &) = delete;
    peer &operator=(const peer &) = delete;

    /// The loopback port.
    int port() const {
        return port_;
    }

    /// Ends the script, waiting for the client to close if it is still connected.
    /// @return what went wrong, empty when everything went as scripted. A client that never came is
    ///         a complaint as well.
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
    void serve(const script &steps);
    void follow(const script &steps, int *connection);
    bool wait_readable(int descriptor) const;
    bool receive_some(int connection);

    int listener_ = -1;
    int stop_[2] = {-1, -1};
    int port_ = 0;
    bool visited_ = false;
    std::string received_;
    std::string complaint_;
    std::thread thread_;
};

} // namespace harness
