#include "tests/harness/script.h"

#include <cstdint>
#include <sys/socket.h>

namespace harness {

step expect(std::string bytes) {
    return {step_kind::EXPECT, std::move(bytes)};
}
step collect_until(std::string end) {
    return {step_kind::COLLECT, std::move(end)};
}
step await_bytes() {
    return {step_kind::AWAIT};
}
step await_end() {
    return {step_kind::AWAIT_END};
}
step ignore() {
    return {step_kind::IGNORE};
}
step reply(std::string bytes, std::size_t times) {
    return {step_kind::SEND, std::move(bytes), times};
}
step endless(std::string bytes) {
    return {step_kind::SEND, std::move(bytes), SIZE_MAX};
}
step drip(std::string bytes) {
    return {step_kind::DRIP, std::move(bytes)};
}
step close_connection() {
    return {step_kind::CLOSE};
}
step half_close() {
    return {step_kind::HALF_CLOSE};
}
step reset() {
    return {step_kind::RESET};
}
step never_accept() {
    return {step_kind::NEVER_ACCEPT};
}

void send_step(int connection, const step &sending) {
    const std::size_t at_once = sending.kind == step_kind::DRIP ? 1 : 65536;
    std::string waiting;
    for (std::size_t i = 0; i < sending.times; i++) {
        waiting += sending.bytes;
        while (waiting.size() >= at_once || (i + 1 == sending.times && !waiting.empty())) {
            const std::size_t length = std::min(at_once, waiting.size());
            const ssize_t sent = send(connection, waiting.data(), length, MSG_NOSIGNAL);
            if (sent < 0) {
                return;
            }
            waiting.erase(0, static_cast<std::size_t>(sent));
        }
    }
}

} // namespace harness
