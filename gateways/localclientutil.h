// The gateway requests of the command line, one builder per gateway, over Unix-domain sockets.
// ECHOBUS, MARTIN, IBS and ByME are complete but no request type reaches them.

#pragma once

#include <span>

struct request_builder;

// All builders take the daemon's socket path, the function name and the raw parameter list, null
// allowed for each, and return the status code: 503 function not served (silently), 505 wrong
// parameter count, 502 wrong format, otherwise what the gateway's exchange returns.

int make_eibuslocal_request(const char *socket_path, const char *function, const char *parameters);
int make_smstoollocal_request(const char *socket_path, const char *function,
                              const char *parameters);
int make_lintroniclocal_request(const char *socket_path, const char *function,
                                const char *parameters);
int make_tecnoutlocal_request(const char *socket_path, const char *function,
                              const char *parameters);
int make_vivaldilocal_request(const char *socket_path, const char *function,
                              const char *parameters);
int make_bentellocal_request(const char *socket_path, const char *function, const char *parameters);
int make_tutondolocal_request(const char *socket_path, const char *function,
                              const char *parameters);
int make_echobuslocal_request(const char *socket_path, const char *function,
                              const char *parameters);
int make_martinlocal_request(const char *socket_path, const char *function, const char *parameters);
int make_ibslocal_request(const char *socket_path, const char *function, const char *parameters);
int make_bymelocal_request(const char *socket_path, const char *function, const char *parameters);

/// A builder and what it is made of.
struct local_builder {
    int (*make)(const char *socket_path, const char *function, const char *parameters);
    const request_builder *builder;
};

/// All local builders, for whoever lists what can be asked.
std::span<const local_builder> local_builders();
