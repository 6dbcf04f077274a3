// Which blocks are released: the sources whose flags say so, the request record at the end of the
// run, and no others.

#include "front/memory.h"
#include "front/utility.h"
#include "tests/front/fresh_globals.h"
#include "tests/harness/console.h"

#include <malloc.h>
#include <string>

#ifdef __SANITIZE_ADDRESS__
extern "C" std::size_t __sanitizer_get_current_allocated_bytes(); // its header is not always there
#endif

namespace {

using namespace front_tests;

std::size_t bytes_in_use() {
#ifdef __SANITIZE_ADDRESS__
    return __sanitizer_get_current_allocated_bytes();
#else
    const struct mallinfo2 usage = mallinfo2();
    return usage.uordblks + usage.hblkhd;
#endif
}

/// Counts texts so large that nothing else in a test weighs against them.
class Ownership : public FreshGlobals {
  protected:
    static constexpr std::size_t SIZE = 65536;

    void SetUp() override {
        if (under_valgrind()) {
            GTEST_SKIP() << "valgrind finds leaked and lost blocks by itself";
        }
        start_ = bytes_in_use();
    }

    static char *large() {
        return strdup(std::string(SIZE - 1, 'x').c_str());
    }

    /// How many large texts have come into being since the start and not been released.
    std::size_t in_use() const {
        return (bytes_in_use() - start_ + SIZE / 2) / SIZE;
    }

  private:
    std::size_t start_ = 0;
};

TEST_F(Ownership, CopiesFollowTheirFlag) {
    for (const int flag : {0, 1, -1}) {
        for (const bool whole : {true, false}) {
            SCOPED_TRACE(std::to_string(flag) + (whole ? " whole" : " in part"));
            char *source = large();
            char *copy = whole ? xstrdup_free(source, flag) : xstrndup_free(source, 3, flag);
            EXPECT_EQ(in_use(), flag == 0 ? 2U : 1U);
            xfree(copy);
            if (flag == 0) {
                xfree(source);
            }
            EXPECT_EQ(in_use(), 0U);
        }
    }
}

TEST_F(Ownership, JoiningFollowsItsFlags) {
    for (const int release_first : {0, 1}) {
        for (const int release_second : {0, 1}) {
            char *first = large();
            char *second = large();
            char *joined = xstrconcat_free(first, second, release_first, release_second);
            EXPECT_EQ(strlen(joined), 2 * (SIZE - 1));
            EXPECT_EQ(in_use(), (release_first == 0 ? 3U : 2U) + (release_second == 0 ? 1U : 0U));
            xfree(joined);
            xfree(release_first == 0 ? first : nullptr);
            xfree(release_second == 0 ? second : nullptr);
            EXPECT_EQ(in_use(), 0U);
        }
    }
}

TEST_F(Ownership, PlainCopiesLeaveTheirSources) {
    char *source = large();
    xfree(xstrdup(source, source));
    xfree(xstrndup(source, source, 3));
    xfree(xstrconcat(source, source));
    EXPECT_EQ(in_use(), 1U);
    xfree(source);
}

TEST_F(Ownership, ReleaseConfigEndsTheRecordAndSilencesTheDiagnostics) {
    g_config = {large(), large(), large(), large(), large(), 1, 5, 2000};
    EXPECT_EQ(in_use(), 5U);
    const std::string output = harness::captured_output([] {
        release_config();
        error("text");
        verbose_info("text");
    });
    EXPECT_EQ(output, "");
    EXPECT_EQ(in_use(), 0U);
    EXPECT_EQ(g_config.verbose, 0);
    EXPECT_EQ(g_config.port, -1);
    EXPECT_EQ(g_config.waittime, 5);
    EXPECT_EQ(debug_level, -1);
    g_config = {};
    release_config(); // which may be empty
    EXPECT_EQ(g_config.port, -1);
}

} // namespace
