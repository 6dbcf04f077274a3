// The linker sends the program's calls of the functions named __wrap_ here (see CMakeLists.txt).
// They do what they always do while no run is under way.

#include "program.h"

#include "front/diagnostics.h"
#include "front/request_record.h"
#include "tests/protocol/texts.h"

#include <algorithm>
#include <csetjmp>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <getopt.h>
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
void *__real_realloc(void *block, size_t size);
void __real_free(void *block);
[[noreturn]] void __real_exit(int status);
}

namespace {

struct kept_block {
    void *block;
    bool is_of_runtime;
};

/// The run under way. The program frees no parameter list, because it ends: its blocks are
/// remembered and released here. Those that the SOAP runtime took have to be gone by themselves.
struct {
    bool active;
    jmp_buf exit_point;
    int program_end, other_end;
    const std::string *answer;
    std::size_t piece;
    fuzz::ending *seen;
    std::vector<kept_block> *blocks;
} run;

void remember(void *block, bool is_of_runtime) {
    if (run.active && block != nullptr) {
        run.blocks->push_back({block, is_of_runtime});
    }
}

void forget(void *block) {
    if (run.active) {
        std::erase_if(*run.blocks, [&](const kept_block &kept) { return kept.block == block; });
    }
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
void check_last_line(const fuzz::ending &seen) {
    fuzz::require(seen.output.ends_with('\n'), "the last line ends");
    const std::size_t before = seen.output.rfind('\n', seen.output.size() - 2);
    const std::string line = seen.output.substr(before + 1); // 0 where it is the only one
    int status = 0;
    int length = 0;
    fuzz::require(sscanf(line.c_str(), "%*5[A-Z0-9]-%d\n%n", &status, &length) == 1 &&
                      static_cast<std::size_t>(length) == line.size() && status == seen.status,
                  "the last line is the status");
}

void check_ending(const fuzz::ending &seen) {
    fuzz::require(seen.connections <= 1, "one connection at most");
    if (seen.is_refused) {
        fuzz::require(seen.status == 502 || seen.status == 505 || seen.status == 506,
                      "the status of a refused command line");
        fuzz::require(seen.connections == 0, "nothing is sent for a refused command line");
    } else {
        check_last_line(seen);
    }
    for (const kept_block &kept : *run.blocks) {
        fuzz::require(!kept.is_of_runtime || seen.connections == 0, "the runtime frees its memory");
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
    static std::vector<kept_block> blocks;
    ending seen;
    run = {};
    run.program_end = run.other_end = -1;
    run.answer = &answer;
    run.piece = piece;
    run.seen = &seen;
    run.blocks = &blocks;
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
    for (const kept_block &kept : std::exchange(blocks, {})) {
        free(kept.block);
    }
    std::for_each(arguments.begin(), arguments.end(), free);
    std::for_each(std::begin(texts), std::end(texts), free);
    return seen;
}

std::size_t below(input *in, std::size_t bound) {
    if (in->left == 0) {
        return 0;
    }
    in->left--;
    return *in->at++ % bound;
}

std::string field(input *in) {
    std::string text(reinterpret_cast<const char *>(in->at),
                     strnlen(reinterpret_cast<const char *>(in->at), in->left));
    const std::size_t taken = std::min(text.size() + 1, in->left);
    in->at += taken;
    in->left -= taken;
    return text;
}

std::string rest(input *in) {
    return {reinterpret_cast<const char *>(in->at), std::exchange(in->left, 0)};
}

std::vector<std::string> entries_taken(const std::string &list) {
    std::vector<std::string> entries = protocol::entries_of(list);
    entries.erase(std::find(entries.begin(), entries.end(), ""), entries.end());
    return entries;
}

void require(bool holds, const char *what) {
    if (!holds) {
        dprintf(STDERR_FILENO, "does not hold: %s\n", what);
        abort();
    }
}

void require_equal(const char *what, const std::string &is, const std::string &wanted) {
    if (is != wanted) {
        dprintf(STDERR_FILENO, "%s\n-- is:\n%s\n-- must be:\n%s\n--\n", what, is.c_str(),
                wanted.c_str());
        abort();
    }
}

} // namespace fuzz

extern "C" {

/// Instead of the program's own.
void *lumocmd_runtime_malloc(size_t size) {
    void *block = malloc(size);
    remember(block, true);
    return block;
}

void *__wrap_calloc(size_t count, size_t size) {
    void *block = __real_calloc(count, size);
    remember(block, false);
    return block;
}

void *__wrap_realloc(void *block, size_t size) {
    forget(block);
    void *resized = __real_realloc(block, size);
    remember(resized, false);
    return resized;
}

void __wrap_free(void *block) {
    forget(block);
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
    entry.ai_addr = reinterpret_cast<sockaddr *>(&address);
    entry.ai_addrlen = sizeof address;
    address.sin_family = AF_INET;
    entry.ai_family = AF_INET;
    *found = &entry;
    return 0;
}

void __wrap_freeaddrinfo() {}

} // extern "C"
// NOLINTEND(bugprone-reserved-identifier)
