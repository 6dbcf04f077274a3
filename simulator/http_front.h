// The web service's HTTP side: one request per connection, handed to httplib over a stream that
// keeps every byte, so that the trace is exact and the answer can be withheld or replaced.
#pragma once

#include "daemons.h"

#include <cstddef>

inline constexpr const char *SERVICE_PATH = "/cgi-bin/lumows";

/// Largest request body; clients send uploads of about a megabyte.
inline constexpr std::size_t HTTP_BODY_LIMIT = std::size_t{4} * 1024 * 1024;

/// Reads one HTTP request and makes its answer.
Exchange exchange_http(Conversation &conversation);
