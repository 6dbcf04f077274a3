// What every option says: its green line, its refusals, and where scanning stops.

#include "tests/front/transcript.h"

namespace {

using namespace front_tests;

class Options : public testing::TestWithParam<transcript_case> {};

TEST_P(Options, ShowTheirLinesAndEndAsTyped) {
    expect_transcript(GetParam().line, GetParam().output, GetParam().status);
}

// An extra word ends each of these runs in the parser, so that nothing but the option speaks.
const transcript_case OPTION_ROWS[] = {
    {"Address",
     "-v ON -a 10.0.0.1 extra",
     {green("[lumocmd] Internet service address selected: 10.0.0.1"), tagged_red(MALFORMED)},
     505},
    {"Port",
     "-v ON -d 2000 extra",
     {green("[lumocmd] Port selected: 2000"), tagged_red(MALFORMED)},
     505},
    {"Function",
     "-v ON -f Service_Test extra",
     {green("[lumocmd] Function selected: Service_Test"), tagged_red(MALFORMED)},
     505},
    {"Parameters",
     "-v ON -p 'a| b||c' extra",
     {green("[lumocmd] Parameters selected: a| b||c"), tagged_red(MALFORMED)},
     505},
    {"Socket",
     "-v ON -s /run/s extra",
     {green("[lumocmd] Socket selected: /run/s"), tagged_red(MALFORMED)},
     505},
    {"Url",
     "-v ON -u http://h/p extra",
     {green("[lumocmd] Url selected: http://h/p"), tagged_red(MALFORMED)},
     505},
    {"Waittime",
     "-v ON -w 5 extra",
     {green("[lumocmd] Waittime selected: 5"), tagged_red(MALFORMED)},
     505},
    {"VerboseHasNoLineOfItsOwn", "-v ON extra", {tagged_red(MALFORMED)}, 505},
    {"EmptyTexts",
     "-v ON -a '' -f '' -p '' -s '' -u '' extra",
     {green("[lumocmd] Internet service address selected: "),
      green("[lumocmd] Function selected: "), green("[lumocmd] Parameters selected: "),
      green("[lumocmd] Socket selected: "), green("[lumocmd] Url selected: "),
      tagged_red(MALFORMED)},
     505},
    {"PercentSignsAreText",
     "-v ON -f %s%n -p %d extra",
     {green("[lumocmd] Function selected: %s%n"), green("[lumocmd] Parameters selected: %d"),
      tagged_red(MALFORMED)},
     505},
    {"ArgumentsAttachedToTheirLetters",
     "-vON -tEIBLOCAL -sS -d2000 -fF",
     {green("[lumocmd] EIB Local request selected"), green("[lumocmd] Socket selected: S"),
      green("[lumocmd] Port selected: 2000"), green("[lumocmd] Function selected: F"),
      tagged_red("utility->parse_cmd_line malformed request: socket, function and request "
                 "paremeters required for EIBLOCAL")},
     505},
    {"ArgumentThatLooksLikeAnOption",
     "-v ON -u -f extra",
     {green("[lumocmd] Url selected: -f"), tagged_red(MALFORMED)},
     505},
    {"RepeatedOptionsSpeakEachTime",
     "-v ON -u A -u B -w 1 -w 2 extra",
     {green("[lumocmd] Url selected: A"), green("[lumocmd] Url selected: B"),
      green("[lumocmd] Waittime selected: 1"), green("[lumocmd] Waittime selected: 2"),
      tagged_red(MALFORMED)},
     505},
};
INSTANTIATE_TEST_SUITE_P(Each, Options, testing::ValuesIn(OPTION_ROWS),
                         [](const auto &row) { return row.param.name; });

const transcript_case VERBOSE_ROWS[] = {
    {"OnLowerCase",
     "-v on -u U extra",
     {green("[lumocmd] Url selected: U"), tagged_red(MALFORMED)},
     505},
    {"OnMixedCase",
     "-v oN -u U extra",
     {green("[lumocmd] Url selected: U"), tagged_red(MALFORMED)},
     505},
    {"Off", "-v OFF -u U extra", {red(MALFORMED)}, 505},
    {"OffMixedCase", "-v Off -u U extra", {red(MALFORMED)}, 505},
    {"NeverGiven", "-t SOAP -u U -w 5 extra", {red(MALFORMED)}, 505},
    {"OnlyOptionsAfterOnSpeak",
     "-t SOAP -u U -v ON -w 5",
     {green("[lumocmd] Waittime selected: 5"), tagged_red(SOAP_INCOMPLETE)},
     505},
    {"OnAtTheEndTagsTheFailure", "-t SOAP -u U -v ON", {tagged_red(SOAP_INCOMPLETE)}, 505},
    {"OffAfterOnSilencesTheRest",
     "-v ON -t SOAP -v OFF -u U",
     {green("[lumocmd] Soap request selected"), red(SOAP_INCOMPLETE)},
     505},
    {"OnAgainAfterOff",
     "-v ON -v OFF -u U -v ON -w 5 extra",
     {green("[lumocmd] Waittime selected: 5"), tagged_red(MALFORMED)},
     505},
    {"OtherWordStopsBeforeEveryCheck",
     "-v maybe -d 80x -h extra",
     {red(NOT_PARSED), plain("LMCM-505")},
     505},
    {"EmptyWordStops", "-v '' -v ON extra", {red(NOT_PARSED), plain("LMCM-505")}, 505},
    {"LongerWordStops", "-v ONE extra", {red(NOT_PARSED), plain("LMCM-505")}, 505},
    {"OtherWordLeavesVerboseAsItWas",
     "-v ON -u U -v maybe -v OFF",
     {green("[lumocmd] Url selected: U"), tagged_red(NOT_PARSED), plain("LMCM-505")},
     505},
    {"OtherWordReturnsTheTypeSoFar",
     "-t TECNOUTINTERNET -v maybe -t NOSUCH",
     {red(UNIMPLEMENTED), plain("LMCM-507")},
     507},
};
INSTANTIATE_TEST_SUITE_P(Verbose, Options, testing::ValuesIn(VERBOSE_ROWS),
                         [](const auto &row) { return row.param.name; });

const transcript_case TYPE_ROWS[] = {
    {"UnknownKeyword", "-t NOSUCH", {red(NOT_PARSED), plain("LMCM-505")}, 505},
    {"EmptyKeyword", "-t ''", {red(NOT_PARSED), plain("LMCM-505")}, 505},
    {"KeywordWithALetterMore", "-t SOAPS", {red(NOT_PARSED), plain("LMCM-505")}, 505},
    {"KeywordWithALetterLess", "-t FSMCOR", {red(NOT_PARSED), plain("LMCM-505")}, 505},
    {"KeywordWithABlank", "-t 'SOAP '", {red(NOT_PARSED), plain("LMCM-505")}, 505},
    {"UnknownKeywordStopsBeforeEveryCheck",
     "-v ON -t NOSUCH -d 80x -h extra",
     {tagged_red(NOT_PARSED), plain("LMCM-505")},
     505},
    {"UnknownKeywordReturnsTheTypeSoFar",
     "-v ON -t TECNOUTINTERNET -t NOSUCH -w x",
     {green("[lumocmd] TECNOUT Internet request selected"), tagged_red(UNIMPLEMENTED),
      plain("LMCM-507")},
     507},
    {"UnknownKeywordAfterAnUnsupportedOne",
     "-t IBSLOCAL -t NOSUCH",
     {red("IBS requests unsupported!"), red(NOT_PARSED), plain("LMCM-505")},
     505},
    {"LaterKeywordOverrides",
     "-v ON -t EIBLOCAL -t soap -s S -f F -p P",
     {green("[lumocmd] EIB Local request selected"), green("[lumocmd] Soap request selected"),
      green("[lumocmd] Socket selected: S"), green("[lumocmd] Function selected: F"),
      green("[lumocmd] Parameters selected: P"), tagged_red(SOAP_INCOMPLETE)},
     505},
    {"LaterKeywordOverridesAnUnsupportedOne",
     "-t ECHOBUSLOCAL -t SOAP -u U",
     {red("ECHOBUS requests unsupported!"), red(SOAP_INCOMPLETE)},
     505},
};
INSTANTIATE_TEST_SUITE_P(Type, Options, testing::ValuesIn(TYPE_ROWS),
                         [](const auto &row) { return row.param.name; });

const transcript_case EXTRA_WORD_ROWS[] = {
    {"BehindACompleteRequest", "-t SOAP -u U -f F extra", {red(MALFORMED)}, 505},
    {"BeforeTheOptions",
     "extra -v ON -t SOAP -u U -f F",
     {green("[lumocmd] Soap request selected"), green("[lumocmd] Url selected: U"),
      green("[lumocmd] Function selected: F"), tagged_red(MALFORMED)},
     505},
    {"BetweenTheOptions",
     "-t SOAP extra -v ON -u U more -f F",
     {green("[lumocmd] Url selected: U"), green("[lumocmd] Function selected: F"),
      tagged_red(MALFORMED)},
     505},
    {"AloneWithoutAnyType", "extra", {red(MALFORMED)}, 505},
    {"EmptyWord", "-t SOAP -u U -f F ''", {red(MALFORMED)}, 505},
    {"LoneHyphen", "-t SOAP -u U -f F -", {red(MALFORMED)}, 505},
    {"OptionsBehindTheDoubleHyphen", "-t SOAP -u U -- -f F", {red(MALFORMED)}, 505},
    {"DoubleHyphenAloneIsNoWord", "-t SOAP -u U --", {red(SOAP_INCOMPLETE)}, 505},
    {"ComeBeforeMissingFields", "-t EIBLOCAL extra", {red(MALFORMED)}, 505},
    {"ComeAfterTheOptionValues", "extra -w x", {red(BAD_WAITTIME)}, 502},
    {"BehindAnUnsupportedType",
     "-t BYMELOCAL extra",
     {red("BYME requests unsupported!"), red(MALFORMED)},
     505},
};
INSTANTIATE_TEST_SUITE_P(ExtraWord, Options, testing::ValuesIn(EXTRA_WORD_ROWS),
                         [](const auto &row) { return row.param.name; });

// --- Numbers

struct number_option_case {
    const char *name;
    const char *option;
    const char *complaint; ///< of a refusal
    const char *green_line;
    std::vector<const char *> accepted; ///< shown in the green line as `shown`, or as typed
    const char *shown;                  ///< null: as typed
    std::vector<const char *> refused;
};

class NumberOptions : public testing::TestWithParam<number_option_case> {};

TEST_P(NumberOptions, AcceptAndRefuse) {
    const number_option_case &row = GetParam();
    for (const char *number : row.accepted) {
        const std::string line = std::string("-v ON ") + row.option + " '" + number + "' extra";
        const std::string shown = row.shown != nullptr ? row.shown : number;
        expect_transcript(line.c_str(), {green(row.green_line + shown), tagged_red(MALFORMED)},
                          505);
    }
    for (const char *number : row.refused) {
        const std::string line = std::string("-v ON ") + row.option + " '" + number + "' extra";
        expect_transcript(line.c_str(), {tagged_red(row.complaint)}, 502);
    }
}

const char PORT_LINE[] = "[lumocmd] Port selected: ";
const char WAITTIME_LINE[] = "[lumocmd] Waittime selected: ";

const number_option_case NUMBER_ROWS[] = {
    {"PortBounds", "-d", BAD_PORT, PORT_LINE, {"1025"}, nullptr, {"1024", "1023", "1", "0"}},
    {"PortAboveSixteenBits", "-d", BAD_PORT, PORT_LINE, {"65535", "65536", "70000"}, nullptr, {}},
    {"PortWrittenDifferently",
     "-d",
     BAD_PORT,
     PORT_LINE,
     {"+2000", "02000", " 2000", "\t2000"},
     "2000",
     {}},
    {"PortEmpty", "-d", BAD_PORT, PORT_LINE, {}, nullptr, {"", " "}},
    {"PortNegative", "-d", BAD_PORT, PORT_LINE, {}, nullptr, {"-1", "-2000", "-2147483648"}},
    {"PortTrailingText",
     "-d",
     BAD_PORT,
     PORT_LINE,
     {},
     nullptr,
     {"80x", "2000x", "2000 ", "2000.0", "0x2000", "x"}},
    {"PortThirtyTwoBits",
     "-d",
     BAD_PORT,
     PORT_LINE,
     {"2147483647"},
     nullptr,
     {"2147483648", "4294969296", "-4294965296", "99999999999999999999"}},
    {"WaittimeAnyNumber",
     "-w",
     BAD_WAITTIME,
     WAITTIME_LINE,
     {"0", "5", "-3", "86400"},
     nullptr,
     {}},
    {"WaittimeWrittenDifferently", "-w", BAD_WAITTIME, WAITTIME_LINE, {"+7", "007", " 7"}, "7", {}},
    {"WaittimeEmptyIsZero", "-w", BAD_WAITTIME, WAITTIME_LINE, {""}, "0", {}},
    {"WaittimeTrailingText",
     "-w",
     BAD_WAITTIME,
     WAITTIME_LINE,
     {},
     nullptr,
     {"5x", "5 ", "1.5", "0x10", "x", "-", " "}},
    {"WaittimeThirtyTwoBits",
     "-w",
     BAD_WAITTIME,
     WAITTIME_LINE,
     {"2147483647", "-2147483648"},
     nullptr,
     {"2147483648", "-2147483649", "4294967301", "99999999999999999999"}},
};
INSTANTIATE_TEST_SUITE_P(Table, NumberOptions, testing::ValuesIn(NUMBER_ROWS),
                         [](const auto &row) { return row.param.name; });

const transcript_case REFUSED_NUMBER_ROWS[] = {
    {"PortEndsTheRunAtOnce", "-t SOAP -d 80x -v ON -u U -h extra", {red(BAD_PORT)}, 502},
    {"WaittimeEndsTheRunAtOnce", "-t SOAP -w 80x -v ON -u U -h extra", {red(BAD_WAITTIME)}, 502},
    {"FirstOfTwoDecides", "-w x -d 1", {red(BAD_WAITTIME)}, 502},
    {"GoodPortDoesNotExcuseABadOne",
     "-v ON -d 2000 -d 1",
     {green("[lumocmd] Port selected: 2000"), tagged_red(BAD_PORT)},
     502},
};
INSTANTIATE_TEST_SUITE_P(RefusedNumber, Options, testing::ValuesIn(REFUSED_NUMBER_ROWS),
                         [](const auto &row) { return row.param.name; });

} // namespace
