// How the shipped program is linked: what it needs at run time and what protects it.

#include "tests/harness/process.h"
#include "tests/program/elf_file.h"

#include <algorithm>
#include <elf.h>
#include <gtest/gtest.h>
#include <string>

namespace {

using namespace harness;

class ShippedProgram : public testing::Test {
  protected:
    const elf_file file = read_elf(lumocmd_path());
    const bool is_static = !file.has_interpreter;

    bool imports(const std::string &name) const {
        return std::find(file.imports.begin(), file.imports.end(), name) != file.imports.end();
    }
};

TEST_F(ShippedProgram, IsPositionIndependent) {
    if (is_static && file.machine == EM_ARM) {
        GTEST_SKIP() << "Debian has no start file of a position-independent static ARM program";
    }
    EXPECT_EQ(file.type, static_cast<unsigned>(ET_DYN));
    EXPECT_TRUE(file.is_pie);
}

TEST_F(ShippedProgram, NeverWritesItsCode) {
    EXPECT_FALSE(file.relocates_text);
}

TEST_F(ShippedProgram, HasFullRelro) {
    EXPECT_TRUE(file.has_relro);
    EXPECT_TRUE(is_static || file.binds_now);
}

TEST_F(ShippedProgram, HasNoExecutableStack) {
    EXPECT_FALSE(file.stack_is_executable);
}

TEST_F(ShippedProgram, GuardsItsStack) {
    if (is_static) {
        GTEST_SKIP() << "a stripped static program does not say what it calls";
    }
    EXPECT_TRUE(imports("__stack_chk_fail"));
}

TEST_F(ShippedProgram, IsFortified) {
    if (is_static) {
        GTEST_SKIP() << "a stripped static program does not say what it calls";
    }
    // Names that the runtime, which is fortified by itself, does not import.
    EXPECT_TRUE(imports("__printf_chk"));
    EXPECT_TRUE(imports("__vprintf_chk"));
}

TEST_F(ShippedProgram, NeedsLibcAtMost) {
    EXPECT_EQ(file.needed.empty(), is_static);
    for (const std::string &library : file.needed) {
        // The loader is part of libc; on ARM it holds the stack guard.
        EXPECT_TRUE(library == "libc.so.6" || library == "ld-linux-armhf.so.3") << library;
    }
}

TEST_F(ShippedProgram, IsStripped) {
    EXPECT_FALSE(file.has_symbol_table);
}

TEST_F(ShippedProgram, IsSmallEnoughForTheController) {
    // In KiB. libc is two thirds of a static file; desk code is about twice as large.
    const std::size_t dynamic_most = file.machine == EM_ARM ? 256 : 512;
    const std::size_t static_most = file.machine == EM_ARM ? 800 : 1600;
    EXPECT_LE(file.size, 1024 * (is_static ? static_most : dynamic_most));
}

TEST_F(ShippedProgram, SuitsItsMachine) {
    if (file.machine == EM_ARM) {
        EXPECT_EQ(file.width, 32);
        EXPECT_EQ(file.flags & EF_ARM_EABIMASK, EF_ARM_EABI_VER5);
        EXPECT_NE(file.flags & EF_ARM_ABI_FLOAT_HARD, 0U);
    } else {
        EXPECT_EQ(file.width, 64);
    }
}

} // namespace
