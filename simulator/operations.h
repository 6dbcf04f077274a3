// What each web-service operation does to the simulated home. One function per operation that
// does more than acknowledge; all share the shape that the operation table asks for.
#pragma once

#include "simulator/contract.h"

/// Checks children, session and needed field, then runs the operation.
/// Returns a ServiceStatus; `response` holds the other children of a successful answer.
int run_operation(Home &home, const ServiceCall &call, ResponseFields &response);

/// Accepts the request and remembers nothing.
int acknowledge(Home &home, const ServiceCall &call, ResponseFields &response);

int run_versioninfo(Home &home, const ServiceCall &call, ResponseFields &response);
int run_systeminfo(Home &home, const ServiceCall &call, ResponseFields &response);
int run_getelementstatus(Home &home, const ServiceCall &call, ResponseFields &response);
int run_getelementstatusarray(Home &home, const ServiceCall &call, ResponseFields &response);
int run_runonelement(Home &home, const ServiceCall &call, ResponseFields &response);
int run_elementhaschanged(Home &home, const ServiceCall &call, ResponseFields &response);
int run_uploadlumolfile(Home &home, const ServiceCall &call, ResponseFields &response);
int run_retrieveconfiguration(Home &home, const ServiceCall &call, ResponseFields &response);
int run_login(Home &home, const ServiceCall &call, ResponseFields &response);
int run_retrievemessages(Home &home, const ServiceCall &call, ResponseFields &response);
int run_search4neighbours(Home &home, const ServiceCall &call, ResponseFields &response);
int run_attach2neighbour(Home &home, const ServiceCall &call, ResponseFields &response);
int run_detach2neighbour(Home &home, const ServiceCall &call, ResponseFields &response);
int run_discover2neighbour(Home &home, const ServiceCall &call, ResponseFields &response);
int run_openobjectchannel(Home &home, const ServiceCall &call, ResponseFields &response);
int run_abbmacreadtagdata(Home &home, const ServiceCall &call, ResponseFields &response);
int run_databasesocketoperation(Home &home, const ServiceCall &call, ResponseFields &response);
int run_gettimeschedule(Home &home, const ServiceCall &call, ResponseFields &response);
int run_settimeschedule(Home &home, const ServiceCall &call, ResponseFields &response);
int run_getusergrants(Home &home, const ServiceCall &call, ResponseFields &response);
int run_stopalarm(Home &home, const ServiceCall &call, ResponseFields &response);
int run_checklogged(Home &home, const ServiceCall &call, ResponseFields &response);
