// Status codes as texts and back.

#include "front/memory.h"
#include "front/utility.h"
#include "tests/harness/console.h"

#include <gtest/gtest.h>
#include <sstream>

namespace {

std::string formatted(int code) {
    char *text = format_status_code(code);
    const std::string copy = text;
    xfree(text);
    return copy;
}

/// The first and the last code of every range, and some between.
const char TEXTS[] = R"(
    FSMC-001 FSMC-007 FSMC-090      VRPT-091 VRPT-100    EIBG-101 EIBG-200    ECHG-201 ECHG-300
    DBMG-301 DBMG-400               LMWS-401 LMWS-500    LMCM-501 LMCM-600    MARG-601 MARG-700
    SQLS-701 SQLS-800               SMST-801 SMST-900    VIVG-0901 VIVG-1000  LINT-1001 LINT-1100
    ECHP-1101 ECHP-1200             TECN-1201 TECN-1300  BENT-1301 BENT-1400  IBSG-1401 IBSG-1500
    TUTG-1501 TUTG-1600             VANG-1601 VANG-1700  TLSG-1701 TLSG-1800  HNXG-1801 HNXG-1900
    EIBDG-1901 EIBDG-2000           BYMEG-2001 BYMEG-2100           TLDG-2101 TLDG-2200
    SAIG-2201 SAIG-2300             BMAG-2301 BMAG-2400             VTS10-2401 VTS10-2500
    HEVOG-2501 HEVOG-2600 HEVOG-2601 HEVOG-2700                     DSMG-2701 DSMG-2800
    EDPG-2801 EDPG-2900             SFG-2901 SFG-3000               EBMG-3001 EBMG-3100
    PESG-3101 PESG-3200             LGMG-3201 LGMG-40000 LGMG-2147483647
    LMCM-0000 LMCM--001 LMCM--005 LMCM--1000 LMCM--2147483648
)";

TEST(StatusTexts, NameTheRangeOfTheirCode) {
    std::istringstream texts(TEXTS);
    for (std::string text; texts >> text;) {
        EXPECT_EQ(formatted(std::stoi(text.substr(text.find('-') + 1))), text);
    }
    for (int code = -999; code <= 1900; code++) {
        EXPECT_EQ(extract_error_code(formatted(code).c_str()), code); // four letters read back
    }
}

TEST(StatusTexts, AreReadFromTheSixthCharacterOnOrRefused) {
    const std::tuple<std::string, int, std::string> rows[] = {
        {"", 502, ""},
        {"LMCM", 502, "2"},
        {"LMCM-", 0, ""},
        {"LMCM-0000X", 502, "1"},
        {"EIBDG-1901", 502, "1"},
        {"ABCD-123", 123, ""},
        {"987654321", 4321, ""},
        {"EIBDG-190", -190, ""},
        {"LMCM- 12", 12, ""},
        {"TECN-12x", 502, "2"},
        {"TECN-12\n", 502, "2"},
    };
    for (const auto &[text, wanted, complaint] : rows) {
        SCOPED_TRACE(text);
        int code = -99;
        const std::string output =
            harness::captured_output([&] { code = extract_error_code(text.c_str()); });
        EXPECT_EQ(code, wanted);
        EXPECT_EQ(output, complaint.empty() ? ""
                                            : harness::red(complaint +
                                                           " - Invalid argument for "
                                                           "utility->extract_error_code " +
                                                           text + " "));
    }
    EXPECT_EQ(extract_error_code(nullptr), 502);
}

} // namespace
