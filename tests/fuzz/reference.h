// The texts of the protocol read a second time, slowly and plainly, to compare the product with.
// Written from what the protocol says; shares nothing with the product.

#pragma once

#include <optional>
#include <string>
#include <vector>

namespace reference {

/// A decimal number as the controller's strtol reads it.
struct number {
    bool is_valid = false;
    int value = 0;
    std::string error; ///< the system's text for what is wrong; of error 0 for a character too many
};
number read_number(const std::string &text);

/// The non-empty lines of a text.
std::vector<std::string> lines_of(const std::string &text);

bool equal_ignoring_case(const std::string &one, const std::string &other);

/// The items of a parameter list; an empty item ends it.
std::vector<std::string> items_of(const std::string &list);

/// A status text read back, with the message about an unreadable one.
struct status {
    int code = 0;
    std::string message;
};
status read_status(const std::optional<std::string> &text);

/// A line that is not empty with its first characters cut off, and the message when it has fewer.
struct cut {
    std::string text;
    std::string message;
};
cut cut_text(const std::string &text, std::size_t length);

/// How a daemon's answer is taken. The failure is numbered like the exchange's messages, 0 is none.
struct gateway_answer {
    int failure = 0;
    std::string reason; ///< of an unreadable number
    int status = 0;
};
gateway_answer read_gateway_answer(const std::string &received, const std::string &prefix);

struct fsmcore_answer {
    int failure = 0;
    std::string reason;
    int status = 0;
    int count = 0;
    std::vector<std::optional<std::string>> values;
    std::vector<std::string> complaints; ///< messages about length lines that are too short
};
fsmcore_answer read_fsmcore_answer(const std::string &received);

/// The request text of FSMCore; the wait-time line is empty for a remote one.
std::string fsmcore_request(const std::string &function, const std::vector<std::string> &values,
                            const std::string &waittime_line);

/// The part of an answer that one receive of 1024 bytes delivers, as text: up to a zero byte.
std::string received_text(const std::string &answer);

} // namespace reference
