// State files. Each part of the home is a row with its reader and its writer. Unknown parts and
// fields are errors, since they may be misspelt.
#include "simulator/daemons.h"
#include "simulator/home.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <stdexcept>

namespace {

using json_value = nlohmann::ordered_json;

/// A schedule as one record.
struct schedule_record {
    std::string object;
    std::string mode;
    std::string type;
    std::string schedule;
};

/// The fields of a record under their names in the file.
using field_list = std::vector<std::pair<const char *, std::string *>>;

field_list fields_of(home_element &record) {
    return {{"status", &record.status}, {"value", &record.value}};
}

field_list fields_of(home_neighbour &record) {
    return {{"name", &record.name},
            {"address", &record.address},
            {"port", &record.port},
            {"optionals", &record.optionals}};
}

field_list fields_of(schedule_record &record) {
    return {{"object", &record.object},
            {"mode", &record.mode},
            {"type", &record.type},
            {"schedule", &record.schedule}};
}

/// The members of an object, which a part with named records must be.
const json_value &object_of(const json_value &part, const char *complaint = "is no object") {
    if (!part.is_object()) {
        throw std::runtime_error(complaint);
    }
    return part;
}

/// Fields that are left out are empty.
template <typename record_type> void read_record(const json_value &json, record_type &record) {
    record = {};
    const field_list fields = fields_of(record);
    for (const auto &[name, value] : object_of(json, "a record is no object").items()) {
        const auto field = std::ranges::find(fields, name, &field_list::value_type::first);
        if (field == fields.end()) {
            throw std::runtime_error("unknown field '" + name + "'");
        }
        *field->second = value.template get<std::string>();
    }
}

template <typename record_type> json_value write_record(record_type record) {
    json_value json;
    for (const auto &[name, text] : fields_of(record)) {
        json[name] = *text;
    }
    return json;
}

template <auto part> void read_records(const json_value &json, home_state &home) {
    (home.*part).clear();
    for (const auto &[name, record] : object_of(json).items()) {
        read_record(record, (home.*part)[name]);
    }
}

template <auto part> json_value write_records(const home_state &home) {
    json_value json = json_value::object();
    for (const auto &[name, record] : home.*part) {
        json[name] = write_record(record);
    }
    return json;
}

template <auto part> void read_texts(const json_value &json, home_state &home) {
    object_of(json).get_to(home.*part);
}

template <auto part> json_value write_texts(const home_state &home) {
    return json_value(home.*part);
}

void read_schedules(const json_value &part, home_state &home) {
    home.schedules.clear();
    for (const json_value &record : part) {
        schedule_record read;
        read_record(record, read);
        home.schedules[{read.object, read.mode, read.type}] = read.schedule;
    }
}

json_value write_schedules(const home_state &home) {
    json_value part = json_value::array();
    for (const auto &[key, schedule] : home.schedules) {
        part.push_back(write_record(schedule_record{key[0], key[1], key[2], schedule}));
    }
    return part;
}

void read_messages(const json_value &part, home_state &home) {
    home.messages = part.get<std::deque<std::string>>();
    while (home.messages.size() > KEPT_MESSAGES) {
        home.messages.pop_front();
    }
}

/// What is wrong with the links, now that the elements are known.
std::string complain_about_links(const home_state &home) {
    for (const auto &[place, element] : home.links) {
        std::string complaint = complain_about_link(place);
        if (!complaint.empty()) {
            return complaint;
        }
        if (!home.elements.contains(element)) {
            return complaint.append("'").append(place).append("' leads to '").append(element) +
                   "', which is no element";
        }
    }
    return "";
}

struct state_part {
    const char *name;
    void (*read)(const json_value &part, home_state &home);
    json_value (*write)(const home_state &home);
};

constexpr state_part PARTS[] = {
    {"elements", read_records<&home_state::elements>, write_records<&home_state::elements>},
    {"links", read_texts<&home_state::links>, write_texts<&home_state::links>},
    {"sessions", read_texts<&home_state::sessions>, write_texts<&home_state::sessions>},
    {"neighbours", read_records<&home_state::neighbours>, write_records<&home_state::neighbours>},
    {"schedules", read_schedules, write_schedules},
    {"messages", read_messages, write_texts<&home_state::messages>},
    {"configuration",
     [](const json_value &part, home_state &home) { part.get_to(home.configuration); },
     write_texts<&home_state::configuration>},
};

void read_part(const std::string &name, const json_value &value, home_state &home) {
    const auto *part = std::ranges::find(PARTS, name, &state_part::name);
    if (part == std::end(PARTS)) {
        throw std::runtime_error("unknown part '" + name + "'");
    }
    try {
        part->read(value, home);
    } catch (const std::exception &error) {
        throw std::runtime_error("'" + name + "': " + error.what());
    }
}

} // namespace

std::string read_state(const std::string &text, home_state &home) {
    try {
        const json_value state = json_value::parse(text);
        for (const auto &[name, value] : object_of(state).items()) {
            read_part(name, value, home);
        }
        if (!state.contains("links")) { // those from the start lead to elements from the start
            std::erase_if(home.links, [&home](const auto &link) {
                return !home.elements.contains(link.second);
            });
        }
        const std::string complaint = complain_about_links(home);
        return complaint.empty() ? "" : "'links': " + complaint;
    } catch (const std::exception &error) {
        return error.what();
    }
}

std::string write_state(const home_state &home) {
    json_value state;
    for (const state_part &part : PARTS) {
        state[part.name] = part.write(home);
    }
    return state.dump(4, ' ', false, json_value::error_handler_t::replace) + "\n";
}
