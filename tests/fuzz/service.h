// The answers of the web service, put together from random parts.

#pragma once

#include "tests/fuzz/target.h"
#include "tests/protocol/service_functions.h"

#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace service {

/// An answer, and what its reader must find in it.
struct proper_answer {
    std::string bytes;
    std::map<std::string, std::optional<std::string>> fields; ///< no entry: absent
};

/// The response element with children in any order and notation.
proper_answer write_response(const protocol::service_row &called, fuzz::input *in);

/// A fault with this reason.
std::string write_fault(fuzz::input *in, const std::string &reason);

/// An envelope around the content of its body.
std::string envelope(const std::string &content);

/// An HTTP answer with this body: its length announced, in chunks, or up to the end.
std::string http_answer(const std::string &body, fuzz::input *in);

/// The body of the request that calls an operation.
std::string request_body(const protocol::service_row &called,
                         const std::vector<std::pair<std::string, std::string>> &children);

/// Text that has one reading only: printing characters, of Latin-1 as well.
std::string plain_text(const std::string &bytes);

/// The same as it travels: UTF-8, markup escaped.
std::string escaped(const std::string &text);

} // namespace service
