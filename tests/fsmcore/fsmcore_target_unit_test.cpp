// Where the remote exchange agrees to connect to.

#include "fsmcore/FSMCoreutil.h"
#include "tests/harness/console.h"
#include "tests/harness/watched_client.h"

#include <arpa/inet.h>
#include <cerrno>
#include <cstring>
#include <gtest/gtest.h>
#include <netinet/in.h>

namespace {

using namespace harness;

const std::string TAG = "FSMCoreutil->fsmcore_m2mrequeststatic ";

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
    const struct {
        const char *address;
        const char *port;
        const char *connected_address;
        int connected_port;
    } targets[] = {
        {"10.1.2.3", "1025", "10.1.2.3", 1025},    {"10.1.2.3", "65535", "10.1.2.3", 65535},
        {"10.1.2.3", "70000", "10.1.2.3", 4464}, // the low sixteen bits
        {"10.1.2.3", " +2000", "10.1.2.3", 2000},  {"127.1", "2000", "127.0.0.1", 2000},
        {"0x7f.0.0.1", "2000", "127.0.0.1", 2000},
    };
    for (const auto &row : targets) {
        SCOPED_TRACE(std::string(row.address) + " " + row.port);
        watched_client client;
        client.connect_error = ETIMEDOUT;
        EXPECT_EQ(tried(row.address, row.port),
                  red("utility->make_internettcpclient_socket connect failed with error "
                      "'Connection timed out'") +
                      red(TAG + "error opening remote socket FSMCore clientside for function 'F'"));
        ASSERT_EQ(client.connects, 1);
        sockaddr_in address = {};
        memcpy(&address, &client.address, sizeof address);
        EXPECT_EQ(address.sin_family, AF_INET);
        EXPECT_STREQ(inet_ntoa(address.sin_addr), row.connected_address);
        EXPECT_EQ(ntohs(address.sin_port), row.connected_port);
    }
}

TEST(RemoteTarget, IsRefusedBeforeTheConnection) {
    watched_client client;
    for (const char *address : {"10.1.2.256", "localhost", "", "10.1.2.3x", "10.1.2.3.4",
                                static_cast<const char *>(nullptr)}) {
        for (const char *port : {"2000", "1024"}) { // the address is looked at first
            EXPECT_EQ(tried(address, port),
                      red(TAG + "error hostip parameter '" + or_null(address) +
                          "' is not in a valid numbers-and-dots notation"));
        }
    }
    for (const char *port : {"1024", "0", "-2000", "", "2000x", "2000 ", "2147483648", "4294969296",
                             static_cast<const char *>(nullptr)}) {
        EXPECT_EQ(tried("10.1.2.3", port),
                  red(TAG + "strtol error on converting '" + or_null(port) +
                      "' into numeric remote port number"));
    }
    EXPECT_EQ(client.connects, 0);
}

} // namespace
