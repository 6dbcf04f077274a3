// The documents against the program's tables, the manuals against what shows them, the changelogs
// against each other, and the pages against the files that they speak of.

#include "tests/harness/process.h"

#include <ctime>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <regex>
#include <sstream>

namespace {

using namespace harness;

std::string file_text(const std::filesystem::path &path) {
    std::ifstream file(path);
    return {std::istreambuf_iterator<char>(file), {}};
}

std::vector<std::smatch> found_in(const std::string &text, const char *pattern) {
    const std::regex regex(pattern);
    return {std::sregex_iterator(text.begin(), text.end(), regex), std::sregex_iterator()};
}

/// The failure shows the lines to paste.
TEST(Documents, ListWhatTheTablesHold) {
    const run_result run = harness::run(
        {LUMOCMD_TABLE_LISTER, "compare", LUMOCMD_SERVICE_DEFINITION, PROJECT_DIRECTORY});
    EXPECT_EQ(run.output, "");
    EXPECT_EQ(run.errors, "");
    EXPECT_EQ(run.status, 0);
}

/// A path stands between backquotes, below the project or the page. A source is named without its
/// suffix, and what the build makes need not be there.
TEST(Documents, SpeakOfFilesThatExist) {
    const std::filesystem::path project = PROJECT_DIRECTORY;
    std::size_t pages = 0;
    for (auto entry = std::filesystem::recursive_directory_iterator(project);
         entry != std::filesystem::recursive_directory_iterator(); ++entry) {
        const std::string name = entry->path().filename();
        if (name == "build" || name.starts_with(".")) {
            entry.disable_recursion_pending();
        }
        if (entry->path().extension() != ".md") {
            continue;
        }
        const std::string text = file_text(entry->path());
        for (const auto &path : found_in(text, "`(?!build/|[^`]*/[A-Z]+`)([a-z]\\w*/[\\w./-]*)`")) {
            bool exists = false;
            for (const auto &from : {project, entry->path().parent_path()}) {
                for (const char *suffix : {"", ".h", ".cpp"}) {
                    exists |= std::filesystem::exists(from / (path[1].str() + suffix));
                }
            }
            EXPECT_TRUE(exists) << entry->path() << " speaks of " << path[1];
        }
        pages++;
    }
    EXPECT_GT(pages, 5U);
}

/// The tests that hold a promise stand between backquotes behind it.
TEST(Documents, NameTestsThatExist) {
    const std::string page = file_text(PROJECT_DIRECTORY "/SECURITY.md");
    const std::size_t start = page.find("| Promise | Held by |");
    const std::string promises = page.substr(start, page.find("\n\n", start) - start);
    std::string tests;
    for (const auto &entry :
         std::filesystem::recursive_directory_iterator(PROJECT_DIRECTORY "/tests")) {
        if (entry.path().extension() == ".cpp" || entry.path().extension() == ".txt") {
            tests += file_text(entry.path());
        }
    }
    const auto names = found_in(promises, "`(\\w+)`");
    EXPECT_GT(names.size(), 5U);
    for (const auto &name : names) {
        EXPECT_TRUE(tests.find("(" + name[1].str() + ",") != std::string::npos ||
                    tests.find("add_executable(" + name[1].str()) != std::string::npos)
            << "SECURITY.md names " << name[1];
    }
}

/// Midnight of a day such as 2026-11-21 as Debian writes it.
std::string debian_date(const std::string &day) {
    std::tm time = {};
    strptime(day.c_str(), "%Y-%m-%d", &time);
    char date[64];
    std::strftime(date, sizeof date, "%a, %d %b %Y %T +0000", &time);
    return date;
}

/// The failure shows the changelog that the packages need.
TEST(Changelog, HasTheSameReleasesForDebian) {
    const std::string log = file_text(PROJECT_DIRECTORY "/CHANGELOG.md");
    std::string wanted;
    for (const auto &release : found_in(log, "\n## \\[(\\d[^\\]]*)\\] - (\\d{4}-\\d\\d-\\d\\d)")) {
        wanted += (wanted.empty() ? "" : "\n") + ("lumocmd (" + release[1].str()) +
                  ") stable; urgency=medium\n\n"
                  "  * New release; CHANGELOG.md says what is new.\n\n"
                  " -- The Lumotron developers <developers@lumotron.example>  " +
                  debian_date(release[2]) + "\n";
    }
    EXPECT_TRUE(wanted.starts_with("lumocmd (" LUMOCMD_VERSION ") ")) << wanted;
    EXPECT_EQ(file_text(PROJECT_DIRECTORY "/packaging/debian/changelog"), wanted);
}

TEST(Manual, HasTheLowEightBitsRight) {
    const std::string manual = file_text(LUMOCMD_MANUALS "/lumocmd.1");
    const auto rows = found_in(manual, "\n\\.It (\\d+) Ta (\\d+) Ta");
    EXPECT_GT(rows.size(), 5U);
    for (const auto &row : rows) {
        EXPECT_EQ(std::stoi(row[1]) & 0xff, std::stoi(row[2])) << row.str();
    }
}

TEST(Manual, PleasesMandocAndFitsATerminalOf60ColumnsInGroff) {
    for (const std::string page : {LUMOCMD_MANUALS "/lumocmd.1", LUMOCMD_MANUALS "/lumosim.1",
                                   PROJECT_DIRECTORY "/docs/man/lumo.sh.7"}) {
        SCOPED_TRACE(page);
        const run_result lint = run({"mandoc", "-T", "lint", page});
        std::istringstream lines(lint.output);
        for (std::string line; std::getline(lines, line);) {
            // The pages refer to each other and need not be installed.
            EXPECT_NE(line.find("referenced manual not found"), std::string::npos) << line;
        }
        EXPECT_LE(lint.status, 1) << lint.errors;
        const run_result shown =
            run({"groff", "-mandoc", "-dAD=l", "-ww", "-rLL=60n", "-Tutf8", "-P-cbou", page});
        EXPECT_EQ(shown.status, 0);
        EXPECT_EQ(shown.errors, "");
        EXPECT_NE(shown.output.find("EXAMPLES"), std::string::npos);
    }
}

} // namespace
