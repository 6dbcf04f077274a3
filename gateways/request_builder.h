// The request builder that all gateways share: it accepts a function, counts the parameters and
// calls the gateway's exchange. What differs between builders is a table of builder_row.

#pragma once

#include <cstddef>
#include <span>
#include <utility>

/// Where a request goes: a socket path, or an address and a port.
struct request_target {
    const char *socket_path;
    const char *address;
    int port;
};

/// The exchange that takes the most values takes this many.
constexpr std::size_t MOST_GATEWAY_VALUES = 11;

/// Calls an exchange with values from an array of MOST_GATEWAY_VALUES entries.
using exchange_call = int (*)(const request_target &target, const char *function,
                              const char *const *values);

/// A function that a builder serves.
struct builder_row {
    const char *function;
    int count;                 ///< exact number of parameters
    const char *count_message; ///< shown when the number differs
    exchange_call exchange;    ///< null: counted, but not served
    int absent_before = 0;     ///< values that the exchange takes before the first parameter
    /// Rejects parameters by their format after writing a message; null: any will do.
    bool (*acceptable)(char *const *parameters) = nullptr;
};

/// A builder: its trace marks and its rows in comparison order.
struct request_builder {
    const char *entering;
    const char *exiting;
    bool trailing_trace; ///< an empty mark follows both marks
    std::span<const builder_row> rows;
};

/// Builds and carries one request.
/// @param function function name; null is a function that is not served.
/// @param parameters raw parameter list; null counts as empty.
/// @return 503 for a function without a row, 505 for a wrong count, 502 for a wrong format,
///         otherwise what the exchange returns.
int build_gateway_request(const request_builder &builder, const request_target &target,
                          const char *function, const char *parameters);

namespace spread {

template <typename... Texts, std::size_t... Index>
int local(int (*exchange)(const char *, const char *, Texts...), const request_target &target,
          const char *function, const char *const *values, std::index_sequence<Index...> /*all*/) {
    static_assert(sizeof...(Texts) <= MOST_GATEWAY_VALUES);
    return exchange(target.socket_path, function, values[Index]...);
}

template <typename... Texts>
int local(int (*exchange)(const char *, const char *, Texts...), const request_target &target,
          const char *function, const char *const *values) {
    return local(exchange, target, function, values, std::index_sequence_for<Texts...>{});
}

template <typename... Texts, std::size_t... Index>
int internet(int (*exchange)(const char *, int, const char *, Texts...),
             const request_target &target, const char *function, const char *const *values,
             std::index_sequence<Index...> /*all*/) {
    static_assert(sizeof...(Texts) <= MOST_GATEWAY_VALUES);
    return exchange(target.address, target.port, function, values[Index]...);
}

template <typename... Texts>
int internet(int (*exchange)(const char *, int, const char *, Texts...),
             const request_target &target, const char *function, const char *const *values) {
    return internet(exchange, target, function, values, std::index_sequence_for<Texts...>{});
}

} // namespace spread

/// Adapts a local exchange function for a row: as many values as the function itself declares.
template <auto Exchange>
int over_socket(const request_target &target, const char *function, const char *const *values) {
    return spread::local(Exchange, target, function, values);
}

/// Adapts an exchange function over TCP for a row.
template <auto Exchange>
int over_internet(const request_target &target, const char *function, const char *const *values) {
    return spread::internet(Exchange, target, function, values);
}
