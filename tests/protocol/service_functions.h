// The functions of the web service as their users know them, one row each: what a new one needs for
// all tests stands here.

#pragma once

#include "tests/protocol/texts.h"

#include <string>
#include <vector>

namespace protocol {

/// When an answer's lines are shown.
enum class line_group {
    NONE,          ///< there are none
    ALWAYS,        ///< in any case
    WITH_A_RESULT, ///< only when there is a result
};

struct result_line {
    const char *text;
    const char *field;
    const char *suffix = "";
};

/// The result and what the lines show.
inline words response_of(const std::vector<result_line> &lines) {
    words children = {"result"};
    for (const result_line &line : lines) {
        children.emplace_back(line.field);
    }
    return children;
}

struct service_row {
    const char *name; ///< of the operation behind "service-", and of the function behind "SERVICE_"
    words request = {"waittime"}; ///< children that are sent, in order
    const char *unsent = nullptr; ///< the contract's child before the wait time that is not sent
    const char *needed = nullptr; ///< what the count message asks for; null: the count is free
    std::vector<result_line> lines = {};
    line_group group = lines.empty() ? line_group::NONE : line_group::WITH_A_RESULT;
    words response = response_of(lines); ///< children of the answer, in order
};

// clang-format off
inline const service_row SERVICE_FUNCTIONS[] = {
    {.name = "versioninfo",
     .lines = {{"Software Version: ", "version", "LUMOCMD Version: 2.6.16_arlo [rev.7655] -"}},
     .group = line_group::ALWAYS},
    {.name = "systeminfo", .lines = {{"Software system code: ", "systemcode"}},
     .group = line_group::ALWAYS},
    {.name = "test"},
    {.name = "getelementstatus", .request = {"sessionid", "idobject", "waittime"},
     .unsent = "retrivefromdevice", .needed = "sessionID, idobject, retrivefromdevice are needed",
     .lines = {{"Status: ", "status"}, {"Current Value: ", "currentvalue"}}},
    {.name = "getelementstatusarray", .request = {"sessionid", "waittime"}, .unsent = "idobjects",
     .needed = "sessionID, idobject is needed",
     .lines = {{"Current State: ", "currentstate"}, {"Current Values: ", "currentvalues"}}},
    {.name = "runonelement",
     .request = {"sessionid", "idobject", "operation", "payload", "optionals", "hashcode",
                 "callsource", "waittime"}},
    {.name = "installcrontab", .request = {"sessionid", "newcrontabfile", "waittime"},
     .needed = "sessionID, newcrontabfile is needed"},
    {.name = "elementhaschanged", .request = {"idobject", "idcaller", "currentvalue", "waittime"},
     .needed = "idobject, idcaller, currentvalue are needed",
     .lines = {{"Current Value: ", "currentvalue"}}, .group = line_group::ALWAYS},
    {.name = "swapondemand", .request = {"sessionid", "payload", "waittime"},
     .needed = "sessionID, payload is needed"},
    {.name = "uploadlumolfile", .request = {"sessionid", "lumolfile", "waittime"},
     .needed = "sessionID, LumoLFile is needed"},
    {.name = "objectcyclesavoidance",
     .request = {"idobject-source", "idobject-destination", "waittime"},
     .needed = "IdObjectSource, IdObjectDestination are needed"},
    {.name = "search4neighbours", .request = {"ipmcast", "port", "waittime"},
     .needed = "ipmcast, port are needed", .lines = {{"Neighbours List: ", "neighbourlist"}}},
    {.name = "attach2neighbour",
     .request = {"remoteip", "remoteport", "neighbouruid", "neighbourname", "neighbouroptionals",
                 "waittime"},
     .needed = "remoteip, remoteport, neighbouruid, neighbourname, neighbouroptionals are needed"},
    {.name = "detach2neighbour", .request = {"remoteip", "remoteport", "neighbouruid", "waittime"},
     .needed = "remoteip, remoteport, neighbouruid are needed"},
    {.name = "discover2neighbour",
     .request = {"remoteip", "remoteport", "neighbouruid", "waittime"},
     .needed = "remoteip, remoteport, neighbouruid are needed",
     .lines = {{"Interfaces ID List: ", "interfacesidlist"},
               {"Interfaces Name List: ", "interfacesnamelist"},
               {"Interfaces Type List: ", "interfacestypelist"},
               {"Interfaces Value List: ", "interfacesvaluelist"},
               {"Interfaces AccessMode List: ", "interfacesaccessmodelist"}}},
    {.name = "openobjectchannel",
     .request = {"remoteip", "remoteport", "idremoteinterface", "nameremoteinterface",
                 "typeremoteinterface", "idlocalinterface", "waittime"},
     .needed = "remoteip, remoteport, idremoteinterface, nameremoteinterface, "
               "typeremoteinterface, idlocalinterface are needed"},
    {.name = "abbmacreadtagdata", .request = {"sessionid", "idobject", "waittime"},
     .needed = "sessionID, idtag-programmer is needed",
     .lines = {{"Tag Number: ", "tagnumber"}, {"Tag Type: ", "tagtype"},
               {"Tag Type Optionals: ", "tagtypeoptionals"}, {"Tag PlantCode: ", "tagplantcode"},
               {"Is blank?: ", "isblank"}, {"Has Valid PlantCode?: ", "hasvalidplantcode"},
               {"Tag ExpireDateTime: ", "expiredatetime"}, {"Is present?: ", "ispresent"}}},
    {.name = "databasesocketoperation",
     .request = {"clientaddress", "sessionid", "function", "type", "statement-len", "statement",
                 "waittime"},
     .needed = "client_address, sessionID, function, type, statement_len, statement are needed",
     .lines = {{"Results Length: ", "result-len"}, {"Payload Length: ", "payload-len"},
               {"Payload: ", "payload"}},
     .response = {"result-len", "result", "payload-len", "payload"}},
    {.name = "retrieveconfiguration", .request = {"sessionid", "waittime"},
     .needed = "sessionID is needed", .lines = {{"Url: ", "url"}}, .group = line_group::ALWAYS},
    {.name = "login", .request = {"user", "pass", "waittime"}, .needed = "user, pass are needed"},
    {.name = "retrievemessages",
     .request = {"sessionid", "type", "count", "from", "to", "waittime"},
     .needed = "sessionID, type, count, from, to are needed",
     .lines = {{"MessageCount: ", "messagecount"}, {"Message: ", "message"}}},
    {.name = "keltoclimateeventsettimeschedule",
     .request = {"sessionid", "idobject", "mode", "type", "schedule", "waittime"},
     .needed = "sessionID, id-object, mode, type, schedule are needed"},
    {.name = "keltoclimateeventgettimeschedule",
     .request = {"sessionid", "idobject", "mode", "type", "weekday", "season", "waittime"},
     .needed = "sessionID, id-object, mode, type, weekday, season are needed",
     .lines = {{"Schedule: ", "schedule"}}},
    {.name = "keltosaigetusergrants", .request = {"sessionid", "pin", "waittime"},
     .needed = "sessionID, pin are needed",
     .lines = {{"PartializationGrants: ", "partializationgrants"}}},
    {.name = "keltosaistopalarm", .request = {"sessionid", "pin", "waittime"},
     .needed = "sessionID, pin are needed"},
    {.name = "multidatabasesocketoperation",
     .request = {"clientaddress", "sessionid", "function", "type", "statement-len", "statement",
                 "databaseport", "waittime"},
     .needed = "client_address, sessionID, function, type, statement_len, statement, "
               "databaseport are needed",
     .lines = {{"Results Length: ", "result-len"}, {"Payload Length: ", "payload-len"},
               {"Payload: ", "payload"}},
     .response = {"result-len", "result", "payload-len", "payload"}},
    {.name = "keltorunproducttests", .request = {}},
    {.name = "rundailyschedule"},
    {.name = "reloadalldailyschedule"},
    {.name = "reloaddailyschedule", .request = {"objectID", "waittime"},
     .needed = "objectID is needed"},
    {.name = "logindatareload", .response = {"results"}},
    {.name = "checklogged", .request = {"username", "sessionid", "waittime"},
     .needed = "Username, SessionID are needed"},
    {.name = "flushondemand", .request = {"payload", "waittime"}, .needed = "payload is needed"},
};
// clang-format on

inline bool is_result(const std::string &field) {
    return field == "result" || field == "results";
}

/// The children of a request that the contract knows, in order.
inline words contract_children(const service_row &row) {
    words children = row.request;
    if (row.unsent != nullptr) {
        children.insert(children.end() - 1, row.unsent);
    }
    return children;
}

/// The name of -f.
inline std::string function_name(const service_row &row) {
    return "SERVICE_" + upper(row.name);
}

/// The children that the entries of the list fill, in order.
inline words entries_of(const service_row &row) {
    words entries = row.request;
    std::erase_if(entries, [](const std::string &child) {
        return child == "waittime" || child == "callsource";
    });
    return entries;
}

inline std::string count_message(const service_row &row) {
    return "soapcallsclientutil->make_webservice_request error too few or too much parameters, " +
           std::string(row.needed);
}

} // namespace protocol
