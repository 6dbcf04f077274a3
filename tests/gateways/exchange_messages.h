// The messages of a gateway exchange, numbered in the order in which an exchange can fail.

#pragma once

#include "tests/protocol/gateways.h"

constexpr int TOO_LONG = 9; ///< a request that is not sent, quoted like the send message

/// A message as an exchange writes it, without colours.
/// @param number 1 open, 2 unknown function, 3 send, 4 receive, 5 no status line, 6 wrong prefix,
///        7 unreadable number, 8 text behind the status line, or TOO_LONG.
/// @param reason text of the system's error, for the messages that show it.
inline std::string exchange_message(const protocol::gateway_row &x, int number,
                                    const std::string &function, const std::string &reason = "") {
    const bool is_quoted = x.quoting[(number == TOO_LONG ? 3 : number) - 1] == 'Q';
    const std::string shown = is_quoted ? "'" + function + "'" : function;
    const std::string texts[] = {
        "no such message",
        x.tag + " error opening socket " + x.daemon + " clientside",
        x.refusal_tag + " error function " + shown + " not supported",
        x.tag + " send writing request failed with error '" + reason + "'",
        x.tag + " recv reading response failed with error '" + reason + "'",
        x.tag + " strtok parsing 'Response Status: ' response tag failed",
        x.tag + " error: " + x.daemon + " response not in the " + x.label + " format",
        x.tail_tag + " error strtol with error '" + reason + "'",
        x.tail_tag + " strtok parsing '\\n' response tag failed, not a well formed response from " +
            x.tail_daemon,
        x.tag + " error request text is longer than 1023 characters",
    };
    return number == 2 ? texts[number] : texts[number] + " for function " + shown;
}
