// The command line: help, version, and errors that say what to do.
#include "tests/simulator/daemon_rows.h"
#include "tests/simulator/simulator_process.h"

#include <gtest/gtest.h>

namespace {

TEST(Options, HelpNamesEveryOptionAndDaemon) {
    Program program({"--help"});
    EXPECT_EQ(end_program(program, 0), 0);
    EXPECT_EQ(program.errors, "");
    const std::string daemons = "\n  " + joined_keys(" ") + "\n";
    for (const std::string &word : std::vector<std::string>{"Usage: lumosim",
                                                            "--directory DIR",
                                                            "--port N",
                                                            "--ready-file FILE",
                                                            "--session ID",
                                                            "--patience MS",
                                                            "--raw",
                                                            "--answer DAEMON=STATUS",
                                                            "--answer-raw DAEMON=TEXT",
                                                            "--delay DAEMON=MS",
                                                            "--close DAEMON",
                                                            "--refuse DAEMON",
                                                            "--expect FILE",
                                                            "--any-order",
                                                            "--record FILE",
                                                            "--replay FILE",
                                                            "--forward-sockets DIR",
                                                            "--forward-url URL",
                                                            "--state FILE",
                                                            "--state-out FILE",
                                                            "--log-format FORMAT",
                                                            "--help",
                                                            "--version",
                                                            daemons,
                                                            "DEMO-SESSION",
                                                            "ADMIN-SESSION"}) {
        EXPECT_NE(program.out.find(word), std::string::npos) << word << "\n" << program.out;
    }
}

TEST(Options, Version) {
    Program program({"--version"});
    EXPECT_EQ(end_program(program, 0), 0);
    EXPECT_EQ(program.out, "lumosim 1.0.0\n");
}

struct WrongCase {
    std::vector<std::string> arguments;
    std::string complaint;
};

const WrongCase WRONG[] = {
    {{"--foo"}, "unknown option '--foo'"},
    {{"foo"}, "unknown option 'foo'"},
    {{"--port"}, "--port needs N after it"},
    {{"--port", "65536"}, "--port '65536' needs a number from 0 to 65535"},
    {{"--port", "12x"}, "--port '12x' needs a number from 0 to 65535"},
    {{"--port="}, "--port '' needs a number from 0 to 65535"},
    {{"--directory", ""}, "--directory '' needs the name of a directory"},
    {{"--raw=1"}, "--raw takes no argument"},
    {{"--answer", "ebi=1"},
     "--answer 'ebi=1' names no daemon; write one of " + joined_keys(", ") + "\n"},
    {{"--answer", "eib"}, "--answer 'eib' needs a number from -2147483647 to 2147483647"},
    {{"--answer-raw", "eib=\\q"}, "--answer-raw 'eib=\\q' has an escape other than"},
    {{"--answer-raw", "eib=\\x4"}, "--answer-raw 'eib=\\x4' has an escape other than"},
    {{"--answer-raw", "eib=@/nowhere/at/all"}, "names a file that cannot be read"},
    {{"--delay", "eib=-1"}, "--delay 'eib=-1' needs a number from 0 to 3600000"},
    {{"--close", "eib=0"}, "--close 'eib=0' needs a number from 1 to 1000000"},
    {{"--close", "eib="}, "--close 'eib=' needs a number after the equals sign"},
    {{"--refuse", "eib=x"}, "--refuse 'eib=x' needs a number from 1 to 1000000"},
    {{"--refuse", "soap=1"}, "--refuse counts the connections to a socket only, not to soap"},
    {{"--delay", "eib=1,"}, "--delay 'eib=1,' needs a number from 1 to 1000000"},
    {{"--delay", "eib=,1"}, "--delay 'eib=,1' needs a number from 0 to 3600000"},
    {{"--answer", "eib=1,"}, "--answer 'eib=1,' needs a number from -2147483647 to 2147483647"},
    {{"--answer", "eib=1,x,2"}, "needs a number from -2147483647 to 2147483647"},
    {{"--expect", ""}, "--expect '' needs the name of a file"},
    {{"--forward-sockets", ""}, "--forward-sockets '' needs the name of a directory"},
    {{"--forward-url", "https://house"}, "--forward-url 'https://house' needs an address such as"},
    {{"--forward-url", "http://"}, "needs an address such as"},
    {{"--forward-url", "http://house:x"}, "needs an address such as"},
    {{"--log-format", "xml"}, "--log-format 'xml' needs text or json"},
    {{"--any-order"}, "--any-order belongs to --expect"},
    {{"--replay", "x", "--forward-url", "http://house"},
     "only one of --replay and --forward-sockets or --forward-url can be given"},
    {{"--close", "eib", "--answer", "eib=3"},
     "only one of --answer, --answer-raw, --close and --refuse can be given for eib"},
};

TEST(Options, WrongOnesAreExplained) {
    for (const WrongCase &row : WRONG) {
        Program program(row.arguments);
        EXPECT_EQ(end_program(program, 0), 2) << row.complaint;
        EXPECT_EQ(program.out, "") << row.complaint;
        EXPECT_NE(program.errors.find(std::string("lumosim: ")), std::string::npos);
        EXPECT_NE(program.errors.find(row.complaint), std::string::npos)
            << "expected: " << row.complaint << "\nprinted: " << program.errors;
        EXPECT_TRUE(program.errors.ends_with("Try 'lumosim --help'.\n")) << program.errors;
    }
}

} // namespace
