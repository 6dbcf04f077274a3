#include "front/bounded_text.h"

#include <cstdarg>
#include <cstdio>

void append_format(bounded_text *out, const char *format, ...) {
    if (out->overflowed) {
        return;
    }
    const std::size_t room = out->capacity - out->length;
    va_list arguments;
    va_start(arguments, format);
    const int length = vsnprintf(out->text + out->length, room, format, arguments);
    va_end(arguments);
    // A negative length, an error of vsnprintf, is a huge one here.
    if (static_cast<std::size_t>(length) >= room) {
        out->overflowed = true;
        return;
    }
    out->length += static_cast<std::size_t>(length);
}
