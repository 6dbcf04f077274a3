#include "tests/fuzz/reference.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstring>

namespace reference {

namespace {

bool is_one_of(char character, const std::string &characters) {
    return characters.find(character) != std::string::npos;
}

char lower(char character) {
    return character >= 'A' && character <= 'Z' ? static_cast<char>(character - 'A' + 'a')
                                                : character;
}

/// "Response Status: " and "Parameter Count: " are compared ignoring case.
bool has_tag(const std::string &line, const std::string &tag) {
    return line.size() >= tag.size() && equal_ignoring_case(line.substr(0, tag.size()), tag);
}

} // namespace

number read_number(const std::string &text) {
    std::size_t at = 0;
    while (at < text.size() && is_one_of(text[at], " \t\n\v\f\r")) {
        at++;
    }
    const bool is_negative = at < text.size() && text[at] == '-';
    if (at < text.size() && is_one_of(text[at], "+-")) {
        at++;
    }
    const std::size_t first_digit = at;
    const long long farthest = is_negative ? -static_cast<long long>(INT_MIN) : INT_MAX;
    long long size = 0;
    bool fits = true;
    while (at < text.size() && is_one_of(text[at], "0123456789")) {
        size = size * 10 + (text[at] - '0');
        if (size > farthest) {
            size = farthest;
            fits = false;
        }
        at++;
    }
    if (at == first_digit) {
        at = 0; // no number at all: nothing was read, blanks and sign included
    }
    number result;
    result.is_valid = fits && at == text.size();
    result.value = static_cast<int>(is_negative ? -size : size);
    result.error = strerror(fits ? 0 : ERANGE);
    return result;
}

std::vector<std::string> lines_of(const std::string &text) {
    std::vector<std::string> lines(1);
    for (const char character : text) {
        if (character == '\n') {
            lines.emplace_back();
        } else {
            lines.back() += character;
        }
    }
    std::erase(lines, "");
    return lines;
}

bool equal_ignoring_case(const std::string &one, const std::string &other) {
    if (one.size() != other.size()) {
        return false;
    }
    for (std::size_t i = 0; i < one.size(); i++) {
        if (lower(one[i]) != lower(other[i])) {
            return false;
        }
    }
    return true;
}

std::vector<std::string> items_of(const std::string &list) {
    std::vector<std::string> items(1);
    for (const char character : list) {
        if (character == '|') {
            items.emplace_back();
        } else {
            items.back() += character;
        }
    }
    std::vector<std::string> counted;
    for (const std::string &item : items) {
        if (item.empty()) {
            break;
        }
        counted.push_back(item);
    }
    return counted;
}

status read_status(const std::optional<std::string> &text) {
    const int unreadable = 502;
    if (!text || text->empty()) {
        return {unreadable, ""};
    }
    const std::string complaint =
        " - Invalid argument for utility->extract_error_code " + *text + " ";
    if (text->size() > 9) {
        return {unreadable, "1" + complaint};
    }
    if (text->size() < 5 || !read_number(text->substr(5)).is_valid) {
        return {unreadable, "2" + complaint};
    }
    return {read_number(text->substr(5)).value, ""};
}

cut cut_text(const std::string &text, std::size_t length) {
    if (length <= text.size()) {
        return {text.substr(length), ""};
    }
    return {"",
            "memory->cut_message_to_preserve_newline len is greater than string length; returning "
            "a null string. str = " +
                text + ", len = " + std::to_string(text.size())};
}

std::string fsmcore_request(const std::string &function, const std::vector<std::string> &values,
                            const std::string &waittime_line) {
    std::string text = "Request: " + function + "\n";
    text += "Parameter Count: " + std::to_string(values.size()) + "\n";
    for (std::size_t i = 0; i < values.size(); i++) {
        std::string name = std::to_string(i);
        name.insert(0, 3 - std::min<std::size_t>(3, name.size()), '0');
        name.insert(0, "Param");
        text += name;
        text += " Length: " + std::to_string(values[i].size()) + "\n";
        text += name;
        text += ":\n";
        text += values[i];
        text += "\n";
    }
    return text + waittime_line + "\n";
}

std::string received_text(const std::string &answer) {
    const std::string received = answer.substr(0, 1024);
    return received.substr(0, received.find('\0'));
}

gateway_answer read_gateway_answer(const std::string &received, const std::string &prefix) {
    const std::string tag = "Response Status: ";
    const std::vector<std::string> lines = lines_of(received);
    if (lines.empty() || !has_tag(lines[0], tag)) {
        return {5, "", 0};
    }
    const std::string text = lines[0].substr(tag.size());
    if (text.substr(0, prefix.size()) != prefix) {
        return {6, "", 0};
    }
    const number status = read_number(text.substr(prefix.size()));
    if (!status.is_valid) {
        return {7, status.error, 0};
    }
    return {lines.size() > 1 ? 8 : 0, "", status.value};
}

namespace {

/// Reads the returned parameters behind the two first lines; the number of the failure, or 0.
int read_parameters(const std::vector<std::string> &lines, fsmcore_answer *answer) {
    std::size_t next = 2;
    for (int i = 0; i < answer->count; i++) {
        if (next == lines.size()) {
            return 9;
        }
        const cut length_text = cut_text(lines[next++], 17);
        if (!length_text.message.empty()) {
            answer->complaints.push_back(length_text.message);
        }
        const number length = read_number(length_text.text);
        if (!length.is_valid) {
            return 10;
        }
        answer->values.emplace_back();
        if (length.value <= 0) {
            continue;
        }
        if (lines.size() - next < 2 ||
            lines[next + 1].size() != static_cast<std::size_t>(length.value)) {
            return 11;
        }
        answer->values.back() = lines[next + 1];
        next += 2;
    }
    return next == lines.size() ? 0 : 12;
}

} // namespace

fsmcore_answer read_fsmcore_answer(const std::string &received) {
    fsmcore_answer answer;
    const gateway_answer first = read_gateway_answer(received, "FSMC-");
    answer.status = first.status;
    // The same first line as a gateway's; its failures are numbered one lower here.
    if (first.failure >= 5 && first.failure <= 7) {
        answer.failure = first.failure - 1;
        answer.reason = first.reason;
        return answer;
    }
    const std::vector<std::string> lines = lines_of(received);
    const std::string tag = "Parameter Count: ";
    if (lines.size() < 2 || !has_tag(lines[1], tag)) {
        answer.failure = 7;
        return answer;
    }
    const number count = read_number(lines[1].substr(tag.size()));
    if (!count.is_valid) {
        answer.failure = 8;
        return answer;
    }
    answer.count = count.value;
    answer.failure = read_parameters(lines, &answer);
    return answer;
}

} // namespace reference
