// The cutters that strip a known prefix from a line in place.

#include "front/memory.h"
#include "tests/front/saved_globals.h"
#include "tests/harness/console.h"

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

namespace {

using namespace front_tests;

struct cut_case {
    const char *name;
    const char *text; ///< null: a null text
    std::size_t length;
    const char *left;
    const char *complaint; ///< null: none
};

const cut_case PRESERVE_CUTS[] = {
    {"StatusTag", "Response Status: EIBG-101\n", 17, "EIBG-101\n", nullptr},
    {"Prefix", "EIBG-101\n", 5, "101\n", nullptr},
    {"NothingToCut", "abc\n", 0, "abc\n", nullptr},
    {"AllButOne", "abc", 2, "c", nullptr},
    {"WholeLength", "abc", 3, "", nullptr},
    {"OneTooMany", "abc", 4, "",
     "memory->cut_message_to_preserve_newline len is greater than string length; returning a null "
     "string. str = abc, len = 3"},
    {"TooLong", "Response Status: EIBG-101\n", 30, "",
     "memory->cut_message_to_preserve_newline len is greater than string length; returning a null "
     "string. str = Response Status: EIBG-101\n, len = 26"},
    {"FarTooLong", "abc", SIZE_MAX, "",
     "memory->cut_message_to_preserve_newline len is greater than string length; returning a null "
     "string. str = abc, len = 3"},
    {"PercentSigns", "%n%s", 5, "",
     "memory->cut_message_to_preserve_newline len is greater than string length; returning a null "
     "string. str = %n%s, len = 4"},
    {"Empty", "", 17, "", "memory->cut_message_to_preserve_newline recevied a null pointer"},
    {"EmptyByNothing", "", 0, "",
     "memory->cut_message_to_preserve_newline recevied a null pointer"},
    {"Null", nullptr, 17, "", "memory->cut_message_to_preserve_newline recevied a null pointer"},
};

const cut_case TRIM_CUTS[] = {
    {"LineFeed", "Status: 5\n", 8, "5", nullptr},
    {"AnyLastCharacter", "abcdef", 2, "cde", nullptr},
    {"ByNothing", "abc", 0, "ab", nullptr},
    {"OneLeft", "abc", 2, "", nullptr},
    {"NothingLeft", "abc", 3, "", nullptr},
    {"TooLong", "abc\n", 5, "",
     "memory->cut_message_to_trim_newline len is greater than string length; returning a null "
     "string. str = abc\n, len = 4"},
    {"Empty", "", 0, "", "memory->cut_message_to_trim_newline recevied a null pointer"},
    {"Null", nullptr, 1, "", "memory->cut_message_to_trim_newline recevied a null pointer"},
};

const cut_case PARAM_CUTS[] = {
    {"SkipsItsSeparators", "Key: = value rest", 4, "value", nullptr},
    {"EndsAtATab", "Key\t=\t=value\trest", 3, "value", nullptr},
    {"WithoutSeparators", "Keyvalue", 3, "value", nullptr},
    {"KeepsLaterSigns", "Key=a=b c", 3, "a=b", nullptr},
    {"KeepsQuotesBarsAndLineFeeds", "Key='a|b'\n c", 3, "'a|b'\n", nullptr},
    {"OnlySeparators", "Key = \t", 3, "", nullptr},
    {"WholeLength", "Key", 3, "", nullptr},
    {"TooLong", "Key", 4, "",
     "memory->cutparamto len is greater than string length; returning a null string"},
    {"Empty", "", 0, "", "memory->cutparamto recevied a null pointer"},
    {"Null", nullptr, 3, "", "memory->cutparamto recevied a null pointer"},
};

const cut_case QUERY_CUTS[] = {
    {"SkipsItsSeparators", "where \t'|'value' and", 5, "value", nullptr},
    {"EndsAtABlank", "k|value rest", 1, "value", nullptr},
    {"EndsAtATab", "k|value\trest", 1, "value", nullptr},
    {"KeepsLaterBars", "k 'a|b' c", 1, "a|b", nullptr},
    {"KeepsEqualSigns", "k =v", 1, "=v", nullptr},
    {"OnlySeparators", "k '|' ", 1, "", nullptr},
    {"WholeLength", "key", 3, "", nullptr},
    {"TooLong", "key", 4, "",
     "memory->cutqueryparamto len is greater than string length; returning a null string"},
    {"Empty", "", 0, "", "memory->cutqueryparamto recevied a null pointer"},
    {"Null", nullptr, 3, "", "memory->cutqueryparamto recevied a null pointer"},
};

void expect_cut(void (*cut)(char *text, std::size_t length), const cut_case &row) {
    SCOPED_TRACE(row.name);
    // One guard byte on either side of the text and its terminator.
    std::vector<char> bytes = {'<'};
    if (row.text != nullptr) {
        bytes.insert(bytes.end(), row.text, row.text + strlen(row.text) + 1);
    }
    bytes.push_back('>');
    char *text = row.text == nullptr ? nullptr : bytes.data() + 1;
    const std::string output = harness::captured_output([&] { cut(text, row.length); });
    EXPECT_EQ(output, row.complaint == nullptr ? std::string() : harness::red(row.complaint));
    if (text != nullptr) {
        EXPECT_STREQ(text, row.left);
    }
    EXPECT_EQ(bytes.front(), '<');
    EXPECT_EQ(bytes.back(), '>');
}

using Cutters = FreshGlobals;

TEST_F(Cutters, PreserveTheLineFeed) {
    for (const cut_case &row : PRESERVE_CUTS) {
        expect_cut(cut_message_to_preserve_newline, row);
    }
}

TEST_F(Cutters, TrimTheLastCharacter) {
    for (const cut_case &row : TRIM_CUTS) {
        expect_cut(cut_message_to_trim_newline, row);
    }
}

TEST_F(Cutters, LeaveAParameter) {
    for (const cut_case &row : PARAM_CUTS) {
        expect_cut(cutparamto, row);
    }
}

TEST_F(Cutters, LeaveAQueryParameter) {
    for (const cut_case &row : QUERY_CUTS) {
        expect_cut(cutqueryparamto, row);
    }
}

} // namespace
