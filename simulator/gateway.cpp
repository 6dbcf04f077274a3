// The checker of gateway requests. It has no branch per gateway: the functions and their lines are
// those of the daemon's row. Values are not interpreted, apart from the widths and fixed contents
// that the rows state.
#include "simulator/gateway.h"

#include "simulator/text.h"

#include <algorithm>
#include <span>
#include <vector>

namespace {

constexpr std::string_view REQUEST_TAG = "Request: ";
constexpr std::string_view REQUEST_END = "\n\n";

/// What is wrong with a request.
struct request_verdict {
    request_error error;
    std::string complaint = {};
};

request_verdict check_value(const header_line &expected, const std::string &tag,
                            std::string_view value) {
    if (value.find('\0') != std::string_view::npos) {
        return {MALFORMED, tag + "holds a zero byte"};
    }
    if (!expected.fixed_value.empty() && value != expected.fixed_value) {
        return {REFUSED_VALUE, tag + "must be " + std::string(expected.fixed_value)};
    }
    if (expected.width != 0 && value.size() != expected.width) {
        return {REFUSED_VALUE,
                tag + "must be " + std::to_string(expected.width) + " characters long"};
    }
    return {PROPER_REQUEST};
}

/// Checks the lines after the first, and adds their values to the request in words.
request_verdict check_lines(const gateway_request &request, std::span<const std::string_view> lines,
                            std::string &shown) {
    for (std::size_t i = 0; i < request.lines.size(); ++i) {
        const std::string tag = std::string(request.lines[i].name) + ": ";
        if (i + 1 >= lines.size() || !lines[i + 1].starts_with(tag)) {
            return {MALFORMED, "line " + std::to_string(i + 2) + " is not '" + tag + "...'"};
        }
        const std::string_view value = lines[i + 1].substr(tag.size());
        shown += (i == 0 ? " " : "|") + show_value(value);
        request_verdict verdict = check_value(request.lines[i], tag, value);
        if (verdict.error != PROPER_REQUEST) {
            return verdict;
        }
    }
    return lines.size() > request.lines.size() + 1 ? request_verdict{MALFORMED, "a line too many"}
                                                   : request_verdict{PROPER_REQUEST};
}

request_verdict check_request(const daemon_row &gateway, std::string_view received,
                              std::string &shown) {
    const std::size_t end = received.find(REQUEST_END);
    const std::vector<std::string_view> lines = split_text(received.substr(0, end), '\n');
    shown = show_value(received);
    if (!lines[0].starts_with(REQUEST_TAG)) {
        return {MALFORMED, "line 1 is not 'Request: ...'"};
    }
    const std::string_view function = lines[0].substr(REQUEST_TAG.size());
    shown = show_value(function);
    const auto row = std::find_if(gateway.requests.begin(), gateway.requests.end(),
                                  [&](const gateway_request &known) {
                                      return equal_ignoring_case(known.function, function);
                                  });
    if (row == gateway.requests.end()) {
        return {NOT_SUPPORTED, "unknown request name"};
    }
    request_verdict verdict = check_lines(*row, lines, shown);
    if (verdict.error == PROPER_REQUEST && end + REQUEST_END.size() < received.size()) {
        return {MALFORMED, "bytes after the empty line"};
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
    request_verdict verdict = check_request(conversation.daemon, conversation.received, shown);
    if (conversation.arrival != arrival_kind::DATA) {
        verdict = {conversation.arrival == arrival_kind::FULL ? TOO_LONG : MALFORMED,
                   describe_arrival(conversation.arrival)};
        shown = show_value(conversation.received);
    }
    answer_status(conversation, verdict.error, verdict.complaint);
}
