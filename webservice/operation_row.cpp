#include "webservice/operation_row.h"

#include "front/diagnostics.h"
#include "front/status_codes.h"
#include "front/utility.h"

#include <cstring>

namespace {

/// True when the answer broke off inside its result. The runtime keeps what had come of the text,
/// and the beginning of a status text is one of another number, down to success; of a tag that
/// broke off it makes an empty text, which cannot be told from one that had ended.
bool is_result_cut_off(const struct soap *context, const char *result) {
    constexpr unsigned child_level = 4; // envelope, body, response, child
    if (context->error != SOAP_EOF || result == nullptr) {
        return false;
    }
    if (*result == '\0') {
        return true;
    }
    if (context->level != child_level) {
        return false;
    }
    const char *colon = strrchr(context->tag, ':');
    const char *name = colon != nullptr ? colon + 1 : context->tag;
    return strcmp(name, "result") == 0 || strcmp(name, "results") == 0;
}

} // namespace

bool arrange_arguments(const webservice_call &call, const operation_row &row,
                       std::size_t argument_count, char **arguments) {
    if (row.exceptional.arrange != nullptr) {
        return row.exceptional.arrange(call, arguments) && call.sendable;
    }
    if (argument_count != 0) {
        for (int i = 0; i < call.count; i++) {
            arguments[i] = call.entries[i];
        }
        arguments[argument_count - 1] = call.waittime;
    }
    return call.sendable;
}

int conclude(const webservice_call &call, const operation_row &row, const char *result,
             void *response) {
    if (is_result_cut_off(call.context, result)) {
        result = nullptr;
    }
    if (row.exceptional.complete != nullptr) {
        row.exceptional.complete(response);
    }
    if (row.group == RECORD_LINES && result == nullptr) {
        return STATUS_NO_RESULT;
    }
    for (const result_line &line : row.lines) {
        verbose_info("%s%s", line.text, line.field(response));
    }
    return extract_error_code(result);
}
