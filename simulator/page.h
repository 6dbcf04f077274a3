// The page in a browser, at /, and its event stream, at /events. Requests of the page are not
// logged, recorded or compared.
#pragma once

#include "simulator/bench.h"

#include <string_view>

inline constexpr const char *PAGE_PATH = "/";
inline constexpr const char *EVENTS_PATH = "/events";

/// What the page may do: use its own style, script and event stream, and nothing else.
inline constexpr const char *PAGE_POLICY =
    "default-src 'none'; style-src 'unsafe-inline'; script-src 'unsafe-inline'; "
    "connect-src 'self'; img-src data:; base-uri 'none'; frame-ancestors 'none'";

/// The page.
std::string_view page_text();

inline constexpr const char *STREAM_HEAD = "HTTP/1.1 200 OK\r\n"
                                           "Content-Type: text/event-stream\r\n"
                                           "Cache-Control: no-store\r\n"
                                           "Connection: close\r\n\r\n";

/// A comment of the stream, which a watcher passes over.
inline constexpr const char *STILL_HERE = ":\n\n";

/// An event of the stream: what there is to see.
std::string picture_event(const test_bench &bench);
