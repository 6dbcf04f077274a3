// FSMCore's side of a conversation: parameters in both directions, framed by their lengths.
#pragma once

#include "simulator/daemons.h"

request_progress fsmcore_progress(std::string_view received);

void answer_fsmcore(daemon_conversation &conversation);
