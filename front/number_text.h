// The one place where text becomes a number: ports, wait times, statuses, counts and lengths.

#pragma once

/// Reads a decimal number the way the controller does: strtol on a 32-bit machine. Leading white
/// space and a sign are accepted, an empty text is 0.
/// @param text the text to read, not null.
/// @param value receives the number, also when the text is rejected: what was read before the first
///        bad character, or the nearest int when the number does not fit one.
/// @return true when the whole text is a number. On false errno tells why: ERANGE when the number
///         does not fit a 32-bit int, 0 when characters follow it.
bool read_number(const char *text, int *value);
