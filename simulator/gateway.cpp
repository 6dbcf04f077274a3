// The checker of gateway requests. It has no branch per gateway: the functions and their lines are
// those of the daemon's row. Values are not interpreted, apart from the widths and fixed contents
// that the rows state, and from what sets an element of the home.
#include "simulator/daemons.h"
#include "simulator/operations.h"
#include "simulator/text.h"

#include <algorithm>
#include <boost/algorithm/string/predicate.hpp>

namespace {

constexpr std::string_view REQUEST_TAG = "Request: ";
constexpr std::string_view REQUEST_END = "\n\n";

struct request_verdict {
    request_error error;
    std::string complaint = {};
};

/// @param rule such as "=1", ":2" or nothing.
request_verdict check_value(const std::string &rule, const std::string &tag,
                            std::string_view value) {
    if (value.find('\0') != std::string_view::npos) {
        return {MALFORMED, tag + "holds a zero byte"};
    }
    if (rule.starts_with('=') && value != rule.substr(1)) {
        return {REFUSED_VALUE, tag + "must be " + rule.substr(1)};
    }
    if (rule.starts_with(':') && std::to_string(value.size()) != rule.substr(1)) {
        return {REFUSED_VALUE, tag + "must be " + rule.substr(1) + " characters long"};
    }
    return {PROPER_REQUEST};
}

/// Checks the lines after the first, and adds their values to the request in words.
request_verdict check_lines(const gateway_request &request, std::span<const std::string_view> lines,
                            std::string &shown) {
    const std::vector<std::string_view> headers = split_text(request.lines, ' ');
    for (std::size_t i = 0; i < headers.size(); ++i) {
        const std::size_t end = std::min(headers[i].find_first_of("=:"), headers[i].size());
        const std::string tag = std::string(headers[i].substr(0, end)) + ": ";
        if (i + 1 >= lines.size() || !lines[i + 1].starts_with(tag)) {
            return {MALFORMED, "line " + std::to_string(i + 2) + " is not '" + tag + "...'"};
        }
        const std::string_view value = lines[i + 1].substr(tag.size());
        shown += (i == 0 ? " " : "|") + show_value(value);
        request_verdict verdict = check_value(std::string(headers[i].substr(end)), tag, value);
        if (verdict.error != PROPER_REQUEST) {
            return verdict;
        }
    }
    return lines.size() > headers.size() + 1 ? request_verdict{MALFORMED, "a line too many"}
                                             : request_verdict{PROPER_REQUEST};
}

/// The request of this name, null when the gateway knows none.
const gateway_request *find_request(const daemon_row &gateway, std::string_view function) {
    const auto row = std::ranges::find_if(gateway.requests, [&](const gateway_request &known) {
        return boost::iequals(known.function, function);
    });
    return row == gateway.requests.end() ? nullptr : &*row;
}

/// Whether the text of a value means off; whatever is no form of zero means on.
bool means_off(std::string_view value) {
    return boost::iequals(value, "off") || value.find_first_not_of("0.") == std::string_view::npos;
}

/// A datagram that sets changes the element that its address leads to.
void change_linked_element(home_state &home, const daemon_row &gateway, const linked_lines &linked,
                           std::string_view received) {
    const auto value_of = [received](std::string_view name) {
        const std::string tag = "\n" + std::string(name) + ": ";
        const std::size_t start = received.find(tag) + tag.size();
        return std::string(received.substr(start, received.find('\n', start) - start));
    };
    std::string place = std::string(gateway.key) + " " + value_of(linked.address[0]);
    if (!linked.address[1].empty()) {
        place += "/" + value_of(linked.address[1]);
    }
    const auto link = home.links.find(place);
    if (link != home.links.end()) {
        change_element(home, link->second,
                       {means_off(value_of(linked.status)) ? "OFF" : "ON", value_of(linked.value)});
    }
}

/// Checks a request, and carries it out when it is proper.
request_verdict run_request(daemon_conversation &conversation, std::string_view received,
                            std::string &shown) {
    const daemon_row &gateway = conversation.daemon;
    const std::size_t end = received.find(REQUEST_END);
    const std::vector<std::string_view> lines = split_text(received.substr(0, end), '\n');
    shown = show_value(received);
    if (!lines[0].starts_with(REQUEST_TAG)) {
        return {MALFORMED, "line 1 is not 'Request: ...'"};
    }
    const std::string_view function = lines[0].substr(REQUEST_TAG.size());
    shown = show_value(function);
    const gateway_request *row = find_request(gateway, function);
    if (row == nullptr) {
        return {NOT_SUPPORTED, "unknown request name"};
    }
    request_verdict verdict = check_lines(*row, lines, shown);
    if (verdict.error == PROPER_REQUEST && end + REQUEST_END.size() < received.size()) {
        return {MALFORMED, "bytes after the empty line"};
    }
    if (verdict.error == PROPER_REQUEST && row->linked != nullptr) {
        change_linked_element(conversation.home, gateway, *row->linked, received);
    }
    return verdict;
}

} // namespace

request_progress gateway_progress(std::string_view received) {
    return received.find(REQUEST_END) == std::string_view::npos ? request_progress::INCOMPLETE
                                                                : request_progress::WHOLE;
}

void answer_gateway(daemon_conversation &conversation) {
    std::string &shown = conversation.exchange.request;
    request_verdict verdict{conversation.arrival == arrival_kind::FULL ? TOO_LONG : MALFORMED,
                            describe_arrival(conversation.arrival)};
    if (conversation.arrival == arrival_kind::DATA) {
        verdict = run_request(conversation, conversation.received, shown);
    } else {
        shown = show_value(conversation.received);
    }
    answer_status(conversation, verdict.error, verdict.complaint);
}

std::string complain_about_link(std::string_view link) {
    const std::size_t blank = std::min(link.find(' '), link.size());
    std::string known;
    for (const daemon_row &gateway : DAEMONS) {
        for (const gateway_request &request : gateway.requests) {
            if (request.linked == nullptr) {
                continue;
            }
            if (gateway.key != link.substr(0, blank)) {
                known.append(known.empty() ? "" : ", ").append(gateway.key);
                continue;
            }
            const std::string_view address = link.substr(std::min(blank + 1, link.size()));
            const auto &names = request.linked->address;
            const std::size_t slash = address.find('/');
            const bool whole = names[1].empty() || (slash != 0 && slash < address.size() - 1);
            return address.empty() || !whole ? "'" + show_value(link) + "' needs a blank and its " +
                                                   std::string(names[0])
                                                       .append(names[1].empty() ? "" : "/")
                                                       .append(names[1])
                                             : "";
        }
    }
    return "'" + show_value(link) + "' begins with none of " + known;
}
