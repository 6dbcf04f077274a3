// The gateways' side of a conversation: a request is a line that names it, "Name: value" lines and
// an empty line; the answer is one status line.
#pragma once

#include "simulator/daemons.h"

request_progress gateway_progress(std::string_view received);

void answer_gateway(daemon_conversation &conversation);

/// What is wrong with a place of home_state::links, such as "eib 1/1/3"; empty when nothing is.
std::string complain_about_link(std::string_view link);
