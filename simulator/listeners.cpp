// Sockets and their files. A lock keeps two instances out of one directory; connecting shows
// whether another program serves a socket or it is stale.
#include "simulator/listeners.h"

#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/local/stream_protocol.hpp>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

namespace {

constexpr const char *LOCK_FILE = ".lumosim.lock";
constexpr int BACKLOG = 64;

/// How often refused connections are looked for.
constexpr std::chrono::milliseconds ATTEMPT_PAUSE{1};

std::string error_text(const std::string &what) {
    return what + ": " + std::strerror(errno); // NOLINT(concurrency-mt-unsafe): one thread yet
}

/// Takes the lock. Its holder removes the file at the end, so a lock on a file that has been
/// removed is no lock and is tried again.
std::string take_lock(const std::string &directory, listener_set &listeners) {
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

/// Removes a stale socket file.
std::string clear_path(event_loop &loop, const std::string &path,
                       const any_protocol::endpoint &place) {
    struct stat found {};
    if (lstat(path.c_str(), &found) != 0) {
        return errno == ENOENT ? "" : error_text("cannot look at " + path);
    }
    if (!S_ISSOCK(found.st_mode)) {
        return path + " is not a socket; remove it or choose another directory with --directory";
    }
    stream_socket probe(loop.context, place.protocol());
    probe.non_blocking(true);
    error_code error;
    probe.connect(place, error);
    if (error != asio::error::connection_refused) {
        return path + " is in use by another program; stop it or choose another with --directory";
    }
    return unlink(path.c_str()) == 0 ? "" : error_text("cannot replace " + path);
}

/// Whether somebody tried to connect since the last call. A socket that is bound but does not
/// listen refuses connections without notice, but each attempt updates its file's access time.
bool was_accessed(const std::string &path) {
    struct stat found {};
    if (lstat(path.c_str(), &found) != 0 || found.st_atim.tv_sec == 0) {
        return false;
    }
    const timespec times[2] = {{0, 0}, {0, UTIME_OMIT}};
    return utimensat(AT_FDCWD, path.c_str(), times, AT_SYMLINK_NOFOLLOW) == 0;
}

/// Whether the file system keeps access times: finds out by connecting.
bool can_count(event_loop &loop, const std::string &path, const any_protocol::endpoint &place) {
    was_accessed(path);
    stream_socket probe(loop.context, place.protocol());
    error_code refused;
    probe.connect(place, refused);
    return was_accessed(path);
}

/// Binds and listens. Where the daemon refuses connections it only binds: the kernel refuses them.
error_code start_listening(stream_acceptor &acceptor, const any_protocol::endpoint &place,
                           bool refuses) {
    try {
        acceptor.open(place.protocol());
        // What a command leaves behind must not go on listening.
        fcntl(acceptor.native_handle(), F_SETFD, FD_CLOEXEC);
        acceptor.set_option(asio::socket_base::reuse_address(true));
        acceptor.bind(place);
        if (!refuses) {
            acceptor.listen(BACKLOG);
        }
        return {};
    } catch (const boost::system::system_error &error) {
        return error.code();
    }
}

/// Notes which file was made.
void note_file(daemon_listener &listener) {
    struct stat made {};
    lstat(listener.path.c_str(), &made);
    listener.device = made.st_dev;
    listener.inode = made.st_ino;
}

std::string open_unix(event_loop &loop, const simulator_settings &settings,
                      const daemon_row &daemon, listener_set &listeners) {
    const std::string path = settings.directory + "/" + std::string(daemon.socket_file);
    if (path.size() >= sizeof(sockaddr_un::sun_path)) {
        return path + " is too long for a socket; choose a shorter one with --directory";
    }
    const asio::local::stream_protocol::endpoint place(path);
    std::string complaint = clear_path(loop, path, place);
    if (!complaint.empty()) {
        return complaint;
    }
    stream_acceptor acceptor(loop.context);
    const int refusals = settings.behaviours[row_of(daemon)].refusals;
    if (const error_code error = start_listening(acceptor, place, refusals != 0)) {
        return "cannot make " + path + ": " + error.message();
    }
    if (refusals != 0 && refusals != FOR_EVER && !can_count(loop, path, place)) {
        unlink(path.c_str());
        return "cannot count connections to " + path +
               ", whose file system notes no accesses; choose another with --directory";
    }
    listeners.rows.push_back({&daemon, std::move(acceptor), path});
    note_file(listeners.rows.back());
    return "";
}

std::string open_tcp(event_loop &loop, const simulator_settings &settings, const daemon_row &daemon,
                     listener_set &listeners) {
    const asio::ip::tcp::endpoint place(asio::ip::address_v4::loopback(),
                                        static_cast<unsigned short>(settings.port));
    stream_acceptor acceptor(loop.context);
    const error_code error =
        start_listening(acceptor, place, settings.behaviours[row_of(daemon)].refusals != 0);
    if (error) {
        return "cannot take port " + std::to_string(settings.port) +
               " of 127.0.0.1: " + error.message() +
               "; choose another with --port (0 for any free one)";
    }
    asio::ip::tcp::endpoint taken;
    const any_protocol::endpoint generic = acceptor.local_endpoint();
    std::memcpy(taken.data(), generic.data(), generic.size());
    listeners.origin = "http://127.0.0.1:" + std::to_string(taken.port());
    listeners.rows.push_back({&daemon, std::move(acceptor), ""});
    return "";
}

} // namespace

std::string open_listeners(event_loop &loop, const simulator_settings &settings,
                           listener_set &listeners) {
    std::error_code error;
    std::filesystem::create_directories(settings.directory, error);
    if (error || !std::filesystem::is_directory(settings.directory, error)) {
        return "cannot make the directory " + settings.directory +
               "; choose another with --directory";
    }
    std::string complaint = take_lock(settings.directory, listeners);
    for (const daemon_row &daemon : DAEMONS) {
        if (complaint.empty()) {
            complaint = daemon.socket_file.empty() ? open_tcp(loop, settings, daemon, listeners)
                                                   : open_unix(loop, settings, daemon, listeners);
        }
    }
    if (!complaint.empty()) {
        close_listeners(listeners);
    }
    return complaint;
}

std::string announce_listeners(const simulator_settings &settings, const listener_set &listeners,
                               std::vector<std::string> &places) {
    for (const daemon_listener &row : listeners.rows) {
        const bool refuses = settings.behaviours[row_of(*row.daemon)].refusals != 0;
        const std::string place = row.path.empty() ? listeners.origin + SERVICE_PATH : row.path;
        places.push_back(place);
        print_log(
            {refuses ? "refuses" : "listens",
             row.daemon->key,
             std::string(row.daemon->label) + (refuses ? " refuses on " : " listens on ") + place,
             {{"place", place}}});
    }
    if (!settings.ready_file.empty() &&
        !write_file(settings.ready_file,
                    "directory=" + settings.directory + "\nurl=" + places.back() + "\n")) {
        return "cannot write " + settings.ready_file + "; choose another with --ready-file";
    }
    print_log({"ready", "", "ready"});
    return "";
}

bool stop_listening(event_loop &loop, daemon_listener &listener, bool counted) {
    const asio::local::stream_protocol::endpoint place(listener.path);
    error_code error;
    listener.acceptor.close(error);
    unlink(listener.path.c_str());
    error = start_listening(listener.acceptor, place, true);
    note_file(listener);
    return !error && (!counted || can_count(loop, listener.path, place));
}

void listen_again(daemon_listener &listener) {
    error_code ignored;
    listener.acceptor.listen(BACKLOG, ignored);
}

void refuse_connections(event_loop &loop, daemon_listener &listener, int count,
                        std::function<void()> refused, std::function<void()> then) {
    const auto pause = std::make_shared<loop_timer>(loop.context, ATTEMPT_PAUSE);
    pause->async_wait([&loop, &listener, count, refused = std::move(refused),
                       then = std::move(then), pause, order = listener.orders](const error_code &) {
        if (order != listener.orders) {
            return;
        }
        const bool attempt = was_accessed(listener.path);
        const int left = attempt ? count - 1 : count;
        if (attempt) {
            refused();
        }
        if (left > 0 && !loop.stopping) {
            refuse_connections(loop, listener, left, refused, then);
        } else if (!loop.stopping) {
            listen_again(listener);
            then();
        }
    });
}

void close_listeners(listener_set &listeners) {
    for (const daemon_listener &row : listeners.rows) {
        struct stat found {};
        if (!row.path.empty() && lstat(row.path.c_str(), &found) == 0 &&
            found.st_dev == row.device && found.st_ino == row.inode) {
            unlink(row.path.c_str());
        }
    }
    listeners.rows.clear();
    if (listeners.lock >= 0) {
        unlink(listeners.lock_path.c_str());
        close(listeners.lock);
        listeners.lock = -1;
    }
}
