// What the parser leaves in the request record, which type it names, and what it says of that. What
// else it says, and how it ends the process, is seen from outside.

#include "front/utility.h"
#include "tests/front/fresh_globals.h"
#include "tests/front/transcript.h"
#include "tests/protocol/request_types.h"

#include <unistd.h>
#include <vector>

namespace {

using namespace front_tests;

/// Parses a line; the arguments are overwritten afterwards, so that only copies survive.
int parse(const std::string &line, std::string *output = nullptr) {
    harness::words arguments = typed("lumocmd " + line);
    std::vector<char *> pointers;
    for (std::string &argument : arguments) {
        pointers.push_back(argument.data());
    }
    pointers.push_back(nullptr);
    optind = 0; // starts the option library afresh
    int type = -1;
    const std::string said = harness::captured_output(
        [&] { type = parse_cmd_line(static_cast<int>(arguments.size()), pointers.data()); });
    if (output != nullptr) {
        *output = said;
    }
    for (std::string &argument : arguments) {
        argument.assign(argument.size(), '#');
    }
    return type;
}

/// The fields that are not empty, each behind the letter of its option.
std::string record() {
    const std::pair<char, const char *> texts[] = {{'a', g_config.address},
                                                   {'s', g_config.socket_path},
                                                   {'u', g_config.url},
                                                   {'p', g_config.parameters},
                                                   {'f', g_config.function}};
    const std::pair<char, int> numbers[] = {
        {'v', g_config.verbose}, {'w', g_config.waittime}, {'d', g_config.port}};
    std::string shown;
    for (const auto &[letter, text] : texts) {
        shown += text == nullptr ? "" : std::string(1, letter) + "=" + text + " ";
    }
    for (const auto &[letter, number] : numbers) {
        shown += number == 0 ? "" : std::string(1, letter) + "=" + std::to_string(number) + " ";
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
        {"-t soap -u U -f SERVICE_TEST", 100, "u=U f=SERVICE_TEST "},
        {"-w 5 -a A -d 2000 -s S -u U -p a|b -f F -v ON -t SOAP", 100,
         "a=A s=S u=U p=a|b f=F v=1 w=5 d=2000 "},
        {"-t SOAP -u '' -f '' -p '' -w ''", 100, "u= p= f= "},
        {"-t SOAP -a A -a B -s S -s T -u U -u V -p P -p Q -f F -f G -w 1 -w -2 -d 2000 -d 1025 "
         "-v ON -v OFF",
         100, "a=B s=T u=V p=Q f=G w=-2 d=1025 "},
        {"-t SOAP -u U -t NOSUCH -f F", 100, "u=U "},
        {"-u U -v maybe -t SOAP", 0, "u=U "},
        {"-v ON -w 7 -t IBSLOCAL -v maybe -v OFF", 200, "v=1 w=7 "},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.line);
        g_config = {};
        EXPECT_EQ(parse(row.line), row.type);
        EXPECT_EQ(record(), row.left);
    }
}

TEST_F(Parser, EveryKeywordHasItsCodeInAnyCase) {
    for (const protocol::request_type_row &row : protocol::request_types()) {
        SCOPED_TRACE(row.keyword);
        std::string mixed = row.keyword;
        std::transform(mixed.begin(), mixed.begin() + 2, mixed.begin(), tolower);
        const std::string type = "-t " + mixed;
        std::string output;
        EXPECT_EQ(parse("-v ON " + type + " -v maybe", &output), row.code);
        EXPECT_EQ(output, row.need != nullptr ? harness::green(getpid(), row.line)
                                              : harness::tagged_red(getpid(), row.line));
        if (row.need != nullptr) {
            EXPECT_EQ(parse(type + " -s S -a A -d 1025 -u U -f F -p P"), row.code);
        }
    }
}

} // namespace
