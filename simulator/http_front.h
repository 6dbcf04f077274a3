// The web service's HTTP side: requests are Boost.Beast's to read, whatever is done with their
// bytes and the answer's is the server's, so that the trace is exact and answers can be withheld.
#pragma once

#include "simulator/daemons.h"

#include <cstddef>

inline constexpr const char *SERVICE_PATH = "/cgi-bin/lumows";

/// Largest request body; clients send uploads of about a megabyte.
inline constexpr std::size_t HTTP_BODY_LIMIT = std::size_t{4} * 1024 * 1024;

/// The bytes of an answer with this text.
std::string write_http(unsigned status, const std::string &body);

/// How far a request has come.
request_progress http_progress(std::string_view received);

/// Makes the answer to an HTTP request.
void answer_http(daemon_conversation &conversation);
