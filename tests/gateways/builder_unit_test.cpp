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

const std::vector<function_case> ALL_FUNCTIONS = all_functions();

/// Builds a request that must end before a connection.
void expect_refusal(const function_case &row, const char *function, const char *list, int status,
                    const std::string &output) {
    SCOPED_TRACE(name_of(row) + " " + (list == nullptr ? "(no list)" : list));
    const struct {
        std::string path = "/nowhere";
        int port = 0;
    } point;
    watched_client client;
    const watched_client::outcome got =
        client.run([&] { return build(row.gateway, point, function, list); });
    EXPECT_EQ(got.output, output);
    EXPECT_EQ(got.status, status);
    EXPECT_EQ(client.connects, 0);
}

/// Has a request made of this list sent: by the builder, or by the exchange where the builder
/// refuses what the exchange knows.
void expect_sent(const function_case &row, const std::string &function, const std::string &list) {
    SCOPED_TRACE(name_of(row) + " " + function + " " + list);
    const protocol::gateway_row &gateway = row.gateway;
    const protocol::function_row &known = row.function;
    const words values = values_of_list(known, list);
    std::vector<const char *> pointers(std::size(NUMBERED_VALUES));
    std::transform(values.begin(), values.end(), pointers.begin(),
                   [](const std::string &value) { return value.c_str(); });
    const meeting_point point(gateway.where,
                              {expect(request_text(known, function, values)),
                               reply(std::string("Response Status: ") + gateway.prefix + "42\n")});
    watched_client client;
    const watched_client::outcome got = client.run([&] {
        return known.built == builder_answer::SENDS
                   ? build(gateway, point, function.c_str(), list.c_str())
                   : call(gateway, point, function.c_str(), pointers.data());
    });
    EXPECT_EQ(got.output, "");
    EXPECT_EQ(got.status, 42);
    EXPECT_FALSE(got.left_open);
    EXPECT_EQ(client.connects, 1);
    EXPECT_EQ(client.sends, 1);
    EXPECT_EQ(client.receives, 1);
    EXPECT_EQ(client.flags, 0);
    EXPECT_EQ(client.receive_size, 1024U);
    EXPECT_EQ(point.daemon->finish(), "");
}

TEST(GatewayBuilder, SendsItsFunctionsAndReturnsTheAnswer) {
    for (const function_case &row : ALL_FUNCTIONS) {
        expect_sent(row, row.function.name, row.function.sample);
        expect_sent(row, lower(row.function.name), row.function.sample);
    }
}

TEST(GatewayBuilder, InsistsOnTheCountOfParameters) {
    for (const function_case &row : ALL_FUNCTIONS) {
        if (row.function.built == builder_answer::REFUSES) {
            continue;
        }
        const std::size_t count = count_of(row.function);
        const std::string too_few = list_of(count - 1);
        const std::string message = red(count_message(row.gateway, row.function));
        for (const std::string &list :
             {too_few, list_of(count + 1), too_few + "|", "p||" + too_few, "|" + list_of(count)}) {
            expect_refusal(row, row.function.name, list.c_str(), 505, message);
        }
        expect_refusal(row, row.function.name, nullptr, 505, message);
    }
}

/// The function named otherwise, and one that its builder only counts, or that the exchange alone
/// knows.
TEST(GatewayBuilder, RefusesSilentlyWhatItDoesNotServe) {
    for (const function_case &row : ALL_FUNCTIONS) {
        const std::string name = row.function.name;
        for (const std::string &stranger : {std::string(), name + "S", name + " ", name.substr(1),
                                            name.substr(0, name.size() - 1), std::string("SEND")}) {
            expect_refusal(row, stranger.c_str(), row.function.sample, 503, "");
        }
        expect_refusal(row, nullptr, row.function.sample, 503, "");
        expect_refusal(row, "", nullptr, 503, "");
        if (row.function.built != builder_answer::SENDS) {
            expect_refusal(row, name.c_str(), row.function.sample, 503, "");
        }
    }
}

TEST(GatewayBuilder, ChecksTheLengthOfSomeValuesInOrder) {
    for (const function_case &row : ALL_FUNCTIONS) {
        const function_row &function = row.function;
        const std::string too_few = red(count_message(row.gateway, function));
        words all_wrong = entries_of(function.sample);
        std::string first;
        for (const width_row &checked : function.widths) {
            const std::string message = red(row.gateway.builder + " error " + checked.refusal);
            first = first.empty() ? message : first;
            all_wrong[checked.item - 1] = "too long";
            words entries = entries_of(function.sample);
            const auto list_with = [&](std::size_t width) {
                entries[checked.item - 1] = std::string(width, 'x');
                return joined(entries, "|");
            };
            for (const std::size_t width : {checked.width - 1, checked.width + 1}) {
                const std::string list = list_with(width);
                expect_refusal(row, function.name, list.c_str(), 502, message);
                expect_refusal(row, function.name, (list + "|more").c_str(), 505, too_few);
            }
            expect_sent(row, function.name, list_with(checked.width));
        }
        if (!first.empty()) {
            expect_refusal(row, function.name, joined(all_wrong, "|").c_str(), 502, first);
        }
    }
}

} // namespace
