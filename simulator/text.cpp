// Text helpers of the simulator. They own the escape syntax that is shared by the printed raw
// bytes and the --answer-raw option, so that printed bytes can be pasted back as an option.
#include "simulator/text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <cstdio>

namespace {

struct Escape {
    char letter;
    char byte;
};

constexpr std::array<Escape, 6> ESCAPES{
    {{'n', '\n'}, {'r', '\r'}, {'t', '\t'}, {'0', '\0'}, {'\\', '\\'}, {'"', '"'}}};

/// Lead-byte ranges of UTF-8 with the limits of the second byte, which exclude overlong forms,
/// surrogates and code points past U+10FFFF.
struct Utf8Range {
    unsigned char first_lead;
    unsigned char last_lead;
    unsigned char first_second;
    unsigned char last_second;
    std::size_t length;
};

constexpr std::array<Utf8Range, 9> UTF8_RANGES{{{0x00, 0x7F, 0x00, 0x00, 1},
                                                {0xC2, 0xDF, 0x80, 0xBF, 2},
                                                {0xE0, 0xE0, 0xA0, 0xBF, 3},
                                                {0xE1, 0xEC, 0x80, 0xBF, 3},
                                                {0xED, 0xED, 0x80, 0x9F, 3},
                                                {0xEE, 0xEF, 0x80, 0xBF, 3},
                                                {0xF0, 0xF0, 0x90, 0xBF, 4},
                                                {0xF1, 0xF3, 0x80, 0xBF, 4},
                                                {0xF4, 0xF4, 0x80, 0x8F, 4}}};

unsigned char byte_at(std::string_view bytes, std::size_t index) {
    return static_cast<unsigned char>(bytes[index]);
}

/// Length of the well-formed character that starts at `start`, 0 when there is none.
std::size_t utf8_length(std::string_view bytes, std::size_t start) {
    const unsigned char lead = byte_at(bytes, start);
    const auto *range = std::find_if(UTF8_RANGES.begin(), UTF8_RANGES.end(), [lead](const auto &r) {
        return lead >= r.first_lead && lead <= r.last_lead;
    });
    if (range == UTF8_RANGES.end() || start + range->length > bytes.size()) {
        return 0;
    }
    for (std::size_t i = 1; i < range->length; ++i) {
        const unsigned char next = byte_at(bytes, start + i);
        const unsigned char lowest = i == 1 ? range->first_second : 0x80;
        const unsigned char highest = i == 1 ? range->last_second : 0xBF;
        if (next < lowest || next > highest) {
            return 0;
        }
    }
    return range->length;
}

void append_hex(std::string &out, unsigned char byte) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    out += "\\x";
    out += digits[byte >> 4U];
    out += digits[byte & 0x0FU];
}

char lower(char letter) {
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
}

} // namespace

std::string quote_bytes(std::string_view bytes) {
    std::string out = "\"";
    for (const char byte : bytes) {
        const auto *escape = std::find_if(ESCAPES.begin(), ESCAPES.end(),
                                          [byte](const Escape &e) { return e.byte == byte; });
        if (escape != ESCAPES.end()) {
            out += '\\';
            out += escape->letter;
        } else if (byte >= ' ' && byte <= '~') {
            out += byte;
        } else {
            append_hex(out, static_cast<unsigned char>(byte));
        }
    }
    return out += '"';
}

std::string show_value(std::string_view value) {
    std::string out;
    std::size_t at = 0;
    while (at < value.size() && at < SHOWN_VALUE_BYTES) {
        const std::size_t length = utf8_length(value, at);
        if (length > 1) {
            out += value.substr(at, length);
        } else if (value[at] == '\n') {
            out += "\\n";
        } else if (value[at] >= ' ' && value[at] <= '~') {
            out += value[at];
        } else {
            append_hex(out, byte_at(value, at));
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
        const auto *escape = std::find_if(ESCAPES.begin(), ESCAPES.end(),
                                          [&](const Escape &e) { return e.letter == text[at]; });
        if (escape == ESCAPES.end()) {
            return std::nullopt;
        }
        out += escape->byte;
    }
    return out;
}

bool is_valid_utf8(std::string_view bytes) {
    for (std::size_t at = 0; at < bytes.size();) {
        const std::size_t length = utf8_length(bytes, at);
        if (length == 0) {
            return false;
        }
        at += length;
    }
    return true;
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

bool equal_ignoring_case(std::string_view left, std::string_view right) {
    return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                      [](char l, char r) { return lower(l) == lower(r); });
}
