// The process-wide state, put back when a test is over.

#pragma once

#include "front/diagnostics.h"
#include "front/request_record.h"

#include <gtest/gtest.h>

namespace front_tests {

/// Leaves the next test the state of a fresh process.
class FreshGlobals : public testing::Test {
  protected:
    ~FreshGlobals() override {
        g_config = {};
        debug_level = 1;
    }
};

} // namespace front_tests
