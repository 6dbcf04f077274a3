// The process-wide state, put back when a test is over.

#pragma once

#include "front/diagnostics.h"
#include "front/request_record.h"

#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>

namespace front_tests {

/// Starts every test with the state of a fresh process.
class FreshGlobals : public testing::Test {
  protected:
    FreshGlobals() {
        g_config = {};
        debug_level = 1;
    }
    ~FreshGlobals() override {
        g_config = config_;
        debug_level = level_;
    }

  private:
    cmd_config config_ = g_config;
    int level_ = debug_level;
};

/// valgrind brings its own allocator, and takes the largest sizes for mistakes.
inline bool under_valgrind() {
    const char *preloaded = getenv("LD_PRELOAD");
    return preloaded != nullptr && strstr(preloaded, "vgpreload") != nullptr;
}

} // namespace front_tests
