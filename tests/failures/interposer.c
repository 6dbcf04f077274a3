/* Loaded into lumocmd before libc: one chosen call of a run fails, takes less than asked or finds
 * no memory, and a journal tells what was called, a line per call. What happens before main belongs
 * to the loader and is left alone.
 *
 * FAULT_JOURNAL   file that becomes the journal
 * FAULT           "number error limit onwards call": which call of this name fails, from 1, with
 *                 what error number; without one, the most bytes that it takes or -1; 1 when all
 *                 later ones fail as well. "allocation" stands for every allocating call.
 */

#define _GNU_SOURCE

#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <netdb.h>
#include <poll.h>
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/auxv.h>
#include <sys/select.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <unistd.h>

/* libc's own allocator, under the names that nobody interposes. */
extern void *__libc_malloc(size_t size);
extern void *__libc_calloc(size_t count, size_t size);
extern void *__libc_realloc(void *block, size_t size);

static char faulty_call[32];
static int faulty_number;
static int faulty_error;
static int most_bytes;
static int onwards;

static int journal; /* 0 until the program is armed */
static int counted; /* of the calls that have the faulty one's name */
static const void *program_base;

__attribute__((format(printf, 1, 2))) static void note(const char *format, ...) {
    char text[512];
    va_list arguments;
    va_start(arguments, format);
    const int length = vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    if (length < 0 || syscall(SYS_write, journal, text, length) != length) {
        abort(); /* a truncated journal must not pass for a short one */
    }
}

/* Enters a call; true when it is one that fails. */
static int is_chosen(const char *name, const char *detail) {
    if (journal == 0) {
        return 0;
    }
    const int number = strcmp(name, faulty_call) == 0 ? ++counted : 0;
    const int chosen = number == faulty_number || (onwards && number > faulty_number);
    note("%s%s%s\n", chosen ? "! " : "", name, detail);
    return chosen;
}

static int fails(const char *name) {
    if (!is_chosen(name, "")) {
        return 0;
    }
    errno = faulty_error;
    return 1;
}

/* How many of `length` bytes a call takes; -1 with errno when it fails outright. */
static ssize_t bytes_left(const char *name, size_t length) {
    if (!is_chosen(name, "")) {
        return (ssize_t)length;
    }
    errno = faulty_error;
    return faulty_error != 0 ? -1
                             : (ssize_t)((size_t)most_bytes < length ? (size_t)most_bytes : length);
}

/* ------------------------------------------------------------------------------------------------
 * The kernel */

/* A call that fails or goes on to libc's own. */
#define WATCHED(name, parameters, arguments)                                                       \
    int name parameters {                                                                          \
        int(*next) parameters = __extension__(int(*) parameters) dlsym(RTLD_NEXT, #name);          \
        return fails(#name) ? -1 : next arguments;                                                 \
    }

WATCHED(socket, (int domain, int type, int protocol), (domain, type, protocol))
WATCHED(connect, (int one, __CONST_SOCKADDR_ARG address, socklen_t size), (one, address, size))
WATCHED(setsockopt, (int one, int level, int option, const void *value, socklen_t size),
        (one, level, option, value, size))
WATCHED(shutdown, (int one, int how), (one, how))
WATCHED(poll, (struct pollfd * all, nfds_t count, int time), (all, count, time))
WATCHED(select, (int highest, fd_set *in, fd_set *out, fd_set *other, struct timeval *time),
        (highest, in, out, other, time))

int open(const char *path, int flags, ...) {
    return fails("open") ? -1 : (int)syscall(SYS_openat, AT_FDCWD, path, flags, 0);
}

/* Linux gives the descriptor free even when it reports a failure. */
int close(int descriptor) {
    const int failed = fails("close");
    const int result = (int)syscall(SYS_close, descriptor);
    errno = failed ? faulty_error : errno;
    return failed ? -1 : result;
}

ssize_t send(int descriptor, const void *bytes, size_t length, int flags) {
    const ssize_t left = bytes_left("send", length);
    return left < 0 ? left : syscall(SYS_sendto, descriptor, bytes, left, flags, NULL, 0);
}

ssize_t recv(int descriptor, void *bytes, size_t length, int flags) {
    const ssize_t left = bytes_left("recv", length);
    return left < 0 ? left : syscall(SYS_recvfrom, descriptor, bytes, left, flags, NULL, NULL);
}

/* The error number is one of getaddrinfo's own. */
int getaddrinfo(const char *node, const char *service, const struct addrinfo *hints,
                struct addrinfo **result) {
    int (*next)(const char *, const char *, const struct addrinfo *, struct addrinfo **) =
        __extension__(__typeof__(next)) dlsym(RTLD_NEXT, "getaddrinfo");
    return fails("getaddrinfo") ? -faulty_error : next(node, service, hints, result);
}

/* ------------------------------------------------------------------------------------------------
 * Memory */

/* Where the program or library begins that this address lies in. */
static const void *object_of(const void *address) {
    Dl_info found = {NULL, NULL, NULL, NULL};
    dladdr(address, &found);
    return found.dli_fbase;
}

static int finds_no_memory(const char *name, size_t size, const void *caller) {
    const char *who = object_of(caller) == program_base ? "program" : "library";
    char detail[64];
    snprintf(detail, sizeof detail, " %s %s %zu", who, name, size);
    if (!is_chosen("allocation", detail)) {
        return 0;
    }
    errno = ENOMEM;
    return 1;
}

#define FINDS_NO_MEMORY(name, size)                                                                \
    (journal != 0 && finds_no_memory(name, size, __builtin_return_address(0)))

void *malloc(size_t size) {
    return FINDS_NO_MEMORY("malloc", size) ? NULL : __libc_malloc(size);
}

void *calloc(size_t count, size_t size) {
    return FINDS_NO_MEMORY("calloc", count * size) ? NULL : __libc_calloc(count, size);
}

void *realloc(void *block, size_t size) {
    return FINDS_NO_MEMORY("realloc", size) ? NULL : __libc_realloc(block, size);
}

/* ------------------------------------------------------------------------------------------------
 * The system log */

static void record(int priority, const char *format, va_list arguments) {
    char text[256];
    vsnprintf(text, sizeof text, format, arguments);
    note("syslog %d %s", priority, text); /* which ends the line */
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

__attribute__((constructor)) static void arm(void) {
    const char *wanted = getenv("FAULT");
    if (wanted == NULL || sscanf(wanted, "%d %d %d %d %31s", &faulty_number, &faulty_error,
                                 &most_bytes, &onwards, faulty_call) < 4) {
        return;
    }
    program_base = object_of((const void *)getauxval(AT_ENTRY));
    /* High, so that the program's own descriptors have their usual numbers. */
    const int file = (int)syscall(SYS_openat, AT_FDCWD, getenv("FAULT_JOURNAL"), O_WRONLY, 0);
    journal = (int)syscall(SYS_fcntl, file, F_DUPFD_CLOEXEC, 100);
    syscall(SYS_close, file);
}
