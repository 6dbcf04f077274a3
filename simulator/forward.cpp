// Forwarding. The bytes of a socket daemon's request go out as they came; a web request gets a
// new head, since its own names this machine. HTTP/1.0 makes the server close after its answer.
#include "forward.h"

#include "answer_words.h"
#include "http_front.h"
#include "journal.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <netdb.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace {

using Clock = std::chrono::steady_clock;

/// A daemon that answers without closing has ended its answer when it says no more for so long.
constexpr std::chrono::milliseconds QUIET_TIME{500};

/// What the real side came to: its answer, or why there is none.
struct RealAnswer {
    std::string bytes;
    std::string complaint;
};

std::string error_words(int error) {
    return std::generic_category().message(error);
}

/// Connects within the connection's time; returns what went wrong.
std::string connect_within_time(const Connection &real, const sockaddr *address, socklen_t size) {
    if (real.descriptor < 0) {
        return error_words(errno);
    }
    if (connect(real.descriptor, address, size) == 0) {
        return "";
    }
    if (errno != EINPROGRESS) {
        return error_words(errno);
    }
    if (!wait_until_writable(real)) {
        return "no connection in time";
    }
    int error = 0;
    socklen_t length = sizeof error;
    getsockopt(real.descriptor, SOL_SOCKET, SO_ERROR, &error, &length);
    return error == 0 ? "" : error_words(error);
}

/// Sends the request and reads the answer to its end.
RealAnswer ask(Connection &real, std::string_view request, bool until_closed) {
    if (!send_all(real, request)) {
        return {"", "the request could not be sent"};
    }
    Arrival arrival = Arrival::data;
    while (arrival == Arrival::data) {
        arrival = receive_some(real);
        if (!until_closed && arrival == Arrival::data) {
            real.deadline = std::min(real.deadline, Clock::now() + QUIET_TIME);
        }
    }
    if (arrival == Arrival::full) {
        return {"", "the answer is too long"};
    }
    if (real.received.empty() || arrival == Arrival::failed ||
        (until_closed && arrival != Arrival::end)) {
        return {"", "the answer did not come to its end"};
    }
    return {real.received, ""};
}

RealAnswer ask_socket(const std::string &path, Connection &real, std::string_view request) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof address.sun_path) {
        return {"", "the name is too long for a socket"};
    }
    std::memcpy(static_cast<char *>(address.sun_path), path.c_str(), path.size());
    real.descriptor = socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    const std::string complaint =
        connect_within_time(real, reinterpret_cast<const sockaddr *>(&address), sizeof address);
    return complaint.empty() ? ask(real, request, false) : RealAnswer{"", complaint};
}

/// The request anew: its method, the headers that a web service reads, and its body.
std::string web_request(const WebAddress &address, const WebRequest &request) {
    const std::string path =
        request.path == SERVICE_PATH && !address.path.empty() ? address.path : request.path;
    std::string text = request.method + " " + path + " HTTP/1.0\r\nHost: " + address.host + ":" +
                       address.port + "\r\n";
    for (const auto &[name, value] : request.headers) {
        text.append(name).append(": ").append(value).append("\r\n");
    }
    return text + "Content-Length: " + std::to_string(request.body.size()) + "\r\n\r\n" +
           request.body;
}

RealAnswer ask_service(const WebAddress &address, Connection &real, const WebRequest &request) {
    addrinfo wanted{};
    wanted.ai_socktype = SOCK_STREAM;
    addrinfo *found = nullptr;
    const int error = getaddrinfo(address.host.c_str(), address.port.c_str(), &wanted, &found);
    if (error != 0) {
        return {"", gai_strerror(error)};
    }
    std::string complaint;
    for (const addrinfo *row = found; row != nullptr; row = row->ai_next) {
        if (real.descriptor >= 0) {
            close(real.descriptor);
        }
        real.descriptor = socket(row->ai_family, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
        complaint = connect_within_time(real, row->ai_addr, row->ai_addrlen);
        if (complaint.empty()) {
            break;
        }
    }
    freeaddrinfo(found);
    return complaint.empty() ? ask(real, web_request(address, request), true)
                             : RealAnswer{"", complaint};
}

} // namespace

std::optional<WebAddress> read_web_address(const std::string &text) {
    constexpr std::string_view scheme = "http://";
    if (!text.starts_with(scheme)) {
        return std::nullopt;
    }
    const std::string rest = text.substr(scheme.size());
    const std::size_t slash = std::min(rest.find('/'), rest.size());
    const std::string place = rest.substr(0, slash);
    const std::size_t colon = std::min(place.rfind(':'), place.size());
    WebAddress address{place.substr(0, colon), "80", rest.substr(slash)};
    if (colon < place.size()) {
        address.port = place.substr(colon + 1);
    }
    const bool digits =
        !address.port.empty() && address.port.find_first_not_of("0123456789") == std::string::npos;
    return address.host.empty() || !digits ? std::nullopt : std::optional(address);
}

bool is_forwarded(const Settings &settings, const Daemon &daemon) {
    return !(daemon.socket_file.empty() ? settings.forward_url : settings.forward_directory)
                .empty();
}

void forward_request(const Settings &settings, const Conversation &conversation,
                     Exchange &exchange) {
    const Daemon &daemon = conversation.daemon;
    const auto deadline = Clock::now() + std::chrono::milliseconds(settings.patience);
    Connection real{-1, conversation.connection.stop_descriptor, deadline, daemon.limit, ""};
    const bool on_socket = !daemon.socket_file.empty();
    const std::string place =
        on_socket ? settings.forward_directory + "/" + std::string(daemon.socket_file)
                  : settings.forward_url;
    const RealAnswer answer =
        on_socket ? ask_socket(place, real, conversation.connection.received)
                  : ask_service(*read_web_address(settings.forward_url), real, exchange.web);
    if (real.descriptor >= 0) {
        close(real.descriptor);
    }
    if (answer.complaint.empty()) {
        exchange.answer = answer.bytes;
        exchange.outcome = answer_words(daemon, answer.bytes);
    } else {
        exchange.answer.reset();
        exchange.outcome = std::string(CLOSED) + " (" + place + ": " + answer.complaint + ")";
    }
}
