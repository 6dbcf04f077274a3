// How the shipped program is linked: what it needs at run time and what protects it.

#include "tests/harness/process.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <regex>

namespace {

using namespace harness;

enum linkage { ANY, DYNAMIC }; // a stripped static program does not say what it calls

const struct {
    const char *statement;
    linkage linked;
    const char *pattern; ///< in what readelf shows
    bool expected = true;
} STATEMENTS[] = {
    {"never writes its code", ANY, "TEXTREL", false},
    {"becomes read-only after relocation", ANY, "GNU_RELRO"},
    {"has no executable stack", ANY, "GNU_STACK [^\n]* RW  0x"},
    {"is stripped", ANY, "\\.symtab", false},
    {"is for 64 bits, or for hard-float ARM", ANY,
     "Class: +ELF64|Machine: +ARM\n[^]*Flags: [^\n]*Version5 EABI, hard-float ABI"},
    {"binds its symbols at the start", DYNAMIC, "BIND_NOW"},
    {"guards its stack", DYNAMIC, " UND __stack_chk_fail"},
    // Names that the SOAP runtime, which is fortified by itself, does not import.
    {"is fortified", DYNAMIC,
     " UND __printf_chk[^]* UND __vprintf_chk|"
     " UND __vprintf_chk[^]* UND __printf_chk"},
    // On ARM the loader, a part of libc, holds the stack guard.
    {"needs libc alone", DYNAMIC, "NEEDED[^\n]*\\[(?!libc\\.so\\.6\\]|ld-linux-armhf\\.so\\.3\\])",
     false},
};

TEST(ShippedProgram, IsHardenedAndSmallEnoughForTheController) {
    const std::string shown =
        run({"env", "LC_ALL=C", "readelf", "-hlSdW", "--dyn-syms", lumocmd_path()}).output;
    const bool is_static = shown.find(" INTERP ") == std::string::npos;
    const bool is_arm = std::regex_search(shown, std::regex("Machine: +ARM\n"));
    for (const auto &row : STATEMENTS) {
        if (row.linked == ANY || !is_static) {
            EXPECT_EQ(std::regex_search(shown, std::regex(row.pattern)), row.expected)
                << row.statement;
        }
    }
    // Debian has no start file of a position-independent static ARM program.
    EXPECT_TRUE((is_static && is_arm) || shown.find("Flags: NOW PIE") != std::string::npos);
    // libc is two thirds of a static file; desk code is about twice as large.
    const std::size_t most_kib = is_static ? (is_arm ? 800 : 1600) : (is_arm ? 256 : 512);
    EXPECT_LE(std::filesystem::file_size(lumocmd_path()), 1024 * most_kib);
}

} // namespace
