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
    for (const auto &[address, port, number] : {std::tuple{"10.1.2.3", "1025", 1025},
                                                {"10.1.2.3", "70000", 4464}, // its low sixteen bits
                                                {"0xa.66051", " +2000", 2000}}) {
        SCOPED_TRACE(port);
        watched_client client;
        client.connect_error = ETIMEDOUT;
        EXPECT_EQ(tried(address, port),
                  red("utility->make_internettcpclient_socket connect failed with error "
                      "'Connection timed out'") +
                      red(TAG + "error opening remote socket FSMCore clientside for function 'F'"));
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
