#include "webservice/answer_head.h"

#include "webservice/service_calls.h"

#include <fnmatch.h>
#include <strings.h>

namespace {

/// Bytes of an error answer's body that are worth reporting.
constexpr ULONG64 LONGEST_ERROR_TEXT = 65536;

int (*runtime_read_head)(struct soap *);
int (*runtime_read_header)(struct soap *, const char *, const char *);

bool is_status_line(const char *line) {
    return fnmatch("HTTP/1.[0-9] [1-9][0-9][0-9]", line, 0) == 0 ||
           fnmatch("HTTP/1.[0-9] [1-9][0-9][0-9] *", line, 0) == 0;
}

int read_head(struct soap *context) {
    const int error = runtime_read_head(context);
    if (error == SOAP_EOF) {
        return error;
    }
    if (!is_status_line(context->msgbuf)) {
        context->status = 0; // of a request, or a number that is no HTTP status
        context->error = SOAP_HTTP_ERROR;
        return context->error;
    }
    if (error != SOAP_OK) {
        // The runtime counts the bytes of chunks twice, and those of the head.
        context->recv_maxlength = 4 * LONGEST_ERROR_TEXT;
        if (context->length > LONGEST_ERROR_TEXT) {
            context->length = LONGEST_ERROR_TEXT;
        }
    }
    return error;
}

/// Only what says how the body is to be read. The runtime reads behind the line of some of the
/// others.
int read_header(struct soap *context, const char *name, const char *value) {
    for (const char *needed :
         {"Content-Type", "Content-Length", "Content-Encoding", "Transfer-Encoding"}) {
        if (strcasecmp(name, needed) == 0) {
            return runtime_read_header(context, name, value);
        }
    }
    return SOAP_OK;
}

/// The runtime asks this before it allocates an attachment. Null without an error: it may.
void *open_attachment(struct soap *context, const char * /*id*/, const char * /*type*/,
                      const char * /*options*/) {
    if (context->dime.size > SOAP_MAXDIMESIZE) {
        context->error = SOAP_DIME_ERROR;
    }
    return nullptr;
}

} // namespace

void read_head_as_client(struct soap *context) {
    runtime_read_head = context->fparse;
    context->fparse = read_head;
    runtime_read_header = context->fparsehdr;
    context->fparsehdr = read_header;
    context->fdimewriteopen = open_attachment;
}
