// Parameter lists: split alone, and through every request builder up to the request that is sent
// and the status that comes back.

#include "front/memory.h"
#include "front/utility.h"
#include "fsmcore/fsmcorelocal_request.h"
#include "tests/fuzz/reference.h"
#include "tests/fuzz/target.h"
#include "tests/gateways/exchange_messages.h"
#include "tests/protocol/gateway_calls.h"

#include <algorithm>
#include <cstring>
#include <netinet/in.h>
#include <sys/un.h>

namespace {

using fuzz::input;
using fuzz::outcome;
using fuzz::peer_script;
using fuzz::red;
using fuzz::require;
using fuzz::require_equal;
using protocol::function_row;
using protocol::gateway_row;

constexpr int PORT = 70000; ///< only the low 16 bits are used
constexpr std::size_t LONGEST_REQUEST = 1023;

void check_split(input in) {
    const bool is_null = in.below(2) == 1;
    const fuzz::exact_text list(in.field());
    const std::vector<std::string> wanted = reference::items_of(is_null ? "" : list.get());
    const outcome seen = fuzz::run_product({}, false, [&] {
        int count = -1;
        char **items = nullptr;
        const int result = parse_parameters(is_null ? nullptr : list.get(), &count, &items);
        require_equal("count", count, static_cast<long>(wanted.size()));
        require((items == nullptr) == (is_null || *list.get() == '\0'), "there is an array");
        for (std::size_t i = 0; items != nullptr && i < wanted.size(); i++) {
            require_equal("item", items[i], wanted[i]);
        }
        return result;
    });
    require_equal("result", seen.value, 0);
    require_equal("output", seen.output, "");
}

/// One request through a builder, and what it must come to.
struct request {
    std::string path;
    std::string function;
    std::string parameters;
    bool verbose;
};

struct expectation {
    int status = 0;
    std::string message = {};
    bool is_connected = false;
    std::string sent = {};
    bool is_closed = false;
};

/// Where the connection must go.
std::string address_of(harness::family where, const std::string &path) {
    if (where == harness::family::LOOPBACK) {
        sockaddr_in to = {};
        to.sin_family = AF_INET;
        to.sin_port = htons(static_cast<in_port_t>(PORT - 65536));
        to.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        return {reinterpret_cast<const char *>(&to), sizeof to};
    }
    const sa_family_t local = AF_UNIX;
    return std::string(reinterpret_cast<const char *>(&local), sizeof local) + path.substr(0, 107);
}

void check(const request &asked, harness::family where, const peer_script &script,
           const expectation &wanted, const std::function<int()> &call) {
    const outcome seen = fuzz::run_product(script, asked.verbose, call);
    require_equal("output", seen.output,
                  wanted.message.empty() ? "" : red(asked.verbose, wanted.message));
    require_equal("report", seen.report, "");
    require_equal("status", seen.value, wanted.status);
    require_equal("connections", seen.peer.opened, wanted.is_connected ? 1 : 0);
    require_equal("request", seen.peer.sent, wanted.sent);
    require_equal("connection closed", seen.peer.closed, wanted.is_closed ? 1 : 0);
    if (wanted.is_connected) {
        require_equal("address", seen.peer.address, address_of(where, asked.path));
    }
}

/// The lines of a request with the items in the places of {1}, {2}, ...
std::string lines_with(const function_row &function, std::vector<std::string> items) {
    items.insert(items.begin(), function.first_value - 1, "");
    std::string text;
    for (const std::string &line : reference::lines_of(function.lines)) {
        const std::size_t mark = line.find('{');
        text += line.substr(0, mark);
        text += mark == std::string::npos ? "" : items[std::stoul(line.substr(mark + 1)) - 1];
        text += "\n";
    }
    return text + "\n";
}

expectation exchange_expected(const gateway_row &gateway, const function_row &function,
                              const request &asked, const std::vector<std::string> &items,
                              const std::string &answer) {
    const std::string text = "Request: " + asked.function + "\n" + lines_with(function, items);
    expectation wanted = {.is_connected = true, .is_closed = true};
    if (text.size() > LONGEST_REQUEST) {
        const std::string quote = gateway.quoting[2] == 'Q' ? "'" : "";
        wanted.status = gateway.base + 6;
        wanted.message = std::string(gateway.tag) +
                         " error request text is longer than 1023 characters for function " +
                         quote + asked.function + quote;
        return wanted;
    }
    wanted.sent = text;
    const reference::gateway_answer meaning =
        reference::read_gateway_answer(reference::received_text(answer), gateway.prefix);
    wanted.status = meaning.status;
    if (meaning.failure != 0) {
        wanted.status = gateway.base + 7;
        wanted.message = exchange_message(gateway, meaning.failure, asked.function, meaning.reason);
        wanted.is_closed = meaning.failure != 7;
    }
    return wanted;
}

expectation expected(const gateway_row &gateway, const request &asked, const std::string &answer) {
    const function_row *function = nullptr;
    for (const function_row &known : gateway.functions) {
        if (known.built != protocol::builder_answer::REFUSES &&
            reference::equal_ignoring_case(asked.function, known.name)) {
            function = &known;
        }
    }
    if (function == nullptr) {
        return {.status = 503};
    }
    const std::vector<std::string> items = reference::items_of(asked.parameters);
    if (items.size() != protocol::count_of(*function)) {
        return {.status = 505, .message = protocol::count_message(gateway, *function)};
    }
    const bool is_lintronic = gateway.name == std::string("LINTRONIC");
    if (is_lintronic && items[1].size() != 2) {
        return {.status = 502,
                .message = "localclientutil->make_lintroniclocal_request error Device is not in "
                           "2-digit-zero-filled format"};
    }
    if (is_lintronic && items[2].size() != 3) {
        return {.status = 502,
                .message = "localclientutil->make_lintroniclocal_request error Command is not in "
                           "3-digit-zero-filled format"};
    }
    if (function->built == protocol::builder_answer::COUNTS_AND_REFUSES) {
        return {.status = 503};
    }
    return exchange_expected(gateway, *function, asked, items, answer);
}

request take_request(input *in) {
    return {std::string(in->byte(), 'p'), "", "", in->below(2) == 1};
}

/// Where a builder is told to go.
struct point {
    std::string path;
    int port;
};

void check_builder(input in) {
    const gateway_row &gateway = *protocol::GATEWAYS[in.below(std::size(protocol::GATEWAYS))];
    const function_row &function = gateway.functions[in.below(gateway.functions.size())];
    request asked = take_request(&in);
    const std::size_t naming = in.below(4);
    asked.function = naming == 0   ? in.field()
                     : naming == 1 ? protocol::lower(function.name)
                                   : function.name;
    asked.parameters = in.field();
    peer_script script;
    script.answer = in.rest();
    if (script.answer.empty()) {
        script.answer = std::string("Response Status: ") + gateway.prefix + "0042\n";
    }
    check(asked, gateway.where, script, expected(gateway, asked, script.answer), [&] {
        return protocol::build(gateway, point{asked.path, PORT}, asked.function.c_str(),
                               asked.parameters.c_str());
    });
}

/// FSMCore's builder takes any function and any number of values that its slots hold.
void check_fsmcore_builder(input in) {
    request asked = take_request(&in);
    asked.function = in.field();
    asked.parameters = in.field();
    const std::vector<std::string> items = reference::items_of(asked.parameters);
    const std::string text = reference::fsmcore_request(asked.function, items, "Waittime: 5\n");
    const auto too_long = std::find_if(items.begin(), items.end(),
                                       [](const std::string &item) { return item.size() > 511; });
    const std::string builder = "localclientutil->make_fsmcorelocal_request error ";
    const std::string end = " for function '" + asked.function + "'";
    expectation wanted = {.status = 8};
    if (items.size() > 48) {
        wanted.message = builder + "more than 48 parameters" + end;
    } else if (too_long != items.end()) {
        wanted.message = builder + "value of parameter " +
                         std::to_string(too_long - items.begin() + 1) +
                         " is longer than 511 characters" + end;
    } else if (text.size() > LONGEST_REQUEST) {
        wanted.message = "FSMCoreutil->fsmcore_requeststatic error request text is longer than "
                         "1023 characters" +
                         end;
    } else {
        wanted = {.status = 42, .is_connected = true, .sent = text, .is_closed = true};
    }
    peer_script script;
    script.answer = "Response Status: FSMC-042\nParameter Count: 0\n";
    check(asked, harness::family::UNIX_SOCKET, script, wanted, [&] {
        return make_fsmcorelocal_request(asked.path.c_str(), asked.function.c_str(),
                                         asked.parameters.c_str());
    });
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    void (*const checks[])(input) = {check_split, check_builder, check_builder,
                                     check_fsmcore_builder};
    input in(data, size);
    checks[in.below(std::size(checks))](in);
    return 0;
}
