// Runs the real simulator and talks to its sockets as clients do. Every wait is bounded; nothing
// sleeps.
#pragma once

#include "tests/harness/process.h"

#include <string>
#include <string_view>

namespace harness {

/// A request to FSMCore, which no configuration lacks, and its answer.
inline const std::string CORE_SOCKET = "lumo_fsmcore.socket";
inline const std::string CORE_REQUEST = "Request: f\nParameter Count: 0\nWaittime: 5\n\n";
inline const std::string CORE_DONE = "Response Status: FSMC-000\nParameter Count: 0\n";

/// Ends a program with a signal; what it said, and its exit status.
run_result end_program(started_program &program, int signal_number);

/// An HTTP answer as it came, taken apart.
struct http_reply {
    int status = 0; ///< 0 when there was none
    std::string head = {};
    std::string body = {};
};

/// One whole HTTP request on a connection of its own, such as "GET /", and its whole answer. Each
/// line of the headers ends with a carriage return and a line feed; a host is added where none is.
http_reply ask_http(int port, const std::string &method_and_path, const std::string &headers = "",
                    const std::string &body = "");

/// Child elements from a list such as "user=demo|pass=demo".
std::string children(const std::string &list);

/// A whole web-service request around the content of its body; the whole answers to
/// service-OPERATION, and of a fault.
std::string wrap_request(const std::string &content);
std::string wrap_response(const std::string &operation, const std::string &children);
std::string wrap_fault(const std::string &code, const std::string &text);

/// A call of service-OPERATION with a list of children, and such a list of its answer.
struct call_row {
    std::string operation;
    std::string request;
    std::string response;
};

/// The simulator with its sockets in this directory and the web service on a free port.
words simulator_command(const std::string &directory, const words &options = {});

/// Runs one with these arguments alone to its end.
run_result run_simulator(words arguments);

/// A simulator that listens in `home.path`. Throws what it said when it does not get so far.
struct running_simulator {
    explicit running_simulator(const words &options = {});

    /// Asks the daemon of this socket file.
    std::string ask(const std::string &socket_file, std::string_view request,
                    bool drip = false) const;

    http_reply http(const std::string &method_and_path, const std::string &headers = "",
                    const std::string &body = "") const;

    /// Posts a message to the web service with chosen headers.
    http_reply post(const std::string &message,
                    const std::string &action = "\"urn:xmethods-lumows\"",
                    const std::string &type = "text/xml; charset=utf-8") const;

    /// Calls service-OPERATION with these children and returns the answer body.
    std::string call(const std::string &operation, const std::string &children) const;
    void expect_response(const call_row &row) const;

    /// Ends it and returns what the log holds between the simulator's readiness and its end.
    std::string end(int expected_status = 0);

    temporary_directory home;
    started_program program;
    std::string url;    ///< of the web service
    std::string origin; ///< the same without its path
    int port = 0;
};

/// A connection to a daemon's socket; -1 with errno when refused.
int connect_socket(const std::string &path);

/// A connection to a loopback port; -1 with errno when refused.
int connect_port(int port);

/// Sends all bytes, each in a write of its own when `drip`.
bool send_bytes(int descriptor, std::string_view bytes, bool drip = false);

/// Reads to the end of the stream, or until it is whole, and closes; what went wrong is appended in
/// parentheses.
std::string read_all(int descriptor, bool (*is_whole)(const std::string &) = nullptr);

/// One whole request to a daemon, and its whole answer.
std::string ask_daemon(const std::string &path, std::string_view request, bool drip = false);

/// Reads and writes a whole file.
std::string read_file(const std::string &path);
void write_file(const std::string &path, const std::string &text);

} // namespace harness
