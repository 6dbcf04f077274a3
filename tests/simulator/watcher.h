// Somebody who watches the page's stream, without a browser.
#pragma once

#include "tests/simulator/simulator_process.h"

#include <array>
#include <nlohmann/json.hpp>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace harness {

/// Somebody who watches the stream.
struct event_watcher {
    explicit event_watcher(int port) : descriptor(connect_port(port)) {
        const std::string host = "127.0.0.1:" + std::to_string(port);
        send_bytes(descriptor, "GET /events HTTP/1.1\r\nHost: " + host + "\r\n\r\n");
    }

    ~event_watcher() {
        close(descriptor);
    }

    event_watcher(const event_watcher &) = delete;
    event_watcher &operator=(const event_watcher &) = delete;

    /// The next event; null when none comes in time.
    nlohmann::json next() {
        std::size_t end = 0;
        while ((end = text.find("\n\n")) == std::string::npos) {
            std::array<char, 4096> chunk{};
            pollfd watched{descriptor, POLLIN, 0};
            const ssize_t count = poll(&watched, 1, PATIENCE_MS) > 0
                                      ? recv(descriptor, chunk.data(), chunk.size(), 0)
                                      : -1;
            if (count <= 0) {
                return nullptr;
            }
            text.append(chunk.data(), static_cast<std::size_t>(count));
        }
        const std::size_t start = text.find("data: ") + std::string("data: ").size();
        nlohmann::json event =
            nlohmann::json::parse(text.substr(start, end - start), nullptr, false);
        text.erase(0, end + 2);
        return event;
    }

    int descriptor;
    std::string text;
};

/// The record of this key in a list of them; null when there is none.
inline nlohmann::json find_record(const nlohmann::json &list, std::string_view key) {
    for (const nlohmann::json &record : list) {
        if (record["key"] == key) {
            return record;
        }
    }
    return nullptr;
}

} // namespace harness
