// What the FSMCore client puts on the wire and where, and which requests it refuses.

#include "fsmcore/fsmcorelocal_request.h"
#include "tests/front/fresh_globals.h"
#include "tests/fsmcore/fsmcore_exchanges.h"
#include "tests/harness/console.h"
#include "tests/protocol/texts.h"

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

void expect_sent(const fsmcore_exchange &x, const char *function, const words &values) {
    const std::string lines = request_lines(function, values);
    SCOPED_TRACE(x.tag + " " + lines);
    const meeting_point point(x.where,
                              {expect(lines + x.waittime_line + "\n"), reply(GOOD_ANSWER)});
    const client_outcome got = call(x, point, function, values);
    EXPECT_EQ(got.output, "");
    EXPECT_EQ(got.status, 0);
    EXPECT_FALSE(got.left_open);
    EXPECT_EQ(point.daemon->finish(), "");
}

TEST(FsmcoreRequest, IsSentLocallyAndRemotely) {
    for (const fsmcore_exchange *x : FSMCORE_EXCHANGES) {
        expect_sent(*x, "GETSTATE", {});
        expect_sent(*x, "GetState", {"12", "on"});
        expect_sent(*x, "F", {"", "x", std::string(511, 'v')});
        expect_sent(*x, "F", words(32));
        expect_sent(*x, "a\nb%s", {" \t|\r", "l\nm", "\xc3\xa9"});
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

const std::string TEXT_TOO_LONG =
    " error request text is longer than 1023 characters for function 'F'";

std::string value_too_long(int parameter) {
    return " error value of parameter " + std::to_string(parameter) +
           " is longer than 511 characters for function 'F'";
}

TEST(FsmcoreLimits, AreCheckedBeforeAConnection) {
    for (const fsmcore_exchange *x : FSMCORE_EXCHANGES) {
        words values = {std::string(450, 'a'), std::string(400, 'b')};
        const std::size_t usual = (request_lines("F", values) + x->waittime_line + "\n").size();
        values[1].append(1023 - usual, 'b');
        expect_sent(*x, "F", values);
        values[1] += "b";
        // A connection would be refused with a line of its own.
        const client_outcome text = call(*x, deserted_point(), "F", values);
        EXPECT_EQ(text.output, red(x->tag + TEXT_TOO_LONG));
        EXPECT_EQ(text.status, 8);
        // Bytes behind a slot are nobody's end of it.
        const client_outcome value =
            call(*x, deserted_point(), "F", {"a", std::string(512, 'b'), "c"});
        EXPECT_EQ(value.output, red(x->tag + value_too_long(2)));
        EXPECT_EQ(value.status, 8);
    }
}

/// Calls the remote exchange where it finds nobody; what it wrote.
std::string tried(const char *address, const char *port) {
    int status = 0;
    const std::string output = captured_output([&] {
        status = fsmcore_m2mrequeststatic(address, port, "F", 0, nullptr, nullptr, nullptr);
    });
    EXPECT_EQ(status, 6);
    return output;
}

TEST(RemoteTarget, IsConnectedTo) {
    for (const auto &[address, before, added] : {std::tuple{"127.0.0.1", "", 0},
                                                 {"0x7f.1", " +", 0},
                                                 {"127.1", "", 65536}}) { // the low sixteen bits
        const meeting_point point(family::LOOPBACK, {reply(GOOD_ANSWER)});
        const std::string port = before + std::to_string(point.port + added);
        EXPECT_EQ(
            fsmcore_m2mrequeststatic(address, port.c_str(), "F", 0, nullptr, nullptr, nullptr), 0);
        EXPECT_EQ(point.daemon->finish(), "");
    }
    const std::string refused = tried("255.255.255.255", "1025"); // no host at all
    EXPECT_TRUE(refused.ends_with(red(fsmcore_message(REMOTE, 1, "F")))) << refused;
}

TEST(RemoteTarget, IsRefusedBeforeTheConnection) {
    const char *const none = nullptr;
    for (const char *address : {"10.1.2.256", "localhost", "", "10.1.2.3x", none}) {
        const std::string shown = address == nullptr ? "(null)" : address;
        for (const char *port : {"2000", "1024"}) { // the address is looked at first
            EXPECT_EQ(tried(address, port), red(REMOTE.tag + " error hostip parameter '" + shown +
                                                "' is not in a valid numbers-and-dots notation"));
        }
    }
    for (const char *port : {"1024", "-2000", "", "2000x", "4294969296", none}) {
        const std::string shown = port == nullptr ? "(null)" : port;
        EXPECT_EQ(tried("127.0.0.1", port), red(REMOTE.tag + " strtol error on converting '" +
                                                shown + "' into numeric remote port number"));
    }
}

// --- The builder of the command line

void expect_built(const char *path, const char *function, const char *list,
                  const std::string &output, int status) {
    int got = 0;
    EXPECT_EQ(captured_output([&] { got = make_fsmcorelocal_request(path, function, list); }),
              output);
    EXPECT_EQ(got, status);
}

using FsmcoreBuilder = front_tests::FreshGlobals;

TEST_F(FsmcoreBuilder, SendsAnyNumberOfValuesAndAWaitTimeOfFive) {
    g_config.waittime = 9; // is the web service's alone
    const std::string longest(511, 'v');
    const std::pair<const char *, words> lists[] = {
        {nullptr, {}}, {"", {}}, {"12|on", {"12", "on"}}, {longest.c_str(), {longest}}};
    for (const auto &[list, values] : lists) {
        const meeting_point point(
            family::UNIX_SOCKET,
            {expect(request_lines("getState", values) + "Waittime: 5\n\n"),
             reply("Response Status: FSMC-004\nParameter Count: 1\nParam000 Length: 1\nP\nx\n")});
        expect_built(point.path.c_str(), "getState", list, "", 4);
        EXPECT_EQ(point.daemon->finish(), "");
    }
}

TEST_F(FsmcoreBuilder, RefusesWhatDoesNotFitBeforeAConnection) {
    const std::string builder = "localclientutil->make_fsmcorelocal_request";
    const std::string long_value(512, 'v');
    const std::pair<std::string, std::string> lists[] = {
        {long_value, builder + value_too_long(1)},
        {"a|" + long_value, builder + value_too_long(2)},
        {protocol::list_of(49), builder + " error more than 48 parameters for function 'F'"},
        {protocol::list_of(48), LOCAL.tag + TEXT_TOO_LONG},
    };
    for (const auto &[list, message] : lists) {
        expect_built("/nowhere", "F", list.c_str(), red(message), 8);
    }
}

} // namespace
