// The request builders: which functions they serve, what they refuse before any connection, and
// what they make the exchanges send.

#include "tests/gateways/builders.h"
#include "tests/harness/console.h"
#include "tests/harness/watched_client.h"

#include <gtest/gtest.h>
#include <string>

namespace {

using namespace harness;

/// What a call wrote, returned and connected.
struct outcome {
    std::string output;
    int status;
    int connects;
};

outcome build(builder_call builder, const char *function, const char *parameters) {
    const deserted_point point;
    watched_client client;
    outcome result = {};
    result.output = captured_output(
        [&] { result.status = builder(point.path.c_str(), point.port, function, parameters); });
    result.connects = client.connects;
    return result;
}

/// A list of that many items.
std::string list_of(int count) {
    std::string list;
    for (int i = 0; i < count; i++) {
        list += i == 0 ? "p" : "|p";
    }
    return list;
}

class Builder : public testing::TestWithParam<builder_row_wanted> {};

TEST_P(Builder, SendsItsRequestAndReturnsTheAnswer) {
    const builder_row_wanted &row = GetParam();
    if (row.lines == nullptr) {
        const outcome got = build(row.build, row.function, row.parameters);
        EXPECT_EQ(got.output, "");
        EXPECT_EQ(got.status, 503);
        EXPECT_EQ(got.connects, 0);
        return;
    }
    std::string lower_case = row.function;
    for (char &c : lower_case) {
        c = static_cast<char>(c - 'A' + 'a');
    }
    for (const std::string &function : {std::string(row.function), lower_case}) {
        const meeting_point point(row.where,
                                  {expect("Request: " + function + "\n" + row.lines),
                                   reply(std::string("Response Status: ") + row.prefix + "42\n")});
        int status = 0;
        EXPECT_EQ(captured_output([&] {
                      status = row.build(point.path.c_str(), point.port, function.c_str(),
                                         row.parameters);
                  }),
                  "");
        EXPECT_EQ(status, 42);
        EXPECT_EQ(point.daemon->finish(), "");
    }
}

TEST_P(Builder, InsistsOnItsCount) {
    const builder_row_wanted &row = GetParam();
    const std::string too_few = list_of(row.count - 1);
    const std::string too_many = list_of(row.count + 1);
    const std::string last_empty = too_few + "|";
    const std::string middle_empty = "p|" + std::string("|") + too_few;
    const std::string first_empty = "|" + list_of(row.count);
    for (const char *list :
         {too_few.c_str(), too_many.c_str(), last_empty.c_str(), middle_empty.c_str(),
          first_empty.c_str(), "", "|", static_cast<const char *>(nullptr)}) {
        SCOPED_TRACE(list == nullptr ? "(no list)" : list);
        const outcome got = build(row.build, row.function, list);
        EXPECT_EQ(got.output, red(row.count_message));
        EXPECT_EQ(got.status, 505);
        EXPECT_EQ(got.connects, 0);
    }
}

INSTANTIATE_TEST_SUITE_P(Table, Builder, testing::ValuesIn(BUILDERS),
                         [](const auto &row) { return row.param.name; });

/// Functions that a builder does not serve, whatever the list.
struct unserved_row {
    const char *name;
    builder_call build;
    const char *function;
};

const unserved_row UNSERVED[] = {
    {"Eib", BUILD_EIB, "SENDEIBUSDATAGRAM"},
    {"EibOfAnotherGateway", BUILD_EIB, "SENDBENTELCOMMANDDATAGRAM"},
    {"EibLonger", BUILD_EIB, "SENDEIBUSSETDATAGRAMS"},
    {"EibShorter", BUILD_EIB, "SENDEIBUSSETDATAGRA"},
    {"EibBlankBehind", BUILD_EIB, "SENDEIBUSSETDATAGRAM "},
    {"EibEmpty", BUILD_EIB, ""},
    {"Smstool", BUILD_SMSTOOL, "SENDEIBUSSETDATAGRAM"},
    {"LintronicRaw", BUILD_LINTRONIC, "SENDLINTRONICRAWDATAGRAM"},
    {"Tecnout", BUILD_TECNOUT, "SENDBENTELCOMMANDDATAGRAM"},
    {"VivaldiGet", BUILD_VIVALDI, "SENDVIVALDIGETDATAGRAM"},
    {"Bentel", BUILD_BENTEL, "SENDTECNOUTCOMMANDDATAGRAM"},
    {"Tutondo", BUILD_TUTONDO, "SENDTUTONDODATAGRAM"},
    {"Echobus", BUILD_ECHOBUS, "SENDECHOBUSSETDATAGRAM"},
    {"Martin", BUILD_MARTIN, "SENDMARTINDATAGRAM"},
    {"Ibs", BUILD_IBS, "SENDIBSGETDATAGRAM"},
    {"Byme", BUILD_BYME, "SENDBYMEDATAGRAM"},
    {"EibOverTcp", BUILD_EIB_TCP, "SENDECHOBUSDATAGRAM"},
    {"EchobusOverTcp", BUILD_ECHOBUS_TCP, "SENDEIBUSSETDATAGRAM"},
};

TEST(BuilderRules, UnservedFunctionIsRefusedSilentlyBeforeTheListIsLookedAt) {
    for (const unserved_row &row : UNSERVED) {
        SCOPED_TRACE(row.name);
        for (const char *function : {row.function, static_cast<const char *>(nullptr)}) {
            for (int count = 0; count <= 12; count++) {
                const outcome got = build(row.build, function, list_of(count).c_str());
                EXPECT_EQ(got.output, "");
                EXPECT_EQ(got.status, 503);
                EXPECT_EQ(got.connects, 0);
            }
            const outcome without_list = build(row.build, function, nullptr);
            EXPECT_EQ(without_list.output, "");
            EXPECT_EQ(without_list.status, 503);
        }
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

class Lintronic : public testing::TestWithParam<lintronic_row> {};

TEST_P(Lintronic, IsRefusedBeforeAnyConnection) {
    const lintronic_row &row = GetParam();
    const outcome got = build(BUILD_LINTRONIC, "SENDLINTRONICDATAGRAM", row.parameters);
    EXPECT_EQ(got.output, red(row.message));
    EXPECT_EQ(got.status, row.status);
    EXPECT_EQ(got.connects, 0);
}

INSTANTIATE_TEST_SUITE_P(Table, Lintronic, testing::ValuesIn(LINTRONIC_ROWS),
                         [](const auto &row) { return row.param.name; });

TEST(LintronicRules, OnlyLengthsCount) {
    const meeting_point point(SOCKET, {expect("Request: SENDLINTRONICDATAGRAM\nSectionName: s\n"
                                              "Device: ab\nCommand: x y\nPayload: on\n\n"),
                                       reply("Response Status: LINT-0000\n")});
    EXPECT_EQ(
        make_lintroniclocal_request(point.path.c_str(), "SENDLINTRONICDATAGRAM", "s|ab|x y|on"), 0);
    EXPECT_EQ(point.daemon->finish(), "");
}

TEST(BuilderRules, SmstoolCountsByFunction) {
    EXPECT_EQ(build(BUILD_SMSTOOL, "RECVSMSTOOLDATAGRAM", "a|b|c").output,
              red("localclientutil->make_smstoollocal_request error too few or too much "
                  "parameters, PhoneNumber, Msg are needed"));
    EXPECT_EQ(build(BUILD_SMSTOOL, "SENDSMSTOOLDATAGRAM", "a|b").output,
              red("localclientutil->make_smstoollocal_request error too few or too much "
                  "parameters, SectionName, PhoneNumber, Msg are needed"));
}

TEST(BuilderRules, ExchangeCodesPassUnchanged) {
    const outcome refused = build(BUILD_EIB, "SENDEIBUSSETDATAGRAM", "a|b|c|d");
    EXPECT_EQ(refused.status, 105);
    EXPECT_EQ(refused.connects, 1);
    const meeting_point point(SOCKET, {collect_until("\n\n"), reply("Response Status: EIBG--3\n")});
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
