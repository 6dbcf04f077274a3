// Where the SOAP runtime's memory comes from: cmake/gsoap.cmake renames its calls of malloc to
// this.

#include "front/memory.h"

#include <cstddef>

/// Out of memory, the runtime writes its report to a record that it did not get; so its allocations
/// are the program's own, which end the process with their record in the system log.
extern "C" void *lumocmd_runtime_malloc(std::size_t size);
extern "C" void *lumocmd_runtime_malloc(std::size_t size) {
    return xmalloc(size);
}
