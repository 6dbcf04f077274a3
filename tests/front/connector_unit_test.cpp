// The two connectors against real sockets: where they connect, and what they say when they cannot.

#include "front/utility.h"
#include "tests/harness/console.h"
#include "tests/harness/peer.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

using harness::captured_output;
using harness::peer;
using connector = std::function<int()>;

const std::string WORD = "word";

/// The connection leads to this daemon, which expects the word, and is a plain one: it blocks, and
/// for ever.
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
    EXPECT_EQ(send(connection, WORD.data(), WORD.size(), MSG_NOSIGNAL), 4);
    close(connection);
    EXPECT_EQ(daemon->finish(), "");
}

void expect_failure(const std::string &failed, int error_number, const connector &connect) {
    SCOPED_TRACE(failed);
    int connection = 0;
    EXPECT_EQ(captured_output([&] { connection = connect(); }),
              harness::red("utility->make_" + failed + " failed with error '" +
                           strerror(error_number) + "'"));
    EXPECT_EQ(connection, -1);
}

TEST(Connectors, SayThatNoDescriptorIsLeft) {
    rlimit usual = {};
    getrlimit(RLIMIT_NOFILE, &usual);
    const auto expect_none = [&usual](const std::string &name, int (*connect)()) {
        expect_failure(name + " socket", EMFILE, [&] {
            const rlimit none = {0, usual.rlim_max};
            setrlimit(RLIMIT_NOFILE, &none);
            const int connection = connect();
            setrlimit(RLIMIT_NOFILE, &usual);
            return connection;
        });
    };
    expect_none("localtcpclient_socket", [] { return make_localtcpclient_socket("/s"); });
    expect_none("internettcpclient_socket",
                [] { return make_internettcpclient_socket("127.0.0.1", 1025); });
}

TEST(Connectors, LocalPathIsUsedUpToItsCharacter107) {
    for (const std::size_t length : {107U, 108U, 100000U}) {
        const harness::temporary_directory directory;
        std::string path = directory.path + "/";
        path.resize(107, 'p');
        peer daemon(path, {harness::expect(WORD)});
        path.resize(length, 'q');
        expect_connected(&daemon, [&] { return make_localtcpclient_socket(path.c_str()); });
    }
}

TEST(Connectors, SayThatNobodyIsThere) {
    const harness::deserted_point nobody;
    const std::string file = nobody.directory.path + "/file";
    std::ofstream(file).put('x');
    const std::pair<const char *, int> rows[] = {{nobody.path.c_str(), ENOENT},
                                                 {file.c_str(), ECONNREFUSED},
                                                 {"", EINVAL},
                                                 {nullptr, EINVAL}};
    for (const auto &[path, error_number] : rows) {
        expect_failure("localtcpclient_socket connect", error_number,
                       [&, at = path] { return make_localtcpclient_socket(at); });
    }
    expect_failure("internettcpclient_socket connect", ECONNREFUSED,
                   [&] { return make_internettcpclient_socket("127.0.0.1", nobody.port); });
}

TEST(Connectors, InternetUsesTheLowSixteenBitsOfThePort) {
    for (const int added : {0, 65536, 10 * 65536, -65536}) {
        peer daemon({harness::expect(WORD)});
        expect_connected(&daemon, [&] {
            return make_internettcpclient_socket("127.0.0.1", daemon.port() + added);
        });
    }
}

TEST(Connectors, InternetAddressesThatAreNoDottedQuadsAreNotResolved) {
    peer daemon({});
    const auto failure = [&daemon](const char *address) {
        return captured_output(
            [&] { EXPECT_EQ(make_internettcpclient_socket(address, daemon.port()), -1); });
    };
    const char *const no_address = nullptr;
    for (const char *address : {"localhost", "", "127.0.0.256", "127.0.0.1x", "::1", no_address}) {
        EXPECT_EQ(failure(address), failure("255.255.255.255"));
    }
    EXPECT_EQ(daemon.finish_unvisited(), "");
}

} // namespace
