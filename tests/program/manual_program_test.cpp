// The manuals as they are installed: what the text says beside the lists that it is filled with,
// and what mandoc and groff say about them.

#include "front/request_types.h"
#include "tests/harness/process.h"

#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <regex>
#include <sstream>

namespace {

using namespace harness;

std::string file_text(const std::string &path) {
    std::ifstream file(path);
    return {std::istreambuf_iterator<char>(file), {}};
}

const std::string MANUAL = file_text(LUMOCMD_MANUALS "/lumocmd.1");

/// The text of a section, from its heading to the next one.
std::string section(const std::string &heading) {
    const std::size_t start = MANUAL.find(".Sh " + heading + "\n");
    return MANUAL.substr(start, MANUAL.find("\n.Sh ", start + 1) - start);
}

TEST(Manual, NamesEveryRequestType) {
    const std::string types = section("REQUEST TYPES");
    for (const request_type_row &row : REQUEST_TYPES) {
        EXPECT_TRUE(std::regex_search(types, std::regex("\\b" + std::string(row.keyword) + "\\b")))
            << row.keyword;
    }
}

TEST(Manual, DescribesEveryOption) {
    const std::string description = section("DESCRIPTION");
    for (const char *option : {"v", "t", "s", "u", "f", "p", "w", "a", "d", "h", "\\&?"}) {
        EXPECT_TRUE(description.find(".It Fl " + std::string(option)) != std::string::npos ||
                    description.find(", Fl " + std::string(option)) != std::string::npos)
            << option;
    }
}

TEST(Manual, HasTheLowEightBitsRight) {
    // "101, 105 to 107" is seen as "101, 105 to 107", "901, 905 to 907" as "133, 137 to 139".
    const std::string status = section("EXIT STATUS");
    const std::regex row("\\.It ([0-9, to]+) Ta ([0-9, to]+) Ta");
    const std::regex number("[0-9]+");
    std::size_t rows = 0;
    for (std::sregex_iterator it(status.begin(), status.end(), row), none; it != none; ++it) {
        const std::string codes = (*it)[1];
        std::string seen;
        std::size_t end = 0;
        for (std::sregex_iterator code(codes.begin(), codes.end(), number); code != none; ++code) {
            const auto at = static_cast<std::size_t>(code->position());
            seen += codes.substr(end, at - end) + std::to_string(std::stoi(code->str()) & 0xff);
            end = at + code->str().size();
        }
        EXPECT_EQ((*it)[2].str(), seen) << codes;
        rows++;
    }
    const std::regex any_row("\\.It [0-9]");
    const auto first = std::sregex_iterator(status.begin(), status.end(), any_row);
    EXPECT_EQ(rows, static_cast<std::size_t>(std::distance(first, std::sregex_iterator())));
    EXPECT_GT(rows, 0U);
}

const char *const PAGES[] = {LUMOCMD_MANUALS "/lumocmd.1", LUMOCMD_MANUALS "/lumosim.1",
                             PROJECT_DIRECTORY "/docs/man/lumo.sh.7"};

TEST(Manual, PleasesMandoc) {
    for (const char *page : PAGES) {
        const run_result lint = run({"mandoc", "-T", "lint", page});
        std::istringstream lines(lint.output);
        for (std::string line; std::getline(lines, line);) {
            // The pages refer to each other and need not be installed.
            EXPECT_NE(line.find("referenced manual not found"), std::string::npos) << line;
        }
        EXPECT_LE(lint.status, 1) << page << lint.errors;
    }
}

TEST(Manual, FitsATerminalOf60ColumnsInGroff) {
    for (const char *page : PAGES) {
        const run_result shown =
            run({"groff", "-mandoc", "-dAD=l", "-ww", "-rLL=60n", "-Tutf8", "-P-cbou", page});
        EXPECT_EQ(shown.status, 0) << page;
        EXPECT_EQ(shown.errors, "") << page;
        EXPECT_NE(shown.output.find("EXAMPLES"), std::string::npos) << page;
    }
}

} // namespace
