// The FSMCORE request of the command line.

#pragma once

/// Sends a function with any number of parameters to the local FSMCore daemon. The returned
/// parameters are not shown.
/// @param socket_path Unix-domain socket of the daemon.
/// @param function function name; null is a function that is not served.
/// @param parameters raw parameter list; null and empty send none.
/// @return the daemon's status, or a failure code after a message.
int make_fsmcorelocal_request(const char *socket_path, const char *function,
                              const char *parameters);
