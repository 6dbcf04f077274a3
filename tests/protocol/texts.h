// Small text helpers of the protocol's rows and of the tests that walk them.

#pragma once

#include <algorithm>
#include <cctype>
#include <string>
#include <vector>

namespace protocol {

using words = std::vector<std::string>;

/// A text in lower-case letters.
inline std::string lower(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(), tolower);
    return text;
}

/// A text in capitals.
inline std::string upper(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(), toupper);
    return text;
}

/// The texts in one, with a separator between them.
inline std::string joined(const words &texts, const char *separator) {
    std::string whole;
    for (const std::string &text : texts) {
        whole += (&text == texts.data() ? "" : separator) + text;
    }
    return whole;
}

/// The parts of a text between its separators.
inline words split(const std::string &text, char separator) {
    words parts;
    for (std::size_t from = 0; from <= text.size();) {
        const std::size_t end = std::min(text.find(separator, from), text.size());
        parts.push_back(text.substr(from, end - from));
        from = end + 1;
    }
    return parts;
}

/// The text with every occurrence of `from` replaced.
inline std::string replaced(std::string text, const std::string &from, const std::string &to) {
    for (std::size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += to.size()) {
        text.replace(at, from.size(), to);
    }
    return text;
}

/// A -p list of that many entries.
inline std::string list_of(std::size_t count) {
    return joined(words(count, "p"), "|");
}

/// The entries of a -p list.
inline words entries_of(const std::string &list) {
    return split(list, '|');
}

/// The part of a source tag behind its "->": a function's name.
inline std::string function_of(const std::string &tag) {
    return tag.substr(tag.find("->") + 2);
}

} // namespace protocol
