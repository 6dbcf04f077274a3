// Text helpers of the simulator. They own the escape syntax that is shared by the printed raw
// bytes and the --answer-raw option, so that printed bytes can be pasted back as an option.
#include "simulator/text.h"

#include <algorithm>
#include <array>
#include <boost/algorithm/string/classification.hpp>
#include <boost/algorithm/string/split.hpp>
#include <boost/locale/utf.hpp>
#include <charconv>
#include <cstdio>
#include <iterator>

namespace {

/// The letters after a backslash and, in the same order, the bytes that they stand for.
constexpr std::string_view ESCAPE_LETTERS = "nrt0\\\"";
constexpr std::string_view ESCAPED_BYTES("\n\r\t\0\\\"", 6);

/// Length of the well-formed character at the beginning, 0 when there is none.
std::size_t utf8_length(std::string_view bytes) {
    const char *end = bytes.data();
    const auto point = boost::locale::utf::utf_traits<char>::decode(end, end + bytes.size());
    const bool valid = boost::locale::utf::is_valid_codepoint(point);
    return valid ? static_cast<std::size_t>(end - bytes.data()) : 0;
}

std::string hex_escape(char byte) {
    std::array<char, 8> text{};
    std::snprintf(text.data(), text.size(), "\\x%02X", static_cast<unsigned char>(byte));
    return text.data();
}

} // namespace

std::vector<std::string_view> split_text(std::string_view text, char separator) {
    std::vector<std::string_view> parts;
    boost::split(parts, text, [separator](char byte) { return byte == separator; });
    return parts;
}

std::string quote_bytes(std::string_view bytes) {
    std::string out = "\"";
    for (const char byte : bytes) {
        const std::size_t escape = ESCAPED_BYTES.find(byte);
        if (escape != std::string_view::npos) {
            out += '\\';
            out += ESCAPE_LETTERS[escape];
        } else if (byte >= ' ' && byte <= '~') {
            out += byte;
        } else {
            out += hex_escape(byte);
        }
    }
    return out += '"';
}

std::string bytes_as_characters(std::string_view bytes) {
    std::string out;
    for (const char byte : bytes) {
        boost::locale::utf::utf_traits<char>::encode(static_cast<unsigned char>(byte),
                                                     std::back_inserter(out));
    }
    return out;
}

std::string show_value(std::string_view value) {
    std::string out;
    std::size_t at = 0;
    while (at < value.size() && at < SHOWN_VALUE_BYTES) {
        const std::size_t length = utf8_length(value.substr(at));
        if (length > 1) {
            out += value.substr(at, length);
        } else if (value[at] == '\n') {
            out += "\\n";
        } else if (value[at] >= ' ' && value[at] <= '~') {
            out += value[at];
        } else {
            out += hex_escape(value[at]);
        }
        at += std::max<std::size_t>(length, 1);
    }
    if (at < value.size()) {
        out += "...(" + std::to_string(value.size()) + " bytes)";
    }
    return out;
}

std::optional<std::string> read_escapes(std::string_view text) {
    std::string out;
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (text[at] != '\\') {
            out += text[at];
            continue;
        }
        if (++at >= text.size()) {
            return std::nullopt;
        }
        if (text[at] == 'x') {
            unsigned value = 0;
            const std::string_view digits = text.substr(at + 1, 2);
            const auto [end, error] =
                std::from_chars(digits.data(), digits.data() + digits.size(), value, 16);
            if (error != std::errc() || end != digits.data() + 2) {
                return std::nullopt;
            }
            out += static_cast<char>(value);
            at += 2;
            continue;
        }
        const std::size_t escape = ESCAPE_LETTERS.find(text[at]);
        if (escape == std::string_view::npos) {
            return std::nullopt;
        }
        out += ESCAPED_BYTES[escape];
    }
    return out;
}

bool is_valid_utf8(std::string_view bytes) {
    std::size_t length = 1;
    for (; length > 0 && !bytes.empty(); bytes.remove_prefix(length)) {
        length = utf8_length(bytes);
    }
    return length > 0;
}

std::optional<int> read_number(std::string_view text, int lowest, int highest) {
    int value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (text.empty() || error != std::errc() || end != text.data() + text.size() ||
        value < lowest || value > highest) {
        return std::nullopt;
    }
    return value;
}
