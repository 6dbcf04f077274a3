// Starting and stopping: what is made, what is removed, and what is never touched.
#include "tests/harness/peer.h"
#include "tests/protocol/daemons.h"
#include "tests/simulator/simulator_process.h"

#include <csignal>
#include <filesystem>
#include <gtest/gtest.h>
#include <regex>
#include <sys/socket.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;
using namespace harness;
using protocol::daemons;

/// The names of all files, a line each.
std::string files_in(const std::string &directory) {
    return run({"ls", "-A", directory}).output;
}

/// A socket file that another program made.
int make_socket(const std::string &path, int type = SOCK_STREAM) {
    const int descriptor = socket(AF_UNIX, type | SOCK_CLOEXEC, 0);
    bind_to_path(descriptor, path);
    return descriptor;
}

TEST(Start, SaysWhereEachDaemonListens) {
    const temporary_directory parent;
    const std::string directory = parent.path + "/a/b";
    started_program program({LUMOSIM_PROGRAM, "--directory", directory, "--port", "0",
                             "--ready-file", parent.path + "/ready"});
    ASSERT_TRUE(program.wait_for_output("ready\n")) << program.errors();
    const std::string ready = read_file(parent.path + "/ready");
    const std::string url = ready.substr(ready.find("http://"));
    EXPECT_EQ(ready, "directory=" + directory + "\nurl=" + url);
    EXPECT_TRUE(url.ends_with("/cgi-bin/lumows\n"));
    std::string places;
    for (const protocol::daemon_row &daemon : daemons()) {
        places += daemon.name + " listens on " +
                  (daemon.socket.empty() ? url : directory + "/" + daemon.socket + "\n");
        EXPECT_TRUE(daemon.socket.empty() || fs::is_socket(directory + "/" + daemon.socket));
    }
    EXPECT_EQ(program.output(), places + "ready\n");
    EXPECT_EQ(end_program(program, SIGTERM).status, 0);
    EXPECT_EQ(files_in(directory), "");
    EXPECT_EQ(files_in(parent.path), "a\n");
}

TEST(Stop, RemovesWhatWasMadeAndNothingElse) {
    for (const int number : {SIGINT, SIGTERM}) {
        running_simulator simulator;
        write_file(simulator.home.path + "/bystander", "x");
        // Another program has put a socket of its own in the place of the simulator's.
        fs::remove(simulator.home.path + "/" + CORE_SOCKET);
        const int foreign = make_socket(simulator.home.path + "/" + CORE_SOCKET);
        const run_result seen = end_program(simulator.program, number);
        EXPECT_EQ(seen.status, 0) << seen.errors;
        EXPECT_TRUE(seen.output.ends_with("stopped\n")) << seen.output;
        EXPECT_EQ(files_in(simulator.home.path), "bystander\n" + CORE_SOCKET + "\n");
        close(foreign);
    }
}

TEST(Clients, ThatAreSilentBlockNobody) {
    running_simulator simulator;
    std::vector<int> silent;
    for (int i = 0; i < 30; ++i) {
        silent.push_back(connect_socket(simulator.home.path + "/" + CORE_SOCKET));
        silent.push_back(connect_port(simulator.port));
    }
    EXPECT_EQ(simulator.ask(CORE_SOCKET, CORE_REQUEST), CORE_DONE);
    simulator.expect_response({"test", "", "result=LMWS-000"});
    simulator.end();
    for (const int descriptor : silent) {
        EXPECT_EQ(read_all(descriptor), "");
    }
}

TEST(Clients, ThatLeaveWithoutTheirAnswerAreSurvived) {
    running_simulator simulator({"--answer-raw", "fsmcore=@" LUMOSIM_PROGRAM});
    const int leaving = connect_socket(simulator.home.path + "/" + CORE_SOCKET);
    ASSERT_TRUE(send_bytes(leaving, CORE_REQUEST));
    close(leaving);
    EXPECT_TRUE(simulator.program.wait_for_output("FSMCORE: the client did not take its answer\n"));
    EXPECT_EQ(simulator.http("GET /configuration").status, 200);
}

TEST(Leftovers, AreReplaced) {
    const temporary_directory directory;
    close(make_socket(directory.path + "/" + CORE_SOCKET));
    for (const int number : {SIGKILL, SIGTERM}) {
        started_program program(simulator_command(directory.path));
        ASSERT_TRUE(program.wait_for_output("ready\n")) << program.errors();
        EXPECT_EQ(ask_daemon(directory.path + "/" + CORE_SOCKET, CORE_REQUEST), CORE_DONE);
        end_program(program, number);
    }
    EXPECT_EQ(files_in(directory.path), "");
}

/// What keeps the simulator from starting is told, what was already made removed.
void expect_no_start(const std::string &directory, const words &options,
                     const std::string &complaint) {
    const std::string before = files_in(directory);
    const run_result seen = run(simulator_command(directory, options));
    EXPECT_EQ(seen.status, 1);
    EXPECT_EQ(seen.errors, "lumosim: " + complaint + "\n");
    EXPECT_EQ(files_in(directory), before);
}

TEST(Leftovers, ThatAreInUseAreNotStolen) {
    const std::string in_use =
        " is in use by another program; stop it or choose another with --directory";
    const std::string last = (daemons().end() - 2)->socket;
    for (const int type : {SOCK_STREAM, SOCK_DGRAM}) {
        const temporary_directory directory;
        const std::string path = directory.path + "/" + last;
        const int live = make_socket(path, type);
        listen(live, 1);
        expect_no_start(directory.path, {}, path + in_use);
        close(live);
    }
    const temporary_directory directory;
    const std::string path = directory.path + "/" + CORE_SOCKET;
    write_file(path, "mine");
    expect_no_start(directory.path, {},
                    path + " is not a socket; remove it or choose another directory with "
                           "--directory");
    EXPECT_EQ(read_file(path), "mine");
}

TEST(Start, LeavesAnotherSimulatorAlone) {
    const protocol::daemon_row refusing = daemons()[1];
    running_simulator first({"--refuse", protocol::lower(refusing.name)});
    expect_no_start(first.home.path, {},
                    "another lumosim serves " + first.home.path +
                        "; stop it or choose another with --directory");
    EXPECT_EQ(first.ask(CORE_SOCKET, CORE_REQUEST), CORE_DONE);
    EXPECT_TRUE(fs::is_socket(first.home.path + "/" + refusing.socket));
    const temporary_directory directory;
    const std::string port = std::to_string(first.port);
    expect_no_start(directory.path, {"--port", port},
                    "cannot take port " + port +
                        " of 127.0.0.1: Address already in use; choose another with --port "
                        "(0 for any free one)");
    const std::string longest = directory.path + "/" + std::string(100, 'd');
    expect_no_start(longest, {},
                    longest + "/" + CORE_SOCKET +
                        " is too long for a socket; choose a shorter one with --directory");
}

/// The unit, but with the program that is built here and another directory.
TEST(Unit, StartsASimulatorAndSatisfiesSystemd) {
    const temporary_directory directory;
    const std::string command = LUMOSIM_PROGRAM " --directory " + directory.path + " --port 0";
    const std::string unit = std::regex_replace(
        read_file(LUMOSIM_UNIT), std::regex("=/usr/bin/lumosim --directory \\S+ --port \\d+\n"),
        "=" + command + "\n");
    ASSERT_NE(unit.find("ExecStart=" + command + "\n"), std::string::npos) << unit;
    started_program program(protocol::split(command, ' '));
    EXPECT_TRUE(program.wait_for_output("ready\n"));
    EXPECT_EQ(end_program(program, SIGTERM).status, 0);

    const std::string copy = directory.path + "/lumosim.service";
    write_file(copy, unit);
    if (run({"which", "systemd-analyze"}).status != 0) {
        GTEST_SKIP() << "systemd-analyze is not installed";
    }
    const run_result seen = run({"systemd-analyze", "verify", "--man=no", copy});
    EXPECT_EQ(seen.status, 0);
    EXPECT_EQ(seen.errors, "");
}

} // namespace
