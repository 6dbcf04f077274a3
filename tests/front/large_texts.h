// Tells whether a block has been released.

#pragma once

#include "tests/front/saved_globals.h"

#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <malloc.h>
#include <string>

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
        std::ifstream mappings("/proc/self/maps");
        for (std::string line; std::getline(mappings, line);) {
            std::uintptr_t first = 0;
            std::uintptr_t end = 0;
            if (sscanf(line.c_str(), "%" SCNxPTR "-%" SCNxPTR, &first, &end) == 2 &&
                first <= block + SIZE / 2 && block + SIZE / 2 < end) {
                return false;
            }
        }
        return true;
#endif
    }
};

} // namespace front_tests
