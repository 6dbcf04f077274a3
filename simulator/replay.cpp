// Replaying. A row answers when it holds the bytes, or says that there were none.
#include "simulator/replay.h"

namespace {

/// What the row's line says after the request; empty when it names the request alone.
std::string_view listed_outcome(const ListedRequest &row, const Entry &entry) {
    const std::string opening = request_words(entry) + std::string(ARROW);
    return row.line.starts_with(opening) ? std::string_view(row.line).substr(opening.size())
                                         : std::string_view();
}

bool can_answer(const ListedRequest &row, const Entry &entry) {
    return is_same_request(row, entry) &&
           (row.answer || listed_outcome(row, entry).starts_with(CLOSED));
}

} // namespace

void replay_answer(Replay &replay, const Daemon &daemon, Exchange &exchange) {
    const Entry entry{&daemon, exchange.request, "", {}};
    replay.used.resize(replay.list.size());
    std::size_t chosen = replay.list.size();
    for (std::size_t i = 0; i < replay.list.size(); ++i) {
        if (can_answer(replay.list[i], entry)) {
            chosen = i;
            if (!replay.used[i]) {
                break;
            }
        }
    }
    if (chosen == replay.list.size()) {
        exchange.outcome += " (not in the recording)";
        return;
    }
    const ListedRequest &row = replay.list[chosen];
    replay.used[chosen] = true;
    exchange.answer = row.answer;
    const std::string_view outcome = listed_outcome(row, entry);
    exchange.outcome =
        outcome.empty() ? std::to_string(row.answer->size()) + " raw bytes" : std::string(outcome);
}
