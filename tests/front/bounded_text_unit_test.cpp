// The text in a fixed buffer: it is whole, or it says that it is not.

#include "front/bounded_text.h"

#include <climits>
#include <gtest/gtest.h>
#include <string>

namespace {

/// A buffer of eight bytes between two guards.
struct guarded_text {
    char bytes[10] = {'<', '?', '?', '?', '?', '?', '?', '?', '?', '>'};
    bounded_text text = {bytes + 1, 8, 0, false};

    void expect_guards() const {
        EXPECT_EQ(bytes[0], '<');
        EXPECT_EQ(bytes[9], '>');
    }
};

TEST(BoundedText, AppendsOneTextBehindTheOther) {
    guarded_text out;
    append_texts(&out.text, {"k", "="});
    EXPECT_STREQ(out.text.text, "k=");
    append_number(&out.text, 42);
    append_texts(&out.text, {""});
    EXPECT_STREQ(out.text.text, "k=42");
    EXPECT_EQ(out.text.length, 4U);
    EXPECT_FALSE(out.text.overflowed);
    out.expect_guards();
}

TEST(BoundedText, HoldsAllButOneByteOfItsBuffer) {
    guarded_text out;
    append_texts(&out.text, {"1234567"});
    EXPECT_STREQ(out.text.text, "1234567");
    EXPECT_EQ(out.text.length, 7U);
    EXPECT_FALSE(out.text.overflowed);
    append_texts(&out.text, {""});
    EXPECT_FALSE(out.text.overflowed);
    out.expect_guards();
}

TEST(BoundedText, RemembersThatSomethingDidNotFit) {
    for (const std::string &added :
         {std::string("5678"), std::string("567890"), std::string(5000, 'x')}) {
        guarded_text out;
        append_texts(&out.text, {"1234"});
        append_texts(&out.text, {added.c_str()});
        EXPECT_TRUE(out.text.overflowed) << added;
        EXPECT_EQ(out.text.length, 4U);
        EXPECT_LT(std::char_traits<char>::length(out.text.text), 8U);
        // What would still fit is not taken any more: a request with a gap is worse than none.
        append_texts(&out.text, {"9"});
        EXPECT_TRUE(out.text.overflowed);
        EXPECT_EQ(out.text.length, 4U);
        out.expect_guards();
    }
}

struct number_row {
    const char *name;
    int number;
    int width;
    const char *text;
};

const number_row NUMBERS[] = {
    {"Zero", 0, 1, "0"},
    {"OneDigit", 7, 1, "7"},
    {"LastOfOneDigit", 9, 1, "9"},
    {"FirstOfTwoDigits", 10, 1, "10"},
    {"Filled", 7, 3, "007"},
    {"FilledZero", 0, 4, "0000"},
    {"JustAsWide", 404, 3, "404"},
    {"Wider", 1302, 3, "1302"},
    {"Negative", -1, 1, "-1"},
    {"SignCounts", -5, 4, "-005"},
    {"NegativeJustAsWide", -505, 4, "-505"},
    {"Highest", INT_MAX, 1, "2147483647"},
    {"Lowest", INT_MIN, 1, "-2147483648"},
    {"HighestFilled", INT_MAX, 11, "02147483647"},
    {"LowestJustAsWide", INT_MIN, 11, "-2147483648"},
};

class AppendedNumber : public testing::TestWithParam<number_row> {};

TEST_P(AppendedNumber, IsDecimal) {
    char bytes[sizeof "<-2147483648"] = "<";
    bounded_text text = {bytes, sizeof bytes, 1, false};
    append_number(&text, GetParam().number, GetParam().width);
    EXPECT_EQ(std::string(bytes), std::string("<") + GetParam().text);
    EXPECT_FALSE(text.overflowed);
}

INSTANTIATE_TEST_SUITE_P(Table, AppendedNumber, testing::ValuesIn(NUMBERS),
                         [](const auto &row) { return row.param.name; });

TEST(BoundedText, HoldsNoPartOfANumber) {
    guarded_text out;
    append_texts(&out.text, {"12345"});
    append_number(&out.text, 678);
    EXPECT_TRUE(out.text.overflowed);
    EXPECT_STREQ(out.text.text, "12345");
    out.expect_guards();
}

} // namespace
