// The command line: help, version, and errors that say what to do.
#include "tests/protocol/daemons.h"
#include "tests/simulator/simulator_process.h"

#include <gtest/gtest.h>

namespace {

using namespace harness;
using namespace protocol;

words daemon_keys() {
    words keys;
    for (const daemon_row &daemon : daemons()) {
        keys.push_back(lower(daemon.name));
    }
    return keys;
}

const char *const OPTIONS =
    "--directory DIR|--port N|--ready-file FILE|--session ID|--patience MS|--raw|"
    "--answer DAEMON=STATUS|--answer-raw DAEMON=TEXT|--delay DAEMON=MS|--close DAEMON|"
    "--refuse DAEMON|--expect FILE|--any-order|--record FILE|--replay FILE|--forward-sockets DIR|"
    "--forward-url URL|--state FILE|--state-out FILE|--log-format FORMAT|--help|--version";

TEST(Options, AreExplained) {
    const run_result help = run({LUMOSIM_PROGRAM, "--help"});
    EXPECT_EQ(help.status, 0);
    EXPECT_EQ(help.errors, "");
    for (const std::string &option : entries_of(OPTIONS)) {
        EXPECT_NE(help.output.find("\n  " + option), std::string::npos) << option;
    }
    EXPECT_NE(help.output.find("\nDAEMON is one of:\n  " + joined(daemon_keys(), " ") + "\n"),
              std::string::npos)
        << "simulator/daemons.cpp and tests/protocol/ have other daemons: " << help.output;
    EXPECT_NE(help.output.find("\n  demo (demo, DEMO-SESSION)\n  admin (admin, ADMIN-SESSION)\n"),
              std::string::npos);
    EXPECT_EQ(run({LUMOSIM_PROGRAM, "--version"}).output, "lumosim 1.0.0\n");
}

struct wrong_row {
    words arguments;
    std::string complaint;
};

const wrong_row WRONG[] = {
    {{"--foo"}, "unknown option '--foo'"},
    {{"foo"}, "unknown option 'foo'"},
    {{"--port"}, "--port needs N after it"},
    {{"--port", "65536"}, "--port '65536' needs a number from 0 to 65535"},
    {{"--port", "12x"}, "--port '12x' needs a number from 0 to 65535"},
    {{"--port="}, "--port '' needs a number from 0 to 65535"},
    {{"--directory", ""}, "--directory '' needs the name of a directory"},
    {{"--raw=1"}, "--raw takes no argument"},
    {{"--answer", "fmscore=1"},
     "--answer 'fmscore=1' names no daemon; write one of " + joined(daemon_keys(), ", ") + "\n"},
    {{"--answer", "fsmcore"}, "--answer 'fsmcore' needs a number from -2147483647 to 2147483647"},
    {{"--answer-raw", "fsmcore=\\q"}, "--answer-raw 'fsmcore=\\q' has an escape other than"},
    {{"--answer-raw", "fsmcore=\\x4"}, "--answer-raw 'fsmcore=\\x4' has an escape other than"},
    {{"--answer-raw", "fsmcore=@/nowhere/at/all"}, "names a file that cannot be read"},
    {{"--delay", "fsmcore=-1"}, "--delay 'fsmcore=-1' needs a number from 0 to 3600000"},
    {{"--close", "fsmcore=0"}, "--close 'fsmcore=0' needs a number from 1 to 1000000"},
    {{"--close", "fsmcore="}, "--close 'fsmcore=' needs a number after the equals sign"},
    {{"--refuse", "fsmcore=x"}, "--refuse 'fsmcore=x' needs a number from 1 to 1000000"},
    {{"--refuse", "soap=1"}, "--refuse counts the connections to a socket only, not to soap"},
    {{"--delay", "fsmcore=1,"}, "--delay 'fsmcore=1,' needs a number from 1 to 1000000"},
    {{"--delay", "fsmcore=,1"}, "--delay 'fsmcore=,1' needs a number from 0 to 3600000"},
    {{"--answer", "fsmcore=1,"},
     "--answer 'fsmcore=1,' needs a number from -2147483647 to 2147483647"},
    {{"--answer", "fsmcore=1,x,2"}, "needs a number from -2147483647 to 2147483647"},
    {{"--expect", ""}, "--expect '' needs the name of a file"},
    {{"--forward-sockets", ""}, "--forward-sockets '' needs the name of a directory"},
    {{"--forward-url", "https://house"}, "--forward-url 'https://house' needs an address such as"},
    {{"--forward-url", "http://"}, "needs an address such as"},
    {{"--forward-url", "http://house:x"}, "needs an address such as"},
    {{"--log-format", "xml"}, "--log-format 'xml' needs text or json"},
    {{"--any-order"}, "--any-order belongs to --expect"},
    {{"--replay", "x", "--forward-url", "http://house"},
     "only one of --replay and --forward-sockets or --forward-url can be given"},
    {{"--close", "fsmcore", "--answer", "fsmcore=3"},
     "only one of --answer, --answer-raw, --close and --refuse can be given for fsmcore"},
};

TEST(Options, ThatAreWrongAreExplained) {
    for (const wrong_row &row : WRONG) {
        words command = row.arguments;
        command.insert(command.begin(), LUMOSIM_PROGRAM);
        const run_result seen = run(command);
        EXPECT_EQ(seen.status, 2) << row.complaint;
        EXPECT_EQ(seen.output, "") << row.complaint;
        EXPECT_TRUE(seen.errors.starts_with("lumosim: ")) << seen.errors;
        EXPECT_NE(seen.errors.find(row.complaint), std::string::npos)
            << "expected: " << row.complaint << "\nprinted: " << seen.errors;
        EXPECT_TRUE(seen.errors.ends_with("\nTry 'lumosim --help'.\n")) << seen.errors;
    }
}

} // namespace
