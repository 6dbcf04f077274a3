// Forwarding. The bytes of a socket daemon's request go out unchanged. A web request gets a new
// head, since its own names this machine; HTTP/1.0 makes the server close after its answer.
#include "simulator/forward.h"

#include "simulator/connection.h"
#include "simulator/journal.h"
#include "simulator/operations.h"
#include "simulator/text.h"

#include <algorithm>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/local/stream_protocol.hpp>
#include <netdb.h>
#include <pugixml.hpp>
#include <regex>
#include <sys/un.h>

namespace {

/// An answer is complete when a daemon that keeps the connection open sends nothing for this long.
constexpr std::chrono::milliseconds QUIET_TIME{500};
constexpr std::size_t LONGEST_ADDRESS = 2000;

/// One request on its way: what, to whom, and for which client.
struct forwarded_question {
    connection_ptr real;
    std::string place;
    std::string request;
    daemon_conversation &conversation;
    std::function<void()> then;
    std::vector<any_protocol::endpoint> endpoints = {}; ///< of the place, tried in turn
    std::size_t tried = 0;
};

using tcp_resolver = asio::ip::basic_resolver<asio::ip::tcp, loop_executor>;
using question_ptr = std::shared_ptr<forwarded_question>;

bool is_on_socket(const daemon_row &daemon) {
    return !daemon.socket_file.empty();
}

/// What an envelope says; empty when it is none.
std::string envelope_words(std::string_view body) {
    pugi::xml_document document;
    if (!document.load_buffer(body.data(), body.size(), pugi::parse_default, pugi::encoding_utf8)) {
        return "";
    }
    if (const pugi::xml_node fault = document.select_node("//*[local-name()='Fault']").node()) {
        return "fault " + std::string(local_name(fault.child_value("faultcode"))) + " (" +
               show_value(fault.child_value("faultstring")) + ")";
    }
    const char *result = "//*[local-name()='result' or local-name()='results']";
    return show_value(document.select_node(result).node().child_value());
}

/// The outcome that the log prints for an answer. Whatever is not understood is told by its size.
std::string answer_words(const daemon_row &daemon, std::string_view answer) {
    constexpr std::string_view status_tag = "Response Status: ";
    if (is_on_socket(daemon) && answer.starts_with(status_tag)) {
        const std::string_view rest = answer.substr(status_tag.size());
        return show_value(rest.substr(0, rest.find('\n')));
    }
    const std::size_t head = answer.find("\r\n\r\n");
    if (is_on_socket(daemon) || head == std::string_view::npos) {
        return std::to_string(answer.size()) + " raw bytes";
    }
    const std::string words = envelope_words(answer.substr(head + 4));
    const std::size_t code = std::min(answer.find(' ') + 1, head);
    return words.empty() ? "HTTP " + show_value(answer.substr(code, 3)) : words;
}

void conclude(const forwarded_question &question, const std::string &complaint) {
    exchange_result &exchange = question.conversation.exchange;
    if (complaint.empty()) {
        exchange.answer = question.real->received;
        exchange.outcome = answer_words(question.conversation.daemon, *exchange.answer);
    } else {
        exchange.answer.reset();
        exchange.outcome = std::string(CLOSED) + " (" + question.place + ": " + complaint + ")";
    }
    question.then();
}

void read_answer(const question_ptr &question) {
    receive_some(question->real, [question](arrival_kind arrival) {
        stream_connection &real = *question->real;
        const bool until_closed = !is_on_socket(question->conversation.daemon);
        if (arrival == arrival_kind::DATA) {
            if (!until_closed) {
                real.deadline = std::min(real.deadline, loop_clock::now() + QUIET_TIME);
            }
            read_answer(question);
        } else if (arrival == arrival_kind::FULL) {
            conclude(*question, "the answer is too long");
        } else if (real.received.empty() || arrival == arrival_kind::FAILED ||
                   (until_closed && arrival != arrival_kind::END)) {
            conclude(*question, "the answer did not come to its end");
        } else {
            conclude(*question, "");
        }
    });
}

void connect_next(const question_ptr &question);

void go_on_connected(const question_ptr &question, const error_code &error) {
    question->real->timer.cancel();
    if (!error) {
        send_all(question->real, question->request, [question](bool sent) {
            if (sent) {
                read_answer(question);
            } else {
                conclude(*question, "the request could not be sent");
            }
        });
    } else if (++question->tried < question->endpoints.size()) {
        connect_next(question);
    } else {
        conclude(*question, error == asio::error::operation_aborted ? "no connection in time"
                                                                    : error.message());
    }
}

void connect_next(const question_ptr &question) {
    error_code ignored;
    question->real->socket.close(ignored);
    limit_time(question->real, question->real->deadline);
    question->real->socket.async_connect(
        question->endpoints[question->tried],
        [question](const error_code &error) { go_on_connected(question, error); });
}

/// The resolver's errors in the system's words.
std::string resolver_words(const error_code &error) {
    if (error == asio::error::host_not_found) {
        return gai_strerror(EAI_NONAME);
    }
    if (error == asio::error::host_not_found_try_again) {
        return gai_strerror(EAI_AGAIN);
    }
    return error.message();
}

/// The request rebuilt: its method, the headers that a web service reads, and its body.
std::string web_request(const web_address &address, const passed_request &request) {
    const std::string path =
        request.path == SERVICE_PATH && !address.path.empty() ? address.path : request.path;
    std::string text = request.method + " " + path + " HTTP/1.0\r\nHost: " + address.host + ":" +
                       address.port + "\r\n" + request.headers;
    return text + "Content-Length: " + std::to_string(request.body.size()) + "\r\n\r\n" +
           request.body;
}

} // namespace

std::optional<web_address> read_web_address(const std::string &text) {
    // The port is needed where the host holds colons, and is what follows the last one.
    const std::regex form("http://(?:([^/:]+)|([^/]+):([0-9]+))(/.*)?");
    std::smatch parts;
    // Matching takes stack for each character.
    if (text.size() > LONGEST_ADDRESS || !std::regex_match(text, parts, form)) {
        return std::nullopt;
    }
    return web_address{parts[1].str() + parts[2].str(), parts[3].matched ? parts[3].str() : "80",
                       parts[4]};
}

bool is_forwarded(const simulator_settings &settings, const daemon_row &daemon) {
    return !(is_on_socket(daemon) ? settings.forward_directory : settings.forward_url).empty();
}

void forward_request(event_loop &loop, const simulator_settings &settings,
                     daemon_conversation &conversation, std::function<void()> then) {
    const daemon_row &daemon = conversation.daemon;
    const auto real =
        std::make_shared<stream_connection>(loop, stream_socket(loop.context), daemon.limit,
                                            std::chrono::milliseconds(settings.patience));
    const auto question = std::make_shared<forwarded_question>(
        forwarded_question{real, settings.forward_url, std::string(conversation.received),
                           conversation, std::move(then)});
    if (is_on_socket(daemon)) {
        question->place = settings.forward_directory + "/" + std::string(daemon.socket_file);
        if (question->place.size() >= sizeof(sockaddr_un::sun_path)) {
            conclude(*question, "the name is too long for a socket");
            return;
        }
        question->endpoints.emplace_back(asio::local::stream_protocol::endpoint(question->place));
        connect_next(question);
        return;
    }
    const web_address address = *read_web_address(settings.forward_url);
    question->request = web_request(address, conversation.exchange.web);
    const auto resolver = std::make_shared<tcp_resolver>(loop.context);
    resolver->async_resolve(
        address.host, address.port,
        [question, resolver](const error_code &error, const tcp_resolver::results_type &found) {
            for (const auto &row : found) {
                question->endpoints.emplace_back(row.endpoint());
            }
            if (error) {
                conclude(*question, resolver_words(error));
            } else {
                connect_next(question);
            }
        });
}
