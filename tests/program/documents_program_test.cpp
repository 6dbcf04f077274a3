// The documents against the program's tables, and the pages against the files that they speak of.

#include "tests/harness/process.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <regex>

namespace {

using namespace harness;

/// The failure shows the lines to paste.
TEST(Documents, ListWhatTheTablesHold) {
    const run_result run =
        harness::run({LUMOCMD_TABLE_LISTER, "compare", LUMOCMD_SERVICE_DEFINITION, PROJECT_DIRECTORY});
    EXPECT_EQ(run.output, "");
    EXPECT_EQ(run.errors, "");
    EXPECT_EQ(run.status, 0);
}

/// A path is what stands between backquotes and names a directory of the project first. <NAME> in
/// it stands for any gateway.
TEST(Documents, SpeakOfFilesThatExist) {
    const std::regex path(
        "`((?:front|gateways|fsmcore|webservice|catalogue|simulator|tests|man|"
        "completions|cmake|docs|scripts|packaging|share|examples|fuzz|bench)/[\\w./<>-]*)`");
    std::size_t checked = 0;
    for (const char *page :
         {"README.md", "docs/architecture.md", "docs/extending.md", "docs/protocols.md",
          "docs/controller.md", "docs/recipes.md", "docs/web-service-runtime.md", "docs/cost.md",
          "docs/many-controllers.md", "tests/fuzz/README.md", "SECURITY.md", "CONTRIBUTING.md",
          "CHANGELOG.md", "packaging/README.md"}) {
        std::ifstream file(std::string(PROJECT_DIRECTORY "/") + page);
        const std::string text(std::istreambuf_iterator<char>(file), {});
        EXPECT_FALSE(text.empty()) << page;
        for (std::sregex_iterator found(text.begin(), text.end(), path), end; found != end;
             ++found) {
            const std::string name =
                std::regex_replace((*found)[1].str(), std::regex("<NAME>"), "BENTEL");
            const std::filesystem::path whole = std::string(PROJECT_DIRECTORY "/") + name;
            bool exists = std::filesystem::exists(whole);
            for (const char *suffix : {".h", ".cpp"}) { // a source is named without its suffix
                exists = exists || std::filesystem::exists(whole.string() + suffix);
            }
            EXPECT_TRUE(exists) << page << " speaks of " << name;
            checked++;
        }
    }
    EXPECT_GT(checked, 0U);
}

} // namespace
