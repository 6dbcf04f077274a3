#include "gateways/request_builder.h"

#include "front/diagnostics.h"
#include "front/status_codes.h"
#include "front/utility.h"

namespace {

void mark(const request_builder &builder, const char *text) {
    trace("%s", text);
    if (builder.trailing_trace) {
        trace("");
    }
}

const builder_row *find_row(const request_builder &builder, const char *function) {
    for (const builder_row &row : builder.rows) {
        if (names_match(function, row.function)) {
            return &row;
        }
    }
    return nullptr;
}

} // namespace

int build_gateway_request(const request_builder &builder, const request_target &target,
                          const char *function, const char *parameters) {
    mark(builder, builder.entering);
    const builder_row *row = find_row(builder, function);
    if (row == nullptr) {
        mark(builder, builder.exiting);
        return STATUS_FUNCTION_NOT_SUPPORTED;
    }
    int count = 0;
    char **items = nullptr;
    if (parse_parameters(parameters, &count, &items) < 0 || count != row->count) {
        error("%s", row->count_message);
        return STATUS_MALFORMED_REQUEST;
    }
    if (row->acceptable != nullptr && !row->acceptable(items)) {
        return STATUS_BAD_PARAMETER;
    }
    int status = STATUS_FUNCTION_NOT_SUPPORTED;
    if (row->exchange != nullptr) {
        const char *values[MOST_GATEWAY_VALUES] = {};
        for (int i = 0; i < count; i++) {
            values[row->absent_before + i] = items[i];
        }
        status = row->exchange(target, function, values);
    }
    mark(builder, builder.exiting);
    return status;
}
