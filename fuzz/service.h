// The web service's operations as the service and its callers know them, and its answers put
// together from random parts.

#pragma once

#include "fuzz/target.h"

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace service {

enum outcome_group {
    SINGLE, ///< no lines
    TEXT,   ///< lines in any case
    RECORD, ///< without a result no lines and 508
};

struct shown_line {
    const char *label;
    const char *field;
    const char *suffix = "";
};

struct operation {
    const char *name; ///< behind "service-", and in capitals behind "SERVICE_"
    outcome_group group;
    std::vector<std::string> request; ///< children that the list's entries fill, in order
    std::vector<std::string> response;
    std::vector<shown_line> lines = {};
};

extern const std::vector<operation> OPERATIONS;

/// The one operation without a wait time, and the one whose list may have several lengths.
bool has_waittime(const operation &called);
bool is_run_on_element(const operation &called);

/// An answer, and what its reader must find in it.
struct proper_answer {
    std::string bytes;
    std::map<std::string, std::optional<std::string>> fields; ///< no entry: absent
};

/// The response element with children in any order and notation.
proper_answer write_response(const operation &called, fuzz::input *in);

/// A fault with this reason.
std::string write_fault(fuzz::input *in, const std::string &reason);

/// An envelope around the content of its body.
std::string envelope(const std::string &content);

/// An HTTP answer with this body: its length announced, in chunks, or up to the end.
std::string http_answer(const std::string &body, fuzz::input *in);

/// The body of the request that calls an operation.
std::string request_body(const operation &called,
                         const std::vector<std::pair<std::string, std::string>> &children);

/// Text that has one reading only: printing characters, of Latin-1 as well.
std::string plain_text(const std::string &bytes);

/// The same as it travels: UTF-8, markup escaped.
std::string escaped(const std::string &text);

} // namespace service
