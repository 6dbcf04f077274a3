// Command line, help text, parameter lists, status texts and the two socket connectors.

#pragma once

#include <cstdio>

/// Fills g_config from the command line and names the request type.
/// Ends the process with 502 (bad option value), 505 (malformed request) or 506 (help shown).
/// Returns early, without any further check, on a -v value other than ON/OFF and on an unknown -t
/// keyword.
/// @return a request_type code; REQUEST_NONE or REQUEST_UNSUPPORTED only after an early return.
int parse_cmd_line(int argument_count, char **arguments);

/// Writes the banner and the help text to standard error.
/// @param program_name the name shown in the usage line.
void print_usage(const char *program_name);

/// Writes the title to `stream`, and the version and web lines to standard error.
void print_banner(FILE *stream);

/// Ends the run: frees the request record and silences the diagnostics.
void release_config();

/// Splits a list at its vertical bars. Items are taken as written; an empty item ends the list.
/// @param list the raw list; null or empty gives no items and a null array.
/// @param count receives the number of items.
/// @param items receives an array of owned strings, owned by the caller.
/// @return always 0.
int parse_parameters(const char *list, int *count, char ***items);

/// Compares two names ignoring case.
/// @param name null equals nothing.
/// @param known not null.
bool names_match(const char *name, const char *known);

/// Formats a status code with the prefix of its range, such as "LMCM-505".
/// @return a new text, owned by the caller.
char *format_status_code(int code);

/// Reads a status text such as "LMWS-402": the number from the sixth character on.
/// @param text the text; null and empty are unreadable.
/// @return the number, or 502 after a message when the text cannot be read.
int extract_error_code(const char *text);

/// Connects to a daemon's Unix-domain socket.
/// @param path path of the socket, used up to its 107th character; null counts as empty.
/// @return a descriptor owned by the caller, or -1 after a message.
int make_localtcpclient_socket(const char *path);

/// Connects to an IPv4 address.
/// @param address dotted-quad text; anything else, null included, becomes 255.255.255.255.
/// @param port port in host byte order; only its low 16 bits are used.
/// @return a descriptor owned by the caller, or -1 after a message.
int make_internettcpclient_socket(const char *address, int port);
