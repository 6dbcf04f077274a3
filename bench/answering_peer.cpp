// A gateway, FSMCore and a web service that answer every request with success, at the least cost:
// what is measured is the client. One thread, no memory of requests, no checks.
//
// usage: answering_peer DIRECTORY
// Listens on gateway.socket and fsmcore.socket in DIRECTORY and on a TCP port of the kernel's
// choice, then prints the port on a line of its own. The path of a web-service url is the size in
// bytes that the answer's body is to have. Ends with its standard input.

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <netinet/in.h>
#include <poll.h>
#include <span>
#include <string>
#include <string_view>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>
#include <vector>

namespace {

struct connection;

/// One of the three that are asked.
struct service {
    bool (*is_complete)(std::string_view request);
    void (*answer)(connection *asking);
    int listener;
};

/// A request that comes in, then its answer that goes out: some text, a filling, an end.
struct connection {
    int descriptor;
    const service *asked;
    std::string received;
    std::string unsent;
    std::size_t sent = 0; ///< of `unsent`
    std::size_t filling = 0;
    std::string_view end;
    bool is_answered = false;
};

[[noreturn]] void fail(const char *what) {
    fprintf(stderr, "answering_peer: %s: %s\n", what, strerror(errno));
    exit(EXIT_FAILURE);
}

// ---------------------------------------------------------------------------------------------
// The daemons

bool is_daemon_request_complete(std::string_view request) {
    return request.ends_with("\n\n");
}

void answer_as_gateway(connection *asking) {
    asking->unsent = "Response Status: BENG-0000\n";
}

void answer_as_fsmcore(connection *asking) {
    asking->unsent = "Response Status: FSMC-000\nParameter Count: 0\n";
}

// ---------------------------------------------------------------------------------------------
// The web service

constexpr std::string_view BODY_BEGINS =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<SOAP-ENV:Envelope xmlns:SOAP-ENV=\"http://schemas.xmlsoap.org/soap/envelope/\""
    " xmlns:ns=\"urn:xmethods-lumows\"><SOAP-ENV:Body"
    " SOAP-ENV:encodingStyle=\"http://schemas.xmlsoap.org/soap/encoding/\">"
    "<ns:service-getelementstatusResponse><result>LMWS-000</result><status>OFF</status>"
    "<currentvalue>";
constexpr std::string_view BODY_ENDS = "</currentvalue></ns:service-getelementstatusResponse>"
                                       "</SOAP-ENV:Body></SOAP-ENV:Envelope>\r\n";

/// The number behind the first `mark` in `text`; 0 without one.
std::size_t number_behind(std::string_view text, std::string_view mark) {
    const std::size_t at = text.find(mark);
    return at == text.npos ? 0 : strtoul(text.data() + at + mark.size(), nullptr, 10);
}

bool is_call_complete(std::string_view request) {
    constexpr std::string_view blank_line = "\r\n\r\n";
    const std::size_t headers_end = request.find(blank_line);
    return headers_end != request.npos && request.size() - headers_end - blank_line.size() >=
                                              number_behind(request, "\r\nContent-Length: ");
}

void answer_as_service(connection *asking) {
    const std::size_t size = number_behind(asking->received, "POST /");
    const std::size_t least = BODY_BEGINS.size() + BODY_ENDS.size();
    asking->filling = size > least ? size - least : 0;
    asking->unsent =
        "HTTP/1.1 200 OK\r\nContent-Type: text/xml; charset=utf-8\r\nContent-Length: " +
        std::to_string(least + asking->filling) + "\r\nConnection: close\r\n\r\n";
    asking->unsent += BODY_BEGINS;
    asking->end = BODY_ENDS;
}

// ---------------------------------------------------------------------------------------------
// The exchange

int listen_at(const sockaddr *address, socklen_t size) {
    const int listener = socket(address->sa_family, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    if (listener < 0 || bind(listener, address, size) < 0 || listen(listener, SOMAXCONN) < 0) {
        fail("cannot listen");
    }
    return listener;
}

int listen_at_path(const std::string &path) {
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof address.sun_path) {
        errno = ENAMETOOLONG;
        fail(path.c_str());
    }
    memcpy(address.sun_path, path.c_str(), path.size());
    return listen_at(reinterpret_cast<const sockaddr *>(&address), sizeof address);
}

int listen_at_loopback() {
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return listen_at(reinterpret_cast<const sockaddr *>(&address), sizeof address);
}

unsigned port_of(int listener) {
    sockaddr_in address = {};
    socklen_t size = sizeof address;
    if (getsockname(listener, reinterpret_cast<sockaddr *>(&address), &size) < 0) {
        fail("no port");
    }
    return ntohs(address.sin_port);
}

/// Puts more of the filling behind the text, and the end behind the last of it.
void continue_answer(connection *to) {
    constexpr std::size_t most = 256UL * 1024;
    const std::size_t more = std::min(to->filling, most);
    to->unsent.append(more, 'x');
    to->filling -= more;
    if (to->filling == 0) {
        to->unsent += to->end;
        to->end = {};
    }
}

/// Reads what has come. False when the client is gone.
bool receive(connection *from) {
    char piece[16 * 1024];
    const ssize_t size = recv(from->descriptor, piece, sizeof piece, 0);
    if (size <= 0) {
        return size < 0 && errno == EAGAIN;
    }
    from->received.append(piece, static_cast<std::size_t>(size));
    if (from->asked->is_complete(from->received)) {
        from->is_answered = true;
        from->asked->answer(from);
        continue_answer(from); // a small answer leaves in one write
    }
    return true;
}

/// Sends until the client takes no more. False when it has all or is gone.
bool send_answer(connection *to) {
    for (;;) {
        const ssize_t size = send(to->descriptor, to->unsent.data() + to->sent,
                                  to->unsent.size() - to->sent, MSG_NOSIGNAL);
        if (size < 0) {
            return errno == EAGAIN;
        }
        to->sent += static_cast<std::size_t>(size);
        if (to->sent < to->unsent.size()) {
            continue;
        }
        if (to->filling == 0) {
            return false;
        }
        to->unsent.clear();
        to->sent = 0;
        continue_answer(to);
    }
}

/// Goes on with a connection for which something has happened. False when it is over.
bool go_on(connection *with) {
    if (!with->is_answered && !receive(with)) {
        return false;
    }
    return !with->is_answered || send_answer(with);
}

void accept_all(const service &asked, std::vector<connection> *connections) {
    for (;;) {
        const int descriptor =
            accept4(asked.listener, nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC);
        if (descriptor < 0) {
            return;
        }
        connections->push_back(
            {.descriptor = descriptor, .asked = &asked, .received = {}, .unsent = {}, .end = {}});
    }
}

/// What to wait for: the end of standard input, new connections, then the connections in their
/// order.
std::vector<pollfd> awaited(std::span<const service> services,
                            const std::vector<connection> &connections) {
    std::vector<pollfd> all = {{STDIN_FILENO, POLLIN, 0}};
    for (const service &one : services) {
        all.push_back({one.listener, POLLIN, 0});
    }
    for (const connection &one : connections) {
        const short awaited_event = one.is_answered ? POLLOUT : POLLIN;
        all.push_back({one.descriptor, awaited_event, 0});
    }
    return all;
}

void serve(std::span<const service> services) {
    std::vector<connection> connections;
    for (;;) {
        std::vector<pollfd> events = awaited(services, connections);
        if (poll(events.data(), events.size(), -1) < 0) {
            fail("poll");
        }
        if (events[0].revents != 0) {
            return;
        }
        const std::size_t first = 1 + services.size();
        for (std::size_t i = connections.size(); i-- != 0;) {
            if (events[first + i].revents != 0 && !go_on(&connections[i])) {
                close(connections[i].descriptor);
                connections.erase(connections.begin() + static_cast<std::ptrdiff_t>(i));
            }
        }
        for (std::size_t i = 0; i < services.size(); i++) {
            if (events[1 + i].revents != 0) {
                accept_all(services[i], &connections);
            }
        }
    }
}

} // namespace

int main(int argument_count, char **arguments) {
    if (argument_count != 2) {
        fputs("usage: answering_peer DIRECTORY\n", stderr);
        return EXIT_FAILURE;
    }
    const std::string directory = arguments[1];
    const service services[] = {
        {is_daemon_request_complete, answer_as_gateway,
         listen_at_path(directory + "/gateway.socket")},
        {is_daemon_request_complete, answer_as_fsmcore,
         listen_at_path(directory + "/fsmcore.socket")},
        {is_call_complete, answer_as_service, listen_at_loopback()},
    };
    printf("%u\n", port_of(services[2].listener));
    fflush(stdout);
    serve(services);
    return EXIT_SUCCESS;
}
