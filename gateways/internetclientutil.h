// Gateway requests over TCP. Complete, but no request type of the command line reaches them.

#pragma once

#include <span>

struct builder_row;

/// Both builders; their rows stand in internetclientutil.cpp.
#define INTERNET_BUILDERS(BUILDER)                                                                 \
    BUILDER(make_eibusinternet_request)                                                            \
    BUILDER(make_echobusinternet_request)

/// Both take an IPv4 address, a port in host byte order, the function name and the raw parameter
/// list, and return the status code as the local builders do.
#define DECLARE_INTERNET_BUILDER(NAME)                                                             \
    int NAME(const char *address, int port, const char *function, const char *parameters);
INTERNET_BUILDERS(DECLARE_INTERNET_BUILDER)
#undef DECLARE_INTERNET_BUILDER

/// The rows of both, for whoever lists what can be asked.
std::span<const builder_row> internet_builder_rows();
