// The event stream. Every event has the whole state, so that a page that lost some has no gap.
#include "simulator/page.h"

#include "page_text.h"
#include "simulator/forward.h"
#include "simulator/text.h"

#include <nlohmann/json.hpp>

namespace {

using json_value = nlohmann::ordered_json;

/// What the daemon was told to do, in words; empty for a proper one.
std::string told_words(const test_bench &bench, const daemon_row &daemon) {
    const simulator_settings &settings = bench.settings;
    const told_behaviour &told = settings.behaviours[row_of(daemon)];
    const daemon_turns &turns = bench.turns[row_of(daemon)];
    std::string words;
    if (told.refusals > turns.refusals) {
        words = "refuses connections";
    } else if (told.closes > turns.requests) {
        words = CLOSED;
    } else if (told.raw) {
        words = "answers " + std::to_string(told.raw->size()) + " raw bytes";
    } else if (!told.statuses.empty()) {
        for (const int status : told.statuses) {
            words += (words.empty() ? "answers " : ", ") + format_status(daemon, status);
        }
    } else if (!settings.replay_file.empty()) {
        words = "answers from a recording";
    } else if (is_forwarded(settings, daemon)) {
        words = "asks the real controller";
    }
    if (told.delay > 0 && told.delays > turns.requests) {
        words.append(words.empty() ? "" : ", ") += "waits " + std::to_string(told.delay) + " ms";
    }
    return words;
}

json_value elements_picture(const home_state &home) {
    json_value list = json_value::array();
    for (const auto &[name, element] : home.elements) {
        list.push_back({{"key", name},
                        {"status", show_value(element.status)},
                        {"value", show_value(element.value)}});
    }
    return list;
}

json_value daemons_picture(const test_bench &bench) {
    json_value list = json_value::array();
    for (const daemon_row &daemon : DAEMONS) {
        const latest_requests &latest = bench.journal.latest[row_of(daemon)];
        const bool refuses = bench.settings.behaviours[row_of(daemon)].refusals >
                             bench.turns[row_of(daemon)].refusals;
        json_value entries = json_value::array();
        for (const journal_entry &entry : latest.entries) {
            entries.push_back({{"request", entry.request}, {"outcome", entry.outcome}});
        }
        list.push_back({{"key", daemon.key},
                        {"label", daemon.label},
                        {"place", bench.places[row_of(daemon)]},
                        {"told", told_words(bench, daemon)},
                        {"refuses", refuses},
                        {"asked", latest.asked},
                        {"latest", entries}});
    }
    return list;
}

} // namespace

std::string_view page_text() {
    return PAGE_TEXT;
}

std::string picture_event(const test_bench &bench) {
    const json_value picture{{"elements", elements_picture(bench.home)},
                             {"daemons", daemons_picture(bench)}};
    return "data: " + picture.dump(-1, ' ', false, json_value::error_handler_t::replace) + "\n\n";
}
