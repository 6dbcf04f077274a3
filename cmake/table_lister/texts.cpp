#include "cmake/table_lister/texts.h"

#include "front/product.h"
#include "front/status_ranges.h"

#include <algorithm>

namespace {

constexpr int LOW_BITS = 0xff; ///< of a status, as a shell sees it

/// The types that a predicate picks, in the order of the table.
template <typename Picks> std::string keywords(const char *separator, Picks picks) {
    std::string list;
    for (const request_type_row &row : REQUEST_TYPES) {
        if (picks(row)) {
            list += (list.empty() ? "" : separator) + std::string(row.keyword);
        }
    }
    return list;
}

std::string kind_keywords(request_kind kind, const char *separator) {
    return keywords(separator, [kind](const request_type_row &row) { return row.kind == kind; });
}

std::string gateway_keywords(const std::vector<type_entry> &types, const char *separator) {
    return keywords(separator, [&types](const request_type_row &row) {
        return std::any_of(types.begin(), types.end(), [&row](const type_entry &type) {
            return type.row == &row && type.gateway != nullptr;
        });
    });
}

/// "101, 105 to 107" for the codes of a base.
std::string own_codes(int base, int mask, const char *to) {
    const auto code = [base, mask](int offset) { return std::to_string((base + offset) & mask); };
    return code(GATEWAY_FUNCTION_NOT_SUPPORTED) + ", " + code(GATEWAY_CONNECT_FAILED) + to +
           code(GATEWAY_ANSWER_FAILED);
}

std::vector<type_entry> gateways_by_code(const std::vector<type_entry> &types) {
    std::vector<type_entry> gateways;
    std::copy_if(types.begin(), types.end(), std::back_inserter(gateways),
                 [](const type_entry &type) { return type.gateway != nullptr; });
    std::stable_sort(gateways.begin(), gateways.end(), [](const auto &one, const auto &other) {
        return one.gateway->code_base < other.gateway->code_base;
    });
    return gateways;
}

// ---------------------------------------------------------------------------------------------
// Completions

/// "TYPE FUNCTION LIST" per function.
std::string completion_rows(const std::vector<type_entry> &types) {
    std::string rows;
    for (const type_entry &type : types) {
        for (const function_entry &function : type.functions) {
            rows += (rows.empty() ? "" : "\n") + std::string(type.row->keyword) + " " +
                    function.name + " " + list_of(function);
        }
    }
    return rows;
}

// ---------------------------------------------------------------------------------------------
// The manual

/// Parameters with a bar between them; a long list may break behind a bar.
std::string manual_parameters(const function_entry &function) {
    if (function.items.empty()) {
        return "no parameters\n";
    }
    std::string text;
    if (!function.optional_item.empty()) {
        text = ".Op Ar " + function.optional_item + " Ns | Ns\n";
    }
    const char *macro = ".Ar ";
    for (const std::string &item : function.items) {
        text += macro + item;
        macro = " Ns |\\: Ns Ar ";
    }
    return text + "\n";
}

std::string manual_function(const function_entry &function) {
    std::string text = ".It Cm " + function.name + "\n" + manual_parameters(function);
    if (!function.note.empty()) {
        text += ".br\n" + function.note + "\n";
    }
    const char *before = ".br\nShows: ";
    for (const std::string &name : function.results) {
        text += before + name;
        before = ",\n";
    }
    return text + (function.results.empty() ? "" : ".\n");
}

std::string manual_type(const type_entry &type) {
    std::string text = ".Ss " + std::string(type.row->keyword) + "\n";
    if (type.row->help.socket != nullptr) {
        text += "Usual socket:\n.Pa " + std::string(type.row->help.socket) + " .\n";
    }
    text += ".Bl -tag -width Ds\n";
    for (const function_entry &function : type.functions) {
        text += manual_function(function);
    }
    return text + ".El";
}

std::string manual_gateways(const std::vector<type_entry> &types) {
    std::string text;
    for (const type_entry &type : types) {
        if (type.gateway != nullptr) {
            text += (text.empty() ? "" : "\n") + manual_type(type);
        }
    }
    return text;
}

std::string manual_service(const std::vector<type_entry> &types) {
    const auto service = std::find_if(types.begin(), types.end(), [](const type_entry &type) {
        return type.row->kind == WEB_SERVICE_KIND;
    });
    return manual_type(*service);
}

std::string manual_codes(const std::vector<type_entry> &types) {
    std::string text;
    for (const type_entry &type : gateways_by_code(types)) {
        const int base = type.gateway->code_base;
        text += (text.empty() ? ".It " : "\n.It ") + own_codes(base, -1, " to ") + " Ta " +
                own_codes(base, LOW_BITS, " to ") + " Ta " + type.row->name;
    }
    return text;
}

/// A line for each range of codes.
std::string manual_prefixes() {
    std::string text;
    for (const status_range &range : STATUS_RANGES) {
        text += (text.empty() ? "" : ",\n") + std::string(range.prefix);
        if (range.first == INT_MIN) {
            text += " up to " + std::to_string(range.last);
        } else if (range.last == INT_MAX) {
            text += " from " + std::to_string(range.first);
        } else {
            text += " " + std::to_string(range.first) + " to " + std::to_string(range.last);
        }
    }
    return text + ".";
}

// ---------------------------------------------------------------------------------------------
// Documents

std::string line_names(const gateway_profile &gateway, const std::string &name) {
    std::string names;
    for (const gateway_function &function : gateway.functions) {
        if (function.name != name) {
            continue;
        }
        for (const gateway_line &line : function.lines) {
            names += (names.empty() ? "" : ", ") + std::string(line.name);
            if (line.fixed != nullptr) {
                names += " (always " + std::string(line.fixed) + ")";
            }
        }
    }
    return names;
}

/// The functions with their lines; those that share their lines are listed together.
std::string requests_of(const type_entry &type) {
    std::string requests;
    std::string lines;
    for (const function_entry &function : type.functions) {
        const std::string own = line_names(*type.gateway, function.name);
        if (own == lines) {
            requests.insert(requests.rfind("`:") + 1, ", `" + function.name + "`");
        } else {
            requests += (requests.empty() ? "" : "; ") + ("`" + function.name) + "`: " + own;
        }
        lines = own;
    }
    return requests;
}

} // namespace

std::map<std::string, std::string> template_texts(const std::vector<type_entry> &types) {
    return {{"DEFAULT_URL", LUMOWS_DEFAULT_URL},
            {"FUNCTIONS", completion_rows(types)},
            {"LOCAL_TYPES", kind_keywords(LOCAL_KIND, " | ")},
            {"GATEWAY_TYPES", gateway_keywords(types, " , ")},
            {"INTERNET_TYPES", kind_keywords(INTERNET_KIND, " , ")},
            {"UNSUPPORTED_TYPES", kind_keywords(UNSUPPORTED_KIND, " , ")},
            {"GATEWAY_FUNCTIONS", manual_gateways(types)},
            {"SERVICE_FUNCTIONS", manual_service(types)},
            {"GATEWAY_CODES", manual_codes(types)},
            {"PREFIXES", manual_prefixes()}};
}

std::vector<std::string> gateway_rows(const std::vector<type_entry> &types) {
    std::vector<std::string> rows;
    for (const type_entry &type : types) {
        if (type.gateway != nullptr) {
            rows.push_back(std::string("| ") + type.row->name + " | `" + type.row->help.socket +
                           "` | `" + type.gateway->prefix + "` | " +
                           own_codes(type.gateway->code_base, -1, "–") + " | " + requests_of(type) +
                           " |");
        }
    }
    return rows;
}
