// The text protocol that the field-bus gateways share: a request of named header lines
// ended by an empty line, answered with one status line.
#pragma once

#include "daemons.h"

/// Reads one gateway request, checks it line by line and makes the status answer.
Exchange exchange_gateway(Conversation &conversation);
