// The exchange of all gateways: what it sends, how it reads an answer, and what it says of each
// failure. What differs between the gateways is tried with each, the rest with one.

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

const words VALUES(11, "v"); // enough for every exchange

// --- The request

/// Has these values sent with the usual function.
void expect_sent(const gateway_row &x, const words &values) {
    const function_row &function = x.functions.front();
    const meeting_point point(x.where,
                              {expect(request_text(function, function.name, values)),
                               reply(std::string("Response Status: ") + x.prefix + "0\n")});
    EXPECT_EQ(call(x, point, function.name, values), 0);
    EXPECT_EQ(point.daemon->finish(), "");
}

TEST(GatewayExchange, SendsValuesAsTheyAre) {
    expect_sent(any_gateway(), {" a\tb ", "", "c\nUserCode: d", "100%s '\"\\|\r"});
}

TEST(GatewayExchange, SendsUpTo1023Characters) {
    for (const gateway_row &x : GATEWAYS) {
        SCOPED_TRACE(title(x));
        const function_row &function = x.functions.front();
        words values = VALUES;
        const std::size_t usual = request_text(function, function.name, values).size();
        values[0].append(1023 - usual, 's');
        expect_sent(x, values);
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

// --- The answer

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
