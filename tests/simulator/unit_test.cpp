// The systemd unit: its command line is tried, and systemd's own reader finds nothing to object to.
#include "tests/simulator/simulator_process.h"

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <sstream>

namespace {

const std::string COMMAND = "ExecStart=/usr/bin/lumosim ";

/// The arguments of the unit's command line.
std::vector<std::string> unit_arguments() {
    const std::string unit = read_file(LUMOSIM_UNIT);
    const std::size_t start = unit.find(COMMAND);
    if (start == std::string::npos) {
        return {};
    }
    const std::size_t end = unit.find('\n', start);
    std::istringstream words(unit.substr(start + COMMAND.size(), end - start - COMMAND.size()));
    return {std::istream_iterator<std::string>(words), {}};
}

void replace_value(std::vector<std::string> &arguments, const std::string &option,
                   const std::string &value) {
    const auto found = std::find(arguments.begin(), arguments.end(), option);
    ASSERT_NE(found, arguments.end()) << option;
    ASSERT_NE(found + 1, arguments.end()) << option;
    *(found + 1) = value;
}

TEST(Unit, StartsASimulator) {
    const FreshDirectory directory;
    std::vector<std::string> arguments = unit_arguments();
    replace_value(arguments, "--directory", directory.path);
    replace_value(arguments, "--port", "0");
    Program program(arguments);
    EXPECT_TRUE(wait_for_output(program, "ready\n")) << program.errors;
    EXPECT_EQ(end_program(program, SIGTERM), 0);
}

TEST(Unit, SatisfiesSystemd) {
    const std::string reader = "/usr/bin/systemd-analyze";
    if (!std::filesystem::exists(reader)) {
        GTEST_SKIP() << "systemd-analyze is not installed";
    }
    // The program need not be installed where the unit will find it.
    const FreshDirectory directory;
    std::string unit = read_file(LUMOSIM_UNIT);
    const std::size_t at = unit.find(COMMAND);
    ASSERT_NE(at, std::string::npos);
    unit.replace(at, COMMAND.size(), "ExecStart=" LUMOSIM_PROGRAM " ");
    const std::string copy = directory.path + "/lumosim.service";
    std::ofstream(copy) << unit;
    Program program(reader, {"verify", "--man=no", copy});
    EXPECT_EQ(end_program(program, 0), 0);
    EXPECT_EQ(program.errors, "");
}

} // namespace
