// State files. Each part of the home is a row with its reader and its writer; a part, or a field
// of one, that no row knows is an error, since it would be a misspelt one.
#include "simulator/state.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <stdexcept>

namespace {

using Json = nlohmann::ordered_json;

/// A schedule as one record.
struct Schedule {
    std::string object;
    std::string mode;
    std::string type;
    std::string schedule;
};

/// The fields of a record under their names in the file.
using Fields = std::vector<std::pair<const char *, std::string *>>;

Fields fields_of(Element &record) {
    return {{"status", &record.status}, {"value", &record.value}};
}

Fields fields_of(Neighbour &record) {
    return {{"name", &record.name},
            {"address", &record.address},
            {"port", &record.port},
            {"optionals", &record.optionals}};
}

Fields fields_of(Schedule &record) {
    return {{"object", &record.object},
            {"mode", &record.mode},
            {"type", &record.type},
            {"schedule", &record.schedule}};
}

/// The members of an object, which a part with named records must be.
const Json &object_of(const Json &part, const char *complaint = "is no object") {
    if (!part.is_object()) {
        throw std::runtime_error(complaint);
    }
    return part;
}

/// Fields that are left out are empty.
template <typename Record> void read_record(const Json &json, Record &record) {
    record = {};
    const Fields fields = fields_of(record);
    for (const auto &[name, value] : object_of(json, "a record is no object").items()) {
        const auto field =
            std::find_if(fields.begin(), fields.end(),
                         [&known = name](const auto &row) { return row.first == known; });
        if (field == fields.end()) {
            throw std::runtime_error("unknown field '" + name + "'");
        }
        *field->second = value.template get<std::string>();
    }
}

template <typename Record> Json write_record(Record record) {
    Json json;
    for (const auto &[name, text] : fields_of(record)) {
        json[name] = *text;
    }
    return json;
}

template <typename Records> void read_records(const Json &part, Records &records) {
    records.clear();
    for (const auto &[name, record] : object_of(part).items()) {
        read_record(record, records[name]);
    }
}

template <typename Records> Json write_records(const Records &records) {
    Json part = Json::object();
    for (const auto &[name, record] : records) {
        part[name] = write_record(record);
    }
    return part;
}

void read_schedules(const Json &part, Home &home) {
    home.schedules.clear();
    for (const Json &record : part) {
        Schedule read;
        read_record(record, read);
        home.schedules[{read.object, read.mode, read.type}] = read.schedule;
    }
}

Json write_schedules(const Home &home) {
    Json part = Json::array();
    for (const auto &[key, schedule] : home.schedules) {
        part.push_back(write_record(Schedule{key[0], key[1], key[2], schedule}));
    }
    return part;
}

void read_messages(const Json &part, Home &home) {
    home.messages = part.get<std::deque<std::string>>();
    while (home.messages.size() > KEPT_MESSAGES) {
        home.messages.pop_front();
    }
}

struct Part {
    const char *name;
    void (*read)(const Json &part, Home &home);
    Json (*write)(const Home &home);
};

constexpr Part PARTS[] = {
    {"elements", [](const Json &part, Home &home) { read_records(part, home.elements); },
     [](const Home &home) { return write_records(home.elements); }},
    {"sessions", [](const Json &part, Home &home) { object_of(part).get_to(home.sessions); },
     [](const Home &home) { return Json(home.sessions); }},
    {"neighbours", [](const Json &part, Home &home) { read_records(part, home.neighbours); },
     [](const Home &home) { return write_records(home.neighbours); }},
    {"schedules", read_schedules, write_schedules},
    {"messages", read_messages, [](const Home &home) { return Json(home.messages); }},
    {"configuration", [](const Json &part, Home &home) { part.get_to(home.configuration); },
     [](const Home &home) { return Json(home.configuration); }},
};

void read_part(const std::string &name, const Json &value, Home &home) {
    const auto *part = std::find_if(std::begin(PARTS), std::end(PARTS),
                                    [&](const Part &row) { return row.name == name; });
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

std::string read_state(const std::string &text, Home &home) {
    try {
        const Json state = Json::parse(text);
        for (const auto &[name, value] : object_of(state).items()) {
            read_part(name, value, home);
        }
        return "";
    } catch (const std::exception &error) {
        return error.what();
    }
}

std::string write_state(const Home &home) {
    Json state;
    for (const Part &part : PARTS) {
        state[part.name] = part.write(home);
    }
    return state.dump(4, ' ', false, Json::error_handler_t::replace) + "\n";
}
