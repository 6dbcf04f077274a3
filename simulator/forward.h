// Answers of a real controller: each request goes to its sockets or to its web service, and what
// came back is the answer.
#pragma once

#include "daemons.h"
#include "options.h"

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

/// Replaces the answer by the real one, or by none and the reason.
void forward_request(const Settings &settings, const Conversation &conversation,
                     Exchange &exchange);
