// The coloured lines byte for byte, and the two gates that open and close them.

#include "front/diagnostics.h"
#include "front/memory.h"
#include "front/utility.h"
#include "tests/front/large_texts.h"
#include "tests/harness/console.h"

#include <cstdint>
#include <string>
#include <unistd.h>

namespace {

using namespace front_tests;
using harness::captured_output;

class Diagnostics : public FreshGlobals {
  protected:
    const std::string pid_ = std::to_string(getpid());
};

TEST_F(Diagnostics, ErrorWithoutVerboseHasNoTag) {
    const std::string output = captured_output([] { error("a %s and %d", "text", -7); });
    EXPECT_EQ(output, "\033[0;31m[lumocmd] a text and -7\033[0;39m\n");
}

TEST_F(Diagnostics, ErrorWithVerboseBeginsWithTheRedTag) {
    g_config.verbose = 1;
    const std::string output = captured_output([] { error("a %s and %d", "text", -7); });
    EXPECT_EQ(output,
              "\033[1;31m<" + pid_ + ">\033[0;39m \033[0;31m[lumocmd] a text and -7\033[0;39m\n");
}

TEST_F(Diagnostics, VerboseInfoBeginsWithTheGreenTagAndAddsNoPrefix) {
    g_config.verbose = 1;
    const std::string output = captured_output([] { verbose_info("a %s and %d", "text", -7); });
    EXPECT_EQ(output, "\033[1;32m<" + pid_ + ">\033[0;39m \033[0;32ma text and -7\033[0;39m\n");
}

TEST_F(Diagnostics, VerboseInfoWithoutVerboseIsSilent) {
    for (const int level : {-1, 0, 1, 3}) {
        debug_level = level;
        EXPECT_EQ(captured_output([] { verbose_info("[lumocmd] text"); }), "") << level;
    }
}

TEST_F(Diagnostics, ErrorSpeaksWhileTheLevelIsPositive) {
    for (const int verbose : {0, 1}) {
        g_config.verbose = verbose;
        for (const int level : {-1, 0, 1, 2, 3}) {
            debug_level = level;
            const std::string line =
                verbose != 0 ? harness::tagged_red(getpid(), "text") : harness::red("text");
            EXPECT_EQ(captured_output([] { error("text"); }), level > 0 ? line : std::string())
                << "level " << level << ", verbose " << verbose;
        }
    }
}

TEST_F(Diagnostics, VerboseInfoDoesNotLookAtTheLevel) {
    g_config.verbose = 1;
    for (const int level : {-1, 0, 1}) {
        debug_level = level;
        EXPECT_EQ(captured_output([] { verbose_info("text"); }), harness::green(getpid(), "text"))
            << level;
    }
}

TEST_F(Diagnostics, AnyVerboseButZeroCounts) {
    g_config.verbose = -1;
    EXPECT_EQ(captured_output([] { error("text"); }), harness::tagged_red(getpid(), "text"));
    EXPECT_EQ(captured_output([] { verbose_info("text"); }), harness::green(getpid(), "text"));
}

TEST_F(Diagnostics, TraceIsSilentAtEveryLevel) {
    for (const int verbose : {0, 1}) {
        g_config.verbose = verbose;
        for (const int level : {-1, 0, 1, 2, 3, 100}) {
            debug_level = level;
            const std::string output = captured_output([] {
                trace("entering utility->parse_cmd_line");
                trace("%s %d", "exiting", 1);
                trace("");
            });
            EXPECT_EQ(output, "") << "level " << level << ", verbose " << verbose;
        }
    }
}

TEST_F(Diagnostics, MessagesMayBeEmptyLongOrHoldPercentSigns) {
    EXPECT_EQ(captured_output([] { error("%s", ""); }), harness::red(""));
    EXPECT_EQ(captured_output([] { error("%s", "100%n"); }), harness::red("100%n"));
    EXPECT_EQ(captured_output([] { error("100%%"); }), harness::red("100%"));
    const std::string message(200000, 'm');
    EXPECT_EQ(captured_output([&] { error("%s", message.c_str()); }), harness::red(message));
    g_config.verbose = 1;
    EXPECT_EQ(captured_output([&] { verbose_info("%s", message.c_str()); }),
              harness::green(getpid(), message));
}

TEST_F(Diagnostics, NullTextsAreShownAsThePlatformShowsThem) {
    const char *volatile null_text = nullptr;
    EXPECT_EQ(captured_output([&] { error("function '%s'", null_text); }),
              harness::red("function '(null)'"));
    g_config.verbose = 1;
    EXPECT_EQ(captured_output([&] { verbose_info("function '%s'", null_text); }),
              harness::green(getpid(), "function '(null)'"));
}

TEST_F(Diagnostics, LinesKeepTheirOrder) {
    g_config.verbose = 1;
    const std::string output = captured_output([] {
        error("one");
        verbose_info("two");
        error("three");
    });
    EXPECT_EQ(output, harness::tagged_red(getpid(), "one") + harness::green(getpid(), "two") +
                          harness::tagged_red(getpid(), "three"));
}

// --- The end of the run

TEST_F(Diagnostics, ReleaseConfigSilencesEverything) {
    g_config.verbose = 1;
    const std::string output = captured_output([] {
        release_config();
        error("text");
        verbose_info("text");
        trace("text");
    });
    EXPECT_EQ(output, "");
}

TEST_F(Diagnostics, ReleaseConfigEndsTheRecord) {
    g_config = {xstrdup(nullptr, "address"),
                xstrdup(nullptr, "path"),
                xstrdup(nullptr, "url"),
                xstrdup(nullptr, "parameters"),
                xstrdup(nullptr, "function"),
                1,
                5,
                2000};
    const auto address = reinterpret_cast<std::uintptr_t>(g_config.address);
    const auto function = reinterpret_cast<std::uintptr_t>(g_config.function);
    release_config();
    EXPECT_EQ(g_config.verbose, 0);
    EXPECT_EQ(g_config.port, -1);
    EXPECT_EQ(g_config.waittime, 5);
    EXPECT_EQ(debug_level, -1);
    // The pointers stay as they were; nobody looks at them any more.
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(g_config.address), address);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(g_config.function), function);
}

using ReleasedRecord = LargeTexts;

TEST_F(ReleasedRecord, EveryTextIsReleased) {
    g_config = {large(), large(), large(), large(), large(), 0, 0, 0};
    const std::uintptr_t texts[] = {reinterpret_cast<std::uintptr_t>(g_config.address),
                                    reinterpret_cast<std::uintptr_t>(g_config.socket_path),
                                    reinterpret_cast<std::uintptr_t>(g_config.url),
                                    reinterpret_cast<std::uintptr_t>(g_config.parameters),
                                    reinterpret_cast<std::uintptr_t>(g_config.function)};
    for (const std::uintptr_t text : texts) {
        EXPECT_FALSE(is_released(text));
    }
    release_config();
    for (const std::uintptr_t text : texts) {
        EXPECT_TRUE(is_released(text));
    }
}

TEST_F(Diagnostics, ReleaseConfigOfAnEmptyRecord) {
    release_config();
    EXPECT_EQ(g_config.verbose, 0);
    EXPECT_EQ(g_config.port, -1);
    EXPECT_EQ(g_config.waittime, 0);
    EXPECT_EQ(debug_level, -1);
}

} // namespace
