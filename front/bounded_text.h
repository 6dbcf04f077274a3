// A text that grows inside a fixed buffer and remembers when it did not fit. The requests are
// assembled in it, so that no request is ever cut silently.
//
// It takes texts and numbers as they are, not formats: a request that goes well then reads no page
// of printf, unless it is told verbosely.

#pragma once

#include <cstddef>
#include <initializer_list>

/// A text under construction. The buffer belongs to the caller.
struct bounded_text {
    char *text;           ///< the buffer; terminated after the first append that fits
    std::size_t capacity; ///< size of the buffer in bytes, terminator included
    std::size_t length;   ///< bytes written so far, without the terminator
    bool overflowed;      ///< set when something did not fit; the text is then incomplete
};

/// Appends texts, one behind the other. Once something did not fit, further appends change nothing.
/// @param out the text to append to.
/// @param texts none of them null.
void append_texts(bounded_text *out, std::initializer_list<const char *> texts);

/// Appends a number in decimal, filled with zeros.
/// @param out the text to append to.
/// @param width the least number of characters, a minus sign among them: 1 to 11.
void append_number(bounded_text *out, int number, int width = 1);
