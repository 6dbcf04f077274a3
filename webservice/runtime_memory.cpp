// Where the runtime's memory comes from. Out of memory, the runtime writes its report to a record
// that it did not get; so its allocations are the program's own, which end the process with their
// record in the system log. The linker brings every call of malloc here.

#include "front/memory.h"

#include <cstddef>

// NOLINTBEGIN(bugprone-reserved-identifier): the linker's name
extern "C" void *__wrap_malloc(std::size_t size);
extern "C" void *__wrap_malloc(std::size_t size) {
    return xmalloc(size);
}
// NOLINTEND(bugprone-reserved-identifier)
