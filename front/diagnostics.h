// All coloured lines of the program. Failures are red and always shown, progress lines are green
// and shown with -v ON, traces are silent. Everything goes to standard output, between the results:
// scripts read one stream in order.

#pragma once

/// Gate of error(): open while positive. release_config() closes it at the end of the run.
extern int debug_level;

/// Prints a failure in red with the prefix "[lumocmd] ", and with the process id when verbose.
/// @param format printf format of the message, without a line feed; null strings are shown as the
///        platform shows them.
[[gnu::format(printf, 1, 2)]] void error(const char *format, ...);

/// Prints a progress or result line in green, only with -v ON. Callers write the prefix
/// "[lumocmd] " into their own texts.
/// @param format printf format of the line, without a line feed.
[[gnu::format(printf, 1, 2)]] void verbose_info(const char *format, ...);

/// Marks the entry or exit of a function. Writes nothing in any mode.
/// @param format printf format of the mark; may be empty.
[[gnu::format(printf, 1, 2)]] void trace(const char *format, ...);
