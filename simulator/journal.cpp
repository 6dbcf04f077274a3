#include "simulator/journal.h"

#include "simulator/report.h"
#include "simulator/text.h"

#include <chrono>
#include <fcntl.h>

namespace {

/// An upload of a megabyte must not be kept thousands of times.
void cut_bytes(std::string &bytes) {
    if (bytes.size() > WATCHED_BYTES + 1) {
        bytes.resize(WATCHED_BYTES + 1); // the last one tells that there were more
        bytes.shrink_to_fit();
    }
}

} // namespace

std::string request_words(const journal_entry &entry) {
    return std::string(entry.daemon->label) + ": " + entry.request;
}

std::string entry_words(const journal_entry &entry) {
    return request_words(entry).append(ARROW).append(entry.outcome);
}

std::string bytes_words(const daemon_row &daemon, std::string_view direction,
                        std::string_view bytes) {
    return std::string(daemon.label).append(" ").append(direction) + " " + quote_bytes(bytes);
}

void print_note(const daemon_row &daemon, const std::string &text) {
    print_log({"note", daemon.key, std::string(daemon.label) + ": " + text, {{"text", text}}});
}

void print_bytes(const daemon_row &daemon, std::string_view direction, std::string_view bytes) {
    print_log({"bytes",
               daemon.key,
               bytes_words(daemon, direction, bytes),
               {{"direction", std::string(direction)}, {"bytes", bytes_as_characters(bytes)}}});
}

void add_entry(request_journal &journal, journal_entry entry) {
    print_log({"request",
               entry.daemon->key,
               entry_words(entry),
               {{"request", entry.request}, {"outcome", entry.outcome}}});
    if (journal.recording != nullptr) {
        std::fprintf(journal.recording, "%s\n", entry_words(entry).c_str());
        if (entry.answer) {
            const std::string bytes = bytes_words(*entry.daemon, "->", *entry.answer);
            std::fprintf(journal.recording, "%s\n", bytes.c_str());
        }
        std::fflush(journal.recording);
    }
    journal.asked[row_of(*entry.daemon)]++;
    if (journal.keep) {
        journal.entries.push_back(entry);
        journal.entries.back().received.clear();
    }
    show_entry(journal, std::move(entry));
}

void show_entry(request_journal &journal, journal_entry entry) {
    using namespace std::chrono;
    cut_bytes(entry.received);
    if (entry.answer) {
        cut_bytes(*entry.answer);
    }
    entry.number = ++journal.count;
    entry.time = duration_cast<milliseconds>(system_clock::now().time_since_epoch()).count();
    journal.watched.push_front(std::move(entry));
    if (journal.watched.size() > WATCHED_ENTRIES) {
        journal.watched.pop_back();
    }
    if (journal.watch) {
        journal.watch();
    }
}

bool start_recording(request_journal &journal, const std::string &path) {
    const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    journal.recording = file < 0 ? nullptr : fdopen(file, "w");
    return journal.recording != nullptr;
}

bool end_recording(request_journal &journal) {
    if (journal.recording == nullptr) {
        return true;
    }
    const bool failed = std::ferror(journal.recording) != 0;
    return std::fclose(journal.recording) == 0 && !failed;
}
