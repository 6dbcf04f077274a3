#include "gateways/gateway_exchange.h"

#include "front/bounded_text.h"
#include "front/diagnostics.h"
#include "front/memory.h"
#include "front/number_text.h"
#include "front/utility.h"

#include <cerrno>
#include <cstring>
#include <strings.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

constexpr std::size_t REQUEST_SIZE = 1024; // terminator included
constexpr std::size_t ANSWER_SIZE = 1024;  // the buffer has one byte more for the terminator

constexpr char STATUS_TAG[] = "Response Status: ";
constexpr std::size_t STATUS_TAG_LENGTH = sizeof(STATUS_TAG) - 1;

/// The message kinds, as positions in gateway_profile::quoting.
enum message_kind {
    OPEN_FAILED,
    UNKNOWN_FUNCTION,
    SEND_FAILED,
    RECEIVE_FAILED,
    NO_STATUS_LINE,
    WRONG_PREFIX,
    BAD_NUMBER,
    TRAILING_TEXT,
};

/// The quotation mark around the function name in a message; empty where it stands bare.
const char *quote(const gateway_profile &profile, message_kind kind) {
    return profile.quoting[kind] == 'Q' ? "'" : "";
}

const char *text_or(const char *text, const char *otherwise) {
    return text != nullptr ? text : otherwise;
}

const gateway_function *find_function(const gateway_profile &profile, const char *name) {
    for (const gateway_function &known : profile.functions) {
        if (names_match(name, known.name)) {
            return &known;
        }
    }
    return nullptr;
}

void assemble_request(bounded_text *request, const char *function,
                      std::span<const gateway_line> lines, std::span<const char *const> values) {
    append_format(request, "Request: %s\n", function);
    for (const gateway_line &line : lines) {
        const char *value = line.fixed != nullptr
                                ? line.fixed
                                : values[static_cast<std::size_t>(line.parameter) - 1];
        append_format(request, "%s: %s\n", line.name, value);
    }
    append_format(request, "\n");
}

/// Parses the answer in place. True when it is well formed; otherwise its message is written and
/// the connection is closed, or left open after an unreadable number.
bool parse_answer(const gateway_profile &profile, int descriptor, const char *function,
                  char *received, int *status) {
    char *rest = nullptr;
    char *line = strtok_r(received, "\n", &rest);
    if (line == nullptr || strncasecmp(line, STATUS_TAG, STATUS_TAG_LENGTH) != 0) {
        const char *mark = quote(profile, NO_STATUS_LINE);
        error("%s strtok parsing 'Response Status: ' response tag failed for function %s%s%s",
              profile.source_tag, mark, function, mark);
        close(descriptor);
        return false;
    }
    cut_message_to_preserve_newline(line, STATUS_TAG_LENGTH);
    if (strncmp(line, profile.prefix, strlen(profile.prefix)) != 0) {
        const char *mark = quote(profile, WRONG_PREFIX);
        error("%s error: %s response not in the %s format for function %s%s%s", profile.source_tag,
              profile.daemon, profile.format_label, mark, function, mark);
        close(descriptor);
        return false;
    }
    cut_message_to_preserve_newline(line, strlen(profile.prefix));
    if (!read_number(line, status)) {
        // The connection stays open here; the process ends right after.
        const char *mark = quote(profile, BAD_NUMBER);
        error("%s error strtol with error '%s' for function %s%s%s",
              text_or(profile.tail_tag, profile.source_tag), strerror(errno), mark, function, mark);
        return false;
    }
    if (strtok_r(nullptr, "\n", &rest) != nullptr) {
        const char *mark = quote(profile, TRAILING_TEXT);
        error("%s strtok parsing '\\n' response tag failed, not a well formed response from %s for "
              "function %s%s%s",
              text_or(profile.tail_tag, profile.source_tag),
              text_or(profile.tail_daemon, profile.daemon), mark, function, mark);
        close(descriptor);
        return false;
    }
    return true;
}

/// Sends the assembled request and reads the answer.
int exchange_texts(const gateway_profile &profile, int descriptor, const char *function,
                   const bounded_text &request) {
    if (send(descriptor, request.text, request.length, 0) < 0) {
        const char *mark = quote(profile, SEND_FAILED);
        error("%s send writing request failed with error '%s' for function %s%s%s",
              profile.source_tag, strerror(errno), mark, function, mark);
        close(descriptor);
        return profile.code_base + GATEWAY_SEND_FAILED;
    }
    // The answer is read once: the daemons send it in one write.
    char received[ANSWER_SIZE + 1] = {};
    const ssize_t length = recv(descriptor, received, ANSWER_SIZE, 0);
    if (length < 0) {
        const char *mark = quote(profile, RECEIVE_FAILED);
        error("%s recv reading response failed with error '%s' for function %s%s%s",
              profile.source_tag, strerror(errno), mark, function, mark);
        close(descriptor);
        return profile.code_base + GATEWAY_ANSWER_FAILED;
    }
    int status = 0;
    if (!parse_answer(profile, descriptor, function, received, &status)) {
        return profile.code_base + GATEWAY_ANSWER_FAILED;
    }
    close(descriptor);
    return status;
}

} // namespace

int run_gateway_exchange(const gateway_profile &profile, int descriptor, const char *function,
                         std::span<const char *const> values) {
    if (descriptor < 0) {
        const char *mark = quote(profile, OPEN_FAILED);
        error("%s error opening socket %s clientside for function %s%s%s", profile.source_tag,
              profile.daemon, mark, function, mark);
        return profile.code_base + GATEWAY_CONNECT_FAILED;
    }
    const gateway_function *known = find_function(profile, function);
    if (known == nullptr) {
        // The connection stays open here; the process ends right after.
        const char *mark = quote(profile, UNKNOWN_FUNCTION);
        error("%s error function %s%s%s not supported",
              text_or(profile.unsupported_tag, profile.source_tag), mark, function, mark);
        return profile.code_base + GATEWAY_FUNCTION_NOT_SUPPORTED;
    }
    char text[REQUEST_SIZE] = {};
    bounded_text request = {text, sizeof text, 0, false};
    assemble_request(&request, function, known->lines, values);
    if (request.overflowed) {
        const char *mark = quote(profile, SEND_FAILED);
        error("%s error request text is longer than %d characters for function %s%s%s",
              profile.source_tag, static_cast<int>(REQUEST_SIZE) - 1, mark, function, mark);
        close(descriptor);
        return profile.code_base + GATEWAY_SEND_FAILED;
    }
    return exchange_texts(profile, descriptor, function, request);
}
