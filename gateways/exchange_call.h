// One shape for calling any exchange function, however many values it takes.

#pragma once

#include <cstddef>
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

namespace spread {

template <typename... Texts, std::size_t... Index>
int local(int (*exchange)(const char *, const char *, Texts...), const request_target &target,
          const char *function, const char *const *values, std::index_sequence<Index...> /*all*/) {
    static_assert(sizeof...(Texts) <= MOST_GATEWAY_VALUES,
                  "this exchange takes more values than any before: raise MOST_GATEWAY_VALUES");
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
    static_assert(sizeof...(Texts) <= MOST_GATEWAY_VALUES,
                  "this exchange takes more values than any before: raise MOST_GATEWAY_VALUES");
    return exchange(target.address, target.port, function, values[Index]...);
}

template <typename... Texts>
int internet(int (*exchange)(const char *, int, const char *, Texts...),
             const request_target &target, const char *function, const char *const *values) {
    return internet(exchange, target, function, values, std::index_sequence_for<Texts...>{});
}

} // namespace spread

/// Adapts a local exchange function: as many values as the function itself declares.
template <auto Exchange>
int over_socket(const request_target &target, const char *function, const char *const *values) {
    return spread::local(Exchange, target, function, values);
}

/// Adapts an exchange function over TCP.
template <auto Exchange>
int over_internet(const request_target &target, const char *function, const char *const *values) {
    return spread::internet(Exchange, target, function, values);
}
