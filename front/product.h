// What the product calls itself and where its web service lives: the two facts that the help text
// and the web-service client must never tell differently.

#pragma once

#define LUMOCMD_VERSION "2.6.16_arlo [rev.7655]"

/// Endpoint used when none is given; it is written into the service definition as well.
#define LUMOWS_DEFAULT_URL "http://localhost/cgi-bin/lumows"

/// The same endpoint by address: both forms mean "on the controller itself".
#define LUMOWS_LOOPBACK_URL "http://127.0.0.1/cgi-bin/lumows"
