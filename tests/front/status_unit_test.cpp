// Status codes as texts and back.

#include "front/memory.h"
#include "front/utility.h"
#include "tests/front/saved_globals.h"
#include "tests/harness/console.h"

#include <climits>
#include <string>

namespace {

using namespace front_tests;

std::string formatted(int code) {
    char *text = format_status_code(code);
    std::string copy = text;
    xfree(text);
    return copy;
}

struct range_case {
    int first;
    const char *first_text;
    int last;
    const char *last_text;
};

const range_case RANGES[] = {
    {1, "FSMC-001", 90, "FSMC-090"},
    {91, "VRPT-091", 100, "VRPT-100"},
    {101, "EIBG-101", 200, "EIBG-200"},
    {201, "ECHG-201", 300, "ECHG-300"},
    {301, "DBMG-301", 400, "DBMG-400"},
    {401, "LMWS-401", 500, "LMWS-500"},
    {501, "LMCM-501", 600, "LMCM-600"},
    {601, "MARG-601", 700, "MARG-700"},
    {701, "SQLS-701", 800, "SQLS-800"},
    {801, "SMST-801", 900, "SMST-900"},
    {901, "VIVG-0901", 1000, "VIVG-1000"},
    {1001, "LINT-1001", 1100, "LINT-1100"},
    {1101, "ECHP-1101", 1200, "ECHP-1200"},
    {1201, "TECN-1201", 1300, "TECN-1300"},
    {1301, "BENT-1301", 1400, "BENT-1400"},
    {1401, "IBSG-1401", 1500, "IBSG-1500"},
    {1501, "TUTG-1501", 1600, "TUTG-1600"},
    {1601, "VANG-1601", 1700, "VANG-1700"},
    {1701, "TLSG-1701", 1800, "TLSG-1800"},
    {1801, "HNXG-1801", 1900, "HNXG-1900"},
    {1901, "EIBDG-1901", 2000, "EIBDG-2000"},
    {2001, "BYMEG-2001", 2100, "BYMEG-2100"},
    {2101, "TLDG-2101", 2200, "TLDG-2200"},
    {2201, "SAIG-2201", 2300, "SAIG-2300"},
    {2301, "BMAG-2301", 2400, "BMAG-2400"},
    {2401, "VTS10-2401", 2500, "VTS10-2500"},
    {2501, "HEVOG-2501", 2700, "HEVOG-2700"},
    {2701, "DSMG-2701", 2800, "DSMG-2800"},
    {2801, "EDPG-2801", 2900, "EDPG-2900"},
    {2901, "SFG-2901", 3000, "SFG-3000"},
    {3001, "EBMG-3001", 3100, "EBMG-3100"},
    {3101, "PESG-3101", 3200, "PESG-3200"},
    {3201, "LGMG-3201", INT_MAX, "LGMG-2147483647"},
    {INT_MIN, "LMCM--2147483648", 0, "LMCM-0000"},
};

class StatusRanges : public testing::TestWithParam<range_case> {};

TEST_P(StatusRanges, AreNamedAtBothEnds) {
    EXPECT_EQ(formatted(GetParam().first), GetParam().first_text);
    EXPECT_EQ(formatted(GetParam().last), GetParam().last_text);
}

INSTANTIATE_TEST_SUITE_P(Table, StatusRanges, testing::ValuesIn(RANGES), [](const auto &row) {
    const std::string text = row.param.last_text;
    return text.substr(0, text.find('-')) + (row.param.last == 0 ? "OfZeroAndBelow" : "");
});

TEST(StatusTexts, CodesInsideTheRanges) {
    EXPECT_EQ(formatted(7), "FSMC-007");
    EXPECT_EQ(formatted(402), "LMWS-402");
    EXPECT_EQ(formatted(505), "LMCM-505");
    EXPECT_EQ(formatted(1302), "BENT-1302");
    EXPECT_EQ(formatted(2600), "HEVOG-2600");
    EXPECT_EQ(formatted(2601), "HEVOG-2601");
    EXPECT_EQ(formatted(40000), "LGMG-40000");
    EXPECT_EQ(formatted(-1), "LMCM--001");
    EXPECT_EQ(formatted(-5), "LMCM--005");
    EXPECT_EQ(formatted(-1000), "LMCM--1000");
}

TEST(StatusTexts, BelongToTheCaller) {
    char *first = format_status_code(505);
    char *second = format_status_code(506);
    first[0] = 'X';
    EXPECT_STREQ(first, "XMCM-505");
    EXPECT_STREQ(second, "LMCM-506");
    xfree(first);
    xfree(second);
}

// --- Reading a text back

struct extract_case {
    const char *name;
    const char *text;
    int code;
    const char *complaint; ///< null: none
};

const char TOO_LONG[] = "1 - Invalid argument for utility->extract_error_code ";
const char UNREADABLE[] = "2 - Invalid argument for utility->extract_error_code ";

const extract_case EXTRACTS[] = {
    {"Null", nullptr, 502, nullptr},
    {"Empty", "", 502, nullptr},
    {"OneCharacter", "5", 502, UNREADABLE},
    {"TwoCharacters", "LM", 502, UNREADABLE},
    {"ThreeCharacters", "LMC", 502, UNREADABLE},
    {"FourCharacters", "LMCM", 502, UNREADABLE},
    {"PrefixAloneIsZero", "LMCM-", 0, nullptr},
    {"SixCharacters", "LMCM-7", 7, nullptr},
    {"SevenCharacters", "LMCM-07", 7, nullptr},
    {"EightCharacters", "LMWS-402", 402, nullptr},
    {"NineCharacters", "TECN-1201", 1201, nullptr},
    {"ZeroFilled", "VIVG-0901", 901, nullptr},
    {"Success", "LMCM-0000", 0, nullptr},
    {"TenCharacters", "LMCM-0000X", 502, TOO_LONG},
    {"FiveLetterPrefixIsTooLong", "EIBDG-1901", 502, TOO_LONG},
    {"PrefixIsNotCompared", "ABCD-123", 123, nullptr},
    {"FirstFiveAreNotLookedAt", "987654321", 4321, nullptr},
    {"HyphenInSixthPlaceIsASign", "EIBDG-190", -190, nullptr},
    {"Negative", "LMCM--001", -1, nullptr},
    {"PlusSign", "LMCM-+12", 12, nullptr},
    {"LeadingBlank", "LMCM- 12", 12, nullptr},
    {"LetterBehind", "TECN-12x", 502, UNREADABLE},
    {"LetterInstead", "TECN-x", 502, UNREADABLE},
    {"BlankBehind", "TECN-12 ", 502, UNREADABLE},
    {"LineFeedBehind", "TECN-12\n", 502, UNREADABLE},
    {"SignAlone", "LMCM--", 502, UNREADABLE},
    {"NoHexadecimal", "LMCM-0x1f", 502, UNREADABLE},
};

class ExtractErrorCode : public FreshGlobalsWithRow<extract_case> {};

TEST_P(ExtractErrorCode, ReadsOrComplains) {
    const extract_case &row = GetParam();
    int code = -99;
    const std::string output =
        harness::captured_output([&] { code = extract_error_code(row.text); });
    EXPECT_EQ(code, row.code);
    EXPECT_EQ(output, row.complaint == nullptr
                          ? std::string()
                          : harness::red(std::string(row.complaint) + row.text + " "));
}

INSTANTIATE_TEST_SUITE_P(Table, ExtractErrorCode, testing::ValuesIn(EXTRACTS),
                         [](const auto &row) { return row.param.name; });

class StatusRoundTrip : public FreshGlobals {};

TEST_F(StatusRoundTrip, TextsOfFourLettersReadBack) {
    const std::string output = harness::captured_output([] {
        for (int code = -999; code <= 1900; code++) {
            EXPECT_EQ(extract_error_code(formatted(code).c_str()), code);
        }
    });
    EXPECT_EQ(output, "");
}

TEST_F(StatusRoundTrip, LongTextIsShownWhole) {
    const std::string text(1000000, '9');
    int code = 0;
    const std::string output =
        harness::captured_output([&] { code = extract_error_code(text.c_str()); });
    EXPECT_EQ(code, 502);
    EXPECT_EQ(output, harness::red(TOO_LONG + text + " "));
}

} // namespace
