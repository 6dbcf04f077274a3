// HTTP parsing and answering are httplib's, but accepting and closing connections is the
// server's, as for every other daemon. Hence one short-lived httplib server object per request,
// used for its routes alone: it never listens.
#include "http_front.h"

#include "envelope.h"
#include "home.h"
#include "operations.h"
#include "page.h"
#include "text.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <httplib.h>

namespace {

constexpr const char *ANSWER_TYPE = "text/xml; charset=utf-8";
constexpr const char *ACTION = "\"urn:xmethods-lumows\"";

/// What a web service reads of a request's head.
constexpr std::array PASSED_HEADERS{"Content-Type", "SOAPAction", "User-Agent", "Authorization",
                                    "Cookie"};

/// Opens httplib's step for one request to the outside.
class RequestEngine : public httplib::Server {
  public:
    using httplib::Server::process_request;
};

/// Reads from the connection and holds the answer back in a buffer.
class HeldStream : public httplib::Stream {
  public:
    explicit HeldStream(Connection &source) : connection(source) {}

    bool is_readable() const override {
        return true;
    }

    bool is_writable() const override {
        return true;
    }

    ssize_t read(char *target, size_t size) override {
        // A client that waits for "100 Continue" must get it before it sends the rest.
        if (at == connection.received.size() && !held.empty()) {
            send_all(connection, held);
            held.clear();
        }
        if (at == connection.received.size()) {
            last_arrival = receive_some(connection);
            if (last_arrival != Arrival::data) {
                return last_arrival == Arrival::end ? 0 : -1;
            }
        }
        const size_t count = std::min(size, connection.received.size() - at);
        std::memcpy(target, connection.received.data() + at, count);
        at += count;
        return static_cast<ssize_t>(count);
    }

    ssize_t write(const char *source, size_t size) override {
        held.append(source, size);
        return static_cast<ssize_t>(size);
    }

    void get_remote_ip_and_port(std::string &address, int &port) const override {
        address = "127.0.0.1";
        port = 0;
    }

    void get_local_ip_and_port(std::string &address, int &port) const override {
        address = "127.0.0.1";
        port = 0;
    }

    socket_t socket() const override {
        return connection.descriptor;
    }

    Connection &connection;
    std::string held;
    std::size_t at = 0;
    Arrival last_arrival = Arrival::data;
};

/// What is wrong with the HTTP headers of a call; empty when nothing is.
std::string complain_about_headers(const httplib::Request &request) {
    std::string type = request.get_header_value("Content-Type");
    type.erase(std::remove(type.begin(), type.end(), ' '), type.end());
    if (!equal_ignoring_case(type, "text/xml;charset=utf-8")) {
        return "Content-Type is not text/xml; charset=utf-8";
    }
    if (request.get_header_value("SOAPAction") != ACTION) {
        return std::string("SOAPAction is not ") + ACTION;
    }
    return "";
}

std::string describe_call(const ServiceCall &call) {
    std::string text(call.operation->name);
    for (std::size_t i = 0; i < call.values.size(); ++i) {
        text += i == 0 ? " " : "|";
        text += call.values[i] ? show_value(*call.values[i]) : "(absent)";
    }
    return text;
}

void answer_fault(const Fault &fault, Exchange &exchange, httplib::Response &response) {
    exchange.outcome = "fault " + fault.code + " (" + show_value(fault.text) + ")";
    response.status = 500;
    response.set_content(write_fault(fault), ANSWER_TYPE);
}

void answer_call(const Conversation &conversation, const ServiceCall &call, Exchange &exchange,
                 httplib::Response &response) {
    ResponseFields fields;
    const int error = run_operation(conversation.home, call, fields);
    const std::string status =
        format_status(conversation.daemon, choose_status(conversation, error));
    fields["result"] = fields["results"] = status;
    fields["result-len"] = std::to_string(status.size());
    exchange.request = describe_call(call);
    exchange.outcome = status;
    const std::string remark = call.complaint.empty() ? fields[REMARK] : call.complaint;
    if (!remark.empty()) {
        exchange.outcome += " (" + show_value(remark) + ")";
    }
    response.set_content(write_response(*call.operation, fields), ANSWER_TYPE);
}

void answer_post(const Conversation &conversation, const httplib::Request &request,
                 Exchange &exchange, httplib::Response &response) {
    const std::string complaint = complain_about_headers(request);
    if (!complaint.empty()) {
        answer_fault({"Client", complaint}, exchange, response);
        return;
    }
    const auto read = read_envelope(request.body);
    if (const auto *fault = std::get_if<Fault>(&read)) {
        answer_fault(*fault, exchange, response);
        return;
    }
    answer_call(conversation, std::get<ServiceCall>(read), exchange, response);
}

/// Lets only those in who name this machine: a page from elsewhere whose name was made to lead
/// here must not read the home.
bool admit_watcher(const Home &home, const httplib::Request &request, httplib::Response &response) {
    const std::string host = "http://" + request.get_header_value("Host");
    const std::string port = home.origin.substr(home.origin.rfind(':'));
    const bool admitted = host == home.origin || host == "http://localhost" + port;
    response.status = admitted ? 200 : 403;
    return admitted;
}

/// The ways of those who watch. The answer to /events is only the sign to start streaming.
void add_page_routes(RequestEngine &engine, const Home &home, Exchange &exchange) {
    engine.Get(PAGE_PATH, [&](const httplib::Request &request, httplib::Response &response) {
        if (admit_watcher(home, request, response)) {
            exchange.audience = Audience::page;
            response.set_header("Content-Security-Policy", PAGE_POLICY);
            response.set_content(page_text().data(), page_text().size(),
                                 "text/html; charset=utf-8");
        }
    });
    engine.Get(EVENTS_PATH, [&](const httplib::Request &request, httplib::Response &response) {
        if (admit_watcher(home, request, response)) {
            exchange.audience = Audience::events;
        }
    });
}

/// The number in the status line of an answer, for requests that reached no route.
std::string http_status(std::string_view answer) {
    return "HTTP " + std::string(answer.substr(std::min<std::size_t>(answer.size(), 9), 3));
}

} // namespace

Exchange exchange_http(Conversation &conversation) {
    Exchange exchange;
    HeldStream stream(conversation.connection);
    RequestEngine engine;
    engine.set_payload_max_length(HTTP_BODY_LIMIT);
    engine.Post(SERVICE_PATH, [&](const httplib::Request &request, httplib::Response &response) {
        answer_post(conversation, request, exchange, response);
    });
    engine.Get("/configuration", [&](const httplib::Request &, httplib::Response &response) {
        const std::scoped_lock held(conversation.home.lock);
        response.set_content(conversation.home.configuration, "text/plain; charset=utf-8");
    });
    add_page_routes(engine, conversation.home, exchange);
    engine.set_logger([&](const httplib::Request &request, const httplib::Response &) {
        exchange.web = {request.method, request.path, {}, request.body};
        for (const char *name : PASSED_HEADERS) {
            if (request.has_header(name)) {
                exchange.web.headers.emplace_back(name, request.get_header_value(name));
            }
        }
    });
    bool closed = false;
    std::string request_line;
    engine.process_request(stream, true, closed, [&](httplib::Request &request) {
        request_line = request.method + " " + show_value(request.path);
    });
    if (conversation.connection.received.empty() || stream.last_arrival == Arrival::stopped) {
        return {"", describe_arrival(stream.last_arrival), ""};
    }
    if (exchange.request.empty()) {
        exchange.request = request_line.empty() ? "unreadable request" : request_line;
    }
    if (exchange.outcome.empty()) {
        exchange.outcome = http_status(stream.held);
        if (stream.last_arrival != Arrival::data) {
            exchange.outcome += std::string(" (") + describe_arrival(stream.last_arrival) + ")";
        }
    }
    exchange.answer = std::move(stream.held);
    return exchange;
}
