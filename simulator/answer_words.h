// Describes the bytes of an answer from elsewhere in the words of the log.
#pragma once

#include "simulator/daemons.h"

#include <string>
#include <string_view>

/// The outcome that the log prints for this answer.
std::string answer_words(const daemon_row &daemon, std::string_view answer);
