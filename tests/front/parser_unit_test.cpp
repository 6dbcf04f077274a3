// What the parser leaves in the request record, and which type it names. What it says, and how it
// ends the process, is seen from outside.

#include "front/utility.h"
#include "tests/front/fresh_globals.h"
#include "tests/front/transcript.h"

#include <unistd.h>
#include <vector>

namespace {

using namespace front_tests;

/// Parses a line; the arguments are overwritten afterwards, so that only copies survive.
int parse(const std::string &line) {
    harness::words arguments = typed("lumocmd " + line);
    std::vector<char *> pointers;
    for (std::string &argument : arguments) {
        pointers.push_back(argument.data());
    }
    pointers.push_back(nullptr);
    optind = 0; // starts the option library afresh
    int type = -1;
    harness::captured_output(
        [&] { type = parse_cmd_line(static_cast<int>(arguments.size()), pointers.data()); });
    for (std::string &argument : arguments) {
        argument.assign(argument.size(), '#');
    }
    return type;
}

/// The texts and then the numbers of the record.
std::string record() {
    std::string shown;
    for (const char *text : {g_config.address, g_config.socket_path, g_config.url,
                             g_config.parameters, g_config.function}) {
        shown.append(text == nullptr ? "-" : text).append(" ");
    }
    for (const int number : {g_config.verbose, g_config.waittime, g_config.port}) {
        shown.append(std::to_string(number)).append(" ");
    }
    return shown;
}

using Parser = FreshGlobals;

TEST_F(Parser, FillsTheRecord) {
    const struct {
        const char *line;
        int type;
        const char *left;
    } rows[] = {
        {"-w 5 -a A -d 2000 -s S -u U -p a|b -f F -v ON -t soap", 100, "A S U a|b F 1 5 2000 "},
        {"-t SOAP -u '' -f '' -p '' -w ''", 100, "- -    0 0 0 "},
        {"-t SOAP -a A -a B -s S -s T -u U -u V -p P -p Q -f F -f G -w 1 -w -2 -d 2000 -d 1025 "
         "-v ON -v OFF",
         100, "B T V Q G 0 -2 1025 "},
        {"-t IBSLOCAL -t SOAP -u U -f F", 100, "- - U - F 0 0 0 "},
        {"-t SOAP -u U -t NOSUCH -f F", 100, "- - U - - 0 0 0 "},
        {"-u U -v maybe -t SOAP", 0, "- - U - - 0 0 0 "},
        {"-v ON -w 7 -t IBSLOCAL -v maybe -v OFF", 200, "- - - - - 1 7 0 "},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.line);
        g_config = {};
        EXPECT_EQ(parse(row.line), row.type);
        EXPECT_EQ(record(), row.left);
    }
}

} // namespace
