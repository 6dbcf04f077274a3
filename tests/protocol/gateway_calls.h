// Calls the program's functions of a gateway's row. They are found by the names that its messages
// show.

#pragma once

#include "gateways/gateway_exchange.h"
#include "gateways/internetclientutil.h"
#include "gateways/localclientutil.h"
#include "gateways/request_builder.h"
#include "tests/protocol/gateways.h"

#include <stdexcept>
#include <string>
#include <vector>

namespace protocol {

constexpr const char *LOOPBACK_ADDRESS = "127.0.0.1";

/// The rows of all builders, local and over TCP.
inline std::vector<builder_row> builder_rows() {
    std::vector<builder_row> rows(local_builder_rows().begin(), local_builder_rows().end());
    rows.insert(rows.end(), internet_builder_rows().begin(), internet_builder_rows().end());
    return rows;
}

/// Values that name their own position, for every exchange enough.
inline const char *const NUMBERED_VALUES[MOST_GATEWAY_VALUES] = {
    "v1", "v2", "v3", "v4", "v5", "v6", "v7", "v8", "v9", "v10", "v11"};

/// Calls an exchange over a meeting or a deserted point.
/// @param values the header values in argument order; what a function does not use may be null.
template <typename Point>
int call(const gateway_row &row, const Point &point, const char *function,
         const char *const *values) {
    for (const builder_row &each : builder_rows()) {
        if (each.gateway->source_tag == std::string(row.tag)) {
            return each.gateway->exchange({point.path.c_str(), LOOPBACK_ADDRESS, point.port},
                                          function, values);
        }
    }
    throw std::logic_error(std::string("no exchange calls itself ") + row.tag);
}

/// Calls a builder over such a point.
template <typename Point>
int build(const gateway_row &row, const Point &point, const char *function, const char *list) {
    const std::string name = function_of(row.builder);
#define CALL_LOCAL_BUILDER(NAME)                                                                   \
    if (name == #NAME) {                                                                           \
        return NAME(point.path.c_str(), function, list);                                           \
    }
    LOCAL_BUILDERS(CALL_LOCAL_BUILDER)
#undef CALL_LOCAL_BUILDER
#define CALL_INTERNET_BUILDER(NAME)                                                                \
    if (name == #NAME) {                                                                           \
        return NAME(LOOPBACK_ADDRESS, point.port, function, list);                                 \
    }
    INTERNET_BUILDERS(CALL_INTERNET_BUILDER)
#undef CALL_INTERNET_BUILDER
    throw std::logic_error("no builder is called " + name);
}

} // namespace protocol
