// The checked variants of the calls below would be second definitions of their names.
#undef _FORTIFY_SOURCE

#include "tests/harness/watched_client.h"

#include "tests/harness/console.h"

#include <cerrno>
#include <csignal>
#include <dlfcn.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

thread_local const harness::client_fault *failing = nullptr; ///< null: the thread is not watched
thread_local int connection = -1;                            ///< of the client, while it is open

/// The library's own function of this name, behind the ones below.
template <typename Function> Function *usual(const char *name) {
    return reinterpret_cast<Function *>(dlsym(RTLD_NEXT, name));
}

bool fails(int error_number) {
    errno = error_number;
    return error_number != 0;
}

} // namespace

harness::client_outcome harness::watched(const std::function<int()> &call,
                                         const client_fault &fault) {
    signal(SIGPIPE, SIG_IGN);
    client_outcome result = {};
    failing = &fault;
    result.output = captured_output([&] { result.status = call(); });
    failing = nullptr;
    result.left_open = connection >= 0;
    if (result.left_open) {
        close(connection);
    }
    return result;
}

// The system's headers name the parameters in their own reserved way.
// NOLINTBEGIN(readability-inconsistent-declaration-parameter-name)

extern "C" int connect(int descriptor, const sockaddr *address, socklen_t size) {
    const int result = usual<decltype(connect)>("connect")(descriptor, address, size);
    if (failing != nullptr && result == 0) {
        connection = descriptor;
    }
    return result;
}

extern "C" ssize_t send(int descriptor, const void *bytes, size_t size, int flags) {
    if (failing != nullptr && fails(failing->send_error)) {
        return -1;
    }
    return usual<decltype(send)>("send")(descriptor, bytes, size, flags);
}

extern "C" ssize_t recv(int descriptor, void *bytes, size_t size, int flags) {
    if (failing != nullptr && fails(failing->recv_error)) {
        return -1;
    }
    return usual<decltype(recv)>("recv")(descriptor, bytes, size, flags);
}

extern "C" int close(int descriptor) {
    if (descriptor == connection) {
        connection = -1;
    }
    return usual<decltype(close)>("close")(descriptor);
}

// NOLINTEND(readability-inconsistent-declaration-parameter-name)
