// One process, one request: parse the command line, call the one client of its type, print the
// status text as the last line and exit with the status code.

#include "front/diagnostics.h"
#include "front/memory.h"
#include "front/request_record.h"
#include "front/status_codes.h"
#include "front/utility.h"
#include "fsmcore/fsmcorelocal_request.h"
#include "gateways/localclientutil.h"
#include "webservice/soapcallsclientutil.h"

#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <unistd.h>

namespace {

using local_client = int (*)(const char *socket_path, const char *function, const char *parameters);

template <local_client Client> int call_local() {
    return Client(g_config.socket_path, g_config.function, g_config.parameters);
}

int call_webservice() {
    return make_webservice_request(g_config.url, g_config.function, g_config.parameters,
                                   g_config.waittime);
}

/// The internet types are accepted and checked by the parser, but no client is called for them.
int refuse_unimplemented() {
    error("main->main error unimplemented feature");
    return STATUS_UNIMPLEMENTED;
}

/// What is done for one request type.
struct dispatch_row {
    request_type type;
    const char *mark; ///< trace text before the call
    int (*carry)();   ///< carries the request of g_config, returns its status code
};

constexpr dispatch_row DISPATCH[] = {
    {REQUEST_SOAP, "main->main processing a soap request", call_webservice},
    {REQUEST_EIBLOCAL, "main->main processing an EIB local request",
     call_local<make_eibuslocal_request>},
    {REQUEST_SMSTOOLLOCAL, "main->main processing a SMSTOOL local request",
     call_local<make_smstoollocal_request>},
    {REQUEST_LINTRONICLOCAL, "main->main processing a LINTRONIC local request",
     call_local<make_lintroniclocal_request>},
    {REQUEST_TECNOUTLOCAL, "main->main processing a TECNOUT local request",
     call_local<make_tecnoutlocal_request>},
    {REQUEST_VIVALDILOCAL, "main->main processing a VIVALDI local request",
     call_local<make_vivaldilocal_request>},
    {REQUEST_BENTELLOCAL, "main->main processing a BENTEL local request",
     call_local<make_bentellocal_request>},
    {REQUEST_FSMCORE, "main->main processing a FSMCore request",
     call_local<make_fsmcorelocal_request>},
    {REQUEST_TUTONDOLOCAL, "main->main processing a TUTONDO local request",
     call_local<make_tutondolocal_request>},
    {REQUEST_EIBINTERNET, "", refuse_unimplemented},
    {REQUEST_SMSTOOLINTERNET, "", refuse_unimplemented},
    {REQUEST_LINTRONICINTERNET, "", refuse_unimplemented},
    {REQUEST_TECNOUTINTERNET, "", refuse_unimplemented},
    {REQUEST_VIVALDIINTERNET, "", refuse_unimplemented},
    {REQUEST_BENTELINTERNET, "", refuse_unimplemented},
    {REQUEST_TUTONDOINTERNET, "", refuse_unimplemented},
};

int dispatch(int type) {
    for (const dispatch_row &row : DISPATCH) {
        if (row.type == type) {
            trace("%s", row.mark);
            return row.carry();
        }
    }
    // Only a parser that stopped early returns such a type.
    error("main->main error on parsing command line");
    return STATUS_MALFORMED_REQUEST;
}

/// Makes sure that no connection is opened as descriptor 0, 1 or 2: a caller that closed its
/// standard output would otherwise send our lines to the daemon.
void occupy_standard_descriptors() {
    int descriptor = 0;
    do {
        descriptor = open("/dev/null", O_RDWR);
    } while (descriptor >= 0 && descriptor <= 2);
    if (descriptor > 2) {
        close(descriptor);
    }
}

} // namespace

int main(int argument_count, char **arguments) {
    trace("entering lumocmd->main");
    occupy_standard_descriptors();
    // A daemon that closes early makes a send fail with its message, not the process vanish.
    signal(SIGPIPE, SIG_IGN);
    const int status = dispatch(parse_cmd_line(argument_count, arguments));
    char *text = format_status_code(status);
    puts(text);
    xfree(text);
    release_config();
    trace("exiting lumocmd->main");
    return status;
}
