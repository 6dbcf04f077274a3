// The lists of the manual, the completions and the documents, as they stand there.

#pragma once

#include "cmake/table_lister/entries.h"

#include <map>
#include <string>
#include <vector>

/// The texts that templates are filled with, by the name of their place mark: @NAME@ in a template.
std::map<std::string, std::string> template_texts(const std::vector<type_entry> &types);

/// The gateways as the table of docs/protocols.md has them, a line each.
std::vector<std::string> gateway_rows(const std::vector<type_entry> &types);
