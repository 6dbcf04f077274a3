// FSMCore's answer, local and remote, with the list that comes back; the request before it; and
// everything that can go wrong in between.

#include "tests/fuzz/reference.h"
#include "tests/fuzz/target.h"
#include "tests/fsmcore/fsmcore_exchanges.h"

#include <arpa/inet.h>
#include <cerrno>
#include <climits>

namespace {

using fuzz::input;
using fuzz::outcome;
using fuzz::peer_script;

constexpr int ERRORS[] = {ECONNREFUSED, ECONNRESET, EPIPE, ENOENT, EACCES, ETIMEDOUT};

constexpr int UNTOUCHED_COUNT = 4711;
char *untouched_list[1];

/// The values that come back, and what the holders must show.
using value_list = std::vector<std::optional<std::string>>;

struct expectation {
    int message = 0; ///< number of the exchange's message, 0 for none
    std::string reason = {};
    int status = 0;
    int count = 0;
    value_list values = {};
    std::vector<std::string> complaints = {}; ///< before the message
    bool is_sent = true;
    bool is_closed = true;
};

struct call_case {
    const fsmcore_exchange *exchange;
    std::string function;
    std::vector<std::string> values;
    std::size_t holders; ///< 0: both, 1 and 2: one of them, 3: none
    bool verbose;
};

const int CODES[] = {0, 6, 7, 8, 8, 8, 8, 8, 8, 8, 8, 8, 8};

bool is_local(const fsmcore_exchange &exchange) {
    return &exchange == &LOCAL;
}

std::string request_of(const call_case &c) {
    return reference::fsmcore_request(c.function, c.values, c.exchange->waittime_line);
}

void check_holders(const call_case &c, const expectation &wanted, int count, char **list) {
    if (wanted.message != 0 || c.holders != 0) {
        fuzz::require_equal("count holder", count, UNTOUCHED_COUNT);
        fuzz::require(list == untouched_list, "list holder is untouched");
        return;
    }
    fuzz::require_equal("count", count, wanted.count);
    fuzz::require((list == nullptr) == (count <= 0), "there is a list for a count");
    for (std::size_t i = 0; list != nullptr && i < wanted.values.size(); i++) {
        fuzz::require((list[i] != nullptr) == wanted.values[i].has_value(), "value is there");
        fuzz::require_equal("value", list[i] == nullptr ? "" : list[i],
                            wanted.values[i].value_or(""));
    }
}

std::string lines_of(const call_case &c, const expectation &wanted, const peer_script &script) {
    std::string text;
    for (const std::string &complaint : wanted.complaints) {
        text += fuzz::red(c.verbose, complaint);
    }
    if (wanted.message == 1) {
        text += fuzz::red(c.verbose, std::string("utility->make_") +
                                         (is_local(*c.exchange) ? "local" : "internet") +
                                         "tcpclient_socket " +
                                         (script.socket_error == 0 ? "connect" : "socket") +
                                         " failed with error '" + wanted.reason + "'");
    }
    if (wanted.message != 0) {
        text += fuzz::red(c.verbose,
                          fsmcore_message(*c.exchange, wanted.message, c.function, wanted.reason));
    }
    return text;
}

void check(const call_case &c, const peer_script &script, const expectation &wanted) {
    const value_slots slots(c.values);
    const outcome seen = fuzz::run_product(script, c.verbose, [&] {
        int count = UNTOUCHED_COUNT;
        char **list = untouched_list;
        const int status = c.exchange->call(
            "fsmcore.socket", "4711", c.function.c_str(), slots,
            {c.holders % 2 == 0 ? &count : nullptr, c.holders < 2 ? &list : nullptr});
        check_holders(c, wanted, count, list);
        return status;
    });
    const std::string request = request_of(c);
    if (request.size() > 1023) {
        fuzz::require_equal("output", seen.output,
                            fuzz::red(c.verbose, std::string(c.exchange->tag) +
                                                     " error request text is longer than 1023 "
                                                     "characters for function '" +
                                                     c.function + "'"));
        fuzz::require_equal("status", seen.value, 8);
        fuzz::require_equal("connections", seen.peer.opened, 0);
        return;
    }
    fuzz::require_equal("output", seen.output, lines_of(c, wanted, script));
    fuzz::require_equal("report", seen.report, "");
    fuzz::require_equal("status", seen.value,
                        wanted.message == 0 ? wanted.status : CODES[wanted.message]);
    fuzz::require_equal("request", seen.peer.sent,
                        wanted.is_sent ? request.substr(0, script.most_sent) : "");
    fuzz::require_equal("sends", seen.peer.sends, wanted.is_sent || wanted.message == 2 ? 1 : 0);
    fuzz::require_equal("receives", seen.peer.receives, wanted.is_sent ? 1 : 0);
    fuzz::require_equal("connection closed", seen.peer.closed, wanted.is_closed ? 1 : 0);
}

expectation meaning_of(const peer_script &script) {
    const std::string delivered = script.answer.substr(0, script.most_received);
    const reference::fsmcore_answer answer =
        reference::read_fsmcore_answer(reference::received_text(delivered));
    return {.message = answer.failure,
            .reason = answer.reason,
            .status = answer.status,
            .count = answer.count,
            .values = answer.values,
            .complaints = answer.complaints,
            .is_closed = answer.failure != 6};
}

/// A well-formed answer with its values; one that one receive cannot take is not asked for.
std::string proper_answer(input *in, expectation *wanted) {
    wanted->status = in->number();
    const std::size_t count = in->below(12);
    wanted->count = static_cast<int>(count);
    std::string text = "response status: FSMC-" + std::to_string(wanted->status) + "\n" +
                       std::string(in->below(3), '\n') +
                       "PARAMETER COUNT: " + std::to_string(count) + "\n";
    for (std::size_t i = 0; i < count; i++) {
        std::string value = in->field();
        std::erase(value, '\n');
        text += "Param" + std::to_string(100 + i) + " Length: " + std::to_string(value.size()) +
                "\n" + std::string(in->below(3), '\n');
        if (value.empty()) {
            wanted->values.emplace_back();
        } else {
            text += "Param" + std::to_string(100 + i) + ":\n" + value + "\n";
            wanted->values.emplace_back(value);
        }
    }
    return text;
}

/// The remote exchange's own checks of where to go.
void check_target(input in) {
    const fuzz::exact_text address(in.field());
    const fuzz::exact_text port(in.field());
    const reference::number number = reference::read_number(port.get());
    in_addr parsed = {};
    const std::string tag = "FSMCoreutil->fsmcore_m2mrequeststatic ";
    std::string wanted;
    if (inet_aton(address.get(), &parsed) == 0) {
        wanted = tag + "error hostip parameter '" + address.get() +
                 "' is not in a valid numbers-and-dots notation";
    } else if (!number.is_valid || number.value <= 1024) {
        wanted =
            tag + "strtol error on converting '" + port.get() + "' into numeric remote port number";
    }
    peer_script script;
    script.answer = "Response Status: FSMC-003\nParameter Count: 0\n";
    const outcome seen = fuzz::run_product(script, false, [&] {
        return fsmcore_m2mrequeststatic(address.get(), port.get(), "F", 0, nullptr, nullptr,
                                        nullptr);
    });
    fuzz::require_equal("output", seen.output, wanted.empty() ? "" : fuzz::red(false, wanted));
    fuzz::require_equal("status", seen.value, wanted.empty() ? 3 : 6);
    fuzz::require_equal("connections", seen.peer.opened, wanted.empty() ? 1 : 0);
    if (wanted.empty()) {
        sockaddr_in to = {};
        to.sin_family = AF_INET;
        to.sin_port = htons(static_cast<in_port_t>(number.value));
        to.sin_addr = parsed;
        fuzz::require_equal("address", seen.peer.address,
                            std::string(reinterpret_cast<const char *>(&to), sizeof to));
    }
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
    TARGET,
    FULL_ANSWER,
    SCENES
};

call_case take_case(input *in) {
    call_case c = {
        FSMCORE_EXCHANGES[in->below(2)], in->field(), {}, in->below(4), in->below(2) == 1};
    for (std::size_t left = in->below(8); left != 0; left--) {
        c.values.push_back(in->field().substr(0, 511));
    }
    return c;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    input in(data, size);
    const std::size_t scene = in.below(SCENES);
    const int error = ERRORS[in.below(std::size(ERRORS))];
    if (scene == TARGET) {
        check_target(in);
        return 0;
    }
    const call_case c = take_case(&in);
    peer_script script;
    expectation wanted;
    switch (scene) {
    case PROPER_ANSWER:
        script.answer = proper_answer(&in, &wanted);
        if (script.answer.size() > 1024) {
            return 0;
        }
        break;
    case NO_SOCKET:
    case NO_CONNECTION:
        (scene == NO_SOCKET ? script.socket_error : script.connect_error) = error;
        wanted = {.message = 1, .reason = strerror(error), .is_sent = false, .is_closed = false};
        break;
    case SEND_FAILS:
        script.send_error = error;
        wanted = {.message = 2, .reason = strerror(error), .is_sent = false};
        break;
    case RECEIVE_FAILS:
        script.receive_error = error;
        wanted = {.message = 3, .reason = strerror(error)};
        break;
    default:
        script.most_sent = scene == SHORT_SEND ? 1U + in.byte() : SIZE_MAX;
        // What one receive delivers is all that is read.
        script.most_received = scene == ANSWER_IN_PIECES ? 1U + in.byte() : SIZE_MAX;
        script.answer = scene == FULL_ANSWER ? in.stretched_rest(1024) : in.rest();
        wanted = meaning_of(script);
    }
    if (request_of(c).size() > 1023) {
        wanted = {.message = 4}; // nothing is asked, so nothing comes back
    }
    check(c, script, wanted);
    return 0;
}
