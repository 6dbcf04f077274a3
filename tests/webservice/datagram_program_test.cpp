// The runtime knows a transport by datagrams, for urls that begin with "udp:" and have no "//".
// Nobody asks for it, but whoever does is served.

#include "tests/harness/peer.h"
#include "tests/harness/process.h"
#include "tests/webservice/http_peer.h"

#include <gtest/gtest.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>

namespace {

using namespace harness;

/// Answers one datagram on a port of the kernel's choice.
class datagram_peer {
  public:
    explicit datagram_peer(std::string answer) : answer_(std::move(answer)) {
        thread_ = std::thread([this] { answer_one(); });
    }

    ~datagram_peer() {
        finish();
        close(descriptor_);
    }

    int port() const {
        return port_;
    }

    /// What came; empty when nothing did in time.
    std::string finish() {
        if (thread_.joinable()) {
            thread_.join();
        }
        return received_;
    }

  private:
    void answer_one() {
        pollfd watched = {descriptor_, POLLIN, 0};
        if (poll(&watched, 1, PATIENCE_MS) != 1) {
            return;
        }
        char bytes[4096];
        sockaddr_in from = {};
        socklen_t size = sizeof from;
        const ssize_t length = recvfrom(descriptor_, bytes, sizeof bytes, 0,
                                        reinterpret_cast<sockaddr *>(&from), &size);
        received_.assign(bytes, length < 0 ? 0 : static_cast<std::size_t>(length));
        sendto(descriptor_, answer_.data(), answer_.size(), 0, reinterpret_cast<sockaddr *>(&from),
               size);
    }

    const std::string answer_;
    const int descriptor_ = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    const int port_ = bind_to_loopback(descriptor_);
    std::string received_;
    std::thread thread_;
};

TEST(Datagram, IsSentAndAnswered) {
    for (const char *scheme : {"udp:", "soap.udp:"}) {
        SCOPED_TRACE(scheme);
        datagram_peer service(envelope(response_element("test", element("result", "LMWS-402"))));
        const std::string url = scheme + ("@127.0.0.1:" + std::to_string(service.port())) + "/";
        const run_result run = lumocmd({"-t", "SOAP", "-u", url, "-f", "SERVICE_TEST"});
        EXPECT_EQ(run.output, "LMWS-402\n");
        EXPECT_EQ(run.errors, "");
        EXPECT_EQ(run.status, 402 & 0xff);
        EXPECT_NE(service.finish().find("<ns:service-test"), std::string::npos);
    }
}

} // namespace
