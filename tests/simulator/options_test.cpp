// The command line: help, version, and errors that say what to do about it and its files.
#include "tests/protocol/daemons.h"
#include "tests/simulator/simulator_process.h"

#include <gtest/gtest.h>

namespace {

using namespace harness;
using namespace protocol;

/// The names of the daemons in options.
std::string daemon_keys(const char *separator) {
    words keys;
    for (const daemon_row &daemon : daemons()) {
        keys.push_back(lower(daemon.name));
    }
    return joined(keys, separator);
}

const char *const OPTIONS =
    "--directory DIR|--port N|--ready-file FILE|--session ID|--patience MS|--raw|"
    "--answer DAEMON=STATUS|--answer-raw DAEMON=TEXT|--delay DAEMON=MS|--close DAEMON|"
    "--refuse DAEMON|--expect FILE|--any-order|--record FILE|--replay FILE|--forward-sockets DIR|"
    "--forward-url URL|--state FILE|--state-out FILE|--log-format FORMAT|--help|--version";

TEST(Options, AreExplained) {
    const run_result help = run_simulator({"--help"});
    EXPECT_EQ(help.status, 0);
    EXPECT_EQ(help.errors, "");
    for (const std::string &option : entries_of(OPTIONS)) {
        EXPECT_NE(help.output.find("\n  " + option), std::string::npos) << option;
    }
    EXPECT_NE(help.output.find("\nDAEMON is one of:\n  " + daemon_keys(" ") + "\n"),
              std::string::npos)
        << "simulator/daemons.cpp and tests/protocol/ have other daemons: " << help.output;
    EXPECT_NE(help.output.find("\n  demo (demo, DEMO-SESSION)\n  admin (admin, ADMIN-SESSION)\n"),
              std::string::npos);
    EXPECT_EQ(run_simulator({"--version"}).output, "lumosim 1.0.0\n");
}

const std::pair<words, std::string> WRONG[] = {
    {{"--foo"}, "unknown option '--foo'"},
    {{"--port"}, "--port needs N after it"},
    {{"--port", "65536"}, "--port '65536' needs a number from 0 to 65535"},
    {{"--port="}, "--port '' needs a number from 0 to 65535"},
    {{"--directory", ""}, "--directory '' needs the name of a directory"},
    {{"--raw=1"}, "--raw takes no argument"},
    {{"--answer", "fmscore=1"},
     "--answer 'fmscore=1' names no daemon; write one of " + daemon_keys(", ") + "\n"},
    {{"--answer", "fsmcore"}, "--answer 'fsmcore' needs a number from -2147483647 to 2147483647"},
    {{"--answer-raw", "fsmcore=\\x4"}, "--answer-raw 'fsmcore=\\x4' has an escape other than"},
    {{"--answer-raw", "fsmcore=@/nowhere/at/all"}, "names a file that cannot be read"},
    {{"--delay", "fsmcore=-1"}, "--delay 'fsmcore=-1' needs a number from 0 to 3600000"},
    {{"--close", "fsmcore=0"}, "--close 'fsmcore=0' needs a number from 1 to 1000000"},
    {{"--close", "fsmcore="}, "--close 'fsmcore=' needs a number after the equals sign"},
    {{"--refuse", "fsmcore=x"}, "--refuse 'fsmcore=x' needs a number from 1 to 1000000"},
    {{"--refuse", "soap=1"}, "--refuse counts the connections to a socket only, not to soap"},
    {{"--delay", "fsmcore=1,"}, "--delay 'fsmcore=1,' needs a number from 1 to 1000000"},
    {{"--answer", "fsmcore=1,"},
     "--answer 'fsmcore=1,' needs a number from -2147483647 to 2147483647"},
    {{"--expect", ""}, "--expect '' needs the name of a file"},
    {{"--forward-url", "https://house"}, "--forward-url 'https://house' needs an address such as"},
    {{"--forward-url", "http://"}, "needs an address such as"},
    {{"--forward-url", "http://house:x"}, "needs an address such as"},
    {{"--forward-url", "http://" + std::string(100000, 'a')}, "needs an address such as"},
    {{"--log-format", "xml"}, "--log-format 'xml' needs text or json"},
    {{"--any-order"}, "--any-order belongs to --expect"},
    {{"--replay", "x", "--forward-url", "http://house"},
     "only one of --replay and --forward-sockets or --forward-url can be given"},
    {{"--close", "fsmcore", "--answer", "fsmcore=3"},
     "only one of --answer, --answer-raw, --close and --refuse can be given for fsmcore"},
};

TEST(Options, ThatAreWrongAreExplained) {
    for (const auto &[arguments, complaint] : WRONG) {
        SCOPED_TRACE(complaint);
        const run_result seen = run_simulator(arguments);
        EXPECT_EQ(seen.status, 2);
        EXPECT_EQ(seen.output, "");
        EXPECT_TRUE(seen.errors.starts_with("lumosim: ")) << seen.errors;
        EXPECT_NE(seen.errors.find(complaint), std::string::npos) << seen.errors;
        EXPECT_TRUE(seen.errors.ends_with("\nTry 'lumosim --help'.\n")) << seen.errors;
    }
}

/// The text of a file, and the complaint about it.
const std::pair<std::string, std::string> WRONG_LISTS[] = {
    {"FSM: x\n", " line 1: 'FSM: x' is no line of the log"},
    {"\nFSMCORE -> \"x\"\n", " line 2: an answer without a request before it"},
    {"SOAP: x\nSOAP -> x\n", " line 2: the bytes of an answer stand between double quotes"},
    {"SOAP: x\nSOAP -> \"\\q\"\n", " line 2: the bytes hold an unknown escape"},
};

const std::pair<std::string, std::string> WRONG_STATES[] = {
    {"", "[json.exception.parse_error.101] parse error"},
    {"[]", "is no object"},
    {R"({"element": {}})", "unknown part 'element'"},
    {R"({"elements": []})", "'elements': is no object"},
    {R"({"elements": {"A": "ON"}})", "'elements': a record is no object"},
    {R"({"elements": {"A": {"state": "ON"}}})", "'elements': unknown field 'state'"},
    {R"({"elements": {"A": {"value": 7}}})", "'elements': "},
    {R"({"schedules": [1]})", "'schedules': a record is no object"},
    {R"({"messages": "x"})", "'messages': "},
    {R"({"links": []})", "'links': is no object"},
    {R"({"links": {"eib 1/1/3": 7}})", "'links': "},
    {R"({"links": {"bentel 1": "LIVING-LAMP"}})", "'links': 'bentel 1' begins with none of eib, "},
    {R"({"links": {"eib": "LIVING-LAMP"}})", "'links': 'eib' needs a blank and its Destination\n"},
    {R"({"links": {"vivaldi 1": "LIVING-LAMP"}})",
     "'links': 'vivaldi 1' needs a blank and its CentralNumber/RC20_Number\n"},
    {R"({"links": {"vivaldi 1/": "LIVING-LAMP"}})", "'links': 'vivaldi 1/' needs a blank and "},
    {R"({"links": {"vivaldi /1": "LIVING-LAMP"}})", "'links': 'vivaldi /1' needs a blank and "},
    {R"({"links": {"eib 1/1/3": "LAMP"}})",
     "'links': 'eib 1/1/3' leads to 'LAMP', which is no element\n"},
};

TEST(Options, NameFilesThatAreWrong) {
    const temporary_directory directory;
    const std::string path = directory.path + "/file";
    const auto expect_complaint = [&](const words &options, const std::string &complaint) {
        const run_result seen = run(simulator_command(directory.path, options));
        EXPECT_EQ(seen.status, 1);
        EXPECT_EQ(seen.output, "");
        EXPECT_EQ(seen.errors.substr(0, complaint.size()), complaint);
    };
    for (const char *option : {"--expect", "--replay"}) {
        for (const auto &[text, complaint] : WRONG_LISTS) {
            write_file(path, text);
            expect_complaint({option, path}, "lumosim: " + path + complaint + "\n");
        }
        expect_complaint({option, "/not/there"}, "lumosim: cannot read /not/there\n");
    }
    expect_complaint({"--record", "/not/there"},
                     "lumosim: cannot write /not/there; choose another with --record\n");
    for (const auto &[text, complaint] : WRONG_STATES) {
        write_file(path, text);
        expect_complaint({"--state", path}, "lumosim: " + path + ": " + complaint);
    }
}

} // namespace
