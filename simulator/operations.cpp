// The operations of the web service. Lists travel as text with ';' between entries, since '|'
// separates the parameters of the clients. Nothing here knows about XML or HTTP.
#include "simulator/operations.h"

#include "simulator/text.h"
#include "simulator/version.h"

#include <algorithm>
#include <string>

namespace {

constexpr char LIST_SEPARATOR = ';';

void append_entry(std::string &list, std::string_view entry) {
    if (!list.empty()) {
        list += LIST_SEPARATOR;
    }
    list += entry;
}

void remember(Home &home, std::string message) {
    home.messages.push_back(std::move(message));
    if (home.messages.size() > KEPT_MESSAGES) {
        home.messages.pop_front();
    }
}

ScheduleKey schedule_key(const ServiceCall &call) {
    return {std::string(request_value(call, "idobject")), std::string(request_value(call, "mode")),
            std::string(request_value(call, "type"))};
}

bool session_is_open(const Home &home, const ServiceCall &call) {
    const std::string_view session = request_value(call, "sessionid");
    switch (call.operation->session) {
    case SessionRule::none:
        return true;
    case SessionRule::known_or_local:
        return session == LOCAL_SESSION || home.sessions.contains(session);
    case SessionRule::known:
        return home.sessions.contains(session);
    }
    return false;
}

} // namespace

int run_operation(Home &home, const ServiceCall &call, ResponseFields &response) {
    const Operation &operation = *call.operation;
    if (!call.complaint.empty()) {
        return SERVICE_MALFORMED;
    }
    if (!session_is_open(home, call)) {
        return SERVICE_NO_SESSION;
    }
    if (!operation.needed.empty() && request_value(call, operation.needed).empty()) {
        return SERVICE_FIELD_MISSING;
    }
    return operation.run(home, call, response);
}

int acknowledge(Home & /*home*/, const ServiceCall & /*call*/, ResponseFields & /*response*/) {
    return SERVICE_DONE;
}

int run_versioninfo(Home & /*home*/, const ServiceCall & /*call*/, ResponseFields &response) {
    response["version"] = "LUMOSIM Version: " LUMOSIM_VERSION " - ";
    return SERVICE_DONE;
}

int run_systeminfo(Home & /*home*/, const ServiceCall & /*call*/, ResponseFields &response) {
    response["systemcode"] = "LUMOSIM";
    return SERVICE_DONE;
}

int run_getelementstatus(Home &home, const ServiceCall &call, ResponseFields &response) {
    const auto found = home.elements.find(request_value(call, "idobject"));
    if (found == home.elements.end()) {
        return SERVICE_NOT_FOUND;
    }
    response["status"] = found->second.status;
    response["currentvalue"] = found->second.value;
    return SERVICE_DONE;
}

int run_getelementstatusarray(Home &home, const ServiceCall &call, ResponseFields &response) {
    std::string wanted(request_value(call, "idobjects"));
    if (wanted.empty()) { // the usual client leaves the list out
        for (const auto &[name, element] : home.elements) {
            append_entry(wanted, name);
        }
    }
    std::string states;
    std::string values;
    for (std::size_t at = 0; at <= wanted.size();) {
        const std::size_t end = std::min(wanted.find(LIST_SEPARATOR, at), wanted.size());
        const auto found = home.elements.find(std::string_view(wanted).substr(at, end - at));
        if (found == home.elements.end()) {
            return SERVICE_NOT_FOUND;
        }
        append_entry(states, found->first + "=" + found->second.status);
        append_entry(values, found->first + "=" + found->second.value);
        at = end + 1;
    }
    response["currentstate"] = states;
    response["currentvalues"] = values;
    return SERVICE_DONE;
}

int run_runonelement(Home &home, const ServiceCall &call, ResponseFields & /*response*/) {
    const std::string name(request_value(call, "idobject"));
    Element &element = home.elements[name];
    element.status = request_value(call, "operation");
    element.value = request_value(call, "payload");
    remember(home, name + " " + element.status + " " + element.value);
    return SERVICE_DONE;
}

int run_elementhaschanged(Home &home, const ServiceCall &call, ResponseFields &response) {
    Element &element = home.elements[std::string(request_value(call, "idobject"))];
    element.value = request_value(call, "currentvalue");
    response["currentvalue"] = element.value;
    return SERVICE_DONE;
}

int run_uploadlumolfile(Home &home, const ServiceCall &call, ResponseFields & /*response*/) {
    home.configuration = request_value(call, "lumolfile");
    return SERVICE_DONE;
}

int run_retrieveconfiguration(Home &home, const ServiceCall & /*call*/, ResponseFields &response) {
    response["url"] = home.origin + "/configuration";
    return SERVICE_DONE;
}

int run_login(Home &home, const ServiceCall &call, ResponseFields &response) {
    const auto *user = std::find_if(USERS.begin(), USERS.end(), [&](const User &known) {
        return known.name == request_value(call, "user") &&
               known.password == request_value(call, "pass");
    });
    if (user == USERS.end()) {
        return SERVICE_REFUSED;
    }
    home.sessions[std::string(user->session)] = user->name;
    response[REMARK] = "session " + std::string(user->session);
    return SERVICE_DONE;
}

int run_checklogged(Home &home, const ServiceCall &call, ResponseFields & /*response*/) {
    const auto found = home.sessions.find(request_value(call, "sessionid"));
    const bool owner =
        found != home.sessions.end() && found->second == request_value(call, "username");
    return owner ? SERVICE_DONE : SERVICE_NO_SESSION;
}

int run_retrievemessages(Home &home, const ServiceCall &call, ResponseFields &response) {
    const auto asked = read_number(request_value(call, "count"), 1, 1 << 30);
    const std::size_t kept = home.messages.size();
    const std::size_t count = asked ? std::min(kept, static_cast<std::size_t>(*asked)) : kept;
    std::string list;
    for (std::size_t i = kept - count; i < kept; ++i) {
        append_entry(list, home.messages[i]);
    }
    response["messagecount"] = std::to_string(count);
    response["message"] = list;
    return SERVICE_DONE;
}

int run_search4neighbours(Home &home, const ServiceCall & /*call*/, ResponseFields &response) {
    std::string list;
    for (const auto &[uid, neighbour] : home.neighbours) {
        append_entry(list, uid + "," + neighbour.name + "," + neighbour.address + "," +
                               neighbour.port + "," + neighbour.optionals);
    }
    response["neighbourlist"] = list;
    return SERVICE_DONE;
}

int run_attach2neighbour(Home &home, const ServiceCall &call, ResponseFields & /*response*/) {
    home.neighbours[std::string(request_value(call, "neighbouruid"))] = {
        std::string(request_value(call, "neighbourname")),
        std::string(request_value(call, "remoteip")),
        std::string(request_value(call, "remoteport")),
        std::string(request_value(call, "neighbouroptionals"))};
    return SERVICE_DONE;
}

int run_detach2neighbour(Home &home, const ServiceCall &call, ResponseFields & /*response*/) {
    const auto found = home.neighbours.find(request_value(call, "neighbouruid"));
    if (found == home.neighbours.end()) {
        return SERVICE_NOT_FOUND;
    }
    home.neighbours.erase(found);
    return SERVICE_DONE;
}

/// A neighbour is simulated as a mirror of this home: its interfaces are the same elements.
int run_discover2neighbour(Home &home, const ServiceCall &call, ResponseFields &response) {
    if (!home.neighbours.contains(request_value(call, "neighbouruid"))) {
        return SERVICE_NOT_FOUND;
    }
    int number = 0;
    for (const auto &[name, element] : home.elements) {
        append_entry(response["interfacesidlist"], std::to_string(++number));
        append_entry(response["interfacesnamelist"], name);
        append_entry(response["interfacestypelist"], "ELEMENT");
        append_entry(response["interfacesvaluelist"], element.value);
        append_entry(response["interfacesaccessmodelist"], "RW");
    }
    return SERVICE_DONE;
}

int run_openobjectchannel(Home &home, const ServiceCall &call, ResponseFields & /*response*/) {
    const bool attached =
        std::any_of(home.neighbours.begin(), home.neighbours.end(), [&](const auto &entry) {
            return entry.second.address == request_value(call, "remoteip") &&
                   entry.second.port == request_value(call, "remoteport");
        });
    return attached ? SERVICE_DONE : SERVICE_NOT_FOUND;
}

/// The reader of the simulated home always holds the same valid tag.
int run_abbmacreadtagdata(Home & /*home*/, const ServiceCall & /*call*/, ResponseFields &response) {
    response = {{"tagnumber", "1"},
                {"tagtype", "GUEST"},
                {"tagtypeoptionals", "0"},
                {"tagplantcode", "0001"},
                {"isblank", "0"},
                {"hasvalidplantcode", "1"},
                {"expiredatetime", "2030-12-31 12:00:00"},
                {"ispresent", "1"}};
    return SERVICE_DONE;
}

/// The simulated database answers every statement with the statement itself.
int run_databasesocketoperation(Home & /*home*/, const ServiceCall &call,
                                ResponseFields &response) {
    const std::string_view statement = request_value(call, "statement");
    response["payload"] = statement;
    response["payload-len"] = std::to_string(statement.size());
    return SERVICE_DONE;
}

int run_settimeschedule(Home &home, const ServiceCall &call, ResponseFields & /*response*/) {
    home.schedules[schedule_key(call)] = request_value(call, "schedule");
    return SERVICE_DONE;
}

int run_gettimeschedule(Home &home, const ServiceCall &call, ResponseFields &response) {
    const auto found = home.schedules.find(schedule_key(call));
    if (found == home.schedules.end()) {
        return SERVICE_NOT_FOUND;
    }
    response["schedule"] = found->second;
    return SERVICE_DONE;
}

int run_getusergrants(Home & /*home*/, const ServiceCall &call, ResponseFields &response) {
    if (request_value(call, "pin") != ALARM_PIN) {
        return SERVICE_REFUSED;
    }
    response["partializationgrants"] = "PERIMETER;INSIDE";
    return SERVICE_DONE;
}

int run_stopalarm(Home & /*home*/, const ServiceCall &call, ResponseFields & /*response*/) {
    return request_value(call, "pin") == ALARM_PIN ? SERVICE_DONE : SERVICE_REFUSED;
}
