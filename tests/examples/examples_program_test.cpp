// Every example that the README and the manual show, run against a simulated controller: what a
// page shows is what its reader sees. Process ids and the port are masked, colours stripped.

#include "tests/protocol/texts.h"
#include "tests/simulator/simulator_process.h"

#include <csignal>
#include <filesystem>
#include <gtest/gtest.h>
#include <regex>
#include <sstream>

namespace {

using namespace harness;

struct example {
    std::string command;
    std::string output; ///< shown below it
};

/// The lines between `begin` and `end` lines, as examples: "$ " starts one, a backslash at the end
/// of a command continues it.
std::vector<example> read_examples(const std::string &path, const std::string &begin,
                                   const std::string &end) {
    std::istringstream lines(read_file(path));
    std::vector<example> examples;
    bool inside = false;
    bool continued = false;
    for (std::string line; std::getline(lines, line);) {
        if (!inside || line == end) {
            inside = !inside && line == begin;
            continue;
        }
        line = std::regex_replace(line, std::regex(R"(\\e)"), "\\"); // the manual's own escape
        if (continued) {
            examples.back().command += "\n" + line;
        } else if (line.starts_with("$ ")) {
            examples.push_back({line.substr(2), ""});
        } else if (!examples.empty()) {
            examples.back().output += line + "\n";
            continue;
        }
        continued = !line.empty() && line.back() == '\\';
    }
    return examples;
}

const std::regex SHOWN_URL("http://[a-z0-9.:]+/cgi-bin/lumows");

std::string mask(const std::string &text) {
    const std::string plain = std::regex_replace(text, std::regex("\x1b\\[[0-9;]*m"), "");
    const std::string named = std::regex_replace(plain, std::regex("<[0-9]+>"), "<pid>");
    return std::regex_replace(named, SHOWN_URL, "URL");
}

/// A page, and the lines around its examples.
const std::string PAGES[][3] = {
    {PROJECT_DIRECTORY "/README.md", "```console", "```"},
    {LUMOCMD_MANUALS "/lumocmd.1", ".Bd -literal -offset indent", ".Ed"},
};

TEST(Examples, OfTheReadmeAndTheManual) {
    // The program under test, whatever wraps it.
    const temporary_directory programs;
    write_file(programs.path + "/lumocmd",
               "#!/bin/sh\nexec '" + protocol::joined(lumocmd_command({}), "' '") + "' \"$@\"\n");
    std::filesystem::permissions(programs.path + "/lumocmd", std::filesystem::perms::all);
    for (const auto &[page, begin, end] : PAGES) {
        running_simulator simulator;
        const std::vector<example> examples = read_examples(page, begin, end);
        EXPECT_FALSE(examples.empty()) << page;
        for (const example &shown : examples) {
            SCOPED_TRACE(shown.command);
            const std::string command = std::regex_replace(shown.command, SHOWN_URL, simulator.url);
            const run_result seen =
                run({"/bin/sh", "-c", "PATH=" + programs.path + ":$PATH\n" + command},
                    {.directory = simulator.home.path});
            EXPECT_EQ(mask(seen.output), mask(shown.output));
            EXPECT_EQ(seen.errors, "");
        }
    }
}

/// The simulator's examples run until they are stopped.
TEST(Examples, OfTheSimulatorsManual) {
    std::istringstream lines(read_file(LUMOCMD_MANUALS "/lumosim.1"));
    const std::string begin = ".Dl $ lumosim ";
    int examples = 0;
    for (std::string line; std::getline(lines, line);) {
        if (!line.starts_with(begin)) {
            continue;
        }
        SCOPED_TRACE(line);
        const temporary_directory directory;
        words command = protocol::split(line.replace(0, begin.size(), LUMOSIM_PROGRAM " "), ' ');
        std::replace(command.begin(), command.end(), std::string("\\&."), directory.path);
        started_program simulator(command);
        EXPECT_TRUE(simulator.wait_for_output("\nready\n")) << simulator.output();
        EXPECT_EQ(end_program(simulator, SIGTERM).status, 0) << simulator.errors();
        examples++;
    }
    EXPECT_GT(examples, 0);
}

} // namespace
