// The two connectors against real sockets: where they connect, and what they say when they cannot.

#include "front/utility.h"
#include "tests/front/fresh_globals.h"
#include "tests/harness/console.h"
#include "tests/harness/peer.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <functional>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

using harness::captured_output;
using harness::peer;
using connector = std::function<int()>;

using Connectors = front_tests::FreshGlobals;

/// The connection leads to this daemon and is a plain one: it blocks, and for ever.
void expect_connected(peer *daemon, const connector &connect) {
    int connection = -1;
    EXPECT_EQ(captured_output([&] { connection = connect(); }), "");
    ASSERT_GE(connection, 0);
    EXPECT_EQ(fcntl(connection, F_GETFL) & O_NONBLOCK, 0);
    for (const int option : {SO_RCVTIMEO, SO_SNDTIMEO, SO_REUSEADDR, SO_KEEPALIVE}) {
        char value[sizeof(timeval)] = {1};
        socklen_t size = sizeof value;
        EXPECT_EQ(getsockopt(connection, SOL_SOCKET, option, value, &size), 0);
        EXPECT_EQ(std::string(value, size), std::string(size, '\0')) << option;
    }
    EXPECT_EQ(send(connection, "word", 4, MSG_NOSIGNAL), 4);
    close(connection);
    EXPECT_EQ(daemon->finish(), "");
    EXPECT_EQ(daemon->received(), "word");
}

void expect_failure(const std::string &failed, int error_number, const connector &connect) {
    SCOPED_TRACE(failed);
    int connection = 0;
    EXPECT_EQ(captured_output([&] { connection = connect(); }),
              harness::red("utility->make_" + failed + " failed with error '" +
                           strerror(error_number) + "'"));
    EXPECT_EQ(connection, -1);
}

TEST_F(Connectors, NoDescriptorIsLeft) {
    const auto without_descriptors = [](int (*connect)()) {
        rlimit usual = {};
        getrlimit(RLIMIT_NOFILE, &usual);
        const rlimit none = {0, usual.rlim_max};
        setrlimit(RLIMIT_NOFILE, &none);
        const int connection = connect();
        setrlimit(RLIMIT_NOFILE, &usual);
        return connection;
    };
    expect_failure("localtcpclient_socket socket", EMFILE, [&] {
        return without_descriptors([] { return make_localtcpclient_socket("/s"); });
    });
    expect_failure("internettcpclient_socket socket", EMFILE, [&] {
        return without_descriptors([] { return make_internettcpclient_socket("127.0.0.1", 1025); });
    });
}

TEST_F(Connectors, LocalPathIsUsedUpToItsCharacter107) {
    for (const std::size_t length : {std::size_t{100}, std::size_t{107}, std::size_t{108},
                                     std::size_t{109}, std::size_t{100000}}) {
        SCOPED_TRACE(length);
        const harness::temporary_directory directory;
        std::string path = directory.path + "/";
        path.resize(std::min<std::size_t>(length, 107), 'p');
        peer daemon(path, {});
        path.resize(length, 'q');
        expect_connected(&daemon, [&] { return make_localtcpclient_socket(path.c_str()); });
    }
}

TEST_F(Connectors, LocalFailuresAreReported) {
    const harness::temporary_directory directory;
    const std::string file = directory.path + "/file";
    std::ofstream(file).put('x');
    const std::string missing = directory.path + "/missing";
    const std::pair<const char *, int> rows[] = {
        {missing.c_str(), ENOENT}, {file.c_str(), ECONNREFUSED}, {"", EINVAL}, {nullptr, EINVAL}};
    for (const auto &[path, error_number] : rows) {
        expect_failure("localtcpclient_socket connect", error_number,
                       [&, at = path] { return make_localtcpclient_socket(at); });
    }
}

TEST_F(Connectors, InternetUsesTheLowSixteenBitsOfThePort) {
    for (const int added : {0, 65536, 10 * 65536, -65536}) {
        SCOPED_TRACE(added);
        peer daemon({});
        expect_connected(&daemon, [&] {
            return make_internettcpclient_socket("127.0.0.1", daemon.port() + added);
        });
    }
}

TEST_F(Connectors, InternetAddressesThatAreNoDottedQuadsAreNotResolved) {
    peer daemon({});
    const auto failure = [&daemon](const char *address) {
        return captured_output(
            [&] { EXPECT_EQ(make_internettcpclient_socket(address, daemon.port()), -1); });
    };
    const std::string of_all_ones = failure("255.255.255.255");
    for (const char *address : {"localhost", "", "127.0.0.256", "127.0.0.1x", "::1",
                                static_cast<const char *>(nullptr)}) {
        EXPECT_EQ(failure(address), of_all_ones);
    }
    EXPECT_EQ(daemon.finish_unvisited(), "");
}

TEST_F(Connectors, InternetRefusalIsReported) {
    const harness::deserted_point nobody;
    expect_failure("internettcpclient_socket connect", ECONNREFUSED,
                   [&] { return make_internettcpclient_socket("127.0.0.1", nobody.port); });
}

} // namespace
