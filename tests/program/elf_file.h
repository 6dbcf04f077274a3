// Just enough of an ELF file, of either width, to tell how a program was linked.

#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace harness {

struct elf_file {
    std::size_t size;                 ///< of the whole file, in bytes
    int width;                        ///< 32 or 64
    unsigned type;                    ///< ET_...
    unsigned machine;                 ///< EM_...
    std::uint32_t flags;              ///< of the header
    bool has_interpreter;             ///< a program, not a shared library
    bool has_relro;                   ///< has a segment that becomes read-only after relocation
    bool stack_is_executable;         ///< also when the file does not say
    bool binds_now;                   ///< all symbols are bound at the start
    bool is_pie;                      ///< position-independent executable
    bool relocates_text;              ///< needs its code writable while loading
    bool has_symbol_table;            ///< not stripped
    std::vector<std::string> needed;  ///< shared libraries
    std::vector<std::string> imports; ///< names taken from them
};

/// Reads a file; throws when it is no ELF file of this machine's byte order.
elf_file read_elf(const std::string &path);

} // namespace harness
