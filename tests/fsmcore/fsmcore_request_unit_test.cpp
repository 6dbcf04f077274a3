// What the FSMCore client puts on the wire and where, which requests it refuses, and what it says
// when the connection fails.

#include "fsmcore/fsmcorelocal_request.h"
#include "tests/fsmcore/fsmcore_exchanges.h"
#include "tests/protocol/texts.h"

#include <arpa/inet.h>
#include <cerrno>
#include <gtest/gtest.h>
#include <netinet/in.h>

namespace {

using namespace harness;

const char GOOD_ANSWER[] = "Response Status: FSMC-000\nParameter Count: 0\n";

/// The lines of a request, up to its wait time.
std::string request_lines(const std::string &function, const words &values) {
    std::string text =
        "Request: " + function + "\nParameter Count: " + std::to_string(values.size()) + "\n";
    for (std::size_t i = 0; i < values.size(); i++) {
        const std::string param = (i < 10 ? "Param00" : "Param0") + std::to_string(i);
        text += param + " Length: " + std::to_string(values[i].size()) + "\n" + param + ":\n" +
                values[i] + "\n";
    }
    return text;
}

TEST(FsmcoreRequest, IsSentLocallyAndRemotely) {
    const std::pair<const char *, words> requests[] = {{"GETSTATE", {}},
                                                       {"GetState", {"12", "on"}},
                                                       {"F", {"", "x", std::string(511, 'v')}},
                                                       {"F", words(32)},
                                                       {"a\nb%s", {" \t|\r", "l\nm", "\xc3\xa9"}}};
    for (const fsmcore_exchange *x : FSMCORE_EXCHANGES) {
        for (const auto &[function, values] : requests) {
            const std::string lines = request_lines(function, values);
            SCOPED_TRACE(x->tag + " " + lines);
            const meeting_point point(
                x->where, {expect(lines + x->waittime_line + "\n"), reply(GOOD_ANSWER)});
            watched_client client;
            const watched_client::outcome got = call(*x, point, &client, function, values);
            EXPECT_EQ(got.output, "");
            EXPECT_EQ(got.status, 0);
            EXPECT_FALSE(got.left_open);
            EXPECT_EQ(client.sends, 1);
            EXPECT_EQ(client.receives, 1);
            EXPECT_EQ(client.flags, 0);
            EXPECT_EQ(client.receive_size, 1024U);
            EXPECT_EQ(point.daemon->finish(), "");
        }
    }
}

TEST(FsmcoreRequest, HasTheCountAndTheWaitTimeThatItIsGiven) {
    const meeting_point point(
        family::UNIX_SOCKET,
        {expect("Request: F\nParameter Count: -2\nWaittime: 30\n\n"), reply(GOOD_ANSWER)});
    EXPECT_EQ(fsmcore_requeststatic(point.path.c_str(), "F", -2, nullptr, nullptr, nullptr, "30"),
              0);
    EXPECT_EQ(point.daemon->finish(), "");
}

TEST(FsmcoreRequest, SaysWhyTheConnectionFailed) {
    struct {
        int message;
        int status;
        int connect_error;
        int send_error;
        int recv_error;
    } const failures[] = {{1, 6, ETIMEDOUT, 0, 0}, {2, 7, 0, ENOBUFS, 0}, {3, 8, 0, 0, EIO}};
    for (const fsmcore_exchange *x : FSMCORE_EXCHANGES) {
        for (const auto &row : failures) {
            SCOPED_TRACE(x->tag + " message " + std::to_string(row.message));
            const meeting_point point(x->where, {});
            watched_client client;
            client.connect_error = row.connect_error;
            client.send_error = row.send_error;
            client.recv_error = row.recv_error;
            int count = 77;
            char **values = nullptr;
            watched_client::outcome got =
                call(*x, point, &client, "GetState", {"a"}, {&count, &values});
            if (row.message == 1) {
                got.output.erase(0, got.output.find('\n') + 1); // the connector's own line
            }
            const std::string reason = strerror(row.send_error + row.recv_error);
            EXPECT_EQ(got.output, red(fsmcore_message(*x, row.message, "GetState", reason)));
            EXPECT_EQ(got.status, row.status);
            EXPECT_FALSE(got.left_open);
            EXPECT_EQ(client.sends, row.message > 1 ? 1 : 0);
            EXPECT_EQ(client.receives, row.message > 2 ? 1 : 0);
            EXPECT_EQ(count, 77);
        }
    }
}

// --- Limits

const std::string TEXT_TOO_LONG =
    " error request text is longer than 1023 characters for function 'F'";

std::string value_too_long(int parameter) {
    return " error value of parameter " + std::to_string(parameter) +
           " is longer than 511 characters for function 'F'";
}

/// Two values that make a request of exactly that many bytes.
words values_for(const fsmcore_exchange &x, std::size_t size) {
    words values = {std::string(450, 'a'), std::string(400, 'b')};
    const std::size_t usual = request_lines("F", values).size() + x.waittime_line.size() + 1;
    values[1].append(size - usual, 'b');
    return values;
}

TEST(FsmcoreLimits, AreCheckedBeforeAConnection) {
    for (const fsmcore_exchange *x : FSMCORE_EXCHANGES) {
        SCOPED_TRACE(x->tag);
        const words longest = values_for(*x, 1023);
        const meeting_point asked(
            x->where,
            {expect(request_lines("F", longest) + x->waittime_line + "\n"), reply(GOOD_ANSWER)});
        watched_client client;
        EXPECT_EQ(call(*x, asked, &client, "F", longest).output, "");
        EXPECT_EQ(asked.daemon->finish(), "");
        client.connects = 0;
        const meeting_point point(x->where, {});
        const watched_client::outcome text = call(*x, point, &client, "F", values_for(*x, 1024));
        EXPECT_EQ(text.output, red(x->tag + TEXT_TOO_LONG));
        EXPECT_EQ(text.status, 8);
        // Bytes behind a slot are nobody's end of it.
        const watched_client::outcome value =
            call(*x, point, &client, "F", {"a", std::string(512, 'b'), "c"});
        EXPECT_EQ(value.output, red(x->tag + value_too_long(2)));
        EXPECT_EQ(value.status, 8);
        EXPECT_EQ(client.connects, 0);
    }
}

// --- Where the remote exchange agrees to connect to

std::string or_null(const char *text) {
    return text == nullptr ? "(null)" : text;
}

/// Calls the exchange with a connection that always fails; what it wrote.
std::string tried(const char *address, const char *port) {
    int status = 0;
    const std::string output = captured_output([&] {
        status = fsmcore_m2mrequeststatic(address, port, "F", 0, nullptr, nullptr, nullptr);
    });
    EXPECT_EQ(status, 6);
    return output;
}

TEST(RemoteTarget, IsConnectedTo) {
    for (const auto &[address, port, number] : {std::tuple{"10.1.2.3", "1025", 1025},
                                                {"10.1.2.3", "70000", 4464}, // its low sixteen bits
                                                {"0xa.66051", " +2000", 2000}}) {
        SCOPED_TRACE(port);
        watched_client client;
        client.connect_error = ETIMEDOUT;
        EXPECT_EQ(tried(address, port),
                  red("utility->make_internettcpclient_socket connect failed with error "
                      "'Connection timed out'") +
                      red(fsmcore_message(REMOTE, 1, "F")));
        ASSERT_EQ(client.connects, 1);
        sockaddr_in target = {};
        memcpy(&target, &client.address, sizeof target);
        EXPECT_STREQ(inet_ntoa(target.sin_addr), "10.1.2.3");
        EXPECT_EQ(ntohs(target.sin_port), number);
    }
}

TEST(RemoteTarget, IsRefusedBeforeTheConnection) {
    watched_client client;
    for (const char *address : {"10.1.2.256", "localhost", "", "10.1.2.3x", "10.1.2.3.4",
                                static_cast<const char *>(nullptr)}) {
        for (const char *port : {"2000", "1024"}) { // the address is looked at first
            EXPECT_EQ(tried(address, port),
                      red(REMOTE.tag + " error hostip parameter '" + or_null(address) +
                          "' is not in a valid numbers-and-dots notation"));
        }
    }
    for (const char *port : {"1024", "0", "-2000", "", "2000x", "2000 ", "2147483648", "4294969296",
                             static_cast<const char *>(nullptr)}) {
        EXPECT_EQ(tried("10.1.2.3", port),
                  red(REMOTE.tag + " strtol error on converting '" + or_null(port) +
                      "' into numeric remote port number"));
    }
    EXPECT_EQ(client.connects, 0);
}

// --- The builder of the command line

void expect_built(const char *path, const char *function, const char *list,
                  const std::string &output, int status) {
    int got = 0;
    EXPECT_EQ(captured_output([&] { got = make_fsmcorelocal_request(path, function, list); }),
              output);
    EXPECT_EQ(got, status);
}

TEST(FsmcoreBuilder, SendsAnyNumberOfValuesAndAWaitTimeOfFive) {
    const std::string longest(511, 'v');
    const std::pair<const char *, words> lists[] = {
        {nullptr, {}}, {"", {}}, {"12|on", {"12", "on"}}, {longest.c_str(), {longest}}};
    for (const auto &[list, values] : lists) {
        SCOPED_TRACE(list == nullptr ? "(no list)" : list);
        const meeting_point point(
            family::UNIX_SOCKET,
            {expect(request_lines("getState", values) + "Waittime: 5\n\n"),
             reply("Response Status: FSMC-004\nParameter Count: 1\nParam000 Length: 1\nP\nx\n")});
        expect_built(point.path.c_str(), "getState", list, "", 4);
        EXPECT_EQ(point.daemon->finish(), "");
    }
}

TEST(FsmcoreBuilder, RefusesWhatDoesNotFitBeforeAConnection) {
    const std::string builder = "localclientutil->make_fsmcorelocal_request";
    const std::string long_value(512, 'v');
    const std::pair<std::string, std::string> lists[] = {
        {long_value, builder + value_too_long(1)},
        {"a|" + long_value, builder + value_too_long(2)},
        {protocol::list_of(49), builder + " error more than 48 parameters for function 'F'"},
        {protocol::list_of(48), LOCAL.tag + TEXT_TOO_LONG},
    };
    for (const auto &[list, message] : lists) {
        watched_client client;
        expect_built("/nowhere", "F", list.c_str(), red(message), 8);
        EXPECT_EQ(client.connects, 0);
    }
}

} // namespace
