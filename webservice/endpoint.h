// What a url of the command line means as the endpoint of a call.

#pragma once

struct soap;

/// True for the endpoint on this very machine, by name or by loopback address; null selects it.
bool is_local_endpoint(const char *url);

/// True when the runtime can send to the url as it stands. It takes others without a complaint:
/// without a host it writes the request to standard output and waits on standard input, a long url
/// it cuts, at a blank it ends the request line, a user name that ends within an escape or a
/// quotation or a bracket left open makes it read beyond the url, and other transports than HTTP
/// may wait forever.
/// @param context an initialised context; its endpoint is set for the test.
/// @param url null selects the default endpoint.
bool is_usable_endpoint(struct soap *context, const char *url);
