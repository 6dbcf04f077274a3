// Starting and stopping: what is made, what is removed, and what is never touched.
#include "tests/simulator/daemon_rows.h"
#include "tests/simulator/simulator_process.h"
#include "tests/simulator/soap_client.h"

#include <cerrno>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;

const std::string REQUEST = "Request: RECVSMSTOOLDATAGRAM\nFrom: a\nMsg: b\n\n";
const std::string ANSWER = "Response Status: SMST-000\n";

std::string socket_path(const std::string &directory, const std::string &name) {
    return directory + "/lumo_" + name + ".socket";
}

std::size_t count_files(const std::string &directory) {
    return static_cast<std::size_t>(
        std::distance(fs::directory_iterator(directory), fs::directory_iterator()));
}

/// A socket file that another program made; listening when `live`.
int make_socket(const std::string &path, bool live, int type = SOCK_STREAM) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::memcpy(static_cast<char *>(address.sun_path), path.c_str(), path.size());
    const int descriptor = socket(AF_UNIX, type | SOCK_CLOEXEC, 0);
    EXPECT_EQ(bind(descriptor, reinterpret_cast<sockaddr *>(&address), sizeof address), 0);
    if (live) {
        EXPECT_EQ(listen(descriptor, 1), 0);
    }
    return descriptor;
}

TEST(Start, SaysWhereEachDaemonListens) {
    Simulator simulator;
    ASSERT_TRUE(simulator.ready);
    const std::string &out = simulator.program.out;
    for (const DaemonRow &daemon : socket_daemons()) {
        const std::string path = socket_path(simulator.home.path, std::string(daemon.socket));
        const std::string line = std::string(daemon.label) + " listens on " + path + "\n";
        EXPECT_NE(out.find(line), std::string::npos) << line << out;
        EXPECT_TRUE(fs::is_socket(path)) << path;
    }
    const std::string url =
        "http://127.0.0.1:" + std::to_string(simulator.port) + "/cgi-bin/lumows\n";
    EXPECT_NE(out.find("SOAP listens on " + url), std::string::npos) << out;
    EXPECT_EQ(read_file(simulator.home.path + "/ready"),
              "directory=" + simulator.home.path + "\nurl=" + url);
}

TEST(Start, MakesTheDirectory) {
    const FreshDirectory parent;
    const std::string directory = parent.path + "/a/b";
    Program program({"--directory", directory, "--port", "0"});
    ASSERT_TRUE(wait_for_output(program, "ready\n")) << program.errors;
    EXPECT_EQ(ask_daemon(directory, "smstoolgateway", REQUEST), ANSWER);
    EXPECT_EQ(end_program(program, SIGTERM), 0);
    EXPECT_EQ(count_files(directory), 0U);
}

class Stop : public testing::TestWithParam<int> {};

TEST_P(Stop, RemovesWhatWasMadeAndNothingElse) {
    Simulator simulator;
    ASSERT_TRUE(simulator.ready);
    std::ofstream(simulator.home.path + "/bystander") << "x";
    EXPECT_EQ(end_program(simulator.program, GetParam()), 0) << simulator.program.errors;
    EXPECT_TRUE(fs::exists(simulator.home.path + "/bystander"));
    EXPECT_EQ(count_files(simulator.home.path), 1U);
    EXPECT_TRUE(simulator.program.out.ends_with("stopped\n"));
}

INSTANTIATE_TEST_SUITE_P(Signals, Stop, testing::Values(SIGINT, SIGTERM));

TEST(StopWithClients, DoesNotWaitForSilentOnes) {
    Simulator simulator;
    ASSERT_TRUE(simulator.ready);
    const int silent = connect_daemon(simulator.home.path, "eibgateway");
    const int silent_http = connect_port(simulator.port);
    EXPECT_EQ(ask_daemon(simulator.home.path, "smstoolgateway", REQUEST), ANSWER);
    EXPECT_EQ(end_program(simulator.program, SIGTERM), 0);
    EXPECT_EQ(read_all(silent), "");
    EXPECT_EQ(read_all(silent_http), "");
}

TEST(StopWithClients, LeavesASocketThatSomebodyElsePutThere) {
    Simulator simulator;
    ASSERT_TRUE(simulator.ready);
    const std::string path = socket_path(simulator.home.path, "eibgateway");
    fs::remove(path);
    const int foreign = make_socket(path, false);
    EXPECT_EQ(end_program(simulator.program, SIGTERM), 0);
    EXPECT_TRUE(fs::is_socket(path));
    close(foreign);
}

TEST(Clients, SilentOnesBlockNobody) {
    Simulator simulator;
    ASSERT_TRUE(simulator.ready);
    std::vector<int> silent;
    for (int i = 0; i < 30; ++i) {
        silent.push_back(connect_daemon(simulator.home.path, "smstoolgateway"));
        silent.push_back(connect_port(simulator.port));
    }
    EXPECT_EQ(ask_daemon(simulator.home.path, "smstoolgateway", REQUEST), ANSWER);
    EXPECT_EQ(call_service(simulator.port, "service-test", ""),
              wrap_response("service-test", "<result>LMWS-000</result>"));
    for (const int descriptor : silent) {
        close(descriptor);
    }
}

TEST(Clients, LeavingWithoutReadingTheAnswerIsSurvived) {
    Simulator simulator({"--answer-raw", "eib=@" LUMOSIM_PROGRAM});
    ASSERT_TRUE(simulator.ready) << simulator.program.errors;
    const int leaving = connect_daemon(simulator.home.path, "eibgateway");
    ASSERT_TRUE(send_bytes(leaving, "Request: x\n\n"));
    close(leaving);
    EXPECT_TRUE(wait_for_output(simulator.program, "EIB: the client did not take its answer\n"))
        << simulator.program.out;
    EXPECT_EQ(ask_daemon(simulator.home.path, "smstoolgateway", REQUEST), ANSWER);
}

TEST(Leftovers, StaleSocketIsReplaced) {
    const FreshDirectory directory;
    close(make_socket(socket_path(directory.path, "smstoolgateway"), true));
    Program program(usual_options(directory.path));
    ASSERT_TRUE(wait_for_output(program, "ready\n")) << program.errors;
    EXPECT_EQ(ask_daemon(directory.path, "smstoolgateway", REQUEST), ANSWER);
}

TEST(Leftovers, ThoseOfAKilledSimulatorAreReplaced) {
    const FreshDirectory directory;
    {
        Program killed(usual_options(directory.path));
        ASSERT_TRUE(wait_for_output(killed, "ready\n")) << killed.errors;
        EXPECT_EQ(end_program(killed, SIGKILL), -1);
    }
    ASSERT_TRUE(fs::is_socket(socket_path(directory.path, "smstoolgateway")));
    Program program(usual_options(directory.path));
    ASSERT_TRUE(wait_for_output(program, "ready\n")) << program.errors;
    EXPECT_EQ(ask_daemon(directory.path, "smstoolgateway", REQUEST), ANSWER);
}

TEST(Leftovers, LiveSocketIsNotStolen) {
    const FreshDirectory directory;
    const std::string path = socket_path(directory.path, "tutondogateway");
    const int live = make_socket(path, true);
    Program program(usual_options(directory.path));
    EXPECT_EQ(end_program(program, 0), 1);
    EXPECT_EQ(program.errors, "lumosim: " + path +
                                  " is in use by another program; stop it or choose another with "
                                  "--directory\n");
    EXPECT_EQ(count_files(directory.path), 1U) << "what was already made must be removed";
    const int client = connect_daemon(directory.path, "tutondogateway");
    EXPECT_GE(client, 0);
    close(client);
    close(live);
}

TEST(Leftovers, SocketOfAnotherKindIsNotStolen) {
    const FreshDirectory directory;
    const std::string path = socket_path(directory.path, "eibgateway");
    const int datagrams = make_socket(path, false, SOCK_DGRAM);
    Program program(usual_options(directory.path));
    EXPECT_EQ(end_program(program, 0), 1);
    EXPECT_TRUE(fs::is_socket(path));
    close(datagrams);
}

TEST(Leftovers, SecondSimulatorLeavesTheFirstAlone) {
    Simulator first({"--refuse", "eib"});
    ASSERT_TRUE(first.ready);
    Program second(usual_options(first.home.path));
    EXPECT_EQ(end_program(second, 0), 1);
    EXPECT_EQ(second.errors, "lumosim: another lumosim serves " + first.home.path +
                                 "; stop it or choose another with --directory\n");
    EXPECT_EQ(ask_daemon(first.home.path, "smstoolgateway", REQUEST), ANSWER);
    EXPECT_TRUE(fs::exists(first.home.path + "/ready"));
    EXPECT_TRUE(fs::is_socket(socket_path(first.home.path, "eibgateway")));
}

TEST(Leftovers, OtherFilesAreNeverRemoved) {
    const FreshDirectory directory;
    const std::string path = socket_path(directory.path, "eibgateway");
    std::ofstream(path) << "mine";
    Program program(usual_options(directory.path));
    EXPECT_EQ(end_program(program, 0), 1);
    EXPECT_NE(program.errors.find(path + " is not a socket"), std::string::npos) << program.errors;
    EXPECT_EQ(read_file(path), "mine");
    EXPECT_EQ(count_files(directory.path), 1U);
}

TEST(Leftovers, TakenPortIsReported) {
    Simulator first;
    ASSERT_TRUE(first.ready);
    const FreshDirectory directory;
    Program second({"--directory", directory.path, "--port", std::to_string(first.port)});
    EXPECT_EQ(end_program(second, 0), 1);
    EXPECT_NE(second.errors.find("choose another with --port"), std::string::npos) << second.errors;
    EXPECT_EQ(count_files(directory.path), 0U);
}

TEST(Start, TooLongDirectoryIsReported) {
    const FreshDirectory parent;
    const std::string directory = parent.path + "/" + std::string(100, 'd');
    Program program({"--directory", directory, "--port", "0"});
    EXPECT_EQ(end_program(program, 0), 1);
    EXPECT_NE(program.errors.find("choose a shorter one with --directory"), std::string::npos)
        << program.errors;
}

} // namespace
