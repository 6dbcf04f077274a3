// One call of the product under control. The linker sends its calls of the functions named below
// here (see WRAPPED_FUNCTIONS in CMakeLists.txt): the network is a script, the console two texts,
// exit() comes back, and every block is remembered and released. Outside of run_product() all of
// them do what they always do.

#include "front/diagnostics.h"
#include "front/request_record.h"
#include "tests/fuzz/target.h"
#include "tests/fuzz/text_stream.h"

#include <algorithm>
#include <cerrno>
#include <csetjmp>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <getopt.h>
#include <netdb.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/select.h>
#include <sys/socket.h>
#include <unistd.h>
#include <utility>
#include <vector>

// NOLINTBEGIN(bugprone-reserved-identifier): the linker names them
extern "C" {
void *__real_calloc(size_t count, size_t size);
void *__real_realloc(void *block, size_t size);
void __real_free(void *block);
[[noreturn]] void __real_exit(int status);
int __real_close(int descriptor);
int __real_fcntl(int descriptor, int command, ...);
}

namespace {

constexpr int DESCRIPTOR = 1000; ///< of the one connection; below what select() can take

enum block_kind { MALLOC, CALLOC };
struct kept_block {
    void *block;
    block_kind kind;
};

/// The call under way.
struct run_state {
    bool active;
    jmp_buf exit_point;
    bool is_open;
    std::size_t answered; ///< bytes of the answer that were received
    const fuzz::peer_script *script;
    fuzz::outcome *seen;
    std::vector<kept_block> *blocks;
};
run_state run;

void remember(void *block, block_kind kind) {
    if (run.active && block != nullptr) {
        run.blocks->push_back({block, kind});
    }
}

/// The newest first: that is the one that is released next, mostly.
block_kind forget(void *block) {
    for (std::size_t i = run.blocks->size(); i-- != 0;) {
        if ((*run.blocks)[i].block == block) {
            const block_kind kind = (*run.blocks)[i].kind;
            run.blocks->erase(run.blocks->begin() + static_cast<std::ptrdiff_t>(i));
            return kind;
        }
    }
    return MALLOC;
}

void release_blocks() {
    for (const kept_block &kept : *run.blocks) {
        run.seen->unreleased_malloc += kept.kind == MALLOC ? 1 : 0;
        __real_free(kept.block);
    }
    run.blocks->clear();
}

int fail(int error) {
    errno = error;
    return -1;
}

void require_open(int descriptor) {
    fuzz::require(descriptor == DESCRIPTOR && run.is_open, "used descriptor is open");
}

} // namespace

namespace fuzz {

outcome run_product(const peer_script &script, bool verbose, const std::function<int()> &call) {
    static auto *output = new text_stream; // as long-lived as the streams that they stand for
    static auto *report = new text_stream;
    static auto *blocks = new std::vector<kept_block>;
    FILE *const usual_output = std::exchange(stdout, output->get());
    FILE *const usual_report = std::exchange(stderr, report->get());
    outcome seen;
    run.script = &script;
    run.seen = &seen;
    run.blocks = blocks;
    run.answered = 0;
    run.is_open = false;
    g_config = {};
    g_config.verbose = verbose ? 1 : 0;
    debug_level = 1;
    optind = 0; // not 1: the library forgets its place in a word as well
    run.active = true;
    if (setjmp(run.exit_point) == 0) {
        seen.value = call();
    } else {
        seen.exited = true;
    }
    run.active = false;
    stdout = usual_output;
    stderr = usual_report;
    seen.output = output->take();
    seen.report = report->take();
    g_config = {};
    release_blocks();
    return seen;
}

} // namespace fuzz

extern "C" {

// ---------------------------------------------------------------------------------------------
// Memory and exit

/// The SOAP runtime's, instead of the program's own: its blocks must be gone by themselves.
void *lumocmd_runtime_malloc(size_t size) {
    void *block = malloc(size);
    remember(block, MALLOC);
    return block;
}

void *__wrap_calloc(size_t count, size_t size) {
    void *block = __real_calloc(count, size);
    remember(block, CALLOC);
    return block;
}

void *__wrap_realloc(void *block, size_t size) {
    const block_kind kind = run.active ? forget(block) : MALLOC;
    void *resized = __real_realloc(block, size);
    remember(resized, kind);
    return resized;
}

void __wrap_free(void *block) {
    if (run.active) {
        forget(block);
    }
    __real_free(block);
}

void __wrap_exit(int status) {
    if (!run.active) {
        __real_exit(status);
    }
    run.seen->value = status;
    longjmp(run.exit_point, 1);
}

// ---------------------------------------------------------------------------------------------
// Network

int __wrap_socket(int family, int type, int protocol) {
    fuzz::require(type == SOCK_STREAM, "socket is a stream");
    fuzz::require(protocol == 0 || protocol == IPPROTO_TCP, "protocol of the socket");
    if (run.script->socket_error != 0) {
        return fail(run.script->socket_error);
    }
    fuzz::require(!run.is_open, "one connection at a time");
    run.seen->peer.opened++;
    run.seen->peer.family = family;
    run.is_open = true;
    return DESCRIPTOR;
}

int __wrap_connect(int descriptor, const struct sockaddr *address, socklen_t size) {
    require_open(descriptor);
    run.seen->peer.address.assign(reinterpret_cast<const char *>(address), size);
    return run.script->connect_error == 0 ? 0 : fail(run.script->connect_error);
}

ssize_t __wrap_send(int descriptor, const void *bytes, size_t size, int /*flags*/) {
    require_open(descriptor);
    run.seen->peer.sends++;
    if (run.script->send_error != 0) {
        return fail(run.script->send_error);
    }
    const std::size_t taken = std::min(size, run.script->most_sent);
    run.seen->peer.sent.append(static_cast<const char *>(bytes), taken);
    return static_cast<ssize_t>(taken);
}

ssize_t __wrap_recv(int descriptor, void *bytes, size_t size, int /*flags*/) {
    require_open(descriptor);
    run.seen->peer.receives++;
    if (run.script->receive_error != 0) {
        return fail(run.script->receive_error);
    }
    const std::string &answer = run.script->answer;
    const std::size_t given =
        std::min({size, run.script->most_received, answer.size() - run.answered});
    memcpy(bytes, answer.data() + run.answered, given);
    run.answered += given;
    return static_cast<ssize_t>(given);
}

int __wrap_close(int descriptor) {
    if (!run.active) {
        return __real_close(descriptor);
    }
    require_open(descriptor);
    run.seen->peer.closed++;
    run.is_open = false;
    return 0;
}

int __wrap_shutdown(int descriptor, int /*how*/) {
    require_open(descriptor);
    return 0;
}

int __wrap_setsockopt(int descriptor, int /*level*/, int /*option*/, const void * /*value*/,
                      socklen_t /*size*/) {
    require_open(descriptor);
    return 0;
}

int __wrap_getsockopt(int descriptor, int /*level*/, int /*option*/, void *value, socklen_t *size) {
    require_open(descriptor);
    memset(value, 0, *size);
    return 0;
}

int __wrap_fcntl(int descriptor, int command, ...) {
    if (run.active) {
        require_open(descriptor);
        return 0;
    }
    va_list arguments;
    va_start(arguments, command);
    void *argument = va_arg(arguments, void *); // a lock's record, for what counts coverage
    va_end(arguments);
    return __real_fcntl(descriptor, command, argument);
}

/// Everything is ready at once; after the answer the end of the connection is.
int __wrap_poll(struct pollfd *descriptors, nfds_t count, int /*timeout*/) {
    for (nfds_t i = 0; i < count; i++) {
        require_open(descriptors[i].fd);
        descriptors[i].revents = descriptors[i].events;
    }
    return static_cast<int>(count);
}

int __wrap_select(int /*highest*/, fd_set * /*reading*/, fd_set * /*writing*/, fd_set *exceptional,
                  struct timeval * /*timeout*/) {
    if (exceptional != nullptr) {
        FD_ZERO(exceptional);
    }
    return 1;
}

/// Every name is a host.
int __wrap_getaddrinfo(const char * /*host*/, const char * /*service*/,
                       const struct addrinfo *hints, struct addrinfo **found) {
    static sockaddr_in address = {};
    static addrinfo entry = {};
    address.sin_family = AF_INET;
    entry.ai_family = AF_INET;
    entry.ai_socktype = SOCK_STREAM;
    entry.ai_protocol = hints == nullptr ? 0 : hints->ai_protocol;
    entry.ai_addr = reinterpret_cast<sockaddr *>(&address);
    entry.ai_addrlen = sizeof address;
    *found = &entry;
    return 0;
}

void __wrap_freeaddrinfo(struct addrinfo * /*found*/) {}

} // extern "C"
// NOLINTEND(bugprone-reserved-identifier)
