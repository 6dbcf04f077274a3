#include "gateways/request_builder.h"

#include "front/diagnostics.h"
#include "front/status_codes.h"
#include "front/utility.h"
#include "gateways/gateway_exchange.h"

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

int carry(const builder_row &row, const request_target &target, const char *function,
          char *const *parameters) {
    const char *values[MOST_GATEWAY_VALUES] = {};
    for (int i = 0; i < row.count; i++) {
        values[row.exceptional.absent_before + i] = parameters[i];
    }
    return row.gateway->exchange(target, function, values);
}

} // namespace

int build_gateway_request(const request_builder &builder, const request_target &target,
                          const char *function, const char *parameters) {
    mark(builder, "entering", builder.name);
    const builder_row *row = find_row(builder, function);
    if (row == nullptr) {
        mark(builder, "exiting", builder.exits_as);
        return STATUS_FUNCTION_NOT_SUPPORTED;
    }
    const builder_exceptions &exceptional = row->exceptional;
    int count = 0;
    char **items = nullptr;
    // Splitting never fails today; its result is looked at all the same.
    if (parse_parameters(parameters, &count, &items) < 0 || count != row->count) {
        error("%s->%s error too few or too much parameters, %s are needed", builder.source,
              exceptional.blamed != nullptr ? exceptional.blamed : builder.name, row->needed);
        return STATUS_MALFORMED_REQUEST;
    }
    if (exceptional.acceptable != nullptr && !exceptional.acceptable(items)) {
        return STATUS_BAD_PARAMETER;
    }
    const int status =
        exceptional.unserved ? STATUS_FUNCTION_NOT_SUPPORTED : carry(*row, target, function, items);
    mark(builder, "exiting", builder.exits_as);
    return status;
}
