// Every call to the kernel fails in turn, for every daemon on a local socket: the message, the code
// and the last line are those of that step, and nothing is tried again.

#include "tests/faults/fault.h"
#include "tests/faults/requests.h"
#include "tests/harness/peer.h"

#include <cerrno>
#include <gtest/gtest.h>
#include <unistd.h>

namespace {

using namespace fault_tests;
using harness::expect;
using harness::peer;
using harness::reply;
using harness::script;
using harness::words;

/// The status that the daemons answer here, and how it is shown.
constexpr int ANSWERED = 42;
const char ANSWERED_NUMBER[] = "0042";
const char ANSWERED_TEXT[] = "FSMC-042\n";

const int SOCKET_ERRORS[] = {EACCES, EAFNOSUPPORT, EINTR, EMFILE, ENFILE, ENOBUFS, ENOMEM, EPERM};
const int CONNECT_ERRORS[] = {EACCES,      EADDRINUSE, EAGAIN,    ECONNREFUSED, EINTR,
                              EINPROGRESS, ELOOP,      ENOENT,    ENOTSOCK,     EPERM,
                              EPROTOTYPE,  ENOMEM,     ETIMEDOUT, ENETUNREACH,  EISCONN};
const int SEND_ERRORS[] = {EAGAIN,  EBADF,  ECONNRESET, EINTR, EMSGSIZE,
                           ENOBUFS, ENOMEM, ENOTCONN,   EPIPE, ETIMEDOUT};
const int RECEIVE_ERRORS[] = {EAGAIN, EBADF,  ECONNREFUSED, ECONNRESET, EINTR,
                              EINVAL, ENOMEM, ENOTCONN,     ETIMEDOUT};
const int CLOSE_ERRORS[] = {EBADF, EINTR, EIO, ENOSPC};
const int OPEN_ERRORS[] = {EACCES, EINTR, EMFILE, ENFILE, ENODEV, ENOENT, ENOMEM};

/// How often the calls of an exchange are made.
struct call_counts {
    int connects;
    int sends;
    int receives;
    int closes; ///< the program's first close is not the connection's
};
constexpr call_counts NO_SOCKET = {0, 0, 0, 1};
constexpr call_counts NO_CONNECTION = {1, 0, 0, 1};
constexpr call_counts NOT_SENT = {1, 1, 0, 2};
constexpr call_counts WHOLE = {1, 1, 1, 2};

class SystemCalls : public testing::TestWithParam<socket_request> {
  protected:
    void SetUp() override {
        SKIP_UNLESS_REACHABLE();
    }

    /// One run against a daemon with this script; everything that it shows and calls is checked.
    void run(const fault &wanted, const script &steps, const words &messages,
             const std::string &last_line, int status, const call_counts &counts) {
        SCOPED_TRACE(described(wanted));
        unlink(path.c_str());
        peer daemon(path, steps);
        const faulty_run seen = lumocmd_with(wanted, arguments_of(request, path));
        const pid_t pid = seen.run.pid;
        std::string output = progress_of(request, path, pid);
        for (const std::string &message : messages) {
            output += harness::tagged_red(pid, message);
        }
        EXPECT_EQ(seen.run.output, output + last_line);
        EXPECT_EQ(seen.run.errors, "");
        EXPECT_EQ(seen.run.status, status & 0xff);
        EXPECT_EQ(seen.hits.size(), 1U) << "the call was never made";
        EXPECT_EQ(seen.records, words());
        EXPECT_EQ(calls_of(seen, "connect"), counts.connects);
        EXPECT_EQ(calls_of(seen, "send"), counts.sends);
        EXPECT_EQ(calls_of(seen, "recv"), counts.receives);
        EXPECT_EQ(calls_of(seen, "close"), counts.closes);
        EXPECT_EQ(counts.sends == 0 ? daemon.finish_unvisited() : daemon.finish(), "");
    }

    void cannot_connect(const fault &wanted, const std::string &call, const call_counts &counts) {
        const std::string connector =
            "utility->make_localtcpclient_socket " + call + " failed with error '%s'";
        run(wanted, {}, {with_reason(connector, wanted.error), request.open_failed},
            request.connect_text, request.connect_status, counts);
    }

    void answers(const fault &wanted) {
        run(wanted, {expect(request.request), reply(answer_of(request, ANSWERED_NUMBER))}, {},
            ANSWERED_TEXT, ANSWERED, WHOLE);
    }

    const socket_request &request = GetParam();
    harness::temporary_directory directory;
    std::string path = directory.path + "/s";
};

TEST_P(SystemCalls, SocketFails) {
    for (const int error : SOCKET_ERRORS) {
        cannot_connect({.call = "socket", .error = error}, "socket", NO_SOCKET);
    }
}

TEST_P(SystemCalls, ConnectFails) {
    for (const int error : CONNECT_ERRORS) {
        cannot_connect({.call = "connect", .error = error}, "connect", NO_CONNECTION);
    }
}

TEST_P(SystemCalls, SendFails) {
    for (const int error : SEND_ERRORS) {
        run({.call = "send", .error = error}, {}, {with_reason(request.send_failed, error)},
            request.send_text, request.send_status, NOT_SENT);
    }
}

TEST_P(SystemCalls, ReceiveFails) {
    for (const int error : RECEIVE_ERRORS) {
        run({.call = "recv", .error = error},
            {expect(request.request), reply(answer_of(request, ANSWERED_NUMBER))},
            {with_reason(request.receive_failed, error)}, request.answer_text,
            request.answer_status, WHOLE);
    }
}

TEST_P(SystemCalls, CloseChangesNothing) {
    for (const int error : CLOSE_ERRORS) {
        answers({.call = "close", .number = 1, .error = error});
        answers({.call = "close", .number = 2, .error = error});
    }
}

/// A close that fails behind a failure does not change its message either.
TEST_P(SystemCalls, CloseBehindAnUnreadableAnswerChangesNothing) {
    for (const int error : CLOSE_ERRORS) {
        run({.call = "close", .number = 2, .error = error},
            {expect(request.request), harness::close_connection()}, {request.no_status_line},
            request.answer_text, request.answer_status, WHOLE);
    }
}

/// Without a null device the program goes on as it stands.
TEST_P(SystemCalls, OpenOfTheNullDeviceChangesNothing) {
    for (const int error : OPEN_ERRORS) {
        const fault wanted = {.call = "open", .error = error};
        call_counts counts = WHOLE;
        counts.closes--;
        run(wanted, {expect(request.request), reply(answer_of(request, ANSWERED_NUMBER))}, {},
            ANSWERED_TEXT, ANSWERED, counts);
    }
}

/// The daemon gets what the one call took; the rest is never sent.
TEST_P(SystemCalls, SendThatTakesAPartIsTakenAsWhole) {
    const int length = static_cast<int>(request.request.size());
    for (const int taken : {0, 1, length / 2, length - 1}) {
        const std::string part = request.request.substr(0, static_cast<std::size_t>(taken));
        run({.call = "send", .limit = taken},
            {expect(part), reply(answer_of(request, ANSWERED_NUMBER))}, {}, ANSWERED_TEXT, ANSWERED,
            WHOLE);
    }
}

/// What the one call brought is parsed; the rest is never read.
TEST_P(SystemCalls, ReceiveThatBringsAPartIsParsedAsItStands) {
    const std::string answer = answer_of(request, ANSWERED_NUMBER);
    const int tag = static_cast<int>(std::string("Response Status: ").size());
    struct {
        int brought;
        const std::string &message;
    } const rows[] = {{0, request.no_status_line},
                      {1, request.no_status_line},
                      {tag - 1, request.no_status_line},
                      {tag + 1, request.wrong_prefix},
                      {tag + 4, request.wrong_prefix}};
    for (const auto &row : rows) {
        run({.call = "recv", .limit = row.brought}, {expect(request.request), reply(answer)},
            {row.message}, request.answer_text, request.answer_status, WHOLE);
    }
}

INSTANTIATE_TEST_SUITE_P(Table, SystemCalls, testing::ValuesIn(socket_requests()),
                         [](const auto &row) { return row.param.keyword; });

class GatewayNumbers : public SystemCalls {};

/// A number that was cut is another number: nothing tells the two apart.
TEST_P(GatewayNumbers, ReceiveThatCutsTheNumber) {
    struct {
        const char *piece;
        const char *last_line;
        int status;
    } const rows[] = {{"", "LMCM-0000\n", 0}, {"004", "FSMC-004\n", 4}, {"0042", "FSMC-042\n", 42}};
    for (const auto &row : rows) {
        const std::string piece = std::string("Response Status: ") + request.prefix + row.piece;
        run({.call = "recv", .limit = static_cast<int>(piece.size())},
            {expect(request.request), reply(answer_of(request, ANSWERED_NUMBER))}, {},
            row.last_line, row.status, WHOLE);
    }
}

std::vector<socket_request> gateways() {
    std::vector<socket_request> all = socket_requests();
    std::erase_if(all, [](const auto &row) { return !row.more.empty(); });
    return all;
}

INSTANTIATE_TEST_SUITE_P(Table, GatewayNumbers, testing::ValuesIn(gateways()),
                         [](const auto &row) { return row.param.keyword; });

// ---------------------------------------------------------------------------------------------
// Standard output

/// Output that cannot be written is lost, and the exit status still tells the truth.
class StandardOutput : public testing::TestWithParam<socket_request> {
  protected:
    void SetUp() override {
        SKIP_UNLESS_REACHABLE();
    }
};

TEST_P(StandardOutput, FailureKeepsTheStatus) {
    for (const int error : {EAGAIN, EBADF, EFBIG, EINTR, EIO, ENOSPC, EPIPE}) {
        const fault wanted = {.call = "standard-output", .error = error};
        SCOPED_TRACE(described(wanted));
        const harness::temporary_directory directory;
        const std::string path = directory.path + "/s";
        peer daemon(path,
                    {expect(GetParam().request), reply(answer_of(GetParam(), ANSWERED_NUMBER))});
        const faulty_run seen = lumocmd_with(wanted, arguments_of(GetParam(), path));
        EXPECT_EQ(seen.run.output, "");
        EXPECT_EQ(seen.run.errors, "");
        EXPECT_EQ(seen.run.status, ANSWERED);
        EXPECT_EQ(seen.hits, words{"standard-output"});
        EXPECT_EQ(daemon.finish(), "");
    }
}

INSTANTIATE_TEST_SUITE_P(Table, StandardOutput, testing::ValuesIn(socket_requests()),
                         [](const auto &row) { return row.param.keyword; });

// ---------------------------------------------------------------------------------------------
// Requests that never leave

struct refused_row {
    const char *name;
    words arguments;
    std::string output;
    int status;
    bool help; ///< the help goes to standard error
};

const refused_row REFUSED[] = {
    {"UnknownType",
     {"-t", "NOSUCH"},
     harness::red("main->main error on parsing command line") + "LMCM-505\n",
     505,
     false},
    {"Internet",
     {"-t", "TECNOUTINTERNET", "-a", "10.0.0.1", "-d", "2000", "-f", "X", "-p", "a"},
     harness::red("main->main error unimplemented feature") + "LMCM-507\n",
     507,
     false},
    {"UnknownFunction",
     {"-t", "BENTELLOCAL", "-s", "/nowhere", "-f", "F", "-p", "a"},
     "LMCM-503\n",
     503,
     false},
    {"MalformedRequest",
     {"-t", "SOAP", "-u", "U", "-f", "F", "extra"},
     harness::red("utility->parse_cmd_line malformed request"),
     505,
     false},
    {"BadPort",
     {"-d", "80x"},
     harness::red("utility->parse_cmd_line bad parameter: service port must be a number and upper "
                  "than 1024"),
     502,
     false},
    {"Help", {"-?"}, "", 506, true},
};

class Refused : public testing::TestWithParam<refused_row> {
  protected:
    void SetUp() override {
        SKIP_UNLESS_REACHABLE();
    }
};

/// These runs open and close the null device and write; nothing else can fail.
TEST_P(Refused, KeepsItsStatus) {
    const refused_row &row = GetParam();
    const faulty_run usual = lumocmd_with({}, row.arguments);
    EXPECT_EQ(calls_of(usual, "socket"), 0);
    for (const fault &wanted :
         {fault{.call = "open", .error = EMFILE}, fault{.call = "close", .error = EIO},
          fault{.call = "standard-output", .error = ENOSPC}}) {
        SCOPED_TRACE(described(wanted));
        const faulty_run seen = lumocmd_with(wanted, row.arguments);
        const bool is_lost = std::string(wanted.call) == "standard-output";
        EXPECT_EQ(seen.hits.size(), 1U);
        EXPECT_EQ(seen.run.output, is_lost ? "" : row.output);
        EXPECT_EQ(seen.run.errors, usual.run.errors);
        EXPECT_EQ(seen.run.errors.empty(), !row.help);
        EXPECT_EQ(seen.run.status, row.status & 0xff);
    }
}

INSTANTIATE_TEST_SUITE_P(Table, Refused, testing::ValuesIn(REFUSED),
                         [](const auto &row) { return row.param.name; });

} // namespace
