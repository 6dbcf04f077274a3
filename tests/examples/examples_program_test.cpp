// Every example that the README and the manual show, run against a simulated controller: what a
// page shows is what its reader sees. Process ids and the port are masked, colours stripped.

#include "tests/harness/process.h"
#include "tests/simulator/simulator_process.h"

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <regex>
#include <sstream>

namespace {

using namespace harness;

/// A command as shown, and the output shown below it.
struct example {
    std::string command;
    std::string output;
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
        } else if (line.rfind("$ ", 0) == 0) {
            examples.push_back({line.substr(2), ""});
        } else if (!examples.empty()) {
            examples.back().output += line + "\n";
            continue;
        }
        continued = !line.empty() && line.back() == '\\';
    }
    return examples;
}

std::string mask(const std::string &text) {
    const std::string plain = std::regex_replace(text, std::regex("\x1b\\[[0-9;]*m"), "");
    const std::string named = std::regex_replace(plain, std::regex("<[0-9]+>"), "<pid>");
    return std::regex_replace(named, std::regex("http://[a-z0-9.:]+/cgi-bin"), "URL/cgi-bin");
}

/// A directory with a `lumocmd` that starts the program under test, whatever wraps it.
struct program_directory {
    program_directory() {
        const char *wrapper = getenv("LUMOCMD_WRAPPER");
        std::ofstream(directory.path + "/lumocmd")
            << "#!/bin/sh\nexec " << (wrapper == nullptr ? "" : wrapper) << " '" << lumocmd_path()
            << "' \"$@\"\n";
        std::filesystem::permissions(directory.path + "/lumocmd", std::filesystem::perms::all);
    }
    temporary_directory directory;
};

void run_examples(const std::vector<example> &examples) {
    running_simulator simulator;
    const program_directory programs;
    const std::string url = "http://127.0.0.1:" + std::to_string(simulator.port) + "/cgi-bin";
    for (const example &shown : examples) {
        SCOPED_TRACE(shown.command);
        const std::string command =
            std::regex_replace(shown.command, std::regex("http://[a-z0-9.:]+/cgi-bin"), url);
        const run_result seen =
            run({"/bin/sh", "-c", "PATH=" + programs.directory.path + ":$PATH\n" + command},
                {.directory = simulator.home.path});
        EXPECT_EQ(mask(seen.output), mask(shown.output));
        EXPECT_EQ(seen.errors, "");
    }
}

TEST(Examples, OfTheReadme) {
    const auto examples = read_examples(PROJECT_DIRECTORY "/README.md", "```console", "```");
    EXPECT_FALSE(examples.empty());
    run_examples(examples);
}

TEST(Examples, OfTheManual) {
    const auto examples =
        read_examples(LUMOCMD_MANUALS "/lumocmd.1", ".Bd -literal -offset indent", ".Ed");
    EXPECT_FALSE(examples.empty());
    run_examples(examples);
}

/// The simulator's examples run until they are stopped.
TEST(Examples, OfTheSimulatorsManual) {
    std::istringstream lines(read_file(LUMOCMD_MANUALS "/lumosim.1"));
    const std::string begin = ".Dl $ lumosim ";
    int examples = 0;
    for (std::string line; std::getline(lines, line);) {
        if (line.rfind(begin, 0) != 0) {
            continue;
        }
        SCOPED_TRACE(line);
        const temporary_directory directory;
        words options = {LUMOSIM_PROGRAM};
        std::istringstream words(line.substr(begin.size()));
        for (std::string word; words >> word;) {
            options.push_back(word == "\\&." ? directory.path : word);
        }
        started_program simulator(options);
        EXPECT_TRUE(simulator.wait_for_output("\nready\n")) << simulator.output();
        EXPECT_EQ(end_program(simulator, SIGTERM).status, 0) << simulator.errors();
        examples++;
    }
    EXPECT_GT(examples, 0);
}

} // namespace
