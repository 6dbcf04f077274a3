#include "front/help_text.h"

#include "front/product.h"
#include "front/request_types.h"

namespace {

// clang-format off
constexpr char SOAP_LINES[] =
    "   SOAP              -u: url of Lumotron web service\n"
    "                      [" LUMOWS_DEFAULT_URL "]\n"
    "   SOAP              -f: request web service function name\n"
    "                      [SERVICE_VERSIONINFO, SERVICE_TEST\n"
    "                       SERVICE_GETELEMENTSTATUS, SERVICE_RUNONELEMENT, etc etc...]\n"
    "   SOAP              -p: function parameters_list (optional)\n"
    "                      [\"param1|param2| ... |paramn\"]\n"
    "   SOAP              -w: function waittime (optional)\n"
    "                      [5]\n"
    "\n";
// clang-format on

/// Types without a client are not mentioned.
bool is_mentioned(const request_type_row &row) {
    return row.kind == WEB_SERVICE_KIND || row.kind == LOCAL_KIND;
}

void print_keywords(FILE *stream) {
    const char *separator = "";
    for (const request_type_row &row : REQUEST_TYPES) {
        if (is_mentioned(row)) {
            fprintf(stream, "%s%s", separator, row.keyword);
            separator = ", ";
        }
    }
}

void print_local_type(FILE *stream, const request_type_row &row) {
    const help_lines &help = row.help;
    const bool is_gateway = help.service == nullptr;
    const char *service = is_gateway ? row.name : help.service;
    const char *kind = is_gateway ? "Gateway" : "";
    const bool is_misnamed = help.socket_service != nullptr;
    fprintf(stream, "   %-*s-s: unix socket of Lumotron-%s%s service\n", help.width, row.keyword,
            is_misnamed ? help.socket_service : service, is_misnamed ? "" : kind);
    fprintf(stream, "                      [%s]\n", help.socket);
    fprintf(stream, "   %-*s-f: request Lumotron-%s%s service function name\n", help.width,
            row.keyword, service, kind);
    fprintf(stream, "                      [%s]\n", help.functions);
    fprintf(stream, "   %-*s-p: function parameters_list\n", help.width, row.keyword);
    fprintf(stream, "                      [\"%s\"]\n\n", help.parameters);
}

} // namespace

void print_help_text(FILE *stream) {
    fputs("Options:\n"
          "   -v: verbose mode\n"
          "       [ON , OFF]\n"
          "   -t: request type\n"
          "       [",
          stream);
    print_keywords(stream);
    fputs("]\n\n", stream);
    fputs(SOAP_LINES, stream);
    for (const request_type_row &row : REQUEST_TYPES) {
        if (row.kind == LOCAL_KIND) {
            print_local_type(stream, row);
        }
    }
    fputs("   -h: displays help\n\n", stream);
}
