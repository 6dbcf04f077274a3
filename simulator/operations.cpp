// The operations of the web service: what each does to the simulated home, and the table of them.
// Lists travel as text with ';' between entries, since '|' separates the parameters of the clients.
#include "simulator/operations.h"

#include "simulator/options.h"
#include "simulator/text.h"

#include <algorithm>

using enum session_rule;

namespace {

constexpr char LIST_SEPARATOR = ';';

std::string text(const service_call &call, std::string_view child) {
    return std::string(request_value(call, child));
}

void append_entry(std::string &list, std::string_view entry) {
    list.append(list.empty() ? 0 : 1, LIST_SEPARATOR).append(entry);
}

schedule_place schedule_key(const service_call &call) {
    return {text(call, "idobject"), text(call, "mode"), text(call, "type")};
}

int acknowledge(home_state &, const service_call &, response_fields &) {
    return SERVICE_DONE;
}

int run_versioninfo(home_state &, const service_call &, response_fields &fields) {
    fields["version"] = "LUMOSIM Version: " LUMOSIM_VERSION " - ";
    return SERVICE_DONE;
}

int run_systeminfo(home_state &, const service_call &, response_fields &fields) {
    fields["systemcode"] = "LUMOSIM";
    return SERVICE_DONE;
}

int run_getelementstatus(home_state &home, const service_call &call, response_fields &fields) {
    const auto found = home.elements.find(request_value(call, "idobject"));
    if (found == home.elements.end()) {
        return SERVICE_NOT_FOUND;
    }
    fields["status"] = found->second.status;
    fields["currentvalue"] = found->second.value;
    return SERVICE_DONE;
}

int run_getelementstatusarray(home_state &home, const service_call &call, response_fields &fields) {
    std::string wanted = text(call, "idobjects");
    if (wanted.empty()) { // the usual client leaves the list out
        for (const auto &[name, element] : home.elements) {
            append_entry(wanted, name);
        }
    }
    response_fields lists;
    for (const std::string_view name : split_text(wanted, LIST_SEPARATOR)) {
        const auto found = home.elements.find(name);
        if (found == home.elements.end()) {
            return SERVICE_NOT_FOUND;
        }
        append_entry(lists["currentstate"], found->first + "=" + found->second.status);
        append_entry(lists["currentvalues"], found->first + "=" + found->second.value);
    }
    fields = lists;
    return SERVICE_DONE;
}

int run_runonelement(home_state &home, const service_call &call, response_fields &) {
    change_element(home, text(call, "idobject"), {text(call, "operation"), text(call, "payload")});
    return SERVICE_DONE;
}

int run_elementhaschanged(home_state &home, const service_call &call, response_fields &fields) {
    fields["currentvalue"] = text(call, "currentvalue");
    home.elements[text(call, "idobject")].value = fields["currentvalue"];
    return SERVICE_DONE;
}

int run_uploadlumolfile(home_state &home, const service_call &call, response_fields &) {
    home.configuration = text(call, "lumolfile");
    return SERVICE_DONE;
}

int run_retrieveconfiguration(home_state &home, const service_call &, response_fields &fields) {
    fields["url"] = home.origin + "/configuration";
    return SERVICE_DONE;
}

int run_login(home_state &home, const service_call &call, response_fields &fields) {
    for (const user_account &user : USERS) {
        if (user.name == text(call, "user") && user.password == text(call, "pass")) {
            home.sessions[std::string(user.session)] = user.name;
            fields[REMARK] = "session " + std::string(user.session);
            return SERVICE_DONE;
        }
    }
    return SERVICE_REFUSED;
}

int run_checklogged(home_state &home, const service_call &call, response_fields &) {
    const auto found = home.sessions.find(request_value(call, "sessionid"));
    const bool owner = found != home.sessions.end() && found->second == text(call, "username");
    return owner ? SERVICE_DONE : SERVICE_NO_SESSION;
}

int run_retrievemessages(home_state &home, const service_call &call, response_fields &fields) {
    const auto asked = read_number(request_value(call, "count"), 1, 1 << 30);
    const std::size_t kept = home.messages.size();
    const std::size_t count = asked ? std::min(kept, static_cast<std::size_t>(*asked)) : kept;
    for (std::size_t i = kept - count; i < kept; ++i) {
        append_entry(fields["message"], home.messages[i]);
    }
    fields["messagecount"] = std::to_string(count);
    return SERVICE_DONE;
}

int run_search4neighbours(home_state &home, const service_call &, response_fields &fields) {
    for (const auto &[uid, neighbour] : home.neighbours) {
        append_entry(fields["neighbourlist"], uid + "," + neighbour.name + "," + neighbour.address +
                                                  "," + neighbour.port + "," + neighbour.optionals);
    }
    return SERVICE_DONE;
}

int run_attach2neighbour(home_state &home, const service_call &call, response_fields &) {
    home.neighbours[text(call, "neighbouruid")] = {text(call, "neighbourname"),
                                                   text(call, "remoteip"), text(call, "remoteport"),
                                                   text(call, "neighbouroptionals")};
    return SERVICE_DONE;
}

int run_detach2neighbour(home_state &home, const service_call &call, response_fields &) {
    return home.neighbours.erase(text(call, "neighbouruid")) != 0 ? SERVICE_DONE
                                                                  : SERVICE_NOT_FOUND;
}

/// A neighbour is simulated as a mirror of this home: its interfaces are the same elements.
int run_discover2neighbour(home_state &home, const service_call &call, response_fields &fields) {
    if (!home.neighbours.contains(request_value(call, "neighbouruid"))) {
        return SERVICE_NOT_FOUND;
    }
    int number = 0;
    for (const auto &[name, element] : home.elements) {
        append_entry(fields["interfacesidlist"], std::to_string(++number));
        append_entry(fields["interfacesnamelist"], name);
        append_entry(fields["interfacestypelist"], "ELEMENT");
        append_entry(fields["interfacesvaluelist"], element.value);
        append_entry(fields["interfacesaccessmodelist"], "RW");
    }
    return SERVICE_DONE;
}

int run_openobjectchannel(home_state &home, const service_call &call, response_fields &) {
    for (const auto &[uid, neighbour] : home.neighbours) {
        if (neighbour.address == text(call, "remoteip") &&
            neighbour.port == text(call, "remoteport")) {
            return SERVICE_DONE;
        }
    }
    return SERVICE_NOT_FOUND;
}

/// The reader of the simulated home always holds the same valid tag.
int run_abbmacreadtagdata(home_state &, const service_call &, response_fields &fields) {
    // clang-format off
    fields = {{"tagnumber", "1"},        {"tagtype", "GUEST"}, {"tagtypeoptionals", "0"},
              {"tagplantcode", "0001"},  {"isblank", "0"},     {"hasvalidplantcode", "1"},
              {"expiredatetime", "2030-12-31 12:00:00"},       {"ispresent", "1"}};
    // clang-format on
    return SERVICE_DONE;
}

/// The simulated database answers every statement with the statement itself.
int run_databasesocketoperation(home_state &, const service_call &call, response_fields &fields) {
    fields["payload"] = text(call, "statement");
    fields["payload-len"] = std::to_string(fields["payload"].size());
    return SERVICE_DONE;
}

int run_settimeschedule(home_state &home, const service_call &call, response_fields &) {
    home.schedules[schedule_key(call)] = text(call, "schedule");
    return SERVICE_DONE;
}

int run_gettimeschedule(home_state &home, const service_call &call, response_fields &fields) {
    const auto found = home.schedules.find(schedule_key(call));
    if (found == home.schedules.end()) {
        return SERVICE_NOT_FOUND;
    }
    fields["schedule"] = found->second;
    return SERVICE_DONE;
}

int run_stopalarm(home_state &, const service_call &call, response_fields &) {
    return request_value(call, "pin") == ALARM_PIN ? SERVICE_DONE : SERVICE_REFUSED;
}

int run_getusergrants(home_state &home, const service_call &call, response_fields &fields) {
    const int status = run_stopalarm(home, call, fields);
    fields["partializationgrants"] = status == SERVICE_DONE ? "PERIMETER;INSIDE" : "";
    return status;
}

// Spellings such as retrivefromdevice, objectID and the plural results are the service's own, and
// result-len comes before result: clients match these names literally.
// clang-format off
constexpr service_operation OPERATION_ROWS[] = {
    {"service-versioninfo", "waittime", "result version", NONE, "", run_versioninfo},
    {"service-systeminfo", "waittime", "result systemcode", NONE, "", run_systeminfo},
    {"service-test", "waittime", "result", NONE, "", acknowledge},
    {"service-getelementstatus", "sessionid idobject retrivefromdevice waittime", "result status currentvalue", KNOWN, "idobject", run_getelementstatus},
    {"service-getelementstatusarray", "sessionid idobjects waittime", "result currentstate currentvalues", KNOWN, "", run_getelementstatusarray},
    {"service-runonelement", "sessionid idobject operation payload optionals hashcode callsource waittime", "result", KNOWN_OR_LOCAL, "idobject", run_runonelement},
    {"service-installcrontab", "sessionid newcrontabfile waittime", "result", KNOWN, "newcrontabfile", acknowledge},
    {"service-elementhaschanged", "idobject idcaller currentvalue waittime", "result currentvalue", NONE, "idobject", run_elementhaschanged},
    {"service-swapondemand", "sessionid payload waittime", "result", KNOWN, "", acknowledge},
    {"service-uploadlumolfile", "sessionid lumolfile waittime", "result", KNOWN, "lumolfile", run_uploadlumolfile},
    {"service-objectcyclesavoidance", "idobject-source idobject-destination waittime", "result", NONE, "", acknowledge},
    {"service-retrieveconfiguration", "sessionid waittime", "result url", KNOWN, "", run_retrieveconfiguration},
    {"service-login", "user pass waittime", "result", NONE, "user", run_login},
    {"service-retrievemessages", "sessionid type count from to waittime", "result messagecount message", KNOWN, "", run_retrievemessages},
    {"service-flushondemand", "payload waittime", "result", NONE, "", acknowledge},
    {"service-search4neighbours", "ipmcast port waittime", "result neighbourlist", NONE, "", run_search4neighbours},
    {"service-attach2neighbour", "remoteip remoteport neighbouruid neighbourname neighbouroptionals waittime", "result", NONE, "neighbouruid", run_attach2neighbour},
    {"service-detach2neighbour", "remoteip remoteport neighbouruid waittime", "result", NONE, "neighbouruid", run_detach2neighbour},
    {"service-discover2neighbour", "remoteip remoteport neighbouruid waittime", "result interfacesidlist interfacesnamelist interfacestypelist interfacesvaluelist interfacesaccessmodelist", NONE, "neighbouruid", run_discover2neighbour},
    {"service-openobjectchannel", "remoteip remoteport idremoteinterface nameremoteinterface typeremoteinterface idlocalinterface waittime", "result", NONE, "remoteip", run_openobjectchannel},
    {"service-abbmacreadtagdata", "sessionid idobject waittime", "result tagnumber tagtype tagtypeoptionals tagplantcode isblank hasvalidplantcode expiredatetime ispresent", KNOWN, "idobject", run_abbmacreadtagdata},
    {"service-databasesocketoperation", "clientaddress sessionid function type statement-len statement waittime", "result-len result payload-len payload", KNOWN, "", run_databasesocketoperation},
    {"service-multidatabasesocketoperation", "clientaddress sessionid function type statement-len statement databaseport waittime", "result-len result payload-len payload", KNOWN, "", run_databasesocketoperation},
    {"service-keltoclimateeventgettimeschedule", "sessionid idobject mode type weekday season waittime", "result schedule", KNOWN, "idobject", run_gettimeschedule},
    {"service-keltoclimateeventsettimeschedule", "sessionid idobject mode type schedule waittime", "result", KNOWN, "idobject", run_settimeschedule},
    {"service-keltosaigetusergrants", "sessionid pin waittime", "result partializationgrants", KNOWN, "pin", run_getusergrants},
    {"service-keltosaistopalarm", "sessionid pin waittime", "result", KNOWN, "pin", run_stopalarm},
    {"service-keltorunproducttests", "", "result", NONE, "", acknowledge},
    {"service-rundailyschedule", "waittime", "result", NONE, "", acknowledge},
    {"service-reloadalldailyschedule", "waittime", "result", NONE, "", acknowledge},
    {"service-reloaddailyschedule", "objectID waittime", "result", NONE, "objectID", acknowledge},
    {"service-logindatareload", "waittime", "results", NONE, "", acknowledge},
    {"service-checklogged", "username sessionid waittime", "result", KNOWN, "username", run_checklogged},
};
// clang-format on

bool session_is_open(const home_state &home, const service_call &call) {
    const session_rule rule = call.operation->session;
    const std::string_view session = request_value(call, "sessionid");
    return rule == NONE || home.sessions.contains(session) ||
           (rule == KNOWN_OR_LOCAL && session == LOCAL_SESSION);
}

} // namespace

constinit const std::span<const service_operation> OPERATIONS = OPERATION_ROWS;

std::vector<std::string_view> child_names(std::string_view children) {
    return children.empty() ? std::vector<std::string_view>() : split_text(children, ' ');
}

const service_operation *find_operation(std::string_view name) {
    const auto found = std::ranges::find(OPERATIONS, name, &service_operation::name);
    return found == OPERATIONS.end() ? nullptr : &*found;
}

std::string_view request_value(const service_call &call, std::string_view child) {
    const auto names = child_names(call.operation->request);
    const auto found = std::ranges::find(names, child);
    const auto index = static_cast<std::size_t>(found - names.begin());
    return index < call.values.size() && call.values[index] ? std::string_view(*call.values[index])
                                                            : std::string_view();
}

void change_element(home_state &home, const std::string &name, const home_element &now) {
    home.elements[name] = now;
    home.messages.push_back(name + " " + now.status + " " + now.value);
    if (home.messages.size() > KEPT_MESSAGES) {
        home.messages.pop_front();
    }
}

int run_operation(home_state &home, const service_call &call, response_fields &fields) {
    const service_operation &operation = *call.operation;
    if (!call.complaint.empty()) {
        return SERVICE_MALFORMED;
    }
    if (!session_is_open(home, call)) {
        return SERVICE_NO_SESSION;
    }
    if (!operation.needed.empty() && request_value(call, operation.needed).empty()) {
        return SERVICE_FIELD_MISSING;
    }
    return operation.run(home, call, fields);
}
