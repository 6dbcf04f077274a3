// What a scripted daemon does, step by step.

#pragma once

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

namespace harness {

enum class step_kind {
    EXPECT,      ///< receive exactly these bytes
    COLLECT,     ///< receive until these bytes have come, keep everything for received()
    AWAIT,       ///< wait until bytes have come, leave them unreceived
    AWAIT_END,   ///< wait until the test calls go_on() or finish()
    IGNORE,      ///< leave everything unreceived until the client or the test goes away
    SEND,        ///< send these bytes
    DRIP,        ///< send these bytes one per write
    CLOSE,       ///< close the connection
    HALF_CLOSE,  ///< end the sending side, keep receiving
    RESET,       ///< close so that the client sees a reset
    NEVER_ACCEPT ///< as the only step: the queue is full, and nobody empties it
};

struct step {
    step_kind kind;
    std::string bytes = {};
    std::size_t times = 1; ///< how often they are sent; they never stand in memory as a whole
};

// The vocabulary of scripts.
step expect(std::string bytes);
step collect_until(std::string end);
step await_bytes();
step await_end();
step ignore();
step reply(std::string bytes, std::size_t times = 1);
step endless(std::string bytes);
step drip(std::string bytes);
step close_connection();
step half_close();
step reset();
step never_accept();

using script = std::vector<step>;

/// Sends the bytes of a step, or until the client goes away.
void send_step(int connection, const step &sending);

} // namespace harness
