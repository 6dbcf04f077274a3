/* The C side of the web-service client: the namespace table that every new context uses, the size
 * of a context as the generated code sees it, and the release of the runtime. */

#include "webservice/client_runtime.h"

#include "lumows.nsmap"

#define TEXT_OF(number) #number
#define RELEASE_TEXT(number) "gSOAP release " TEXT_OF(number)

/* For whoever has the program's file alone: 208124 is 2.8.124. */
const char lumows_runtime_release[] = RELEASE_TEXT(GSOAP_VERSION);

size_t lumows_context_size(void) {
    return sizeof(struct soap);
}
