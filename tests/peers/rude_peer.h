// A peer with no manners: it sends what no string could hold, at any time, and leaves in any way.

#pragma once

#include "tests/harness/process.h"

#include <atomic>
#include <cstddef>
#include <string>
#include <thread>
#include <vector>

namespace harness {

/// Bytes that are sent a number of times without ever standing in memory as a whole: a process
/// hands its size on to its children's measure.
struct piece {
    std::string bytes;
    std::size_t times = 1;
    std::string numbered = {}; ///< what follows each time behind its number, if anything does
};
using pieces = std::vector<piece>;

std::size_t size_of(const pieces &answer);

/// When the peer sends its answer.
enum class opening {
    AFTER_THE_REQUEST,  ///< the request is received first
    BEFORE_THE_REQUEST, ///< the request stays unreceived until the answer is out
    NEVER_READING,      ///< the request is never received
};

/// How the answer is written.
enum class pace { AT_ONCE, BYTE_BY_BYTE };

/// What the peer does behind its answer.
enum class ending {
    CLOSE,
    RESET,
    SILENCE, ///< nothing until the client or the test goes away
};

struct manners {
    opening begins = opening::AFTER_THE_REQUEST;
    pace speaks = pace::AT_ONCE;
    ending ends = ending::CLOSE;
};

/// Serves every client that comes, one after the other, in the same manner. It listens before the
/// constructor returns.
class rude_peer {
  public:
    /// Listens on a Unix-domain socket of this path.
    /// @param request_end what every request ends with.
    rude_peer(const std::string &socket_path, std::string request_end, pieces answer,
              manners manner = {});

    /// Listens on a loopback port that the system chooses.
    rude_peer(std::string request_end, pieces answer, manners manner = {});

    ~rude_peer();
    rude_peer(const rude_peer &) = delete;
    rude_peer &operator=(const rude_peer &) = delete;

    int port() const {
        return port_;
    }

    /// Waits until a client has everything that it will get before the silence.
    /// @return false when none came in time.
    bool wait_for_silence() const;

    /// Ends the service; a client that is already gone is still served.
    /// @return the number of clients that came, or -1 when the service could not be told to end.
    int finish();

  private:
    void start(std::string request_end, pieces answer, manners manner);
    void serve();
    void treat(int connection);
    bool receive_request(int connection) const;

    int listener_ = -1;
    int port_ = 0;
    int stop_[2] = {-1, -1};
    int silent_[2] = {-1, -1};
    std::string request_end_;
    pieces answer_;
    manners manner_;
    int clients_ = 0;
    bool told_ = false;
    std::thread thread_;
};

/// A socket that takes no connection: its queue is full and nobody empties it.
class crowded_socket {
  public:
    explicit crowded_socket(const std::string &socket_path);
    crowded_socket();
    ~crowded_socket();
    crowded_socket(const crowded_socket &) = delete;
    crowded_socket &operator=(const crowded_socket &) = delete;

    int port() const {
        return port_;
    }

    /// Turns everybody away who waits.
    void close_down();

  private:
    int listener_ = -1;
    int port_ = 0;
    std::vector<int> crowd_;
};

/// A socket of a type that is no stream, bound to a path.
class foreign_socket {
  public:
    foreign_socket(const std::string &socket_path, int type);
    ~foreign_socket();
    foreign_socket(const foreign_socket &) = delete;
    foreign_socket &operator=(const foreign_socket &) = delete;

  private:
    int socket_ = -1;
};

} // namespace harness
