// The FSMCore protocol: a request with counted parameters, each framed by its length, answered
// with a status and parameters framed the same way.
#pragma once

#include "daemons.h"

/// Reads one FSMCore request by its lengths and makes an answer that returns its parameters.
Exchange exchange_fsmcore(Conversation &conversation);
