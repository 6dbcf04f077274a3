// That the tests have a row for each daemon and each gateway request of the program.
#include "tests/simulator/daemon_rows.h"
#include "tests/simulator/program_names.h"
#include "tests/simulator/simulator_process.h"

#include <gtest/gtest.h>
#include <iterator>
#include <sstream>

namespace {

/// The names in the line of the help text below this one.
std::set<std::string> listed_names(const std::string &help, const std::string &heading) {
    const std::size_t start = help.find(heading) + heading.size();
    std::istringstream words(help.substr(start, help.find('\n', start) - start));
    return {std::istream_iterator<std::string>(words), {}};
}

TEST(DaemonRows, HoldEveryDaemonOfTheHelpText) {
    Program program({"--help"});
    ASSERT_EQ(end_program(program, 0), 0);
    std::set<std::string> rows;
    for (const DaemonRow &row : DAEMON_ROWS) {
        EXPECT_TRUE(rows.emplace(row.key).second) << row.key << " has two rows";
    }
    EXPECT_EQ(differing_names(listed_names(program.out, "DAEMON is one of:\n"), rows), "")
        << "the tests' rows stand in tests/simulator/daemon_rows.cpp, the program's in "
           "simulator/daemons.cpp";
}

TEST(DaemonRows, HoldEveryFunctionOfTheGateways) {
    std::set<std::string> rows;
    for (const FunctionRow &row : FUNCTION_ROWS) {
        EXPECT_EQ(daemon_row(row.daemon).protocol, Protocol::gateway) << row.daemon;
        const std::string name = std::string(row.daemon) + " " + std::string(row.name);
        EXPECT_TRUE(rows.insert(name).second) << name << " has two rows";
    }
    EXPECT_EQ(differing_names(program_functions(), rows), "")
        << "the tests' rows stand in tests/simulator/daemon_rows.cpp, the program's in "
           "simulator/daemons.cpp";
}

} // namespace
