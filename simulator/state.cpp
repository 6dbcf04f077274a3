// State files. Each part of the home is a row with its reader and its writer; a part, or a field
// of one, that no row knows is an error, since it would be a misspelt one.
#include "simulator/state.h"

#include <algorithm>
#include <initializer_list>
#include <nlohmann/json.hpp>
#include <stdexcept>

namespace {

using Json = nlohmann::ordered_json;

/// A field's text; whatever else the record holds must be one of the known names.
std::string text_field(const Json &record, const char *name) {
    const auto found = record.find(name);
    return found == record.end() ? "" : found->get<std::string>();
}

void check_fields(const Json &record, std::initializer_list<std::string_view> names) {
    if (!record.is_object()) {
        throw std::runtime_error("a record is no object");
    }
    for (const auto &[name, value] : record.items()) {
        if (std::find(names.begin(), names.end(), name) == names.end()) {
            throw std::runtime_error("unknown field '" + name + "'");
        }
    }
}

/// The members of an object, which a part with named records must be.
const Json &object_of(const Json &part) {
    if (!part.is_object()) {
        throw std::runtime_error("is no object");
    }
    return part;
}

void read_elements(const Json &part, Home &home) {
    home.elements.clear();
    for (const auto &[name, record] : object_of(part).items()) {
        check_fields(record, {"status", "value"});
        home.elements[name] = {text_field(record, "status"), text_field(record, "value")};
    }
}

Json write_elements(const Home &home) {
    Json part = Json::object();
    for (const auto &[name, element] : home.elements) {
        part[name] = {{"status", element.status}, {"value", element.value}};
    }
    return part;
}

void read_sessions(const Json &part, Home &home) {
    home.sessions.clear();
    for (const auto &[session, user] : object_of(part).items()) {
        home.sessions[session] = user.get<std::string>();
    }
}

Json write_sessions(const Home &home) {
    Json part = Json::object();
    for (const auto &[session, user] : home.sessions) {
        part[session] = user;
    }
    return part;
}

void read_neighbours(const Json &part, Home &home) {
    home.neighbours.clear();
    for (const auto &[uid, record] : object_of(part).items()) {
        check_fields(record, {"name", "address", "port", "optionals"});
        home.neighbours[uid] = {text_field(record, "name"), text_field(record, "address"),
                                text_field(record, "port"), text_field(record, "optionals")};
    }
}

Json write_neighbours(const Home &home) {
    Json part = Json::object();
    for (const auto &[uid, neighbour] : home.neighbours) {
        part[uid] = {{"name", neighbour.name},
                     {"address", neighbour.address},
                     {"port", neighbour.port},
                     {"optionals", neighbour.optionals}};
    }
    return part;
}

void read_schedules(const Json &part, Home &home) {
    home.schedules.clear();
    for (const Json &record : part) {
        check_fields(record, {"object", "mode", "type", "schedule"});
        home.schedules[{text_field(record, "object"), text_field(record, "mode"),
                        text_field(record, "type")}] = text_field(record, "schedule");
    }
}

Json write_schedules(const Home &home) {
    Json part = Json::array();
    for (const auto &[key, schedule] : home.schedules) {
        part.push_back({{"object", key.object},
                        {"mode", key.mode},
                        {"type", key.type},
                        {"schedule", schedule}});
    }
    return part;
}

void read_messages(const Json &part, Home &home) {
    const auto messages = part.get<std::vector<std::string>>();
    const std::size_t old = messages.size() - std::min(messages.size(), KEPT_MESSAGES);
    home.messages.assign(messages.begin() + static_cast<std::ptrdiff_t>(old), messages.end());
}

Json write_messages(const Home &home) {
    return home.messages;
}

void read_configuration(const Json &part, Home &home) {
    home.configuration = part.get<std::string>();
}

Json write_configuration(const Home &home) {
    return home.configuration;
}

struct Part {
    const char *name;
    void (*read)(const Json &part, Home &home);
    Json (*write)(const Home &home);
};

constexpr Part PARTS[] = {
    {"elements", read_elements, write_elements},
    {"sessions", read_sessions, write_sessions},
    {"neighbours", read_neighbours, write_neighbours},
    {"schedules", read_schedules, write_schedules},
    {"messages", read_messages, write_messages},
    {"configuration", read_configuration, write_configuration},
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
