// Tells whether a block has been released.

#pragma once

#include "tests/front/saved_globals.h"

#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <malloc.h>
#include <sys/mman.h>
#include <unistd.h>

#ifdef __SANITIZE_ADDRESS__
#include <sanitizer/asan_interface.h>
#endif

namespace front_tests {

/// A text so large that the C library gives its pages back when it is freed, and that a sanitizer
/// poisons instead. valgrind does neither, and finds a leaked or lost block by itself.
class LargeTexts : public FreshGlobals {
  protected:
    static constexpr std::size_t SIZE = 8U << 20U;

    void SetUp() override {
        if (under_valgrind()) {
            GTEST_SKIP() << "valgrind keeps freed pages";
        }
        mallopt(M_MMAP_THRESHOLD, 1 << 20);
    }

    static char *large() {
        char *text = static_cast<char *>(malloc(SIZE));
        memset(text, 'x', SIZE - 1);
        text[SIZE - 1] = '\0';
        return text;
    }

    static bool is_released(std::uintptr_t block) {
#ifdef __SANITIZE_ADDRESS__
        return __asan_address_is_poisoned(reinterpret_cast<void *>(block)) != 0;
#else
        const auto page_size = static_cast<std::uintptr_t>(sysconf(_SC_PAGESIZE));
        const std::uintptr_t page = (block + SIZE / 2) / page_size * page_size;
        unsigned char resident = 0;
        return mincore(reinterpret_cast<void *>(page), 1, &resident) != 0 && errno == ENOMEM;
#endif
    }
};

} // namespace front_tests
