// What every gateway exchange puts on the wire, byte for byte.

#include "tests/gateways/exchanges.h"
#include "tests/harness/console.h"
#include "tests/harness/watched_client.h"

#include <cstring>
#include <gtest/gtest.h>

namespace {

using namespace harness;

std::string good_answer(const exchange_row &exchange) {
    return std::string("Response Status: ") + exchange.prefix + "0\n";
}

class GatewayRequest : public testing::TestWithParam<request_row> {};

TEST_P(GatewayRequest, IsSentAsTheCallerSpellsIt) {
    const request_row &row = GetParam();
    for (const std::string &function : {std::string(row.function), lower(row.function)}) {
        SCOPED_TRACE(function);
        const std::string text = "Request: " + function + "\n" + row.lines;
        const meeting_point point(row.exchange->where,
                                  {expect(text), reply(good_answer(*row.exchange))});
        watched_client client;
        int status = -1;
        EXPECT_EQ(captured_output([&] {
                      status = call(*row.exchange, point, function.c_str(), NUMBERED_VALUES);
                  }),
                  "");
        EXPECT_EQ(status, 0);
        EXPECT_FALSE(client.close_left_open());
        EXPECT_EQ(point.daemon->finish(), "");
    }
}

INSTANTIATE_TEST_SUITE_P(Functions, GatewayRequest, testing::ValuesIn(REQUESTS),
                         [](const auto &row) { return row.param.name; });

TEST(GatewayRequestRules, ValuesAreNeitherEscapedNorTrimmed) {
    const char *const values[] = {" a\tb ", "c\nUserCode: d", "100%s %n", "'\"\\|\r"};
    const meeting_point point(
        UNIX_SOCKET, {expect("Request: SendBentelCommandDatagram\nSectionName:  a\tb \n"
                             "UserCode: c\nUserCode: d\nCommand: 100%s %n\nPayload: '\"\\|\r\n\n"),
                      reply("Response Status: BENG-0000\n")});
    EXPECT_EQ(call(BENTEL, point, "SendBentelCommandDatagram", values), 0);
    EXPECT_EQ(point.daemon->finish(), "");
}

TEST(GatewayRequestRules, EmptyValuesKeepTheirLines) {
    const char *const values[] = {"", "", "", ""};
    const meeting_point point(UNIX_SOCKET, {expect("Request: SENDEIBUSSETDATAGRAM\nSectionName: \n"
                                                   "Destination: \nEISType: \nPayload: \n\n"),
                                            reply("Response Status: EIBG-000\n")});
    EXPECT_EQ(call(EIB, point, "SENDEIBUSSETDATAGRAM", values), 0);
    EXPECT_EQ(point.daemon->finish(), "");
}

TEST(EveryExchange, SendsOnceAndReceivesOnceWithoutFlags) {
    for (const exchange_row *each : EXCHANGES) {
        const exchange_row &x = *each;
        SCOPED_TRACE(x.name);
        const meeting_point point(x.where, {collect_until("\n\n"), reply(good_answer(x))});
        watched_client client;
        EXPECT_EQ(call(x, point, x.function, NUMBERED_VALUES), 0);
        EXPECT_EQ(client.connects, 1);
        EXPECT_EQ(client.sends, 1);
        EXPECT_EQ(client.receives, 1);
        EXPECT_EQ(client.flags, 0);
        EXPECT_EQ(client.receive_size, 1024U);
        EXPECT_FALSE(client.close_left_open());
        EXPECT_EQ(point.daemon->finish(), "");
    }
}

TEST(EveryExchange, TakesAShortSendForSuccess) {
    for (const exchange_row *each : EXCHANGES) {
        const exchange_row &x = *each;
        SCOPED_TRACE(x.name);
        const meeting_point point(x.where, {expect("Request"), reply(good_answer(x))});
        watched_client client;
        client.send_at_most = strlen("Request");
        EXPECT_EQ(call(x, point, x.function, NUMBERED_VALUES), 0);
        EXPECT_EQ(client.sends, 1);
        EXPECT_EQ(point.daemon->finish(), "");
    }
}

/// The lines of an exchange's own function.
std::string lines_of(const exchange_row &x) {
    for (const request_row &row : REQUESTS) {
        if (row.exchange == &x && std::string(row.function) == x.function) {
            return row.lines;
        }
    }
    return "no lines";
}

TEST(EveryExchange, SendsARequestOf1023Characters) {
    for (const exchange_row *each : EXCHANGES) {
        const exchange_row &x = *each;
        SCOPED_TRACE(x.name);
        std::string text = std::string("Request: ") + x.function + "\n" + lines_of(x);
        const std::string section(1023 - (text.size() - strlen("v1")), 's');
        text.replace(text.find("v1"), strlen("v1"), section);
        ASSERT_EQ(text.size(), 1023U);
        const char *values[] = {section.c_str(), "v2", "v3", "v4", "v5", "v6", "v7", "v8", "v9",
                                "v10",           "v11"};
        const meeting_point point(x.where, {expect(text), reply(good_answer(x))});
        EXPECT_EQ(call(x, point, x.function, values), 0);
        EXPECT_EQ(point.daemon->finish(), "");
    }
}

TEST(EveryExchange, RefusesARequestOf1024Characters) {
    for (const exchange_row *each : EXCHANGES) {
        const exchange_row &x = *each;
        SCOPED_TRACE(x.name);
        const std::string text = std::string("Request: ") + x.function + "\n" + lines_of(x);
        for (const std::size_t size : {std::size_t{1024}, std::size_t{100000}}) {
            SCOPED_TRACE(size);
            const std::string section(size - (text.size() - strlen("v1")), 's');
            const char *values[] = {section.c_str(), "v2", "v3", "v4", "v5", "v6", "v7", "v8", "v9",
                                    "v10",           "v11"};
            const meeting_point point(x.where, {});
            watched_client client;
            int status = 0;
            const std::string output =
                captured_output([&] { status = call(x, point, x.function, values); });
            EXPECT_EQ(status, x.base + 6);
            const std::string quote = x.quoting[2] == 'Q' ? "'" : "";
            EXPECT_EQ(output, red(std::string(x.tag) +
                                  " error request text is longer than 1023 characters for "
                                  "function " +
                                  quote + x.function + quote));
            EXPECT_EQ(client.sends, 0);
            EXPECT_FALSE(client.close_left_open());
            EXPECT_EQ(point.daemon->finish(), "");
            EXPECT_EQ(point.daemon->received(), "");
        }
    }
}

} // namespace
