// A url that the runtime would misread is a failed call, reported with the reason; one close to
// that is called as it was meant.

#include "tests/harness/console.h"
#include "tests/webservice/http_peer.h"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

using namespace harness;

TEST(UnusableUrl, IsAFailedCall) {
    const std::string long_url = "http://127.0.0.1:1/" + std::string(1024 - 19, 'a');
    for (const std::string &url : {std::string("127.0.0.1:1/%s"), long_url}) {
        const struct {
            words call;
            int code;
            const char *line = nullptr; ///< in green
        } rows[] = {
            {SINGLE_CALL, 502},
            {{"-f", "SERVICE_RUNONELEMENT", "-p", "a|b", "-v", "ON"}, 502},
            {RECORD_CALL, 508},
            {TEXT_CALL, 502, "[lumocmd] Url: (null)"},
            {{"-f", "SERVICE_VERSIONINFO", "-v", "ON"},
             502,
             "[lumocmd] Software Version: LUMOCMD Version: 2.6.16_arlo [rev.7655] -"},
        };
        for (const auto &row : rows) {
            SCOPED_TRACE(row.call[1]);
            const run_result run = call_at(url, row.call);
            expect_run(run,
                       (row.line != nullptr ? green(run.pid, row.line) : "") + "LMCM-" +
                           std::to_string(row.code) + "\n",
                       row.code, run.errors);
            // The first line is the runtime's.
            EXPECT_TRUE(run.errors.starts_with("Error 3986 fault ")) << run.errors;
            EXPECT_EQ(run.errors.substr(run.errors.find('\n') + 1),
                      "\"url '" + url +
                          "' cannot be used\"\n"
                          "Detail: one like http://localhost/cgi-bin/lumows of at most 1023 "
                          "characters is needed\n");
        }
    }
}

struct usable_case {
    const char *user;          ///< with its "@", or nothing
    const char *path;          ///< from its "/" on
    const char *authorization; ///< what becomes of the user
    const char *host = "127.0.0.1";
};

void expect_sent(const usable_case &row, const std::string &scheme = "http://",
                 std::size_t length = 0) {
    peer service(answering(http_response("test", "<result>LMWS-402</result>")));
    const std::string host = std::string(row.host) + ":" + std::to_string(service.port());
    const std::string start = scheme + row.user + host;
    std::string path = row.path;
    path.resize(length != 0 ? length - start.size() : path.size(), 'x');
    expect_run(call_at(start + path, {"-f", "SERVICE_TEST"}), "LMWS-402\n", 402);
    EXPECT_EQ(service.finish(), "");
    const http_request request = split_request(service.received());
    EXPECT_EQ(request.first_line.substr(0, request.first_line.rfind(' ')), "POST " + path);
    EXPECT_EQ(request.header("Host"), host);
    EXPECT_EQ(request.header("Authorization"), row.authorization);
}

TEST(UsableUrl, IsCalled) {
    expect_sent({"", "/100%\"[", "(absent)"});
    expect_sent({"u%4a:p%2Fw@", "/", "Basic dUo6cC93"});
    expect_sent({"[u@", "/", "Basic W3U6"});
    expect_sent({"u@", "/a\"b100%@[c@d", "Basic dTo="});
    expect_sent({"u@", "/x?mail=a@other", "Basic dTo="});
    expect_sent({"", "/", "(absent)"}, "HTTP://");
    expect_sent({"", "/", "(absent)"}, "http://", 1023); // the longest, to its last character
}

/// The address is the loopback's of IPv4, written as one of IPv6.
TEST(UsableUrl, MayHaveANumericHostInBrackets) {
    const int descriptor = socket(AF_INET6, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (descriptor < 0) {
        GTEST_SKIP() << "this system has no IPv6";
    }
    close(descriptor);
    expect_sent({"u%41@", "/", "Basic dUE6", "[::ffff:127.0.0.1]"});
}

} // namespace
