// What the FSMCore client puts on the wire, which requests it refuses, and what it says when the
// connection fails.

#include "fsmcore/fsmcorelocal_request.h"
#include "tests/fsmcore/fsmcore_exchanges.h"
#include "tests/protocol/texts.h"

#include <cerrno>
#include <gtest/gtest.h>

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
            const fsmcore_outcome got = call(*x, point, &client, function, values);
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
            fsmcore_outcome got = call(*x, point, &client, "GetState", {"a"}, {&count, &values});
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
        const fsmcore_outcome text = call(*x, point, &client, "F", values_for(*x, 1024));
        EXPECT_EQ(text.output, red(x->tag + TEXT_TOO_LONG));
        EXPECT_EQ(text.status, 8);
        // Bytes behind a slot are nobody's end of it.
        const fsmcore_outcome value =
            call(*x, point, &client, "F", {"a", std::string(512, 'b'), "c"});
        EXPECT_EQ(value.output, red(x->tag + value_too_long(2)));
        EXPECT_EQ(value.status, 8);
        EXPECT_EQ(client.connects, 0);
    }
}

// --- The builder of the command line

TEST(FsmcoreBuilder, SendsAnyNumberOfValuesAndAWaitTimeOfFive) {
    const std::string longest(511, 'v');
    const std::pair<const char *, words> lists[] = {{nullptr, {}},
                                                    {"", {}},
                                                    {"|a", {}},
                                                    {"12|on", {"12", "on"}},
                                                    {"12||on", {"12"}},
                                                    {" |b", {" ", "b"}},
                                                    {longest.c_str(), {longest}}};
    for (const auto &[list, values] : lists) {
        SCOPED_TRACE(list == nullptr ? "(no list)" : list);
        const meeting_point point(
            family::UNIX_SOCKET,
            {expect(request_lines("getState", values) + "Waittime: 5\n\n"),
             reply("Response Status: FSMC-004\nParameter Count: 1\nParam000 Length: 1\nP\nx\n")});
        const char *parameters = list;
        int status = 0;
        EXPECT_EQ(captured_output([&] {
                      status =
                          make_fsmcorelocal_request(point.path.c_str(), "getState", parameters);
                  }),
                  "");
        EXPECT_EQ(status, 4);
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
        const char *parameters = list.c_str();
        int status = 0;
        EXPECT_EQ(captured_output(
                      [&] { status = make_fsmcorelocal_request("/nowhere", "F", parameters); }),
                  red(message));
        EXPECT_EQ(status, 8);
        EXPECT_EQ(client.connects, 0);
    }
}

TEST(FsmcoreBuilder, DoesWithoutAFunctionOrASocket) {
    int status = 0;
    EXPECT_EQ(
        captured_output([&] { status = make_fsmcorelocal_request("/nowhere", nullptr, "a"); }), "");
    EXPECT_EQ(status, 503);
    EXPECT_EQ(captured_output([&] { status = make_fsmcorelocal_request(nullptr, "F", "a"); }),
              red("utility->make_localtcpclient_socket connect failed with error 'Invalid "
                  "argument'") +
                  red(fsmcore_message(LOCAL, 1, "F")));
    EXPECT_EQ(status, 6);
}

} // namespace
