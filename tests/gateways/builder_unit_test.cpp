// The request builders: which functions they serve, what they refuse before any connection, and
// what they make the exchanges send.

#include "tests/harness/console.h"
#include "tests/harness/watched_client.h"
#include "tests/protocol/gateway_calls.h"

#include <gtest/gtest.h>
#include <string>

namespace {

using namespace harness;
using namespace protocol;

std::vector<function_case> functions_built(builder_answer wanted) {
    return functions_that(
        [wanted](const gateway_row &, const function_row &row) { return row.built == wanted; });
}

/// Builds a request that must end before a connection.
void expect_refusal(const function_case &row, const char *function, const char *list, int status,
                    const std::string &output) {
    SCOPED_TRACE(name_of(row) + " " + (list == nullptr ? "(no list)" : list));
    const deserted_point point;
    watched_client client;
    int got = 0;
    EXPECT_EQ(captured_output([&] { got = build(*row.gateway, point, function, list); }), output);
    EXPECT_EQ(got, status);
    EXPECT_EQ(client.connects, 0);
}

/// Builds a request of this list, which must go to the daemon.
void expect_sent(const function_case &row, const std::string &function, const std::string &list) {
    SCOPED_TRACE(name_of(row) + " " + list);
    const meeting_point point(
        row.gateway->where,
        {expect(request_text(*row.function, function, values_of_list(*row.function, list))),
         reply(std::string("Response Status: ") + row.gateway->prefix + "42\n")});
    watched_client client;
    int status = 0;
    EXPECT_EQ(captured_output(
                  [&] { status = build(*row.gateway, point, function.c_str(), list.c_str()); }),
              "");
    EXPECT_EQ(status, 42);
    client.close_left_open();
    EXPECT_EQ(point.daemon->finish(), "");
}

TEST(GatewayBuilder, SendsItsFunctionsAndReturnsTheAnswer) {
    for (const function_case &row : functions_built(builder_answer::SENDS)) {
        expect_sent(row, row.function->name, row.function->sample);
        expect_sent(row, lower(row.function->name), row.function->sample);
    }
}

TEST(GatewayBuilder, InsistsOnTheCountOfParameters) {
    for (const function_case &row : functions_that([](auto &&...) { return true; })) {
        if (row.function->built == builder_answer::REFUSES) {
            continue;
        }
        const std::size_t count = count_of(*row.function);
        const std::string too_few = list_of(count - 1);
        const std::string message = red(count_message(*row.gateway, *row.function));
        for (const std::string &list : {too_few, list_of(count + 1), too_few + "|", "p||" + too_few,
                                        "|" + list_of(count), std::string()}) {
            expect_refusal(row, row.function->name, list.c_str(), 505, message);
        }
        expect_refusal(row, row.function->name, nullptr, 505, message);
    }
}

TEST(GatewayBuilder, RefusesSilentlyWhatItOnlyCounts) {
    for (const function_case &row : functions_built(builder_answer::COUNTS_AND_REFUSES)) {
        expect_refusal(row, row.function->name, row.function->sample, 503, "");
    }
}

TEST(GatewayBuilder, RefusesSilentlyWhatItDoesNotServe) {
    for (const gateway_row *gateway : GATEWAYS) {
        const function_row &first = gateway->functions.front();
        const std::string name = first.name;
        words strangers = {gateway->advertised, "",
                           name + "S",          name + " ",
                           name.substr(1),      name.substr(0, name.size() - 1)};
        for (const gateway_row *other : GATEWAYS) {
            strangers.emplace_back(other->functions.back().name);
        }
        for (const function_row &function : gateway->functions) {
            if (function.built != builder_answer::REFUSES) {
                std::erase(strangers, function.name);
            }
        }
        for (const std::string &stranger : strangers) {
            SCOPED_TRACE("'" + stranger + "'");
            expect_refusal({gateway, &first}, stranger.c_str(), first.sample, 503, "");
        }
        expect_refusal({gateway, &first}, nullptr, first.sample, 503, "");
        expect_refusal({gateway, &first}, "", nullptr, 503, "");
    }
}

/// The sample list of a function with that many letters in one place.
std::string list_with(const function_row &function, std::size_t item, std::size_t width) {
    words entries = entries_of(function.sample);
    entries[item - 1] = std::string(width, 'x');
    return joined(entries, "|");
}

TEST(GatewayBuilder, ChecksTheLengthOfSomeValuesInOrder) {
    for (const function_case &row : functions_built(builder_answer::SENDS)) {
        const function_row &function = *row.function;
        for (const width_row &checked : function.widths) {
            const std::string message = red(row.gateway->builder + " error " + checked.refusal);
            for (const std::size_t width : {checked.width - 1, checked.width + 1}) {
                expect_refusal(row, function.name, list_with(function, checked.item, width).c_str(),
                               502, message);
            }
            expect_sent(row, function.name, list_with(function, checked.item, checked.width));
            expect_refusal(row, function.name,
                           (list_with(function, checked.item, 9) + "|more").c_str(), 505,
                           red(count_message(*row.gateway, function)));
        }
        if (!function.widths.empty()) {
            words entries(count_of(function), "nine here");
            expect_refusal(row, function.name, joined(entries, "|").c_str(), 502,
                           red(row.gateway->builder + " error " + function.widths.front().refusal));
        }
    }
}

} // namespace
