// Runs the real simulator in a fresh directory and talks to its sockets. Every wait is bounded;
// nothing sleeps. The environment variable LUMOSIM_WRAPPER puts a command such as valgrind in
// front of the program.
#pragma once

#include <string>
#include <string_view>
#include <sys/types.h>
#include <vector>

/// How long any one thing may take before a test gives up.
inline constexpr int PATIENCE_MS = 20000;

/// A directory that is removed with everything in it.
struct FreshDirectory {
    FreshDirectory();
    ~FreshDirectory();
    FreshDirectory(const FreshDirectory &) = delete;
    FreshDirectory &operator=(const FreshDirectory &) = delete;

    std::string path;
};

/// A running program with its output. Killed at the end of the test if it still runs.
struct Program {
    explicit Program(const std::vector<std::string> &arguments);

    /// Another program than the simulator.
    Program(const std::string &name, const std::vector<std::string> &arguments);

    ~Program();
    Program(const Program &) = delete;
    Program &operator=(const Program &) = delete;

    pid_t pid = -1;
    int out_descriptor = -1;
    int error_descriptor = -1;
    std::string out;
    std::string errors;
};

/// Reads until the output holds the text; false at its end or when the time is up.
bool wait_for_output(Program &program, std::string_view text);

/// Sends the signal, if not 0, reads all output, and returns the exit status; -1 when the
/// program was killed by a signal, -2 when it did not end.
int end_program(Program &program, int signal_number);

/// A simulator that listens in `home.path`, with the web service on a port of its own.
struct Simulator {
    explicit Simulator(const std::vector<std::string> &options = {});

    FreshDirectory home;
    Program program;
    int port = 0;
    bool ready = false;
};

/// The options that such a simulator is started with.
std::vector<std::string> usual_options(const std::string &directory,
                                       const std::vector<std::string> &more = {});

/// A connection to the socket of this name, such as eibgateway; -1 with errno when refused.
int connect_daemon(const std::string &directory, const std::string &name);

/// A connection to the web service's port.
int connect_port(int port);

/// Sends all bytes, each in a write of its own when `drip`.
bool send_bytes(int descriptor, std::string_view bytes, bool drip = false);

/// Reads to the end of the stream, or until it is whole, and closes; "(late)" is appended when the
/// time is up.
std::string read_all(int descriptor, bool (*is_whole)(const std::string &) = nullptr);

/// One whole request and its whole answer.
std::string ask_daemon(const std::string &directory, const std::string &name,
                       std::string_view request, bool drip = false);

/// An HTTP answer as it came, taken apart.
struct HttpAnswer {
    int status; ///< 0 when there was none
    std::string head;
    std::string body;
};

/// One whole HTTP request on a connection of its own, such as "GET /", and its whole answer. Each
/// line of the headers ends with a carriage return and a line feed; a host is added where none is.
HttpAnswer ask_http(int port, const std::string &method_and_path, const std::string &headers = "",
                    const std::string &body = "");

/// Reads a whole file.
std::string read_file(const std::string &path);
