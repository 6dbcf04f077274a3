// The checked variants of the calls below would be second definitions of their names.
#undef _FORTIFY_SOURCE

#include "tests/harness/watched_client.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace harness {

namespace {

thread_local watched_client *watcher = nullptr;

ino_t inode_of(int descriptor) {
    struct stat status = {};
    return fstat(descriptor, &status) == 0 ? status.st_ino : 0;
}

/// The library's own function of this name, behind the ones below.
template <typename Function> Function *usual(const char *name) {
    void *found = dlsym(RTLD_NEXT, name);
    if (found == nullptr) {
        abort();
    }
    return reinterpret_cast<Function *>(found);
}

} // namespace

watched_client::watched_client() {
    signal(SIGPIPE, SIG_IGN);
    watcher = this;
}

watched_client::~watched_client() {
    close_left_open();
    connected_.swap(refused_);
    close_left_open();
    watcher = nullptr;
}

bool watched_client::close_left_open() {
    bool any = false;
    for (const socket_mark &mark : connected_) {
        if (inode_of(mark.descriptor) == mark.inode) {
            any = true;
            close(mark.descriptor);
        }
    }
    connected_.clear();
    return any;
}

/// What the watched calls do beside their usual work.
struct call_watch {
    static void note_connect(watched_client *client, int descriptor, bool succeeded) {
        client->connects++;
        auto &marks = succeeded ? client->connected_ : client->refused_;
        marks.push_back({descriptor, inode_of(descriptor)});
    }
};

} // namespace harness

// The system's headers name the parameters in their own reserved way.
// NOLINTBEGIN(readability-inconsistent-declaration-parameter-name)

extern "C" int connect(int descriptor, const sockaddr *address, socklen_t size) {
    using namespace harness;
    if (watcher == nullptr) {
        return usual<decltype(connect)>("connect")(descriptor, address, size);
    }
    memcpy(&watcher->address, address, std::min<std::size_t>(size, sizeof watcher->address));
    int result = -1;
    int reason = watcher->connect_error;
    if (reason == 0) {
        result = usual<decltype(connect)>("connect")(descriptor, address, size);
        reason = errno;
    }
    call_watch::note_connect(watcher, descriptor, result == 0);
    errno = reason;
    return result;
}

extern "C" ssize_t send(int descriptor, const void *bytes, size_t size, int flags) {
    using namespace harness;
    if (watcher != nullptr) {
        watcher->sends++;
        watcher->flags |= flags;
        if (watcher->before_send) {
            // The hook may use sockets itself; those calls are not the client's.
            watched_client *client = std::exchange(watcher, nullptr);
            client->before_send(descriptor);
            watcher = client;
        }
        if (watcher->send_error != 0) {
            errno = watcher->send_error;
            return -1;
        }
        if (watcher->send_at_most != 0 && size > watcher->send_at_most) {
            size = watcher->send_at_most;
        }
    }
    return usual<decltype(send)>("send")(descriptor, bytes, size, flags);
}

extern "C" ssize_t recv(int descriptor, void *bytes, size_t size, int flags) {
    using namespace harness;
    if (watcher != nullptr) {
        watcher->receives++;
        watcher->flags |= flags;
        watcher->receive_size = size;
        if (watcher->recv_error != 0) {
            errno = watcher->recv_error;
            return -1;
        }
    }
    return usual<decltype(recv)>("recv")(descriptor, bytes, size, flags);
}

// NOLINTEND(readability-inconsistent-declaration-parameter-name)
