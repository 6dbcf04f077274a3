// How the shipped program is linked: what it needs at run time and what protects it.

#include "tests/harness/process.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <regex>
#include <string>

namespace {

using namespace harness;

struct link_row {
    const char *statement;
    const char *pattern; ///< in what readelf shows
    bool expected = true;
};

// With any linkage.
const link_row EVERY_PROGRAM[] = {
    {"never writes its code", "TEXTREL", false},
    {"becomes read-only after relocation", "GNU_RELRO"},
    {"has no executable stack", "GNU_STACK [^\n]* RW  0x"},
    {"is stripped", "\\.symtab", false},
    {"is for 64 bits, or for hard-float ARM",
     "Class: +ELF64|Machine: +ARM\n[^]*Flags: [^\n]*Version5 EABI, hard-float ABI"},
};

// A stripped static program does not say what it calls.
const link_row DYNAMIC_PROGRAM[] = {
    {"binds its symbols at the start", "BIND_NOW"},
    {"guards its stack", " UND __stack_chk_fail"},
    // Names that the SOAP runtime, which is fortified by itself, does not import.
    {"is fortified", " UND __printf_chk"},
    {"is fortified", " UND __vprintf_chk"},
    // On ARM the loader, a part of libc, holds the stack guard.
    {"needs libc alone", "NEEDED[^\n]*\\[(?!libc\\.so\\.6\\]|ld-linux-armhf\\.so\\.3\\])", false},
};

class ShippedProgram : public testing::Test {
  protected:
    template <typename Rows> void expect(const Rows &rows) const {
        for (const link_row &row : rows) {
            EXPECT_EQ(std::regex_search(shown_, std::regex(row.pattern)), row.expected)
                << row.statement;
        }
    }

    const std::string shown_ =
        run({"env", "LC_ALL=C", "readelf", "-hlSdW", "--dyn-syms", lumocmd_path()}).output;
    const bool is_static_ = shown_.find("INTERP") == std::string::npos;
    const bool is_arm_ =
        shown_.find("Class:                             ELF32") != std::string::npos;
};

TEST_F(ShippedProgram, IsHardened) {
    expect(EVERY_PROGRAM);
    if (!is_static_) {
        expect(DYNAMIC_PROGRAM);
    }
    // Debian has no start file of a position-independent static ARM program.
    EXPECT_TRUE((is_static_ && is_arm_) || shown_.find("Flags: NOW PIE") != std::string::npos);
}

TEST_F(ShippedProgram, IsSmallEnoughForTheController) {
    // In KiB. libc is two thirds of a static file; desk code is about twice as large.
    const std::size_t dynamic_most = is_arm_ ? 256 : 512;
    const std::size_t static_most = is_arm_ ? 800 : 1600;
    EXPECT_LE(std::filesystem::file_size(lumocmd_path()),
              1024 * (is_static_ ? static_most : dynamic_most));
}

} // namespace
