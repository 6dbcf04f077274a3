// The request builders: which functions they serve, what they refuse before any connection, and
// what they make the exchanges send.

#include "tests/harness/console.h"
#include "tests/harness/watched_client.h"
#include "tests/protocol/gateway_calls.h"

#include <gtest/gtest.h>
#include <set>
#include <string>

namespace {

using namespace harness;
using namespace protocol;

const gateway_row &BENTEL = gateway_named("BENTEL");
const gateway_row &EIB = gateway_named("EIB");
const gateway_row &SMSTOOL = gateway_named("SMSTOOL");
const gateway_row &LINTRONIC = gateway_named("LINTRONIC");
const gateway_row &ECHOBUS = gateway_named("ECHOBUS");
const gateway_row &ECHOBUS_TCP = *GATEWAYS.back();

/// What a call wrote, returned and connected.
struct outcome {
    std::string output;
    int status;
    int connects;
};

outcome build_in_vain(const gateway_row &gateway, const char *function, const char *parameters) {
    const deserted_point point;
    watched_client client;
    outcome result = {};
    result.output =
        captured_output([&] { result.status = build(gateway, point, function, parameters); });
    result.connects = client.connects;
    return result;
}

bool is_sent(const gateway_row & /*gateway*/, const function_row &function) {
    return function.built == builder_answer::SENDS;
}

bool is_counted(const gateway_row & /*gateway*/, const function_row &function) {
    return function.built != builder_answer::REFUSES;
}

bool is_only_counted(const gateway_row &gateway, const function_row &function) {
    return is_counted(gateway, function) && !is_sent(gateway, function);
}

constexpr auto NAME_OF_FUNCTION = [](const auto &row) { return name_of(row.param); };

class SentFunction : public testing::TestWithParam<function_case> {};

TEST_P(SentFunction, SendsItsRequestAndReturnsTheAnswer) {
    const gateway_row *const gateway = GetParam().gateway;
    const function_row *const row = GetParam().function;
    for (const std::string &function : {std::string(row->name), lower(row->name)}) {
        const meeting_point point(
            gateway->where, {expect(sample_request(*row, function)),
                             reply(std::string("Response Status: ") + gateway->prefix + "42\n")});
        int status = 0;
        EXPECT_EQ(captured_output(
                      [&] { status = build(*gateway, point, function.c_str(), row->sample); }),
                  "");
        EXPECT_EQ(status, 42);
        EXPECT_EQ(point.daemon->finish(), "");
    }
}

INSTANTIATE_TEST_SUITE_P(Rows, SentFunction, testing::ValuesIn(functions_that(is_sent)),
                         NAME_OF_FUNCTION);

class CountedFunction : public testing::TestWithParam<function_case> {};

TEST_P(CountedFunction, InsistsOnItsCount) {
    const auto &[gateway, row] = GetParam();
    const std::size_t count = count_of(*row);
    const std::string too_few = list_of(count - 1);
    const std::string too_many = list_of(count + 1);
    const std::string last_empty = too_few + "|";
    const std::string middle_empty = "p||" + too_few;
    const std::string first_empty = "|" + list_of(count);
    for (const char *list :
         {too_few.c_str(), too_many.c_str(), last_empty.c_str(), middle_empty.c_str(),
          first_empty.c_str(), "", "|", static_cast<const char *>(nullptr)}) {
        SCOPED_TRACE(list == nullptr ? "(no list)" : list);
        const outcome got = build_in_vain(*gateway, row->name, list);
        EXPECT_EQ(got.output, red(count_message(*gateway, *row)));
        EXPECT_EQ(got.status, 505);
        EXPECT_EQ(got.connects, 0);
    }
}

INSTANTIATE_TEST_SUITE_P(Rows, CountedFunction, testing::ValuesIn(functions_that(is_counted)),
                         NAME_OF_FUNCTION);

TEST(BuilderRules, CountedFunctionMayStillBeRefused) {
    const std::vector<function_case> rows = functions_that(is_only_counted);
    EXPECT_FALSE(rows.empty());
    for (const auto &[gateway, row] : rows) {
        SCOPED_TRACE(row->name);
        const outcome got = build_in_vain(*gateway, row->name, row->sample);
        EXPECT_EQ(got.output, "");
        EXPECT_EQ(got.status, 503);
        EXPECT_EQ(got.connects, 0);
    }
}

/// Names that no builder serves, much as some look like it.
const char *const STRANGERS[] = {
    "",
    "SENDEIBUSDATAGRAM",
    "SENDLINTRONICRAWDATAGRAM",
    "SENDTUTONDODATAGRAM",
    "SENDECHOBUSSETDATAGRAM",
    "SENDMARTINDATAGRAM",
    "SENDIBSGETDATAGRAM",
    "SENDBYMEDATAGRAM",
};

/// The strangers, the functions of the other gateways, and the gateway's own misspelt.
std::set<std::string> unserved_by(const gateway_row &gateway) {
    std::set<std::string> names(std::begin(STRANGERS), std::end(STRANGERS));
    for (const gateway_row *other : GATEWAYS) {
        for (const function_row &function : other->functions) {
            names.insert(function.name);
        }
    }
    for (const function_row &function : gateway.functions) {
        const std::string name = function.name;
        if (function.built != builder_answer::REFUSES) {
            names.erase(name);
        }
        names.insert({name + "S", name + " ", name.substr(0, name.size() - 1)});
    }
    return names;
}

TEST(BuilderRules, UnservedFunctionIsRefusedSilentlyBeforeTheListIsLookedAt) {
    for (const gateway_row *gateway : GATEWAYS) {
        SCOPED_TRACE(title(*gateway));
        const deserted_point point;
        watched_client client;
        const auto refuse = [&](const char *function) {
            SCOPED_TRACE(function == nullptr ? "(no function)" : function);
            for (std::size_t count = 0; count <= 12; count++) {
                EXPECT_EQ(build(*gateway, point, function, list_of(count).c_str()), 503);
            }
            EXPECT_EQ(build(*gateway, point, function, nullptr), 503);
        };
        EXPECT_EQ(captured_output([&] {
                      refuse(nullptr);
                      for (const std::string &function : unserved_by(*gateway)) {
                          refuse(function.c_str());
                      }
                  }),
                  "");
        EXPECT_EQ(client.connects, 0);
    }
}

struct lintronic_row {
    const char *name;
    const char *parameters;
    int status;
    const char *message;
};

const char LINTRONIC_DEVICE[] = "localclientutil->make_lintroniclocal_request error Device is not "
                                "in 2-digit-zero-filled format";
const char LINTRONIC_COMMAND[] = "localclientutil->make_lintroniclocal_request error Command is "
                                 "not in 3-digit-zero-filled format";
const char LINTRONIC_COUNT[] = "localclientutil->make_lintroniclocal_request error too few or too "
                               "much parameters, SectionName, Device, Command,  Payload are needed";

const lintronic_row LINTRONIC_ROWS[] = {
    {"DeviceOfOne", "s|7|012|on", 502, LINTRONIC_DEVICE},
    {"DeviceOfThree", "s|007|012|on", 502, LINTRONIC_DEVICE},
    {"CommandOfTwo", "s|07|12|on", 502, LINTRONIC_COMMAND},
    {"CommandOfFour", "s|07|0012|on", 502, LINTRONIC_COMMAND},
    {"DeviceBeforeCommand", "s|7|12|on", 502, LINTRONIC_DEVICE},
    {"CountBeforeDevice", "s|7|12", 505, LINTRONIC_COUNT},
    {"CountBeforeCommand", "s|07|12|on|more", 505, LINTRONIC_COUNT},
};

class LintronicFormat : public testing::TestWithParam<lintronic_row> {};

TEST_P(LintronicFormat, IsRefusedBeforeAnyConnection) {
    const lintronic_row &row = GetParam();
    const outcome got = build_in_vain(LINTRONIC, "SENDLINTRONICDATAGRAM", row.parameters);
    EXPECT_EQ(got.output, red(row.message));
    EXPECT_EQ(got.status, row.status);
    EXPECT_EQ(got.connects, 0);
}

INSTANTIATE_TEST_SUITE_P(Table, LintronicFormat, testing::ValuesIn(LINTRONIC_ROWS),
                         [](const auto &row) { return row.param.name; });

TEST(LintronicRules, OnlyLengthsCount) {
    const meeting_point point(family::UNIX_SOCKET,
                              {expect("Request: SENDLINTRONICDATAGRAM\nSectionName: s\n"
                                      "Device: ab\nCommand: x y\nPayload: on\n\n"),
                               reply("Response Status: LINT-0000\n")});
    EXPECT_EQ(
        make_lintroniclocal_request(point.path.c_str(), "SENDLINTRONICDATAGRAM", "s|ab|x y|on"), 0);
    EXPECT_EQ(point.daemon->finish(), "");
}

TEST(BuilderRules, SmstoolCountsByFunction) {
    EXPECT_EQ(build_in_vain(SMSTOOL, "RECVSMSTOOLDATAGRAM", "a|b|c").output,
              red("localclientutil->make_smstoollocal_request error too few or too much "
                  "parameters, PhoneNumber, Msg are needed"));
    EXPECT_EQ(build_in_vain(SMSTOOL, "SENDSMSTOOLDATAGRAM", "a|b").output,
              red("localclientutil->make_smstoollocal_request error too few or too much "
                  "parameters, SectionName, PhoneNumber, Msg are needed"));
}

TEST(BuilderRules, ExchangeCodesPassUnchanged) {
    const outcome refused = build_in_vain(EIB, "SENDEIBUSSETDATAGRAM", "a|b|c|d");
    EXPECT_EQ(refused.status, 105);
    EXPECT_EQ(refused.connects, 1);
    const meeting_point point(family::UNIX_SOCKET,
                              {collect_until("\n\n"), reply("Response Status: EIBG--3\n")});
    EXPECT_EQ(make_eibuslocal_request(point.path.c_str(), "SENDEIBUSSETDATAGRAM", "a|b|c|d"), -3);
    EXPECT_EQ(point.daemon->finish(), "");
}

/// A path that was never given is an empty one: the connection is refused, nothing crashes.
TEST(BuilderRules, MissingSocketPath) {
    for (const char *path : {"", static_cast<const char *>(nullptr)}) {
        int status = 0;
        const std::string output = captured_output([&] {
            status = make_bentellocal_request(path, "SENDBENTELCOMMANDDATAGRAM", "a|b|c|d");
        });
        EXPECT_EQ(output, red("utility->make_localtcpclient_socket connect failed with error "
                              "'Invalid argument'") +
                              red("BENTELGatewayutil->bentelgateway_local_request error opening "
                                  "socket BENTELGateway clientside for function "
                                  "'SENDBENTELCOMMANDDATAGRAM'"));
        EXPECT_EQ(status, 1305);
    }
}

} // namespace
