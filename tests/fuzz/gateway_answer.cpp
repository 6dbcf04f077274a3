// A daemon's answer to each of the gateway exchanges, and everything that can go wrong before it.

#include "tests/fuzz/reference.h"
#include "tests/fuzz/target.h"
#include "tests/gateways/exchange_messages.h"
#include "tests/protocol/gateway_calls.h"

#include <cerrno>
#include <cstring>

namespace {

using fuzz::input;
using fuzz::outcome;
using fuzz::peer_script;
using protocol::function_row;
using protocol::gateway_row;

constexpr int ERRORS[] = {ECONNREFUSED, ECONNRESET, EPIPE, ENOENT, EACCES, ETIMEDOUT};

struct expectation {
    int message = 0; ///< number of the exchange's message, 0 for none
    std::string reason = {};
    int status = 0;
    bool is_sent = true;
    bool is_closed = true;
};

/// The code of the exchange's own that goes with a message.
int code_of(const gateway_row &exchange, int message) {
    const int offsets[] = {0, 5, 1, 6, 7, 7, 7, 7, 7};
    return exchange.base + offsets[message];
}

/// A well-formed answer: the tag in any case, a number in any notation, line feeds around it.
std::string proper_answer(const gateway_row &exchange, input *in, int *status) {
    std::string text(in->below(4), '\n');
    for (const char letter : std::string("Response Status: ")) {
        const bool is_letter = (letter | 0x20) >= 'a' && (letter | 0x20) <= 'z';
        text += is_letter && in->below(2) == 1 ? static_cast<char>(letter ^ 0x20) : letter;
    }
    text += exchange.prefix;
    *status = in->number();
    text += std::string(in->below(3), ' ');
    if (*status >= 0) {
        text += in->below(2) == 1 ? "+" : "";
        text += std::string(in->below(5), '0');
    }
    return text + std::to_string(*status) + std::string(in->below(4), '\n');
}

/// The exchange's console lines; a failed connection is reported by the connector first.
std::string lines_of(const gateway_row &exchange, const expectation &wanted,
                     const peer_script &script, const std::string &function, bool verbose) {
    if (wanted.message == 0) {
        return "";
    }
    std::string text;
    if (wanted.message == 1) {
        const bool is_local = exchange.where == harness::family::UNIX_SOCKET;
        const bool has_socket = script.socket_error == 0;
        text =
            fuzz::red(verbose, std::string("utility->make_") + (is_local ? "local" : "internet") +
                                   "tcpclient_socket " + (has_socket ? "connect" : "socket") +
                                   " failed with error '" + wanted.reason + "'");
    }
    return text +
           fuzz::red(verbose, exchange_message(exchange, wanted.message, function, wanted.reason));
}

void check(const gateway_row &exchange, const function_row &request, const peer_script &script,
           const std::string &function, const expectation &wanted, bool verbose) {
    const outcome seen = fuzz::run_product(script, verbose, [&] {
        return protocol::longest_row(exchange).exchange(
            {"gateway.socket", protocol::LOOPBACK_ADDRESS, 4711, function.c_str(),
             protocol::NUMBERED_VALUES});
    });
    fuzz::require_equal("output", seen.output,
                        lines_of(exchange, wanted, script, function, verbose));
    fuzz::require_equal("report", seen.report, "");
    fuzz::require_equal("status", seen.value,
                        wanted.message == 0 ? wanted.status : code_of(exchange, wanted.message));
    const std::string sent = protocol::request_text(
        request, function,
        {std::begin(protocol::NUMBERED_VALUES), std::end(protocol::NUMBERED_VALUES)});
    fuzz::require_equal("request", seen.peer.sent,
                        wanted.is_sent ? sent.substr(0, script.most_sent) : "");
    fuzz::require_equal("sends", seen.peer.sends, wanted.is_sent || wanted.message == 3 ? 1 : 0);
    fuzz::require_equal("receives", seen.peer.receives, wanted.is_sent ? 1 : 0);
    fuzz::require_equal("connection closed", seen.peer.closed, wanted.is_closed ? 1 : 0);
}

/// What an answer means for an exchange, by the second reading of it.
expectation meaning_of(const gateway_row &exchange, const peer_script &script) {
    const std::string delivered = script.answer.substr(0, script.most_received);
    const reference::gateway_answer answer =
        reference::read_gateway_answer(reference::received_text(delivered), exchange.prefix);
    return {.message = answer.failure,
            .reason = answer.reason,
            .status = answer.status,
            .is_closed = answer.failure != 7};
}

enum scene {
    ANY_ANSWER,
    PROPER_ANSWER,
    ANSWER_IN_PIECES,
    SHORT_SEND,
    NO_SOCKET,
    NO_CONNECTION,
    SEND_FAILS,
    RECEIVE_FAILS,
    UNKNOWN_FUNCTION,
    FULL_ANSWER,
    SCENES
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    input in(data, size);
    const gateway_row &exchange = *protocol::GATEWAYS[in.below(std::size(protocol::GATEWAYS))];
    const std::size_t scene = in.below(SCENES);
    const bool verbose = in.below(2) == 1;
    const function_row &request = exchange.functions[in.below(exchange.functions.size())];
    const int error = ERRORS[in.below(std::size(ERRORS))];
    std::string function = in.below(2) == 1 ? protocol::lower(request.name) : request.name;
    peer_script script;
    expectation wanted;
    switch (scene) {
    case PROPER_ANSWER:
        script.answer = proper_answer(exchange, &in, &wanted.status);
        break;
    case NO_SOCKET:
    case NO_CONNECTION:
        (scene == NO_SOCKET ? script.socket_error : script.connect_error) = error;
        wanted = {.message = 1, .reason = strerror(error), .is_sent = false, .is_closed = false};
        break;
    case SEND_FAILS:
        script.send_error = error;
        wanted = {.message = 3, .reason = strerror(error), .is_sent = false};
        break;
    case RECEIVE_FAILS:
        script.receive_error = error;
        wanted = {.message = 4, .reason = strerror(error)};
        break;
    case UNKNOWN_FUNCTION:
        function = in.field();
        for (const function_row &known : exchange.functions) {
            if (reference::equal_ignoring_case(function, known.name)) {
                return 0;
            }
        }
        wanted = {.message = 2, .is_sent = false, .is_closed = false};
        break;
    case SHORT_SEND:
        script.most_sent = 1 + in.byte();
        script.answer = in.rest();
        wanted = meaning_of(exchange, script);
        break;
    case ANSWER_IN_PIECES:
        // What one receive delivers is all that is read.
        script.most_received = 1 + in.byte();
        [[fallthrough]];
    default:
        script.answer = scene == FULL_ANSWER ? in.stretched_rest(1024) : in.rest();
        wanted = meaning_of(exchange, script);
    }
    check(exchange, request, script, function, wanted, verbose);
    return 0;
}
