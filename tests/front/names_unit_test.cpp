// Names are compared without regard to case.

#include "front/utility.h"

#include <gtest/gtest.h>

namespace {

TEST(Names, MatchInAnyCase) {
    EXPECT_TRUE(names_match("FSMCORE", "FSMCORE"));
    EXPECT_TRUE(names_match("fSmCoRe", "FsMcOrE"));
    EXPECT_TRUE(names_match("", ""));
}

TEST(Names, DifferInALetterOrInLength) {
    for (const char *other : {"FSMCORF", "XSMCORE", "FSMCOR", "FSMCORES", "", "[lumocmd]"}) {
        EXPECT_FALSE(names_match(other, "FSMCORE")) << other;
    }
    EXPECT_FALSE(names_match("[", "{"));
}

TEST(Names, NullIsNone) {
    EXPECT_FALSE(names_match(nullptr, "ON"));
    EXPECT_FALSE(names_match(nullptr, ""));
}

} // namespace
