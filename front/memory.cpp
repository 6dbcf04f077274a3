#include "front/memory.h"

#include "front/diagnostics.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <syslog.h>

namespace {

/// Ends the process: with no memory left there is nothing to say on the console either.
[[noreturn]] void out_of_memory(const char *function, std::size_t size) {
    syslog(LOG_EMERG, "%s failed for size=%d\n", function, static_cast<int>(size));
    exit(EXIT_FAILURE);
}

/// A new string of the first `length` characters of `source`, in a block of `size` bytes.
char *copy_characters(const char *source, std::size_t length, std::size_t size) {
    char *copy = static_cast<char *>(xmalloc(size));
    memcpy(copy, source, length);
    return copy;
}

enum cut_report { REPORT_BARE, REPORT_TEXT };

/// The checks that all cutters share. False when there is nothing to cut.
bool is_long_enough(char *text, std::size_t length, const char *function, cut_report report) {
    if (text == nullptr || *text == '\0') {
        error("memory->%s recevied a null pointer", function);
        return false;
    }
    const std::size_t available = strlen(text);
    if (length <= available) {
        return true;
    }
    if (report == REPORT_TEXT) {
        // The figure is the text's own length, not the requested one.
        error("memory->%s len is greater than string length; returning a null string. "
              "str = %s, len = %d",
              function, text, static_cast<int>(available));
    } else {
        error("memory->%s len is greater than string length; returning a null string", function);
    }
    *text = '\0';
    return false;
}

/// Leaves the part of `text` that starts at `start`, skips `separators` and ends before the first
/// of `terminators`.
void keep_value(char *text, std::size_t start, const char *separators, const char *terminators) {
    const char *value = text + start + strspn(text + start, separators);
    const std::size_t length = strcspn(value, terminators);
    memmove(text, value, length);
    text[length] = '\0';
}

} // namespace

void *xmalloc(std::size_t size) {
    // An empty block is a block too: not every libc gives one for a size of zero.
    void *block = calloc(1, size == 0 ? 1 : size);
    if (block == nullptr) {
        out_of_memory("xmalloc", size);
    }
    return block;
}

void *xrealloc(void *block, std::size_t size) {
    // A size of zero would free the block and return null.
    void *resized = realloc(block, size == 0 ? 1 : size);
    if (resized == nullptr) {
        out_of_memory("xrealloc", size);
    }
    return resized;
}

void xfree(void *block) {
    free(block);
}

char *xstrdup(const char * /*ignored*/, const char *source) {
    const std::size_t length = strlen(source);
    return copy_characters(source, length, length + 1);
}

char *xstrdup_free(char *source, int release_source) {
    char *copy = xstrdup(nullptr, source == nullptr ? "" : source);
    if (source != nullptr && release_source != 0) {
        xfree(source);
    }
    return copy;
}

char *xstrndup(const char * /*ignored*/, const char *source, std::size_t count) {
    // The largest count has no successor: it must run out of memory, not wrap around to nothing.
    const std::size_t size = count == SIZE_MAX ? count : count + 1;
    return copy_characters(source, strnlen(source, count), size);
}

char *xstrndup_free(char *source, std::size_t count, int release_source) {
    const char *text = source == nullptr ? "" : source;
    char *copy = copy_characters(text, strnlen(text, count), strlen(text) + 1);
    if (source != nullptr && release_source != 0) {
        xfree(source);
    }
    return copy;
}

char *xstrconcat(const char *first, const char *second) {
    const std::size_t first_length = first == nullptr ? 0 : strlen(first);
    const std::size_t second_length = second == nullptr ? 0 : strlen(second);
    char *joined = static_cast<char *>(xmalloc(first_length + second_length + 1));
    if (first_length != 0) {
        memcpy(joined, first, first_length);
    }
    if (second_length != 0) {
        memcpy(joined + first_length, second, second_length);
    }
    return joined;
}

char *xstrconcat_free(char *first, char *second, int release_first, int release_second) {
    char *joined = xstrconcat(first, second);
    if (release_first != 0) {
        xfree(first);
    }
    if (release_second != 0) {
        xfree(second);
    }
    return joined;
}

void cut_message_to_preserve_newline(char *text, std::size_t length) {
    if (is_long_enough(text, length, "cut_message_to_preserve_newline", REPORT_TEXT)) {
        memmove(text, text + length, strlen(text + length) + 1);
    }
}

void cut_message_to_trim_newline(char *text, std::size_t length) {
    if (!is_long_enough(text, length, "cut_message_to_trim_newline", REPORT_TEXT)) {
        return;
    }
    const std::size_t rest = strlen(text + length);
    const std::size_t kept = rest == 0 ? 0 : rest - 1;
    memmove(text, text + length, kept);
    text[kept] = '\0';
}

void cutparamto(char *text, std::size_t length) {
    if (is_long_enough(text, length, "cutparamto", REPORT_BARE)) {
        keep_value(text, length, " \t=", " \t");
    }
}

void cutqueryparamto(char *text, std::size_t length) {
    if (is_long_enough(text, length, "cutqueryparamto", REPORT_BARE)) {
        keep_value(text, length, " \t'|", " \t'");
    }
}
