// The operation table. Spellings such as retrivefromdevice, objectID and the plural results are
// the service's own, and result-len comes before result: clients match these names literally.
// An operation that remembers nothing is a row here and no more.
#include "simulator/contract.h"

#include "simulator/operations.h"

#include <algorithm>

using enum SessionRule;

namespace {

// clang-format off
constexpr Operation OPERATION_ROWS[] = {
    {"service-versioninfo", "waittime", "result version", none, "", run_versioninfo},
    {"service-systeminfo", "waittime", "result systemcode", none, "", run_systeminfo},
    {"service-test", "waittime", "result", none, "", acknowledge},
    {"service-getelementstatus", "sessionid idobject retrivefromdevice waittime", "result status currentvalue", known, "idobject", run_getelementstatus},
    {"service-getelementstatusarray", "sessionid idobjects waittime", "result currentstate currentvalues", known, "", run_getelementstatusarray},
    {"service-runonelement", "sessionid idobject operation payload optionals hashcode callsource waittime", "result", known_or_local, "idobject", run_runonelement},
    {"service-installcrontab", "sessionid newcrontabfile waittime", "result", known, "newcrontabfile", acknowledge},
    {"service-elementhaschanged", "idobject idcaller currentvalue waittime", "result currentvalue", none, "idobject", run_elementhaschanged},
    {"service-swapondemand", "sessionid payload waittime", "result", known, "", acknowledge},
    {"service-uploadlumolfile", "sessionid lumolfile waittime", "result", known, "lumolfile", run_uploadlumolfile},
    {"service-objectcyclesavoidance", "idobject-source idobject-destination waittime", "result", none, "", acknowledge},
    {"service-retrieveconfiguration", "sessionid waittime", "result url", known, "", run_retrieveconfiguration},
    {"service-login", "user pass waittime", "result", none, "user", run_login},
    {"service-retrievemessages", "sessionid type count from to waittime", "result messagecount message", known, "", run_retrievemessages},
    {"service-flushondemand", "payload waittime", "result", none, "", acknowledge},
    {"service-search4neighbours", "ipmcast port waittime", "result neighbourlist", none, "", run_search4neighbours},
    {"service-attach2neighbour", "remoteip remoteport neighbouruid neighbourname neighbouroptionals waittime", "result", none, "neighbouruid", run_attach2neighbour},
    {"service-detach2neighbour", "remoteip remoteport neighbouruid waittime", "result", none, "neighbouruid", run_detach2neighbour},
    {"service-discover2neighbour", "remoteip remoteport neighbouruid waittime", "result interfacesidlist interfacesnamelist interfacestypelist interfacesvaluelist interfacesaccessmodelist", none, "neighbouruid", run_discover2neighbour},
    {"service-openobjectchannel", "remoteip remoteport idremoteinterface nameremoteinterface typeremoteinterface idlocalinterface waittime", "result", none, "remoteip", run_openobjectchannel},
    {"service-abbmacreadtagdata", "sessionid idobject waittime", "result tagnumber tagtype tagtypeoptionals tagplantcode isblank hasvalidplantcode expiredatetime ispresent", known, "idobject", run_abbmacreadtagdata},
    {"service-databasesocketoperation", "clientaddress sessionid function type statement-len statement waittime", "result-len result payload-len payload", known, "", run_databasesocketoperation},
    {"service-multidatabasesocketoperation", "clientaddress sessionid function type statement-len statement databaseport waittime", "result-len result payload-len payload", known, "", run_databasesocketoperation},
    {"service-keltoclimateeventgettimeschedule", "sessionid idobject mode type weekday season waittime", "result schedule", known, "idobject", run_gettimeschedule},
    {"service-keltoclimateeventsettimeschedule", "sessionid idobject mode type schedule waittime", "result", known, "idobject", run_settimeschedule},
    {"service-keltosaigetusergrants", "sessionid pin waittime", "result partializationgrants", known, "pin", run_getusergrants},
    {"service-keltosaistopalarm", "sessionid pin waittime", "result", known, "pin", run_stopalarm},
    {"service-keltorunproducttests", "", "result", none, "", acknowledge},
    {"service-rundailyschedule", "waittime", "result", none, "", acknowledge},
    {"service-reloadalldailyschedule", "waittime", "result", none, "", acknowledge},
    {"service-reloaddailyschedule", "objectID waittime", "result", none, "objectID", acknowledge},
    {"service-logindatareload", "waittime", "results", none, "", acknowledge},
    {"service-checklogged", "username sessionid waittime", "result", known, "username", run_checklogged},
};
// clang-format on

} // namespace

constinit const std::span<const Operation> OPERATIONS = OPERATION_ROWS;

std::vector<std::string_view> child_names(std::string_view children) {
    std::vector<std::string_view> names;
    while (!children.empty()) {
        const std::size_t end = std::min(children.find(' '), children.size());
        names.push_back(children.substr(0, end));
        children.remove_prefix(std::min(end + 1, children.size()));
    }
    return names;
}

const Operation *find_operation(std::string_view name) {
    const auto found = std::find_if(OPERATIONS.begin(), OPERATIONS.end(),
                                    [name](const Operation &row) { return row.name == name; });
    return found == OPERATIONS.end() ? nullptr : &*found;
}

std::string_view request_value(const ServiceCall &call, std::string_view child) {
    const auto names = child_names(call.operation->request);
    const auto found = std::find(names.begin(), names.end(), child);
    const auto index = static_cast<std::size_t>(found - names.begin());
    if (index >= call.values.size() || !call.values[index]) {
        return {};
    }
    return *call.values[index];
}
