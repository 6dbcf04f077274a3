// Everything that the simulator prints, except errors: whole lines, flushed, as text or as JSON
// objects.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

enum class log_format_kind { TEXT, JSON };

/// One line of the log.
struct log_line {
    std::string_view event;
    std::string_view daemon; ///< its name in options; empty: the line is about no single one
    std::string text;        ///< the line, where the log is text
    std::vector<std::pair<std::string_view, std::string>> fields = {}; ///< where it is JSON
};

/// Chosen once, before the first line; the log is on standard output otherwise.
void choose_log_format(log_format_kind format);
void log_to_errors();

void print_log(const log_line &line);

/// The bytes of a file; nothing when it cannot be read.
std::optional<std::string> file_bytes(const std::string &path);

/// Writes a temporary file and renames it, so that readers never see half of it.
bool write_file(const std::string &path, const std::string &text);
