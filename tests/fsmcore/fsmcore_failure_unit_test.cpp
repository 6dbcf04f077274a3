// What becomes of an FSMCore request when its connection fails.

#include "tests/fsmcore/fsmcore_exchanges.h"
#include "tests/harness/console.h"
#include "tests/harness/watched_client.h"

#include <cerrno>
#include <gtest/gtest.h>
#include <poll.h>

namespace {

using namespace harness;

class FsmcoreFailure : public testing::TestWithParam<const fsmcore_exchange *> {
  protected:
    const fsmcore_exchange &x = *GetParam();
    watched_client client;
    int count = 77;
    char **values = nullptr;

    /// Runs the exchange; what it must have written and returned.
    template <typename Point>
    void expect_failure(const Point &point, const std::string &output, int status) {
        int got = 0;
        EXPECT_EQ(captured_output([&] {
                      got = call(x, point, "GetState", {"a"}, {&count, &values});
                  }),
                  output);
        EXPECT_EQ(got, status);
        EXPECT_EQ(count, 77);
        EXPECT_FALSE(client.close_left_open());
    }

    std::string message(int number, int error_number) const {
        return red(fsmcore_message(x, number, "GetState", strerror(error_number)));
    }
};

TEST_P(FsmcoreFailure, ConnectionRefused) {
    const std::string connector =
        x.where == family::UNIX_SOCKET
            ? "utility->make_localtcpclient_socket connect failed with error 'No such file or "
              "directory'"
            : "utility->make_internettcpclient_socket connect failed with error 'Connection "
              "refused'";
    expect_failure(deserted_point(), red(connector) + message(1, 0), 6);
}

TEST_P(FsmcoreFailure, SendFails) {
    const meeting_point point(x.where, {});
    client.send_error = ENOBUFS;
    expect_failure(point, message(2, ENOBUFS), 7);
    EXPECT_EQ(client.receives, 0);
    EXPECT_EQ(point.daemon->finish(), "");
}

TEST_P(FsmcoreFailure, DaemonClosesBeforeTheRequest) {
    const meeting_point point(x.where, {await_end(), reset()});
    client.before_send = [&](int connection) {
        EXPECT_EQ(point.daemon->finish(), "");
        pollfd gone = {connection, 0, 0};
        EXPECT_EQ(poll(&gone, 1, PATIENCE_MS), 1);
    };
    expect_failure(point, message(2, x.where == family::UNIX_SOCKET ? EPIPE : ECONNRESET), 7);
}

TEST_P(FsmcoreFailure, ReceiveFails) {
    const meeting_point point(x.where, {collect_until("\n\n")});
    client.recv_error = EIO;
    expect_failure(point, message(3, EIO), 8);
    EXPECT_EQ(client.receives, 1);
    EXPECT_EQ(point.daemon->finish(), "");
}

TEST_P(FsmcoreFailure, DaemonClosesOnTheUnreadRequest) {
    const meeting_point point(x.where, {await_bytes(), reset()});
    expect_failure(point, message(3, ECONNRESET), 8);
    EXPECT_EQ(point.daemon->finish(), "");
}

INSTANTIATE_TEST_SUITE_P(Exchanges, FsmcoreFailure, testing::ValuesIn(FSMCORE_EXCHANGES),
                         [](const auto &row) { return row.param->name; });

} // namespace
