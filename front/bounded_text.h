// A text that grows inside a fixed buffer and remembers when it did not fit. The requests are
// assembled in it, so that no request is ever cut silently.

#pragma once

#include <cstddef>

/// A text under construction. The buffer belongs to the caller.
struct bounded_text {
    char *text;           ///< the buffer; terminated after the first append
    std::size_t capacity; ///< size of the buffer in bytes, terminator included
    std::size_t length;   ///< bytes written so far, without the terminator
    bool overflowed;      ///< set when something did not fit; the text is then incomplete
};

/// Appends formatted text. Once something did not fit, further appends change nothing.
/// @param out the text to append to.
/// @param format printf format.
[[gnu::format(printf, 2, 3)]] void append_format(bounded_text *out, const char *format, ...);
