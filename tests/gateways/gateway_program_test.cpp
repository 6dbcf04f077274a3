// The gateways end to end: the real program against a scripted daemon.

#include "tests/harness/console.h"
#include "tests/harness/peer.h"
#include "tests/harness/process.h"

#include <gtest/gtest.h>
#include <unistd.h>

namespace {

using namespace harness;

/// A gateway as a user of the command line meets it.
struct gateway_row {
    const char *keyword;
    const char *selected; ///< progress line of the keyword
    const char *socket;   ///< usual name of the daemon's socket
    const char *function;
    const char *lower_case_function;
    const char *parameters;
    const char *lines; ///< what is sent behind the first line
    const char *prefix;
    const char *own_number; ///< a number that the daemon answers, and how it is shown
    const char *own_text;
    int own_status;
    const char *refused_message; ///< without the function name
    const char *refused_text;
    int refused_status;
    const char *number_message; ///< of an answer with a bad number
    const char *tag_message;    ///< of an answer without a status line
    const char *answer_text;
    int answer_status;
    const char *receive_message; ///< of a reset connection, up to the function name
    const char *mark;            ///< around the function name in the messages
};

// Exit statuses are what is left of the code in eight bits: 105 stays, 805 becomes 37.
const gateway_row GATEWAYS[] = {
    {"EIBLOCAL",
     "EIB Local request selected",
     "lumo_eibgateway.socket",
     "SENDEIBUSSETDATAGRAM",
     "sendeibussetdatagram",
     "hall|1/2/3|1|on",
     "SectionName: hall\nDestination: 1/2/3\nEISType: 1\nPayload: on\n\n",
     "EIBG-",
     "102",
     "EIBG-102\n",
     102,
     "EIBGatewayutil->eibgateway_local_request error opening socket EIBGateway clientside for "
     "function ",
     "EIBG-105\n",
     105,
     "EIBGatewayutil->eibgateway_local_request error strtol with error 'Success' for function ",
     "EIBGatewayutil->eibgateway_local_request strtok parsing 'Response Status: ' response tag "
     "failed for function ",
     "EIBG-107\n",
     107,
     "EIBGatewayutil->eibgateway_local_request recv reading response failed with error "
     "'Connection reset by peer' for function ",
     ""},
    {"SMSTOOLLOCAL",
     "SMSTOOL Local request selected",
     "lumo_smstoolgateway.socket",
     "RECVSMSTOOLDATAGRAM",
     "recvsmstooldatagram",
     "+39055|good day",
     "From: +39055\nMsg: good day\n\n",
     "SMST-",
     "0802",
     "SMST-802\n",
     34,
     "SMSTOOLGatewayutil->smstoolgateway_local_request error opening socket SMSTOOLGateway "
     "clientside for function ",
     "SMST-805\n",
     37,
     "SMSTGatewayutil->smstoolgateway_local_request error strtol with error 'Success' for "
     "function ",
     "SMSTOOLGatewayutil->smstoolgateway_local_request strtok parsing 'Response Status: ' response "
     "tag failed for function ",
     "SMST-807\n",
     39,
     "SMSTOOLGatewayutil->smstoolgateway_local_request recv reading response failed with error "
     "'Connection reset by peer' for function ",
     "'"},
    {"LINTRONICLOCAL",
     "LINTRONIC Local request selected",
     "lumo_lintronicgateway.socket",
     "SENDLINTRONICDATAGRAM",
     "sendlintronicdatagram",
     "cellar|07|012|on",
     "SectionName: cellar\nDevice: 07\nCommand: 012\nPayload: on\n\n",
     "LINT-",
     "1002",
     "LINT-1002\n",
     234,
     "LINTRONICGatewayutil->lintronicgateway_local_request error opening socket LINTRONICGateway "
     "clientside for function ",
     "LINT-1005\n",
     237,
     "LINTGatewayutil->lintronicgateway_local_request error strtol with error 'Success' for "
     "function ",
     "LINTRONICGatewayutil->lintronicgateway_local_request strtok parsing 'Response Status: ' "
     "response tag failed for function ",
     "LINT-1007\n",
     239,
     "LINTRONICGatewayutil->lintronicgateway_local_request recv reading response failed with "
     "error 'Connection reset by peer' for function ",
     "'"},
    {"TECNOUTLOCAL",
     "TECNOUT Local request selected",
     "lumo_tecnoutgateway.socket",
     "SENDTECNOUTCOMMANDDATAGRAM",
     "sendtecnoutcommanddatagram",
     "alarm|1234|arm|all",
     "SectionName: alarm\nUserCode: 1234\nCommand: arm\nPayload: all\n\n",
     "TECG-",
     "1207",
     "TECN-1207\n",
     183,
     "TECNOUTGatewayutil->tecnoutgateway_local_request error opening socket TECNOUTGateway "
     "clientside for function ",
     "TECN-1205\n",
     181,
     "TECNOUTGatewayutil->tecnoutgateway_local_request error strtol with error 'Success' for "
     "function ",
     "TECNOUTGatewayutil->tecnoutgateway_local_request strtok parsing 'Response Status: ' response "
     "tag failed for function ",
     "TECN-1207\n",
     183,
     "TECNOUTGatewayutil->tecnoutgateway_local_request recv reading response failed with error "
     "'Connection reset by peer' for function ",
     "'"},
    {"VIVALDILOCAL",
     "VIVALDI Local request selected",
     "lumo_vivaldigateway.socket",
     "SENDVIVALDISETDATAGRAM",
     "sendvivaldisetdatagram",
     "music|1|2|3|4|5|6|7|8|9|10",
     "SectionName: music\nCentralNumber: 1\nCommand: 1\nRC20_Number: 2\nRC20_OnOff: 3\n"
     "RC20_Volume: 4\nRC20_High: 5\nRC20_Low: 6\nRC20_Channel: 7\nRC20_Cd: 8\nRC20_Track: 9\n"
     "RC20_Tuner: 10\n\n",
     "VIVG-",
     "902",
     "VIVG-0902\n",
     134,
     "VIVALDIGatewayutil->vivaldigateway_local_request error opening socket VIVALDIGateway "
     "clientside for function ",
     "VIVG-0905\n",
     137,
     "VIVALDIGatewayutil->vivaldigateway_local_request error strtol with error 'Success' for "
     "function ",
     "VIVALDIGatewayutil->vivaldigateway_local_request strtok parsing 'Response Status: ' response "
     "tag failed for function ",
     "VIVG-0907\n",
     139,
     "VIVALDIGatewayutil->vivaldigateway_local_request recv reading response failed with error "
     "'Connection reset by peer' for function ",
     "'"},
    {"BENTELLOCAL",
     "BENTEL Local request selected",
     "lumo_bentelgateway.socket",
     "SENDBENTELCOMMANDDATAGRAM",
     "sendbentelcommanddatagram",
     "alarm|1234|arm|all",
     "SectionName: alarm\nUserCode: 1234\nCommand: arm\nPayload: all\n\n",
     "BENG-",
     "0003",
     "FSMC-003\n",
     3,
     "BENTELGatewayutil->bentelgateway_local_request error opening socket BENTELGateway clientside "
     "for function ",
     "BENT-1305\n",
     25,
     "BENTELGatewayutil->bentelgateway_local_request error strtol with error 'Success' for "
     "function ",
     "BENTELGatewayutil->bentelgateway_local_request strtok parsing 'Response Status: ' response "
     "tag failed for function ",
     "BENT-1307\n",
     27,
     "BENTELGatewayutil->bentelgateway_local_request recv reading response failed with error "
     "'Connection reset by peer' for function ",
     "'"},
    {"TUTONDOLOCAL",
     "TUTONDO Local request selected",
     "lumo_tutondogateway.socket",
     "SENDTUTONDOSETDATAGRAM",
     "sendtutondosetdatagram",
     "music|3|volume|20",
     "SectionName: music\nCommand: volume\nZone_Number: 3\nPayload: 20\n\n",
     "TUTG-",
     "1502",
     "TUTG-1502\n",
     222,
     "TUTONDOGatewayutil->tutondogateway_local_request error opening socket TUTONDOGateway "
     "clientside for function ",
     "TUTG-1505\n",
     225,
     "TUTONDOGatewayutil->tutondogateway_local_request error strtol with error 'Success' for "
     "function ",
     "TUTONDOGatewayutil->tutondogateway_local_request strtok parsing 'Response Status: ' response "
     "tag failed for function ",
     "TUTG-1507\n",
     227,
     "TUTONDOGatewayutil->tutondogateway_local_request recv reading response failed with error "
     "'Connection reset by peer' for function ",
     "'"},
};

class GatewayProgram : public testing::TestWithParam<gateway_row> {
  protected:
    const gateway_row &row = GetParam();
    temporary_directory directory;
    std::string path = directory.path + "/" + row.socket;

    words command(const words &options = {}) const {
        words all = options;
        const words rest = {"-t", row.keyword,  "-s", path,
                            "-f", row.function, "-p", row.parameters};
        all.insert(all.end(), rest.begin(), rest.end());
        return all;
    }

    std::string request(const char *function) const {
        return std::string("Request: ") + function + "\n" + row.lines;
    }

    std::string answer(const char *number) const {
        return std::string("Response Status: ") + row.prefix + number + "\n";
    }

    /// The progress lines of command({"-v", "ON"}).
    std::string progress(pid_t pid) const {
        return green(pid, std::string("[lumocmd] ") + row.selected) +
               green(pid, "[lumocmd] Socket selected: " + path) +
               green(pid, std::string("[lumocmd] Function selected: ") + row.function) +
               green(pid, std::string("[lumocmd] Parameters selected: ") + row.parameters);
    }

    std::string named(const char *message) const {
        return std::string(message) + row.mark + row.function + row.mark;
    }

    static void expect_run(const run_result &run, const std::string &output, int status) {
        EXPECT_EQ(run.output, output);
        EXPECT_EQ(run.errors, "");
        EXPECT_EQ(run.status, status);
    }
};

TEST_P(GatewayProgram, AnsweredRequest) {
    struct {
        words options;
        const char *number;
        const char *text;
        int status;
    } const runs[] = {{{}, "0000", "LMCM-0000\n", 0},
                      {{"-v", "OFF"}, row.own_number, row.own_text, row.own_status},
                      {{"-v", "ON"}, row.own_number, row.own_text, row.own_status}};
    for (const auto &wanted : runs) {
        unlink(path.c_str());
        peer daemon(path, {expect(request(row.function)), reply(answer(wanted.number))});
        const run_result run = lumocmd(command(wanted.options));
        const bool shown = wanted.options == words{"-v", "ON"};
        expect_run(run, (shown ? progress(run.pid) : "") + wanted.text, wanted.status);
        EXPECT_EQ(daemon.finish(), "");
    }
}

TEST_P(GatewayProgram, LowerCaseAndARelativeSocket) {
    peer daemon(path, {expect(request(row.lower_case_function)), reply(answer("0"))});
    expect_run(lumocmd({"-t", row.keyword, "-s", row.socket, "-f", row.lower_case_function, "-p",
                        row.parameters},
                       {.directory = directory.path}),
               "LMCM-0000\n", 0);
    EXPECT_EQ(daemon.finish(), "");
}

TEST_P(GatewayProgram, ConnectionRefused) {
    const char connector[] = "utility->make_localtcpclient_socket connect failed with error 'No "
                             "such file or directory'";
    expect_run(lumocmd(command()),
               red(connector) + red(named(row.refused_message)) + row.refused_text,
               row.refused_status);
    const run_result run = lumocmd(command({"-v", "ON"}));
    expect_run(run,
               progress(run.pid) + tagged_red(run.pid, connector) +
                   tagged_red(run.pid, named(row.refused_message)) + row.refused_text,
               row.refused_status);
}

TEST_P(GatewayProgram, UnreadableAnswer) {
    struct {
        script steps;
        const char *message;
    } const runs[] = {{{collect_until("\n\n"), reply(answer("0003\r"))}, row.number_message},
                      {{collect_until("\n\n"), close_connection()}, row.tag_message},
                      {{await_bytes(), close_connection()}, row.receive_message}};
    for (const auto &wanted : runs) {
        SCOPED_TRACE(wanted.message);
        unlink(path.c_str());
        peer daemon(path, wanted.steps);
        const run_result run = lumocmd(command({"-v", "ON"}));
        expect_run(run,
                   progress(run.pid) + tagged_red(run.pid, named(wanted.message)) + row.answer_text,
                   row.answer_status);
        EXPECT_EQ(daemon.finish(), "");
    }
}

INSTANTIATE_TEST_SUITE_P(Table, GatewayProgram, testing::ValuesIn(GATEWAYS),
                         [](const auto &row) { return row.param.keyword; });

const char BENTEL[] = "SENDBENTELCOMMANDDATAGRAM";

TEST(GatewayProgramRules, LineFeedInAValueSplitsItsLine) {
    const temporary_directory directory;
    const std::string path = directory.path + "/s";
    peer daemon(path, {expect("Request: SENDBENTELCOMMANDDATAGRAM\nSectionName: a\nUserCode: b\n"
                              "Injected: c\nCommand: d\nPayload: e\n\n"),
                       reply("Response Status: BENG-0000\n")});
    const run_result run =
        lumocmd({"-t", "BENTELLOCAL", "-s", path, "-f", BENTEL, "-p", "a|b\nInjected: c|d|e"});
    EXPECT_EQ(daemon.finish(), "");
    EXPECT_EQ(run.output, "LMCM-0000\n");
    EXPECT_EQ(run.status, 0);
}

/// Whether the daemon is gone before or after the request was sent, the process reports it and
/// lives on to print its last line.
TEST(GatewayProgramRules, DaemonThatClosesAtOnceDoesNotEndTheProcess) {
    for (int i = 0; i < 20; i++) {
        const temporary_directory directory;
        const std::string path = directory.path + "/s";
        peer daemon(path, {close_connection()});
        const run_result run =
            lumocmd({"-t", "BENTELLOCAL", "-s", path, "-f", BENTEL, "-p", "a|b|c|d"});
        EXPECT_EQ(daemon.finish(), "");
        if (run.status == (1306 & 0xff)) {
            EXPECT_EQ(run.output,
                      red("BENTELGatewayutil->bentelgateway_local_request send writing request "
                          "failed with error 'Broken pipe' for function "
                          "'SENDBENTELCOMMANDDATAGRAM'") +
                          "BENT-1306\n");
        } else {
            EXPECT_EQ(run.output,
                      red("BENTELGatewayutil->bentelgateway_local_request recv reading response "
                          "failed with error 'Connection reset by peer' for function "
                          "'SENDBENTELCOMMANDDATAGRAM'") +
                          "BENT-1307\n");
            EXPECT_EQ(run.status, 1307 & 0xff);
        }
    }
}

TEST(GatewayProgramRules, UnservedFunctionIsRefusedSilently) {
    const temporary_directory directory;
    const std::string path = directory.path + "/s";
    peer daemon(path, {});
    for (const words &request :
         {words{"LINTRONICLOCAL", "SENDLINTRONICRAWDATAGRAM", "cellar|07|012|on"},
          words{"VIVALDILOCAL", "SENDVIVALDIGETDATAGRAM", "music|1|2"},
          words{"EIBLOCAL", "SENDBENTELCOMMANDDATAGRAM", "a|b|c|d"}}) {
        const run_result run =
            lumocmd({"-t", request[0], "-s", path, "-f", request[1], "-p", request[2]});
        EXPECT_EQ(run.output, "LMCM-503\n");
        EXPECT_EQ(run.errors, "");
        EXPECT_EQ(run.status, 503 & 0xff);
    }
    EXPECT_EQ(daemon.finish_unvisited(), "");
}

TEST(GatewayProgramRules, WrongCountAndWrongFormat) {
    const temporary_directory directory;
    const std::string path = directory.path + "/s";
    peer daemon(path, {});
    const run_result empty =
        lumocmd({"-t", "TUTONDOLOCAL", "-s", path, "-f", "SENDTUTONDOSETDATAGRAM", "-p", ""});
    EXPECT_EQ(empty.output,
              red("localclientutil->make_tutondolocal_request error too few or too much "
                  "parameters, SectionName,  ZoneNumber, Command, Payload are needed") +
                  "LMCM-505\n");
    EXPECT_EQ(empty.status, 505 & 0xff);
    const run_result device = lumocmd({"-t", "LINTRONICLOCAL", "-s", path, "-f",
                                       "SENDLINTRONICDATAGRAM", "-p", "cellar|7|012|on"});
    EXPECT_EQ(device.output, red("localclientutil->make_lintroniclocal_request error Device is not "
                                 "in 2-digit-zero-filled format") +
                                 "LMCM-502\n");
    EXPECT_EQ(device.status, 502 & 0xff);
    EXPECT_EQ(daemon.finish_unvisited(), "");
}

/// The parser stops at an unknown -v value, so the later options stay absent.
TEST(GatewayProgramRules, AbsentStrings) {
    const run_result no_function =
        lumocmd({"-t", "EIBLOCAL", "-s", "/nowhere", "-p", "a|b|c|d", "-v", "maybe"});
    EXPECT_EQ(no_function.output, "LMCM-503\n");
    EXPECT_EQ(no_function.status, 503 & 0xff);
    const run_result no_socket = lumocmd(
        {"-t", "BENTELLOCAL", "-f", BENTEL, "-p", "a|b|c|d", "-v", "maybe", "-s", "/nowhere"});
    EXPECT_EQ(no_socket.output,
              red("utility->make_localtcpclient_socket connect failed with error 'Invalid "
                  "argument'") +
                  red("BENTELGatewayutil->bentelgateway_local_request error opening socket "
                      "BENTELGateway clientside for function 'SENDBENTELCOMMANDDATAGRAM'") +
                  "BENT-1305\n");
    EXPECT_EQ(no_socket.status, 1305 & 0xff);
}

TEST(GatewayProgramRules, NegativeNumberOfTheDaemon) {
    const temporary_directory directory;
    const std::string path = directory.path + "/s";
    peer daemon(path, {collect_until("\n\n"), reply("Response Status: BENG--4\n")});
    const run_result run =
        lumocmd({"-t", "BENTELLOCAL", "-s", path, "-f", BENTEL, "-p", "a|b|c|d"});
    EXPECT_EQ(daemon.finish(), "");
    EXPECT_EQ(run.output, "LMCM--004\n");
    EXPECT_EQ(run.status, 252);
}

} // namespace
