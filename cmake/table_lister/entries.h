// Everything that can be asked with lumocmd, read off the program's own tables: what the manual,
// the completions and the documents list is made from it or compared with it.

#pragma once

#include "front/request_types.h"
#include "gateways/gateway_exchange.h"

#include <string>
#include <vector>

/// One function of one request type.
struct function_entry {
    std::string name;                      ///< "*": any name is taken
    std::vector<std::string> items;        ///< names of the parameters, in order
    std::string optional_item;             ///< may stand before the others; empty: none
    std::string note;                      ///< what a list cannot say, in the manual's own markup
    std::vector<std::string> results = {}; ///< names of the result lines, in order
};

/// One request type that a client carries.
struct type_entry {
    const request_type_row *row;
    const gateway_profile *gateway; ///< null: no gateway
    std::vector<function_entry> functions;
};

/// Reads the tables.
/// @param definition path of the web service's definition, which alone names the fields of
/// requests.
/// @param entries receives the types in the order of the help.
/// @return what is wrong with the tables, with what to do; empty when they fit together.
std::string read_entries(const std::string &definition, std::vector<type_entry> *entries);

/// The list of a function as its users write it: "SectionName|Payload", "-" when it takes none.
std::string list_of(const function_entry &function);
