// The event stream. Every event is the whole picture, so that a page that lost some has no gap.
#include "page.h"

#include "forward.h"
#include "page_text.h"
#include "text.h"

#include <array>
#include <nlohmann/json.hpp>
#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

namespace {

using Json = nlohmann::ordered_json;

constexpr std::string_view STREAM_HEAD = "HTTP/1.1 200 OK\r\n"
                                         "Content-Type: text/event-stream\r\n"
                                         "Cache-Control: no-store\r\n"
                                         "Connection: close\r\n\r\n";

/// A comment of the protocol, by which a watcher that went away without a word is noticed.
constexpr std::string_view STILL_HERE = ":\n\n";
constexpr int STILL_HERE_MS = 15000;

/// What the daemon was told to do, in words; empty for a proper one.
std::string told_words(const Settings &settings, const Daemon &daemon) {
    const Behaviour &told = settings.behaviours[row_of(daemon)];
    std::string words;
    if (told.refuse) {
        words = "refuses connections";
    } else if (told.close) {
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
    if (told.delay > 0) {
        words.append(words.empty() ? "" : ", ") += "waits " + std::to_string(told.delay) + " ms";
    }
    return words;
}

Json elements_picture(Home &home) {
    const std::scoped_lock held(home.lock);
    Json list = Json::array();
    for (const auto &[name, element] : home.elements) {
        list.push_back({{"key", name},
                        {"status", show_value(element.status)},
                        {"value", show_value(element.value)}});
    }
    return list;
}

Json daemons_picture(Bench &bench) {
    const std::scoped_lock held(bench.journal.lock);
    Json list = Json::array();
    for (const Daemon &daemon : DAEMONS) {
        const Latest &latest = bench.journal.latest[row_of(daemon)];
        Json entries = Json::array();
        for (const Entry &entry : latest.entries) {
            entries.push_back({{"request", entry.request}, {"outcome", entry.outcome}});
        }
        list.push_back({{"key", daemon.key},
                        {"label", daemon.label},
                        {"place", bench.places[row_of(daemon)]},
                        {"told", told_words(bench.settings, daemon)},
                        {"refuses", bench.settings.behaviours[row_of(daemon)].refuse},
                        {"asked", latest.asked},
                        {"latest", entries}});
    }
    return list;
}

std::string picture_event(Bench &bench) {
    const Json picture{{"elements", elements_picture(bench.home)},
                       {"daemons", daemons_picture(bench)}};
    return "data: " + picture.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n\n";
}

/// An event descriptor that the journal knows as long as this lives.
struct Watcher {
    explicit Watcher(Journal &known_by)
        : journal(known_by), descriptor(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
        const std::scoped_lock held(journal.lock);
        journal.watchers.insert(descriptor);
    }

    ~Watcher() {
        {
            const std::scoped_lock held(journal.lock);
            journal.watchers.erase(descriptor);
        }
        close(descriptor);
    }

    Watcher(const Watcher &) = delete;
    Watcher &operator=(const Watcher &) = delete;

    Journal &journal;
    int descriptor;
};

/// What to send next; empty when the stream ends.
std::string next_event(Bench &bench, const Connection &connection, const Watcher &watcher) {
    std::array<pollfd, 3> watched{{{connection.stop_descriptor, POLLIN, 0},
                                   {connection.descriptor, POLLIN, 0},
                                   {watcher.descriptor, POLLIN, 0}}};
    poll(watched.data(), watched.size(), STILL_HERE_MS);
    // A watcher has nothing more to say: what arrives is the end of its connection.
    if (watched[0].revents != 0 || watched[1].revents != 0) {
        return "";
    }
    if (watched[2].revents == 0) {
        return std::string(STILL_HERE);
    }
    eventfd_t count = 0;
    eventfd_read(watcher.descriptor, &count);
    return picture_event(bench);
}

} // namespace

std::string_view page_text() {
    return PAGE_TEXT;
}

void stream_events(Bench &bench, Connection &connection) {
    const Watcher watcher(bench.journal);
    std::string next = std::string(STREAM_HEAD) + picture_event(bench);
    while (!next.empty() && send_all(connection, next)) {
        next = next_event(bench, connection, watcher);
    }
}
