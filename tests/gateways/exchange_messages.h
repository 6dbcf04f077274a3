// The eight messages of a gateway exchange, numbered in the order in which an exchange can fail.

#pragma once

#include "tests/protocol/gateways.h"

#include <string>

/// A message as an exchange writes it, without colours.
/// @param number 1 open, 2 unknown function, 3 send, 4 receive, 5 no status line, 6 wrong prefix,
///        7 unreadable number, 8 text behind the status line.
/// @param reason text of the system's error, for the messages that show it.
inline std::string exchange_message(const protocol::gateway_row &x, int number,
                                    const std::string &function, const std::string &reason = "") {
    const std::string quote = x.quoting[number - 1] == 'Q' ? "'" : "";
    const std::string shown = quote + function + quote;
    const std::string tag = x.tag;
    const std::string tail_tag = x.tail_tag;
    switch (number) {
    case 1:
        return tag + " error opening socket " + x.daemon + " clientside for function " + shown;
    case 2:
        return x.refusal_tag + " error function " + shown +
               " not supported";
    case 3:
        return tag + " send writing request failed with error '" + reason + "' for function " +
               shown;
    case 4:
        return tag + " recv reading response failed with error '" + reason + "' for function " +
               shown;
    case 5:
        return tag + " strtok parsing 'Response Status: ' response tag failed for function " +
               shown;
    case 6:
        return tag + " error: " + x.daemon + " response not in the " + x.label +
               " format for function " + shown;
    case 7:
        return tail_tag + " error strtol with error '" + reason + "' for function " + shown;
    case 8:
        return tail_tag +
               " strtok parsing '\\n' response tag failed, not a well formed response from " +
               x.tail_daemon + " for function " + shown;
    }
    return "no such message";
}

/// The function by which the tests of all exchanges call one.
inline const char *usual_function(const protocol::gateway_row &x) {
    return x.functions.front().name;
}
