// The functions of the gateways have samples in their rows; those of the web service follow from
// the children of its requests.
#include "simulator/operations.h"
#include "simulator/page.h"

#include <algorithm>
#include <boost/algorithm/string/case_conv.hpp>
#include <boost/algorithm/string/replace.hpp>
#include <filesystem>

namespace {

/// Values with which an operation succeeds; for any other child its name does.
using sample_value = std::pair<std::string_view, std::string_view>;
constexpr sample_value SAMPLES[] = {
    {"sessionid", "DEMO-SESSION"},
    {"idobject", "LIVING-LAMP"},
    {"operation", "ON"},
    {"payload", "80"},
    {"currentvalue", "22.5"},
    {"user", "demo"},
    {"pass", "demo"},
    {"username", "demo"},
    {"pin", "1234"},
    {"count", "10"},
    {"port", "8080"},
    {"remoteip", "10.0.0.2"},
    {"remoteport", "80"},
    {"statement", "SELECT 1"},
    {"statement-len", "8"},
};

/// Children that the client fills itself or leaves out.
constexpr std::string_view UNASKED[] = {"waittime", "retrivefromdevice", "idobjects", "callsource"};

std::string parameters_of(const service_operation &operation) {
    std::string list;
    for (const std::string_view child : child_names(operation.request)) {
        if (std::ranges::find(UNASKED, child) == std::end(UNASKED)) {
            const auto *sample = std::ranges::find(SAMPLES, child, &sample_value::first);
            list.append(list.empty() ? "" : "|");
            list.append(sample == std::end(SAMPLES) ? child : sample->second);
        }
    }
    return list;
}

/// The name by which the client knows an operation, such as SERVICE_TEST for service-test.
std::string client_name(std::string_view operation) {
    std::string name = boost::to_upper_copy(std::string(operation));
    std::ranges::replace(name, '-', '_');
    return name;
}

/// A word of a command for any shell.
std::string quote_word(const std::string &word) {
    return "'" + boost::replace_all_copy(word, "'", "'\\''") + "'";
}

} // namespace

std::vector<std::pair<std::string, std::string>> client_commands(const daemon_row &daemon,
                                                                 const std::string &place) {
    std::vector<std::pair<std::string, std::string>> samples;
    for (const gateway_request &request : daemon.requests) {
        if (!request.sample.empty()) {
            samples.emplace_back(request.function, request.sample);
        }
    }
    const bool service = daemon.socket_file.empty();
    for (const service_operation &operation : OPERATIONS) {
        if (service) {
            samples.emplace_back(client_name(operation.name), parameters_of(operation));
        }
    }
    if (samples.empty()) { // the core knows every name
        samples.emplace_back("RUNFUNCTION", "first|second");
    }
    const std::string start =
        "lumocmd -v ON -t " + std::string(daemon.client_type) +
        (service ? " -u " + place : " -s " + quote_word(std::filesystem::absolute(place))) + " -f ";
    for (auto &[function, sample] : samples) {
        std::string command = start + function;
        if (!sample.empty()) {
            command.append(" -p ").append(quote_word(sample));
        }
        sample = command;
    }
    return samples;
}
