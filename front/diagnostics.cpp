#include "front/diagnostics.h"

#include "front/request_record.h"

#include <cstdarg>
#include <cstdio>
#include <unistd.h>

int debug_level = 1;

namespace {

enum sgr_attribute : int { NORMAL = 0, BOLD = 1 };
enum sgr_colour : int { RED = 31, GREEN = 32, DEFAULT_FOREGROUND = 39 };

void print_pid_tag(sgr_colour colour) {
    printf("\033[%d;%dm<%d>\033[%d;%dm ", BOLD, colour, static_cast<int>(getpid()), NORMAL,
           DEFAULT_FOREGROUND);
}

/// Writes one line in `colour`, behind a pid tag when verbose.
[[gnu::format(printf, 3, 0)]] void print_line(sgr_colour colour, const char *prefix,
                                              const char *format, va_list arguments) {
    if (g_config.verbose != 0) {
        print_pid_tag(colour);
    }
    printf("\033[%d;%dm%s", NORMAL, colour, prefix);
    vprintf(format, arguments);
    printf("\033[%d;%dm\n", NORMAL, DEFAULT_FOREGROUND);
}

} // namespace

void error(const char *format, ...) {
    if (debug_level > 0) {
        va_list arguments;
        va_start(arguments, format);
        print_line(RED, "[lumocmd] ", format, arguments);
        va_end(arguments);
    }
}

void verbose_info(const char *format, ...) {
    if (g_config.verbose != 0) {
        va_list arguments;
        va_start(arguments, format);
        print_line(GREEN, "", format, arguments);
        va_end(arguments);
    }
}

void trace(const char * /*format*/, ...) {
    // Silent by design: the marks stay in the code for whoever steps through it.
}
