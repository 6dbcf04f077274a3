// The web service's requests: taken from the input, and checked as they were sent.

#pragma once

#include "tests/fuzz/target.h"
#include "tests/protocol/service_functions.h"

#include <optional>
#include <string>

namespace service {

/// A request as the command line gives it.
struct request {
    const protocol::service_row *called = nullptr;
    std::optional<std::string> url = {};
    bool is_local = false;
    bool any_url = false; ///< any bytes: may be one that cannot be used
    std::string function = {};
    std::string parameters = {};
    int waittime = 0;
    bool verbose = false;
    bool has_proper_count = false;
    bool is_sent = false; ///< when the url can be used
};

request take_request(fuzz::input *in);

/// Checks what arrived of a request, head and message.
void check_sent(const request &wanted, const std::string &sent);

/// A url that would not arrive as it is.
bool must_be_refused(const request &wanted);

} // namespace service
