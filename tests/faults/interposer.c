/* Loaded into lumocmd before libc: one chosen call of a run fails, takes less than asked or finds
 * no memory, and a journal tells what was called. Calls to the kernel are made directly, so that
 * the journal shows the program's own calls and none of libc's. What happens before main belongs to
 * the loader and is left alone.
 *
 * FAULT_JOURNAL   file that becomes the journal, of JOURNAL_SIZE bytes
 * FAULT_CALL      name of the call that fails; "allocation" stands for every allocating call
 * FAULT_NUMBER    which one of them, from 1
 * FAULT_ERROR     its error number, or 0
 * FAULT_LIMIT     without an error: the most bytes that it takes
 * FAULT_ONWARDS   set when all later ones fail as well
 */

#define _GNU_SOURCE
#include "tests/faults/journal.h"

#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <link.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <netdb.h>
#include <poll.h>
#include <stdarg.h>
#include <stddef.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/select.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <unistd.h>

/* libc's own allocator, under the names that nobody interposes. */
extern void *__libc_malloc(size_t size);
extern void *__libc_calloc(size_t count, size_t size);
extern void *__libc_realloc(void *block, size_t size);

static const char *faulty_call = "";
static int faulty_number;
static int faulty_error;
static size_t most_bytes = SIZE_MAX;
static int onwards;

static int armed;
static char *journal;
static size_t journal_used;
static uintptr_t program_start;
static uintptr_t program_end;

#define CALL_NAMES 32
static struct {
    const char *name;
    int count;
} calls[CALL_NAMES];

__attribute__((format(printf, 1, 2))) static void note(const char *format, ...) {
    va_list arguments;
    va_start(arguments, format);
    const int length =
        vsnprintf(journal + journal_used, JOURNAL_SIZE - journal_used, format, arguments);
    va_end(arguments);
    if (length < 0 || (size_t)length >= JOURNAL_SIZE - journal_used) {
        abort(); /* a truncated journal must not pass for a short one */
    }
    journal_used += (size_t)length;
}

/* Counts a call and enters it; true when it is one that fails. */
static int fails(const char *name, const char *detail) {
    if (!armed) {
        return 0;
    }
    int at = 0;
    while (calls[at].name != NULL && strcmp(calls[at].name, name) != 0) {
        if (++at == CALL_NAMES) {
            abort();
        }
    }
    calls[at].name = name;
    const int number = ++calls[at].count;
    const int chosen = strcmp(name, faulty_call) == 0 &&
                       (number == faulty_number || (onwards && number > faulty_number));
    note("%s%s %d%s\n", chosen ? FAULT_MARK : "", name, number, detail);
    return chosen;
}

/* How many of `length` bytes a chosen call takes; -1 with errno when it fails outright. */
static ssize_t bytes_left(const char *name, size_t length) {
    if (!fails(name, "")) {
        return (ssize_t)length;
    }
    if (faulty_error != 0) {
        errno = faulty_error;
        return -1;
    }
    return (ssize_t)(most_bytes < length ? most_bytes : length);
}

static int fails_with_error(const char *name) {
    if (!fails(name, "")) {
        return 0;
    }
    errno = faulty_error;
    return 1;
}

/* ------------------------------------------------------------------------------------------------
 * The kernel */

int socket(int domain, int type, int protocol) {
    return fails_with_error("socket") ? -1 : (int)syscall(SYS_socket, domain, type, protocol);
}

/* libc declares it with an argument type that is no ISO C. */
int own_connect(int descriptor, const struct sockaddr *address, socklen_t size) __asm__("connect");
int own_connect(int descriptor, const struct sockaddr *address, socklen_t size) {
    return fails_with_error("connect") ? -1 : (int)syscall(SYS_connect, descriptor, address, size);
}

ssize_t send(int descriptor, const void *bytes, size_t length, int flags) {
    const ssize_t left = bytes_left("send", length);
    return left < 0 ? left : syscall(SYS_sendto, descriptor, bytes, left, flags, NULL, 0);
}

ssize_t recv(int descriptor, void *bytes, size_t length, int flags) {
    const ssize_t left = bytes_left("recv", length);
    return left < 0 ? left : syscall(SYS_recvfrom, descriptor, bytes, left, flags, NULL, NULL);
}

/* Linux gives the descriptor free even when it reports a failure. */
int close(int descriptor) {
    const int failed = fails_with_error("close");
    const int kept = errno;
    const int result = (int)syscall(SYS_close, descriptor);
    errno = failed ? kept : errno;
    return failed ? -1 : result;
}

int open(const char *path, int flags, ...) {
    return fails_with_error("open") ? -1 : (int)syscall(SYS_openat, AT_FDCWD, path, flags, 0);
}

int poll(struct pollfd *watched, nfds_t count, int milliseconds) {
    if (fails_with_error("poll")) {
        return -1;
    }
    struct timespec limit = {milliseconds / 1000, milliseconds % 1000 * 1000000L};
    return (int)syscall(SYS_ppoll, watched, count, milliseconds < 0 ? NULL : &limit, NULL, 0);
}

int select(int count, fd_set *readable, fd_set *writable, fd_set *exceptional,
           struct timeval *patience) {
    if (fails_with_error("select")) {
        return -1;
    }
    struct timespec limit = {0, 0};
    if (patience != NULL) {
        limit.tv_sec = patience->tv_sec;
        limit.tv_nsec = patience->tv_usec * 1000L;
    }
    return (int)syscall(SYS_pselect6, count, readable, writable, exceptional,
                        patience == NULL ? NULL : &limit, NULL);
}

int setsockopt(int descriptor, int level, int option, const void *value, socklen_t size) {
    return fails_with_error("setsockopt")
               ? -1
               : (int)syscall(SYS_setsockopt, descriptor, level, option, value, size);
}

int getsockopt(int descriptor, int level, int option, void *value, socklen_t *size) {
    return fails_with_error("getsockopt")
               ? -1
               : (int)syscall(SYS_getsockopt, descriptor, level, option, value, size);
}

int fcntl(int descriptor, int command, ...) {
    va_list arguments;
    va_start(arguments, command);
    const long argument = va_arg(arguments, long);
    va_end(arguments);
    return fails_with_error("fcntl") ? -1 : (int)syscall(SYS_fcntl, descriptor, command, argument);
}

int shutdown(int descriptor, int how) {
    return fails_with_error("shutdown") ? -1 : (int)syscall(SYS_shutdown, descriptor, how);
}

/* The error number is one of getaddrinfo's own. */
int getaddrinfo(const char *node, const char *service, const struct addrinfo *hints,
                struct addrinfo **result) {
    int (*next)(const char *, const char *, const struct addrinfo *, struct addrinfo **) = NULL;
    void *const symbol = dlsym(RTLD_NEXT, "getaddrinfo");
    memcpy(&next, &symbol, sizeof next);
    return fails("getaddrinfo", "") ? -faulty_error : next(node, service, hints, result);
}

/* Standard output is written by libc itself, out of reach for anything but the kernel's filter. */
static void refuse_standard_output(void) {
    struct sock_filter rules[] = {
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(struct seccomp_data, nr)),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_write, 0, 3),
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(struct seccomp_data, args[0])),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, STDOUT_FILENO, 0, 1),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | ((unsigned)faulty_error & SECCOMP_RET_DATA)),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
    };
    const struct sock_fprog program = {sizeof rules / sizeof *rules, rules};
    if (prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
        prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) == 0) {
        note("%sstandard-output\n", FAULT_MARK);
    }
}

/* ------------------------------------------------------------------------------------------------
 * Memory */

static int allocation_fails(const char *name, size_t size, const void *caller) {
    if (!armed) {
        return 0;
    }
    const uintptr_t from = (uintptr_t)caller;
    const char *who = from >= program_start && from < program_end ? "program" : "library";
    char detail[64];
    snprintf(detail, sizeof detail, " %s %s %zu", who, name, size);
    if (!fails("allocation", detail)) {
        return 0;
    }
    errno = ENOMEM;
    return 1;
}

void *malloc(size_t size) {
    return allocation_fails("malloc", size, __builtin_return_address(0)) ? NULL
                                                                         : __libc_malloc(size);
}

void *calloc(size_t count, size_t size) {
    return allocation_fails("calloc", count * size, __builtin_return_address(0))
               ? NULL
               : __libc_calloc(count, size);
}

void *realloc(void *block, size_t size) {
    return allocation_fails("realloc", size, __builtin_return_address(0))
               ? NULL
               : __libc_realloc(block, size);
}

/* ------------------------------------------------------------------------------------------------
 * The system log */

static void record(int priority, const char *format, va_list arguments) {
    char text[256];
    vsnprintf(text, sizeof text, format, arguments);
    note("syslog %d ", priority);
    for (const char *at = text; *at != '\0'; at++) {
        note(*at == '\n' ? "\\n" : "%c", *at);
    }
    note("\n");
}

__attribute__((format(printf, 2, 3))) void syslog(int priority, const char *format, ...) {
    va_list arguments;
    va_start(arguments, format);
    record(priority, format, arguments);
    va_end(arguments);
}

__attribute__((format(printf, 3, 4))) void __syslog_chk(int priority, int flag, const char *format,
                                                        ...) {
    (void)flag;
    va_list arguments;
    va_start(arguments, format);
    record(priority, format, arguments);
    va_end(arguments);
}

/* ------------------------------------------------------------------------------------------------
 * Arming */

static int find_program(struct dl_phdr_info *object, size_t size, void *unused) {
    (void)size;
    (void)unused;
    for (int i = 0; i < object->dlpi_phnum; i++) {
        const ElfW(Phdr) *segment = &object->dlpi_phdr[i];
        const uintptr_t start = object->dlpi_addr + segment->p_vaddr;
        if (segment->p_type == PT_LOAD && (segment->p_flags & PF_X) != 0) {
            program_start = start;
            program_end = start + segment->p_memsz;
        }
    }
    return 1; /* the first object is the program */
}

static int number_of(const char *name) {
    const char *text = getenv(name);
    return text == NULL ? 0 : (int)strtol(text, NULL, 10);
}

__attribute__((constructor)) static void arm(void) {
    const char *path = getenv("FAULT_JOURNAL");
    if (path == NULL) {
        return;
    }
    const int file = (int)syscall(SYS_openat, AT_FDCWD, path, O_RDWR, 0);
    journal = mmap(NULL, JOURNAL_SIZE, PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
    if (file < 0 || journal == MAP_FAILED) {
        abort();
    }
    syscall(SYS_close, file);
    dl_iterate_phdr(find_program, NULL);
    if (getenv("FAULT_CALL") != NULL) {
        faulty_call = getenv("FAULT_CALL");
    }
    faulty_number = number_of("FAULT_NUMBER");
    faulty_error = number_of("FAULT_ERROR");
    onwards = getenv("FAULT_ONWARDS") != NULL;
    if (getenv("FAULT_LIMIT") != NULL) {
        most_bytes = (size_t)number_of("FAULT_LIMIT");
    }
    if (strcmp(faulty_call, "standard-output") == 0) {
        refuse_standard_output();
    }
    armed = 1;
}
