// Calls the program's functions of a gateway's row. They are found by the names that its messages
// show.

#pragma once

#include "gateways/gateway_exchange.h"
#include "gateways/internetclientutil.h"
#include "gateways/localclientutil.h"
#include "gateways/request_builder.h"
#include "tests/protocol/gateways.h"

#include <algorithm>
#include <stdexcept>
#include <string>
#include <vector>

namespace protocol {

constexpr const char *LOOPBACK_ADDRESS = "127.0.0.1";

/// Values that name their own position, for every exchange enough.
inline const char *const NUMBERED_VALUES[] = {"v1", "v2", "v3", "v4",  "v5", "v6",
                                              "v7", "v8", "v9", "v10", "v11"};

/// What all builders are made of, local and over TCP.
inline std::vector<const request_builder *> request_builders() {
    std::vector<const request_builder *> builders;
    for (const local_builder &row : local_builders()) {
        builders.push_back(row.builder);
    }
    for (const internet_builder &row : internet_builders()) {
        builders.push_back(row.builder);
    }
    return builders;
}

/// What the builder of a gateway is made of.
inline const request_builder &builder_of(const gateway_row &row) {
    for (const request_builder *builder : request_builders()) {
        if (builder->name == function_of(row.builder)) {
            return *builder;
        }
    }
    throw std::logic_error("no builder calls itself " + row.builder);
}

/// The row of a builder that hands on the most values.
inline const builder_row &longest_row(const gateway_row &gateway) {
    const auto &rows = builder_of(gateway).rows;
    return *std::max_element(rows.begin(), rows.end(), [](const auto &one, const auto &other) {
        return one.count < other.count;
    });
}

/// Calls an exchange over a meeting or a deserted point.
/// @param values the header values in argument order; what a function does not use may be null.
template <typename Point>
int call(const gateway_row &row, const Point &point, const char *function,
         const char *const *values) {
    return longest_row(row).exchange(
        {point.path.c_str(), LOOPBACK_ADDRESS, point.port, function, values});
}

/// Calls a builder over such a point.
template <typename Point>
int build(const gateway_row &row, const Point &point, const char *function, const char *list) {
    const request_builder *const builder = &builder_of(row);
    for (const local_builder &each : local_builders()) {
        if (each.builder == builder) {
            return each.make(point.path.c_str(), function, list);
        }
    }
    for (const internet_builder &each : internet_builders()) {
        if (each.builder == builder) {
            return each.make(LOOPBACK_ADDRESS, point.port, function, list);
        }
    }
    return -1;
}

} // namespace protocol
