#include "webservice/operation_row.h"

#include "front/diagnostics.h"
#include "front/status_codes.h"
#include "front/utility.h"

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

int conclude(const operation_row &row, const char *result, void *response) {
    if (row.exceptional.complete != nullptr) {
        row.exceptional.complete(response);
    }
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
