// The changelog of the Debian packages, the one for users and the build speak of the same releases.

#include "tests/harness/process.h"

#include <ctime>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <regex>

namespace {

using namespace harness;

std::string read_project_file(const std::string &name) {
    std::ifstream file(PROJECT_DIRECTORY "/" + name);
    return {std::istreambuf_iterator<char>(file), {}};
}

/// Midnight of a day such as 2026-11-21 as Debian writes it; nothing for a day that never was.
std::string debian_date(const std::string &day) {
    std::tm time = {};
    if (strptime(day.c_str(), "%Y-%m-%d", &time) == nullptr) {
        return "";
    }
    const std::time_t seconds = timegm(&time);
    char normal[sizeof "2026-11-21"];
    std::strftime(normal, sizeof normal, "%Y-%m-%d", gmtime_r(&seconds, &time));
    char date[64];
    std::strftime(date, sizeof date, "%a, %d %b %Y %T +0000", &time);
    return day == normal ? date : "";
}

/// The failure shows the changelog that the packages need.
TEST(Changelog, HasTheSameReleasesForDebian) {
    const std::string log = read_project_file("CHANGELOG.md");
    const std::regex heading("(?:^|\n)## ([^\n]*)");
    const std::regex release("\\[(\\d+\\.\\d+\\.\\d+)\\] - (\\d{4}-\\d\\d-\\d\\d)");
    std::string newest;
    std::string wanted;
    for (std::sregex_iterator found(log.begin(), log.end(), heading), end; found != end; ++found) {
        const std::string title = (*found)[1];
        std::smatch parts;
        if (!std::regex_match(title, parts, release)) {
            EXPECT_EQ(title, "[Unreleased]");
            EXPECT_EQ(newest, "") << "released before";
            continue;
        }
        newest = newest.empty() ? parts[1].str() : newest;
        const std::string date = debian_date(parts[2]);
        EXPECT_NE(date, "") << "no such day: " << title;
        wanted += wanted.empty() ? "" : "\n";
        wanted += "lumocmd (" + parts[1].str() +
                  ") stable; urgency=medium\n\n"
                  "  * New release; CHANGELOG.md says what is new.\n\n"
                  " -- The Lumotron developers <developers@lumotron.example>  " +
                  date + "\n";
    }
    EXPECT_EQ(newest, LUMOCMD_VERSION);
    EXPECT_EQ(read_project_file("packaging/debian/changelog"), wanted);
}

} // namespace
