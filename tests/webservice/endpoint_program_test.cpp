// A url that the runtime would misread is a failed call, reported with the reason; one close to
// that is called as it was meant.

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

TEST(UnusableUrl, IsAFailedCall) {
    const std::string url = "127.0.0.1:1/%s";
    const std::pair<words, int> rows[] = {
        {SINGLE_CALL, 502}, {{"-f", "SERVICE_RUNONELEMENT", "-p", "a|b"}, 502}, {RECORD_CALL, 508}};
    for (const auto &[call, code] : rows) {
        const run_result run = call_at(url, call);
        expect_run(run, "LMCM-" + std::to_string(code) + "\n", code, run.errors);
        // The first line is the runtime's.
        EXPECT_TRUE(run.errors.starts_with("Error 3986 fault ")) << run.errors;
        EXPECT_EQ(run.errors.substr(run.errors.find('\n') + 1),
                  "\"url '" + url +
                      "' cannot be used\"\n"
                      "Detail: one like http://localhost/cgi-bin/lumows of at most 1023 "
                      "characters is needed\n");
    }
}

/// @param user with its "@", or nothing.
/// @param authorization what becomes of the user.
void expect_sent(const std::string &user, const std::string &path, const char *authorization,
                 const std::string &scheme = "http://", const std::string &address = "127.0.0.1") {
    peer service(answering(http_response("test", "<result>LMWS-402</result>")));
    const std::string host = address + ":" + std::to_string(service.port());
    expect_run(call_at(scheme + user + host + path, {"-f", "SERVICE_TEST"}), "LMWS-402\n", 402);
    EXPECT_EQ(service.finish(), "");
    const http_request request = split_request(service.received());
    EXPECT_EQ(request.first_line.substr(0, request.first_line.rfind(' ')), "POST " + path);
    EXPECT_EQ(request.header("Host"), host);
    EXPECT_EQ(request.header("Authorization"), authorization);
}

TEST(UsableUrl, IsCalled) {
    expect_sent("", "/100%\"[", "(absent)", "HTTP://");
    expect_sent("u%4a:p%2Fw@", "/", "Basic dUo6cC93");
    expect_sent("[u@", "/", "Basic W3U6");
    expect_sent("u@", "/a\"b100%@[c@d", "Basic dTo=");
    expect_sent("u@", "/x?mail=a@other", "Basic dTo=");
    expect_sent("", "/" + std::string(1000, 'x'), "(absent)"); // as long as one may be
}

/// The address is the loopback's of IPv4, written as one of IPv6.
TEST(UsableUrl, MayHaveANumericHostInBrackets) {
    if (access("/proc/net/if_inet6", F_OK) != 0) {
        GTEST_SKIP() << "this system has no IPv6";
    }
    expect_sent("u%41@", "/", "Basic dUE6", "http://", "[::ffff:127.0.0.1]");
}

// ---------------------------------------------------------------------------------------------
// A statically linked program finds hosts by /etc/hosts and DNS alone, on a machine that holds
// nothing of its C library and names a module of another one

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
