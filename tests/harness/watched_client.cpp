// The checked variants of the calls below would be second definitions of their names.
#undef _FORTIFY_SOURCE

#include "tests/harness/watched_client.h"

#include "tests/harness/console.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <dlfcn.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

namespace harness {

namespace {

thread_local watched_client *watcher = nullptr;

ino_t inode_of(int descriptor) {
    struct stat status = {};
    return fstat(descriptor, &status) == 0 ? status.st_ino : 0;
}

/// The library's own function of this name, behind the ones below.
template <typename Function> Function *usual(const char *name) {
    return reinterpret_cast<Function *>(dlsym(RTLD_NEXT, name));
}

} // namespace

watched_client::watched_client() {
    signal(SIGPIPE, SIG_IGN);
    watcher = this;
}

watched_client::~watched_client() {
    close_left_open();
    watcher = nullptr;
}

bool watched_client::close_left_open() {
    bool any = false;
    for (const auto &[descriptor, inode] : connected) {
        if (inode_of(descriptor) == inode) {
            any = true;
            close(descriptor);
        }
    }
    connected.clear();
    return any;
}

watched_client::outcome watched_client::run(const std::function<int()> &call) {
    outcome result = {};
    result.output = captured_output([&] { result.status = call(); });
    result.left_open = close_left_open();
    return result;
}

} // namespace harness

using harness::watcher;

// The system's headers name the parameters in their own reserved way.
// NOLINTBEGIN(readability-inconsistent-declaration-parameter-name)

extern "C" int connect(int descriptor, const sockaddr *address, socklen_t size) {
    auto *const library_connect = harness::usual<decltype(connect)>("connect");
    if (watcher == nullptr) {
        return library_connect(descriptor, address, size);
    }
    watcher->connects++;
    memcpy(&watcher->address, address, std::min<std::size_t>(size, sizeof watcher->address));
    if (watcher->connect_error != 0) {
        errno = watcher->connect_error;
        return -1;
    }
    const int result = library_connect(descriptor, address, size);
    if (result == 0) {
        watcher->connected[descriptor] = harness::inode_of(descriptor);
    }
    return result;
}

extern "C" ssize_t send(int descriptor, const void *bytes, size_t size, int flags) {
    if (watcher != nullptr) {
        watcher->sends++;
        watcher->flags |= flags;
        if (watcher->send_error != 0) {
            errno = watcher->send_error;
            return -1;
        }
    }
    return harness::usual<decltype(send)>("send")(descriptor, bytes, size, flags);
}

extern "C" ssize_t recv(int descriptor, void *bytes, size_t size, int flags) {
    if (watcher != nullptr) {
        watcher->receives++;
        watcher->flags |= flags;
        watcher->receive_size = size;
        if (watcher->recv_error != 0) {
            errno = watcher->recv_error;
            return -1;
        }
    }
    return harness::usual<decltype(recv)>("recv")(descriptor, bytes, size, flags);
}

// NOLINTEND(readability-inconsistent-declaration-parameter-name)
