// The request builder that all gateways share: it accepts a function, counts the parameters and
// calls the gateway's exchange. What differs between builders is a table of builder_row.

#pragma once

#include "gateways/exchange_call.h"

#include <span>
#include <string_view>

struct gateway_profile;

/// What can make a function exceptional; the usual ones have none of it.
struct builder_exceptions {
    bool unserved = false;        ///< counted, and then refused all the same
    int absent_before = 0;        ///< values that the exchange takes before the first parameter
    const char *blamed = nullptr; ///< builder that the count message names instead
    /// Rejects parameters by their format after writing a message; null: any will do.
    bool (*acceptable)(char *const *parameters) = nullptr;
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
    const char *builder; ///< the builder's own name
    const char *function;
    const char *needed; ///< the parameters' names, as the count message lists them
    const gateway_profile *gateway;
    builder_exceptions exceptional = {};
    int count = count_names(needed); ///< exact number of parameters
};

/// A builder: what its messages and marks name, and its rows in comparison order.
struct request_builder {
    const char *source; ///< source file
    const char *name;
    const char *exits_as; ///< the name in the exiting mark
    bool trailing_trace;  ///< an empty mark follows both marks
    std::span<const builder_row> rows;
};

/// Declared, never defined: a compiler error that names it says that a builder has no row.
void builder_has_no_row_in_the_table();

/// The rows of one builder, which stand together in their table.
consteval std::span<const builder_row> rows_of(std::string_view builder,
                                               std::span<const builder_row> table) {
    std::size_t first = 0;
    while (first < table.size() && table[first].builder != builder) {
        first++;
    }
    std::size_t end = first;
    while (end < table.size() && table[end].builder == builder) {
        end++;
    }
    if (first == end) {
        builder_has_no_row_in_the_table();
    }
    return table.subspan(first, end - first);
}

/// Builds and carries one request.
/// @param function function name; null is a function that is not served.
/// @param parameters raw parameter list; null counts as empty.
/// @return 503 for a function without a row, 505 for a wrong count, 502 for a wrong format,
///         otherwise what the exchange returns.
int build_gateway_request(const request_builder &builder, const request_target &target,
                          const char *function, const char *parameters);
