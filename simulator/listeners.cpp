// Sockets and their files. Two instances in one directory are kept apart by a lock; a socket of
// another program is told from a left-over one by connecting to it.
#include "listeners.h"

#include <arpa/inet.h>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <netinet/in.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

namespace {

constexpr const char *LOCK_FILE = ".lumosim.lock";
constexpr int BACKLOG = 64;

std::string error_text(const std::string &what) {
    return what + ": " + std::strerror(errno); // NOLINT(concurrency-mt-unsafe): one thread yet
}

std::string take_directory(const std::string &directory) {
    std::error_code error;
    std::filesystem::create_directories(directory, error);
    if (error || !std::filesystem::is_directory(directory, error)) {
        return "cannot make the directory " + directory + "; choose another with --directory";
    }
    return "";
}

/// Takes the lock. The file is removed by the holder at its end, so a lock that was got on a
/// file that is no longer there counts for nothing and is tried again.
std::string take_lock(const std::string &directory, Listeners &listeners) {
    const std::string path = directory + "/" + LOCK_FILE;
    while (true) {
        const int lock = open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600);
        if (lock < 0) {
            return error_text("cannot write to " + directory) + "; choose another with --directory";
        }
        if (flock(lock, LOCK_EX | LOCK_NB) != 0) {
            close(lock);
            return "another lumosim serves " + directory +
                   "; stop it or choose another with --directory";
        }
        struct stat held {};
        struct stat named {};
        if (fstat(lock, &held) == 0 && stat(path.c_str(), &named) == 0 &&
            held.st_ino == named.st_ino && held.st_dev == named.st_dev) {
            listeners.lock = lock;
            listeners.lock_path = path;
            return "";
        }
        close(lock);
    }
}

/// Makes way for a socket file: removes one that nobody listens on any more.
std::string clear_path(const std::string &path, const sockaddr_un &address) {
    struct stat found {};
    if (lstat(path.c_str(), &found) != 0) {
        return errno == ENOENT ? "" : error_text("cannot look at " + path);
    }
    if (!S_ISSOCK(found.st_mode)) {
        return path + " is not a socket; remove it or choose another directory with --directory";
    }
    const int probe = socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    if (probe < 0) {
        return error_text("cannot make a socket");
    }
    const bool left_over =
        connect(probe, reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0 &&
        errno == ECONNREFUSED;
    close(probe);
    if (!left_over) {
        return path + " is in use by another program; stop it or choose another with --directory";
    }
    return unlink(path.c_str()) == 0 ? "" : error_text("cannot replace " + path);
}

/// Lets a bound socket listen, unless its daemon refuses connections: bound alone, the system
/// refuses them.
std::string start_listening(const Settings &settings, const Daemon &daemon, int descriptor,
                            const std::string &where) {
    if (settings.behaviours[row_of(daemon)].refuse) {
        return "";
    }
    return listen(descriptor, BACKLOG) == 0 ? "" : error_text("cannot listen on " + where);
}

std::string open_unix(const Settings &settings, const Daemon &daemon, Listeners &listeners) {
    const std::string path = settings.directory + "/" + std::string(daemon.socket_file);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof address.sun_path) {
        return path + " is too long for a socket; choose a shorter one with --directory";
    }
    std::memcpy(static_cast<char *>(address.sun_path), path.c_str(), path.size());
    std::string complaint = clear_path(path, address);
    if (!complaint.empty()) {
        return complaint;
    }
    const int descriptor = socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    if (descriptor < 0 ||
        bind(descriptor, reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0) {
        std::string error = error_text("cannot make " + path);
        close(descriptor);
        return error;
    }
    struct stat made {};
    lstat(path.c_str(), &made);
    listeners.rows.push_back({&daemon, descriptor, path, made.st_dev, made.st_ino});
    return start_listening(settings, daemon, descriptor, path);
}

std::string open_tcp(const Settings &settings, const Daemon &daemon, Listeners &listeners) {
    const int descriptor = socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    const int reuse = 1;
    sockaddr_in address{};
    socklen_t size = sizeof address;
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<in_port_t>(settings.port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    auto *generic = reinterpret_cast<sockaddr *>(&address);
    if (descriptor < 0 ||
        setsockopt(descriptor, SOL_SOCKET, SO_REUSEADDR, &reuse, sizeof reuse) != 0 ||
        bind(descriptor, generic, size) != 0 || getsockname(descriptor, generic, &size) != 0) {
        const std::string error =
            error_text("cannot take port " + std::to_string(settings.port) + " of 127.0.0.1");
        close(descriptor);
        return error + "; choose another with --port (0 for any free one)";
    }
    listeners.rows.push_back({&daemon, descriptor, "", 0, 0});
    listeners.origin = "http://127.0.0.1:" + std::to_string(ntohs(address.sin_port));
    return start_listening(settings, daemon, descriptor, listeners.origin);
}

std::string open_all(const Settings &settings, Listeners &listeners) {
    std::string complaint = take_directory(settings.directory);
    if (complaint.empty()) {
        complaint = take_lock(settings.directory, listeners);
    }
    for (const Daemon &daemon : DAEMONS) {
        if (complaint.empty()) {
            complaint = daemon.socket_file.empty() ? open_tcp(settings, daemon, listeners)
                                                   : open_unix(settings, daemon, listeners);
        }
    }
    return complaint;
}

} // namespace

std::string open_listeners(const Settings &settings, Listeners &listeners) {
    std::string complaint = open_all(settings, listeners);
    if (!complaint.empty()) {
        close_listeners(listeners);
    }
    return complaint;
}

void close_listeners(Listeners &listeners) {
    for (const Listener &row : listeners.rows) {
        struct stat found {};
        if (!row.path.empty() && lstat(row.path.c_str(), &found) == 0 &&
            found.st_dev == row.device && found.st_ino == row.inode) {
            unlink(row.path.c_str());
        }
        close(row.descriptor);
    }
    listeners.rows.clear();
    if (listeners.lock >= 0) {
        unlink(listeners.lock_path.c_str());
        close(listeners.lock);
        listeners.lock = -1;
    }
}
