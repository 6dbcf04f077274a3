// The program against a stock web server with a CGI behind /cgi-bin/lumows, as on the controller.

#include "tests/harness/console.h"
#include "tests/webservice/http_peer.h"

#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <sstream>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using namespace harness;

const char *const SERVER = "/usr/sbin/lighttpd";

void write_file(const std::string &path, const std::string &text) {
    std::ofstream(path, std::ios::binary) << text;
}

std::string read_file(const std::string &path) {
    std::ostringstream text;
    text << std::ifstream(path, std::ios::binary).rdbuf();
    return text.str();
}

/// The server on a loopback port that the system chose. It inherits the listening socket, so that
/// nothing needs to wait for it.
class stock_server {
  public:
    /// `program` is the shell script behind the CGI path; it runs in the server's directory.
    explicit stock_server(const std::string &program) {
        const std::string root = directory_.path;
        std::filesystem::create_directory(root + "/cgi-bin");
        write_file(root + "/cgi-bin/lumows", "#!/bin/sh\ncd '" + root + "'\n" + program);
        std::filesystem::permissions(root + "/cgi-bin/lumows", std::filesystem::perms::owner_all);
        const int listener = listen_on_loopback();
        write_file(root + "/conf", "server.document-root = \"" + root +
                                       "\"\n"
                                       "server.bind = \"127.0.0.1\"\n"
                                       "server.port = " +
                                       std::to_string(port_) +
                                       "\n"
                                       "server.systemd-socket-activation = \"enable\"\n"
                                       "server.modules = ( \"mod_cgi\" )\n"
                                       "server.errorlog = \"" +
                                       root +
                                       "/errors\"\n"
                                       "cgi.assign = ( \"/lumows\" => \"\" )\n");
        pid_ = fork();
        if (pid_ == 0) {
            become_server(root + "/conf", listener);
        }
        close(listener);
    }
    ~stock_server() {
        kill(pid_, SIGTERM);
        waitpid(pid_, nullptr, 0);
    }
    stock_server(const stock_server &) = delete;
    stock_server &operator=(const stock_server &) = delete;

    std::string url(const std::string &path) const {
        return "http://127.0.0.1:" + std::to_string(port_) + path;
    }
    int port() const {
        return port_;
    }
    /// A file that the CGI has written.
    std::string file(const std::string &name) const {
        return read_file(directory_.path + "/" + name);
    }

  private:
    int listen_on_loopback() {
        const int listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
        port_ = bind_to_loopback(listener);
        if (listen(listener, 4) != 0) {
            throw std::runtime_error("no loopback port");
        }
        return listener;
    }

    [[noreturn]] static void become_server(const std::string &configuration, int listener) {
        constexpr int first_passed = 3;
        if (listener == first_passed) {
            fcntl(listener, F_SETFD, 0);
        } else {
            dup2(listener, first_passed);
        }
        setenv("LISTEN_FDS", "1", 1);
        setenv("LISTEN_PID", std::to_string(getpid()).c_str(), 1);
        execl(SERVER, SERVER, "-D", "-f", configuration.c_str(), static_cast<char *>(nullptr));
        _exit(127); // the socket closes with this process, so that the client is refused
    }

    temporary_directory directory_;
    int port_ = 0;
    pid_t pid_ = -1;
};

const char *const ANSWERING_SCRIPT = R"(cat > request
printf '%s\n' "$REQUEST_METHOD $SCRIPT_NAME" "$CONTENT_TYPE" "$CONTENT_LENGTH" \
    "$HTTP_HOST" "$HTTP_USER_AGENT" "$HTTP_SOAPACTION" > environment
printf 'Content-Type: text/xml; charset=utf-8\r\n\r\n'
cat <<'END'
<?xml version="1.0" encoding="UTF-8"?>
)";

std::string answering_script(const std::string &envelope) {
    return ANSWERING_SCRIPT + envelope + "\nEND\n";
}

TEST(StockServer, CarriesACall) {
    const stock_server server(answering_script(envelope(response_element(
        "getelementstatus",
        "<result>LMWS-000</result><status>on</status><currentvalue>21.5</currentvalue>"))));
    const run_result run =
        lumocmd({"-t", "SOAP", "-u", server.url("/cgi-bin/lumows"), "-w", "5", "-f",
                 "SERVICE_GETELEMENTSTATUS", "-p", "<s>|lamp", "-v", "ON"});
    EXPECT_EQ(run.output, green(run.pid, "[lumocmd] Status: on") +
                              green(run.pid, "[lumocmd] Current Value: 21.5") + "LMCM-0000\n");
    EXPECT_EQ(run.errors, "");
    EXPECT_EQ(run.status, 0);

    const std::string request = server.file("request");
    EXPECT_EQ(request.substr(request.find('\n') + 1),
              request_text("getelementstatus", "<sessionid>&lt;s&gt;</sessionid>"
                                               "<idobject>lamp</idobject><waittime>5</waittime>"));
    EXPECT_EQ(server.file("environment"), "POST /cgi-bin/lumows\ntext/xml; charset=utf-8\n" +
                                              std::to_string(request.size()) +
                                              "\n127.0.0.1:" + std::to_string(server.port()) +
                                              "\ngSOAP/2.7\n\"urn:xmethods-lumows\"\n");
}

TEST(StockServer, CarriesAFault) {
    const stock_server server("cat > request\nprintf 'Status: 500 Internal Server Error\\r\\n"
                              "Content-Type: text/xml; charset=utf-8\\r\\n\\r\\n'\ncat <<'END'\n" +
                              envelope(fault_element("SOAP-ENV:Server", "bus is down")) +
                              "\nEND\n");
    const run_result run = lumocmd({"-t", "SOAP", "-u", server.url("/cgi-bin/lumows"), "-f",
                                    "SERVICE_GETELEMENTSTATUS", "-p", "s|lamp"});
    EXPECT_EQ(run.output, "LMCM-508\n");
    EXPECT_EQ(run.errors, fault_report("SOAP-ENV:Server", "bus is down"));
    EXPECT_EQ(run.status, 508 & 0xff);
}

TEST(StockServer, TellsOfAMissingService) {
    const stock_server server("exit 1\n");
    const run_result run =
        lumocmd({"-t", "SOAP", "-u", server.url("/cgi-bin/nosuch"), "-f", "SERVICE_TEST"});
    EXPECT_EQ(run.output, "LMCM-502\n");
    EXPECT_NE(run.errors.find("404"), std::string::npos) << run.errors;
    EXPECT_EQ(run.status, 502 & 0xff);
}

} // namespace
