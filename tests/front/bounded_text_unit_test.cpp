// The text in a fixed buffer: it is whole, or it says that it is not.

#include "front/bounded_text.h"

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
    append_format(&out.text, "%s%c", "k", '=');
    EXPECT_STREQ(out.text.text, "k=");
    append_format(&out.text, "%d", 42);
    append_format(&out.text, "%s", "");
    EXPECT_STREQ(out.text.text, "k=42");
    EXPECT_EQ(out.text.length, 4U);
    EXPECT_FALSE(out.text.overflowed);
    out.expect_guards();
}

TEST(BoundedText, HoldsAllButOneByteOfItsBuffer) {
    guarded_text out;
    append_format(&out.text, "%s", "1234567");
    EXPECT_STREQ(out.text.text, "1234567");
    EXPECT_EQ(out.text.length, 7U);
    EXPECT_FALSE(out.text.overflowed);
    append_format(&out.text, "%s", "");
    EXPECT_FALSE(out.text.overflowed);
    out.expect_guards();
}

TEST(BoundedText, RemembersThatSomethingDidNotFit) {
    for (const std::string &added :
         {std::string("5678"), std::string("567890"), std::string(5000, 'x')}) {
        guarded_text out;
        append_format(&out.text, "%s", "1234");
        append_format(&out.text, "%s", added.c_str());
        EXPECT_TRUE(out.text.overflowed) << added;
        EXPECT_EQ(out.text.length, 4U);
        EXPECT_LT(std::char_traits<char>::length(out.text.text), 8U);
        // What would still fit is not taken any more: a request with a gap is worse than none.
        append_format(&out.text, "%s", "9");
        EXPECT_TRUE(out.text.overflowed);
        EXPECT_EQ(out.text.length, 4U);
        out.expect_guards();
    }
}

} // namespace
