// The web service's HTTP side: requests are Boost.Beast's to read, whatever is done with their
// bytes and the answer's is the server's, so that the trace is exact and answers can be withheld.
#pragma once

#include "simulator/daemons.h"

#include <cstddef>

inline constexpr const char *SERVICE_PATH = "/cgi-bin/lumows";

/// Largest request body; clients send uploads of about a megabyte.
inline constexpr std::size_t HTTP_BODY_LIMIT = std::size_t{4} * 1024 * 1024;

/// Ends the head of an answer.
inline constexpr std::string_view HEAD_END = "\r\n\r\n";

/// The bytes of an answer to the page with this text.
std::string write_http(unsigned status, const std::string &body);

/// How far a request has come.
request_progress http_progress(std::string_view received);

/// Makes the answer to an HTTP request.
void answer_http(daemon_conversation &conversation);
