// Lists of requests in the notation of the log, as --record writes them and as people paste them:
// what --expect compares with and --replay answers from.
#pragma once

#include "simulator/journal.h"

#include <string>
#include <vector>

/// One request of a list.
struct ListedRequest {
    const Daemon *daemon;
    std::string line;                  ///< as the log prints it, or without its outcome
    std::optional<std::string> answer; ///< the bytes of the answer, where the list holds them
};

/// How much of a request a row of a list states.
enum class Fit { none, request, outcome, request_and_bytes, outcome_and_bytes };

/// Reads a list. Returns what is wrong with it, empty when nothing is.
std::string read_list(const std::string &path, std::vector<ListedRequest> &list);

/// Whether the row is about this request, whatever was answered.
bool is_same_request(const ListedRequest &row, const Entry &entry);

/// How the row fits the request with its answer.
Fit fit(const ListedRequest &row, const Entry &entry);

struct Replay {
    std::vector<ListedRequest> list; ///< empty: nothing is replayed
    std::vector<bool> used;
};

/// Replaces the answer by the recorded one. Of several to the same request each is used once and
/// the last one stays; a request that was not recorded keeps its answer, with a remark.
void replay_answer(Replay &replay, const Daemon &daemon, Exchange &exchange);
