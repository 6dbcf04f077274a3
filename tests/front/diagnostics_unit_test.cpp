// The coloured lines byte for byte, and the two gates that open and close them.

#include "front/diagnostics.h"
#include "tests/front/fresh_globals.h"
#include "tests/harness/console.h"

#include <string>
#include <unistd.h>

namespace {

using namespace front_tests;
using harness::captured_output;

using Diagnostics = FreshGlobals;

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

TEST_F(Diagnostics, MessagesMayBeEmptyLongNullOrHoldPercentSigns) {
    const std::string message(200000, 'm');
    const char *volatile null_text = nullptr;
    EXPECT_EQ(captured_output([] { error("%s", ""); }), harness::red(""));
    EXPECT_EQ(captured_output([] { error("100%% %s", "100%n"); }), harness::red("100% 100%n"));
    EXPECT_EQ(captured_output([&] { error("'%s'", null_text); }), harness::red("'(null)'"));
    EXPECT_EQ(captured_output([&] { error("%s", message.c_str()); }), harness::red(message));
    g_config.verbose = 1;
    EXPECT_EQ(captured_output([&] { verbose_info("%s", message.c_str()); }),
              harness::green(getpid(), message));
}

} // namespace
