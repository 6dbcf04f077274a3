// The page in a browser, at /, and what it requests: the event stream, the bytes of a request, and
// changes. Requests of the page are not logged, recorded or compared.
#pragma once

#include "simulator/bench.h"

inline constexpr const char *PAGE_PATH = "/";
inline constexpr const char *EVENTS_PATH = "/events";
inline constexpr const char *DETAILS_PATH = "/requests/"; ///< the number of the request follows
inline constexpr const char *CONTROL_PATH = "/control";

/// Holds the token in a request that changes something. A page from elsewhere can neither read the
/// token nor send a header of this name.
inline constexpr const char *TOKEN_HEADER = "X-Lumosim-Token";

/// The page may use its own style, script and event stream, and nothing else.
inline constexpr const char *PAGE_HEADERS =
    "Content-Security-Policy: default-src 'none'; style-src 'unsafe-inline'; "
    "script-src 'unsafe-inline'; connect-src 'self'; img-src data:; base-uri 'none'; "
    "frame-ancestors 'none'\r\n"
    "Content-Type: text/html; charset=utf-8\r\n"
    "X-Content-Type-Options: nosniff\r\n";

/// The bytes of an answer to the page with this text, or of its head alone.
std::string write_http(unsigned status, const std::string &body, bool with_body);

inline constexpr const char *STREAM_HEAD = "HTTP/1.1 200 OK\r\n"
                                           "Content-Type: text/event-stream\r\n"
                                           "Cache-Control: no-store\r\n"
                                           "X-Content-Type-Options: nosniff\r\n"
                                           "Connection: close\r\n\r\n";

/// A comment of the stream, which a watcher passes over.
inline constexpr const char *STILL_HERE = ":\n\n";

/// An event of the stream: what there is to see, and the requests after the one that was seen
/// last, which is brought up to date. The first event, after none, holds the commands as well.
std::string picture_event(const test_bench &bench, std::size_t &seen);

/// The bytes of both directions as the page shows them; nothing when the request is not kept.
std::optional<std::string> request_details(const test_bench &bench, std::string_view number);

/// What the page calls an element: its name, or what stands for one that is long.
std::string element_key(const std::string &name);

/// What the daemon was told to do, in words; empty for a proper one.
std::string told_words(const test_bench &bench, const daemon_row &daemon);
