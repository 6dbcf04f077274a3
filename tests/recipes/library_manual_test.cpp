// Every script that lumo.sh(7) shows, run in every shell against a simulated controller of its own:
// what the page shows is what its reader sees.

#include "tests/recipes/shell_room.h"

#include <regex>
#include <sstream>

namespace {

using namespace harness;

const char *const PAGE = PROJECT_DIRECTORY "/docs/man/lumo.sh.7";
const char *const BLOCK = ".Bd -literal -offset indent\n";

/// The comment "run NAME OPTION..." begins it, with the simulator's options; then a block is the
/// script, and the next what it prints.
struct shown_script {
    std::string name;
    words options;
    std::string script;
    std::string output;
};

std::vector<shown_script> read_scripts() {
    const std::string page = replaced(replaced(read_file(PAGE), "\\&", ""), "\\e", "\\");
    std::vector<shown_script> scripts;
    std::size_t at = 0;
    while (at != std::string::npos) {
        words comment = protocol::split(text_between(page, at, ".\\\" run ", "\n"), ' ');
        const std::string name = comment[0];
        comment.erase(comment.begin());
        const std::string script = text_between(page, at, BLOCK, ".Ed\n");
        const std::string output = text_between(page, at, BLOCK, ".Ed\n");
        if (at != std::string::npos) {
            scripts.push_back({name, comment, script, output});
        }
    }
    return scripts;
}

TEST_P(InShell, ManualScriptsPrintWhatThePageShows) {
    for (const shown_script &shown : read_scripts()) {
        SCOPED_TRACE(shown.name);
        running_simulator simulator(shown.options);
        const std::string script =
            replaced(shown.script, "http://localhost/cgi-bin/lumows", simulator.url);
        const run_result seen = shell_room(GetParam()).run(script, simulator.home.path);
        EXPECT_EQ(seen.output, shown.output);
        EXPECT_NE(seen.output, "");
        EXPECT_EQ(seen.errors, "");
    }
}

/// A block that nothing runs may be wrong.
TEST(LibraryManual, RunsEveryBlockAndPleasesShellcheck) {
    const std::string page = read_file(PAGE);
    std::size_t blocks = 0;
    for (std::size_t at = 0; (at = page.find(BLOCK, at)) != std::string::npos; at++) {
        blocks++;
    }
    EXPECT_EQ(blocks, 2 * read_scripts().size());
    EXPECT_GT(blocks, 0U);
    const temporary_directory directory;
    const std::string file = directory.path + "/script";
    for (const shown_script &shown : read_scripts()) {
        write_file(file, replaced(shown.script, INSTALLED_LIBRARY, LIBRARY));
        EXPECT_EQ(run({"shellcheck", "-x", "-s", "sh", file}).output, "") << shown.name;
    }
}

TEST(LibraryManual, PleasesMandoc) {
    const run_result lint = run({"mandoc", "-T", "lint", PAGE});
    std::istringstream lines(lint.output);
    for (std::string line; std::getline(lines, line);) {
        // The pages that it refers to need not be installed.
        EXPECT_NE(line.find("referenced manual not found"), std::string::npos) << line;
    }
    EXPECT_LE(lint.status, 1) << lint.errors;
}

/// Every script, every variable of the library and of the scripts, and every function for scripts.
TEST(LibraryManual, NamesWhatScriptsUse) {
    const std::string page = read_file(PAGE);
    std::string used = read_file(LIBRARY) + read_file(PROJECT_DIRECTORY "/docs/recipes.md");
    for (const char *script :
         {"all-lights-off", "arm-alarm", "watch-daemon", "check-daemons", "night-scene"}) {
        EXPECT_NE(page.find(script), std::string::npos) << script;
        used += read_file(std::string(PROJECT_DIRECTORY "/docs/examples/") + script);
    }
    const std::regex name("\\bLUMO_[A-Z]+\\b");
    for (std::sregex_iterator found(used.begin(), used.end(), name), end; found != end; ++found) {
        EXPECT_NE(page.find(found->str()), std::string::npos) << found->str();
    }
    for (const char *function :
         {"call", "retry", "status", "outcome", "value", "get", "item", "list", "alive", "plain"}) {
        EXPECT_NE(page.find(std::string(".It Ic lumo_") + function), std::string::npos) << function;
    }
}

} // namespace
