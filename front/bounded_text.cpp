#include "front/bounded_text.h"

#include <cstring>

void append_texts(bounded_text *out, std::initializer_list<const char *> texts) {
    for (const char *text : texts) {
        const std::size_t length = strlen(text);
        if (out->overflowed || length >= out->capacity - out->length) {
            out->overflowed = true;
            return;
        }
        memcpy(out->text + out->length, text, length + 1);
        out->length += length;
    }
}

void append_number(bounded_text *out, int number, int width) {
    char digits[] = "-2147483648"; // the longest; filled from its end
    char *const end = digits + sizeof digits - 1;
    char *first = end;
    const bool is_negative = number < 0;
    unsigned rest =
        is_negative ? 0U - static_cast<unsigned>(number) : static_cast<unsigned>(number);
    const int least_digits = is_negative ? width - 1 : width;
    do {
        *--first = static_cast<char>('0' + rest % 10);
        rest /= 10;
    } while (rest != 0 || end - first < least_digits);
    if (is_negative) {
        *--first = '-';
    }
    append_texts(out, {first});
}
