// Gateway requests over TCP. Complete, but no request type of the command line reaches them.

#pragma once

// Both take an IPv4 address, a port in host byte order, the function name and the raw parameter
// list, and return the status code as the local builders do.

int make_eibusinternet_request(const char *address, int port, const char *function,
                               const char *parameters);
int make_echobusinternet_request(const char *address, int port, const char *function,
                                 const char *parameters);
