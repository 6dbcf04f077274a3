// The gateway requests of the command line, one builder per gateway, over Unix-domain sockets.
// ECHOBUS, MARTIN, IBS and ByME are complete but no request type reaches them.

#pragma once

#include <span>

struct builder_row;

/// Every builder once; its rows stand in localclientutil.cpp.
#define LOCAL_BUILDERS(BUILDER)                                                                    \
    BUILDER(make_eibuslocal_request)                                                               \
    BUILDER(make_smstoollocal_request)                                                             \
    BUILDER(make_lintroniclocal_request)                                                           \
    BUILDER(make_tecnoutlocal_request)                                                             \
    BUILDER(make_vivaldilocal_request)                                                             \
    BUILDER(make_bentellocal_request)                                                              \
    BUILDER(make_tutondolocal_request)                                                             \
    BUILDER(make_echobuslocal_request)                                                             \
    BUILDER(make_martinlocal_request)                                                              \
    BUILDER(make_ibslocal_request)                                                                 \
    BUILDER(make_bymelocal_request)

/// All builders take the daemon's socket path, the function name and the raw parameter list, null
/// allowed for each, and return the status code: 503 function not served (silently), 505 wrong
/// parameter count, 502 wrong format, otherwise what the gateway's exchange returns.
#define DECLARE_LOCAL_BUILDER(NAME)                                                                \
    int NAME(const char *socket_path, const char *function, const char *parameters);
LOCAL_BUILDERS(DECLARE_LOCAL_BUILDER)
#undef DECLARE_LOCAL_BUILDER

/// The rows of all local builders, for whoever lists what can be asked.
std::span<const builder_row> local_builder_rows();
