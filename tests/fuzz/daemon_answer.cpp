// The answer of a daemon: any bytes, or a status line with any number.

#include "program.h"
#include "tests/protocol/gateways.h"

#include <cstdlib>
#include <cstring>
#include <strings.h>

namespace {

/// One exchange, and its failure to read an answer. Without words: the command line has none.
struct exchange {
    protocol::words words;
    std::string request, prefix;
    int failure;
};

exchange exchange_of(const protocol::gateway_row *gateway, fuzz::input *in) {
    if (gateway == nullptr) {
        return {{"-t", "FSMCORE", "-s", "s", "-f", "GETSTATE", "-p", "12"},
                "Request: GETSTATE\nParameter Count: 1\nParam000 Length: 2\nParam000:\n12\n"
                "Waittime: 5\n\n",
                "FSMC-",
                8};
    }
    const protocol::function_row &function =
        gateway->functions[fuzz::below(in, gateway->functions.size())];
    if (!is_reachable(*gateway) || function.built != protocol::builder_answer::SENDS) {
        return {};
    }
    const std::string type = std::string(gateway->name) + "LOCAL";
    return {{"-t", type, "-s", "s", "-f", function.name, "-p", function.sample},
            sample_request(function, function.name),
            gateway->prefix,
            gateway->base + 7};
}

/// Whether the first line of an answer that is received at once gives this number.
bool gives(const std::string &answer, const std::string &prefix, int number) {
    const std::string tag = "Response Status: ";
    const std::string received = answer.substr(0, 1024);
    const char *line = received.c_str() + strspn(received.c_str(), "\n");
    return strncasecmp(line, tag.c_str(), tag.size()) == 0 &&
           strncmp(line + tag.size(), prefix.c_str(), prefix.size()) == 0 &&
           strtol(line + tag.size() + prefix.size(), nullptr, 10) == number;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    fuzz::input in(reinterpret_cast<const char *>(data), size);
    const std::size_t place = fuzz::below(&in, std::size(protocol::GATEWAYS) + 1);
    const bool is_gateway = place < std::size(protocol::GATEWAYS);
    const exchange tried = exchange_of(is_gateway ? &protocol::GATEWAYS[place] : nullptr, &in);
    if (tried.words.empty()) {
        return 0;
    }
    const bool is_proper = fuzz::below(&in, 2) == 1;
    std::string answer(in);
    if (is_proper) {
        int number = 0;
        memcpy(&number, in.data(), std::min(in.size(), sizeof number));
        answer = "Response Status: " + tried.prefix + std::to_string(number) + "\n" +
                 (is_gateway ? "" : "Parameter Count: 0\n");
    }
    const fuzz::ending seen = fuzz::run_program(tried.words, answer);
    fuzz::require(seen.sent == tried.request, "the request is the exchange's");
    const bool is_read = seen.output.find('\n') == seen.output.size() - 1;
    fuzz::require(is_read || !is_proper, "a proper answer is read without a message");
    fuzz::require(is_read || seen.output.find("[lumocmd] ") != std::string::npos,
                  "the message's form");
    // FSMCore's answer is taken in spite of the message about a length line that is too short.
    if (is_read || (!is_gateway && seen.status != tried.failure)) {
        fuzz::require(gives(answer, tried.prefix, seen.status), "the status is the daemon's");
    } else {
        fuzz::require(seen.status == tried.failure, "the status of an answer that cannot be read");
    }
    return 0;
}
