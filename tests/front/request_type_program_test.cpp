// The request types: what selecting one says, what each requires, and the types without a client.

#include "tests/front/transcript.h"

#include <cctype>

namespace {

using namespace front_tests;

std::string lower(std::string text) {
    for (char &letter : text) {
        letter = static_cast<char>(tolower(letter));
    }
    return text;
}

/// Every second letter in lower case.
std::string mixed(std::string text) {
    for (std::size_t i = 0; i < text.size(); i += 2) {
        text[i] = static_cast<char>(tolower(text[i]));
    }
    return text;
}

// --- Selecting a type

struct keyword_case {
    const char *keyword;
    bool supported;
    const char *line; ///< green when supported, red otherwise
};

const keyword_case KEYWORDS[] = {
    {"SOAP", true, "[lumocmd] Soap request selected"},
    {"FSMCORE", true, "[lumocmd] FSMCore local request selected"},
    {"EIBLOCAL", true, "[lumocmd] EIB Local request selected"},
    {"EIBINTERNET", true, "[lumocmd] EIB Internet request selected"},
    {"ECHOBUSLOCAL", false, "ECHOBUS requests unsupported!"},
    {"ECHOBUSINTERNET", false, "ECHOBUS requests unsupported!"},
    {"MARTINLOCAL", false, "MARTIN requests unsupported!"},
    {"MARTININTERNET", false, "MARTIN requests unsupported!"},
    {"SMSTOOLLOCAL", true, "[lumocmd] SMSTOOL Local request selected"},
    {"SMSTOOLINTERNET", true, "[lumocmd] SMSTOOL Internet request selected"},
    {"LINTRONICLOCAL", true, "[lumocmd] LINTRONIC Local request selected"},
    {"LINTRONICINTERNET", true, "[lumocmd] LINTRONIC Internet request selected"},
    {"TECNOUTLOCAL", true, "[lumocmd] TECNOUT Local request selected"},
    {"TECNOUTINTERNET", true, "[lumocmd] TECNOUT Internet request selected"},
    {"VIVALDILOCAL", true, "[lumocmd] VIVALDI Local request selected"},
    {"VIVALDIINTERNET", true, "[lumocmd] VIVALDI Internet request selected"},
    {"BENTELLOCAL", true, "[lumocmd] BENTEL Local request selected"},
    {"BENTELINTERNET", true, "[lumocmd] BENTEL Internet request selected"},
    {"IBSLOCAL", false, "IBS requests unsupported!"},
    {"IBSINTERNET", false, "IBS requests unsupported!"},
    {"TUTONDOLOCAL", true, "[lumocmd] TUTONDO Local request selected"},
    {"TUTONDOINTERNET", true, "[lumocmd] TUTONDO Internet request selected"},
    {"BYMELOCAL", false, "BYME requests unsupported!"},
    {"BYMEINTERNET", false, "BYME requests unsupported!"},
};

class Keywords : public testing::TestWithParam<keyword_case> {};

// The extra word ends every run in the parser.
TEST_P(Keywords, AreReadInAnyCase) {
    const keyword_case &row = GetParam();
    const std::string keyword = row.keyword;
    for (const std::string &spelling : {keyword, lower(keyword), mixed(keyword)}) {
        const std::string quiet = "-t " + spelling + " extra";
        const std::string loud = "-v ON " + quiet;
        if (row.supported) {
            expect_transcript(quiet.c_str(), {red(MALFORMED)}, 505);
            expect_transcript(loud.c_str(), {green(row.line), tagged_red(MALFORMED)}, 505);
        } else {
            expect_transcript(quiet.c_str(), {red(row.line), red(MALFORMED)}, 505);
            expect_transcript(loud.c_str(), {tagged_red(row.line), tagged_red(MALFORMED)}, 505);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Table, Keywords, testing::ValuesIn(KEYWORDS),
                         [](const auto &row) { return row.param.keyword; });

// --- Required fields

struct required_case {
    const char *keyword;
    std::vector<const char *> required;
    std::vector<const char *> idle; ///< options that this type neither needs nor minds
    const char *message;
};

const std::vector<const char *> LOCAL = {"-s S", "-f F", "-p P"};
const std::vector<const char *> LOCAL_IDLE = {"-a A", "-d 2000", "-u U", "-w 5"};
const std::vector<const char *> INTERNET = {"-a A", "-d 2000", "-f F", "-p P"};
const std::vector<const char *> INTERNET_IDLE = {"-s S", "-u U", "-w 5"};

const required_case REQUIRED[] = {
    {"SOAP",
     {"-u U", "-f F"},
     {"-s S", "-a A", "-d 2000", "-p P", "-w 5"},
     "utility->parse_cmd_line malformed request: url and function paremeters required for SOAP"},
    {"FSMCORE", LOCAL, LOCAL_IDLE,
     "utility->parse_cmd_line malformed request: socket, function and request paremeters required "
     "for FSMCORE"},
    {"EIBLOCAL", LOCAL, LOCAL_IDLE,
     "utility->parse_cmd_line malformed request: socket, function and request paremeters required "
     "for EIBLOCAL"},
    {"SMSTOOLLOCAL", LOCAL, LOCAL_IDLE,
     "utility->parse_cmd_line malformed request: socket, function and request paremeters required "
     "for SMSTOOLLOCAL"},
    {"LINTRONICLOCAL", LOCAL, LOCAL_IDLE,
     "utility->parse_cmd_line malformed request: socket, function and request paremeters required "
     "for LINTRONICLOCAL"},
    {"TECNOUTLOCAL", LOCAL, LOCAL_IDLE,
     "utility->parse_cmd_line malformed request: socket, function and request paremeters required "
     "for TECNOUTLOCAL"},
    {"VIVALDILOCAL", LOCAL, LOCAL_IDLE,
     "utility->parse_cmd_line malformed request: socket, function and request paremeters required "
     "for VIVALDILOCAL"},
    {"BENTELLOCAL", LOCAL, LOCAL_IDLE,
     "utility->parse_cmd_line malformed request: socket, function and request paremeters required "
     "for BENTELLOCAL"},
    {"TUTONDOLOCAL", LOCAL, LOCAL_IDLE,
     "utility->parse_cmd_line malformed request: socket, function and request paremeters required "
     "for TUTONDOLOCAL"},
    {"EIBINTERNET", INTERNET, INTERNET_IDLE,
     "utility->parse_cmd_line malformed request: address, port, function and request paremeters "
     "required for EIBINTERNET"},
    {"SMSTOOLINTERNET", INTERNET, INTERNET_IDLE,
     "utility->parse_cmd_line malformed request: address, port, function and request paremeters "
     "required for SMSTOOLINTERNET"},
    {"LINTRONICINTERNET", INTERNET, INTERNET_IDLE,
     "utility->parse_cmd_line malformed request: address, port, function and request paremeters "
     "required for LINTRONICINTERNET"},
    {"TECNOUTINTERNET", INTERNET, INTERNET_IDLE,
     "utility->parse_cmd_line malformed request: address, port, function and request paremeters "
     "required for TECNOUTINTERNET"},
    {"VIVALDIINTERNET", INTERNET, INTERNET_IDLE,
     "utility->parse_cmd_line malformed request: address, port, function and request paremeters "
     "required for VIVALDIINTERNET"},
    {"BENTELINTERNET", INTERNET, INTERNET_IDLE,
     "utility->parse_cmd_line malformed request: address, port, function and request paremeters "
     "required for BENTELINTERNET"},
    {"TUTONDOINTERNET", INTERNET, INTERNET_IDLE,
     "utility->parse_cmd_line malformed request: address, port, function and request paremeters "
     "required for TUTONDOINTERNET"},
};

class RequiredFields : public testing::TestWithParam<required_case> {};

TEST_P(RequiredFields, EachIsMissedByItself) {
    const required_case &row = GetParam();
    const std::string selected = std::string("-t ") + row.keyword;
    expect_transcript(selected.c_str(), {red(row.message)}, 505);
    for (const char *missing : row.required) {
        std::string line = selected;
        for (const char *given : row.required) {
            line += given == missing ? std::string() : std::string(" ") + given;
        }
        expect_transcript(line.c_str(), {red(row.message)}, 505);
        for (const char *idle : row.idle) {
            line += std::string(" ") + idle;
        }
        expect_transcript(line.c_str(), {red(row.message)}, 505);
    }
}

INSTANTIATE_TEST_SUITE_P(Table, RequiredFields, testing::ValuesIn(REQUIRED),
                         [](const auto &row) { return row.param.keyword; });

// --- Internet types: checked in full, carried by no client

struct internet_case {
    const char *name;
    const char *keyword;
    const char *line; ///< green
};

const internet_case INTERNET_TYPES[] = {
    {"Eib", "EIBINTERNET", "[lumocmd] EIB Internet request selected"},
    {"Smstool", "SMSTOOLINTERNET", "[lumocmd] SMSTOOL Internet request selected"},
    {"Lintronic", "LINTRONICINTERNET", "[lumocmd] LINTRONIC Internet request selected"},
    {"Tecnout", "TECNOUTINTERNET", "[lumocmd] TECNOUT Internet request selected"},
    {"Vivaldi", "VIVALDIINTERNET", "[lumocmd] VIVALDI Internet request selected"},
    {"Bentel", "BENTELINTERNET", "[lumocmd] BENTEL Internet request selected"},
    {"Tutondo", "TUTONDOINTERNET", "[lumocmd] TUTONDO Internet request selected"},
};

class InternetTypes : public testing::TestWithParam<internet_case> {};

TEST_P(InternetTypes, AreUnimplemented) {
    const internet_case &row = GetParam();
    const std::string line = std::string("-t ") + row.keyword + " -a 10.0.0.1 -d 2000 -f X -p a";
    expect_transcript(line.c_str(), {red(UNIMPLEMENTED), plain("LMCM-507")}, 507);
    expect_transcript(
        ("-v ON " + line).c_str(),
        {green(row.line), green("[lumocmd] Internet service address selected: 10.0.0.1"),
         green("[lumocmd] Port selected: 2000"), green("[lumocmd] Function selected: X"),
         green("[lumocmd] Parameters selected: a"), tagged_red(UNIMPLEMENTED), plain("LMCM-507")},
        507);
    // A field counts as given when its option was, whatever its text.
    const std::string empty = std::string("-a '' -d 1025 -f '' -p '' -t ") + row.keyword;
    expect_transcript(empty.c_str(), {red(UNIMPLEMENTED), plain("LMCM-507")}, 507);
}

INSTANTIATE_TEST_SUITE_P(Table, InternetTypes, testing::ValuesIn(INTERNET_TYPES),
                         [](const auto &row) { return row.param.name; });

} // namespace
