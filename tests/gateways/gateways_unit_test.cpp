// The builders and the exchange of all gateways: which functions they serve, what they refuse, what
// they send, how they read an answer, and what they say of each failure. What differs between the
// gateways is tried with each, the rest with one.

#include "tests/front/fresh_globals.h"
#include "tests/gateways/exchange_messages.h"
#include "tests/harness/console.h"
#include "tests/harness/watched_client.h"
#include "tests/protocol/gateway_calls.h"

#include <cerrno>
#include <cstring>
#include <gtest/gtest.h>

namespace {

using namespace harness;
using namespace protocol;

/// Has a request sent, and its answer returned.
void expect_sent(const gateway_row &x, const std::string &request,
                 const std::function<int(const meeting_point &)> &send_request) {
    SCOPED_TRACE(title(x) + ": " + request);
    const meeting_point point(
        x.where, {expect(request), reply(std::string("Response Status: ") + x.prefix + "42\n")});
    const client_outcome got = watched([&] { return send_request(point); });
    EXPECT_EQ(got.output, "");
    EXPECT_EQ(got.status, 42);
    EXPECT_FALSE(got.left_open);
    EXPECT_EQ(point.daemon->finish(), "");
}

// --- The builders

/// Sends this list by the builder, or by the exchange where the builder refuses what the exchange
/// knows.
void expect_list_sent(const function_case &row, const std::string &function,
                      const std::string &list) {
    const auto &[x, known] = row;
    const words values = values_of_list(known, list);
    expect_sent(x, request_text(known, function, values), [&](const meeting_point &point) {
        return row.function.built == builder_answer::SENDS
                   ? builder_of(row.gateway)
                         .make(point.path.c_str(), point.port, function.c_str(), list.c_str())
                   : call(row.gateway, point, function.c_str(), values);
    });
}

/// Builds a request that must end before a connection: nobody is there.
void expect_refusal(const function_case &row, const char *function, const char *list, int status,
                    const std::string &output) {
    SCOPED_TRACE(name_of(row) + " " + (list == nullptr ? "(no list)" : list));
    const client_outcome got =
        watched([&] { return builder_of(row.gateway).make("/nowhere", 0, function, list); });
    EXPECT_EQ(got.output, output);
    EXPECT_EQ(got.status, status);
}

using GatewayBuilder = front_tests::FreshGlobals;

TEST_F(GatewayBuilder, SendsItsFunctionsAndReturnsTheAnswer) {
    for (const function_case &row : all_functions()) {
        expect_list_sent(row, row.function.name, row.function.sample);
        expect_list_sent(row, lower(row.function.name), row.function.sample);
    }
}

TEST_F(GatewayBuilder, InsistsOnTheCountOfParameters) {
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
TEST_F(GatewayBuilder, RefusesSilentlyWhatItDoesNotServe) {
    g_config.verbose = 1;
    for (const function_case &row : all_functions()) {
        const std::string name = row.function.name;
        for (const std::string &stranger :
             {std::string(), name + "S", name.substr(1), name.substr(0, name.size() - 1)}) {
            expect_refusal(row, stranger.c_str(), row.function.sample.c_str(), 503, "");
        }
        expect_refusal(row, nullptr, nullptr, 503, "");
        if (row.function.built != builder_answer::SENDS) {
            expect_refusal(row, name.c_str(), row.function.sample.c_str(), 503, "");
        }
    }
}

TEST_F(GatewayBuilder, ChecksTheLengthOfSomeValuesInOrder) {
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
            expect_list_sent(row, function.name, joined(entries, "|"));
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

// --- The exchange

const words VALUES(11, "v"); // enough for every exchange

/// Sends these values with the gateway's first function.
void expect_values_sent(const gateway_row &x, const words &values) {
    const function_row &function = x.functions.front();
    expect_sent(x, request_text(function, function.name, values),
                [&](const meeting_point &point) { return call(x, point, function.name, values); });
}

TEST(GatewayExchange, SendsValuesAsTheyAre) {
    expect_values_sent(any_gateway(), {" a\tb ", "", "c\nUserCode: d", "100%s '\"\\|\r"});
}

TEST(GatewayExchange, SendsUpTo1023Characters) {
    for (const gateway_row &x : GATEWAYS) {
        SCOPED_TRACE(title(x));
        const function_row &function = x.functions.front();
        words values = VALUES;
        const std::size_t usual = request_text(function, function.name, values).size();
        values[0].append(1023 - usual, 's');
        expect_values_sent(x, values);
        for (const std::size_t more : {1U, 100000U}) {
            values[0].append(more, 's');
            const meeting_point point(x.where, {});
            const client_outcome got =
                watched([&] { return call(x, point, function.name, values); });
            EXPECT_EQ(got.output, red(exchange_message(x, TOO_LONG, function.name)));
            EXPECT_EQ(got.status, x.base + 6);
            EXPECT_FALSE(got.left_open);
            EXPECT_EQ(point.daemon->finish(), "");
            EXPECT_EQ(point.daemon->received(), "");
        }
    }
}

/// Sends the answer, closes, and checks what the exchange makes of it: a message with the system's
/// words for `number`, or the returned number when there is none.
/// @param text % stands for the prefix.
void expect_outcome(const gateway_row &x, std::string text, int message, int number,
                    const client_fault &fault = {}) {
    SCOPED_TRACE(title(x) + ": " + text);
    if (const std::size_t at = text.find('%'); at != std::string::npos) {
        text.replace(at, 1, x.prefix);
    }
    const std::string function = lower(x.functions.front().name);
    const meeting_point point(x.where,
                              fault.send_error != 0
                                  ? script{}
                                  : script{collect_until("\n\n"), reply(text), close_connection()});
    const client_outcome got =
        watched([&] { return call(x, point, function.c_str(), VALUES); }, fault);
    const bool failed = message != 0;
    EXPECT_EQ(got.output,
              failed ? red(exchange_message(x, message, function, strerror(number))) : "");
    EXPECT_EQ(got.status, failed ? x.base + (message == 3 ? 6 : 7) : number);
    EXPECT_EQ(got.left_open, message == 7);
    EXPECT_EQ(point.daemon->finish(), "");
}

TEST(GatewayExchange, SaysWhatFailedInTheWordsOfTheGateway) {
    for (const gateway_row &x : GATEWAYS) {
        SCOPED_TRACE(title(x));
        const char *function = x.functions.front().name;
        client_outcome got = watched([&] { return call(x, deserted_point(), function, VALUES); });
        got.output.erase(0, got.output.find('\n') + 1); // the connector's own line
        EXPECT_EQ(got.output, red(exchange_message(x, 1, function)));
        EXPECT_EQ(got.status, x.base + 5);
        for (const char *stranger : {"NoSuch", static_cast<const char *>(nullptr)}) {
            const meeting_point point(x.where, {});
            got = watched([&] { return call(x, point, stranger, VALUES); });
            EXPECT_EQ(got.output,
                      red(exchange_message(x, 2, stranger == nullptr ? "(null)" : stranger)));
            EXPECT_EQ(got.status, x.base + 1);
            EXPECT_TRUE(got.left_open);
            EXPECT_EQ(point.daemon->finish(), "");
        }
        expect_outcome(x, "", 3, EIO, {.send_error = EIO});
        expect_outcome(x, "", 4, ENOBUFS, {.recv_error = ENOBUFS});
        expect_outcome(x, "Response State: %0000\n", 5, 0);
        const std::string prefix = x.prefix;
        const std::string shorter = prefix.substr(0, prefix.size() - 1);
        for (const std::string &wrong : {lower(prefix) + "0", shorter + "0", shorter}) {
            expect_outcome(x, "Response Status: " + wrong + "\n", 6, 0);
        }
        expect_outcome(x, "Response Status: %12x\n", 7, 0);
        expect_outcome(x, "Response Status: %2147483648\n", 7, ERANGE);
        expect_outcome(x, "Response Status: %0000\nmore\n", 8, 0);
    }
}

/// An answer of this many bytes: the fillers stand between the two texts.
std::string stretched(const std::string &before, char filler, const std::string &after,
                      std::size_t size) {
    const std::size_t prefix = strlen(any_gateway().prefix) - 1; // in place of the %
    return before + std::string(size - before.size() - prefix - after.size(), filler) + after;
}

TEST(GatewayExchange, ReadsTheAnswer) {
    const std::string tag = "Response Status: %";
    const std::string three = tag + "3\n";
    const std::string zero_byte(1, '\0');
    const struct {
        std::string answer;
        int message; ///< 0: none, the number is returned
        int number = 0;
    } rows[] = {
        {tag + "0000\n\n\n\n", 0, 0},
        {tag + "0003", 0, 3},
        {"rESPONSE sTATUS: %12\n", 0, 12},
        {"\n\nResponse Status: %0001\n", 0, 1},
        {tag + "\n", 0, 0},
        {tag + "-4\n", 0, -4},
        {tag + " +12\n", 0, 12},
        {three + zero_byte + "more\n", 0, 3},
        {tag + "3" + zero_byte + "9\nmore\n", 0, 3},
        {"", 5},
        {"\n\n\n", 5},
        {zero_byte + three, 5},
        {"Response Status:%0000\n", 5},
        {" Response Status: %0000\n", 5},
        {"Hello\n" + three, 5},
        {"Response Status: \n", 6},
        {"Response Status:  %0000\n", 6},
        {"Response Status: \n%0000\n", 6},
        {tag + "0003\r\n", 7},
        {tag + "x\nmore\n", 7},
        {three + "\n\nx", 8},
        {three + " ", 8},
        // The receive takes 1024 bytes: what stands there counts, what stands behind does not.
        {stretched(three, '\n', "x", 1024), 8},
        {stretched(three, '\n', "x", 1025), 0, 3},
        {stretched(three, '\n', "", 5000), 0, 3},
        {stretched(tag, '0', "7", 1024), 0, 7},
        {stretched(tag, '0', "75", 1025), 0, 7},
        {stretched(tag, '0', "x", 1024), 7},
    };
    for (const auto &row : rows) {
        expect_outcome(any_gateway(), row.answer, row.message, row.number);
    }
}

} // namespace
