// The lists of the manual, the completions and the documents, as they stand there.

#pragma once

#include "cmake/table_lister/entries.h"

#include <map>
#include <string>
#include <vector>

/// The texts that templates are filled with, by the name of their place mark: @NAME@ in a template.
std::map<std::string, std::string> template_texts(const std::vector<type_entry> &types);

/// Lines that a document must hold: all of them, and no other that matches the pattern.
struct document_lines {
    const char *what;     ///< for the complaint
    const char *document; ///< file name
    const char *pattern;  ///< regular expression; a group in it stands for the whole line
    bool is_ordered;      ///< false: in any order and any number
    std::vector<std::string> lines;
};

std::vector<document_lines> expected_lines(const std::vector<type_entry> &types);
