// Which blocks the memory module releases: the sources whose flags say so, and no others.

#include "front/memory.h"
#include "tests/front/large_texts.h"

#include <string>

namespace {

using namespace front_tests;

using ReleasedSources = LargeTexts;

TEST_F(ReleasedSources, XfreeReleases) {
    char *block = large();
    const auto address = reinterpret_cast<std::uintptr_t>(block);
    EXPECT_FALSE(is_released(address));
    xfree(block);
    EXPECT_TRUE(is_released(address));
}

TEST_F(ReleasedSources, CopiesFollowTheirFlag) {
    struct {
        const char *name;
        char *(*copy)(char *source, int flag);
    } const rows[] = {
        {"xstrdup_free", [](char *source, int flag) { return xstrdup_free(source, flag); }},
        {"xstrndup_free", [](char *source, int flag) { return xstrndup_free(source, 3, flag); }},
    };
    for (const auto &row : rows) {
        for (const int flag : {0, 1, -1, 2}) {
            SCOPED_TRACE(row.name + (" with flag " + std::to_string(flag)));
            char *source = large();
            const auto address = reinterpret_cast<std::uintptr_t>(source);
            char *copy = row.copy(source, flag);
            EXPECT_EQ(std::string(copy, 3), "xxx");
            EXPECT_EQ(is_released(address), flag != 0);
            if (flag == 0) {
                free(source);
            }
            xfree(copy);
        }
    }
}

TEST_F(ReleasedSources, JoiningFollowsItsFlags) {
    for (const int release_first : {0, 1}) {
        for (const int release_second : {0, 1}) {
            char *first = large();
            char *second = large();
            const auto first_address = reinterpret_cast<std::uintptr_t>(first);
            const auto second_address = reinterpret_cast<std::uintptr_t>(second);
            char *joined = xstrconcat_free(first, second, release_first, release_second);
            EXPECT_EQ(strlen(joined), 2 * (SIZE - 1));
            EXPECT_EQ(is_released(first_address), release_first != 0);
            EXPECT_EQ(is_released(second_address), release_second != 0);
            if (release_first == 0) {
                free(first);
            }
            if (release_second == 0) {
                free(second);
            }
            xfree(joined);
        }
    }
}

TEST_F(ReleasedSources, PlainCopiesLeaveTheirSources) {
    char *source = large();
    const auto address = reinterpret_cast<std::uintptr_t>(source);
    xfree(xstrdup(source, source));
    xfree(xstrndup(source, source, 3));
    xfree(xstrconcat(source, source));
    EXPECT_FALSE(is_released(address));
    free(source);
}

} // namespace
