// The web service's whole answer, HTTP and XML, to each operation; and the request before it.

#include "fuzz/reference.h"
#include "fuzz/service.h"
#include "fuzz/target.h"
#include "webservice/soapcallsclientutil.h"

#include <cerrno>

/// The status text that the dispatcher took from the answer passes by here.
int read_result_text(const char *text) asm("__wrap__Z18extract_error_codePKc");
int really_read_result_text(const char *text) asm("__real__Z18extract_error_codePKc");

/// The runtime copies the identifier of an element that bears it twice onto itself, byte by byte.
extern "C" const char *__asan_default_suppressions() {
    return "interceptor_via_fun:soap_id_enter\n";
}

namespace {

/// What was passed by; no text inside is a null one.
struct result_text {
    int times;
    std::optional<std::string> text;
};
result_text passed;

} // namespace

int read_result_text(const char *text) {
    passed.times++;
    passed.text = text == nullptr ? std::nullopt : std::optional<std::string>(text);
    return really_read_result_text(text);
}

namespace {

using fuzz::input;
using fuzz::outcome;
using fuzz::peer_script;
using fuzz::require;
using fuzz::require_equal;
using protocol::line_group;
using protocol::service_row;

constexpr const char *LOCAL_URLS[] = {nullptr, "http://localhost/cgi-bin/lumows",
                                      "http://127.0.0.1/cgi-bin/lumows",
                                      "HTTP://LocalHost/cgi-bin/LUMOWS"};
constexpr const char *FAR_URL = "http://192.0.2.7:8080/cgi-bin/lumows";

/// A request as the command line gives it.
struct request {
    const service_row *called = nullptr;
    std::optional<std::string> url = {};
    bool is_local = false;
    bool any_url = false; ///< any bytes: may be one that cannot be used
    std::string function = {};
    std::string parameters = {};
    int waittime = 0;
    bool verbose = false;
    bool has_proper_count = false;
    bool is_sent = false; ///< when the url can be used
};

void take_url(input *in, request *wanted) {
    const std::size_t kind = in->below(std::size(LOCAL_URLS) + 4);
    wanted->is_local = kind < std::size(LOCAL_URLS);
    wanted->any_url = kind == std::size(LOCAL_URLS) + 1;
    if (wanted->any_url) {
        wanted->url = in->field();
    } else if (!wanted->is_local) {
        wanted->url = FAR_URL;
    } else if (LOCAL_URLS[kind] != nullptr) {
        wanted->url = LOCAL_URLS[kind];
    }
    for (const char *local : LOCAL_URLS) {
        wanted->is_local =
            wanted->is_local ||
            (local != nullptr && reference::equal_ignoring_case(*wanted->url, local));
    }
}

/// The one operation whose list may have several lengths.
bool is_run_on_element(const service_row &called) {
    return called.name == std::string("runonelement");
}

/// The list from the input, or a proper one when the input has none.
void take_parameters(input *in, request *wanted) {
    const service_row &called = *wanted->called;
    wanted->parameters = in->field();
    if (wanted->parameters.empty()) {
        wanted->parameters = protocol::list_of(protocol::entries_of(called).size());
    }
    const std::size_t count = reference::items_of(wanted->parameters).size();
    const bool is_free = is_run_on_element(called);
    wanted->has_proper_count =
        called.needed == nullptr || count == protocol::entries_of(called).size();
    wanted->is_sent = !is_free || !wanted->is_local || count == 5 || count == 6;
}

request take_request(input *in) {
    request wanted;
    wanted.called = &protocol::SERVICE_FUNCTIONS[in->below(std::size(protocol::SERVICE_FUNCTIONS))];
    wanted.verbose = in->below(2) == 1;
    wanted.function = protocol::function_name(*wanted.called);
    wanted.waittime = in->number();
    take_url(in, &wanted);
    take_parameters(in, &wanted);
    return wanted;
}

/// The children of the request, null values left out.
std::vector<std::pair<std::string, std::string>> children_of(const request &wanted) {
    const service_row &called = *wanted.called;
    std::vector<std::string> entries = reference::items_of(wanted.parameters);
    if (is_run_on_element(called) && wanted.is_local && entries.size() == 5) {
        entries.insert(entries.begin(), "NO-SESSIONID");
    }
    std::vector<std::pair<std::string, std::string>> children;
    std::size_t taken = 0;
    for (const std::string &name : called.request) {
        if (name == "waittime") {
            children.emplace_back(name, std::to_string(wanted.waittime));
        } else if (name == "callsource") {
            children.emplace_back(name, "COMMANDLINETOOL");
        } else if (taken < entries.size()) {
            children.emplace_back(name, entries[taken++]);
        }
    }
    return children;
}

/// Only the scheme in full makes it certain that the message travels over HTTP. Otherwise the
/// runtime chooses: it sends the message bare, and to "udp:" none at all over its connection.
bool names_http(const request &wanted) {
    const std::string scheme = "http://";
    return !wanted.url ||
           reference::equal_ignoring_case(wanted.url->substr(0, scheme.size()), scheme);
}

void check_sent(const request &wanted, const std::string &sent) {
    if (!names_http(wanted)) {
        return;
    }
    const std::size_t end = sent.find("\r\n\r\n");
    require(end != std::string::npos, "request has a head");
    const std::string head = sent.substr(0, end + 2);
    const std::string body = sent.substr(end + 4);
    require(head.starts_with("POST /"), "request line");
    if (!wanted.any_url) {
        const std::string path = wanted.url == LOCAL_URLS[3] ? "LUMOWS" : "lumows";
        require(head.starts_with("POST /cgi-bin/" + path + " HTTP/1.1\r\n"), "request line");
    }
    require(head.find("\r\nUser-Agent: gSOAP/2.7\r\n") != std::string::npos, "agent");
    require(head.find("\r\nContent-Type: text/xml; charset=utf-8\r\n") != std::string::npos,
            "type");
    require(head.find("\r\nSOAPAction: \"urn:xmethods-lumows\"\r\n") != std::string::npos,
            "action");
    require(head.find("\r\nContent-Length: " + std::to_string(body.size()) + "\r\n") !=
                std::string::npos,
            "length of the request");
    if (service::plain_text(wanted.parameters) == wanted.parameters) {
        require_equal("request", body, service::request_body(*wanted.called, children_of(wanted)));
    }
}

/// The line about a url that cannot be used.
std::string refusal_of(const request &wanted) {
    return fuzz::red(wanted.verbose,
                     "soapcallsclientutil->make_webservice_request error url '" +
                         wanted.url.value_or("") +
                         "' cannot be used, one like http://localhost/cgi-bin/lumows of at most "
                         "1023 characters is needed");
}

/// The runtime reads beyond a url with a user name that ends within an escape or a quotation.
bool is_overrun(const std::optional<std::string> &url) {
    return url && url->find('@') != std::string::npos &&
           url->find_first_of("%\"") != std::string::npos;
}

/// What holds of every run that was not refused for its list.
void check_run(const request &wanted, const peer_script &script, const outcome &seen) {
    require_equal("memory of the runtime left", static_cast<long>(seen.unreleased_malloc), 0);
    require_equal("connections closed", seen.peer.closed, seen.peer.opened);
    require(seen.report.empty() || seen.report.starts_with("SOAP 1.") ||
                seen.report.starts_with("Error "),
            "report is one of the runtime");
    const bool is_refused = seen.output.starts_with(refusal_of(wanted));
    require(!is_refused || wanted.any_url, "url can be used");
    if (script.socket_error == 0) {
        require_equal("connections", seen.peer.opened, wanted.is_sent && !is_refused ? 1 : 0);
    }
    if (seen.peer.opened == 1 && script.connect_error == 0 && script.send_error == 0) {
        check_sent(wanted, seen.peer.sent);
    } else {
        require_equal("request", seen.peer.sent, "");
    }
    // The status is what the result text says, or 508 where there must be one.
    if (passed.times == 0) {
        require_equal("status without a result", seen.value, 508);
        require(wanted.called->group == line_group::WITH_A_RESULT, "operation must have a result");
        return;
    }
    require_equal("result texts", passed.times, 1);
    require(passed.text.has_value() || wanted.called->group != line_group::WITH_A_RESULT,
            "a record without a result is not read");
    require_equal("status", seen.value, reference::read_status(passed.text).code);
}

/// The lines behind the refusal of a url, with fields that are known or may be anything.
void check_lines(const request &wanted, std::string output, const service::proper_answer *answer) {
    if (output.starts_with(refusal_of(wanted))) {
        output.erase(0, refusal_of(wanted).size());
    }
    const std::string message = reference::read_status(passed.text).message;
    const std::string tail = message.empty() ? "" : fuzz::red(wanted.verbose, message);
    std::string exact;
    std::size_t at = 0;
    if (wanted.verbose && passed.times == 1) {
        for (const protocol::result_line &line : wanted.called->lines) {
            const std::string label = std::string("[lumocmd] ") + line.text;
            const std::string ends = line.suffix;
            std::string value = ends.empty() ? "(null)" : "";
            if (answer != nullptr && answer->fields.contains(line.field) &&
                answer->fields.at(line.field)) {
                value = *answer->fields.at(line.field);
            }
            exact += fuzz::green(label + value + ends);
            const std::string shown = fuzz::green(label);
            const std::string opening = shown.substr(0, shown.rfind("\033[0;39m"));
            at = output.find(opening, at);
            require(at != std::string::npos, "lines stand in their order");
            at += opening.size();
        }
    }
    if (answer != nullptr) {
        require_equal("output", output, exact + tail);
        return;
    }
    require(output.size() >= at + tail.size() && output.ends_with(tail),
            "message about the result");
    require(at != 0 || output == tail, "nothing but the lines is shown");
}

enum scene {
    ANY_ANSWER,
    ANY_BODY,
    ANY_CONTENT,
    ANY_CHILDREN,
    PROPER_RESPONSE,
    FAULT,
    NO_SOCKET,
    NO_CONNECTION,
    SEND_FAILS,
    RECEIVE_FAILS,
    SCENES
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    input in(data, size);
    const std::size_t scene = in.below(SCENES);
    const request wanted = take_request(&in);
    if (is_overrun(wanted.url)) {
        return 0;
    }
    peer_script script;
    // Odd: in as few pieces as possible.
    const std::size_t piece = in.byte();
    script.most_received = piece % 2 == 1 ? SIZE_MAX : 1 + piece;
    const service_row &called = *wanted.called;
    service::proper_answer answer;
    const std::string reason = "the reason";
    bool is_known = scene >= PROPER_RESPONSE && !wanted.any_url;
    switch (scene) {
    case ANY_ANSWER:
        script.answer = in.rest();
        break;
    case ANY_BODY:
        script.answer = service::http_answer(in.field(), &in);
        break;
    case ANY_CONTENT:
        script.answer = service::http_answer(service::envelope(in.field()), &in);
        break;
    case ANY_CHILDREN: {
        const std::string name = "ns:service-" + std::string(called.name) + "Response";
        const std::string content = "<" + name + ">" + in.field() + "</" + name + ">";
        script.answer = service::http_answer(service::envelope(content), &in);
        break;
    }
    case PROPER_RESPONSE:
        answer = service::write_response(called, &in);
        script.answer = service::http_answer(service::envelope(answer.bytes), &in);
        break;
    case FAULT:
        script.answer =
            service::http_answer(service::envelope(service::write_fault(&in, reason)), &in);
        break;
    case NO_SOCKET:
        script.socket_error = EMFILE;
        break;
    case NO_CONNECTION:
        script.connect_error = ECONNREFUSED;
        break;
    case SEND_FAILS:
        script.send_error = EPIPE;
        break;
    default:
        script.receive_error = ECONNRESET;
    }
    if (!wanted.is_sent) {
        answer.fields.clear();
    }
    passed = {};
    const fuzz::exact_text url(wanted.url.value_or(""));
    const fuzz::exact_text parameters(wanted.parameters);
    const outcome seen = fuzz::run_product(script, wanted.verbose, [&] {
        return make_webservice_request(wanted.url ? url.get() : nullptr, wanted.function.c_str(),
                                       parameters.get(), wanted.waittime);
    });
    if (!wanted.has_proper_count) {
        require_equal("status", seen.value, 505);
        require_equal("connections", seen.peer.opened, 0);
        require_equal("output", seen.output,
                      fuzz::red(wanted.verbose, protocol::count_message(called)));
        return 0;
    }
    check_run(wanted, script, seen);
    check_lines(wanted, seen.output, is_known ? &answer : nullptr);
    if (is_known && scene == PROPER_RESPONSE) {
        require_equal("report", seen.report, "");
        const auto found = answer.fields.find(protocol::result_child(called));
        const bool has_result = found != answer.fields.end() && found->second.has_value();
        require_equal("result text", has_result ? *found->second : "(none)",
                      passed.text.value_or("(none)"));
    }
    if (is_known && scene > PROPER_RESPONSE && wanted.is_sent) {
        require(!seen.report.empty(), "failure is reported");
        require(scene != FAULT || seen.report.find(reason) != std::string::npos,
                "reason of the fault is reported");
    }
    return 0;
}
