// Lists of requests in the notation of the log, as --record writes them and as people paste them:
// what --expect compares with and --replay answers from.
#pragma once

#include "simulator/journal.h"

struct simulator_settings;

struct listed_request {
    const daemon_row *daemon;
    std::string line;                  ///< as the log prints it, or without its outcome
    std::optional<std::string> answer; ///< the bytes of the answer, where the list holds them
};

/// How specific a row is.
enum class list_fit { NONE, REQUEST, OUTCOME, REQUEST_AND_BYTES, OUTCOME_AND_BYTES };

/// Reads a list. Returns what is wrong with it, empty when nothing is.
std::string read_list(const std::string &path, std::vector<listed_request> &list);

/// Whether the row is about this request, whatever was answered.
bool is_same_request(const listed_request &row, const journal_entry &entry);

list_fit fit(const listed_request &row, const journal_entry &entry);

struct replay_list {
    std::vector<listed_request> list; ///< empty: nothing is replayed
    std::vector<bool> used;
};

/// Replaces the answer by the recorded one. Several for the same request are used in turn, and the
/// last one stays. A request that was not recorded keeps its answer, with a remark.
void replay_answer(replay_list &replay, const daemon_row &daemon, exchange_result &exchange);

/// Compares in order, or in any order: then the lines follow the order of the list. Prints what
/// differs, and on standard error how much; false when anything does.
bool report_comparison(const simulator_settings &settings, const std::vector<listed_request> &list,
                       const std::vector<journal_entry> &entries);
