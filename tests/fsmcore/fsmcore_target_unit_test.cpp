// Where the remote exchange agrees to connect to.

#include "tests/fsmcore/fsmcore_exchanges.h"
#include "tests/harness/console.h"
#include "tests/harness/watched_client.h"

#include <arpa/inet.h>
#include <cerrno>
#include <gtest/gtest.h>
#include <netinet/in.h>

namespace {

using namespace harness;

/// An address and a port that are accepted, with what is connected to, or refused by a message.
struct target_row {
    const char *name;
    const char *address;
    const char *port;
    const char *refusal; ///< behind the tag; null: accepted
    const char *connected_address = nullptr;
    int connected_port = 0;
};

const target_row TARGETS[] = {
    {"LowestPort", "10.1.2.3", "1025", nullptr, "10.1.2.3", 1025},
    {"HighestPort", "10.1.2.3", "65535", nullptr, "10.1.2.3", 65535},
    {"LowSixteenBitsOfThePort", "10.1.2.3", "70000", nullptr, "10.1.2.3", 4464},
    {"BlankAndSignBeforeThePort", "10.1.2.3", " +2000", nullptr, "10.1.2.3", 2000},
    {"ShortAddress", "127.1", "2000", nullptr, "127.0.0.1", 2000},
    {"HexadecimalAddress", "0x7f.0.0.1", "2000", nullptr, "127.0.0.1", 2000},
    {"PartAbove255", "10.1.2.256", "2000",
     " error hostip parameter '10.1.2.256' is not in a valid numbers-and-dots notation"},
    {"HostName", "localhost", "2000",
     " error hostip parameter 'localhost' is not in a valid numbers-and-dots notation"},
    {"EmptyAddress", "", "2000",
     " error hostip parameter '' is not in a valid numbers-and-dots notation"},
    {"LettersBehindTheAddress", "10.1.2.3x", "2000",
     " error hostip parameter '10.1.2.3x' is not in a valid numbers-and-dots notation"},
    {"FiveParts", "10.1.2.3.4", "2000",
     " error hostip parameter '10.1.2.3.4' is not in a valid numbers-and-dots notation"},
    {"MissingAddress", nullptr, "2000",
     " error hostip parameter '(null)' is not in a valid numbers-and-dots notation"},
    {"AddressBeforePort", "nowhere", "1024",
     " error hostip parameter 'nowhere' is not in a valid numbers-and-dots notation"},
    {"Port1024", "10.1.2.3", "1024",
     " strtol error on converting '1024' into numeric remote port number"},
    {"PortZero", "10.1.2.3", "0",
     " strtol error on converting '0' into numeric remote port number"},
    {"NegativePort", "10.1.2.3", "-2000",
     " strtol error on converting '-2000' into numeric remote port number"},
    {"EmptyPort", "10.1.2.3", "", " strtol error on converting '' into numeric remote port number"},
    {"MissingPort", "10.1.2.3", nullptr,
     " strtol error on converting '(null)' into numeric remote port number"},
    {"LettersBehindThePort", "10.1.2.3", "2000x",
     " strtol error on converting '2000x' into numeric remote port number"},
    {"BlankBehindThePort", "10.1.2.3", "2000 ",
     " strtol error on converting '2000 ' into numeric remote port number"},
    {"PortOutOfRange", "10.1.2.3", "2147483648",
     " strtol error on converting '2147483648' into numeric remote port number"},
    {"PortThatWrapsTo2000", "10.1.2.3", "4294969296",
     " strtol error on converting '4294969296' into numeric remote port number"},
};

class RemoteTarget : public testing::TestWithParam<target_row> {};

TEST_P(RemoteTarget, IsCheckedBeforeTheConnection) {
    const target_row &row = GetParam();
    watched_client client;
    client.connect_error = ETIMEDOUT;
    int status = 0;
    const std::string output = captured_output([&] {
        status = fsmcore_m2mrequeststatic(row.address, row.port, "F", 0, nullptr, nullptr, nullptr);
    });
    EXPECT_EQ(status, 6);
    if (row.refusal != nullptr) {
        EXPECT_EQ(output, red(std::string("FSMCoreutil->fsmcore_m2mrequeststatic") + row.refusal));
        EXPECT_EQ(client.connects, 0);
        return;
    }
    EXPECT_EQ(output, red("utility->make_internettcpclient_socket connect failed with error "
                          "'Connection timed out'") +
                          red("FSMCoreutil->fsmcore_m2mrequeststatic error opening remote socket "
                              "FSMCore clientside for function 'F'"));
    ASSERT_EQ(client.connects, 1);
    sockaddr_in address = {};
    memcpy(&address, &client.address, sizeof address);
    EXPECT_EQ(address.sin_family, AF_INET);
    EXPECT_STREQ(inet_ntoa(address.sin_addr), row.connected_address);
    EXPECT_EQ(ntohs(address.sin_port), row.connected_port);
}

INSTANTIATE_TEST_SUITE_P(Table, RemoteTarget, testing::ValuesIn(TARGETS),
                         [](const auto &row) { return row.param.name; });

} // namespace
