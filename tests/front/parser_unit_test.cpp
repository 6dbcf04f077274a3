// What the parser leaves in the request record and which type it names, for lines that come back
// from it. How it ends the process is seen from outside.

#include "front/utility.h"
#include "tests/front/saved_globals.h"
#include "tests/front/transcript.h"
#include "tests/protocol/request_types.h"

#include <optional>
#include <ostream>
#include <unistd.h>

namespace {

using namespace front_tests;

/// The record, with absent texts told from empty ones.
struct record {
    std::optional<std::string> address = std::nullopt;
    std::optional<std::string> socket_path = std::nullopt;
    std::optional<std::string> url = std::nullopt;
    std::optional<std::string> parameters = std::nullopt;
    std::optional<std::string> function = std::nullopt;
    int verbose = 0;
    int waittime = 0;
    int port = 0;
};

std::optional<std::string> given(const char *text) {
    return text == nullptr ? std::nullopt : std::optional<std::string>(text);
}

struct parse_case {
    const char *name;
    const char *line;
    int type;
    record left;
};

void PrintTo(const parse_case &row, std::ostream *out) {
    *out << row.line;
}

/// Parses a line; the arguments are overwritten afterwards, so that only copies survive.
int parse(const std::string &line) {
    harness::words arguments = typed("lumocmd " + line);
    std::vector<char *> pointers;
    for (std::string &argument : arguments) {
        pointers.push_back(argument.data());
    }
    pointers.push_back(nullptr);
    optind = 0; // starts the option library afresh
    const int type = parse_cmd_line(static_cast<int>(arguments.size()), pointers.data());
    for (std::string &argument : arguments) {
        argument.assign(argument.size(), '#');
    }
    return type;
}

class Parser : public FreshGlobalsWithRow<parse_case> {};

TEST_P(Parser, FillsTheRecord) {
    const record &left = GetParam().left;
    int type = -1;
    harness::captured_output([&] { type = parse(GetParam().line); });
    EXPECT_EQ(type, GetParam().type);
    EXPECT_EQ(given(g_config.address), left.address);
    EXPECT_EQ(given(g_config.socket_path), left.socket_path);
    EXPECT_EQ(given(g_config.url), left.url);
    EXPECT_EQ(given(g_config.parameters), left.parameters);
    EXPECT_EQ(given(g_config.function), left.function);
    EXPECT_EQ(g_config.verbose, left.verbose);
    EXPECT_EQ(g_config.waittime, left.waittime);
    EXPECT_EQ(g_config.port, left.port);
}

const parse_case PARSED[] = {
    {"SoapWithoutParameters",
     "-t soap -u U -f SERVICE_TEST",
     100,
     {.url = "U", .function = "SERVICE_TEST"}},
    {"EveryField",
     "-w 5 -a A -d 2000 -s S -u U -p a|b -f F -v ON -t SOAP",
     100,
     {"A", "S", "U", "a|b", "F", 1, 5, 2000}},
    {"EmptyTextsAreGiven",
     "-t SOAP -u '' -f '' -p '' -w ''",
     100,
     {.url = "", .parameters = "", .function = ""}},
    {"LaterOptionsReplaceEarlierOnes",
     "-t SOAP -a A -a B -s S -s T -u U -u V -p P -p Q -f F -f G -w 1 -w -2 -d 2000 -d 1025 -v ON "
     "-v OFF",
     100,
     {"B", "T", "V", "Q", "G", 0, -2, 1025}},
    {"CaseOfTextsIsKept",
     "-t FSMCORE -s /Run/S -f GetState -p aB",
     120,
     {.socket_path = "/Run/S", .parameters = "aB", .function = "GetState"}},
    {"SoapStoppedByVerbose", "-t SOAP -v maybe -u U", 100, {}},
    {"SoapStoppedByAKeyword", "-t SOAP -u U -t NOSUCH -f F", 100, {.url = "U"}},
    {"StoppedBeforeAnyType", "-u U -v maybe -t SOAP", 0, {.url = "U"}},
    {"UnknownKeyword", "-t NOSUCH -u U", 0, {}},
    {"UnsupportedStopped", "-t IBSLOCAL -v maybe", 200, {}},
    {"SupportedAfterUnsupportedStopped", "-t IBSLOCAL -t EIBLOCAL -v maybe", 101, {}},
    {"StoppedVerboseStaysOn", "-v ON -w 7 -v maybe -v OFF", 0, {.verbose = 1, .waittime = 7}},
};

INSTANTIATE_TEST_SUITE_P(Table, Parser, testing::ValuesIn(PARSED),
                         [](const auto &row) { return row.param.name; });

// --- Type codes

using ParserTypes = FreshGlobals;

TEST_F(ParserTypes, EveryKeywordHasItsCode) {
    for (const protocol::request_type_row &row : protocol::request_types()) {
        SCOPED_TRACE(row.keyword);
        const std::string type = "-t " + row.keyword;
        harness::captured_output([&] {
            EXPECT_EQ(parse(type + " -v maybe"), row.code);
            if (row.need != nullptr) {
                EXPECT_EQ(parse(type + " -s S -a A -d 1025 -u U -f F -p P"), row.code);
            }
        });
    }
}

} // namespace
