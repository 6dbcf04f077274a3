// What the SOAP runtime calls by the names of libc and gets from here: the linker brings every such
// call to a name with __wrap_ before it. Which calls these are stands in cmake/runtime_calls.cmake.

#include "front/memory.h"

#include <cstddef>
#include <cstdlib>
#include <ctime>
#include <syslog.h>

// NOLINTBEGIN(bugprone-reserved-identifier): the linker's names

/// Out of memory, the runtime writes its report to a record that it did not get; so its allocations
/// are the program's own, which end the process with their record in the system log.
extern "C" void *__wrap_malloc(std::size_t size);
extern "C" void *__wrap_malloc(std::size_t size) {
    return xmalloc(size);
}

/// The runtime notes when a transfer began, for a limit on its time; none is set, so nobody asks.
/// It takes the result alone and passes null.
extern "C" time_t __wrap_time(time_t *seconds);
extern "C" time_t __wrap_time(time_t * /*seconds*/) {
    return 0;
}

// NOLINTEND(bugprone-reserved-identifier)

/// Stands for what the runtime only calls on the way to something that is not asked of it: servers,
/// dates, numbers with a point. Ends the process.
extern "C" [[noreturn]] void unreachable_runtime_call();
extern "C" [[noreturn]] void unreachable_runtime_call() {
    syslog(LOG_EMERG, "the SOAP runtime called what is not linked");
    exit(EXIT_FAILURE);
}
