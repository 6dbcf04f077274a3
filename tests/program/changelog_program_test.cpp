// What the Debian packages' changelogs are made from, and what is said about a file out of form.

#include "tests/harness/process.h"

#include <fstream>
#include <gtest/gtest.h>

namespace {

using namespace harness;

const std::string RELEASE = "# Changelog\n\nAbout the file.\n\n"
                            "## [Unreleased]\n\n### Added\n\n- Not yet.\n\n"
                            "## [1.10.0] - 2026-11-21\n\n### Fixed\n\n- One,\n  two.\n- Three.\n\n";
const std::string OLDER = "## [1.9.0] - 2024-02-29\n\n### Security\n\n- Four.\n";

/// The script's answer to a text, as of version 1.10.0.
run_result read_changelog(const std::string &text, const words &wanted) {
    const temporary_directory directory;
    std::ofstream(directory.path + "/LOG") << text;
    words command = {PROJECT_DIRECTORY "/packaging/debian-changelog", "LOG", "1.10.0"};
    command.insert(command.end(), wanted.begin(), wanted.end());
    return run(command, {.directory = directory.path});
}

TEST(Changelog, IsWrittenForDebianWithoutWhatIsUnreleased) {
    const run_result log = read_changelog(RELEASE + OLDER, {"log", "tool", "Us <us@home.example>"});
    EXPECT_EQ(log.status, 0) << log.errors;
    EXPECT_EQ(log.output, "tool (1.10.0) stable; urgency=medium\n\n"
                          "  * Fixed: One, two.\n"
                          "  * Fixed: Three.\n\n"
                          " -- Us <us@home.example>  Sat, 21 Nov 2026 00:00:00 +0000\n\n"
                          "tool (1.9.0) stable; urgency=medium\n\n"
                          "  * Security: Four.\n\n"
                          " -- Us <us@home.example>  Thu, 29 Feb 2024 00:00:00 +0000\n");
}

TEST(Changelog, BreaksLinesBefore80Columns) {
    const std::string word(36, 'x');
    const run_result log = read_changelog(RELEASE + "- " + word + "\n  " + word + " y\n",
                                          {"log", "tool", "Us <us@home.example>"});
    EXPECT_NE(log.output.find("  * Fixed: " + word + "\n    " + word + " y\n"), std::string::npos)
        << log.output;
}

TEST(Changelog, DatesTheNewestRelease) {
    EXPECT_EQ(read_changelog(RELEASE + OLDER, {"epoch"}).output, "1795219200\n");
}

struct mistake {
    const char *name;
    std::string text;
    const char *complaint;
};

void PrintTo(const mistake &row, std::ostream *out) {
    *out << row.name;
}

class ChangelogMistake : public testing::TestWithParam<mistake> {};

TEST_P(ChangelogMistake, IsNamedWithItsLine) {
    const run_result log = read_changelog(GetParam().text, {"epoch"});
    EXPECT_EQ(log.status, 1);
    EXPECT_EQ(log.errors, std::string("LOG:") + GetParam().complaint + "\n");
}

const mistake MISTAKES[] = {
    {"Title", "# Changes\n", "1: the first line must be \"# Changelog\""},
    {"NoRelease", "# Changelog\n\n## [Unreleased]\n", "3: no release"},
    {"LateUnreleased", RELEASE + "## [Unreleased]\n",
     "19: what is unreleased must come before every release, and once"},
    {"OtherVersion", "# Changelog\n## [1.9.0] - 2026-11-21\n",
     "2: the newest release is 1.9.0, the program is 1.10.0"},
    {"Order", RELEASE + "## [1.11.0] - 2026-11-20\n",
     "19: newer than the release above it: 1.11.0"},
    {"Twice", RELEASE + "## [1.10.0] - 2026-11-21\n",
     "19: newer than the release above it: 1.10.0"},
    {"LaterDay", RELEASE + "## [1.9.0] - 2026-11-22\n",
     "19: newer than the release above it: 1.9.0"},
    {"NoSuchDay", RELEASE + "## [1.9.0] - 2026-02-29\n", "19: no such day: 2026-02-29"},
    {"VersionForm", RELEASE + "## 1.9.0\n", "19: neither a version, a heading nor an entry"},
    {"HeadingForm", RELEASE + "### Repaired\n", "19: neither a version, a heading nor an entry"},
    {"EntryForm", RELEASE + "* Five.\n", "19: neither a version, a heading nor an entry"},
    {"LooseText", RELEASE + "  Five.\n", "19: neither a version, a heading nor an entry"},
    {"EntryUnderNoHeading", RELEASE + "## [1.9.0] - 2024-02-29\n- Five.\n",
     "20: an entry that is under no heading, such as \"### Added\""},
    {"HeadingUnderNoVersion", "# Changelog\n### Added\n", "2: a heading before every version"},
    {"EmptyHeading", RELEASE + "### Added\n" + OLDER, "20: nothing under the heading Added above"},
    {"EmptyVersion", RELEASE + "## [1.9.0] - 2024-02-29\n",
     "19: nothing under the version 1.9.0 above"},
};

INSTANTIATE_TEST_SUITE_P(Form, ChangelogMistake, testing::ValuesIn(MISTAKES),
                         [](const auto &row) { return std::string(row.param.name); });

} // namespace
