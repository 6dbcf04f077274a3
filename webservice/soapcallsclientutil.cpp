#include "webservice/soapcallsclientutil.h"

#include "front/diagnostics.h"
#include "front/memory.h"
#include "front/product.h"
#include "front/status_codes.h"
#include "front/utility.h"
#include "webservice/answer_head.h"
#include "webservice/endpoint.h"
#include "webservice/name_service.h"
#include "webservice/operation_row.h"

#include <cstdio>
#include <cstring>

namespace {

// ---------------------------------------------------------------------------------------------
// The exceptional operations

/// The tool's own version follows the service's without any separator.
void append_own_version(void *response) {
    auto *record = static_cast<ns__service_versioninfoResponse *>(response);
    record->version = xstrconcat(record->version, "LUMOCMD Version: " LUMOCMD_VERSION " -");
}

/// SERVICE_RUNONELEMENT: a caller on the controller may leave out the session; any other sends the
/// first six entries, however many there are.
bool arrange_run_on_element(const webservice_call &call, char **arguments) {
    enum { SESSION, IDOBJECT, CALLSOURCE = 6, WAITTIME = 7, FIELDS = 6 };
    static char no_session[] = "NO-SESSIONID";
    static char call_source[] = "COMMANDLINETOOL";
    const bool local = is_local_endpoint(call.url);
    const bool without_session = local && call.count == FIELDS - 1;
    if (local && !without_session && call.count != FIELDS) {
        return false;
    }
    if (without_session) {
        arguments[SESSION] = no_session;
    }
    const int first = without_session ? IDOBJECT : SESSION;
    for (int i = 0; i < call.count && first + i < FIELDS; i++) {
        arguments[first + i] = call.entries[i];
    }
    arguments[CALLSOURCE] = call_source;
    arguments[WAITTIME] = call.waittime;
    return true;
}

// ---------------------------------------------------------------------------------------------
// The table

using operation::line;
using operation::takes;
using operation::takes_nothing;

consteval operation_row version_info_row() {
    operation_row row = takes_nothing<soap_call_ns__service_versioninfo, TEXT_LINES>(
        "SERVICE_VERSIONINFO",
        line<&ns__service_versioninfoResponse::version>("[lumocmd] Software Version: "));
    row.exceptional.complete = append_own_version;
    return row;
}

consteval operation_row run_on_element_row() {
    operation_row row = takes<soap_call_ns__service_runonelement, SINGLE_RESULT>(
        "SERVICE_RUNONELEMENT", "idobject, operation, payload, optionals, hashcode are needed");
    row.count = ANY_COUNT; // the seventh argument is not an entry but the call source
    row.exceptional.needed_elsewhere =
        "sessionID, idobject, operation, payload, optionals, hashcode are needed";
    row.exceptional.arrange = arrange_run_on_element;
    return row;
}

/// In comparison order. GETELEMENTSTATUS and GETELEMENTSTATUSARRAY demand one entry less than they
/// ask for: their last field goes out absent; deliberate, and part of the interface.
constexpr operation_row OPERATIONS[] = {
    version_info_row(),
    takes_nothing<soap_call_ns__service_systeminfo, TEXT_LINES>(
        "SERVICE_SYSTEMINFO",
        line<&ns__service_systeminfoResponse::systemcode>("[lumocmd] Software system code: ")),
    takes_nothing<soap_call_ns__service_test, SINGLE_RESULT>("SERVICE_TEST"),
    takes<soap_call_ns__service_getelementstatus, RECORD_LINES, 1>(
        "SERVICE_GETELEMENTSTATUS", "sessionID, idobject, retrivefromdevice are needed",
        line<&ns__service_getelementstatusResponse::status>("[lumocmd] Status: "),
        line<&ns__service_getelementstatusResponse::currentvalue>("[lumocmd] Current Value: ")),
    takes<soap_call_ns__service_getelementstatusarray, RECORD_LINES, 1>(
        "SERVICE_GETELEMENTSTATUSARRAY", "sessionID, idobject is needed",
        line<&ns__service_getelementstatusarrayResponse::currentstate>("[lumocmd] Current State: "),
        line<&ns__service_getelementstatusarrayResponse::currentvalues>(
            "[lumocmd] Current Values: ")),
    run_on_element_row(),
    takes<soap_call_ns__service_installcrontab, SINGLE_RESULT>(
        "SERVICE_INSTALLCRONTAB", "sessionID, newcrontabfile is needed"),
    takes<soap_call_ns__service_elementhaschanged, TEXT_LINES>(
        "SERVICE_ELEMENTHASCHANGED", "idobject, idcaller, currentvalue are needed",
        line<&ns__service_elementhaschangedResponse::currentvalue>("[lumocmd] Current Value: ")),
    takes<soap_call_ns__service_swapondemand, SINGLE_RESULT>("SERVICE_SWAPONDEMAND",
                                                             "sessionID, payload is needed"),
    takes<soap_call_ns__service_uploadlumolfile, SINGLE_RESULT>("SERVICE_UPLOADLUMOLFILE",
                                                                "sessionID, LumoLFile is needed"),
    takes<soap_call_ns__service_objectcyclesavoidance, SINGLE_RESULT>(
        "SERVICE_OBJECTCYCLESAVOIDANCE", "IdObjectSource, IdObjectDestination are needed"),
    takes<soap_call_ns__service_search4neighbours, RECORD_LINES>(
        "SERVICE_SEARCH4NEIGHBOURS", "ipmcast, port are needed",
        line<&ns__service_search4neighboursResponse::neighbourlist>("[lumocmd] Neighbours List: ")),
    takes<soap_call_ns__service_attach2neighbour, SINGLE_RESULT>(
        "SERVICE_ATTACH2NEIGHBOUR",
        "remoteip, remoteport, neighbouruid, neighbourname, neighbouroptionals are needed"),
    takes<soap_call_ns__service_detach2neighbour, SINGLE_RESULT>(
        "SERVICE_DETACH2NEIGHBOUR", "remoteip, remoteport, neighbouruid are needed"),
    takes<soap_call_ns__service_discover2neighbour, RECORD_LINES>(
        "SERVICE_DISCOVER2NEIGHBOUR", "remoteip, remoteport, neighbouruid are needed",
        line<&ns__service_discover2neighbourResponse::interfacesidlist>(
            "[lumocmd] Interfaces ID List: "),
        line<&ns__service_discover2neighbourResponse::interfacesnamelist>(
            "[lumocmd] Interfaces Name List: "),
        line<&ns__service_discover2neighbourResponse::interfacestypelist>(
            "[lumocmd] Interfaces Type List: "),
        line<&ns__service_discover2neighbourResponse::interfacesvaluelist>(
            "[lumocmd] Interfaces Value List: "),
        line<&ns__service_discover2neighbourResponse::interfacesaccessmodelist>(
            "[lumocmd] Interfaces AccessMode List: ")),
    takes<soap_call_ns__service_openobjectchannel, SINGLE_RESULT>(
        "SERVICE_OPENOBJECTCHANNEL",
        "remoteip, remoteport, idremoteinterface, nameremoteinterface, typeremoteinterface, "
        "idlocalinterface are needed"),
    takes<soap_call_ns__service_abbmacreadtagdata, RECORD_LINES>(
        "SERVICE_ABBMACREADTAGDATA", "sessionID, idtag-programmer is needed",
        line<&ns__service_abbmacreadtagdataResponse::tagnumber>("[lumocmd] Tag Number: "),
        line<&ns__service_abbmacreadtagdataResponse::tagtype>("[lumocmd] Tag Type: "),
        line<&ns__service_abbmacreadtagdataResponse::tagtypeoptionals>(
            "[lumocmd] Tag Type Optionals: "),
        line<&ns__service_abbmacreadtagdataResponse::tagplantcode>("[lumocmd] Tag PlantCode: "),
        line<&ns__service_abbmacreadtagdataResponse::isblank>("[lumocmd] Is blank?: "),
        line<&ns__service_abbmacreadtagdataResponse::hasvalidplantcode>(
            "[lumocmd] Has Valid PlantCode?: "),
        line<&ns__service_abbmacreadtagdataResponse::expiredatetime>(
            "[lumocmd] Tag ExpireDateTime: "),
        line<&ns__service_abbmacreadtagdataResponse::ispresent>("[lumocmd] Is present?: ")),
    takes<soap_call_ns__service_databasesocketoperation, RECORD_LINES>(
        "SERVICE_DATABASESOCKETOPERATION",
        "client_address, sessionID, function, type, statement_len, statement are needed",
        line<&ns__service_databasesocketoperationResponse::result_len>(
            "[lumocmd] Results Length: "),
        line<&ns__service_databasesocketoperationResponse::payload_len>(
            "[lumocmd] Payload Length: "),
        line<&ns__service_databasesocketoperationResponse::payload>("[lumocmd] Payload: ")),
    takes<soap_call_ns__service_retrieveconfiguration, TEXT_LINES>(
        "SERVICE_RETRIEVECONFIGURATION", "sessionID is needed",
        line<&ns__service_retrieveconfigurationResponse::url>("[lumocmd] Url: ")),
    takes<soap_call_ns__service_login, SINGLE_RESULT>("SERVICE_LOGIN", "user, pass are needed"),
    takes<soap_call_ns__service_retrievemessages, RECORD_LINES>(
        "SERVICE_RETRIEVEMESSAGES", "sessionID, type, count, from, to are needed",
        line<&ns__service_retrievemessagesResponse::messagecount>("[lumocmd] MessageCount: "),
        line<&ns__service_retrievemessagesResponse::message>("[lumocmd] Message: ")),
    takes<soap_call_ns__service_keltoclimateeventsettimeschedule, SINGLE_RESULT>(
        "SERVICE_KELTOCLIMATEEVENTSETTIMESCHEDULE",
        "sessionID, id-object, mode, type, schedule are needed"),
    takes<soap_call_ns__service_keltoclimateeventgettimeschedule, RECORD_LINES>(
        "SERVICE_KELTOCLIMATEEVENTGETTIMESCHEDULE",
        "sessionID, id-object, mode, type, weekday, season are needed",
        line<&ns__service_keltoclimateeventgettimescheduleResponse::schedule>(
            "[lumocmd] Schedule: ")),
    takes<soap_call_ns__service_keltosaigetusergrants, RECORD_LINES>(
        "SERVICE_KELTOSAIGETUSERGRANTS", "sessionID, pin are needed",
        line<&ns__service_keltosaigetusergrantsResponse::partializationgrants>(
            "[lumocmd] PartializationGrants: ")),
    takes<soap_call_ns__service_keltosaistopalarm, SINGLE_RESULT>("SERVICE_KELTOSAISTOPALARM",
                                                                  "sessionID, pin are needed"),
    takes<soap_call_ns__service_multidatabasesocketoperation, RECORD_LINES>(
        "SERVICE_MULTIDATABASESOCKETOPERATION",
        "client_address, sessionID, function, type, statement_len, statement, databaseport are "
        "needed",
        line<&ns__service_multidatabasesocketoperationResponse::result_len>(
            "[lumocmd] Results Length: "),
        line<&ns__service_multidatabasesocketoperationResponse::payload_len>(
            "[lumocmd] Payload Length: "),
        line<&ns__service_multidatabasesocketoperationResponse::payload>("[lumocmd] Payload: ")),
    takes_nothing<soap_call_ns__service_keltorunproducttests, SINGLE_RESULT>(
        "SERVICE_KELTORUNPRODUCTTESTS"),
    takes_nothing<soap_call_ns__service_rundailyschedule, SINGLE_RESULT>(
        "SERVICE_RUNDAILYSCHEDULE"),
    takes_nothing<soap_call_ns__service_reloadalldailyschedule, SINGLE_RESULT>(
        "SERVICE_RELOADALLDAILYSCHEDULE"),
    takes<soap_call_ns__service_reloaddailyschedule, SINGLE_RESULT>("SERVICE_RELOADDAILYSCHEDULE",
                                                                    "objectID is needed"),
    takes_nothing<soap_call_ns__service_logindatareload, SINGLE_RESULT>("SERVICE_LOGINDATARELOAD"),
    takes<soap_call_ns__service_checklogged, SINGLE_RESULT>("SERVICE_CHECKLOGGED",
                                                            "Username, SessionID are needed"),
    takes<soap_call_ns__service_flushondemand, SINGLE_RESULT>("SERVICE_FLUSHONDEMAND",
                                                              "payload is needed"),
};

const operation_row *find_operation(const char *function) {
    for (const operation_row &row : OPERATIONS) {
        if (names_match(function, row.name)) {
            return &row;
        }
    }
    return nullptr;
}

/// Splits the list for a row that reads it; false after a message when the count is wrong.
bool take_entries(const operation_row &row, const char *parameters, webservice_call *call) {
    if (row.needed == nullptr) {
        return true;
    }
    // Splitting never fails today, so SERVICE_RUNONELEMENT's count messages cannot appear.
    const bool split = parse_parameters(parameters, &call->count, &call->entries) >= 0;
    if (split && (row.count == ANY_COUNT || row.count == call->count)) {
        return true;
    }
    const char *needed_elsewhere = row.exceptional.needed_elsewhere;
    const bool is_elsewhere = needed_elsewhere != nullptr && !is_local_endpoint(call->url);
    error("soapcallsclientutil->make_webservice_request error too few or too much parameters, %s",
          is_elsewhere ? needed_elsewhere : row.needed);
    return false;
}

// ---------------------------------------------------------------------------------------------
// The context

int (*runtime_post_header)(struct soap *, const char *, const char *);

/// The services know their clients by this name, whatever release of the runtime is linked. The
/// runtime calls this first with the request line and last with nulls; both go through.
int post_header(struct soap *context, const char *key, const char *value) {
    const bool is_agent = key != nullptr && strcmp(key, "User-Agent") == 0;
    return runtime_post_header(context, key, is_agent ? "gSOAP/2.7" : value);
}

/// Shown by the report about a url. No answer brings it: it is no error of the runtime, and no HTTP
/// status, which has three digits. Scripts know by it that nothing was sent.
constexpr int UNUSABLE_URL = 3986;

/// Leaves the report that release_context() prints.
void report_unusable_url(struct soap *context, const char *url) {
    char advice[128];
    snprintf(advice, sizeof advice, "one like %s of at most %d characters is needed",
             LUMOWS_DEFAULT_URL, longest_endpoint());
    // Not freed: the process ends right after.
    soap_sender_fault(context, xstrconcat(xstrconcat("url '", url), "' cannot be used"), advice);
    context->error = UNUSABLE_URL;
}

void release_context(struct soap *context) {
    if (context->error != 0) {
        soap_print_fault(context, stderr);
    }
    soap_destroy(context);
    soap_end(context);
    soap_done(context);
}

} // namespace

std::span<const operation_row> webservice_operations() {
    return OPERATIONS;
}

int make_webservice_request(const char *url, const char *function, const char *parameters,
                            int waittime) {
    trace("entering soapcallsclientutil->make_webservice_request");
    trace("");
    // Storage, not a C++ object: its constructors are not part of the C runtime. It is not zeroed:
    // the runtime initialises what it reads.
    alignas(struct soap) __attribute__((uninitialized)) unsigned char storage[sizeof(struct soap)];
    auto *context = static_cast<struct soap *>(static_cast<void *>(storage));
    use_linked_name_service();
    soap_init(context);
    runtime_post_header = context->fposthdr;
    context->fposthdr = post_header;
    read_head_as_client(context);

    char waittime_text[sizeof("-2147483648")] = {};
    snprintf(waittime_text, sizeof waittime_text, "%d", waittime);
    int status = STATUS_FUNCTION_NOT_SUPPORTED;
    const operation_row *row = find_operation(function);
    if (row != nullptr) {
        webservice_call call = {context, url, waittime_text, 0, nullptr, is_usable_endpoint(url)};
        if (!take_entries(*row, parameters, &call)) {
            return STATUS_MALFORMED_REQUEST; // the process ends right after, context and all
        }
        if (!call.sendable) {
            report_unusable_url(context, url);
        }
        status = row->call(call, *row);
    }
    release_context(context);
    trace("exiting soapcallsclientutil->make_webservice_request");
    trace("");
    return status;
}
