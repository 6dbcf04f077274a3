// The linker sends the program's calls of the functions named __wrap_ here (see CMakeLists.txt).
// They do what they always do while no run is under way.

#include "program.h"

#include "front/diagnostics.h"
#include "front/request_record.h"

#include <algorithm>
#include <csetjmp>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <getopt.h>
#include <map>
#include <netdb.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>
#include <utility>

/// The program's main(), which has this name here.
int lumocmd_main(int argument_count, char **arguments);

// NOLINTBEGIN(bugprone-reserved-identifier): the linker names them
extern "C" {
void *__real_calloc(size_t count, size_t size);
void __real_free(void *block);
[[noreturn]] void __real_exit(int status);
}

namespace {

/// The run under way.
struct {
    bool active = false;
    jmp_buf exit_point = {};
    int program_end = -1;
    int other_end = -1;
    const std::string *answer = nullptr;
    std::size_t piece = 0;
    fuzz::ending *seen = nullptr;
} run;

/// Its blocks, and whether the SOAP runtime took them: those have to be gone by themselves. The
/// program frees no parameter list, because it ends: its blocks are released here.
std::map<void *, bool> blocks;

void *remembered(void *block, bool is_of_runtime) {
    if (run.active && block != nullptr) {
        blocks[block] = is_of_runtime;
    }
    return block;
}

/// Sends the answer ahead of its request, one record for each receive.
void send_answer() {
    const std::string &answer = *run.answer;
    // A hundred of them fit into the connection's buffer.
    const std::size_t least = run.piece == 0 ? answer.size() : answer.size() / 100 + 1;
    const std::size_t piece = std::max(run.piece, least);
    for (std::size_t at = 0; at < answer.size(); at += piece) {
        const std::size_t size = std::min(piece, answer.size() - at);
        send(run.other_end, answer.data() + at, size, MSG_DONTWAIT);
    }
    shutdown(run.other_end, SHUT_WR);
}

std::string received() {
    // An answer of which something was left is an error of the connection here, until it is asked
    // for.
    int error = 0;
    socklen_t error_size = sizeof error;
    getsockopt(run.other_end, SOL_SOCKET, SO_ERROR, &error, &error_size);
    std::string text;
    char record[1 << 16];
    ssize_t size = 0;
    while ((size = recv(run.other_end, record, sizeof record, MSG_DONTWAIT)) > 0) {
        text.append(record, static_cast<std::size_t>(size));
    }
    return text;
}

/// The last line names the exit status behind the prefix of whoever it comes from.
bool ends_with_status(const fuzz::ending &seen) {
    const std::string &output = seen.output;
    if (!output.ends_with('\n')) {
        return false;
    }
    const std::size_t start = output.rfind('\n', output.size() - 2) + 1; // 0: the only line
    int status = 0;
    int length = 0;
    return sscanf(output.c_str() + start, "%*5[A-Z0-9]-%d\n%n", &status, &length) == 1 &&
           start + static_cast<std::size_t>(length) == output.size() && status == seen.status;
}

void check_ending(const fuzz::ending &seen) {
    fuzz::require(seen.connections <= 1, "one connection at most");
    if (seen.is_refused) {
        fuzz::require(seen.status == 502 || seen.status == 505 || seen.status == 506,
                      "the status of a refused command line");
        fuzz::require(seen.connections == 0, "nothing is sent for a refused command line");
    } else {
        fuzz::require(ends_with_status(seen), "the last line is the status");
    }
    for (const auto &[block, is_of_runtime] : blocks) {
        fuzz::require(!is_of_runtime || seen.connections == 0, "the runtime frees its memory");
    }
}

void call_program(std::vector<char *> arguments) {
    optind = 0; // not 1: the library forgets its place in a word as well
    g_config = {};
    debug_level = 1;
    run.active = true;
    if (setjmp(run.exit_point) == 0) {
        run.seen->status = lumocmd_main(static_cast<int>(arguments.size()) - 1, arguments.data());
    } else {
        run.seen->is_refused = true;
    }
    run.active = false;
}

/// Each word in a block of exactly its size, so that a byte read beyond it shows.
std::vector<char *> arguments_of(const std::vector<std::string> &words) {
    std::vector<char *> arguments = {strdup("lumocmd")};
    for (const std::string &word : words) {
        arguments.push_back(strdup(word.c_str()));
    }
    arguments.push_back(nullptr);
    return arguments;
}

} // namespace

namespace fuzz {

ending run_program(const std::vector<std::string> &words, const std::string &answer,
                   std::size_t piece) {
    ending seen;
    run = {.answer = &answer, .piece = piece, .seen = &seen};
    char *texts[2] = {};
    size_t sizes[2] = {};
    FILE *const usual_output = std::exchange(stdout, open_memstream(&texts[0], &sizes[0]));
    FILE *const usual_report = std::exchange(stderr, open_memstream(&texts[1], &sizes[1]));
    const std::vector<char *> arguments = arguments_of(words);
    call_program(arguments);
    fclose(std::exchange(stdout, usual_output));
    fclose(std::exchange(stderr, usual_report));
    seen.output.assign(texts[0], sizes[0]);
    seen.report.assign(texts[1], sizes[1]);
    seen.sent = received();
    close(run.program_end); // which the program may have done
    close(run.other_end);
    check_ending(seen);
    for (const auto &[block, is_of_runtime] : std::exchange(blocks, {})) {
        free(block);
    }
    std::for_each(arguments.begin(), arguments.end(), free);
    std::for_each(std::begin(texts), std::end(texts), free);
    return seen;
}

std::size_t below(input *in, std::size_t bound) {
    if (in->empty()) {
        return 0;
    }
    const auto byte = static_cast<unsigned char>(in->front());
    in->remove_prefix(1);
    return byte % bound;
}

std::string field(input *in) {
    std::string text(in->substr(0, in->find('\0')));
    in->remove_prefix(std::min(text.size() + 1, in->size()));
    return text;
}

void require(bool holds, const char *what) {
    if (!holds) {
        dprintf(STDERR_FILENO, "does not hold: %s\n", what);
        abort();
    }
}

} // namespace fuzz

extern "C" {

/// Instead of the program's own.
void *lumocmd_runtime_malloc(size_t size) {
    return remembered(malloc(size), true);
}

void *__wrap_calloc(size_t count, size_t size) {
    return remembered(__real_calloc(count, size), false);
}

void __wrap_free(void *block) {
    if (run.active) {
        blocks.erase(block);
    }
    __real_free(block);
}

void __wrap_exit(int status) {
    if (!run.active) {
        __real_exit(status);
    }
    run.seen->status = status;
    longjmp(run.exit_point, 1);
}

/// One end of a pair; a record that was sent at once is received at once.
int __wrap_socket() {
    run.seen->connections++;
    int ends[2] = {-1, -1};
    if (socketpair(AF_UNIX, SOCK_SEQPACKET, 0, ends) == 0) {
        run.program_end = ends[0];
        run.other_end = ends[1];
        send_answer();
    }
    return run.program_end;
}

int __wrap_connect() {
    return 0;
}

int __wrap_setsockopt() {
    return 0; // those of TCP are none of the pair's
}

/// Every name is a host.
int __wrap_getaddrinfo(const char * /*host*/, const char * /*service*/,
                       const struct addrinfo * /*hints*/, struct addrinfo **found) {
    static sockaddr_in address = {};
    static addrinfo entry = {};
    address.sin_family = AF_INET;
    entry.ai_family = AF_INET;
    entry.ai_addr = reinterpret_cast<sockaddr *>(&address);
    entry.ai_addrlen = sizeof address;
    *found = &entry;
    return 0;
}

void __wrap_freeaddrinfo() {}

} // extern "C"
// NOLINTEND(bugprone-reserved-identifier)
