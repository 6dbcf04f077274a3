// What the web-service client takes of an answer's HTTP head.

#pragma once

struct soap;

/// Makes the runtime a client alone. By itself it also answers as a server: it serves an answer
/// that begins with a request line, and a header draws a "100 Continue" from it. It also
/// allocates what an error or an attachment announces; both are limited.
/// @param context an initialised context that has sent nothing yet.
void read_head_as_client(struct soap *context);
