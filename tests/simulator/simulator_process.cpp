// The simulator as a process, and raw stream sockets to it.
#include "tests/simulator/simulator_process.h"

#include "tests/protocol/texts.h"
#include "tests/webservice/http_peer.h"

#include <arpa/inet.h>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <fstream>
#include <gtest/gtest.h>
#include <stdexcept>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace harness {

namespace {

/// Whether the body is as long as the head says, where it does: some servers do not close.
bool is_whole_http_answer(const std::string &answer) {
    const std::string tag = "\r\nContent-Length:";
    const std::size_t end = answer.find("\r\n\r\n");
    const std::size_t at = answer.find(tag);
    return end != std::string::npos && at < end &&
           answer.size() - end - 4 >= std::stoul(answer.substr(at + tag.size()));
}

/// A connection on which no wait lasts for ever.
int connect_to(const void *address, socklen_t size) {
    const auto *place = static_cast<const sockaddr *>(address);
    const int descriptor = socket(place->sa_family, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const timeval patience{PATIENCE_MS / 1000, 0};
    setsockopt(descriptor, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
    if (connect(descriptor, place, size) == 0) {
        return descriptor;
    }
    const int reason = errno;
    close(descriptor);
    errno = reason;
    return -1;
}

const std::string DECLARATION = R"(<?xml version="1.0" encoding="UTF-8"?>)";

std::string encoded_envelope(const std::string &content) {
    return std::string(ENVELOPE_TAG) +
           R"(<SOAP-ENV:Body SOAP-ENV:encodingStyle="http://schemas.xmlsoap.org/soap/encoding/">)" +
           content + "</SOAP-ENV:Body></SOAP-ENV:Envelope>";
}

} // namespace

run_result end_program(started_program &program, int signal_number) {
    program.send_signal(signal_number);
    return program.finish();
}

words simulator_command(const std::string &directory, const words &options) {
    words command{LUMOSIM_PROGRAM, "--directory",       directory, "--port", "0",
                  "--ready-file",  directory + "/ready"};
    command.insert(command.end(), options.begin(), options.end());
    return command;
}

run_result run_simulator(words arguments) {
    arguments.insert(arguments.begin(), LUMOSIM_PROGRAM);
    return run(arguments);
}

running_simulator::running_simulator(const words &options)
    : program(simulator_command(home.path, options)) {
    if (!program.wait_for_output("ready")) {
        throw std::runtime_error("the simulator did not start: " + program.finish().errors);
    }
    const std::string text = read_file(home.path + "/ready");
    const std::string host = "http://127.0.0.1:";
    const std::size_t at = text.find(host);
    url = text.substr(at, text.size() - 1 - at);
    port = std::stoi(url.substr(host.size()));
    origin = host + std::to_string(port);
}

std::string running_simulator::ask(const std::string &socket_file, std::string_view request,
                                   bool drip) const {
    return ask_daemon(home.path + "/" + socket_file, request, drip);
}

http_reply running_simulator::http(const std::string &method_and_path, const std::string &headers,
                                   const std::string &body) const {
    return ask_http(port, method_and_path, headers, body);
}

http_reply running_simulator::post(const std::string &message, const std::string &action,
                                   const std::string &type) const {
    return http("POST /cgi-bin/lumows",
                "SOAPAction: " + action + "\r\nContent-Type: " + type + "\r\n", message);
}

std::string running_simulator::call(const std::string &operation,
                                    const std::string &children) const {
    return post(wrap_request(element("ns:service-" + operation, children))).body;
}

void running_simulator::expect_response(const call_row &row) const {
    EXPECT_EQ(call(row.operation, children(row.request)),
              wrap_response(row.operation, children(row.response)))
        << row.request;
}

std::string running_simulator::end(int expected_status) {
    const run_result seen = end_program(program, SIGTERM);
    EXPECT_EQ(seen.status, expected_status) << seen.errors;
    const std::string start = "\nready\n";
    const std::string stop = "stopped\n";
    EXPECT_TRUE(seen.output.ends_with(stop)) << seen.output;
    const std::size_t from = seen.output.find(start) + start.size();
    return seen.output.substr(from, seen.output.size() - stop.size() - from);
}

int connect_socket(const std::string &path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    return connect_to(&address, sizeof address);
}

int connect_port(int port) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<in_port_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return connect_to(&address, sizeof address);
}

bool send_bytes(int descriptor, std::string_view bytes, bool drip) {
    while (!bytes.empty()) {
        const ssize_t count = send(descriptor, bytes.data(), drip ? 1 : bytes.size(), MSG_NOSIGNAL);
        if (count <= 0) {
            return false;
        }
        bytes.remove_prefix(static_cast<std::size_t>(count));
    }
    return true;
}

std::string read_all(int descriptor, bool (*is_whole)(const std::string &)) {
    std::string answer;
    std::array<char, 65536> chunk{};
    ssize_t count = 1;
    while (count > 0 && (is_whole == nullptr || !is_whole(answer))) {
        count = recv(descriptor, chunk.data(), chunk.size(), 0);
        answer += count < 0 ? std::string("(") + strerror(errno) + ")"
                            : std::string(chunk.data(), static_cast<std::size_t>(count));
    }
    close(descriptor);
    return answer;
}

std::string ask_daemon(const std::string &path, std::string_view request, bool drip) {
    const int descriptor = connect_socket(path);
    return send_bytes(descriptor, request, drip) ? read_all(descriptor) : "(not sent)";
}

http_reply ask_http(int port, const std::string &method_and_path, const std::string &headers,
                    const std::string &body) {
    std::string request = method_and_path + " HTTP/1.1\r\nConnection: close\r\n" + headers;
    if (headers.find("Host: ") == std::string::npos) {
        request += "Host: 127.0.0.1:" + std::to_string(port) + "\r\n";
    }
    request += "Content-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body;
    const int descriptor = connect_port(port);
    // Who refuses a request may not read all of it: what then counts is the answer.
    send_bytes(descriptor, request);
    const std::string answer = read_all(descriptor, is_whole_http_answer);
    const std::size_t end = answer.find("\r\n\r\n");
    if (!answer.starts_with("HTTP/1.") || end == std::string::npos) {
        return {};
    }
    return {std::stoi(answer.substr(answer.find(' '))), answer.substr(0, end + 2),
            answer.substr(end + 4)};
}

std::string children(const std::string &list) {
    std::string text;
    for (const std::string &entry : protocol::entries_of(list)) {
        const std::size_t equals = entry.find('=');
        text += entry.empty() ? "" : element(entry.substr(0, equals), entry.substr(equals + 1));
    }
    return text;
}

std::string wrap_request(const std::string &content) {
    return DECLARATION + "\n" + encoded_envelope(content);
}

std::string wrap_response(const std::string &operation, const std::string &children) {
    return DECLARATION + encoded_envelope(response_element(operation, children));
}

std::string wrap_fault(const std::string &code, const std::string &text) {
    return DECLARATION + envelope(fault_element("SOAP-ENV:" + code, text));
}

std::string read_file(const std::string &path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

void write_file(const std::string &path, const std::string &text) {
    std::ofstream(path, std::ios::binary) << text;
}

} // namespace harness
