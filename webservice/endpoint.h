// What a url of the command line means as the endpoint of a call.

#pragma once

/// True for the endpoint on this very machine, by name or by loopback address; null selects it.
bool is_local_endpoint(const char *url);

/// True when the runtime sends to the place that the url names by RFC 3986. It would take others
/// without a complaint: without a host it writes the request to standard output and waits on
/// standard input, a long url it cuts, at a blank it ends the request line, a user name that ends
/// within an escape or a quotation makes it read beyond the url, an "@" in a path makes it connect
/// to what follows, and over other transports than HTTP it may wait forever.
/// @param url null selects the default endpoint.
bool is_usable_endpoint(const char *url);

/// The longest url that the runtime does not cut, in characters.
int longest_endpoint();
