#include "webservice/operation_row.h"

#include "front/diagnostics.h"
#include "front/status_codes.h"
#include "front/utility.h"

#include <cstring>

namespace {

/// True when the answer broke off inside its result. The runtime keeps what had come of the text,
/// and the beginning of a status text is one of another number, down to success.
bool is_result_cut_off(const struct soap *context) {
    constexpr unsigned child_level = 4; // envelope, body, response, child
    if (context->error != SOAP_EOF || context->level != child_level) {
        return false;
    }
    const char *colon = strrchr(context->tag, ':');
    const char *name = colon != nullptr ? colon + 1 : context->tag;
    return strcmp(name, "result") == 0 || strcmp(name, "results") == 0;
}

} // namespace

bool arrange_in_list_order(const webservice_call &call, std::size_t argument_count,
                           char **arguments) {
    if (argument_count != 0) {
        for (int i = 0; i < call.count; i++) {
            arguments[i] = call.entries[i];
        }
        arguments[argument_count - 1] = call.waittime;
    }
    return true;
}

int conclude(const webservice_call &call, const operation_row &row, const void *response) {
    const char *result = is_result_cut_off(call.context) ? nullptr : row.result(response);
    if (row.group == RECORD_LINES && result == nullptr) {
        return STATUS_NO_RESULT;
    }
    for (const result_line &line : row.lines) {
        if (line.text == nullptr) {
            break;
        }
        verbose_info("%s%s", line.text, line.field(response));
    }
    return extract_error_code(result);
}
