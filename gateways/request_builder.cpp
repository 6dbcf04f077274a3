#include "gateways/request_builder.h"

#include "front/diagnostics.h"
#include "front/status_codes.h"
#include "front/utility.h"

namespace {

void mark(const request_builder &builder, const char *what, const char *name) {
    trace("%s %s->%s", what, builder.source, name);
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

int build_gateway_request(const request_builder &builder, gateway_call call, const char *function,
                          const char *parameters) {
    const char *exits_as = builder.exits_as != nullptr ? builder.exits_as : builder.name;
    mark(builder, "entering", builder.name);
    const builder_row *row = find_row(builder, function);
    if (row == nullptr) {
        mark(builder, "exiting", exits_as);
        return STATUS_FUNCTION_NOT_SUPPORTED;
    }
    int count = 0;
    char **items = nullptr;
    // Splitting never fails today; its result is looked at all the same.
    if (parse_parameters(parameters, &count, &items) < 0 || count != row->count) {
        error("%s->%s error too few or too much parameters, %s are needed", builder.source,
              builder.blamed != nullptr ? builder.blamed : builder.name, row->needed);
        return STATUS_MALFORMED_REQUEST;
    }
    if (row->acceptable != nullptr && !row->acceptable(items)) {
        return STATUS_BAD_PARAMETER;
    }
    int status = STATUS_FUNCTION_NOT_SUPPORTED;
    if (row->exchange != nullptr) {
        call.function = function;
        call.p = items;
        status = row->exchange(call);
    }
    mark(builder, "exiting", exits_as);
    return status;
}
