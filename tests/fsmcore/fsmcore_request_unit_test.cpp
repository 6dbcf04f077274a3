// What the FSMCore client puts on the wire, and which requests it refuses.

#include "fsmcore/fsmcorelocal_request.h"
#include "tests/fsmcore/fsmcore_exchanges.h"
#include "tests/harness/console.h"
#include "tests/harness/watched_client.h"

#include <arpa/inet.h>
#include <cerrno>
#include <gtest/gtest.h>
#include <netinet/in.h>

namespace {

using namespace harness;

const char GOOD_ANSWER[] = "Response Status: FSMC-000\nParameter Count: 0\n";

struct request_row {
    const char *name;
    const char *function;
    std::vector<std::string> values;
    const char *lines; ///< up to the wait time

    friend void PrintTo(const request_row &row, std::ostream *stream) {
        *stream << row.name;
    }
};

const request_row REQUESTS[] = {
    {"NoValue", "GETSTATE", {}, "Request: GETSTATE\nParameter Count: 0\n"},
    {"OneValue",
     "GetState",
     {"12"},
     "Request: GetState\nParameter Count: 1\nParam000 Length: 2\nParam000:\n12\n"},
    {"TwoValues",
     "GETSTATE",
     {"12", "on"},
     "Request: GETSTATE\nParameter Count: 2\nParam000 Length: 2\nParam000:\n12\n"
     "Param001 Length: 2\nParam001:\non\n"},
    {"EmptyValue",
     "F",
     {"", "x"},
     "Request: F\nParameter Count: 2\nParam000 Length: 0\nParam000:\n\n"
     "Param001 Length: 1\nParam001:\nx\n"},
    {"NothingIsEscaped",
     "a\nb%s",
     {" \t|\r", "l\nm", "\xc3\xa9"},
     "Request: a\nb%s\nParameter Count: 3\nParam000 Length: 4\nParam000:\n \t|\r\n"
     "Param001 Length: 3\nParam001:\nl\nm\nParam002 Length: 2\nParam002:\n\xc3\xa9\n"},
};

class FsmcoreRequest : public testing::TestWithParam<request_row> {};

TEST_P(FsmcoreRequest, IsSentLocallyAndRemotely) {
    const request_row &row = GetParam();
    for (const fsmcore_exchange *x : FSMCORE_EXCHANGES) {
        SCOPED_TRACE(x->name);
        const meeting_point point(
            x->where,
            {expect(std::string(row.lines) + x->waittime_line + "\n"), reply(GOOD_ANSWER)});
        watched_client client;
        EXPECT_EQ(call(*x, point, row.function, row.values, {nullptr, nullptr}), 0);
        EXPECT_EQ(client.sends, 1);
        EXPECT_EQ(client.receives, 1);
        EXPECT_EQ(client.flags, 0);
        EXPECT_EQ(client.receive_size, 1024U);
        EXPECT_FALSE(client.close_left_open());
        EXPECT_EQ(point.daemon->finish(), "");
    }
}

INSTANTIATE_TEST_SUITE_P(Table, FsmcoreRequest, testing::ValuesIn(REQUESTS),
                         [](const auto &row) { return row.param.name; });

TEST(FsmcoreRequestRules, ThirtyThreeValuesAreNumberedWithThreeDigits) {
    std::string text = "Request: F\nParameter Count: 33\n";
    for (int i = 0; i < 33; i++) {
        const std::string param = (i < 10 ? "Param00" : "Param0") + std::to_string(i);
        text.append(param).append(" Length: 0\n").append(param).append(":\n\n");
    }
    const meeting_point point(family::LOOPBACK, {expect(text + "\n"), reply(GOOD_ANSWER)});
    EXPECT_EQ(call(REMOTE, point, "F", std::vector<std::string>(33), {nullptr, nullptr}), 0);
    EXPECT_EQ(point.daemon->finish(), "");
}

TEST(FsmcoreRequestRules, NegativeCountSendsNoValues) {
    const meeting_point point(
        family::UNIX_SOCKET,
        {expect("Request: F\nParameter Count: -2\nWaittime: 30\n\n"), reply(GOOD_ANSWER)});
    EXPECT_EQ(fsmcore_requeststatic(point.path.c_str(), "F", -2, nullptr, nullptr, nullptr, "30"),
              0);
    EXPECT_EQ(point.daemon->finish(), "");
}

TEST(FsmcoreRequestRules, ShortSendIsTakenForSuccess) {
    for (const fsmcore_exchange *x : FSMCORE_EXCHANGES) {
        const meeting_point point(x->where, {expect("Request"), reply(GOOD_ANSWER)});
        watched_client client;
        client.send_at_most = strlen("Request");
        EXPECT_EQ(call(*x, point, "F", {"a"}, {nullptr, nullptr}), 0);
        EXPECT_EQ(client.sends, 1);
        EXPECT_EQ(point.daemon->finish(), "");
    }
}

/// One red line that says which limit was passed; nothing connected.
void expect_refusal(const std::string &output, const std::string &message,
                    const watched_client &client) {
    EXPECT_EQ(output, red(message));
    EXPECT_EQ(client.connects, 0);
}

const std::string TEXT_TOO_LONG =
    " error request text is longer than 1023 characters for function 'F'";

std::string value_too_long(int parameter) {
    return " error value of parameter " + std::to_string(parameter) +
           " is longer than 511 characters for function 'F'";
}

/// Two values that make a request of exactly that many bytes.
std::vector<std::string> values_for(const fsmcore_exchange &x, std::size_t size) {
    const std::string rest = "Request: F\nParameter Count: 2\nParam000 Length: 400\nParam000:\n\n"
                             "Param001 Length: 400\nParam001:\n\n" +
                             std::string(x.waittime_line) + "\n";
    const std::size_t left = size - rest.size() - 450;
    EXPECT_TRUE(left > 99 && left < 512) << left;
    return {std::string(450, 'a'), std::string(left, 'b')};
}

TEST(FsmcoreLimits, RequestOf1023BytesIsSent) {
    for (const fsmcore_exchange *x : FSMCORE_EXCHANGES) {
        SCOPED_TRACE(x->name);
        const std::vector<std::string> values = values_for(*x, 1023);
        const std::string text =
            "Request: F\nParameter Count: 2\nParam000 Length: 450\nParam000:\n" + values[0] +
            "\nParam001 Length: " + std::to_string(values[1].size()) + "\nParam001:\n" + values[1] +
            "\n" + x->waittime_line + "\n";
        ASSERT_EQ(text.size(), 1023U);
        const meeting_point point(x->where, {expect(text), reply(GOOD_ANSWER)});
        EXPECT_EQ(call(*x, point, "F", values, {nullptr, nullptr}), 0);
        EXPECT_EQ(point.daemon->finish(), "");
    }
}

TEST(FsmcoreLimits, RequestOf1024BytesIsRefusedBeforeAConnection) {
    for (const fsmcore_exchange *x : FSMCORE_EXCHANGES) {
        SCOPED_TRACE(x->name);
        const meeting_point point(x->where, {});
        watched_client client;
        int status = 0;
        const std::string output = captured_output([&] {
            status = call(*x, point, "F", values_for(*x, 1024), {nullptr, nullptr});
        });
        EXPECT_EQ(status, 8);
        expect_refusal(output, x->tag + TEXT_TOO_LONG, client);
        EXPECT_EQ(point.daemon->finish_unvisited(), "");
    }
}

TEST(FsmcoreLimits, UnterminatedSlotIsRefusedBeforeAConnection) {
    for (const fsmcore_exchange *x : FSMCORE_EXCHANGES) {
        const meeting_point point(x->where, {});
        watched_client client;
        int status = 0;
        const std::string output = captured_output([&] {
            // Bytes behind the slot are nobody's end of it.
            status = call(*x, point, "F", {"a", std::string(512, 'b'), "c"}, {nullptr, nullptr});
        });
        EXPECT_EQ(status, 8);
        expect_refusal(output, x->tag + value_too_long(2), client);
        EXPECT_EQ(point.daemon->finish_unvisited(), "");
    }
}

// The builder of the command line.

struct builder_row {
    const char *name;
    const char *parameters;
    const char *lines; ///< between the function and the wait time
};

const builder_row BUILDER_ROWS[] = {
    {"NoList", nullptr, "Parameter Count: 0\n"},
    {"EmptyList", "", "Parameter Count: 0\n"},
    {"LeadingBar", "|a|b", "Parameter Count: 0\n"},
    {"BarAlone", "|", "Parameter Count: 0\n"},
    {"TwoValues", "12|on",
     "Parameter Count: 2\nParam000 Length: 2\nParam000:\n12\nParam001 Length: 2\nParam001:\non\n"},
    {"TrailingBar", "12|", "Parameter Count: 1\nParam000 Length: 2\nParam000:\n12\n"},
    {"EmptyItemEndsTheList", "12||on", "Parameter Count: 1\nParam000 Length: 2\nParam000:\n12\n"},
    {"BlankItem", " |b",
     "Parameter Count: 2\nParam000 Length: 1\nParam000:\n \nParam001 Length: 1\nParam001:\nb\n"},
};

class FsmcoreBuilder : public testing::TestWithParam<builder_row> {};

TEST_P(FsmcoreBuilder, SendsAnyNumberOfValuesAndAWaitTimeOfFive) {
    const builder_row &row = GetParam();
    const meeting_point point(
        family::UNIX_SOCKET,
        {expect(std::string("Request: getState\n") + row.lines + "Waittime: 5\n\n"),
         reply("Response Status: FSMC-004\nParameter Count: 1\nParam000 Length: 1\nP\nx\n")});
    int status = 0;
    EXPECT_EQ(captured_output([&] {
                  status =
                      make_fsmcorelocal_request(point.path.c_str(), "getState", row.parameters);
              }),
              "");
    EXPECT_EQ(status, 4);
    EXPECT_EQ(point.daemon->finish(), "");
}

INSTANTIATE_TEST_SUITE_P(Table, FsmcoreBuilder, testing::ValuesIn(BUILDER_ROWS),
                         [](const auto &row) { return row.param.name; });

std::string repeated(int count, const std::string &value) {
    std::string list = value;
    for (int i = 1; i < count; i++) {
        list += "|" + value;
    }
    return list;
}

TEST(FsmcoreBuilderLimits, ValueOf511BytesIsSentWhole) {
    const std::string value(511, 'v');
    const meeting_point point(
        family::UNIX_SOCKET,
        {expect("Request: F\nParameter Count: 1\nParam000 Length: 511\nParam000:\n" + value +
                "\nWaittime: 5\n\n"),
         reply(GOOD_ANSWER)});
    EXPECT_EQ(make_fsmcorelocal_request(point.path.c_str(), "F", value.c_str()), 0);
    EXPECT_EQ(point.daemon->finish(), "");
}

struct refused_list {
    const char *name;
    std::string parameters;
    std::string message;

    friend void PrintTo(const refused_list &row, std::ostream *stream) {
        *stream << row.name;
    }
};

const std::string BUILDER = "localclientutil->make_fsmcorelocal_request";
const std::string TOO_MANY = " error more than 48 parameters for function 'F'";

const refused_list REFUSED_LISTS[] = {
    {"ValueOf512", std::string(512, 'v'), BUILDER + value_too_long(1)},
    {"SecondValueOf512", "a|" + std::string(512, 'v'), BUILDER + value_too_long(2)},
    {"ValueOf100000", std::string(100000, 'v'), BUILDER + value_too_long(1)},
    {"FortyNineValues", repeated(49, "v"), BUILDER + TOO_MANY},
    {"ManyValues", repeated(5000, "v"), BUILDER + TOO_MANY},
    {"FortyEightValuesInTooLongAText", repeated(48, "v"), LOCAL.tag + TEXT_TOO_LONG},
    {"TwoValuesInTooLongAText", repeated(2, std::string(500, 'v')), LOCAL.tag + TEXT_TOO_LONG},
};

class RefusedList : public testing::TestWithParam<refused_list> {};

TEST_P(RefusedList, IsRefusedBeforeAConnection) {
    const meeting_point point(family::UNIX_SOCKET, {});
    watched_client client;
    int status = 0;
    const std::string output = captured_output([&] {
        status = make_fsmcorelocal_request(point.path.c_str(), "F", GetParam().parameters.c_str());
    });
    EXPECT_EQ(status, 8);
    expect_refusal(output, GetParam().message, client);
    EXPECT_EQ(point.daemon->finish_unvisited(), "");
}

INSTANTIATE_TEST_SUITE_P(Table, RefusedList, testing::ValuesIn(REFUSED_LISTS),
                         [](const auto &row) { return row.param.name; });

TEST(FsmcoreBuilderRules, MissingFunctionIsNotServed) {
    const meeting_point point(family::UNIX_SOCKET, {});
    int status = 0;
    EXPECT_EQ(captured_output(
                  [&] { status = make_fsmcorelocal_request(point.path.c_str(), nullptr, "a"); }),
              "");
    EXPECT_EQ(status, 503);
    EXPECT_EQ(point.daemon->finish_unvisited(), "");
}

TEST(FsmcoreBuilderRules, MissingSocketPathIsAnEmptyOne) {
    for (const char *path : {"", static_cast<const char *>(nullptr)}) {
        int status = 0;
        EXPECT_EQ(captured_output([&] { status = make_fsmcorelocal_request(path, "F", "a"); }),
                  red("utility->make_localtcpclient_socket connect failed with error 'Invalid "
                      "argument'") +
                      red(fsmcore_message(LOCAL, 1, "F")));
        EXPECT_EQ(status, 6);
    }
}

} // namespace
