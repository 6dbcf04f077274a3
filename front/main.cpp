// One process, one request: parse the command line, call the one client of its type, print the
// status text as the last line and exit with the status code.

#include "front/diagnostics.h"
#include "front/dispatch_table.h"
#include "front/memory.h"
#include "front/request_record.h"
#include "front/request_types.h"
#include "front/status_codes.h"
#include "front/utility.h"

#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <unistd.h>

namespace {

int call_client(const dispatch_row &row) {
    trace("%s", row.mark);
    if (row.client == nullptr) {
        return make_webservice_request(g_config.url, g_config.function, g_config.parameters,
                                       g_config.waittime);
    }
    // cppcheck-suppress CastAddressToIntegerAtReturn ; a call, not an address
    return row.client(g_config.socket_path, g_config.function, g_config.parameters);
}

int dispatch(int type) {
    const dispatch_row *row = find_dispatch(type);
    if (row != nullptr) {
        return call_client(*row);
    }
    if (find_request_type(type) != nullptr) {
        // The internet types are accepted and checked by the parser, but no client is called.
        error("main->main error unimplemented feature");
        return STATUS_UNIMPLEMENTED;
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
    // Negative where the system has no such device or no descriptor left: nothing more can be done.
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
