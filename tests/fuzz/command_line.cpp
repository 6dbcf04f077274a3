// Any words behind the program's name; and any function and list for each gateway and FSMCore.

#include "program.h"
#include "tests/protocol/gateways.h"

using protocol::builder_answer;
using protocol::function_row;
using protocol::gateway_row;
using protocol::words;

namespace {

/// The entries of a -p list: an empty one ends it.
words entries_taken(const std::string &list) {
    words entries = protocol::entries_of(list);
    entries.erase(std::find(entries.begin(), entries.end(), ""), entries.end());
    return entries;
}

void check_any_words(fuzz::input in) {
    words all;
    while (!in.empty()) {
        all.push_back(fuzz::field(&in));
    }
    const fuzz::ending seen = fuzz::run_program(all, "Response Status: EIBG-042\n");
    fuzz::require(seen.sent.empty() || seen.sent.starts_with("Request: ") ||
                      seen.sent.starts_with("POST "),
                  "what is sent is a request");
}

/// What is sent is the function's row with the list's entries; what is not sent has its reason.
void check_gateway_list(const gateway_row &gateway, const function_row &function,
                        const std::string &list) {
    const std::string type = std::string(gateway.name) + "LOCAL";
    const fuzz::ending seen =
        fuzz::run_program({"-t", type, "-s", "s", "-f", function.name, "-p", list},
                          std::string("Response Status: ") + gateway.prefix + "0042\n");
    const words entries = entries_taken(list);
    if (!seen.sent.empty()) {
        words values(function.first_value - 1);
        values.insert(values.end(), entries.begin(), entries.end());
        fuzz::require(seen.sent == request_text(function, function.name, values),
                      "the request is the function's");
        fuzz::require(seen.status == 42, "the status is the daemon's");
    } else if (function.built == builder_answer::REFUSES) {
        fuzz::require(seen.status == 503, "a function without a builder is not supported");
    } else if (entries.size() != count_of(function)) {
        fuzz::require(seen.status == 505, "the wrong number of entries is malformed");
    } else {
        fuzz::require(seen.status == 502 || seen.status == 503 || seen.status == gateway.base + 6,
                      "an entry or the request may be too long");
    }
}

/// FSMCore takes any function and any number of values that its slots hold.
void check_fsmcore_list(const std::string &function, const std::string &list) {
    const fuzz::ending seen =
        fuzz::run_program({"-t", "FSMCORE", "-s", "s", "-f", function, "-p", list},
                          "Response Status: FSMC-042\nParameter Count: 0\n");
    if (seen.sent.empty()) {
        fuzz::require(seen.status == 8, "too much is FSMCore's own failure");
        return;
    }
    const words entries = entries_taken(list);
    std::string wanted =
        "Request: " + function + "\nParameter Count: " + std::to_string(entries.size()) + "\n";
    for (std::size_t i = 0; i < entries.size(); i++) {
        const std::string name = (i < 10 ? "Param00" : "Param0") + std::to_string(i);
        wanted += name + " Length: " + std::to_string(entries[i].size()) + "\n";
        wanted += name + ":\n" + entries[i] + "\n";
    }
    fuzz::require(seen.sent == wanted + "Waittime: 5\n\n", "the request has the list's entries");
    fuzz::require(seen.status == 42, "the status is the daemon's");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    enum { ANY_WORDS, FSMCORE, FIRST_GATEWAY };
    fuzz::input in(reinterpret_cast<const char *>(data), size);
    const std::size_t chosen = fuzz::below(&in, FIRST_GATEWAY + std::size(protocol::GATEWAYS));
    if (chosen == ANY_WORDS) {
        check_any_words(in);
    } else if (chosen == FSMCORE) {
        const std::string function = fuzz::field(&in);
        check_fsmcore_list(function, fuzz::field(&in));
    } else if (is_reachable(protocol::GATEWAYS[chosen - FIRST_GATEWAY])) {
        const gateway_row &gateway = protocol::GATEWAYS[chosen - FIRST_GATEWAY];
        const function_row &function =
            gateway.functions[fuzz::below(&in, gateway.functions.size())];
        std::string list = fuzz::field(&in);
        std::erase(list, '{'); // which marks the places of values in a row
        check_gateway_list(gateway, function, list);
    }
    return 0;
}
