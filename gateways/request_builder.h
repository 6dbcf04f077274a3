// The request builder that all gateways share: it accepts a function, counts the parameters and
// calls the gateway's exchange. What differs between builders is a request_builder and its rows.

#pragma once

#include <span>

struct gateway_profile;

/// One request on its way: where it goes, by socket path or by address and port, and what it says.
struct gateway_call {
    const char *socket_path;
    const char *address;
    int port;
    const char *function = nullptr;
    const char *const *p = nullptr; ///< the parameters, as many as the function takes
};

/// The number of names in a list like "SectionName, Payload".
constexpr int count_names(const char *names) {
    int count = 1;
    for (; *names != '\0'; names++) {
        count += *names == ',' ? 1 : 0;
    }
    return count;
}

/// A function that a builder serves.
struct builder_row {
    const char *function;
    const char *needed; ///< the parameters' names, as the count message lists them
    /// Hands the parameters to the gateway's exchange function; null: they are counted, and then
    /// the function is refused all the same.
    int (*exchange)(const gateway_call &c);
    /// Rejects parameters by their format after writing a message; null: any will do.
    bool (*acceptable)(const char *const *p) = nullptr;
    int count = count_names(needed); ///< exact number of parameters
};

/// A builder: what its messages and marks name, and its rows in comparison order.
struct request_builder {
    const char *source; ///< source file
    const char *name;
    const gateway_profile *gateway;
    std::span<const builder_row> rows;
    const char *exits_as = nullptr; ///< the name in the exiting mark; null: name
    const char *blamed = nullptr;   ///< builder that the count message names; null: name
    bool trailing_trace = false;    ///< an empty mark follows both marks
};

/// Builds and carries one request.
/// @param call where the request goes; the function and the parameters are filled in.
/// @param function function name; null is a function that is not served.
/// @param parameters raw parameter list; null counts as empty.
/// @return 503 for a function without a row, 505 for a wrong count, 502 for a wrong format,
///         otherwise what the exchange returns.
int build_gateway_request(const request_builder &builder, gateway_call call, const char *function,
                          const char *parameters);
