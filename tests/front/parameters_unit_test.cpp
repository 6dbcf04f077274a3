// Parameter lists: where they are split, where they end, and that nothing is ever cut.

#include "front/memory.h"
#include "front/utility.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

using texts = std::vector<std::string>;

struct parsed_list {
    int result;
    bool has_array;
    texts items;
};

/// Splits a list, and gives every block back.
parsed_list parse(const char *list) {
    int count = -1;
    char untouched = 0;
    char *placeholder = &untouched;
    char **items = &placeholder;
    parsed_list parsed = {parse_parameters(list, &count, &items), items != nullptr, {}};
    for (int i = 0; i < count; i++) {
        parsed.items.emplace_back(items[i]);
        xfree(items[i]);
    }
    EXPECT_EQ(static_cast<std::size_t>(count), parsed.items.size());
    xfree(items);
    return parsed;
}

std::string joined(const texts &items) {
    std::string list;
    for (const std::string &item : items) {
        list += (list.empty() ? "" : "|") + item;
    }
    return list;
}

struct list_case {
    const char *name;
    const char *list;
    texts items;
};

const list_case LISTS[] = {
    {"OneItem", "a", {"a"}},
    {"ThreeItems", "a|b|c", {"a", "b", "c"}},
    {"EmptyItemEndsTheList", "a||b", {"a"}},
    {"BarAtTheEnd", "a|", {"a"}},
    {"BarsAtTheEnd", "a|b||", {"a", "b"}},
    {"BarAtTheStart", "|a", {}},
    {"OnlyABar", "|", {}},
    {"OnlyBars", "|||", {}},
    {"BlankIsAnItem", "a| |b", {"a", " ", "b"}},
    {"BlanksAreKept", " a | b\t|\nc", {" a ", " b\t", "\nc"}},
    {"QuotesAreText", "'a|b'|\"c|d\"", {"'a", "b'", "\"c", "d\""}},
    {"NoEscape", "a\\|b", {"a\\", "b"}},
    {"BytesAboveAscii", "\xc3\xa9|\xff", {"\xc3\xa9", "\xff"}},
    {"PercentSigns", "%s|%n", {"%s", "%n"}},
};

class ParameterLists : public testing::TestWithParam<list_case> {};

TEST_P(ParameterLists, AreSplitAtTheirBars) {
    const parsed_list parsed = parse(GetParam().list);
    EXPECT_EQ(parsed.result, 0);
    EXPECT_EQ(parsed.items, GetParam().items);
    EXPECT_TRUE(parsed.has_array);
}

INSTANTIATE_TEST_SUITE_P(Table, ParameterLists, testing::ValuesIn(LISTS),
                         [](const auto &row) { return row.param.name; });

TEST(ParameterListSizes, NullAndEmptyHaveNoArray) {
    for (const char *list : {static_cast<const char *>(nullptr), ""}) {
        const parsed_list parsed = parse(list);
        EXPECT_EQ(parsed.result, 0);
        EXPECT_EQ(parsed.items, texts());
        EXPECT_FALSE(parsed.has_array);
    }
}

struct size_case {
    const char *name;
    std::size_t count;
    std::size_t length;
};

const size_case SIZES[] = {
    {"FortyEightOf511", 48, 511},       {"FortyNine", 49, 3},      {"ItemOf512", 1, 512},
    {"FortyNineOf512", 49, 512},        {"FiveThousand", 5000, 7}, {"OneMegabyte", 1, 1U << 20U},
    {"ThreeOfOneMegabyte", 3, 1000000},
};

class ParameterListSizesTable : public testing::TestWithParam<size_case> {};

TEST_P(ParameterListSizesTable, AreSplitExactly) {
    texts items;
    for (std::size_t i = 0; i < GetParam().count; i++) {
        std::string item = std::to_string(i);
        item.resize(GetParam().length, static_cast<char>('a' + i % 26));
        items.push_back(item);
    }
    const parsed_list parsed = parse(joined(items).c_str());
    EXPECT_EQ(parsed.result, 0);
    EXPECT_EQ(parsed.items.size(), items.size());
    // Not EXPECT_EQ: nobody reads a megabyte of difference.
    EXPECT_TRUE(parsed.items == items);
}

INSTANTIATE_TEST_SUITE_P(Table, ParameterListSizesTable, testing::ValuesIn(SIZES),
                         [](const auto &row) { return row.param.name; });

TEST(ParameterListSizes, ItemsBehindAnEmptyOneAreIgnoredHoweverMany) {
    const parsed_list parsed =
        parse((joined(texts(100, "x")) + "||" + joined(texts(100, "y"))).c_str());
    EXPECT_EQ(parsed.items, texts(100, "x"));
}

} // namespace
