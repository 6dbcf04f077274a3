// The web service's HTTP side: requests are Boost.Beast's to read, whatever is done with their
// bytes and the answer's is the server's, so that the trace is exact and answers can be withheld.
#include "page_text.h"
#include "simulator/operations.h"
#include "simulator/page.h"
#include "simulator/text.h"

#include <algorithm>
#include <boost/algorithm/string/predicate.hpp>
#include <boost/asio/buffer.hpp>
#include <boost/asio/ip/address.hpp>
#include <boost/beast/http/parser.hpp>
#include <boost/beast/http/status.hpp>
#include <boost/beast/http/string_body.hpp>

namespace {

namespace http = boost::beast::http;

constexpr std::uint32_t HEAD_LIMIT = 64 * 1024;
constexpr const char *ANSWER_TYPE = "Content-Type: text/xml; charset=utf-8\r\n";
constexpr const char *ACTION = "\"urn:xmethods-lumows\"";

/// The request headers that a web service reads.
constexpr std::array PASSED_HEADERS{"Content-Type", "SOAPAction", "User-Agent", "Authorization",
                                    "Cookie"};

/// The answer before it is written as bytes.
struct http_answer {
    unsigned status;
    std::string body = {};
    const char *headers = "";
};

/// Parses the bytes so far, each time from their start, so that no state is kept in between.
struct http_reading {
    explicit http_reading(std::string_view received) {
        parser.eager(true);
        parser.header_limit(HEAD_LIMIT);
        parser.body_limit(HTTP_BODY_LIMIT);
        parser.put(boost::asio::buffer(received.data(), received.size()), error);
    }

    http::request_parser<http::string_body> parser;
    boost::system::error_code error;
};

std::string header_value(const http::fields &fields, const char *name) {
    const auto value = fields[name];
    return {value.data(), value.size()};
}

/// What is wrong with the HTTP headers of a call; empty when nothing is.
std::string complain_about_headers(const http::fields &fields) {
    std::string type = header_value(fields, "Content-Type");
    std::erase(type, ' ');
    if (!boost::iequals(type, "text/xml;charset=utf-8")) {
        return "Content-Type is not text/xml; charset=utf-8";
    }
    if (header_value(fields, "SOAPAction") != ACTION) {
        return std::string("SOAPAction is not ") + ACTION;
    }
    return "";
}

std::string describe_call(const service_call &call) {
    std::string text(call.operation->name);
    for (std::size_t i = 0; i < call.values.size(); ++i) {
        text += i == 0 ? " " : "|";
        text += call.values[i] ? show_value(*call.values[i]) : "(absent)";
    }
    return text;
}

http_answer answer_fault(const soap_fault &fault, exchange_result &exchange) {
    exchange.outcome = "fault " + fault.code + " (" + show_value(fault.text) + ")";
    return {500, write_fault(fault), ANSWER_TYPE};
}

http_answer answer_call(daemon_conversation &conversation, const http::fields &fields,
                        const std::string &body) {
    exchange_result &exchange = conversation.exchange;
    const std::string complaint = complain_about_headers(fields);
    if (!complaint.empty()) {
        return answer_fault({"Client", complaint}, exchange);
    }
    const auto read = read_envelope(body);
    if (const auto *fault = std::get_if<soap_fault>(&read)) {
        return answer_fault(*fault, exchange);
    }
    const auto &call = std::get<service_call>(read);
    response_fields response;
    const int error = run_operation(conversation.home, call, response);
    const std::string status =
        format_status(conversation.daemon, choose_status(conversation, error));
    response["result"] = response["results"] = status;
    response["result-len"] = std::to_string(status.size());
    exchange.request = describe_call(call);
    exchange.outcome = status;
    const std::string remark = call.complaint.empty() ? response[REMARK] : call.complaint;
    if (!remark.empty()) {
        exchange.outcome += " (" + show_value(remark) + ")";
    }
    return {200, write_response(*call.operation, response), ANSWER_TYPE};
}

/// A name that a browser looks up may be made to lead here by whoever owns it; localhost and an
/// address in digits may not.
bool is_own_host(const std::string &host) {
    std::string name = host.substr(0, host.find_last_not_of("0123456789") + 1);
    if (name.ends_with(':')) {
        name.pop_back();
    } else {
        name = host;
    }
    if (name.starts_with('[') && name.ends_with(']')) {
        name = name.substr(1, name.size() - 2);
    }
    boost::system::error_code error;
    boost::asio::ip::make_address(name, error);
    return !error || boost::iequals(name, "localhost");
}

/// Why a request may be one that a browser sends for a page from elsewhere; empty when it is not.
/// Other clients need not say where they are going, and never say where they come from. An image
/// has no Origin: there the browser's Sec-Fetch-Site tells.
std::string complain_about_sender(const http::fields &fields) {
    const std::string host = header_value(fields, "Host");
    const std::string origin = header_value(fields, "Origin");
    const std::string site = header_value(fields, "Sec-Fetch-Site");
    if (fields.count("Host") > 1 || (!host.empty() && !is_own_host(host))) {
        return "foreign Host";
    }
    if (fields.count("Origin") > 1 || (!origin.empty() && origin != "http://" + host)) {
        return "foreign Origin";
    }
    const bool own_site =
        fields.count("Sec-Fetch-Site") == 0 ||
        (fields.count("Sec-Fetch-Site") == 1 && (site == "same-origin" || site == "none"));
    return own_site ? "" : "foreign Sec-Fetch-Site";
}

http_answer refuse_stranger(exchange_result &exchange, const std::string &complaint) {
    exchange.audience = audience_kind::STRANGER;
    exchange.outcome = "HTTP 403 (" + complaint + ")";
    return {403};
}

/// What the page asks for; all but itself is the server's to answer.
http_answer answer_page(daemon_conversation &conversation, const http::fields &fields,
                        bool changes) {
    exchange_result &exchange = conversation.exchange;
    if (exchange.web.path == PAGE_PATH) {
        exchange.audience = audience_kind::PAGE;
        return {200, std::string(PAGE_TEXT), PAGE_HEADERS};
    }
    if (changes && header_value(fields, TOKEN_HEADER) != conversation.home.token) {
        return refuse_stranger(exchange, "not from this page");
    }
    exchange.audience =
        exchange.web.path == EVENTS_PATH ? audience_kind::EVENTS : audience_kind::BENCH;
    return {200};
}

http_answer route(daemon_conversation &conversation,
                  const http::request<http::string_body> &request) {
    const std::string &path = conversation.exchange.web.path;
    const std::string complaint = complain_about_sender(request);
    if (!complaint.empty()) {
        return refuse_stranger(conversation.exchange, complaint);
    }
    const bool fetches =
        request.method() == http::verb::get || request.method() == http::verb::head;
    if (request.method() == http::verb::post && path == SERVICE_PATH) {
        return answer_call(conversation, request, request.body());
    }
    if (fetches && path == "/configuration") {
        return {200, conversation.home.configuration,
                "Content-Type: text/plain; charset=utf-8\r\n"};
    }
    const bool changes = request.method() == http::verb::post && path == CONTROL_PATH;
    if (changes ||
        (fetches && (path == PAGE_PATH || path == EVENTS_PATH || path.starts_with(DETAILS_PATH)))) {
        return answer_page(conversation, request, changes);
    }
    return {404};
}

passed_request web_request(const http::request<http::string_body> &request) {
    const auto method = request.method_string();
    const std::string target(request.target().data(), request.target().size());
    passed_request web{{method.data(), method.size()}, target.substr(0, target.find('?')), {}, {}};
    web.body = request.body();
    for (const char *name : PASSED_HEADERS) {
        if (request.find(name) != request.end()) {
            web.headers.append(name).append(": ").append(header_value(request, name)) += "\r\n";
        }
    }
    return web;
}

std::string write_answer(const http_answer &answer, bool with_body) {
    const auto reason = http::obsolete_reason(http::int_to_status(answer.status));
    std::string text = "HTTP/1.1 " + std::to_string(answer.status) + " ";
    text.append(reason.data(), reason.size()).append("\r\nConnection: close\r\nContent-Length: ");
    text.append(std::to_string(answer.body.size())).append("\r\n").append(answer.headers);
    return text.append("\r\n").append(with_body ? answer.body : "");
}

} // namespace

request_progress http_progress(std::string_view received) {
    const http_reading reading(received);
    const bool unfinished = !reading.error && !reading.parser.is_done();
    // What is too long is read on, up to the limit: a client that still sends sees no answer.
    if (reading.error != http::error::need_more && reading.error != http::error::body_limit &&
        !unfinished) {
        return request_progress::WHOLE;
    }
    const bool asks_first =
        unfinished && header_value(reading.parser.get(), "Expect") == "100-continue";
    return asks_first ? request_progress::AWAITS_CONTINUE : request_progress::INCOMPLETE;
}

std::string write_http(unsigned status, const std::string &body, bool with_body) {
    return write_answer(
        {status, body,
         "Content-Type: text/plain; charset=utf-8\r\nX-Content-Type-Options: nosniff\r\n"},
        with_body);
}

void answer_http(daemon_conversation &conversation) {
    exchange_result &exchange = conversation.exchange;
    const http_reading reading(conversation.received);
    const auto &request = reading.parser.get();
    const bool too_long = reading.error == http::error::body_limit;
    http_answer answer{too_long ? 413U : 400U};
    if ((reading.parser.is_header_done() || too_long) && request.method() != http::verb::unknown) {
        exchange.web = web_request(request);
        exchange.request = exchange.web.method + " " + show_value(exchange.web.path);
        if (reading.parser.is_done() && !too_long) {
            answer = route(conversation, request);
        }
    } else {
        exchange.request = "unreadable request";
    }
    if (exchange.outcome.empty()) {
        exchange.outcome = "HTTP " + std::to_string(answer.status);
        if (conversation.arrival != arrival_kind::DATA) {
            exchange.outcome += std::string(" (") + describe_arrival(conversation.arrival) + ")";
        }
    }
    exchange.answer = write_answer(answer, request.method() != http::verb::head);
}
