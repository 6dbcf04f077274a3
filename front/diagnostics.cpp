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

void select_graphics(sgr_colour colour) {
    printf("\033[%d;%dm", NORMAL, colour);
}

} // namespace

void error(const char *format, ...) {
    if (debug_level <= 0) {
        return;
    }
    if (g_config.verbose != 0) {
        print_pid_tag(RED);
    }
    select_graphics(RED);
    fputs("[lumocmd] ", stdout);
    va_list arguments;
    va_start(arguments, format);
    vprintf(format, arguments);
    va_end(arguments);
    select_graphics(DEFAULT_FOREGROUND);
    putchar('\n');
}

void verbose_info(const char *format, ...) {
    if (g_config.verbose == 0) {
        return;
    }
    print_pid_tag(GREEN);
    select_graphics(GREEN);
    va_list arguments;
    va_start(arguments, format);
    vprintf(format, arguments);
    va_end(arguments);
    select_graphics(DEFAULT_FOREGROUND);
    putchar('\n');
}

void trace(const char * /*format*/, ...) {
    // Silent by design: the marks stay in the code for whoever steps through it.
}
