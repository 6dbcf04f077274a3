#include "tests/program/elf_file.h"

#include <cstring>
#include <elf.h>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace harness {

namespace {

template <typename Record> Record record_at(const std::string &bytes, std::size_t offset) {
    Record record;
    if (offset > bytes.size() || bytes.size() - offset < sizeof record) {
        throw std::runtime_error("ELF record outside the file");
    }
    memcpy(&record, bytes.data() + offset, sizeof record);
    return record;
}

std::string text_at(const std::string &bytes, std::size_t offset) {
    return offset < bytes.size() ? std::string(bytes.data() + offset) : std::string();
}

struct narrow {
    using header = Elf32_Ehdr;
    using segment = Elf32_Phdr;
    using section = Elf32_Shdr;
    using dynamic = Elf32_Dyn;
    using symbol = Elf32_Sym;
};

struct wide {
    using header = Elf64_Ehdr;
    using segment = Elf64_Phdr;
    using section = Elf64_Shdr;
    using dynamic = Elf64_Dyn;
    using symbol = Elf64_Sym;
};

template <typename Width>
void read_segments(const std::string &bytes, const typename Width::header &header, elf_file *file) {
    for (std::size_t i = 0; i < header.e_phnum; i++) {
        const auto segment = record_at<typename Width::segment>(
            bytes, header.e_phoff + i * sizeof(typename Width::segment));
        file->has_interpreter |= segment.p_type == PT_INTERP;
        file->has_relro |= segment.p_type == PT_GNU_RELRO;
        if (segment.p_type == PT_GNU_STACK) {
            file->stack_is_executable = (segment.p_flags & PF_X) != 0;
        }
    }
}

template <typename Width>
void read_dynamic(const std::string &bytes, const typename Width::section &section,
                  std::size_t strings, elf_file *file) {
    for (std::size_t at = 0; at < section.sh_size; at += sizeof(typename Width::dynamic)) {
        const auto entry = record_at<typename Width::dynamic>(bytes, section.sh_offset + at);
        const auto value = entry.d_un.d_val;
        switch (entry.d_tag) {
        case DT_NEEDED:
            file->needed.push_back(text_at(bytes, strings + value));
            break;
        case DT_TEXTREL:
            file->relocates_text = true;
            break;
        case DT_FLAGS:
            file->relocates_text |= (value & DF_TEXTREL) != 0;
            file->binds_now |= (value & DF_BIND_NOW) != 0;
            break;
        case DT_FLAGS_1:
            file->is_pie = (value & DF_1_PIE) != 0;
            break;
        default:
            break;
        }
    }
}

template <typename Width>
void read_imports(const std::string &bytes, const typename Width::section &section,
                  std::size_t strings, elf_file *file) {
    for (std::size_t at = 0; at < section.sh_size; at += sizeof(typename Width::symbol)) {
        const auto symbol = record_at<typename Width::symbol>(bytes, section.sh_offset + at);
        if (symbol.st_shndx == SHN_UNDEF && symbol.st_name != 0) {
            file->imports.push_back(text_at(bytes, strings + symbol.st_name));
        }
    }
}

template <typename Width> void read_all(const std::string &bytes, elf_file *file) {
    const auto header = record_at<typename Width::header>(bytes, 0);
    file->type = header.e_type;
    file->machine = header.e_machine;
    file->flags = header.e_flags;
    read_segments<Width>(bytes, header, file);
    const auto section = [&](std::size_t index) {
        return record_at<typename Width::section>(
            bytes, header.e_shoff + index * sizeof(typename Width::section));
    };
    for (std::size_t i = 0; i < header.e_shnum; i++) {
        const auto one = section(i);
        file->has_symbol_table |= one.sh_type == SHT_SYMTAB;
        if (one.sh_type == SHT_DYNAMIC) {
            read_dynamic<Width>(bytes, one, section(one.sh_link).sh_offset, file);
        } else if (one.sh_type == SHT_DYNSYM) {
            read_imports<Width>(bytes, one, section(one.sh_link).sh_offset, file);
        }
    }
}

} // namespace

elf_file read_elf(const std::string &path) {
    std::ifstream stream(path, std::ios::binary);
    const std::string bytes(std::istreambuf_iterator<char>(stream), {});
    if (bytes.size() < EI_NIDENT || bytes.compare(0, SELFMAG, ELFMAG) != 0) {
        throw std::runtime_error(path + " is no ELF file");
    }
    elf_file file = {};
    file.size = bytes.size();
    file.stack_is_executable = true;
    if (bytes[EI_CLASS] == ELFCLASS32) {
        file.width = 32;
        read_all<narrow>(bytes, &file);
    } else {
        file.width = 64;
        read_all<wide>(bytes, &file);
    }
    return file;
}

} // namespace harness
