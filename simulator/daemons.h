// The nine simulated daemons as one table, the error numbers they share, and the records that
// pass between the server and whatever reads a daemon's requests.
#pragma once

#include "connection.h"

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

struct Home;
struct Conversation;

/// What one request came to.
struct Exchange {
    std::string request; ///< the request in words, for the request line; empty: nothing arrived
    std::string outcome; ///< what is answered, in words
    std::string answer;  ///< the bytes of the answer
};

enum class DaemonId { fsmcore, eib, smstool, lintronic, tecnout, vivaldi, bentel, tutondo, soap };

/// One daemon. The order of the table is that of DaemonId and of the printed lists.
struct Daemon {
    DaemonId id;
    std::string_view key;                 ///< its name in options
    std::string_view label;               ///< its name in request lines
    std::string_view socket_file;         ///< empty: it listens on the TCP port
    std::string_view prefix;              ///< opens its status texts
    int digits;                           ///< least number of digits in its status texts
    int base;                             ///< added to an ErrorOffset
    std::size_t limit;                    ///< most bytes of one request
    Exchange (*exchange)(Conversation &); ///< reads one request and makes its answer
};

inline constexpr std::size_t DAEMON_COUNT = 9;
extern const std::array<Daemon, DAEMON_COUNT> DAEMONS;

/// Error numbers, relative to a daemon's base. The offsets 5 to 7 are never answered: clients
/// use those numbers of each block for their own connection failures.
enum class ErrorOffset {
    not_supported = 1, ///< a request name that the daemon does not know
    malformed = 2,     ///< a missing, misplaced or misspelt line, or bytes after the end
    refused_value = 3, ///< a value that cannot be right, such as one of the wrong width
    too_long = 4,      ///< more bytes than one request may have
};

/// What a daemon was told to do instead of answering properly.
struct Behaviour {
    std::optional<int> status;      ///< answered in place of the proper status number
    std::optional<std::string> raw; ///< sent in place of the proper answer
    int delay = 0;                  ///< milliseconds between the request and the answer
    bool close = false;             ///< closes after the request, without an answer
    bool refuse = false;            ///< refuses connections
};

/// One connection to one daemon.
struct Conversation {
    const Daemon &daemon;
    const Behaviour &behaviour;
    Connection &connection;
    Home &home;
};

/// The status text of a number, such as EIBG-000.
std::string format_status(const Daemon &daemon, int number);

/// The number to answer: the proper one unless the daemon was told another.
int choose_status(const Conversation &conversation, int proper);

/// The daemon with this option name, null when there is none.
const Daemon *find_daemon(std::string_view key);
