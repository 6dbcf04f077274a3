// A statically linked program finds hosts by /etc/hosts and DNS alone, on a machine that holds
// nothing of its C library and names a module of another one.

#include "tests/harness/console.h"
#include "tests/harness/private_machine.h"
#include "tests/webservice/http_peer.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <poll.h>
#include <sstream>
#include <sys/socket.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

namespace {

using namespace harness;
namespace fs = std::filesystem;

void write_file(const std::string &path, const std::string &text) {
    std::ofstream(path, std::ios::binary) << text;
}

/// Where the shell would find a program.
std::string found_program(const std::string &name) {
    std::istringstream path(getenv("PATH"));
    for (std::string directory; name.find('/') == std::string::npos;) {
        if (!std::getline(path, directory, ':')) {
            return name;
        }
        if (access((directory + "/" + name).c_str(), X_OK) == 0) {
            return directory + "/" + name;
        }
    }
    return name;
}

/// A root directory with the program, the emulator if it needs one, and what an administrator
/// writes. The file of the module that nsswitch.conf names is a pipe: opening it would take
/// forever.
class foreign_root {
  public:
    foreign_root() {
        fs::create_directories(root_.path + "/etc");
        fs::create_directories(root_.path + "/lib");
        write_file(root_.path + "/etc/nsswitch.conf",
                   "hosts: foreign [NOTFOUND=return UNAVAIL=return] files dns\n");
        mkfifo((root_.path + "/lib/libnss_foreign.so.2").c_str(), 0600);
        const char *wrapper = getenv("LUMOCMD_WRAPPER");
        std::istringstream words_before(wrapper == nullptr ? "" : wrapper);
        for (std::string word; words_before >> word;) {
            command_.push_back(word);
        }
        if (!command_.empty()) {
            fs::copy_file(found_program(command_[0]), root_.path + "/emulator");
            command_[0] = "/emulator";
        }
        fs::copy_file(lumocmd_path(), root_.path + "/lumocmd");
        command_.emplace_back("/lumocmd");
    }

    void write(const std::string &path, const std::string &text) const {
        write_file(root_.path + path, text);
    }

    /// Calls the service at a host, within the directory. For a process that ends soon: it stays
    /// there.
    run_result call_service_at(const std::string &host) const {
        if (chroot(root_.path.c_str()) != 0 || chdir("/") != 0) {
            return {"chroot failed", "", -1, 0};
        }
        words command = command_;
        for (const std::string &word : {std::string("-t"), std::string("SOAP"), std::string("-u"),
                                        "http://" + host + "/cgi-bin/lumows", std::string("-f"),
                                        std::string("SERVICE_TEST")}) {
            command.push_back(word);
        }
        return run(command);
    }

  private:
    temporary_directory root_;
    words command_;
};

/// Answers questions for names on port 53: every one is at 127.0.0.1.
class name_server {
  public:
    name_server() {
        sockaddr_in address = {};
        address.sin_family = AF_INET;
        address.sin_port = htons(53);
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        if (bind(descriptor_, reinterpret_cast<sockaddr *>(&address), sizeof address) != 0 ||
            pipe(stop_) != 0) {
            throw std::runtime_error("no port for the name server");
        }
        thread_ = std::thread([this] { serve(); });
    }
    ~name_server() {
        close(stop_[1]);
        thread_.join();
        close(stop_[0]);
        close(descriptor_);
    }
    name_server(const name_server &) = delete;
    name_server &operator=(const name_server &) = delete;

  private:
    void serve() {
        pollfd watched[2] = {{descriptor_, POLLIN, 0}, {stop_[0], POLLIN, 0}};
        while (poll(watched, 2, PATIENCE_MS) > 0 && watched[1].revents == 0) {
            char question[512];
            sockaddr_in from = {};
            socklen_t size = sizeof from;
            const ssize_t length = recvfrom(descriptor_, question, sizeof question, 0,
                                            reinterpret_cast<sockaddr *>(&from), &size);
            if (length > 0) {
                const std::string answer =
                    answer_to(std::string(question, static_cast<std::size_t>(length)));
                sendto(descriptor_, answer.data(), answer.size(), 0,
                       reinterpret_cast<sockaddr *>(&from), size);
            }
        }
    }

    /// RFC 1035, section 4: the head, the question as it came, and an address where one was asked
    /// for.
    static std::string answer_to(const std::string &message) {
        using namespace std::string_literals;
        constexpr std::size_t head = 12;
        const std::size_t question_end = message.find('\0', head) + 5; // type and class follow
        const std::string question = message.substr(head, question_end - head);
        const bool asks_for_address = question.substr(question.size() - 4) == "\0\1\0\1"s;
        const std::string counts = asks_for_address ? "\0\1\0\1\0\0\0\0"s : "\0\1\0\0\0\0\0\0"s;
        const std::string record = "\xc0\x0c\0\1\0\1\0\0\0\0\0\4\x7f\0\0\1"s;
        return message.substr(0, 2) + "\x81\x80" + counts + question +
               (asks_for_address ? record : "");
    }

    int descriptor_ = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    int stop_[2] = {-1, -1};
    std::thread thread_;
};

class StaticProgram : public testing::Test {
  protected:
    void SetUp() override {
        if (run({"readelf", "-lW", lumocmd_path()}).output.find(" INTERP ") != std::string::npos) {
            GTEST_SKIP()
                << "the program takes its C library, and the modules of that, from the machine";
        }
        SKIP_WHERE_MISSING(missing_private_machine());
    }

    const std::string answer_ =
        http_answer(envelope(response_element("test", "<result>LMWS-402</result>")));
};

TEST_F(StaticProgram, FindsAHostByItsFile) {
    const foreign_root root;
    root.write("/etc/hosts", "127.0.0.1 controller.example\n");
    const std::string seen = on_private_machine([&] {
        peer service(answering(answer_), 80);
        const run_result run = root.call_service_at("controller.example");
        return run.output + run.errors;
    });
    EXPECT_EQ(seen, "LMWS-402\n");
}

TEST_F(StaticProgram, FindsAHostByDns) {
    const foreign_root root;
    root.write("/etc/resolv.conf", "nameserver 127.0.0.1\n");
    const std::string seen = on_private_machine([&] {
        name_server names;
        peer service(answering(answer_), 80);
        const run_result run = root.call_service_at("controller.example");
        return run.output + run.errors;
    });
    EXPECT_EQ(seen, "LMWS-402\n");
}

TEST_F(StaticProgram, FindsNoHostThatNobodyKnows) {
    const foreign_root root;
    root.write("/etc/hosts", "127.0.0.1 another.example\n");
    const std::string seen = on_private_machine([&] {
        peer service(answering(answer_), 80);
        const run_result run = root.call_service_at("controller.example");
        return run.output + service.finish_unvisited();
    });
    EXPECT_EQ(seen, "LMCM-502\n");
}

} // namespace
