// Owns standard output. Failed writes are ignored: the simulator goes on serving when the reader of
// its log has gone.
#include "simulator/report.h"

#include <array>
#include <cstdio>
#include <ctime>
#include <fstream>
#include <nlohmann/json.hpp>

namespace {

log_format_kind chosen_format = log_format_kind::TEXT;
std::FILE *log_file = stdout;

/// The time in UTC, such as 2026-11-21T08:15:00.250Z.
std::string moment() {
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    std::tm parts{};
    gmtime_r(&now.tv_sec, &parts);
    std::array<char, 32> second{};
    std::strftime(second.data(), second.size(), "%FT%T.", &parts);
    // Four digits, of which the first one is no part of the milliseconds.
    return second.data() + std::to_string(1000 + now.tv_nsec / 1000000).substr(1) + "Z";
}

std::string json_line(const log_line &line) {
    nlohmann::ordered_json object{{"time", moment()}, {"event", line.event}};
    if (!line.daemon.empty()) {
        object["daemon"] = line.daemon;
    }
    for (const auto &[name, value] : line.fields) {
        object[std::string(name)] = value;
    }
    return object.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

} // namespace

void choose_log_format(log_format_kind format) {
    chosen_format = format;
}

void log_to_errors() {
    log_file = stderr;
}

void print_log(const log_line &line) {
    const std::string text =
        (chosen_format == log_format_kind::JSON ? json_line(line) : line.text) + "\n";
    std::fwrite(text.data(), 1, text.size(), log_file);
    std::fflush(log_file);
}

std::optional<std::string> file_bytes(const std::string &path) {
    std::ifstream file(path, std::ios::binary);
    std::string bytes(std::istreambuf_iterator<char>(file), {});
    return file.is_open() && !file.bad() ? std::optional(bytes) : std::nullopt;
}

bool write_file(const std::string &path, const std::string &text) {
    const std::string draft = path + ".new";
    std::ofstream file(draft, std::ios::binary);
    file << text;
    file.close();
    return !file.fail() && std::rename(draft.c_str(), path.c_str()) == 0;
}
