// The event stream. Every event has the whole state but for the requests, of which there may be
// thousands: it has those after the last event.
#include "simulator/page.h"

#include "simulator/forward.h"
#include "simulator/operations.h"
#include "simulator/text.h"

#include <algorithm>
#include <boost/algorithm/string/case_conv.hpp>
#include <boost/algorithm/string/replace.hpp>
#include <filesystem>
#include <nlohmann/json.hpp>

namespace {

using json_value = nlohmann::ordered_json;

/// So much of a request is in an event; its bytes are asked for.
constexpr std::size_t EVENT_TEXT_BYTES = 300;

/// How often a daemon does what it was told from now on, in words.
std::string times_words(int told, std::size_t done) {
    const auto left = static_cast<std::size_t>(told) - done;
    return told == FOR_EVER ? "" : left == 1 ? " once" : " " + std::to_string(left) + " times";
}

/// Whether a daemon still does, after so many times, what it was told to do some times.
bool is_due(int told, std::size_t done) {
    return static_cast<std::size_t>(told) > done;
}

std::string statuses_words(const daemon_row &daemon, const std::vector<int> &statuses) {
    std::string words;
    for (const int status : statuses) {
        words += (words.empty() ? "answers " : ", ") + format_status(daemon, status);
    }
    return words;
}

/// How often a daemon has answered a status that it was told.
std::size_t statuses_given(const test_bench &bench, const daemon_row &daemon) {
    const auto given = bench.home.statuses_given.find(daemon.key);
    return given == bench.home.statuses_given.end() ? 0 : given->second;
}

/// How a daemon is, in one word.
const char *daemon_condition(const test_bench &bench, const daemon_row &daemon,
                             const std::string &words) {
    const std::vector<int> &statuses = bench.settings.behaviours[row_of(daemon)].statuses;
    if (words.starts_with("refuses")) {
        return "refusing";
    }
    bool fails = words.starts_with("closes") || words.find(" raw bytes") != std::string::npos;
    if (words.starts_with("answers " + std::string(daemon.prefix))) {
        fails = statuses[std::min(statuses_given(bench, daemon), statuses.size() - 1)] != 0;
    }
    return fails ? "told to fail" : words.find("waits ") != std::string::npos ? "slow" : "healthy";
}

json_value elements_picture(const home_state &home) {
    json_value list = json_value::array();
    for (const auto &[name, element] : home.elements) {
        std::string places;
        for (const auto &[place, linked] : home.links) {
            places += linked == name ? (places.empty() ? "" : ", ") + place : "";
        }
        list.push_back({{"key", element_key(name)},
                        {"status", show_value(element.status)},
                        {"value", show_value(element.value)},
                        {"links", places}});
    }
    return list;
}

json_value daemons_picture(const test_bench &bench) {
    json_value list = json_value::array();
    for (const daemon_row &daemon : DAEMONS) {
        const std::string words = told_words(bench, daemon);
        list.push_back({{"key", daemon.key},
                        {"label", daemon.label},
                        {"place", bench.places[row_of(daemon)]},
                        {"told", words},
                        {"condition", daemon_condition(bench, daemon, words)},
                        {"base", daemon.base},
                        {"asked", bench.journal.asked[row_of(daemon)]}});
    }
    return list;
}

/// Values with which an operation succeeds; for any other child its name does.
using sample_value = std::pair<std::string_view, std::string_view>;
constexpr sample_value SAMPLES[] = {{"sessionid", "DEMO-SESSION"},
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
                                    {"statement-len", "8"}};

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

/// Commands of the client to copy: the functions that it can send to a daemon at this place, each
/// with its command. Those of the gateways have samples in their rows; those of the web service
/// follow from the children of its requests.
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

json_value commands_picture(const test_bench &bench) {
    json_value commands;
    for (const daemon_row &daemon : DAEMONS) {
        commands[std::string(daemon.key)] = client_commands(daemon, bench.places[row_of(daemon)]);
    }
    return commands;
}

/// What became of a request, in one word.
const char *outcome_word(const journal_entry &entry) {
    const std::string &outcome = entry.outcome;
    if (outcome == REFUSED) {
        return "refused";
    }
    if (!entry.answer) {
        return "closed";
    }
    if (outcome.starts_with(format_status(*entry.daemon, 0)) || outcome.starts_with("HTTP 2")) {
        return "done";
    }
    return outcome.ends_with(" raw bytes") ? "raw" : "failed";
}

/// The beginning of a long text, of whole characters.
std::string cut_text(const std::string &text) {
    std::size_t end = std::min(text.size(), EVENT_TEXT_BYTES);
    while (end > 0 && end < text.size() && (text[end] & 0xC0) == 0x80) {
        end--;
    }
    return end == text.size() ? text : text.substr(0, end) + "...";
}

/// The requests after this one, the oldest first.
json_value requests_picture(const request_journal &journal, std::size_t seen) {
    json_value list = json_value::array();
    const std::size_t count = std::min(journal.count - seen, journal.watched.size());
    for (std::size_t i = count; i > 0; --i) {
        const journal_entry &entry = journal.watched[i - 1];
        list.push_back({{"number", entry.number},
                        {"time", entry.time},
                        {"daemon", entry.daemon->key},
                        {"request", cut_text(entry.request)},
                        {"outcome", cut_text(entry.outcome)},
                        {"word", outcome_word(entry)}});
    }
    return list;
}

/// Bytes as they would be written for --answer-raw, a line of them on each line.
std::string byte_lines(std::string_view bytes) {
    const bool kept_all = bytes.size() <= WATCHED_BYTES;
    bytes = bytes.substr(0, WATCHED_BYTES);
    std::string lines;
    while (!bytes.empty()) {
        const std::size_t end = std::min(bytes.find('\n'), bytes.size() - 1) + 1;
        lines += quote_bytes(bytes.substr(0, end)) + "\n";
        bytes.remove_prefix(end);
    }
    return lines + (lines.empty() ? "nothing" : kept_all ? "" : "and more");
}

} // namespace

std::string told_words(const test_bench &bench, const daemon_row &daemon) {
    const simulator_settings &settings = bench.settings;
    const told_behaviour &told = settings.behaviours[row_of(daemon)];
    const auto requests = static_cast<std::size_t>(bench.turns[row_of(daemon)].requests);
    const auto refusals = static_cast<std::size_t>(bench.turns[row_of(daemon)].refusals);
    const std::size_t answered = statuses_given(bench, daemon);
    std::string words;
    if (is_due(told.refusals, refusals)) {
        words = "refuses connections" + times_words(told.refusals, refusals);
    } else if (is_due(told.closes, requests)) {
        words = "closes without an answer" + times_words(told.closes, requests);
    } else if (told.raw) {
        words = "answers " + std::to_string(told.raw->size()) + " raw bytes";
    } else if (!told.statuses.empty() && is_due(told.answers, answered)) {
        words = statuses_words(daemon, told.statuses) + times_words(told.answers, answered);
    } else if (!settings.replay_file.empty()) {
        words = "answers from a recording";
    } else if (is_forwarded(settings, daemon)) {
        words = "asks the real controller";
    }
    if (told.delay > 0 && is_due(told.delays, requests)) {
        words.append(words.empty() ? "" : ", ") +=
            "waits " + std::to_string(told.delay) + " ms" + times_words(told.delays, requests);
    }
    return words;
}

std::string element_key(const std::string &name) {
    return name.size() <= SHOWN_VALUE_BYTES
               ? name
               : show_value(name) + " " + std::to_string(std::hash<std::string>{}(name));
}

std::string picture_event(const test_bench &bench, std::size_t &seen) {
    json_value picture{{"run", bench.home.token},
                       {"elements", elements_picture(bench.home)},
                       {"daemons", daemons_picture(bench)},
                       {"requests", requests_picture(bench.journal, seen)}};
    if (seen == 0) {
        picture["commands"] = commands_picture(bench);
    }
    seen = bench.journal.count;
    return "data: " + picture.dump(-1, ' ', false, json_value::error_handler_t::replace) + "\n\n";
}

std::optional<std::string> request_details(const test_bench &bench, std::string_view number) {
    for (const journal_entry &entry : bench.journal.watched) {
        if (std::to_string(entry.number) == number) {
            return json_value({{"received", byte_lines(entry.received)},
                               {"sent", byte_lines(entry.answer.value_or(""))}})
                .dump();
        }
    }
    return std::nullopt;
}
