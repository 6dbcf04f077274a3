// A statically linked program finds hosts by /etc/hosts and DNS alone, on a machine that holds
// nothing of its C library and names a module of another one.

#include "tests/webservice/http_peer.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

namespace {

using namespace harness;
namespace fs = std::filesystem;

/// Answers questions for names on port 53, until the process ends: every name is at 127.0.0.1. RFC
/// 1035, section 4: the head, the question as it came, and an address where one was asked for.
void serve_names(int descriptor) {
    using namespace std::string_literals;
    for (;;) {
        char bytes[512];
        sockaddr_in from = {};
        socklen_t size = sizeof from;
        auto *sender = reinterpret_cast<sockaddr *>(&from);
        const ssize_t length = recvfrom(descriptor, bytes, sizeof bytes, 0, sender, &size);
        if (length < 0) {
            return;
        }
        constexpr std::size_t head = 12;
        const std::string message(bytes, static_cast<std::size_t>(length));
        // Type and class follow the name.
        const std::string question = message.substr(head, message.find('\0', head) + 5 - head);
        const bool asks_for_address = question.ends_with("\0\1\0\1"s);
        const std::string answer =
            message.substr(0, 2) + "\x81\x80" +
            (asks_for_address ? "\0\1\0\1\0\0\0\0"s : "\0\1\0\0\0\0\0\0"s) + question +
            (asks_for_address ? "\xc0\x0c\0\1\0\1\0\0\0\0\0\4\x7f\0\0\1"s : ""s);
        sendto(descriptor, answer.data(), answer.size(), 0, sender, size);
    }
}

/// A call at controller.example within a root directory that holds the program, the emulator if it
/// needs one, and an administrator's files. The file of the module that nsswitch.conf names is a
/// pipe: opening it would take forever.
std::string seen_with(const std::string &hosts, const std::string &name_server) {
    const temporary_directory directory;
    const std::string &root = directory.path;
    fs::create_directories(root + "/etc");
    fs::create_directories(root + "/lib");
    std::ofstream(root + "/etc/nsswitch.conf")
        << "hosts: foreign [NOTFOUND=return UNAVAIL=return] files dns\n";
    mkfifo((root + "/lib/libnss_foreign.so.2").c_str(), 0600);
    std::ofstream(root + "/etc/hosts") << hosts;
    std::ofstream(root + "/etc/resolv.conf") << "nameserver " << name_server << "\n";
    words command = lumocmd_command(
        {"-t", "SOAP", "-u", "http://controller.example/cgi-bin/lumows", "-f", "SERVICE_TEST"});
    fs::copy_file(lumocmd_path(), root + "/lumocmd");
    std::replace(command.begin(), command.end(), lumocmd_path(), std::string("/lumocmd"));
    if (is_wrapped()) {
        run({"sh", "-c", "cp \"$(command -v \"$1\")\" \"$2\"", "sh", command[0],
             root + "/emulator"});
        command[0] = "/emulator";
    }
    return on_private_machine([&] {
        const int descriptor = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
        bind_to_loopback(descriptor, 53);
        std::thread([descriptor] { serve_names(descriptor); }).detach();
        peer service(answering(http_response("test", "<result>LMWS-402</result>")), 80);
        const bool is_inside = chroot(root.c_str()) == 0 && chdir("/") == 0;
        const run_result seen = is_inside ? run(command) : run_result{};
        return seen.output + service.finish();
    });
}

TEST(StaticProgram, FindsAHostByItsFileOrByDns) {
    if (run({"readelf", "-lW", lumocmd_path()}).output.find(" INTERP ") != std::string::npos) {
        GTEST_SKIP()
            << "the program takes its C library, and the modules of that, from the machine";
    }
    SKIP_WHERE_MISSING(missing_private_machine());
    const std::string nobody = "127.0.0.2";
    EXPECT_EQ(seen_with("127.0.0.1 controller.example\n", nobody), "LMWS-402\n");
    EXPECT_EQ(seen_with("", "127.0.0.1"), "LMWS-402\n");
    EXPECT_EQ(seen_with("127.0.0.1 another.example\n", nobody), "LMCM-502\nno client connected");
}

} // namespace
