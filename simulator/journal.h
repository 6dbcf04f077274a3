// The requests and answers: each passes here once, on its way to the log, the recording, the
// comparison at the end and the browser pages.
#pragma once

#include "simulator/daemons.h"

#include <cstdio>
#include <deque>
#include <functional>

struct journal_entry {
    const daemon_row *daemon;
    std::string request;               ///< in words
    std::string outcome;               ///< in words
    std::optional<std::string> answer; ///< its bytes; nothing when it was closed without one
    std::string received = {};         ///< the request's bytes
    std::size_t number = 0;            ///< of all entries, from 1
    long long time = 0;                ///< milliseconds since 1970
};

/// The outcome of a request that got no answer.
inline constexpr std::string_view CLOSED = "closed without an answer";

/// Between a request and its outcome.
inline constexpr std::string_view ARROW = " -> ";

/// So many entries are kept for those who watch, and so many bytes of each direction.
inline constexpr std::size_t WATCHED_ENTRIES = 5000;
inline constexpr std::size_t WATCHED_BYTES = 8192;

/// The outcome of a connection that was refused, for those who watch.
inline constexpr std::string_view REFUSED = "refused";

struct request_journal {
    bool keep = false;                  ///< whether all entries are kept
    std::vector<journal_entry> entries; ///< all of them, in order
    std::deque<journal_entry> watched;  ///< the newest first
    std::size_t count = 0;              ///< of all that were ever watched
    std::vector<std::size_t> asked = std::vector<std::size_t>(DAEMONS.size());
    std::FILE *recording = nullptr;
    std::function<void()> watch; ///< told of each entry
};

/// The line of the log, without the outcome, such as "EIB: SENDEIB... a|b", and with it.
std::string request_words(const journal_entry &entry);
std::string entry_words(const journal_entry &entry);

/// Bytes as the log prints them, such as EIB -> "Response Status: EIBG-000\n".
std::string bytes_words(const daemon_row &daemon, std::string_view direction,
                        std::string_view bytes);

/// Print a line of the log that is no request.
void print_note(const daemon_row &daemon, const std::string &text);
void print_bytes(const daemon_row &daemon, std::string_view direction, std::string_view bytes);

/// Prints the entry, and does with it what else there is to do.
void add_entry(request_journal &journal, journal_entry entry);

/// Shows the entry to those who watch.
void show_entry(request_journal &journal, journal_entry entry);

/// Starts recording into a new file that only its owner can read; false when it cannot be made.
bool start_recording(request_journal &journal, const std::string &path);

/// Ends recording; false when something could not be written.
bool end_recording(request_journal &journal);
