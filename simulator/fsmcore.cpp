// FSMCore requests are read by their announced lengths, not up to an empty line: a value may be
// empty or hold line feeds. The simulated core accepts every function name, since the functions of
// a real one depend on its configuration, and returns the parameters that it was given.
#include "simulator/daemons.h"
#include "simulator/text.h"

#include <cstdio>

namespace {

/// More parameters than any client sends: a wrong count is refused, not waited for.
constexpr int MOST_PARAMETERS = 1000;

/// A request that is parsed from its beginning. A take fails at the end of what has arrived so far,
/// without a complaint, or at a mistake.
struct fsmcore_request {
    std::string_view rest;
    std::string_view function = {};
    std::vector<std::string_view> parameters = {};
    std::string complaint = {};
};

bool take_text(fsmcore_request &request, std::string_view text) {
    const std::string_view start = request.rest.substr(0, text.size());
    if (!text.starts_with(start)) {
        request.complaint = "expected " + quote_bytes(text) + " before " +
                            show_value(request.rest.substr(0, request.rest.find('\n')));
    } else if (start.size() == text.size()) {
        request.rest.remove_prefix(text.size());
        return true;
    }
    return false;
}

/// Takes a tag and the rest of its line.
bool take_line(fsmcore_request &request, std::string_view tag, std::string_view &value) {
    if (!take_text(request, tag)) {
        return false;
    }
    const std::size_t end = request.rest.find('\n');
    if (end == std::string_view::npos) {
        return false;
    }
    value = request.rest.substr(0, end);
    request.rest.remove_prefix(end + 1);
    return true;
}

/// Takes a tag and a plain number: no sign, no blanks, no leading zeros.
bool take_number(fsmcore_request &request, const std::string &tag, int highest,
                 std::size_t &number) {
    std::string_view text;
    if (!take_line(request, tag, text)) {
        return false;
    }
    const auto read = read_number(text, 0, highest);
    if (!read || std::to_string(*read) != text) {
        request.complaint = "'" + tag + show_value(text) + "' is not a number that can be right";
        return false;
    }
    number = static_cast<std::size_t>(*read);
    return true;
}

std::string parameter_tag(std::size_t index) {
    std::array<char, 32> tag{};
    std::snprintf(tag.data(), tag.size(), "Param%03zu", index);
    return tag.data();
}

bool take_parameter(fsmcore_request &request, const std::string &tag) {
    std::size_t length = 0;
    if (!take_number(request, tag + " Length: ", 1 << 20, length) ||
        !take_text(request, tag + ":\n") || request.rest.size() < length) {
        return false;
    }
    request.parameters.push_back(request.rest.substr(0, length));
    request.rest.remove_prefix(length);
    return take_text(request, "\n");
}

/// Reads the request; false when more must arrive.
bool read_request(fsmcore_request &request) {
    std::size_t count = 0;
    std::string_view waittime;
    bool taken = take_line(request, "Request: ", request.function) &&
                 take_number(request, "Parameter Count: ", MOST_PARAMETERS, count);
    for (std::size_t i = 0; taken && i < count; ++i) {
        taken = take_parameter(request, parameter_tag(i));
    }
    taken = taken && take_line(request, "Waittime: ", waittime) && take_text(request, "\n");
    if (!taken) {
        return !request.complaint.empty();
    }
    if (request.function.empty()) {
        request.complaint = "empty request name";
    } else if (!read_number(waittime, 0, 1 << 30)) {
        request.complaint = "Waittime is not a number";
    } else if (!request.rest.empty()) {
        request.complaint = "bytes after the empty line";
    }
    return true;
}

std::string describe_request(const fsmcore_request &request, std::string_view received) {
    if (request.function.empty()) {
        return show_value(received);
    }
    std::string text = show_value(request.function);
    const char *separator = " ";
    for (const std::string_view parameter : request.parameters) {
        text.append(separator).append(show_value(parameter));
        separator = "|";
    }
    return text;
}

/// An empty parameter is its length line alone: clients would read a tag line as the next length.
std::string frame_parameters(const std::vector<std::string_view> &parameters) {
    std::string answer = "Parameter Count: " + std::to_string(parameters.size()) + "\n";
    for (std::size_t i = 0; i < parameters.size(); ++i) {
        const std::string tag = parameter_tag(i);
        answer += tag + " Length: " + std::to_string(parameters[i].size()) + "\n";
        if (!parameters[i].empty()) {
            answer.append(tag).append(":\n").append(parameters[i]).append("\n");
        }
    }
    return answer;
}

} // namespace

request_progress fsmcore_progress(std::string_view received) {
    fsmcore_request request{received};
    return read_request(request) ? request_progress::WHOLE : request_progress::INCOMPLETE;
}

void answer_fsmcore(daemon_conversation &conversation) {
    fsmcore_request request{conversation.received};
    if (!read_request(request)) {
        request.complaint = describe_arrival(conversation.arrival);
    }
    conversation.exchange.request = describe_request(request, conversation.received);
    request_error error = PROPER_REQUEST;
    if (!request.complaint.empty()) {
        error = conversation.arrival == arrival_kind::FULL ? TOO_LONG : MALFORMED;
        request.parameters.clear();
    }
    answer_status(conversation, error, request.complaint);
    *conversation.exchange.answer += frame_parameters(request.parameters);
}
