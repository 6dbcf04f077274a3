// Daemons that misbehave: the program reads once, takes what has come for the answer, and says what
// is wrong with it. Its words and its status follow from the bytes alone.

#include "tests/harness/console.h"
#include "tests/peers/measured_program.h"
#include "tests/peers/rude_peer.h"

#include <fstream>
#include <gtest/gtest.h>
#include <set>
#include <sys/socket.h>

namespace {

using namespace harness;

constexpr std::size_t GIBIBYTE = std::size_t{1} << 30;

/// The shipped program needs less than this for any daemon's answer.
constexpr long MOST_KILOBYTES = 8 * 1024;

/// A daemon as a user meets it, and what the program says about it.
struct daemon_kind {
    const char *name;
    words arguments;    ///< without the socket
    std::string prefix; ///< of the status
    std::string rest;   ///< what follows the status line in a good answer
    int unreadable;     ///< status of an answer that cannot be read
    const char *unreadable_text;
    int unreached; ///< status when there is no connection
    const char *unreached_text;
    const char *no_connection; ///< the messages
    const char *no_status_line;
    const char *wrong_format;
    const char *bad_number;
    const char *trailing_text;
};

const daemon_kind DAEMONS[] = {
    {"Gateway",
     {"-t", "BENTELLOCAL", "-f", "SENDBENTELCOMMANDDATAGRAM", "-p", "a|b|c|d"},
     "BENG-",
     "",
     1307,
     "BENT-1307\n",
     1305,
     "BENT-1305\n",
     "BENTELGatewayutil->bentelgateway_local_request error opening socket BENTELGateway clientside "
     "for function 'SENDBENTELCOMMANDDATAGRAM'",
     "BENTELGatewayutil->bentelgateway_local_request strtok parsing 'Response Status: ' response "
     "tag failed for function 'SENDBENTELCOMMANDDATAGRAM'",
     "BENTELGatewayutil->bentelgateway_local_request error: BENTELGateway response not in the "
     "BENG-NNNN format for function 'SENDBENTELCOMMANDDATAGRAM'",
     "BENTELGatewayutil->bentelgateway_local_request error strtol with error 'Success' for "
     "function 'SENDBENTELCOMMANDDATAGRAM'",
     "BENTELGatewayutil->bentelgateway_local_request strtok parsing '\\n' response tag failed, not "
     "a well formed response from BENTELGateway for function 'SENDBENTELCOMMANDDATAGRAM'"},
    {"FSMCore",
     {"-t", "FSMCORE", "-f", "GETSTATE", "-p", "12|on"},
     "FSMC-",
     "Parameter Count: 0\n",
     8,
     "FSMC-008\n",
     6,
     "FSMC-006\n",
     "FSMCoreutil->fsmcore_requeststatic error opening socket FSMCore clientside for function "
     "'GETSTATE'",
     "FSMCoreutil->fsmcore_requeststatic strtok parsing 'Response Status: ' response tag failed "
     "for function 'GETSTATE'",
     "FSMCoreutil->fsmcore_requeststatic error: FSMCore response not in the FSMC-NNN format for "
     "function 'GETSTATE'",
     "FSMCoreutil->fsmcore_requeststatic error strtol with error 'Success' for function GETSTATE",
     "FSMCoreutil->fsmcore_requeststatic strtok parsing '\\n' response tag failed, not a well "
     "formed response from FSMCore for function 'GETSTATE'"},
};

const char TAG[] = "Response Status: ";

words command(const daemon_kind &daemon, const std::string &path) {
    words all = daemon.arguments;
    all.insert(all.end(), {"-s", path});
    return all;
}

/// What a run writes and how it ends.
struct outcome {
    std::string output;
    int status;

    auto operator<=>(const outcome &) const = default;
};

outcome accepted(const char *text, int status) {
    return {std::string(text) + "\n", status & 0xff};
}

outcome unreadable(const daemon_kind &daemon, const std::string &message) {
    return {red(message) + daemon.unreadable_text, daemon.unreadable & 0xff};
}

void expect_outcome(const measured_run &measured, const outcome &wanted) {
    EXPECT_EQ(measured.run.output, wanted.output);
    EXPECT_EQ(measured.run.errors, "");
    EXPECT_EQ(measured.run.status, wanted.status);
    if (is_shipped_program()) {
        EXPECT_LE(measured.kilobytes, MOST_KILOBYTES);
    }
}

constexpr auto NAME_OF_DAEMON = [](const auto &row) { return row.param.name; };

// ---------------------------------------------------------------------------------------------
// What the answer holds, and when it comes

enum class verdict { ACCEPTED, NO_STATUS_LINE, WRONG_FORMAT, BAD_NUMBER, TRAILING_TEXT };

/// An answer around the good one: what stands before and behind it, up to a size.
struct answer_case {
    const char *name;
    std::string before; ///< "%" stands for the daemon's prefix
    bool good;          ///< whether the good answer follows
    std::string behind;
    char filler;      ///< repeated behind that
    std::size_t size; ///< of the whole answer with its filler; 0: none
    std::string last; ///< the bytes at the very end
    manners manner;
    verdict wanted;
};

const manners PLAIN = {};
const manners SILENT = {opening::AFTER_THE_REQUEST, pace::AT_ONCE, ending::SILENCE};
const manners EARLY = {opening::BEFORE_THE_REQUEST, pace::AT_ONCE, ending::CLOSE};
const manners DEAF = {opening::NEVER_READING, pace::AT_ONCE, ending::SILENCE};

using namespace std::string_literals;

const answer_case ANSWERS[] = {
    {"BeforeTheRequest", "", true, "", 0, 0, "", EARLY, verdict::ACCEPTED},
    {"RequestNeverRead", "", true, "", 0, 0, "", DEAF, verdict::ACCEPTED},
    {"ConnectionHeldOpen", "", true, "", 0, 0, "", SILENT, verdict::ACCEPTED},
    {"OneByteThenSilence", "R", false, "", 0, 0, "", SILENT, verdict::NO_STATUS_LINE},
    {"HalfThenSilence", "Response", false, "", 0, 0, "", SILENT, verdict::NO_STATUS_LINE},
    {"ZeroByteFirst", "\0"s, true, "", 0, 0, "", PLAIN, verdict::NO_STATUS_LINE},
    {"ZeroByteInTheTag", "Response\0Status: %0\n"s, false, "", 0, 0, "", PLAIN,
     verdict::NO_STATUS_LINE},
    {"ZeroByteInThePrefix", "Response Status: \0%0\n"s, false, "", 0, 0, "", PLAIN,
     verdict::WRONG_FORMAT},
    {"ZeroByteBehindTheAnswer", "", true, "\0no more\n"s, 0, 0, "", PLAIN, verdict::ACCEPTED},
    {"ZeroBytesOnly", "", false, "", '\0', 1024, "", PLAIN, verdict::NO_STATUS_LINE},
    {"InvalidUtf8First", "\xff\xfe", true, "", 0, 0, "", PLAIN, verdict::NO_STATUS_LINE},
    {"InvalidUtf8InTheNumber", "Response Status: %\xc3\x28\n", false, "", 0, 0, "", PLAIN,
     verdict::BAD_NUMBER},
    {"InvalidUtf8Behind", "", true, "\xf0\x9f\n", 0, 0, "", PLAIN, verdict::TRAILING_TEXT},
    {"TextInByte1023", "", true, "", '\n', 1023, "x", PLAIN, verdict::TRAILING_TEXT},
    {"TextInByte1024", "", true, "", '\n', 1024, "x", PLAIN, verdict::TRAILING_TEXT},
    {"TextInByte1025", "", true, "", '\n', 1025, "x", PLAIN, verdict::ACCEPTED},
    {"GibibyteOfText", "", false, "", 'x', GIBIBYTE, "", PLAIN, verdict::NO_STATUS_LINE},
    {"GibibyteOfZeroBytes", "", false, "", '\0', GIBIBYTE, "", PLAIN, verdict::NO_STATUS_LINE},
    {"GibibyteOfLineFeedsBehind", "", true, "", '\n', GIBIBYTE, "", PLAIN, verdict::ACCEPTED},
    {"GibibyteOfTextBehind", "", true, "", 'x', GIBIBYTE, "", PLAIN, verdict::TRAILING_TEXT},
};

pieces answer_of(const daemon_kind &daemon, const answer_case &row) {
    std::string start = row.before;
    if (const std::size_t mark = start.find('%'); mark != std::string::npos) {
        start.replace(mark, 1, daemon.prefix);
    }
    start += (row.good ? TAG + daemon.prefix + "000\n" + daemon.rest : "") + row.behind;
    pieces answer = {{start}};
    if (row.size != 0) {
        const std::size_t filled = row.size - start.size() - row.last.size();
        answer.push_back({std::string(1024, row.filler), filled / 1024});
        answer.push_back({std::string(filled % 1024, row.filler)});
        answer.push_back({row.last});
    }
    return answer;
}

outcome outcome_of(const daemon_kind &daemon, verdict wanted) {
    switch (wanted) {
    case verdict::ACCEPTED:
        break;
    case verdict::NO_STATUS_LINE:
        return unreadable(daemon, daemon.no_status_line);
    case verdict::WRONG_FORMAT:
        return unreadable(daemon, daemon.wrong_format);
    case verdict::BAD_NUMBER:
        return unreadable(daemon, daemon.bad_number);
    case verdict::TRAILING_TEXT:
        return unreadable(daemon, daemon.trailing_text);
    }
    return accepted("LMCM-0000", 0);
}

class DaemonAnswer : public testing::TestWithParam<std::tuple<daemon_kind, answer_case>> {};

TEST_P(DaemonAnswer, IsJudgedByItsFirstRead) {
    const auto &[daemon, row] = GetParam();
    const temporary_directory directory;
    const std::string path = directory.path + "/s";
    const pieces answer = answer_of(daemon, row);
    rude_peer peer(path, "\n\n", answer, row.manner);
    measured_program program(command(daemon, path));
    const measured_run measured = program.finish();
    expect_outcome(measured, outcome_of(daemon, row.wanted));
    EXPECT_EQ(peer.finish(), 1);
}

INSTANTIATE_TEST_SUITE_P(Table, DaemonAnswer,
                         testing::Combine(testing::ValuesIn(DAEMONS), testing::ValuesIn(ANSWERS)),
                         [](const auto &row) {
                             return std::string(std::get<0>(row.param).name) +
                                    std::get<1>(row.param).name;
                         });

// ---------------------------------------------------------------------------------------------
// Every prefix of a good answer. What is cut inside its number is another number: the protocol has
// no mark for the end of one.

/// The outcome of all cuts that end inside or right behind this text, in the order of the answer.
struct cut_case {
    std::string text;
    outcome wanted;
};

std::vector<cut_case> gateway_cuts(const daemon_kind &daemon) {
    const outcome no_tag = unreadable(daemon, daemon.no_status_line);
    const outcome no_prefix = unreadable(daemon, daemon.wrong_format);
    return {
        {"Response Status:", no_tag},         {" BENG", no_prefix},
        {"-", accepted("LMCM-0000", 0)},      {"1", accepted("FSMC-001", 1)},
        {"3", accepted("FSMC-013", 13)},      {"0", accepted("EIBG-130", 130)},
        {"2\n", accepted("BENT-1302", 1302)},
    };
}

std::vector<cut_case> fsmcore_cuts(const daemon_kind &daemon) {
    const std::string tag = "FSMCoreutil->fsmcore_requeststatic ";
    const outcome no_tag = unreadable(daemon, daemon.no_status_line);
    const outcome no_prefix = unreadable(daemon, daemon.wrong_format);
    const outcome no_count = unreadable(daemon, tag + "strtok parsing 'Parameter Count: ' response "
                                                      "tag failed for function 'GETSTATE'");
    const outcome no_length =
        unreadable(daemon, tag + "strtok parsing 'ParamNNN Length: ' response tag failed, not a "
                                 "well formed response from FSMCore for function 'GETSTATE'");
    const outcome no_value =
        unreadable(daemon, tag + "strtok parsing 'ParamNNN: ' response tag failed, not a well "
                                 "formed response from FSMCore for function 'GETSTATE'");
    std::vector<cut_case> cuts = {
        {"Response Status:", no_tag},
        {" FSMC", no_prefix},
        {"-42\nParameter Count:", no_count},
        {" ", accepted("FSMC-042", 42)}, // no number is no parameter
        {"1\n", no_length},
    };
    // A length line that is too short for its tag is emptied with a complaint; no number is length
    // zero, and such a parameter ends with its length line.
    const std::string length_tag = "Param000 Length:";
    for (std::size_t i = 1; i <= length_tag.size(); i++) {
        const outcome complaint = {
            red("memory->cut_message_to_preserve_newline len is greater than string length; "
                "returning a null string. str = " +
                length_tag.substr(0, i) + ", len = " + std::to_string(i)) +
                "FSMC-042\n",
            42};
        cuts.push_back({length_tag.substr(i - 1, 1), complaint});
    }
    const std::vector<cut_case> rest = {
        {" ", accepted("FSMC-042", 42)},
        {"3\nParam000:\nye", no_value},
        {"s\n", accepted("FSMC-042", 42)},
    };
    cuts.insert(cuts.end(), rest.begin(), rest.end());
    return cuts;
}

std::vector<cut_case> cuts_of(const daemon_kind &daemon) {
    return daemon.rest.empty() ? gateway_cuts(daemon) : fsmcore_cuts(daemon);
}

class DaemonPrefix : public testing::TestWithParam<daemon_kind> {
  protected:
    const daemon_kind &daemon = GetParam();
    temporary_directory directory;
    std::string path = directory.path + "/s";

    void expect_cut(const std::string &answer, const outcome &wanted) {
        SCOPED_TRACE(answer);
        unlink(path.c_str());
        rude_peer peer(path, "\n\n", {{answer}});
        measured_program program(command(daemon, path));
        const measured_run measured = program.finish();
        expect_outcome(measured, wanted);
        EXPECT_EQ(peer.finish(), 1);
    }
};

TEST_P(DaemonPrefix, IsJudgedAsItStands) {
    const std::size_t step = is_shipped_program() ? 1 : 7;
    std::string answer;
    expect_cut(answer, unreadable(daemon, daemon.no_status_line));
    for (const cut_case &row : cuts_of(daemon)) {
        for (const char byte : row.text) {
            answer += byte;
            if (answer.size() % step == 0) {
                expect_cut(answer, row.wanted);
            }
        }
    }
}

/// The program reads once, and how much has come by then is the machine's affair.
TEST_P(DaemonPrefix, IsWhatByteByByteComesDownTo) {
    std::set<outcome> possible;
    std::string answer;
    for (const cut_case &row : cuts_of(daemon)) {
        possible.insert(row.wanted);
        answer += row.text;
    }
    rude_peer peer(path, "\n\n", {{answer}},
                   {opening::AFTER_THE_REQUEST, pace::BYTE_BY_BYTE, ending::SILENCE});
    measured_program program(command(daemon, path));
    const measured_run measured = program.finish();
    EXPECT_TRUE(possible.contains({measured.run.output, measured.run.status}))
        << measured.run.output;
    EXPECT_EQ(peer.finish(), 1);
}

INSTANTIATE_TEST_SUITE_P(Daemons, DaemonPrefix, testing::ValuesIn(DAEMONS), NAME_OF_DAEMON);

// ---------------------------------------------------------------------------------------------
// Silence, and sockets that are none

class DaemonSocket : public testing::TestWithParam<daemon_kind> {
  protected:
    const daemon_kind &daemon = GetParam();
    temporary_directory directory;
    std::string path = directory.path + "/s";

    outcome unreached(const std::string &reason) const {
        return {
            red("utility->make_localtcpclient_socket connect failed with error '" + reason + "'") +
                red(daemon.no_connection) + daemon.unreached_text,
            daemon.unreached & 0xff};
    }

    void expect_unreached(const std::string &reason) const {
        measured_program program(command(daemon, path));
        const measured_run measured = program.finish();
        expect_outcome(measured, unreached(reason));
    }
};

TEST_P(DaemonSocket, SilentIsWaitedForUntilItCloses) {
    rude_peer peer(path, "\n\n", {}, SILENT);
    measured_program program(command(daemon, path));
    ASSERT_TRUE(peer.wait_for_silence());
    EXPECT_TRUE(program.keeps_waiting());
    EXPECT_EQ(peer.finish(), 1);
    const measured_run measured = program.finish();
    expect_outcome(measured, unreadable(daemon, daemon.no_status_line));
}

TEST_P(DaemonSocket, SilentIsLeftOnASignal) {
    rude_peer peer(path, "\n\n", {}, SILENT);
    measured_program program(command(daemon, path));
    ASSERT_TRUE(peer.wait_for_silence());
    program.terminate();
    const measured_run measured = program.finish();
    expect_outcome(measured, {"", 128 + SIGTERM});
}

TEST_P(DaemonSocket, NeverAcceptingIsWaitedForUntilItCloses) {
    crowded_socket crowded(path);
    measured_program program(command(daemon, path));
    EXPECT_TRUE(program.keeps_waiting());
    crowded.close_down();
    const measured_run measured = program.finish();
    expect_outcome(measured, unreached("Connection refused"));
}

TEST_P(DaemonSocket, OfDatagramsIsNoDaemon) {
    const foreign_socket foreign(path, SOCK_DGRAM);
    expect_unreached("Protocol wrong type for socket");
}

TEST_P(DaemonSocket, OfPacketsIsNoDaemon) {
    const foreign_socket foreign(path, SOCK_SEQPACKET);
    expect_unreached("Protocol wrong type for socket");
}

TEST_P(DaemonSocket, ThatIsAFileIsNoDaemon) {
    std::ofstream(path) << TAG;
    expect_unreached("Connection refused");
}

INSTANTIATE_TEST_SUITE_P(Daemons, DaemonSocket, testing::ValuesIn(DAEMONS), NAME_OF_DAEMON);

/// A connection that ends with the request unread is a reset one, behind whatever was sent.
class DaemonReset : public testing::TestWithParam<daemon_kind> {};

TEST_P(DaemonReset, BehindHalfAnAnswerLeavesTheHalf) {
    const daemon_kind &daemon = GetParam();
    const temporary_directory directory;
    const std::string path = directory.path + "/s";
    rude_peer peer(path, daemon.arguments[3], {{"Response St"}});
    measured_program program(command(daemon, path));
    const measured_run measured = program.finish();
    expect_outcome(measured, unreadable(daemon, daemon.no_status_line));
    EXPECT_EQ(peer.finish(), 1);
}

INSTANTIATE_TEST_SUITE_P(Daemons, DaemonReset, testing::ValuesIn(DAEMONS), NAME_OF_DAEMON);

} // namespace
