// Answers from a list that was recorded before.
#pragma once

#include "simulator/request_list.h"

#include <vector>

struct Replay {
    std::vector<ListedRequest> list; ///< empty: nothing is replayed
    std::vector<bool> used;
};

/// Replaces the answer by the recorded one. Of several to the same request each is used once and
/// the last one stays; a request that was not recorded keeps its answer, with a remark.
void replay_answer(Replay &replay, const Daemon &daemon, Exchange &exchange);
