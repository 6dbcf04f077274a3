// The web-service client: one SERVICE_ function of the command line becomes one SOAP call.

#pragma once

/// Calls the operation that a function name selects, prints the fields of its answer as result
/// lines, and a fault or transport failure on standard error.
/// @param url endpoint, passed unchanged; null selects the default one. One that cannot be used is
///        reported on standard error like a call that failed, and nothing is sent.
/// @param function SERVICE_ name, ignoring case; null is a function that is not served.
/// @param parameters raw parameter list; null counts as empty.
/// @param waittime wait time that travels to the service; it does not limit the call itself.
/// @return the service's status; 502 when its result text is absent or unreadable, 503 for an
///         unknown function, 505 for a wrong parameter count, 508 when an answer that must have a
///         result came without one.
int make_webservice_request(const char *url, const char *function, const char *parameters,
                            int waittime);
