// What stands behind the calls that the SOAP runtime is not meant to make.

#include <cstdlib>
#include <gtest/gtest.h>

extern "C" [[noreturn]] void unreachable_runtime_call();

namespace {

/// The system log of this program goes to standard error.
TEST(RuntimeCallDeathTest, UnreachableOneLeavesARecordAndEndsWithOne) {
    EXPECT_EXIT(unreachable_runtime_call(), testing::ExitedWithCode(EXIT_FAILURE),
                "record of priority 0: .the SOAP runtime called what is not linked");
}

} // namespace
