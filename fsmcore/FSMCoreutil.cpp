#include "fsmcore/FSMCoreutil.h"

#include "front/bounded_text.h"
#include "front/diagnostics.h"
#include "front/memory.h"
#include "front/number_text.h"
#include "front/utility.h"

#include <arpa/inet.h>
#include <cerrno>
#include <cstring>
#include <strings.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

constexpr std::size_t REQUEST_SIZE = 1024; // terminator included
constexpr std::size_t ANSWER_SIZE = 1024;  // the buffer has one byte more for the terminator

/// An answer of ANSWER_SIZE bytes holds at most this many non-empty lines, hence parameters.
constexpr int MOST_ANSWER_LINES = ANSWER_SIZE / 2;

constexpr char STATUS_TAG[] = "Response Status: ";
constexpr char COUNT_TAG[] = "Parameter Count: ";
constexpr std::size_t TAG_LENGTH = 17; // "Param000 Length: " as well
static_assert(sizeof(STATUS_TAG) - 1 == TAG_LENGTH && sizeof(COUNT_TAG) - 1 == TAG_LENGTH,
              "all tags are cut by TAG_LENGTH: a tag of another length needs its own");
constexpr char STATUS_PREFIX[] = "FSMC-";
constexpr std::size_t PREFIX_LENGTH = sizeof(STATUS_PREFIX) - 1;

/// One exchange under way: whom its messages name and where its answer stands.
struct exchange {
    const char *tag; ///< source file and function, opens every message
    const char *function;
    int descriptor;
    char *answer; ///< what strtok_r() is given: the answer, then null
    char *rest;   ///< of the answer, behind the line last taken
};

/// What a well-formed answer says.
struct answer {
    int status;
    int count;
    char **values; ///< null when count is zero or less
};

bool assemble_request(const char *tag, const char *function, int count, const char *slots,
                      const char *waittime, bounded_text *request) {
    append_format(request, "Request: %s\n", function);
    append_format(request, "Parameter Count: %d\n", count);
    for (int i = 0; i < count && !request->overflowed; i++) {
        const char *value = slots + static_cast<std::size_t>(i) * FSMC_SLOT_SIZE;
        const std::size_t length = strnlen(value, FSMC_SLOT_SIZE);
        if (length == FSMC_SLOT_SIZE) {
            error("%s error value of parameter %d is longer than %d characters for function '%s'",
                  tag, i + 1, static_cast<int>(FSMC_SLOT_SIZE) - 1, function);
            return false;
        }
        append_format(request, "Param%03d Length: %d\n", i, static_cast<int>(length));
        append_format(request, "Param%03d:\n", i);
        append_format(request, "%s\n", value);
    }
    if (waittime != nullptr) {
        append_format(request, "Waittime: %s\n", waittime);
    }
    append_format(request, "\n");
    if (request->overflowed) {
        error("%s error request text is longer than %d characters for function '%s'", tag,
              static_cast<int>(REQUEST_SIZE) - 1, function);
        return false;
    }
    return true;
}

/// Takes the next non-empty line of the answer; null when none is left.
char *take_line(exchange *x) {
    char *line = strtok_r(x->answer, "\n", &x->rest);
    x->answer = nullptr;
    return line;
}

/// Ends an exchange whose answer is not acceptable; the message has been written.
bool refuse_answer(const exchange &x) {
    close(x.descriptor);
    return false;
}

bool read_status_line(exchange *x, int *status) {
    char *line = take_line(x);
    if (line == nullptr || strncasecmp(line, STATUS_TAG, TAG_LENGTH) != 0) {
        error("%s strtok parsing 'Response Status: ' response tag failed for function '%s'", x->tag,
              x->function);
        return refuse_answer(*x);
    }
    cut_message_to_preserve_newline(line, TAG_LENGTH);
    if (strncmp(line, STATUS_PREFIX, PREFIX_LENGTH) != 0) {
        error("%s error: FSMCore response not in the %s format for function '%s'", x->tag,
              "FSMC-NNN", x->function);
        return refuse_answer(*x);
    }
    cut_message_to_preserve_newline(line, PREFIX_LENGTH);
    if (!read_number(line, status)) {
        // The one message with a bare name, and the one failure that leaves the connection open.
        error("%s error strtol with error '%s' for function %s", x->tag, strerror(errno),
              x->function);
        return false;
    }
    return true;
}

bool read_count_line(exchange *x, int *count) {
    char *line = take_line(x);
    if (line == nullptr || strncasecmp(line, COUNT_TAG, TAG_LENGTH) != 0) {
        error("%s strtok parsing 'Parameter Count: ' response tag failed for function '%s'", x->tag,
              x->function);
        return refuse_answer(*x);
    }
    cut_message_to_preserve_newline(line, TAG_LENGTH);
    if (!read_number(line, count)) {
        error("%s number of parameters after 'Parameter Count: ' response statement is not a valid "
              "number for function '%s'",
              x->tag, x->function);
        return refuse_answer(*x);
    }
    return true;
}

/// Reads one returned parameter. Its tags are not looked at: only their lengths are certain.
bool read_parameter(exchange *x, char **value) {
    char *length_line = take_line(x);
    if (length_line == nullptr) {
        error("%s strtok parsing 'ParamNNN Length: ' response tag failed, not a well formed "
              "response from FSMCore for function '%s'",
              x->tag, x->function);
        return refuse_answer(*x);
    }
    cut_message_to_preserve_newline(length_line, TAG_LENGTH);
    int length = 0;
    if (!read_number(length_line, &length)) {
        error("%s parameter length after 'ParamNNN Length: ' response statement is not a valid "
              "number, not a well formed response from FSMCore for function '%s'",
              x->tag, x->function);
        return refuse_answer(*x);
    }
    if (length <= 0) {
        return true; // the daemon sends an empty parameter as its length line alone
    }
    const char *tag_line = take_line(x);
    char *text = tag_line == nullptr ? nullptr : take_line(x);
    if (text == nullptr || strlen(text) != static_cast<std::size_t>(length)) {
        error("%s strtok parsing 'ParamNNN: ' response tag failed, not a well formed response from "
              "FSMCore for function '%s'",
              x->tag, x->function);
        return refuse_answer(*x);
    }
    *value = xstrdup_free(text, 0);
    return true;
}

bool read_parameters(exchange *x, answer *result) {
    if (result->count > 0) {
        // A count beyond what the answer can hold fails on a missing line before the list ends.
        const int listed = result->count < MOST_ANSWER_LINES ? result->count : MOST_ANSWER_LINES;
        result->values =
            static_cast<char **>(xmalloc(static_cast<std::size_t>(listed) * sizeof(char *)));
    }
    for (int i = 0; i < result->count; i++) {
        if (!read_parameter(x, &result->values[i])) {
            return false;
        }
    }
    if (take_line(x) != nullptr) {
        error("%s strtok parsing '\\n' response tag failed, not a well formed response from "
              "FSMCore for function '%s'",
              x->tag, x->function);
        return refuse_answer(*x);
    }
    return true;
}

/// Sends the request and reads the answer. Everything that local and remote share.
int exchange_texts(exchange x, const bounded_text &request, int *returned_count,
                   char ***returned_values) {
    if (send(x.descriptor, request.text, request.length, 0) < 0) {
        error("%s send writing request failed with error '%s' for function '%s'", x.tag,
              strerror(errno), x.function);
        close(x.descriptor);
        return FSMC_SEND_FAILED;
    }
    // The answer is read once: the daemon sends it in one write.
    char received[ANSWER_SIZE + 1] = {};
    const ssize_t length = recv(x.descriptor, received, ANSWER_SIZE, 0);
    if (length < 0) {
        error("%s recv reading response failed with error '%s' for function '%s'", x.tag,
              strerror(errno), x.function);
        close(x.descriptor);
        return FSMC_RESPONSE_FAILED;
    }
    x.answer = received;
    answer result = {};
    if (!read_status_line(&x, &result.status) || !read_count_line(&x, &result.count) ||
        !read_parameters(&x, &result)) {
        return FSMC_RESPONSE_FAILED;
    }
    close(x.descriptor);
    if (returned_count != nullptr && returned_values != nullptr) {
        *returned_count = result.count;
        *returned_values = result.values;
    }
    return result.status;
}

} // namespace

int fsmcore_requeststatic(const char *socket_path, const char *function, int count,
                          const char *slots, int *returned_count, char ***returned_values,
                          const char *waittime) {
    exchange x = {"FSMCoreutil->fsmcore_requeststatic", function, -1, nullptr, nullptr};
    char text[REQUEST_SIZE] = {};
    bounded_text request = {text, sizeof text, 0, false};
    if (!assemble_request(x.tag, function, count, slots, waittime, &request)) {
        return FSMC_RESPONSE_FAILED;
    }
    x.descriptor = make_localtcpclient_socket(socket_path);
    if (x.descriptor < 0) {
        error("%s error opening socket FSMCore clientside for function '%s'", x.tag, function);
        return FSMC_CONNECT_FAILED;
    }
    return exchange_texts(x, request, returned_count, returned_values);
}

int fsmcore_m2mrequeststatic(const char *address, const char *port, const char *function, int count,
                             const char *slots, int *returned_count, char ***returned_values) {
    constexpr int highest_refused_port = 1024;
    exchange x = {"FSMCoreutil->fsmcore_m2mrequeststatic", function, -1, nullptr, nullptr};
    in_addr parsed = {};
    if (address == nullptr || inet_aton(address, &parsed) == 0) {
        error("%s error hostip parameter '%s' is not in a valid numbers-and-dots notation", x.tag,
              address);
        return FSMC_CONNECT_FAILED;
    }
    int port_number = 0;
    if (port == nullptr || !read_number(port, &port_number) ||
        port_number <= highest_refused_port) {
        error("%s strtol error on converting '%s' into numeric remote port number", x.tag, port);
        return FSMC_CONNECT_FAILED;
    }
    char text[REQUEST_SIZE] = {};
    bounded_text request = {text, sizeof text, 0, false};
    if (!assemble_request(x.tag, function, count, slots, nullptr, &request)) {
        return FSMC_RESPONSE_FAILED;
    }
    x.descriptor = make_internettcpclient_socket(address, port_number);
    if (x.descriptor < 0) {
        error("%s error opening remote socket FSMCore clientside for function '%s'", x.tag,
              function);
        return FSMC_CONNECT_FAILED;
    }
    return exchange_texts(x, request, returned_count, returned_values);
}
