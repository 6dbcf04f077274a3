// The request builders: which functions they serve, what they refuse before any connection, and
// what they make the exchanges send.

#include "tests/harness/console.h"
#include "tests/harness/watched_client.h"
#include "tests/protocol/gateway_calls.h"

#include <gtest/gtest.h>

namespace {

using namespace harness;
using namespace protocol;

/// Builds a request that must end before a connection: nobody is there.
void expect_refusal(const function_case &row, const char *function, const char *list, int status,
                    const std::string &output) {
    SCOPED_TRACE(name_of(row) + " " + (list == nullptr ? "(no list)" : list));
    const client_outcome got =
        watched([&] { return builder_of(row.gateway).make("/nowhere", 0, function, list); });
    EXPECT_EQ(got.output, output);
    EXPECT_EQ(got.status, status);
}

/// Has a request made of this list sent: by the builder, or by the exchange where the builder
/// refuses what the exchange knows.
void expect_sent(const function_case &row, const std::string &function, const std::string &list) {
    SCOPED_TRACE(name_of(row) + " " + function + " " + list);
    const auto &[gateway, known] = row;
    const words values = values_of_list(known, list);
    const meeting_point point(gateway.where,
                              {expect(request_text(known, function, values)),
                               reply(std::string("Response Status: ") + gateway.prefix + "42\n")});
    const client_outcome got = watched([&, &gateway = gateway, &known = known] {
        return known.built == builder_answer::SENDS
                   ? builder_of(gateway).make(point.path.c_str(), point.port, function.c_str(),
                                              list.c_str())
                   : call(gateway, point, function.c_str(), values);
    });
    EXPECT_EQ(got.output, "");
    EXPECT_EQ(got.status, 42);
    EXPECT_FALSE(got.left_open);
    EXPECT_EQ(point.daemon->finish(), "");
}

TEST(GatewayBuilder, SendsItsFunctionsAndReturnsTheAnswer) {
    for (const function_case &row : all_functions()) {
        expect_sent(row, row.function.name, row.function.sample);
        expect_sent(row, lower(row.function.name), row.function.sample);
    }
}

TEST(GatewayBuilder, InsistsOnTheCountOfParameters) {
    for (const function_case &row : all_functions()) {
        if (row.function.built == builder_answer::REFUSES) {
            continue;
        }
        const std::size_t count = count_of(row.function);
        const std::string too_few = list_of(count - 1);
        const std::string message = red(count_message(row.gateway, row.function));
        for (const std::string &list : {too_few, list_of(count + 1), "p||" + too_few}) {
            expect_refusal(row, row.function.name, list.c_str(), 505, message);
        }
        expect_refusal(row, row.function.name, nullptr, 505, message);
    }
}

/// The function named otherwise, and one that its builder only counts, or that the exchange alone
/// knows.
TEST(GatewayBuilder, RefusesSilentlyWhatItDoesNotServe) {
    for (const function_case &row : all_functions()) {
        const std::string name = row.function.name;
        for (const std::string &stranger :
             {std::string(), name + "S", name.substr(1), name.substr(0, name.size() - 1)}) {
            expect_refusal(row, stranger.c_str(), row.function.sample, 503, "");
        }
        expect_refusal(row, nullptr, nullptr, 503, "");
        if (row.function.built != builder_answer::SENDS) {
            expect_refusal(row, name.c_str(), row.function.sample, 503, "");
        }
    }
}

TEST(GatewayBuilder, ChecksTheLengthOfSomeValuesInOrder) {
    for (const function_case &row : all_functions()) {
        const function_row &function = row.function;
        words all_wrong = entries_of(function.sample);
        std::string first;
        for (const width_row &checked : function.widths) {
            const std::string message = red(row.gateway.builder + " error " + checked.refusal);
            first = first.empty() ? message : first;
            words entries = entries_of(function.sample);
            std::string &entry = entries[checked.item - 1];
            entry.assign(checked.width, 'x');
            expect_sent(row, function.name, joined(entries, "|"));
            for (const std::size_t width : {checked.width - 1, checked.width + 1}) {
                entry.assign(width, 'x');
                const std::string list = joined(entries, "|");
                expect_refusal(row, function.name, list.c_str(), 502, message);
                expect_refusal(row, function.name, (list + "|more").c_str(), 505,
                               red(count_message(row.gateway, function)));
            }
            all_wrong[checked.item - 1] = "too long";
        }
        if (!first.empty()) {
            expect_refusal(row, function.name, joined(all_wrong, "|").c_str(), 502, first);
        }
    }
}

} // namespace
