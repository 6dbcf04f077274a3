// The manual against the tables that the program and its completions are made from, and against
// mandoc's own taste.

#include "front/option_tables.h"
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

const std::string MANUAL = file_text(PROJECT_DIRECTORY "/man/lumocmd.1");

/// The text of a section, from its heading to the next one.
std::string section(const std::string &heading) {
    const std::size_t start = MANUAL.find(".Sh " + heading + "\n");
    return MANUAL.substr(start, MANUAL.find("\n.Sh ", start + 1) - start);
}

/// What a macro line shows: its words without the macro names and the spacing around bars.
std::string shown(std::string line) {
    line = std::regex_replace(line, std::regex("^\\.(Ar|Op) (Ar )?"), "");
    line = std::regex_replace(line, std::regex(" Ns \\| Ns( Ar )?"), "|");
    return std::regex_replace(line, std::regex(" Ns$"), "");
}

/// "TYPE FUNCTION parameters" for every function of the manual, in its order.
std::string functions_of_the_manual() {
    std::istringstream lines(section("FUNCTIONS"));
    std::string type;
    std::string functions;
    for (std::string line; std::getline(lines, line);) {
        if (line.rfind(".Ss ", 0) == 0) {
            type = line.substr(4);
        } else if (line.rfind(".It Cm ", 0) == 0) {
            functions.append("\n").append(type).append(" ").append(line.substr(7)).append(" ");
        } else if (line == "no parameters") {
            functions += "-";
        } else if (line.rfind(".Op Ar ", 0) == 0) {
            functions.append("[").append(shown(line)).append("]");
        } else if (line.rfind(".Ar ", 0) == 0 &&
                   (functions.back() == ' ' || functions.back() == ']')) {
            functions += shown(line);
        }
    }
    return functions + "\n";
}

/// The same from the table of the completions; FSMCore's functions are anybody's.
std::string functions_of_the_table(const std::string &type) {
    std::istringstream lines(file_text(LUMOCMD_FUNCTION_TABLE));
    std::string functions;
    for (std::string line; std::getline(lines, line);) {
        std::istringstream words(line);
        std::string row_type;
        std::string function;
        std::string parameters;
        if (words >> row_type >> function >> parameters && row_type == type) {
            functions.append("\n").append(row_type).append(" ").append(function).append(" ");
            functions += parameters;
        }
    }
    return functions + "\n";
}

TEST(Manual, NamesEveryFunctionWithItsParameters) {
    const std::string functions = functions_of_the_manual();
    for (const char *type : {"EIBLOCAL", "SMSTOOLLOCAL", "LINTRONICLOCAL", "TECNOUTLOCAL",
                             "VIVALDILOCAL", "BENTELLOCAL", "TUTONDOLOCAL", "SOAP"}) {
        const std::string expected = functions_of_the_table(type);
        EXPECT_GT(expected.size(), 1U) << type;
        EXPECT_NE(functions.find(expected), std::string::npos)
            << "expected:" << expected << "in:" << functions;
    }
}

TEST(Manual, NamesEveryRequestType) {
    const std::string types = section("REQUEST TYPES");
    for (const type_keyword &row : TYPE_KEYWORDS) {
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
    int rows = 0;
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
    EXPECT_EQ(rows, 18);
}

TEST(Manual, PleasesMandoc) {
    for (const char *page : {"lumocmd.1", "lumosim.1"}) {
        const std::string path = std::string(PROJECT_DIRECTORY "/man/") + page;
        const run_result lint = run({"mandoc", "-T", "lint", path});
        std::istringstream lines(lint.output);
        for (std::string line; std::getline(lines, line);) {
            // The two pages refer to each other and need not be installed.
            EXPECT_NE(line.find("referenced manual not found"), std::string::npos) << line;
        }
        EXPECT_LE(lint.status, 1) << lint.errors;
    }
}

} // namespace
