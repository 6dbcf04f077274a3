// The names in the program's own tables. They show which rows the tests lack, and are used for
// nothing else: what a name stands for is stated by the tests themselves.
#pragma once

#include <set>
#include <string>

/// Gateway requests, each as "key NAME".
std::set<std::string> program_functions();

/// Operations of the web service.
std::set<std::string> program_operations();

/// What only one side knows, a line each; empty when the names are the same.
std::string differing_names(const std::set<std::string> &program,
                            const std::set<std::string> &rows);
