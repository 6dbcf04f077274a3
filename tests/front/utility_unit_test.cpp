// The small tools of the front end: numbers, texts in fixed buffers, names, parameter lists, and
// the banner.

#include "front/bounded_text.h"
#include "front/memory.h"
#include "front/number_text.h"
#include "front/utility.h"
#include "tests/harness/console.h"
#include "tests/protocol/texts.h"

#include <cerrno>
#include <climits>
#include <cstring>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

using texts = std::vector<std::string>;

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
        {"+7", true, 7},
        {"0010", true, 10},
        {"2147483647", true, INT_MAX},
        {"-2147483648", true, INT_MIN},
        {"2147483648", false, INT_MAX, ERANGE},
        {"-2147483649", false, INT_MIN, ERANGE},
        {"4294967297", false, INT_MAX, ERANGE},
        {"99999999999999999999999", false, INT_MAX, ERANGE},
        {"-99999999999999999999999", false, INT_MIN, ERANGE},
        {"2147483648x", false, INT_MAX, ERANGE},
        {"12x", false, 12},
        {"12 ", false, 12},
        {"x", false, 0},
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
    for (const std::string &added : texts{"", "567", "5678", "567890", std::string(5000, 'x')}) {
        SCOPED_TRACE(added);
        char bytes[] = "<........>"; // eight between two guards
        bounded_text out = {bytes + 1, 8, 0, false};
        append_format(&out, "%s%c", "12", '3');
        append_format(&out, "%d", 4);
        append_format(&out, "%s", added.c_str());
        const bool fits = added.size() <= 3;
        EXPECT_EQ(out.overflowed, !fits);
        EXPECT_EQ(out.length, fits ? 4 + added.size() : 4);
        EXPECT_EQ(std::string(out.text, out.length), fits ? "1234" + added : "1234");
        EXPECT_LT(strlen(out.text), out.capacity);
        EXPECT_TRUE(!fits || strlen(out.text) == out.length);
        if (!fits) {
            // What would still fit is not taken any more: a request with a gap is worse than none.
            append_format(&out, "%s", "9");
            EXPECT_TRUE(out.overflowed);
            EXPECT_EQ(out.length, 4U);
        }
        EXPECT_EQ(bytes[0], '<');
        EXPECT_EQ(bytes[9], '>');
    }
}

TEST(Names, MatchInAnyCase) {
    EXPECT_TRUE(names_match("fSmCoRe", "FsMcOrE"));
    EXPECT_TRUE(names_match("", ""));
    for (const char *other : {"FSMCORF", "XSMCORE", "FSMCOR", "FSMCORES", "", "{",
                              static_cast<const char *>(nullptr)}) {
        EXPECT_FALSE(names_match(other, "FSMCORE"));
    }
    EXPECT_FALSE(names_match("[", "{"));
    EXPECT_FALSE(names_match(nullptr, ""));
}

/// Splits a list, and gives every block back.
texts parse(const char *list, bool has_array) {
    int count = -1;
    char untouched = 0;
    char *placeholder = &untouched;
    char **items = &placeholder;
    EXPECT_EQ(parse_parameters(list, &count, &items), 0);
    EXPECT_EQ(items != nullptr, has_array);
    texts parsed;
    for (int i = 0; i < count; i++) {
        parsed.emplace_back(items[i]);
        xfree(items[i]);
    }
    EXPECT_EQ(static_cast<std::size_t>(count), parsed.size());
    xfree(items);
    return parsed;
}

TEST(ParameterLists, AreSplitAtTheirBarsAndEndAtAnEmptyItem) {
    const struct {
        const char *list;
        texts items;
    } rows[] = {
        {"a", {"a"}},
        {"a|b|c", {"a", "b", "c"}},
        {"a||b", {"a"}},
        {"a|", {"a"}},
        {"a|b||", {"a", "b"}},
        {"|a", {}},
        {"|", {}},
        {" a | |b\t|\nc", {" a ", " ", "b\t", "\nc"}},
        {"'a|b'|\"c|d\"|e\\|f", {"'a", "b'", "\"c", "d\"", "e\\", "f"}},
        {"\xc3\xa9|\xff|%s|%n", {"\xc3\xa9", "\xff", "%s", "%n"}},
    };
    for (const auto &row : rows) {
        EXPECT_EQ(parse(row.list, true), row.items) << row.list;
    }
    EXPECT_EQ(parse(nullptr, false), texts());
    EXPECT_EQ(parse("", false), texts());
}

TEST(ParameterLists, AreNeverCut) {
    const struct {
        std::size_t count;
        std::size_t length;
    } rows[] = {{48, 511}, {49, 512}, {5000, 7}, {1, 1U << 20U}};
    for (const auto &row : rows) {
        texts items;
        for (std::size_t i = 0; i < row.count; i++) {
            items.push_back(std::to_string(i));
            items.back().resize(row.length, 'x');
        }
        const std::string list = protocol::joined(items, "|");
        // Not EXPECT_EQ: nobody reads a megabyte of difference.
        EXPECT_TRUE(parse(list.c_str(), true) == items) << row.count;
        EXPECT_TRUE(parse((list + "||" + list).c_str(), true) == items) << row.count;
    }
}

/// The help shows all of the banner; its title alone goes where the caller wants it.
TEST(Banner, TitleGoesToTheGivenStreamAndTheRestToStandardError) {
    testing::internal::CaptureStderr();
    const std::string output = harness::captured_output([] { print_banner(stdout); });
    const std::string errors = testing::internal::GetCapturedStderr();
    EXPECT_EQ(output, "\n[lumocmd]. Lumotron FSM Daemon Server - Command line Tool.\n");
    EXPECT_TRUE(errors.starts_with("Version 2.6.16_arlo [rev.7655].")) << errors;
    EXPECT_TRUE(errors.ends_with(" web site.\n\n")) << errors;
}

} // namespace
