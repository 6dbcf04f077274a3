// The small tools of the front end: coloured lines, numbers, texts in fixed buffers, names,
// parameter lists, status codes, the banner, and the end of the request record.

#include "front/bounded_text.h"
#include "front/memory.h"
#include "front/number_text.h"
#include "front/utility.h"
#include "tests/front/fresh_globals.h"
#include "tests/harness/console.h"
#include "tests/protocol/texts.h"

#include <cerrno>
#include <climits>
#include <sstream>
#include <unistd.h>

namespace {

using harness::captured_output;
using protocol::words;

using Diagnostics = front_tests::FreshGlobals;

TEST_F(Diagnostics, LinesFollowTheirGates) {
    const std::string pid = std::to_string(getpid());
    const std::string red = "\033[0;31m[lumocmd] a text and -7\033[0;39m\n";
    const std::string tagged_red = "\033[1;31m<" + pid + ">\033[0;39m " + red;
    const std::string green =
        "\033[1;32m<" + pid + ">\033[0;39m \033[0;32ma text and -7\033[0;39m\n";
    const struct {
        int level;
        int verbose;
        std::string failure;
        std::string progress;
    } rows[] = {
        {1, 0, red, ""},   {1, 1, tagged_red, green}, {1, -1, tagged_red, green},
        {3, 0, red, ""},   {3, 1, tagged_red, green}, {0, 0, "", ""},
        {0, 1, "", green}, {-1, 0, "", ""},           {-1, 1, "", green},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(std::to_string(row.level) + " " + std::to_string(row.verbose));
        debug_level = row.level;
        g_config.verbose = row.verbose;
        EXPECT_EQ(captured_output([] { error("a %s and %d", "text", -7); }), row.failure);
        EXPECT_EQ(captured_output([] { verbose_info("a %s and %d", "text", -7); }), row.progress);
        EXPECT_EQ(captured_output([] { trace("a %s and %d", "text", -7); }), "");
    }
}

TEST_F(Diagnostics, EndWithTheRequestRecord) {
    g_config = {nullptr, nullptr, nullptr, nullptr, nullptr, 1, 5, 2000};
    EXPECT_EQ(captured_output([] {
                  release_config();
                  error("text");
                  verbose_info("text");
              }),
              "");
    EXPECT_EQ(g_config.verbose, 0);
    EXPECT_EQ(g_config.port, -1);
    EXPECT_EQ(g_config.waittime, 5);
    EXPECT_EQ(debug_level, -1);
}

// Numbers are read as on the controller, whatever the width of long.
TEST(ReadNumber, ReadsAsThirtyTwoBits) {
    const struct {
        const char *text;
        bool accepted;
        int value;
        int error_number = 0;
    } rows[] = {
        {"0", true, 0},
        {"", true, 0},
        {" 12", true, 12},
        {"\t-4", true, -4},
        {"2147483647", true, INT_MAX},
        {"-2147483648", true, INT_MIN},
        {"2147483648", false, INT_MAX, ERANGE},
        {"-2147483649", false, INT_MIN, ERANGE},
        {"4294967297", false, INT_MAX, ERANGE},
        {"99999999999999999999999", false, INT_MAX, ERANGE},
        {"2147483648x", false, INT_MAX, ERANGE},
        {"12x", false, 12},
        {"-", false, 0},
        {"0x10", false, 0},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.text);
        int value = 99;
        errno = EINTR;
        EXPECT_EQ(read_number(row.text, &value), row.accepted);
        EXPECT_EQ(errno, row.error_number);
        EXPECT_EQ(value, row.value);
    }
}

TEST(BoundedText, IsWholeOrRemembersThatSomethingDidNotFit) {
    for (const std::string added : {"", "567", "5678", "567890"}) {
        SCOPED_TRACE(added);
        const bool fits = added.size() <= 3;
        char bytes[] = "<........>"; // eight between two guards
        bounded_text out = {bytes + 1, 8, 0, false};
        append_format(&out, "%s%c", "12", '3');
        append_format(&out, "%d", 4);
        append_format(&out, "%s", added.c_str());
        EXPECT_EQ(out.overflowed, !fits);
        // What would still fit is not taken any more: a request with a gap is worse than none.
        append_format(&out, "%s", fits ? "" : "9");
        EXPECT_EQ(out.overflowed, !fits);
        EXPECT_EQ(std::string(out.text, out.length), fits ? "1234" + added : "1234");
        EXPECT_LT(strlen(out.text), out.capacity);
        EXPECT_EQ(bytes[0], '<');
        EXPECT_EQ(bytes[9], '>');
    }
}

TEST(Names, MatchInAnyCase) {
    EXPECT_TRUE(names_match("fSmCoRe", "FsMcOrE"));
    EXPECT_TRUE(names_match("", ""));
    for (const char *other : {"FSMCORF", "FSMCOR", "FSMCORES", ""}) {
        EXPECT_FALSE(names_match(other, "FSMCORE"));
    }
    EXPECT_FALSE(names_match(nullptr, ""));
}

/// Splits a list, and gives every block back.
words parse(const char *list, bool has_array) {
    int count = -1;
    char untouched = 0;
    char *placeholder = &untouched;
    char **items = &placeholder;
    EXPECT_EQ(parse_parameters(list, &count, &items), 0);
    EXPECT_EQ(items != nullptr, has_array);
    words parsed;
    for (int i = 0; i < count; i++) {
        parsed.emplace_back(items[i]);
        xfree(items[i]);
    }
    EXPECT_EQ(static_cast<std::size_t>(count), parsed.size());
    xfree(items);
    return parsed;
}

TEST(ParameterLists, AreSplitAtTheirBarsAndEndAtAnEmptyItem) {
    const std::pair<const char *, words> rows[] = {
        {"a", {"a"}},
        {"a||b", {"a"}},
        {"a|", {"a"}},
        {"a|b||", {"a", "b"}},
        {"|a", {}},
        {" a | |b\t|\nc", {" a ", " ", "b\t", "\nc"}},
        {"'a|b'|\"c|d\"|e\\|%s", {"'a", "b'", "\"c", "d\"", "e\\", "%s"}},
    };
    for (const auto &[list, items] : rows) {
        EXPECT_EQ(parse(list, true), items) << list;
    }
    EXPECT_EQ(parse(nullptr, false), words());
    EXPECT_EQ(parse("", false), words());
    // They are never cut. Not EXPECT_EQ: nobody reads a megabyte of difference.
    for (const words &items : {words(5000, "value"), words(1, std::string(1U << 20U, 'x'))}) {
        EXPECT_TRUE(parse(protocol::joined(items, "|").c_str(), true) == items) << items.size();
    }
}

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
            captured_output([&, shown = text] { code = extract_error_code(shown.c_str()); });
        EXPECT_EQ(code, wanted);
        EXPECT_EQ(output, complaint.empty() ? ""
                                            : harness::red(complaint +
                                                           " - Invalid argument for "
                                                           "utility->extract_error_code " +
                                                           text + " "));
    }
    EXPECT_EQ(extract_error_code(nullptr), 502);
}

/// The help shows all of the banner; its title alone goes where the caller wants it.
TEST(Banner, TitleGoesToTheGivenStreamAndTheRestToStandardError) {
    std::string output;
    const std::string errors =
        captured_output([&] { output = captured_output([] { print_banner(stdout); }); }, stderr);
    EXPECT_EQ(output, "\n[lumocmd]. Lumotron FSM Daemon Server - Command line Tool.\n");
    EXPECT_TRUE(errors.starts_with("Version 2.6.16_arlo [rev.7655].")) << errors;
    EXPECT_TRUE(errors.ends_with(" web site.\n\n")) << errors;
}

} // namespace
