// The simulated daemons as one table, the error numbers they share, and the records that pass
// between the server and whatever reads a daemon's requests.
#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

inline constexpr const char *SERVICE_PATH = "/cgi-bin/lumows";

struct daemon_conversation;
struct home_state;

/// A web request as it is passed on.
struct passed_request {
    std::string method;
    std::string path;
    std::string headers; ///< the lines that a web service reads
    std::string body;
};

/// Whom an answer is for: a client of the daemon, the page in a browser, which fetches itself, its
/// events and more, or somebody whom another site sent.
enum class audience_kind { CLIENT, PAGE, EVENTS, BENCH, STRANGER };

enum class arrival_kind { DATA, END, LATE, STOPPED, FULL, FAILED };

/// How far a request has come: more must arrive, or may once the client is told to go on, or not.
enum class request_progress { INCOMPLETE, AWAITS_CONTINUE, WHOLE };

/// What one request came to.
struct exchange_result {
    std::string request; ///< the request in words, for the request line; empty: nothing arrived
    std::string outcome; ///< what is answered, in words
    std::optional<std::string> answer; ///< its bytes; nothing: closed without one
    audience_kind audience = audience_kind::CLIENT;
    passed_request web = {}; ///< the request, where it is one of the web
};

/// Which lines of a datagram that sets say what, and of what.
struct linked_lines {
    std::array<std::string_view, 2> address; ///< the parts, a slash between them; or one alone
    std::string_view status;
    std::string_view value;
};

/// A request that a gateway knows. The lines after the one that names it are words: the name of the
/// header, then "=" and the only value that is right, or ":" and its width in bytes, if it has any.
struct gateway_request {
    std::string_view function;
    std::string_view lines;
    std::string_view sample = {};         ///< parameters of the client; empty: it never sends it
    const linked_lines *linked = nullptr; ///< where it sets something
};

/// Largest body of a web request; clients send uploads of about a megabyte.
inline constexpr std::size_t HTTP_BODY_LIMIT = std::size_t{4} * 1024 * 1024;

/// One daemon. The order of the table is that of the printed lists.
struct daemon_row {
    std::string_view key;                           ///< its name in options
    std::string_view label;                         ///< its name in request lines
    std::string_view socket_file;                   ///< empty: it listens on the TCP port
    std::string_view prefix;                        ///< opens its status texts
    int digits;                                     ///< least number of digits in its status texts
    int base;                                       ///< added to its error numbers
    std::size_t limit;                              ///< most bytes of one request
    request_progress (*progress)(std::string_view); ///< how far a request has come
    void (*answer)(daemon_conversation &);          ///< checks the request and makes its answer
    std::string_view client_type;                   ///< what the client calls it
    std::span<const gateway_request> requests = {}; ///< those that a gateway knows
};

extern const std::span<const daemon_row> DAEMONS;

/// The daemon's place in DAEMONS, for what is kept per daemon in the same order.
std::size_t row_of(const daemon_row &daemon);

/// Error numbers, relative to a daemon's base. The offsets 5 to 7 are never answered: clients
/// use those numbers of each block for their own connection failures.
enum request_error {
    PROPER_REQUEST = 0,
    NOT_SUPPORTED = 1, ///< a request name that the daemon does not know
    MALFORMED = 2,     ///< a missing, misplaced or misspelt line, or bytes after the end
    REFUSED_VALUE = 3, ///< a value that cannot be right, such as one of the wrong width
    TOO_LONG = 4,      ///< more bytes than one request may have
};

/// More requests than ever come.
inline constexpr int FOR_EVER = 1 << 30;

/// What a daemon was told to do instead of answering properly.
struct told_behaviour {
    std::vector<int>
        statuses; ///< answered in turn in place of the proper number, the last from then on
    int answers = FOR_EVER;         ///< to so many of the first requests
    std::optional<std::string> raw; ///< sent in place of the proper answer
    int delay = 0;                  ///< milliseconds between the request and the answer
    int delays = FOR_EVER;          ///< so many of the first requests wait so long
    int closes = 0;                 ///< so many are closed without an answer
    int refusals = 0;               ///< so many connections are refused
};

struct daemon_conversation {
    const daemon_row &daemon;
    const told_behaviour &behaviour;
    home_state &home;
    std::string_view received = {};
    arrival_kind arrival = arrival_kind::DATA; ///< how its reading ended
    exchange_result exchange = {};
};

/// Why no whole request came, in words for a request line; `data` has none.
const char *describe_arrival(arrival_kind arrival);

/// The status text of a number, such as EIBG-000.
std::string format_status(const daemon_row &daemon, int number);

/// The number to answer: the proper one, which is 0 or the daemon's base and this error number,
/// unless the daemon was told others: then the next of those.
int choose_status(const daemon_conversation &conversation, int error);

/// Answers this error number, or whatever the daemon was told, in a status line.
void answer_status(daemon_conversation &conversation, int error, const std::string &complaint);

// How each kind of daemon reads a request and answers it.
request_progress fsmcore_progress(std::string_view received);
request_progress gateway_progress(std::string_view received);
request_progress http_progress(std::string_view received);
void answer_fsmcore(daemon_conversation &conversation);
void answer_gateway(daemon_conversation &conversation);
void answer_http(daemon_conversation &conversation);

/// What is wrong with a place of home_state::links, such as "eib 1/1/3"; empty when nothing is.
std::string complain_about_link(std::string_view link);

/// The names of all daemons in options, and the daemon of one; null when there is none.
std::string daemon_keys(const char *separator);
const daemon_row *find_daemon(std::string_view key);
