#include "tests/fuzz/service_request.h"

#include "tests/fuzz/reference.h"
#include "tests/fuzz/service.h"

#include <utility>
#include <vector>

namespace service {

namespace {

using fuzz::input;
using fuzz::require;
using fuzz::require_equal;
using protocol::service_row;

constexpr const char *LOCAL_URLS[] = {nullptr, "http://localhost/cgi-bin/lumows",
                                      "http://127.0.0.1/cgi-bin/lumows",
                                      "HTTP://LocalHost/cgi-bin/LUMOWS"};
constexpr const char *FAR_URL = "http://192.0.2.7:8080/cgi-bin/lumows";

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

} // namespace

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

void check_sent(const request &wanted, const std::string &sent) {
    const std::size_t end = sent.find("\r\n\r\n");
    require(end != std::string::npos, "request has a head");
    const std::string head = sent.substr(0, end + 2);
    const std::string last = "</SOAP-ENV:Envelope>\r\n";
    const std::size_t size = sent.find(last, end) + last.size() - (end + 4);
    const std::string body = sent.substr(end + 4, size);
    require_equal("sent behind the request", sent.substr(end + 4 + body.size()), "");
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

bool must_be_refused(const request &wanted) {
    const std::string scheme = "http://";
    if (wanted.url &&
        !reference::equal_ignoring_case(wanted.url->substr(0, scheme.size()), scheme)) {
        return true;
    }
    for (const char character : wanted.url.value_or("")) {
        const auto byte = static_cast<unsigned char>(character);
        if (byte <= ' ' || byte == 0x7f) {
            return true;
        }
    }
    return wanted.url && wanted.url->size() > 1023;
}

} // namespace service
