// The text exchange that all gateway daemons share: header lines out, one status line back.
// What differs between gateways is a gateway_profile; each <NAME>Gatewayutil source holds its own.

#pragma once

#include <span>

/// A header line: "<name>: <value>". The value is parameter number `parameter`, counted from 1 in
/// the order of the exchange function's arguments, or `fixed` when that is not null.
struct gateway_line {
    const char *name;
    int parameter;
    const char *fixed = nullptr;
};

/// A function that the daemon knows, with its header lines in wire order.
struct gateway_function {
    const char *name;
    std::span<const gateway_line> lines;
};

/// Everything that makes one gateway's exchange its own.
struct gateway_profile {
    const char *source_tag;                ///< source file and function; opens the messages
    const char *unsupported_tag = nullptr; ///< in the unknown-function message; null: source_tag
    const char *tail_tag = nullptr; ///< in the number and trailing-text messages; null: source_tag
    const char *daemon;             ///< daemon named in the open-failure and format messages
    const char *tail_daemon = nullptr; ///< in the trailing-text message; null: daemon
    const char *prefix;                ///< what must follow "Response Status: "
    const char *format_label;          ///< the answer's format as the format message shows it
    const char *quoting = "QQQQQQQQ";  ///< per message kind: Q shows 'function', B shows it bare
    int code_base;                     ///< hundred-block of the gateway's own codes
    std::span<const gateway_function> functions;
};

// The gateway's own codes, added to code_base.
constexpr int GATEWAY_FUNCTION_NOT_SUPPORTED = 1;
constexpr int GATEWAY_CONNECT_FAILED = 5;
constexpr int GATEWAY_SEND_FAILED = 6;
constexpr int GATEWAY_ANSWER_FAILED = 7;

/// Runs one exchange: checks the function, sends the request, reads the one answer.
/// @param profile the gateway.
/// @param descriptor the connection as its connector returned it; negative when it failed. The
///        exchange owns it. It is left open after an unknown function and an unreadable number.
/// @param function function name, matched ignoring case, sent as it is.
/// @param values the header values in argument order, as many as the profile's lines refer to.
/// @return the daemon's number, or code_base plus one of the codes above after a message.
int run_gateway_exchange(const gateway_profile &profile, int descriptor, const char *function,
                         std::span<const char *const> values);
