#include "front/bounded_text.h"

#include <cstdarg>
#include <cstdio>

void append_text(bounded_text *out, const char *format, ...) {
    if (out->overflowed) {
        return;
    }
    const std::size_t room = out->capacity - out->length;
    va_list arguments;
    va_start(arguments, format);
    const int needed = vsnprintf(out->text + out->length, room, format, arguments);
    va_end(arguments);
    // Negative only for what no format here has: a wide character that cannot be written.
    if (needed < 0 || static_cast<std::size_t>(needed) >= room) {
        out->overflowed = true;
        return;
    }
    out->length += static_cast<std::size_t>(needed);
}
