// Names and tags are compared without regard to case, letter by letter of ASCII.

#include "front/utility.h"

#include <gtest/gtest.h>

namespace {

struct comparison_row {
    const char *name;
    const char *text;
    const char *known;
    const char *behind; ///< what follows the known beginning; null: it begins otherwise
};

const comparison_row COMPARISONS[] = {
    {"Equal", "FSMCORE", "FSMCORE", ""},
    {"LowerCase", "fsmcore", "FSMCORE", ""},
    {"UpperCase", "FSMCORE", "fsmcore", ""},
    {"MixedCase", "fSmCoRe", "FsMcOrE", ""},
    {"FirstAndLastLetter", "azAZ", "AZaz", ""},
    {"Longer", "on then", "ON", " then"},
    {"Shorter", "FSMCOR", "FSMCORE", nullptr},
    {"LastLetter", "FSMCORF", "FSMCORE", nullptr},
    {"FirstLetter", "XSMCORE", "FSMCORE", nullptr},
    {"Empty", "", "ON", nullptr},
    {"NothingKnown", "ON", "", "ON"},
    {"BothEmpty", "", "", ""},
    {"Null", nullptr, "ON", nullptr},
    {"NullIsNotEmpty", nullptr, "", nullptr},
    // The neighbours of the letters, 32 apart as a letter and its capital are.
    {"BeforeTheLetters", "@", "`", nullptr},
    {"BehindTheLetters", "[", "{", nullptr},
    {"DigitAndControl", "1", "\x11", nullptr},
    {"NotAscii", "\xc0", "\xe0", nullptr},
    {"SameByteBeyondAscii", "caf\xc3\xa9", "CAF\xc3\xa9", ""},
};

class Names : public testing::TestWithParam<comparison_row> {};

TEST_P(Names, BeginAlike) {
    const comparison_row &row = GetParam();
    EXPECT_STREQ(behind_beginning(row.text, row.known), row.behind);
}

TEST_P(Names, MatchWhenNothingFollows) {
    const comparison_row &row = GetParam();
    const bool match = row.behind != nullptr && *row.behind == '\0';
    EXPECT_EQ(names_match(row.text, row.known), match);
}

INSTANTIATE_TEST_SUITE_P(Table, Names, testing::ValuesIn(COMPARISONS),
                         [](const auto &row) { return row.param.name; });

} // namespace
