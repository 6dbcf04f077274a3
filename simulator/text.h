// Text helpers of the simulator: escaping bytes for display, reading escapes from the command line,
// UTF-8 validity, numbers.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// Longest piece of one value that a request line shows; a 1 MB upload must not flood a terminal.
inline constexpr std::size_t SHOWN_VALUE_BYTES = 200;

/// The parts between the separators; an empty text is one empty part.
std::vector<std::string_view> split_text(std::string_view text, char separator);

/// All bytes in printable ASCII, between double quotes, such as "Request: A\n".
std::string quote_bytes(std::string_view bytes);

/// Each byte as the character of its number, in UTF-8: what holds text alone can hold any bytes.
std::string bytes_as_characters(std::string_view bytes);

/// One value for a request line: control characters (and bytes that are not UTF-8) escaped,
/// cut after SHOWN_VALUE_BYTES with its full length appended.
std::string show_value(std::string_view value);

/// Replaces \n \r \t \0 \\ and \xHH by the bytes they name; nothing on any other escape.
std::optional<std::string> read_escapes(std::string_view text);

/// Whether the bytes are well-formed UTF-8 (no overlong forms, no surrogates).
bool is_valid_utf8(std::string_view bytes);

/// A whole decimal number within the limits; nothing for anything else.
std::optional<int> read_number(std::string_view text, int lowest, int highest);
