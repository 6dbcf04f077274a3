// Small text helpers of the protocol's rows and of the tests that walk them.

#pragma once

#include <algorithm>
#include <cctype>
#include <string>
#include <vector>

namespace protocol {

/// A text in lower-case letters.
inline std::string lower(std::string text) {
    for (char &letter : text) {
        letter = static_cast<char>(tolower(static_cast<unsigned char>(letter)));
    }
    return text;
}

/// A text in capitals.
inline std::string upper(std::string text) {
    for (char &letter : text) {
        letter = static_cast<char>(toupper(static_cast<unsigned char>(letter)));
    }
    return text;
}

/// The texts in one, with a separator between them.
inline std::string joined(const std::vector<std::string> &texts, const char *separator) {
    std::string whole;
    for (const std::string &text : texts) {
        whole += (&text == texts.data() ? "" : separator) + text;
    }
    return whole;
}

/// A -p list of that many entries.
inline std::string list_of(std::size_t count) {
    return joined(std::vector<std::string>(count, "p"), "|");
}

/// The entries of a -p list.
inline std::vector<std::string> entries_of(const std::string &list) {
    std::vector<std::string> entries;
    for (std::size_t from = 0; from <= list.size();) {
        const std::size_t end = std::min(list.find('|', from), list.size());
        entries.push_back(list.substr(from, end - from));
        from = end + 1;
    }
    return entries;
}

/// The part of a source tag behind its "->": a function's name.
inline std::string function_of(const std::string &tag) {
    return tag.substr(tag.find("->") + 2);
}

} // namespace protocol
