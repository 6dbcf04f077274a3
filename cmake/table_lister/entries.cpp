#include "cmake/table_lister/entries.h"

#include "front/dispatch_table.h"
#include "gateways/request_builder.h"
#include "webservice/operation_row.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <map>
#include <regex>
#include <sstream>

namespace {

/// What the tables cannot say of a function: names that differ from those of its count message, an
/// item that may be left out, a remark.
struct remark {
    const char *function;
    const char *items = nullptr; ///< null: as in the table
    const char *optional_item = "";
    const char *note = "";
};

constexpr remark REMARKS[] = {
    // The names that the daemon knows them by.
    {.function = "SENDSMSTOOLDATAGRAM", .items = "SectionName, To, Msg"},
    {.function = "RECVSMSTOOLDATAGRAM", .items = "From, Msg"},
    {.function = "SENDLINTRONICDATAGRAM",
     .note = "Device is two characters long, Command three, both zero-filled."},
    {.function = "SENDTUTONDOGETDATAGRAM", .note = "The payload must be given, but is not sent."},
    {.function = "SERVICE_RUNONELEMENT",
     .items = "idobject, operation, payload, optionals, hashcode",
     .optional_item = "sessionid",
     .note = "The\n.Ar sessionid\nmay be left out when the endpoint is the local one."},
};

/// The request fields of each operation of the definition, by function name and in wire order.
using fields_by_function = std::map<std::string, std::vector<std::string>>;

std::vector<std::string> split_names(const std::string &names) {
    std::vector<std::string> result;
    const std::regex name("[^, |]+");
    for (std::sregex_iterator found(names.begin(), names.end(), name), end; found != end; ++found) {
        result.push_back(found->str());
    }
    return result;
}

std::string upper(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char letter) { return static_cast<char>(std::toupper(letter)); });
    return text;
}

fields_by_function read_definition(const std::string &path) {
    std::ifstream file(path);
    const std::string text(std::istreambuf_iterator<char>(file), {});
    const std::regex operation("\nint ns__(service_\\w+)\\(([^)]*)\\);");
    const std::regex field("char \\*(\\w+)");
    fields_by_function result;
    for (std::sregex_iterator found(text.begin(), text.end(), operation), end; found != end;
         ++found) {
        std::vector<std::string> &fields = result[upper((*found)[1])];
        const std::string arguments = (*found)[2];
        for (std::sregex_iterator each(arguments.begin(), arguments.end(), field); each != end;
             ++each) {
            std::string name = (*each)[1];
            std::replace(name.begin(), name.end(), '_', '-'); // as it is written on the wire
            fields.push_back(name);
        }
    }
    return result;
}

bool knows(const gateway_profile &gateway, std::string_view name) {
    return std::any_of(gateway.functions.begin(), gateway.functions.end(),
                       [name](const gateway_function &known) { return known.name == name; });
}

/// Takes gateway and functions from a builder.
std::string read_builder(const request_builder &builder, type_entry *entry) {
    entry->gateway = builder.gateway;
    for (const builder_row &row : builder.rows) {
        if (!knows(*builder.gateway, row.function)) {
            return std::string(row.function) + " is served by " + builder.name +
                   " but unknown to " + builder.gateway->source_tag +
                   ": add it to the FUNCTIONS of the gateway's source";
        }
        entry->functions.push_back({row.function, split_names(row.needed), "", ""});
    }
    return "";
}

/// What a client is made of; null when it is no gateway's builder.
const request_builder *find_builder(local_client *client) {
    for (const local_builder &row : local_builders()) {
        if (row.make == client) {
            return row.builder;
        }
    }
    return nullptr;
}

/// "Current Value" of "[lumocmd] Current Value: ".
std::vector<std::string> result_names(const operation_row &row) {
    constexpr std::string_view before = "[lumocmd] ";
    constexpr std::string_view after = ": ";
    std::vector<std::string> names;
    for (const result_line &line : row.lines) {
        if (line.text != nullptr) {
            const std::string_view text = line.text;
            names.emplace_back(
                text.substr(before.size(), text.size() - before.size() - after.size()));
        }
    }
    return names;
}

std::string read_operations(fields_by_function defined, std::vector<function_entry> *functions) {
    for (const operation_row &row : webservice_operations()) {
        const auto found = defined.find(row.name);
        if (found == defined.end()) {
            return std::string(row.name) + " is no operation of webservice/lumows.gsoap";
        }
        std::vector<std::string> items = found->second;
        const std::size_t count = row.count > 0 ? static_cast<std::size_t>(row.count) : 0;
        items.resize(std::min(items.size(), count));
        functions->push_back({row.name, items, "", "", result_names(row)});
        defined.erase(found);
    }
    if (!defined.empty()) {
        return defined.begin()->first +
               " is an operation of webservice/lumows.gsoap without a row: add it to OPERATIONS in "
               "webservice/soapcallsclientutil.cpp";
    }
    return "";
}

std::string add_remarks(std::vector<type_entry> *entries) {
    for (const remark &row : REMARKS) {
        bool is_known = false;
        for (type_entry &type : *entries) {
            for (function_entry &function : type.functions) {
                if (function.name != row.function) {
                    continue;
                }
                is_known = true;
                function.note = row.note;
                function.optional_item = row.optional_item;
                if (row.items != nullptr) {
                    function.items = split_names(row.items);
                }
            }
        }
        if (!is_known) {
            return std::string("no such function: ") + row.function +
                   "; correct REMARKS in cmake/table_lister/entries.cpp";
        }
    }
    return "";
}

} // namespace

std::string read_entries(const std::string &definition, std::vector<type_entry> *entries) {
    for (const request_type_row &row : REQUEST_TYPES) {
        const dispatch_row *dispatch = find_dispatch(row.type);
        if (dispatch == nullptr) {
            continue;
        }
        type_entry entry = {&row, nullptr, {}};
        const request_builder *builder = find_builder(dispatch->client);
        std::string complaint;
        if (dispatch->client == nullptr) {
            complaint = read_operations(read_definition(definition), &entry.functions);
        } else if (dispatch->client == make_fsmcorelocal_request) {
            entry.functions = {{"*", split_names(row.help.parameters), "", ""}};
        } else if (builder != nullptr) {
            complaint = read_builder(*builder, &entry);
        } else {
            complaint = std::string(row.keyword) +
                        " has no builder: add it to LOCAL_BUILDERS in gateways/localclientutil.cpp";
        }
        if (!complaint.empty()) {
            return complaint;
        }
        entries->push_back(entry);
    }
    return add_remarks(entries);
}

std::string list_of(const function_entry &function) {
    std::string list = function.optional_item.empty() ? "" : "[" + function.optional_item + "|]";
    const char *bar = "";
    for (const std::string &item : function.items) {
        list += bar + item;
        bar = "|";
    }
    return list.empty() ? "-" : list;
}
