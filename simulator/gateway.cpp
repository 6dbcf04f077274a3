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

/// The result of a check: the error, if any, and the request in words.
struct Verdict {
    int offset; ///< an ErrorOffset, 0 for a proper request
    std::string complaint;
    std::string request;
};

Verdict refuse(ErrorOffset offset, std::string complaint, std::string request) {
    return {static_cast<int>(offset), std::move(complaint), std::move(request)};
}

Verdict check_lines(const GatewayRequest &request, std::span<const std::string_view> lines) {
    std::string shown(lines[0].substr(REQUEST_TAG.size()));
    for (std::size_t i = 0; i < request.lines.size(); ++i) {
        const HeaderLine &expected = request.lines[i];
        const std::string tag = std::string(expected.name) + ": ";
        if (i + 1 >= lines.size() || !lines[i + 1].starts_with(tag)) {
            return refuse(ErrorOffset::malformed,
                          "line " + std::to_string(i + 2) + " is not '" + tag + "...'", shown);
        }
        const std::string_view value = lines[i + 1].substr(tag.size());
        shown += (i == 0 ? " " : "|") + show_value(value);
        if (value.find('\0') != std::string_view::npos) {
            return refuse(ErrorOffset::malformed, tag + "holds a zero byte", shown);
        }
        if (!expected.fixed_value.empty() && value != expected.fixed_value) {
            return refuse(ErrorOffset::refused_value,
                          tag + "must be " + std::string(expected.fixed_value), shown);
        }
        if (expected.width != 0 && value.size() != expected.width) {
            return refuse(ErrorOffset::refused_value,
                          tag + "must be " + std::to_string(expected.width) + " characters long",
                          shown);
        }
    }
    if (lines.size() > request.lines.size() + 1) {
        return refuse(ErrorOffset::malformed, "a line too many", shown);
    }
    return {0, "", shown};
}

Verdict check_request(const Daemon &gateway, std::string_view received) {
    const std::size_t end = received.find(REQUEST_END);
    const std::vector<std::string_view> lines = split_text(received.substr(0, end), '\n');
    if (!lines[0].starts_with(REQUEST_TAG)) {
        return refuse(ErrorOffset::malformed, "line 1 is not 'Request: ...'", show_value(received));
    }
    const std::string_view function = lines[0].substr(REQUEST_TAG.size());
    const auto row = std::find_if(gateway.requests.begin(), gateway.requests.end(),
                                  [function](const GatewayRequest &request) {
                                      return equal_ignoring_case(request.function, function);
                                  });
    if (row == gateway.requests.end()) {
        return refuse(ErrorOffset::not_supported, "unknown request name", show_value(function));
    }
    Verdict verdict = check_lines(*row, lines);
    if (verdict.offset == 0 && end + REQUEST_END.size() < received.size()) {
        return refuse(ErrorOffset::malformed, "bytes after the empty line", verdict.request);
    }
    return verdict;
}

} // namespace

Progress gateway_progress(std::string_view received) {
    return received.find(REQUEST_END) == std::string_view::npos ? Progress::incomplete
                                                                : Progress::whole;
}

void answer_gateway(Conversation &conversation) {
    const Arrival arrival = conversation.arrival;
    const Verdict verdict =
        arrival == Arrival::data
            ? check_request(conversation.daemon, conversation.received)
            : refuse(arrival == Arrival::full ? ErrorOffset::too_long : ErrorOffset::malformed,
                     describe_arrival(arrival), show_value(conversation.received));
    answer_status(conversation, verdict.offset, verdict.complaint);
    conversation.exchange.request = verdict.request;
}
