// The window in a browser: the page at / and the stream of what happens at /events. Those who
// watch are no clients: nothing of theirs is logged, recorded or compared.
#pragma once

#include "bench.h"

#include <string_view>

inline constexpr const char *PAGE_PATH = "/";
inline constexpr const char *EVENTS_PATH = "/events";

/// What the page may do: use its own style, script and event stream, and nothing else.
inline constexpr const char *PAGE_POLICY =
    "default-src 'none'; style-src 'unsafe-inline'; script-src 'unsafe-inline'; "
    "connect-src 'self'; img-src data:; base-uri 'none'; frame-ancestors 'none'";

/// The page.
std::string_view page_text();

/// Sends what there is to see, and again whenever a request changes it, until the watcher leaves
/// or the simulator shuts down.
void stream_events(Bench &bench, Connection &connection);
