#include "fsmcore/fsmcorelocal_request.h"

#include "front/diagnostics.h"
#include "front/status_codes.h"
#include "front/utility.h"
#include "fsmcore/FSMCoreutil.h"

#include <cstring>

namespace {

constexpr char WAITTIME[] = "5"; // the daemon's wait time; -w belongs to the web service

/// Copies the values into their slots; false after a message when they do not fit.
bool fill_slots(char *slots, int count, char *const *values, const char *function) {
    if (count > FSMC_MOST_VALUES) {
        error("localclientutil->make_fsmcorelocal_request error more than %d parameters for "
              "function '%s'",
              FSMC_MOST_VALUES, function);
        return false;
    }
    for (int i = 0; i < count; i++) {
        const std::size_t length = strlen(values[i]);
        if (length >= FSMC_SLOT_SIZE) {
            error("localclientutil->make_fsmcorelocal_request error value of parameter %d is "
                  "longer than %d characters for function '%s'",
                  i + 1, static_cast<int>(FSMC_SLOT_SIZE) - 1, function);
            return false;
        }
        memcpy(slots + static_cast<std::size_t>(i) * FSMC_SLOT_SIZE, values[i], length + 1);
    }
    return true;
}

} // namespace

// The messages name localclientutil like those of the gateways' builders, deliberately.
int make_fsmcorelocal_request(const char *socket_path, const char *function,
                              const char *parameters) {
    trace("entering localclientutil->make_fsmcorelocal_request");
    if (function == nullptr) {
        trace("exiting localclientutil->make_fsmcorelocal_request");
        return STATUS_FUNCTION_NOT_SUPPORTED;
    }
    int count = 0;
    char **values = nullptr;
    parse_parameters(parameters, &count, &values);
    // Not zeroed: only the slots that are filled are read.
    __attribute__((uninitialized)) char slots[FSMC_MOST_VALUES * FSMC_SLOT_SIZE];
    if (!fill_slots(slots, count, values, function)) {
        trace("exiting localclientutil->make_fsmcorelocal_request");
        return FSMC_RESPONSE_FAILED;
    }
    int returned_count = 0;
    char **returned_values = nullptr;
    const int status = fsmcore_requeststatic(socket_path, function, count, slots, &returned_count,
                                             &returned_values, WAITTIME);
    trace("exiting localclientutil->make_fsmcorelocal_request");
    return status;
}
