// The two connectors against real sockets: where they connect, and what they say when they cannot.

#include "front/utility.h"
#include "tests/front/saved_globals.h"
#include "tests/harness/console.h"
#include "tests/harness/meeting_point.h"
#include "tests/harness/peer.h"
#include "tests/harness/process.h"

#include <arpa/inet.h>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <netinet/in.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace {

using namespace front_tests;
using harness::captured_output;
using harness::peer;

class Connectors : public FreshGlobals {
  protected:
    /// A path of this many characters inside the test's directory.
    std::string path_of_length(std::size_t length) const {
        std::string path = directory_.path + "/";
        path.resize(length, 'p');
        return path;
    }

    const harness::temporary_directory directory_;
};

std::string local_failure(const char *call, int error_number) {
    return harness::red(std::string("utility->make_localtcpclient_socket ") + call +
                        " failed with error '" + strerror(error_number) + "'");
}

std::string internet_failure(const char *call, int error_number) {
    return harness::red(std::string("utility->make_internettcpclient_socket ") + call +
                        " failed with error '" + strerror(error_number) + "'");
}

/// Sends a word over a connection that must lead to this daemon, in silence, and closes it.
void expect_connected(int connection, const std::string &output, peer *daemon) {
    ASSERT_GE(connection, 0);
    EXPECT_EQ(output, "");
    EXPECT_EQ(send(connection, "word", 4, MSG_NOSIGNAL), 4);
    close(connection);
    EXPECT_EQ(daemon->finish(), "");
    EXPECT_EQ(daemon->received(), "word");
}

/// The connection is a plain one: it blocks, and for ever.
void expect_no_options(int connection) {
    EXPECT_EQ(fcntl(connection, F_GETFL) & O_NONBLOCK, 0);
    for (const int option : {SO_RCVTIMEO, SO_SNDTIMEO}) {
        timeval limit = {1, 1};
        socklen_t size = sizeof limit;
        EXPECT_EQ(getsockopt(connection, SOL_SOCKET, option, &limit, &size), 0);
        EXPECT_EQ(limit.tv_sec, 0);
        EXPECT_EQ(limit.tv_usec, 0);
    }
    for (const int option : {SO_REUSEADDR, SO_KEEPALIVE}) {
        int value = 1;
        socklen_t size = sizeof value;
        EXPECT_EQ(getsockopt(connection, SOL_SOCKET, option, &value, &size), 0);
        EXPECT_EQ(value, 0);
    }
}

int open_descriptors() {
    int count = 0;
    for (int descriptor = 0; descriptor < FD_SETSIZE; descriptor++) {
        count += fcntl(descriptor, F_GETFD) != -1 ? 1 : 0;
    }
    return count;
}

/// Runs an action while no further descriptor can be opened.
void without_descriptors(const std::function<void()> &action) {
    rlimit usual = {};
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &usual), 0);
    const int next = dup(STDIN_FILENO);
    ASSERT_GE(next, 0);
    close(next);
    rlimit exhausted = usual;
    exhausted.rlim_cur = static_cast<rlim_t>(next);
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &exhausted), 0);
    action();
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &usual), 0);
}

// --- Unix-domain sockets

TEST_F(Connectors, LocalConnects) {
    const std::string path = directory_.path + "/s";
    peer daemon(path, {});
    int connection = -1;
    const std::string output =
        captured_output([&] { connection = make_localtcpclient_socket(path.c_str()); });
    expect_no_options(connection);
    expect_connected(connection, output, &daemon);
}

TEST_F(Connectors, LocalPathOf107CharactersIsUsedWhole) {
    const std::string path = path_of_length(107);
    peer daemon(path, {});
    int connection = -1;
    const std::string output =
        captured_output([&] { connection = make_localtcpclient_socket(path.c_str()); });
    expect_connected(connection, output, &daemon);
}

TEST_F(Connectors, LocalLongerPathLeadsToItsFirst107Characters) {
    for (const std::size_t length : {std::size_t{108}, std::size_t{109}, std::size_t{100000}}) {
        const harness::temporary_directory directory;
        std::string path = directory.path + "/";
        path.resize(107, 'p');
        peer daemon(path, {});
        path.resize(length, 'q');
        int connection = -1;
        const std::string output =
            captured_output([&] { connection = make_localtcpclient_socket(path.c_str()); });
        expect_connected(connection, output, &daemon);
    }
}

TEST_F(Connectors, LocalPathOf108CharactersMissesItsDaemon) {
    // The system itself would serve this path: its 108 characters fill the address.
    const std::string path = path_of_length(108);
    const int listener = socket(AF_UNIX, SOCK_STREAM, 0);
    struct {
        sockaddr_un address;
        char terminator; // for whoever reads the path as a text
    } full = {};
    full.address.sun_family = AF_UNIX;
    memcpy(full.address.sun_path, path.data(), sizeof full.address.sun_path);
    ASSERT_EQ(bind(listener, reinterpret_cast<sockaddr *>(&full.address), sizeof full.address), 0);
    ASSERT_EQ(listen(listener, 1), 0);
    int connection = 0;
    const std::string output =
        captured_output([&] { connection = make_localtcpclient_socket(path.c_str()); });
    EXPECT_EQ(connection, -1);
    EXPECT_EQ(output, local_failure("connect", ENOENT));
    close(listener);
}

TEST_F(Connectors, LocalFailuresAreReportedAndLeaveTheDescriptorOpen) {
    const std::string file = directory_.path + "/file";
    std::ofstream(file).put('x');
    const std::string refusing = directory_.path + "/refusing";
    const int unheard = socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    memcpy(address.sun_path, refusing.c_str(), refusing.size());
    ASSERT_EQ(bind(unheard, reinterpret_cast<sockaddr *>(&address), sizeof address), 0);
    const std::string missing = directory_.path + "/missing";
    const std::string below_a_file = file + "/s";

    struct {
        const char *name;
        const char *path;
        int error_number;
    } const rows[] = {
        {"missing", missing.c_str(), ENOENT},
        {"refused", refusing.c_str(), ECONNREFUSED},
        {"not a socket", file.c_str(), ECONNREFUSED},
        {"below a file", below_a_file.c_str(), ENOTDIR},
        {"empty", "", EINVAL},
        {"null", nullptr, EINVAL},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.name);
        const int before = open_descriptors();
        int connection = 0;
        const std::string output =
            captured_output([&] { connection = make_localtcpclient_socket(row.path); });
        EXPECT_EQ(connection, -1);
        EXPECT_EQ(output, local_failure("connect", row.error_number));
        EXPECT_EQ(open_descriptors(), before + 1);
    }
}

TEST_F(Connectors, LocalWithoutADescriptor) {
    int connection = 0;
    const std::string output = captured_output(
        [&] { without_descriptors([&] { connection = make_localtcpclient_socket("/s"); }); });
    EXPECT_EQ(connection, -1);
    EXPECT_EQ(output, local_failure("socket", EMFILE));
}

// --- TCP

TEST_F(Connectors, InternetConnects) {
    peer daemon({});
    int connection = -1;
    const std::string output = captured_output(
        [&] { connection = make_internettcpclient_socket("127.0.0.1", daemon.port()); });
    expect_no_options(connection);
    expect_connected(connection, output, &daemon);
}

TEST_F(Connectors, InternetUsesTheLowSixteenBitsOfThePort) {
    for (const int added : {65536, 10 * 65536, -65536}) {
        peer daemon({});
        int connection = -1;
        const std::string output = captured_output([&] {
            connection = make_internettcpclient_socket("127.0.0.1", daemon.port() + added);
        });
        expect_connected(connection, output, &daemon);
    }
}

/// Why a plain connect to 255.255.255.255 fails here.
int error_of_all_ones(int port) {
    const int probe = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<in_port_t>(port));
    address.sin_addr.s_addr = 0xffffffff;
    const int result = connect(probe, reinterpret_cast<sockaddr *>(&address), sizeof address);
    const int error_number = errno;
    close(probe);
    return result < 0 ? error_number : 0;
}

TEST_F(Connectors, InternetAddressesThatAreNoDottedQuadsAreNotResolved) {
    peer daemon({});
    const int expected = error_of_all_ones(daemon.port());
    ASSERT_NE(expected, 0);
    for (const char *address : {"localhost", "", "127.0.0.256", "127.0.0.1x", "::1",
                                static_cast<const char *>(nullptr), "255.255.255.255"}) {
        SCOPED_TRACE(address == nullptr ? "null" : address);
        const int before = open_descriptors();
        int connection = 0;
        const std::string output = captured_output(
            [&] { connection = make_internettcpclient_socket(address, daemon.port()); });
        EXPECT_EQ(connection, -1);
        EXPECT_EQ(output, internet_failure("connect", expected));
        EXPECT_EQ(open_descriptors(), before + 1);
    }
    EXPECT_EQ(daemon.finish_unvisited(), "");
}

TEST_F(Connectors, InternetRefusalIsReportedAndLeavesTheDescriptorOpen) {
    const harness::deserted_point nobody;
    const int before = open_descriptors();
    int connection = 0;
    const std::string output = captured_output(
        [&] { connection = make_internettcpclient_socket("127.0.0.1", nobody.port); });
    EXPECT_EQ(connection, -1);
    EXPECT_EQ(output, internet_failure("connect", ECONNREFUSED));
    EXPECT_EQ(open_descriptors(), before + 1);
}

TEST_F(Connectors, InternetWithoutADescriptor) {
    int connection = 0;
    const std::string output = captured_output([&] {
        without_descriptors([&] { connection = make_internettcpclient_socket("127.0.0.1", 1025); });
    });
    EXPECT_EQ(connection, -1);
    EXPECT_EQ(output, internet_failure("socket", EMFILE));
}

TEST_F(Connectors, FailuresAreTaggedWhenVerbose) {
    g_config.verbose = 1;
    const std::string output =
        captured_output([&] { EXPECT_EQ(make_localtcpclient_socket(""), -1); });
    EXPECT_EQ(output, harness::tagged_red(getpid(),
                                          std::string("utility->make_localtcpclient_socket connect "
                                                      "failed with error '") +
                                              strerror(EINVAL) + "'"));
}

} // namespace
