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

namespace protocol {

constexpr const char *LOOPBACK_ADDRESS = "127.0.0.1";

/// A builder of the program, local or over TCP: what it is made of, and how it is called.
struct any_builder {
    const request_builder &made_of;
    std::function<int(const char *path, int port, const char *function, const char *list)> make;
};

inline std::vector<any_builder> request_builders() {
    using namespace std::placeholders;
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

/// Calls an exchange over a meeting or a deserted point, with the header values in argument order.
template <typename Point>
int call(const gateway_row &row, const Point &point, const char *function, const words &values) {
    // By the row of the builder that hands on the most values.
    const auto rows = builder_of(row).made_of.rows;
    const auto longest = std::max_element(
        rows.begin(), rows.end(), [](auto &one, auto &other) { return one.count < other.count; });
    std::vector<const char *> pointers;
    for (const std::string &value : values) {
        pointers.push_back(value.c_str());
    }
    pointers.resize(std::max(values.size(), static_cast<std::size_t>(longest->count)));
    return longest->exchange(
        {point.path.c_str(), LOOPBACK_ADDRESS, point.port, function, pointers.data()});
}

} // namespace protocol
