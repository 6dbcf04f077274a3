// Gateway requests over TCP. Complete, but no request type of the command line reaches them.

#pragma once

#include <span>

struct request_builder;

// Both take an IPv4 address, a port in host byte order, the function name and the raw parameter
// list, and return the status code as the local builders do.

int make_eibusinternet_request(const char *address, int port, const char *function,
                               const char *parameters);
int make_echobusinternet_request(const char *address, int port, const char *function,
                                 const char *parameters);

/// A builder and what it is made of.
struct internet_builder {
    int (*make)(const char *address, int port, const char *function, const char *parameters);
    const request_builder *builder;
};

/// Both builders, for whoever lists what can be asked.
std::span<const internet_builder> internet_builders();
