// FSMCore requests are read by their announced lengths, not up to an empty line: a value may be
// empty or hold line feeds. The simulated core knows every function name, since the functions of
// a real one depend on its configuration, and returns the parameters it was given.
#include "simulator/fsmcore.h"

#include "simulator/text.h"

#include <cstdio>
#include <vector>

namespace {

/// More parameters than any client sends; keeps a wrong count from being waited for.
constexpr int MOST_PARAMETERS = 1000;

struct FsmRequest {
    std::string function;
    std::vector<std::string> parameters;
    std::string waittime;
    std::string complaint;
};

/// Takes the request apart from the front. `short_of_bytes` is set when the text so far is right
/// but more must arrive.
struct Reader {
    std::string_view rest;
    bool short_of_bytes = false;
    std::string complaint;
};

/// Takes exactly this text, which may have arrived in part.
bool take_text(Reader &reader, std::string_view text) {
    const std::string_view start = reader.rest.substr(0, text.size());
    if (start != text.substr(0, start.size())) {
        reader.complaint = "expected " + quote_bytes(text) + " before " +
                           show_value(reader.rest.substr(0, reader.rest.find('\n')));
        return false;
    }
    if (start.size() < text.size()) {
        reader.short_of_bytes = true;
        return false;
    }
    reader.rest.remove_prefix(text.size());
    return true;
}

/// Takes a tag and the rest of its line.
bool take_line(Reader &reader, std::string_view tag, std::string_view &value) {
    if (!take_text(reader, tag)) {
        return false;
    }
    const std::size_t end = reader.rest.find('\n');
    if (end == std::string_view::npos) {
        reader.short_of_bytes = true;
        return false;
    }
    value = reader.rest.substr(0, end);
    reader.rest.remove_prefix(end + 1);
    return true;
}

/// Takes a tag and a plain number: no sign, no blanks, no leading zeros.
bool take_number(Reader &reader, std::string_view tag, int highest, int &number) {
    std::string_view text;
    if (!take_line(reader, tag, text)) {
        return false;
    }
    const auto read = read_number(text, 0, highest);
    if (!read || std::to_string(*read) != text) {
        reader.complaint =
            "'" + std::string(tag) + show_value(text) + "' is not a number that can be right";
        return false;
    }
    number = *read;
    return true;
}

std::string parameter_tag(std::size_t index) {
    std::string digits = std::to_string(index);
    digits.insert(0, digits.size() < 3 ? 3 - digits.size() : 0, '0');
    return "Param" + digits;
}

bool take_parameter(Reader &reader, std::size_t index, std::string &value) {
    const std::string tag = parameter_tag(index);
    int length = 0;
    if (!take_number(reader, tag + " Length: ", 1 << 20, length) ||
        !take_text(reader, tag + ":\n")) {
        return false;
    }
    const auto size = static_cast<std::size_t>(length);
    if (reader.rest.size() < size) {
        reader.short_of_bytes = true;
        return false;
    }
    value = reader.rest.substr(0, size);
    reader.rest.remove_prefix(size);
    return take_text(reader, "\n");
}

bool take_request(Reader &reader, FsmRequest &request) {
    std::string_view function;
    std::string_view waittime;
    int count = 0;
    if (!take_line(reader, "Request: ", function)) {
        return false;
    }
    request.function = function;
    if (!take_number(reader, "Parameter Count: ", MOST_PARAMETERS, count)) {
        return false;
    }
    for (int i = 0; i < count; ++i) {
        std::string value;
        if (!take_parameter(reader, static_cast<std::size_t>(i), value)) {
            return false;
        }
        request.parameters.push_back(std::move(value));
    }
    if (!take_line(reader, "Waittime: ", waittime) || !take_text(reader, "\n")) {
        return false;
    }
    request.waittime = waittime;
    return true;
}

/// Fills the request; its complaint tells when it is a wrong one.
Progress read_request(std::string_view received, FsmRequest &request) {
    Reader reader{received, false, ""};
    request = {};
    if (!take_request(reader, request)) {
        request.complaint = reader.complaint;
        return reader.short_of_bytes ? Progress::incomplete : Progress::whole;
    }
    if (request.function.empty()) {
        request.complaint = "empty request name";
    } else if (!read_number(request.waittime, 0, 1 << 30)) {
        request.complaint = "Waittime is not a number";
    } else if (!reader.rest.empty()) {
        request.complaint = "bytes after the empty line";
    }
    return Progress::whole;
}

std::string describe_request(const FsmRequest &request, std::string_view received) {
    if (request.function.empty()) {
        return show_value(received);
    }
    std::string text = show_value(request.function);
    for (std::size_t i = 0; i < request.parameters.size(); ++i) {
        text += (i == 0 ? " " : "|") + show_value(request.parameters[i]);
    }
    return text;
}

/// An empty parameter is its length line alone: its tag line would be taken for the next length.
std::string frame_parameters(const std::vector<std::string> &parameters) {
    std::string answer = "Parameter Count: " + std::to_string(parameters.size()) + "\n";
    for (std::size_t i = 0; i < parameters.size(); ++i) {
        const std::string tag = parameter_tag(i);
        answer += tag + " Length: " + std::to_string(parameters[i].size()) + "\n";
        if (!parameters[i].empty()) {
            answer += tag + ":\n" + parameters[i] + "\n";
        }
    }
    return answer;
}

} // namespace

Progress fsmcore_progress(std::string_view received) {
    FsmRequest request;
    return read_request(received, request);
}

void answer_fsmcore(Conversation &conversation) {
    FsmRequest request;
    const Arrival arrival = conversation.arrival;
    int error = 0;
    if (read_request(conversation.received, request) == Progress::incomplete) {
        request.complaint = describe_arrival(arrival);
    }
    const std::string shown = describe_request(request, conversation.received);
    if (!request.complaint.empty()) {
        error = static_cast<int>(arrival == Arrival::full ? ErrorOffset::too_long
                                                          : ErrorOffset::malformed);
        request.parameters.clear();
    }
    answer_status(conversation, error, request.complaint);
    conversation.exchange.request = shown;
    *conversation.exchange.answer += frame_parameters(request.parameters);
}
