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

using outcome = watched_client::outcome;

template <typename Point>
outcome run_exchange(const gateway_row &x, const Point &point, watched_client *client,
                     const char *function, const char *const *values = NUMBERED_VALUES) {
    return client->run([&] { return call(x, point, function, values); });
}

std::string answer(const gateway_row &x, const std::string &number) {
    return std::string("Response Status: ") + x.prefix + number + "\n";
}

// --- The request

/// A request of the usual function with these values, cut or lengthened to `size` by its first one.
struct sized_request {
    sized_request(const gateway_row &x, words given, std::size_t size) : values(std::move(given)) {
        const std::size_t usual = text(x).size();
        values[0].append(size > usual ? size - usual : 0, 's');
        for (const std::string &value : values) {
            pointers.push_back(value.c_str());
        }
    }

    std::string text(const gateway_row &x) const {
        return request_text(x.functions.front(), usual_function(x), values);
    }

    words values;
    std::vector<const char *> pointers;
};

TEST(GatewayExchange, SendsValuesAsTheyAre) {
    const gateway_row &x = any_gateway();
    const sized_request request(
        x, {" a\tb ", "", "c\nUserCode: d", "100%s %n", "'\"\\|\r", "", "", "", "", "", ""}, 0);
    const meeting_point point(x.where, {expect(request.text(x)), reply(answer(x, "0"))});
    EXPECT_EQ(call(x, point, usual_function(x), request.pointers.data()), 0);
    EXPECT_EQ(point.daemon->finish(), "");
}

TEST(GatewayExchange, SendsUpTo1023Characters) {
    const words values(std::size(NUMBERED_VALUES), "v");
    for (const gateway_row &x : GATEWAYS) {
        SCOPED_TRACE(title(x));
        const sized_request longest(x, values, 1023);
        const meeting_point point(x.where, {expect(longest.text(x)), reply(answer(x, "0"))});
        watched_client client;
        EXPECT_EQ(
            run_exchange(x, point, &client, usual_function(x), longest.pointers.data()).output, "");
        EXPECT_EQ(point.daemon->finish(), "");
        for (const std::size_t size : {std::size_t{1024}, std::size_t{100000}}) {
            const sized_request too_long(x, values, size);
            const meeting_point unasked(x.where, {});
            const outcome got =
                run_exchange(x, unasked, &client, usual_function(x), too_long.pointers.data());
            EXPECT_EQ(got.output, red(exchange_message(x, TOO_LONG, usual_function(x))));
            EXPECT_EQ(got.status, x.base + 6);
            EXPECT_FALSE(got.left_open);
            EXPECT_EQ(unasked.daemon->finish(), "");
            EXPECT_EQ(unasked.daemon->received(), "");
        }
    }
}

// --- The messages

/// What goes wrong, the message about it, and what is left.
struct failure_row {
    int message;
    int code;           ///< above the gateway's base
    const char *answer; ///< % stands for the prefix
    int send_error = 0;
    int recv_error = 0;
    int shown_error = 0;
};

const failure_row FAILURES[] = {
    {1, 5, nullptr},
    {2, 1, nullptr},
    {3, 6, nullptr, EIO, 0, EIO},
    {4, 7, nullptr, 0, ENOBUFS, ENOBUFS},
    {5, 7, "Response State: %0000\n"},
    {6, 7, "Response Status: XXXX0000\n"},
    {7, 7, "Response Status: %12x\n"},
    {7, 7, "Response Status: %2147483648\n", 0, 0, ERANGE},
    {8, 7, "Response Status: %0000\nmore\n"},
};

std::string filled_in(const gateway_row &x, std::string text) {
    const std::size_t at = text.find('%');
    return at == std::string::npos ? text : text.replace(at, 1, x.prefix);
}

TEST(GatewayExchange, SaysWhatFailedInTheWordsOfTheGateway) {
    for (const gateway_row &x : GATEWAYS) {
        for (const failure_row &row : FAILURES) {
            SCOPED_TRACE(title(x) + " message " + std::to_string(row.message));
            const std::string function = row.message == 2 ? "NoSuch" : lower(usual_function(x));
            const std::string wanted =
                red(exchange_message(x, row.message, function, strerror(row.shown_error)));
            watched_client client;
            client.send_error = row.send_error;
            client.recv_error = row.recv_error;
            outcome got = {};
            if (row.message == 1) {
                got = run_exchange(x, deserted_point(), &client, function.c_str());
                got.output.erase(0, got.output.find('\n') + 1); // the connector's own line
            } else {
                const meeting_point point(
                    x.where, row.answer == nullptr
                                 ? script{}
                                 : script{collect_until("\n\n"), reply(filled_in(x, row.answer))});
                got = run_exchange(x, point, &client, function.c_str());
                EXPECT_EQ(point.daemon->finish(), "");
            }
            EXPECT_EQ(got.output, wanted);
            EXPECT_EQ(got.status, x.base + row.code);
            EXPECT_EQ(got.left_open, row.message == 2 || row.message == 7);
            EXPECT_EQ(client.sends, row.message > 2 ? 1 : 0);
            EXPECT_EQ(client.receives, row.message > 3 ? 1 : 0);
        }
    }
}

TEST(GatewayExchange, DoesNotKnowAMissingFunctionName) {
    const gateway_row &x = any_gateway();
    const meeting_point point(x.where, {});
    watched_client client;
    const outcome got = run_exchange(x, point, &client, nullptr);
    EXPECT_EQ(got.output, red(exchange_message(x, 2, "(null)")));
    EXPECT_EQ(got.status, x.base + 1);
}

// --- The answer

/// Sends the answer, closes, and checks what the exchange makes of it: a message with the system's
/// words for `number`, or the returned number when there is none.
void expect_outcome(const gateway_row &x, const std::string &text, int message, int number) {
    const meeting_point point(x.where, {collect_until("\n\n"), reply(text), close_connection()});
    watched_client client;
    const outcome got = run_exchange(x, point, &client, usual_function(x));
    EXPECT_EQ(
        got.output,
        message == 0 ? "" : red(exchange_message(x, message, usual_function(x), strerror(number))));
    EXPECT_EQ(got.status, message == 0 ? number : x.base + 7);
    EXPECT_EQ(got.left_open, message == 7);
    EXPECT_EQ(client.receives, 1);
    EXPECT_EQ(point.daemon->finish(), "");
}

TEST(GatewayExchange, ComparesThePrefixInItsOwnCaseAndWhole) {
    for (const gateway_row &x : GATEWAYS) {
        SCOPED_TRACE(title(x));
        const std::string prefix = x.prefix;
        const std::string shorter = prefix.substr(0, prefix.size() - 1);
        for (const std::string &wrong : {lower(prefix) + "0000", shorter + "0000", shorter}) {
            expect_outcome(x, "Response Status: " + wrong + "\n", 6, 0);
        }
    }
}

struct answer_row {
    const char *name;
    std::string answer; ///< % stands for the prefix
    int message;        ///< 0: none, the number is returned
    int number;         ///< or the system's error number that the message shows
};

/// An answer of this many bytes: the fillers stand between the two texts.
std::string stretched(const std::string &before, char filler, const std::string &after,
                      std::size_t size) {
    const std::size_t fixed = filled_in(any_gateway(), before).size() + after.size();
    return before + std::string(size - fixed, filler) + after;
}

const std::string ZERO(1, '\0');

const answer_row ANSWERS[] = {
    {"FourZeros", "Response Status: %0000\n", 0, 0},
    {"SeveralLineFeeds", "Response Status: %0000\n\n\n\n", 0, 0},
    {"NoLineFeed", "Response Status: %0003", 0, 3},
    {"MixedCaseTag", "rESPONSE sTATUS: %12\n", 0, 12},
    {"LeadingLineFeeds", "\n\nResponse Status: %0001\n", 0, 1},
    {"NothingAfterThePrefix", "Response Status: %\n", 0, 0},
    {"Minus", "Response Status: %-4\n", 0, -4},
    {"ZeroByteEndsTheText", "Response Status: %0003\n" + ZERO + "more\n", 0, 3},
    {"ZeroByteEndsTheNumber", "Response Status: %3" + ZERO + "9\nmore\n", 0, 3},
    {"NoByteAtAll", "", 5, 0},
    {"LineFeedsOnly", "\n\n\n", 5, 0},
    {"ZeroByteFirst", ZERO + "Response Status: %0000\n", 5, 0},
    {"TagWithoutItsBlank", "Response Status:%0000\n", 5, 0},
    {"TagCutShort", "Response Status:", 5, 0},
    {"BlankBeforeTheTag", " Response Status: %0000\n", 5, 0},
    {"OtherLineFirst", "Hello\nResponse Status: %0000\n", 5, 0},
    {"TagAlone", "Response Status: \n", 6, 0},
    {"BlankBeforeThePrefix", "Response Status:  %0000\n", 6, 0},
    {"PrefixOnTheNextLine", "Response Status: \n%0000\n", 6, 0},
    {"CarriageReturn", "Response Status: %0003\r\n", 7, 0},
    {"BadNumberBeforeTheTail", "Response Status: %x\nmore\n", 7, 0},
    {"FurtherStatusLine", "Response Status: %0000\nResponse Status: %0000\n", 8, 0},
    {"FurtherLineBehindLineFeeds", "Response Status: %0000\n\n\nx", 8, 0},
    {"BlankBehindTheLine", "Response Status: %0000\n ", 8, 0},
    // The receive takes 1024 bytes: what stands there counts, what stands behind does not.
    {"TextAtTheLastByte", stretched("Response Status: %3\n", '\n', "x", 1024), 8, 0},
    {"TextBehindTheLastByte", stretched("Response Status: %3\n", '\n', "x", 1025), 0, 3},
    {"MuchTextBehind", stretched("Response Status: %3\n", '\n', "", 5000), 0, 3},
    {"OneLineOf1024", stretched("Response Status: %", '0', "7", 1024), 0, 7},
    {"OneLineOf1025", stretched("Response Status: %", '0', "75", 1025), 0, 7},
    {"LetterAtTheLastByte", stretched("Response Status: %", '0', "x", 1024), 7, 0},
    {"NoLineAtAll", stretched("", 'a', "", 4096), 5, 0},
};

TEST(GatewayExchange, ReadsTheAnswer) {
    for (const answer_row &row : ANSWERS) {
        SCOPED_TRACE(row.name);
        expect_outcome(any_gateway(), filled_in(any_gateway(), row.answer), row.message,
                       row.number);
    }
}

} // namespace
