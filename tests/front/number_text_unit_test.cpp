// Numbers are read as on the controller, whatever the width of long.

#include "front/number_text.h"

#include <cerrno>
#include <climits>
#include <gtest/gtest.h>

namespace {

struct number_case {
    const char *name;
    const char *text;
    bool accepted;
    int value;
    int error_number;
};

const number_case NUMBER_CASES[] = {
    {"Zero", "0", true, 0, 0},
    {"EmptyIsZero", "", true, 0, 0},
    {"LeadingBlank", " 12", true, 12, 0},
    {"LeadingTabAndSign", "\t-4", true, -4, 0},
    {"PlusSign", "+7", true, 7, 0},
    {"LeadingZeros", "0010", true, 10, 0},
    {"HighestInt", "2147483647", true, INT_MAX, 0},
    {"LowestInt", "-2147483648", true, INT_MIN, 0},
    {"AboveHighestInt", "2147483648", false, INT_MAX, ERANGE},
    {"BelowLowestInt", "-2147483649", false, INT_MIN, ERANGE},
    {"WrapsToOneIn32Bits", "4294967297", false, INT_MAX, ERANGE},
    {"AboveLong", "99999999999999999999999", false, INT_MAX, ERANGE},
    {"BelowLong", "-99999999999999999999999", false, INT_MIN, ERANGE},
    {"LetterBehind", "12x", false, 12, 0},
    {"BlankBehind", "12 ", false, 12, 0},
    {"Letter", "x", false, 0, 0},
    {"LoneSign", "-", false, 0, 0},
    {"NoHexadecimal", "0x10", false, 0, 0},
    {"OutOfRangeAndLetter", "2147483648x", false, INT_MAX, ERANGE},
};

class ReadNumber : public testing::TestWithParam<number_case> {};

TEST_P(ReadNumber, ReadsAsThirtyTwoBits) {
    const number_case &row = GetParam();
    int value = 99;
    errno = EINTR;
    EXPECT_EQ(read_number(row.text, &value), row.accepted);
    EXPECT_EQ(errno, row.error_number);
    EXPECT_EQ(value, row.value);
}

INSTANTIATE_TEST_SUITE_P(Table, ReadNumber, testing::ValuesIn(NUMBER_CASES),
                         [](const auto &row) { return row.param.name; });

} // namespace
