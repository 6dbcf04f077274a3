// The lumosim program: reads the options, opens the places where the daemons listen, says where
// they are, serves until a signal comes, and removes everything again.
#include "http_front.h"
#include "listeners.h"
#include "options.h"
#include "report.h"
#include "server.h"
#include "version.h"

#include <csignal>
#include <cstdio>
#include <exception>
#include <fstream>
#include <sys/signalfd.h>
#include <unistd.h>

namespace {

constexpr int EXIT_STOPPED = 0;
constexpr int EXIT_CANNOT_START = 1;
constexpr int EXIT_WRONG_OPTIONS = 2;

/// SIGINT and SIGTERM as a descriptor; blocked first, so that every thread inherits that.
int open_signals() {
    std::signal(SIGPIPE, SIG_IGN);
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGTERM);
    sigprocmask(SIG_BLOCK, &signals, nullptr);
    return signalfd(-1, &signals, SFD_CLOEXEC);
}

void announce(const Settings &settings, const Listeners &listeners) {
    for (const Listener &row : listeners.rows) {
        const bool refuses = settings.behaviours[row_of(*row.daemon)].refuse;
        print_line(std::string(row.daemon->label) + (refuses ? " refuses on " : " listens on ") +
                   (row.path.empty() ? listeners.origin + SERVICE_PATH : row.path));
    }
}

/// Written beside its place and renamed, so that whoever sees the file sees all of it.
bool write_ready_file(const Settings &settings, const Listeners &listeners) {
    const std::string draft = settings.ready_file + ".new";
    std::ofstream file(draft);
    file << "directory=" << settings.directory << "\nurl=" << listeners.origin << SERVICE_PATH
         << "\n";
    file.close();
    return !file.fail() && std::rename(draft.c_str(), settings.ready_file.c_str()) == 0;
}

int run(const Settings &settings) {
    const int signals = open_signals();
    if (signals < 0) {
        std::fputs("lumosim: cannot watch for signals\n", stderr);
        return EXIT_CANNOT_START;
    }
    Listeners listeners;
    const std::string complaint = open_listeners(settings, listeners);
    if (!complaint.empty()) {
        std::fprintf(stderr, "lumosim: %s\n", complaint.c_str());
        return EXIT_CANNOT_START;
    }
    Home home;
    home.origin = listeners.origin;
    for (const std::string &session : settings.sessions) {
        home.sessions[session] = FIRST_USER.name;
    }
    announce(settings, listeners);
    if (!settings.ready_file.empty() && !write_ready_file(settings, listeners)) {
        std::fprintf(stderr, "lumosim: cannot write %s; choose another with --ready-file\n",
                     settings.ready_file.c_str());
        close_listeners(listeners);
        return EXIT_CANNOT_START;
    }
    print_line("ready");
    serve(settings, listeners, home, signals);
    close_listeners(listeners);
    if (!settings.ready_file.empty()) {
        std::remove(settings.ready_file.c_str());
    }
    print_line("stopped");
    return EXIT_STOPPED;
}

int start(const std::vector<std::string> &arguments) {
    Settings settings;
    const std::string complaint = read_options(arguments, settings);
    if (!complaint.empty()) {
        std::fprintf(stderr, "lumosim: %s\nTry 'lumosim --help'.\n", complaint.c_str());
        return EXIT_WRONG_OPTIONS;
    }
    if (settings.help) {
        std::fputs(help_text().c_str(), stdout);
        return EXIT_STOPPED;
    }
    if (settings.version) {
        std::puts("lumosim " LUMOSIM_VERSION);
        return EXIT_STOPPED;
    }
    return run(settings);
}

} // namespace

int main(int argc, char **argv) {
    try {
        return start({argv + 1, argv + argc});
    } catch (const std::exception &error) {
        std::fprintf(stderr, "lumosim: %s\n", error.what());
        return EXIT_CANNOT_START;
    }
}
