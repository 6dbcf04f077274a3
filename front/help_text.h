// The help text behind the usage line.

#pragma once

#include <cstdio>

/// Writes the options, what each request type takes, and the closing line.
void print_help_text(FILE *stream);
