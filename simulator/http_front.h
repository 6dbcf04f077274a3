// The web service's HTTP side: requests are Boost.Beast's to read, whatever is done with their
// bytes and the answer's is the server's, so that the trace is exact and answers can be withheld.
#pragma once

#include <string>

inline constexpr const char *SERVICE_PATH = "/cgi-bin/lumows";

/// Largest request body; clients send uploads of about a megabyte.
inline constexpr std::size_t HTTP_BODY_LIMIT = std::size_t{4} * 1024 * 1024;

/// The bytes of an answer to the page with this text, or of its head alone.
std::string write_http(unsigned status, const std::string &body, bool with_body);
