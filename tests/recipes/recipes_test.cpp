// Every recipe of docs/recipes.md, run in every shell against a simulated controller of its own:
// what the page shows is what its reader sees, and what the daemons and the system's log get.

#include "tests/recipes/shell_room.h"
#include "tests/simulator/simulator_process.h"

#include <csignal>
#include <fstream>
#include <gtest/gtest.h>
#include <map>
#include <regex>
#include <sstream>

namespace {

using namespace harness;

const char *const PAGE = PROJECT_DIRECTORY "/docs/recipes.md";
const char *const SHOWN_URL = "http://localhost/cgi-bin/lumows";

/// One run of a recipe. "<!-- recipe NAME WORD... -->" begins it; a word "exit=N" is the script's
/// exit status, "programs=NAME" what it needs beside the shell's own, any other an option of the
/// simulator. A fenced block "sh" is the script, else that of the run before is run again; "text"
/// is its output, "requests" the simulator's lines, "syslog" what logger is given.
struct recipe {
    std::string name;
    std::vector<std::string> options;
    std::string program;
    int status = 0;
    std::map<std::string, std::string> blocks;
};

void PrintTo(const recipe &run, std::ostream *out) {
    *out << run.name;
}

recipe read_mark(std::istringstream &words) {
    recipe run;
    words >> run.name;
    for (std::string word; words >> word && word != "-->";) {
        if (word.rfind("exit=", 0) == 0) {
            run.status = std::stoi(word.substr(5));
        } else if (word.rfind("programs=", 0) == 0) {
            run.program = word.substr(9);
        } else {
            run.options.push_back(word);
        }
    }
    return run;
}

std::vector<recipe> read_recipes() {
    std::istringstream lines(file_text(PAGE));
    std::vector<recipe> recipes;
    std::string block;
    for (std::string line; std::getline(lines, line);) {
        std::istringstream words(line);
        std::string mark;
        std::string kind;
        words >> mark >> kind;
        if (mark == "<!--" && kind == "recipe") {
            const recipe *before = recipes.empty() ? nullptr : &recipes.back();
            recipe next = read_mark(words);
            if (before != nullptr && before->name == next.name) {
                next.blocks["sh"] = before->blocks.at("sh");
            }
            recipes.push_back(next);
        } else if (line.rfind("```", 0) == 0) {
            block = block.empty() ? line.substr(3) : "";
            if (!block.empty() && !recipes.empty()) {
                recipes.back().blocks[block].clear();
            }
        } else if (!block.empty() && !recipes.empty()) {
            recipes.back().blocks[block] += line + "\n";
        }
    }
    return recipes;
}

std::string shown(const recipe &run, const char *block) {
    const auto found = run.blocks.find(block);
    return found == run.blocks.end() ? "" : found->second;
}

class Recipe : public testing::TestWithParam<std::tuple<recipe, shell_row>> {};

TEST_P(Recipe, DoesWhatThePageShows) {
    const auto &[recipe, shell] = GetParam();
    Simulator simulator(recipe.options);
    ASSERT_TRUE(simulator.ready) << simulator.program.errors;
    const shell_room room(shell);
    if (!recipe.program.empty()) {
        room.add_program(recipe.program);
    }
    const std::string url =
        "http://127.0.0.1:" + std::to_string(simulator.port) + "/cgi-bin/lumows";
    const std::string script = replaced(shown(recipe, "sh"), SHOWN_URL, url);
    ASSERT_NE(script, "");
    const run_result seen = room.run(script, simulator.home.path);
    EXPECT_EQ(masked(seen.output), masked(shown(recipe, "text")));
    EXPECT_EQ(seen.errors, "");
    EXPECT_EQ(seen.status, recipe.status);
    EXPECT_EQ(file_text(simulator.home.path + "/syslog"), shown(recipe, "syslog"));

    EXPECT_EQ(end_program(simulator.program, SIGTERM), 0) << simulator.program.errors;
    if (recipe.blocks.count("requests") != 0) {
        const std::string said = simulator.program.out;
        const std::string ready = "\nready\n";
        EXPECT_EQ(said.substr(said.find(ready) + ready.size()),
                  shown(recipe, "requests") + "stopped\n");
    }
}

/// The number of the run behind its name, since a name may run again.
std::string row_name(const testing::TestParamInfo<Recipe::ParamType> &row) {
    const auto &[recipe, shell] = row.param;
    return recipe.name + "_" + shell.name + "_" + std::to_string(row.index / SHELLS.size());
}

INSTANTIATE_TEST_SUITE_P(Page, Recipe,
                         testing::Combine(testing::ValuesIn(read_recipes()),
                                          testing::ValuesIn(SHELLS)),
                         row_name);

/// A block that no mark precedes would be run by nobody.
TEST(Recipes, HaveAMarkEach) {
    std::istringstream lines(file_text(PAGE));
    std::string before;
    std::size_t scripts = 0;
    for (std::string line; std::getline(lines, line); before = line) {
        if (line == "```sh") {
            EXPECT_EQ(before.rfind("<!-- recipe ", 0), 0U) << "above script " << scripts;
            scripts++;
        }
    }
    EXPECT_GT(scripts, 0U);
}

/// The example of the library's own manual.
TEST(LibraryManual, ShowsWhatHappens) {
    const std::string page = file_text(PROJECT_DIRECTORY "/man/lumo.sh.7");
    const std::string begin = ".Bd -literal -offset indent\n";
    const std::size_t start = page.find(begin) + begin.size();
    std::string script = page.substr(start, page.find(".Ed\n") - start);
    script = replaced(replaced(script, "\\&", ""), "\\e", "\\");
    Simulator simulator;
    ASSERT_TRUE(simulator.ready);
    const std::string url =
        "http://127.0.0.1:" + std::to_string(simulator.port) + "/cgi-bin/lumows";
    for (const shell_row &shell : SHELLS) {
        const run_result seen =
            shell_room(shell).run(replaced(script, SHOWN_URL, url), simulator.home.path);
        EXPECT_EQ(seen.errors, "") << shell.name;
        ASSERT_NE(seen.output, "") << shell.name;
        const std::string quoted = ".Ql " + seen.output.substr(0, seen.output.size() - 1) + " .\n";
        EXPECT_NE(page.find(quoted), std::string::npos) << shell.name << " prints " << seen.output;
    }
}

TEST(LibraryManual, PleasesMandoc) {
    const run_result lint = run({"mandoc", "-T", "lint", PROJECT_DIRECTORY "/man/lumo.sh.7"});
    std::istringstream lines(lint.output);
    for (std::string line; std::getline(lines, line);) {
        // The pages that it refers to need not be installed.
        EXPECT_NE(line.find("referenced manual not found"), std::string::npos) << line;
    }
    EXPECT_LE(lint.status, 1) << lint.errors;
}

/// Every function and variable that the library keeps for scripts stands in its manual.
TEST(LibraryManual, NamesWhatScriptsUse) {
    const std::string page = file_text(PROJECT_DIRECTORY "/man/lumo.sh.7");
    const std::string recipes = file_text(PAGE);
    const std::regex name("\\b(lumo_[a-z]+|LUMO_[A-Z]+)\\b(?!\\.socket)");
    for (std::sregex_iterator found(recipes.begin(), recipes.end(), name), end; found != end;
         ++found) {
        EXPECT_NE(page.find(found->str()), std::string::npos) << found->str();
    }
    EXPECT_TRUE(std::regex_search(recipes, name));
}

TEST(Recipes, PleaseShellcheck) {
    for (const recipe &recipe : read_recipes()) {
        const temporary_directory directory;
        const std::string file = directory.path + "/" + recipe.name;
        std::ofstream(file) << replaced(shown(recipe, "sh"), INSTALLED_LIBRARY, LIBRARY);
        const run_result seen = run({"shellcheck", "-x", "-s", "sh", file});
        EXPECT_EQ(seen.output, "");
        EXPECT_EQ(seen.status, 0) << seen.errors;
    }
}

} // namespace
