// The journal. Everything happens to an entry under one lock, so that the log, the recording and
// the comparison agree about the order of requests that end at the same time.
#include "journal.h"

#include "report.h"
#include "text.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/eventfd.h>
#include <unistd.h>

namespace {

/// What a recording holds of an entry: its lines as the log prints them with the answer's bytes.
std::string recorded_lines(const Entry &entry) {
    std::string lines = entry_words(entry) + "\n";
    if (entry.answer) {
        lines += bytes_words(*entry.daemon, "->", *entry.answer) + "\n";
    }
    return lines;
}

bool write_whole(int descriptor, std::string_view text) {
    while (!text.empty()) {
        const ssize_t count = write(descriptor, text.data(), text.size());
        if (count < 0 && errno != EINTR) {
            return false;
        }
        text.remove_prefix(count < 0 ? 0 : static_cast<std::size_t>(count));
    }
    return true;
}

} // namespace

std::string request_words(const Entry &entry) {
    return std::string(entry.daemon->label) + ": " + entry.request;
}

std::string entry_words(const Entry &entry) {
    return request_words(entry).append(ARROW).append(entry.outcome);
}

std::string bytes_words(const Daemon &daemon, std::string_view direction, std::string_view bytes) {
    return std::string(daemon.label).append(" ").append(direction) + " " + quote_bytes(bytes);
}

void add_entry(Journal &journal, Entry entry) {
    const std::scoped_lock held(journal.lock);
    print_log({"request",
               entry.daemon->key,
               entry_words(entry),
               {{"request", entry.request}, {"outcome", entry.outcome}}});
    if (journal.recording >= 0 && !write_whole(journal.recording, recorded_lines(entry))) {
        journal.recording_failed = true;
    }
    Latest &latest = journal.latest[row_of(*entry.daemon)];
    latest.asked++;
    latest.entries.push_front({entry.daemon, entry.request, entry.outcome, {}});
    if (latest.entries.size() > LATEST_ENTRIES) {
        latest.entries.pop_back();
    }
    if (journal.keep) {
        journal.entries.push_back(std::move(entry));
    }
    for (const int watcher : journal.watchers) {
        eventfd_write(watcher, 1);
    }
}

bool start_recording(Journal &journal, const std::string &path) {
    journal.recording = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    return journal.recording >= 0;
}

bool end_recording(Journal &journal) {
    const bool closed = journal.recording < 0 || close(journal.recording) == 0;
    journal.recording = -1;
    return closed && !journal.recording_failed;
}
