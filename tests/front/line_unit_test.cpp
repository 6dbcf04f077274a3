// Answers are split into their non-empty lines, in place.

#include "front/memory.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

struct line_case {
    const char *name;
    const char *text;
    std::vector<std::string> lines;
};

const line_case LINE_CASES[] = {
    {"Empty", "", {}},
    {"LineFeedsAlone", "\n\n\n", {}},
    {"OneLine", "a", {"a"}},
    {"OneEndedLine", "a\n", {"a"}},
    {"TwoLines", "a\nb", {"a", "b"}},
    {"EmptyLinesAnywhere", "\n\na\n\n\nb\n\n", {"a", "b"}},
    {"BlankIsNotEmpty", " \n\t\n", {" ", "\t"}},
    {"CarriageReturnBelongsToTheLine", "a\r\nb\r\n", {"a\r", "b\r"}},
};

class TakeLine : public testing::TestWithParam<line_case> {};

TEST_P(TakeLine, GivesEveryNonEmptyLine) {
    std::string text = GetParam().text;
    char *unread = text.data();
    std::vector<std::string> lines;
    while (const char *line = take_line(&unread)) {
        lines.emplace_back(line);
    }
    EXPECT_EQ(lines, GetParam().lines);
    EXPECT_EQ(take_line(&unread), nullptr);
    EXPECT_EQ(unread, text.data() + text.size());
}

INSTANTIATE_TEST_SUITE_P(Table, TakeLine, testing::ValuesIn(LINE_CASES),
                         [](const auto &row) { return row.param.name; });

} // namespace
