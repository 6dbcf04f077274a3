#include "front/utility.h"

#include "front/diagnostics.h"
#include "front/help_text.h"
#include "front/memory.h"
#include "front/number_text.h"
#include "front/product.h"
#include "front/request_record.h"
#include "front/request_types.h"
#include "front/status_codes.h"
#include "front/status_ranges.h"

#include <arpa/inet.h>
#include <cerrno>
#include <climits>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <netinet/in.h>
#include <strings.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

// ---------------------------------------------------------------------------------------------
// Command line

namespace {

enum scan_step { SCAN_ON, SCAN_STOP };

/// One option that takes an argument: which function takes it, and what that function needs.
struct option_row {
    char letter;
    scan_step (*take)(const option_row &row, const char *argument, request_type *type);
    char *cmd_config::*text = nullptr;
    int cmd_config::*number = nullptr;
    int lowest = INT_MIN;            ///< a number below this is rejected
    const char *line = "";           ///< green line of success, without the value
    const char *complaint = nullptr; ///< red line of a rejected number
};

scan_step take_text(const option_row &row, const char *argument, request_type * /*type*/) {
    xfree(g_config.*row.text);
    g_config.*row.text = xstrdup(nullptr, argument);
    verbose_info("%s%s", row.line, argument);
    return SCAN_ON;
}

scan_step take_number(const option_row &row, const char *argument, request_type * /*type*/) {
    int *number = &(g_config.*row.number);
    if (!read_number(argument, number) || *number < row.lowest) {
        error("%s", row.complaint);
        exit(STATUS_BAD_PARAMETER);
    }
    verbose_info("%s%d", row.line, *number);
    return SCAN_ON;
}

scan_step take_verbose(const option_row & /*row*/, const char *argument, request_type * /*type*/) {
    const bool on = names_match(argument, "ON");
    if (!on && !names_match(argument, "OFF")) {
        return SCAN_STOP;
    }
    g_config.verbose = on ? 1 : 0;
    return SCAN_ON;
}

scan_step take_type(const option_row & /*row*/, const char *argument, request_type *type) {
    for (const request_type_row &row : REQUEST_TYPES) {
        if (!names_match(argument, row.keyword)) {
            continue;
        }
        *type = row.type;
        if (row.kind == UNSUPPORTED_KIND) {
            error("%s%s", row.name, REQUEST_KINDS[row.kind].selected);
        } else {
            verbose_info("[lumocmd] %s%s", row.name,
                         row.selected != nullptr ? row.selected : REQUEST_KINDS[row.kind].selected);
        }
        return SCAN_ON;
    }
    return SCAN_STOP;
}

constexpr char OPTION_LETTERS[] = "v:t:u:s:a:d:f:p:w:?";
constexpr int LOWEST_PORT = 1025;

constexpr option_row OPTIONS[] = {
    {.letter = 'a',
     .take = take_text,
     .text = &cmd_config::address,
     .line = "[lumocmd] Internet service address selected: "},
    {.letter = 'd',
     .take = take_number,
     .number = &cmd_config::port,
     .lowest = LOWEST_PORT,
     .line = "[lumocmd] Port selected: ",
     .complaint = "utility->parse_cmd_line bad parameter: service port must be a number and upper "
                  "than 1024"},
    {.letter = 'f',
     .take = take_text,
     .text = &cmd_config::function,
     .line = "[lumocmd] Function selected: "},
    {.letter = 'p',
     .take = take_text,
     .text = &cmd_config::parameters,
     .line = "[lumocmd] Parameters selected: "},
    {.letter = 's',
     .take = take_text,
     .text = &cmd_config::socket_path,
     .line = "[lumocmd] Socket selected: "},
    {.letter = 't', .take = take_type},
    {.letter = 'u',
     .take = take_text,
     .text = &cmd_config::url,
     .line = "[lumocmd] Url selected: "},
    {.letter = 'v', .take = take_verbose},
    {.letter = 'w',
     .take = take_number,
     .number = &cmd_config::waittime,
     .line = "[lumocmd] Waittime selected: ",
     .complaint = "utility->parse_cmd_line bad parameter: waittime must be a number"},
};

const option_row *find_option(int letter) {
    for (const option_row &row : OPTIONS) {
        if (row.letter == letter) {
            return &row;
        }
    }
    return nullptr;
}

[[noreturn]] void show_help(const char *program_name) {
    print_usage(program_name);
    trace("utility->parse_cmd_line help banner request performed successfully");
    exit(STATUS_HELP_SHOWN);
}

unsigned given_fields() {
    return (g_config.address != nullptr ? NEEDS_ADDRESS : 0U) |
           (g_config.port != 0 ? NEEDS_PORT : 0U) |
           (g_config.socket_path != nullptr ? NEEDS_SOCKET : 0U) |
           (g_config.url != nullptr ? NEEDS_URL : 0U) |
           (g_config.function != nullptr ? NEEDS_FUNCTION : 0U) |
           (g_config.parameters != nullptr ? NEEDS_PARAMETERS : 0U);
}

void check_required_fields(request_type type, const char *program_name) {
    const request_type_row *row = find_request_type(type);
    if (row == nullptr) {
        show_help(program_name);
    }
    const request_kind_row &kind = REQUEST_KINDS[row->kind];
    if ((kind.fields & ~given_fields()) != 0) {
        // "paremeters" is part of the interface, slip included.
        error("utility->parse_cmd_line malformed request: %s paremeters required for %s",
              kind.required, row->keyword);
        exit(STATUS_MALFORMED_REQUEST);
    }
}

} // namespace

int parse_cmd_line(int argument_count, char **arguments) {
    trace("entering utility->parse_cmd_line");
    trace("");
    request_type type = REQUEST_NONE;
    int letter = 0;
    while ((letter = getopt(argument_count, arguments, OPTION_LETTERS)) != -1) {
        const option_row *row = find_option(letter);
        if (row == nullptr) {
            show_help(arguments[0]);
        }
        // Stopping here skips all checks below; deliberate, main decides what becomes of the type.
        if (row->take(*row, optarg, &type) == SCAN_STOP) {
            return type;
        }
    }
    if (optind != argument_count) {
        error("utility->parse_cmd_line malformed request");
        exit(STATUS_MALFORMED_REQUEST);
    }
    check_required_fields(type, arguments[0]);
    trace("exiting utility->parse_cmd_line");
    trace("");
    return type;
}

void print_banner(FILE *stream) {
    fputs("\n[lumocmd]. Lumotron FSM Daemon Server - Command line Tool.\n", stream);
    fputs("Version " LUMOCMD_VERSION ". Free software under the GNU GPL, version 2 or later.\n"
          "Manuals and support are on the Lumotron web site.\n\n",
          stderr);
}

void print_usage(const char *program_name) {
    print_banner(stderr);
    fprintf(stderr, "Usage: %s [-v] -t [options t-based]\n", program_name);
    print_help_text(stderr);
}

void release_config() {
    g_config.verbose = 0;
    xfree(g_config.function);
    xfree(g_config.parameters);
    xfree(g_config.url);
    xfree(g_config.socket_path);
    xfree(g_config.address);
    g_config.port = -1;
    debug_level = -1;
}

// ---------------------------------------------------------------------------------------------
// Parameter lists and names

int parse_parameters(const char *list, int *count, char ***items) {
    trace("entering utility->parse_parameters");
    trace("");
    *count = 0;
    *items = nullptr;
    if (list == nullptr || *list == '\0') {
        return 0;
    }
    // Neither the copy nor the items are ever freed: the process ends right after its one request.
    char *copy = xstrdup(nullptr, list);
    std::size_t bars = 0;
    for (const char *bar = copy; (bar = strchr(bar, '|')) != nullptr; bar++) {
        bars++;
    }
    *items = static_cast<char **>(xmalloc((bars + 1) * sizeof(char *)));
    for (char *item = copy; item != nullptr && *item != '\0' && *item != '|';) {
        char *bar = strchr(item, '|');
        if (bar != nullptr) {
            *bar++ = '\0';
        }
        (*items)[(*count)++] = xstrdup_free(item, 0);
        item = bar;
    }
    trace("exiting utility->parse_parameters");
    trace("");
    return 0;
}

bool names_match(const char *name, const char *known) {
    return name != nullptr && strcasecmp(name, known) == 0;
}

// ---------------------------------------------------------------------------------------------
// Status texts

char *format_status_code(int code) {
    constexpr std::size_t size = sizeof("LMCM--2147483648");
    auto *text = static_cast<char *>(xmalloc(size));
    // One range always holds the code; see ranges_are_complete().
    for (const status_range &range : STATUS_RANGES) {
        if (code >= range.first && code <= range.last) {
            snprintf(text, size, "%s-%0*d", range.prefix, range.digits, code);
            break;
        }
    }
    return text;
}

int extract_error_code(const char *text) {
    constexpr std::size_t longest = sizeof("VIVG-0901") - 1;
    constexpr std::size_t prefix = sizeof("LMWS-") - 1; // skipped unread: any five characters do
    if (text == nullptr || *text == '\0') {
        return STATUS_BAD_PARAMETER;
    }
    const std::size_t length = strlen(text);
    if (length > longest) {
        error("1 - Invalid argument for utility->extract_error_code %s ", text);
        return STATUS_BAD_PARAMETER;
    }
    int code = 0;
    if (length < prefix || !read_number(text + prefix, &code)) {
        error("2 - Invalid argument for utility->extract_error_code %s ", text);
        return STATUS_BAD_PARAMETER;
    }
    return code;
}

// ---------------------------------------------------------------------------------------------
// Connections

int make_localtcpclient_socket(const char *path) {
    const int descriptor = socket(AF_UNIX, SOCK_STREAM, 0);
    if (descriptor < 0) {
        error("utility->make_localtcpclient_socket socket failed with error '%s'", strerror(errno));
        return -1;
    }
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    if (path != nullptr) {
        strncpy(address.sun_path, path, sizeof(address.sun_path) - 1);
    }
    const std::size_t size = offsetof(sockaddr_un, sun_path) + strlen(address.sun_path);
    if (connect(descriptor, reinterpret_cast<sockaddr *>(&address), static_cast<socklen_t>(size)) <
        0) {
        // The descriptor stays open: the process ends shortly after any failure.
        error("utility->make_localtcpclient_socket connect failed with error '%s'",
              strerror(errno));
        return -1;
    }
    return descriptor;
}

int make_internettcpclient_socket(const char *address, int port) {
    const int descriptor = socket(AF_INET, SOCK_STREAM, 0);
    if (descriptor < 0) {
        error("utility->make_internettcpclient_socket socket failed with error '%s'",
              strerror(errno));
        return -1;
    }
    sockaddr_in target = {};
    target.sin_family = AF_INET;
    target.sin_port = htons(static_cast<in_port_t>(static_cast<unsigned>(port) & 0xffffU));
    // Not tested: an unreadable address becomes 255.255.255.255 and the attempt goes there.
    target.sin_addr.s_addr = inet_addr(address == nullptr ? "" : address);
    if (connect(descriptor, reinterpret_cast<sockaddr *>(&target), sizeof target) < 0) {
        error("utility->make_internettcpclient_socket connect failed with error '%s'",
              strerror(errno));
        return -1;
    }
    return descriptor;
}
