// The request types: what selecting one says, what each requires, and the types without a client.

#include "tests/front/transcript.h"
#include "tests/protocol/request_types.h"

#include <cctype>

namespace {

using namespace front_tests;
using namespace protocol;

/// Every second letter in lower case.
std::string mixed(std::string text) {
    for (std::size_t i = 0; i < text.size(); i += 2) {
        text[i] = static_cast<char>(tolower(text[i]));
    }
    return text;
}

bool is_supported(const request_type_row &row) {
    return row.need != nullptr;
}

bool has_no_client(const request_type_row &row) {
    return is_supported(row) && !row.carried;
}

constexpr auto KEYWORD_OF_ROW = [](const auto &row) { return row.param.keyword; };

// --- Selecting a type

class Keywords : public testing::TestWithParam<request_type_row> {};

// The extra word ends every run in the parser.
TEST_P(Keywords, AreReadInAnyCase) {
    const request_type_row &row = GetParam();
    for (const std::string &spelling : {row.keyword, lower(row.keyword), mixed(row.keyword)}) {
        const std::string quiet = "-t " + spelling + " extra";
        const std::string loud = "-v ON " + quiet;
        if (is_supported(row)) {
            expect_transcript(quiet.c_str(), {red(MALFORMED)}, 505);
            expect_transcript(loud.c_str(), {green(row.line), tagged_red(MALFORMED)}, 505);
        } else {
            expect_transcript(quiet.c_str(), {red(row.line), red(MALFORMED)}, 505);
            expect_transcript(loud.c_str(), {tagged_red(row.line), tagged_red(MALFORMED)}, 505);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Rows, Keywords, testing::ValuesIn(request_types()), KEYWORD_OF_ROW);

// --- Required fields

class RequiredFields : public testing::TestWithParam<request_type_row> {};

TEST_P(RequiredFields, EachIsMissedByItself) {
    const request_type_row &row = GetParam();
    const std::string selected = "-t " + row.keyword;
    expect_transcript(selected.c_str(), {red(need_message(row))}, 505);
    for (const std::string &missing : row.need->required) {
        std::string line = selected;
        for (const std::string &given : row.need->required) {
            line += given == missing ? "" : " " + given;
        }
        expect_transcript(line.c_str(), {red(need_message(row))}, 505);
        for (const std::string &idle : row.need->idle) {
            line += " " + idle;
        }
        expect_transcript(line.c_str(), {red(need_message(row))}, 505);
    }
}

INSTANTIATE_TEST_SUITE_P(Rows, RequiredFields, testing::ValuesIn(request_types_that(is_supported)),
                         KEYWORD_OF_ROW);

/// One message per set of fields, spelt out.
const transcript_case SPELT_MESSAGES[] = {
    {"Url", "-t SOAP", {red(SOAP_INCOMPLETE)}, 505},
    {"Socket",
     "-t TUTONDOLOCAL",
     {red("utility->parse_cmd_line malformed request: socket, function and request paremeters "
          "required for TUTONDOLOCAL")},
     505},
    {"Address",
     "-t TUTONDOINTERNET",
     {red("utility->parse_cmd_line malformed request: address, port, function and request "
          "paremeters required for TUTONDOINTERNET")},
     505},
};

TEST(RequiredFieldsRules, MessagesInFull) {
    for (const transcript_case &row : SPELT_MESSAGES) {
        expect_transcript(row.line, row.output, row.status);
    }
}

// --- Internet types: checked in full, carried by no client

class InternetTypes : public testing::TestWithParam<request_type_row> {};

TEST_P(InternetTypes, AreUnimplemented) {
    const request_type_row &row = GetParam();
    const std::string line = "-t " + row.keyword + " -a 10.0.0.1 -d 2000 -f X -p a";
    expect_transcript(line.c_str(), {red(UNIMPLEMENTED), plain("LMCM-507")}, 507);
    expect_transcript(
        ("-v ON " + line).c_str(),
        {green(row.line), green("[lumocmd] Internet service address selected: 10.0.0.1"),
         green("[lumocmd] Port selected: 2000"), green("[lumocmd] Function selected: X"),
         green("[lumocmd] Parameters selected: a"), tagged_red(UNIMPLEMENTED), plain("LMCM-507")},
        507);
    // A field counts as given when its option was, whatever its text.
    const std::string empty = "-a '' -d 1025 -f '' -p '' -t " + row.keyword;
    expect_transcript(empty.c_str(), {red(UNIMPLEMENTED), plain("LMCM-507")}, 507);
}

INSTANTIATE_TEST_SUITE_P(Rows, InternetTypes, testing::ValuesIn(request_types_that(has_no_client)),
                         KEYWORD_OF_ROW);

} // namespace
