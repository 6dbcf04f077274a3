// The daemons and the requests of the gateways as clients know them, one row each, which the other
// tests walk. Stated here once more on purpose: nothing is taken from the program under test.
#pragma once

#include <iosfwd>
#include <span>
#include <string>
#include <string_view>
#include <vector>

/// How a daemon is spoken to.
enum class Protocol { fsmcore, gateway, service };

struct DaemonRow {
    std::string_view key;    ///< its name in options
    std::string_view label;  ///< its name in request lines
    std::string_view socket; ///< the middle of its socket's name; empty: it has none
    Protocol protocol;
    std::string_view prefix; ///< opens its status texts
    std::size_t digits;      ///< least number of digits in its status texts
    int base;                ///< its error numbers are above this one
};

/// A proper request of a gateway.
struct FunctionRow {
    std::string_view daemon; ///< key of the gateway
    std::string_view name;
    std::string_view lines; ///< those after the request line, without the closing empty one
    std::string_view shown; ///< the values in the request line that is printed
};

std::ostream &operator<<(std::ostream &out, const FunctionRow &row);

extern const std::span<const DaemonRow> DAEMON_ROWS;
extern const std::span<const FunctionRow> FUNCTION_ROWS;

/// The row of this key; throws when there is none.
const DaemonRow &daemon_row(std::string_view key);

/// The daemons that listen on sockets.
std::vector<DaemonRow> socket_daemons();

/// The daemons that check named lines.
std::vector<DaemonRow> gateways();

/// The keys in the order of the rows.
std::string joined_keys(const std::string &separator);

/// The whole request of a row.
std::string function_request(const FunctionRow &row);

/// A request that this daemon carries out; throws when no row holds one.
std::string proper_request(const DaemonRow &daemon);

/// A status text, such as EIBG-000 for 0.
std::string status_text(const DaemonRow &daemon, unsigned number);

/// The whole answer with this status and nothing else to tell.
std::string status_answer(const DaemonRow &daemon, unsigned number);
