// Answers of a real controller: each request goes to its sockets or to its web service, and what
// came back is the answer.
#pragma once

#include "simulator/options.h"

#include <functional>

struct Loop;

/// An address of the form http://HOST[:PORT][/PATH], taken apart.
struct WebAddress {
    std::string host;
    std::string port;
    std::string path;
};

/// Takes an address apart; nothing when it has another form.
std::optional<WebAddress> read_web_address(const std::string &text);

/// Whether the requests of this daemon go to a real one.
bool is_forwarded(const Settings &settings, const Daemon &daemon);

/// Replaces the answer by the real one, or by none and the reason, and goes on with `then`, which
/// keeps the conversation.
void forward_request(Loop &loop, const Settings &settings, Conversation &conversation,
                     std::function<void()> then);
