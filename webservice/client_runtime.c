/* The C side of the web-service client: the namespace table that every new context uses, and the
 * size of a context as the generated code sees it. */

#include "webservice/client_runtime.h"

#include "lumows.nsmap"

size_t lumows_context_size(void) {
    return sizeof(struct soap);
}
