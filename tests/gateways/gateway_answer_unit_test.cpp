// How an answer is read, the same for all gateways: every row is tried with every exchange.

#include "tests/gateways/exchange_messages.h"
#include "tests/harness/console.h"
#include "tests/harness/watched_client.h"
#include "tests/protocol/gateway_calls.h"

#include <cerrno>
#include <climits>
#include <cstring>
#include <gtest/gtest.h>

namespace {

using namespace harness;
using namespace protocol;

const gateway_row &BENTEL = gateway_named("BENTEL");
const gateway_row &EIB = gateway_named("EIB");
const gateway_row &SMSTOOL = gateway_named("SMSTOOL");
const gateway_row &LINTRONIC = gateway_named("LINTRONIC");
const gateway_row &ECHOBUS = gateway_named("ECHOBUS");
const gateway_row &ECHOBUS_TCP = *GATEWAYS.back();

/// An answer with "%" where the gateway's prefix goes and "@" for a zero byte, and what comes of
/// it: a message, or the returned number when there is none.
struct answer_row {
    const char *name;
    std::string answer;
    int message;
    int number;
    bool left_open = false;

    friend void PrintTo(const answer_row &row, std::ostream *stream) {
        *stream << row.name;
    }
};

/// A text stretched to `size` bytes, prefix filled in, by repeating one character at a mark.
struct stretched {
    const char *before;
    char filler;
    const char *after;
    std::size_t size;
};

constexpr int ACCEPTED = 0;

const answer_row ANSWERS[] = {
    {"FourZeros", "Response Status: %0000\n", ACCEPTED, 0},
    {"SeveralLineFeeds", "Response Status: %0000\n\n\n\n", ACCEPTED, 0},
    {"NoLineFeed", "Response Status: %0003", ACCEPTED, 3},
    {"LowerCaseTag", "response status: %0003\n", ACCEPTED, 3},
    {"MixedCaseTag", "rESPONSE sTATUS: %12\n", ACCEPTED, 12},
    {"LeadingLineFeeds", "\n\nResponse Status: %0001\n", ACCEPTED, 1},
    {"NothingAfterThePrefix", "Response Status: %\n", ACCEPTED, 0},
    {"NothingAfterThePrefixAtAll", "Response Status: %", ACCEPTED, 0},
    {"LeadingBlank", "Response Status: % 12\n", ACCEPTED, 12},
    {"LeadingTab", "Response Status: %\t12\n", ACCEPTED, 12},
    {"Minus", "Response Status: %-4\n", ACCEPTED, -4},
    {"Plus", "Response Status: %+4\n", ACCEPTED, 4},
    {"LeadingZeroIsNotOctal", "Response Status: %0010\n", ACCEPTED, 10},
    {"OwnCodeOfTheTool", "Response Status: %1207\n", ACCEPTED, 1207},
    {"Highest", "Response Status: %2147483647\n", ACCEPTED, INT_MAX},
    {"Lowest", "Response Status: %-2147483648\n", ACCEPTED, INT_MIN},
    {"ZeroByteEndsTheText", "Response Status: %0003\n@more\n", ACCEPTED, 3},
    {"ZeroByteEndsTheNumber", "Response Status: %3@9\nmore\n", ACCEPTED, 3},
    {"NoByteAtAll", "", 5, 0},
    {"LineFeedsOnly", "\n\n\n", 5, 0},
    {"ZeroByteFirst", "@Response Status: %0000\n", 5, 0},
    {"TagWithoutItsBlank", "Response Status:%0000\n", 5, 0},
    {"TagCutShort", "Response Status:", 5, 0},
    {"BlankBeforeTheTag", " Response Status: %0000\n", 5, 0},
    {"OtherLineFirst", "Hello\nResponse Status: %0000\n", 5, 0},
    {"TagAlone", "Response Status: \n", 6, 0},
    {"BlankBeforeThePrefix", "Response Status:  %0000\n", 6, 0},
    {"PrefixOnTheNextLine", "Response Status: \n%0000\n", 6, 0},
    {"CarriageReturn", "Response Status: %0003\r\n", 7, 0, true},
    {"TrailingBlank", "Response Status: %0003 \n", 7, 0, true},
    {"TrailingLetter", "Response Status: %0003x\n", 7, 0, true},
    {"Hexadecimal", "Response Status: %0x10\n", 7, 0, true},
    {"SignAlone", "Response Status: %-\n", 7, 0, true},
    {"BadNumberBeforeTheTail", "Response Status: %x\nmore\n", 7, 0, true},
    {"AboveHighest", "Response Status: %2147483648\n", 7, ERANGE, true},
    {"BelowLowest", "Response Status: %-2147483649\n", 7, ERANGE, true},
    {"WrapsToThree", "Response Status: %4294967299\n", 7, ERANGE, true},
    {"FarAboveHighest", "Response Status: %99999999999999999999999\n", 7, ERANGE, true},
    {"FurtherLine", "Response Status: %0000\nmore\n", 8, 0},
    {"FurtherStatusLine", "Response Status: %0000\nResponse Status: %0000\n", 8, 0},
    {"FurtherLineBehindLineFeeds", "Response Status: %0000\n\n\nx", 8, 0},
    {"BlankBehindTheLine", "Response Status: %0000\n ", 8, 0},
    {"CarriageReturnBehindTheLine", "Response Status: %0000\n\r\n", 8, 0},
};

/// Sends the answer, closes, and checks what the exchange makes of it.
void expect_outcome(const gateway_row &x, const std::string &answer, const answer_row &row) {
    SCOPED_TRACE(title(x));
    const meeting_point point(x.where, {collect_until("\n\n"), reply(answer), close_connection()});
    watched_client client;
    int status = 0;
    const std::string output =
        captured_output([&] { status = call(x, point, usual_function(x), NUMBERED_VALUES); });
    const bool accepted = row.message == ACCEPTED;
    EXPECT_EQ(status, accepted ? row.number : x.base + 7);
    EXPECT_EQ(output, accepted ? ""
                               : red(exchange_message(x, row.message, usual_function(x),
                                                      strerror(row.number))));
    EXPECT_EQ(client.close_left_open(), row.left_open);
    EXPECT_EQ(client.receives, 1);
    EXPECT_EQ(point.daemon->finish(), "");
}

std::string filled_in(const gateway_row &x, const std::string &text) {
    std::string filled;
    for (const char c : text) {
        if (c == '%') {
            filled += x.prefix;
        } else {
            filled += c == '@' ? '\0' : c;
        }
    }
    return filled;
}

class GatewayAnswer : public testing::TestWithParam<answer_row> {};

TEST_P(GatewayAnswer, IsReadAlikeFromEveryDaemon) {
    for (const gateway_row *x : GATEWAYS) {
        expect_outcome(*x, filled_in(*x, GetParam().answer), GetParam());
    }
}

INSTANTIATE_TEST_SUITE_P(Table, GatewayAnswer, testing::ValuesIn(ANSWERS),
                         [](const auto &row) { return row.param.name; });

struct long_answer_row {
    answer_row wanted;
    stretched text;

    friend void PrintTo(const long_answer_row &row, std::ostream *stream) {
        *stream << row.wanted.name;
    }
};

// The receive takes 1024 bytes: what stands there counts, what stands behind does not.
const long_answer_row LONG_ANSWERS[] = {
    {{"TextAtTheLastByte", "", 8, 0}, {"Response Status: %3\n", '\n', "x", 1024}},
    {{"TextBehindTheLastByte", "", ACCEPTED, 3}, {"Response Status: %3\n", '\n', "x", 1025}},
    {{"MuchTextBehind", "", ACCEPTED, 3}, {"Response Status: %3\n", '\n', "", 5000}},
    {{"OneLineOf1023", "", ACCEPTED, 7}, {"Response Status: %", '0', "7", 1023}},
    {{"OneLineOf1024", "", ACCEPTED, 7}, {"Response Status: %", '0', "7", 1024}},
    {{"OneLineOf1025", "", ACCEPTED, 7}, {"Response Status: %", '0', "75", 1025}},
    {{"LetterAtTheLastByte", "", 7, 0, true}, {"Response Status: %", '0', "x", 1024}},
    {{"LetterBehindTheLastByte", "", ACCEPTED, 0}, {"Response Status: %", '0', "x", 1025}},
    {{"NoLineAtAll", "", 5, 0}, {"", 'a', "", 4096}},
};

class LongGatewayAnswer : public testing::TestWithParam<long_answer_row> {};

TEST_P(LongGatewayAnswer, IsReadUpToItsLimit) {
    const stretched &text = GetParam().text;
    for (const gateway_row *x : GATEWAYS) {
        std::string answer = filled_in(*x, text.before);
        answer.append(text.size - answer.size() - strlen(text.after), text.filler);
        answer += text.after;
        ASSERT_EQ(answer.size(), text.size);
        expect_outcome(*x, answer, GetParam().wanted);
    }
}

INSTANTIATE_TEST_SUITE_P(Table, LongGatewayAnswer, testing::ValuesIn(LONG_ANSWERS),
                         [](const auto &row) { return row.param.wanted.name; });

TEST(GatewayAnswerRules, PrefixIsComparedInItsOwnCaseAndWhole) {
    for (const gateway_row *x : GATEWAYS) {
        const std::string prefix = x->prefix;
        const answer_row refused = {"", "", 6, 0};
        expect_outcome(*x, "Response Status: " + lower(prefix) + "0000\n", refused);
        expect_outcome(*x, "Response Status: " + prefix.substr(0, prefix.size() - 1) + "0000\n",
                       refused);
        expect_outcome(*x, "Response Status: " + prefix.substr(0, prefix.size() - 1) + "\n",
                       refused);
        expect_outcome(*x, "Response Status: FSMC-0000\n", refused);
    }
}

TEST(GatewayAnswerRules, ConnectionMayStayOpenBehindTheAnswer) {
    const meeting_point point(family::UNIX_SOCKET,
                              {collect_until("\n\n"), reply("Response Status: BENG-0002\n")});
    EXPECT_EQ(call(BENTEL, point, usual_function(BENTEL), NUMBERED_VALUES), 2);
    EXPECT_EQ(point.daemon->finish(), "");
}

TEST(GatewayAnswerRules, AnswerMayEndWithAHalfClose) {
    const meeting_point point(family::UNIX_SOCKET, {collect_until("\n\n"), half_close()});
    watched_client client;
    int status = 0;
    EXPECT_EQ(
        captured_output([&] { status = call(EIB, point, usual_function(EIB), NUMBERED_VALUES); }),
        red(exchange_message(EIB, 5, usual_function(EIB))));
    EXPECT_EQ(status, 107);
    EXPECT_FALSE(client.close_left_open());
    EXPECT_EQ(point.daemon->finish(), "");
}

TEST(GatewayAnswerRules, EndlessAnswerIsReadOnce) {
    const meeting_point point(family::UNIX_SOCKET,
                              {collect_until("\n\n"), endless(std::string(4096, 'a'))});
    watched_client client;
    int status = 0;
    EXPECT_EQ(
        captured_output([&] { status = call(EIB, point, usual_function(EIB), NUMBERED_VALUES); }),
        red(exchange_message(EIB, 5, usual_function(EIB))));
    EXPECT_EQ(status, 107);
    EXPECT_EQ(client.receives, 1);
    EXPECT_EQ(point.daemon->finish(), "");
}

} // namespace
