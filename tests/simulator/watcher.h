// Somebody who watches the page's stream, without a browser.
#pragma once

#include "tests/simulator/simulator_process.h"

#include <cstdio>
#include <memory>
#include <nlohmann/json.hpp>

namespace harness {

struct event_watcher {
    explicit event_watcher(int port) : stream(fdopen(connect_port(port), "r+"), &fclose) {
        fprintf(stream.get(), "GET /events HTTP/1.1\r\nHost: 127.0.0.1:%d\r\n\r\n", port);
        fflush(stream.get());
    }

    /// The next event; null when none comes in time.
    nlohmann::json next() const {
        const std::string tag = "data: ";
        std::string line;
        for (int byte = 0; (byte = getc(stream.get())) != EOF;) {
            line += static_cast<char>(byte);
            if (byte == '\n' && line.starts_with(tag)) {
                return nlohmann::json::parse(line.substr(tag.size()), nullptr, false);
            }
            line.erase(0, byte == '\n' ? line.size() : 0);
        }
        return nullptr;
    }

    std::unique_ptr<FILE, int (*)(FILE *)> stream;
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
