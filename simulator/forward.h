// Forwards each request to a real controller's sockets or web service, and its answer back.
#pragma once

#include "simulator/options.h"

#include <functional>

struct event_loop;

/// The parts of an address of the form http://HOST[:PORT][/PATH].
struct web_address {
    std::string host;
    std::string port;
    std::string path;
};

/// Parses an address; nothing when it has another form.
std::optional<web_address> read_web_address(const std::string &text);

/// Whether the requests of this daemon go to a real one.
bool is_forwarded(const simulator_settings &settings, const daemon_row &daemon);

/// Replaces the answer by the real one, or by none and the reason, and goes on with `then`, which
/// keeps the conversation.
void forward_request(event_loop &loop, const simulator_settings &settings,
                     daemon_conversation &conversation, std::function<void()> then);
