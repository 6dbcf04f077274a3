#include "tests/fuzz/target.h"

#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <unistd.h>

namespace fuzz {

std::uint8_t input::byte() {
    if (size_ == 0) {
        return 0;
    }
    size_--;
    return *data_++;
}

std::size_t input::below(std::size_t bound) {
    return byte() % bound;
}

std::int32_t input::number() {
    std::uint32_t value = 0;
    for (int i = 0; i < 4; i++) {
        value = value << 8U | byte();
    }
    return static_cast<std::int32_t>(value);
}

std::string input::field() {
    std::string text;
    while (size_ != 0) {
        const char character = static_cast<char>(byte());
        if (character == '\0') {
            break;
        }
        text += character;
    }
    return text;
}

std::string input::rest() {
    std::string text(reinterpret_cast<const char *>(data_), size_);
    size_ = 0;
    return text;
}

std::string input::stretched_rest(std::size_t size) {
    const std::size_t wanted = size + below(5) - 2;
    const std::size_t place = byte();
    std::string text = rest();
    if (!text.empty() && text.size() < wanted) {
        const std::size_t at = place % text.size();
        text.insert(at, wanted - text.size(), text[at]);
    }
    return text;
}

exact_text::exact_text(const std::string &text) : block_(strdup(text.c_str())) {
    if (block_ == nullptr) {
        abort();
    }
}

exact_text::~exact_text() {
    free(block_);
}

namespace {

std::string pid_tag(const char *colour) {
    static const std::string pid = std::to_string(getpid());
    return "\033[1;" + std::string(colour) + "m<" + pid + ">\033[0;39m ";
}

std::string shown(const std::string &text) {
    std::string result;
    for (const char character : text) {
        const auto byte = static_cast<unsigned char>(character);
        char hexadecimal[sizeof("\\x00")];
        if (byte == '\n') {
            result += "\\n\n";
        } else if (isprint(byte) != 0) {
            result += character;
        } else {
            snprintf(hexadecimal, sizeof hexadecimal, "\\x%02x", byte);
            result += hexadecimal;
        }
    }
    return result;
}

} // namespace

std::string red(bool verbose, const std::string &message) {
    return (verbose ? pid_tag("31") : "") + "\033[0;31m[lumocmd] " + message + "\033[0;39m\n";
}

std::string green(const std::string &message) {
    return pid_tag("32") + "\033[0;32m" + message + "\033[0;39m\n";
}

void require(bool holds, const char *what) {
    if (!holds) {
        dprintf(STDERR_FILENO, "wrong: %s\n", what);
        abort();
    }
}

void require_equal(const char *what, const std::string &is, const std::string &wanted) {
    if (is != wanted) {
        dprintf(STDERR_FILENO, "wrong: %s\n-- is:\n%s\n-- must be:\n%s\n--\n", what,
                shown(is).c_str(), shown(wanted).c_str());
        abort();
    }
}

void require_equal(const char *what, long is, long wanted) {
    if (is != wanted) {
        dprintf(STDERR_FILENO, "wrong: %s is %ld, must be %ld\n", what, is, wanted);
        abort();
    }
}

} // namespace fuzz
