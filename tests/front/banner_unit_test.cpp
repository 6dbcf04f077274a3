// The banner's title follows the stream that it is given; the other lines do not.

#include "front/utility.h"
#include "tests/harness/console.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

const char TITLE[] = "\n[lumocmd]. Lumotron FSM Daemon Server - Command line Tool.\n";

/// Line by line, with their line feeds.
std::vector<std::string> lines_of(const std::string &text) {
    std::vector<std::string> lines;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t end = std::min(text.find('\n', at), text.size() - 1) + 1;
        lines.push_back(text.substr(at, end - at));
        at = end;
    }
    return lines;
}

void expect_version_and_web_lines(const std::vector<std::string> &lines, std::size_t from) {
    ASSERT_EQ(lines.size(), from + 3);
    EXPECT_EQ(lines[from].find("Version 2.6.16_arlo [rev.7655]."), 0U) << lines[from];
    EXPECT_NE(lines[from + 1].find("web site"), std::string::npos) << lines[from + 1];
    EXPECT_EQ(lines[from + 2], "\n");
}

TEST(Banner, TitleGoesToTheGivenStreamAndTheRestToStandardError) {
    std::string errors;
    const std::string output = harness::captured_output([&errors] {
        testing::internal::CaptureStderr();
        print_banner(stdout);
        errors = testing::internal::GetCapturedStderr();
    });
    EXPECT_EQ(output, TITLE);
    expect_version_and_web_lines(lines_of(errors), 0);
}

TEST(Banner, StandardErrorReceivesEverythingWhenItIsGiven) {
    std::string errors;
    const std::string output = harness::captured_output([&errors] {
        testing::internal::CaptureStderr();
        print_banner(stderr);
        errors = testing::internal::GetCapturedStderr();
    });
    EXPECT_EQ(output, "");
    EXPECT_EQ(errors.substr(0, sizeof TITLE - 1), TITLE);
    expect_version_and_web_lines(lines_of(errors), 2);
}

TEST(Banner, UsageNamesTheProgramAsGiven) {
    std::string errors;
    const std::string output = harness::captured_output([&errors] {
        testing::internal::CaptureStderr();
        print_usage("some/program");
        errors = testing::internal::GetCapturedStderr();
    });
    EXPECT_EQ(output, "");
    EXPECT_NE(errors.find("\n\nUsage: some/program [-v] -t [options t-based]\nOptions:\n"),
              std::string::npos)
        << errors;
}

} // namespace
