// Calls the program's functions of a gateway's row. They are found by the names that its messages
// show.

#pragma once

#include "gateways/gateway_exchange.h"
#include "gateways/internetclientutil.h"
#include "gateways/localclientutil.h"
#include "gateways/request_builder.h"
#include "tests/protocol/gateways.h"

#include <algorithm>
#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

namespace protocol {

using namespace std::placeholders;

constexpr const char *LOOPBACK_ADDRESS = "127.0.0.1";

/// Values that name their own position, for every exchange enough.
inline const char *const NUMBERED_VALUES[] = {"v1", "v2", "v3", "v4",  "v5", "v6",
                                              "v7", "v8", "v9", "v10", "v11"};

/// A builder of the program, local or over TCP: what it is made of, and how it is called.
struct any_builder {
    const request_builder &made_of;
    std::function<int(const char *path, int port, const char *function, const char *list)> make;
};

inline std::vector<any_builder> request_builders() {
    std::vector<any_builder> builders;
    for (const auto &[make, builder] : local_builders()) {
        builders.push_back({*builder, std::bind(make, _1, _3, _4)});
    }
    for (const auto &[make, builder] : internet_builders()) {
        builders.push_back({*builder, std::bind(make, LOOPBACK_ADDRESS, _2, _3, _4)});
    }
    return builders;
}

inline any_builder builder_of(const gateway_row &row) {
    for (const any_builder &builder : request_builders()) {
        if (builder.made_of.name == function_of(row.builder)) {
            return builder;
        }
    }
    throw std::logic_error("no builder calls itself " + row.builder);
}

/// Calls an exchange over a meeting or a deserted point.
/// @param values the header values in argument order; what a function does not use may be null.
template <typename Point>
int call(const gateway_row &row, const Point &point, const char *function,
         const char *const *values) {
    // By the row of the builder that hands on the most values.
    const auto rows = builder_of(row).made_of.rows;
    const auto longest = std::max_element(
        rows.begin(), rows.end(), [](auto &one, auto &other) { return one.count < other.count; });
    return longest->exchange({point.path.c_str(), LOOPBACK_ADDRESS, point.port, function, values});
}

/// Calls a builder over such a point.
template <typename Point>
int build(const gateway_row &row, const Point &point, const char *function, const char *list) {
    return builder_of(row).make(point.path.c_str(), point.port, function, list);
}

} // namespace protocol
