// What every option and every request type says, what is refused, and where scanning stops.

#include "tests/front/transcript.h"
#include "tests/protocol/request_types.h"

namespace {

using namespace front_tests;
using protocol::request_type_row;
using protocol::words;

const char BAD_PORT[] =
    "utility->parse_cmd_line bad parameter: service port must be a number and upper than 1024";
const char BAD_WAITTIME[] = "utility->parse_cmd_line bad parameter: waittime must be a number";
const char SOAP_INCOMPLETE[] =
    "utility->parse_cmd_line malformed request: url and function paremeters required for SOAP";

// An extra word ends each run in the parser, so that nothing but the option speaks.
TEST(Options, ShowTheirArguments) {
    const std::pair<const char *, const char *> rows[] = {
        {"-a 10.0.0.1", "Internet service address selected: 10.0.0.1"},
        {"-f Service_Test", "Function selected: Service_Test"},
        {"-p 'a| b||c'", "Parameters selected: a| b||c"},
        {"-s /run/s", "Socket selected: /run/s"},
        {"-u http://h/p", "Url selected: http://h/p"},
        {"-u -f", "Url selected: -f"},
        {"-uU", "Url selected: U"},
        {"-f %s%n", "Function selected: %s%n"},
        {"-p ''", "Parameters selected: "},
        {"-d 1025", "Port selected: 1025"},
        {"-d2147483647", "Port selected: 2147483647"},
        {"-d ' +02000'", "Port selected: 2000"},
        {"-w 5", "Waittime selected: 5"},
        {"-w -2147483648", "Waittime selected: -2147483648"},
        {"-w ''", "Waittime selected: 0"},
    };
    for (const auto &[option, line] : rows) {
        expect_transcript(std::string("-v ON ") + option + " extra",
                          green(line) + tagged_red(MALFORMED), 505);
    }
}

TEST(Options, UnreadableNumbersEndTheRunAtOnce) {
    for (const std::string option :
         {"-d 1024", "-d 0", "-d ''", "-d -2000", "-d 80x", "-d 2000x", "-d '2000 '", "-d 0x2000",
          "-d 4294969296", "-d 99999999999999999999"}) {
        expect_transcript(option + " -v ON -u U -h extra", red(BAD_PORT), 502);
    }
    for (const std::string option : {"-w 5x", "-w '5 '", "-w 1.5", "-w x", "-w -", "-w ' '",
                                     "-w 2147483648", "-w -2147483649"}) {
        expect_transcript(option + " -v ON -u U -h extra", red(BAD_WAITTIME), 502);
    }
}

TEST(Options, AreScannedInTheirOrder) {
    const struct {
        const char *line;
        std::string output;
        int status = 505;
    } rows[] = {
        // -v
        {"-v oN -u U extra", green("Url selected: U") + tagged_red(MALFORMED)},
        {"-v Off -u U extra", red(MALFORMED)},
        {"-t SOAP -u U -v ON -w 5", green("Waittime selected: 5") + tagged_red(SOAP_INCOMPLETE)},
        {"-v ON -t SOAP -v OFF -u U", green("Soap request selected") + red(SOAP_INCOMPLETE)},
        {"-v ON -v OFF -u U -v ON -w 5 -w 6 extra",
         green("Waittime selected: 5") + green("Waittime selected: 6") + tagged_red(MALFORMED)},
        {"-v maybe -d 80x -h extra", red(NOT_PARSED) + plain("LMCM-505")},
        {"-v '' -v ON extra", red(NOT_PARSED) + plain("LMCM-505")},
        {"-v ON -v maybe -v OFF", tagged_red(NOT_PARSED) + plain("LMCM-505")},
        {"-t TECNOUTINTERNET -v maybe -t NOSUCH", red(UNIMPLEMENTED) + plain("LMCM-507"), 507},
        // -t
        {"-v ON -t NOSUCH -d 80x -h extra", tagged_red(NOT_PARSED) + plain("LMCM-505")},
        {"-t ''", red(NOT_PARSED) + plain("LMCM-505")},
        {"-t TECNOUTINTERNET -t NOSUCH -w x", red(UNIMPLEMENTED) + plain("LMCM-507"), 507},
        {"-t IBSLOCAL -t NOSUCH",
         red("IBS requests unsupported!") + red(NOT_PARSED) + plain("LMCM-505")},
        {"-t EIBLOCAL -t soap -s S -f F -p P", red(SOAP_INCOMPLETE)},
        {"-t ECHOBUSLOCAL -t SOAP -u U",
         red("ECHOBUS requests unsupported!") + red(SOAP_INCOMPLETE)},
        // Words that belong to no option.
        {"-t SOAP -u U -f F extra", red(MALFORMED)},
        {"extra -t SOAP -u U -f F", red(MALFORMED)},
        {"-t SOAP extra -v ON -u U more -f F",
         green("Url selected: U") + green("Function selected: F") + tagged_red(MALFORMED)},
        {"-t SOAP -u U -f F ''", red(MALFORMED)},
        {"-t SOAP -u U -f F -", red(MALFORMED)},
        {"-t SOAP -u U -- -f F", red(MALFORMED)},
        {"-t SOAP -u U --", red(SOAP_INCOMPLETE)},
        {"extra -w x", red(BAD_WAITTIME), 502},
    };
    for (const auto &row : rows) {
        expect_transcript(row.line, row.output, row.status);
    }
}

// --- Request types

TEST(RequestTypes, MissEachRequiredFieldByItself) {
    for (const request_type_row &row : protocol::request_types()) {
        for (const std::string &missing : row.need != nullptr ? row.need->required : words{}) {
            std::string line = "-t " + row.keyword + " " + protocol::joined(row.need->idle, " ");
            for (const std::string &given : row.need->required) {
                line += given == missing ? "" : " " + given;
            }
            expect_transcript(line, red(need_message(row)), 505);
        }
    }
}

TEST(RequestTypes, OfTheInternetAreCheckedInFullAndUnimplemented) {
    for (const request_type_row &row : protocol::request_types()) {
        if (row.need == nullptr || row.carried) {
            continue;
        }
        const std::string line = "-t " + row.keyword;
        expect_transcript(line + " -a 10.0.0.1 -d 2000 -f X -p a",
                          red(UNIMPLEMENTED) + plain("LMCM-507"), 507);
        // A field counts as given when its option was, whatever its text.
        expect_transcript(line + " -a '' -d 1025 -f '' -p ''",
                          red(UNIMPLEMENTED) + plain("LMCM-507"), 507);
    }
}

} // namespace
