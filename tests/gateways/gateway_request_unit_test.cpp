// What every gateway exchange puts on the wire, byte for byte.

#include "tests/gateways/exchange_messages.h"
#include "tests/harness/console.h"
#include "tests/harness/watched_client.h"
#include "tests/protocol/gateway_calls.h"

#include <cstring>
#include <gtest/gtest.h>

namespace {

using namespace harness;
using namespace protocol;

const gateway_row &BENTEL = gateway_named("BENTEL");
const gateway_row &EIB = gateway_named("EIB");
const gateway_row &SMSTOOL = gateway_named("SMSTOOL");
const gateway_row &LINTRONIC = gateway_named("LINTRONIC");
const gateway_row &ECHOBUS = gateway_named("ECHOBUS");
const gateway_row &ECHOBUS_TCP = *GATEWAYS.back();

std::string good_answer(const gateway_row &gateway) {
    return std::string("Response Status: ") + gateway.prefix + "0\n";
}

class GatewayRequest : public testing::TestWithParam<function_case> {};

TEST_P(GatewayRequest, IsSentAsTheCallerSpellsIt) {
    const gateway_row *const gateway = GetParam().gateway;
    const function_row *const row = GetParam().function;
    for (const std::string &function : {std::string(row->name), lower(row->name)}) {
        SCOPED_TRACE(function);
        const meeting_point point(
            gateway->where,
            {expect(request_text(*row, function,
                                 {std::begin(NUMBERED_VALUES), std::end(NUMBERED_VALUES)})),
             reply(good_answer(*gateway))});
        watched_client client;
        int status = -1;
        EXPECT_EQ(captured_output(
                      [&] { status = call(*gateway, point, function.c_str(), NUMBERED_VALUES); }),
                  "");
        EXPECT_EQ(status, 0);
        EXPECT_FALSE(client.close_left_open());
        EXPECT_EQ(point.daemon->finish(), "");
    }
}

INSTANTIATE_TEST_SUITE_P(Functions, GatewayRequest,
                         testing::ValuesIn(functions_that([](auto &&...) { return true; })),
                         [](const auto &row) { return name_of(row.param); });

TEST(GatewayRequestRules, ValuesAreNeitherEscapedNorTrimmed) {
    const char *const values[] = {" a\tb ", "c\nUserCode: d", "100%s %n", "'\"\\|\r"};
    const meeting_point point(
        family::UNIX_SOCKET,
        {expect("Request: SendBentelCommandDatagram\nSectionName:  a\tb \n"
                "UserCode: c\nUserCode: d\nCommand: 100%s %n\nPayload: '\"\\|\r\n\n"),
         reply("Response Status: BENG-0000\n")});
    EXPECT_EQ(call(BENTEL, point, "SendBentelCommandDatagram", values), 0);
    EXPECT_EQ(point.daemon->finish(), "");
}

TEST(GatewayRequestRules, EmptyValuesKeepTheirLines) {
    const char *const values[] = {"", "", "", ""};
    const meeting_point point(family::UNIX_SOCKET,
                              {expect("Request: SENDEIBUSSETDATAGRAM\nSectionName: \n"
                                      "Destination: \nEISType: \nPayload: \n\n"),
                               reply("Response Status: EIBG-000\n")});
    EXPECT_EQ(call(EIB, point, "SENDEIBUSSETDATAGRAM", values), 0);
    EXPECT_EQ(point.daemon->finish(), "");
}

TEST(EveryExchange, SendsOnceAndReceivesOnceWithoutFlags) {
    for (const gateway_row *each : GATEWAYS) {
        const gateway_row &x = *each;
        SCOPED_TRACE(title(x));
        const meeting_point point(x.where, {collect_until("\n\n"), reply(good_answer(x))});
        watched_client client;
        EXPECT_EQ(call(x, point, usual_function(x), NUMBERED_VALUES), 0);
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
    for (const gateway_row *each : GATEWAYS) {
        const gateway_row &x = *each;
        SCOPED_TRACE(title(x));
        const meeting_point point(x.where, {expect("Request"), reply(good_answer(x))});
        watched_client client;
        client.send_at_most = strlen("Request");
        EXPECT_EQ(call(x, point, usual_function(x), NUMBERED_VALUES), 0);
        EXPECT_EQ(client.sends, 1);
        EXPECT_EQ(point.daemon->finish(), "");
    }
}

/// The request of the exchange's usual function at a size that its section makes up.
struct sized_request {
    sized_request(const gateway_row &x, std::size_t size)
        : values(std::begin(NUMBERED_VALUES), std::end(NUMBERED_VALUES)) {
        values[0].clear();
        values[0].assign(size - text(x).size(), 's');
        for (const std::string &value : values) {
            pointers.push_back(value.c_str());
        }
    }

    std::string text(const gateway_row &x) const {
        return request_text(x.functions.front(), usual_function(x), values);
    }

    words values;
    std::vector<const char *> pointers;
};

TEST(EveryExchange, SendsARequestOf1023Characters) {
    for (const gateway_row *each : GATEWAYS) {
        const gateway_row &x = *each;
        SCOPED_TRACE(title(x));
        const sized_request request(x, 1023);
        ASSERT_EQ(request.text(x).size(), 1023U);
        const meeting_point point(x.where, {expect(request.text(x)), reply(good_answer(x))});
        EXPECT_EQ(call(x, point, usual_function(x), request.pointers.data()), 0);
        EXPECT_EQ(point.daemon->finish(), "");
    }
}

TEST(EveryExchange, RefusesARequestOf1024Characters) {
    for (const gateway_row *each : GATEWAYS) {
        const gateway_row &x = *each;
        SCOPED_TRACE(title(x));
        for (const std::size_t size : {std::size_t{1024}, std::size_t{100000}}) {
            SCOPED_TRACE(size);
            const sized_request request(x, size);
            const meeting_point point(x.where, {});
            watched_client client;
            int status = 0;
            const std::string output = captured_output(
                [&] { status = call(x, point, usual_function(x), request.pointers.data()); });
            EXPECT_EQ(status, x.base + 6);
            const std::string quote = x.quoting[2] == 'Q' ? "'" : "";
            EXPECT_EQ(output, red(std::string(x.tag) +
                                  " error request text is longer than 1023 characters for "
                                  "function " +
                                  quote + usual_function(x) + quote));
            EXPECT_EQ(client.sends, 0);
            EXPECT_FALSE(client.close_left_open());
            EXPECT_EQ(point.daemon->finish(), "");
            EXPECT_EQ(point.daemon->received(), "");
        }
    }
}

} // namespace
