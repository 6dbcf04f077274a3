// The lumosim program: reads the options, opens the places where the daemons listen, says where
// they are, serves until a signal comes, and removes everything again.
#include "comparison.h"
#include "http_front.h"
#include "listeners.h"
#include "options.h"
#include "report.h"
#include "server.h"
#include "state.h"
#include "version.h"

#include <csignal>
#include <cstdio>
#include <exception>
#include <fstream>
#include <iterator>
#include <sys/signalfd.h>
#include <unistd.h>

namespace {

constexpr int EXIT_STOPPED = 0;
constexpr int EXIT_CANNOT_START = 1;
constexpr int EXIT_WRONG_OPTIONS = 2;
constexpr int EXIT_OTHER_REQUESTS = 3;

/// The file name that stands for standard output.
constexpr const char *STANDARD_OUTPUT = "-";

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

void announce(Bench &bench, const Listeners &listeners) {
    for (const Listener &row : listeners.rows) {
        const bool refuses = bench.settings.behaviours[row_of(*row.daemon)].refuse;
        const std::string place = row.path.empty() ? listeners.origin + SERVICE_PATH : row.path;
        bench.places.push_back(place);
        print_log(
            {refuses ? "refuses" : "listens",
             row.daemon->key,
             std::string(row.daemon->label) + (refuses ? " refuses on " : " listens on ") + place,
             {{"place", place}}});
    }
}

/// Written beside its place and renamed, so that whoever sees the file sees all of it.
bool write_file(const std::string &path, const std::string &text) {
    const std::string draft = path + ".new";
    std::ofstream file(draft, std::ios::binary);
    file << text;
    file.close();
    return !file.fail() && std::rename(draft.c_str(), path.c_str()) == 0;
}

int complain(const std::string &complaint) {
    std::fprintf(stderr, "lumosim: %s\n", complaint.c_str());
    return EXIT_CANNOT_START;
}

std::string load_state(const std::string &path, Home &home) {
    std::ifstream file(path, std::ios::binary);
    const std::string text(std::istreambuf_iterator<char>(file), {});
    if (!file.is_open() || file.bad()) {
        return "cannot read " + path;
    }
    const std::string complaint = read_state(text, home);
    return complaint.empty() ? "" : path + ": " + complaint;
}

/// Reads the files that are there at the start, and opens the recording. Returns what went wrong.
std::string prepare(Bench &bench, std::vector<ListedRequest> &expected) {
    const Settings &settings = bench.settings;
    std::string complaint;
    if (!settings.state_file.empty()) {
        complaint = load_state(settings.state_file, bench.home);
    }
    for (const std::string &session : settings.sessions) {
        bench.home.sessions[session] = FIRST_USER.name;
    }
    if (complaint.empty() && !settings.expect_file.empty()) {
        complaint = read_list(settings.expect_file, expected);
        bench.journal.keep = true;
    }
    if (complaint.empty() && !settings.replay_file.empty()) {
        complaint = read_list(settings.replay_file, bench.replay.list);
    }
    if (complaint.empty() && !settings.record_file.empty() &&
        !start_recording(bench.journal, settings.record_file)) {
        complaint = "cannot write " + settings.record_file + "; choose another with --record";
    }
    return complaint;
}

/// Writes what is left to write after the last request. Returns the exit status.
int conclude(Bench &bench, const std::vector<ListedRequest> &expected) {
    const Settings &settings = bench.settings;
    int status = EXIT_STOPPED;
    if (!settings.expect_file.empty() && !report_comparison(settings, expected, bench.journal)) {
        status = EXIT_OTHER_REQUESTS;
    }
    print_log({"stopped", "", "stopped"});
    if (!end_recording(bench.journal)) {
        status = complain("cannot write " + settings.record_file);
    }
    if (settings.state_out_file == STANDARD_OUTPUT) {
        print_text(write_state(bench.home));
    } else if (!settings.state_out_file.empty() &&
               !write_file(settings.state_out_file, write_state(bench.home))) {
        status = complain("cannot write " + settings.state_out_file);
    }
    return status;
}

int run(const Settings &settings) {
    const int signals = open_signals();
    if (signals < 0) {
        return complain("cannot watch for signals");
    }
    choose_log_format(settings.log_format);
    Bench bench{settings};
    std::vector<ListedRequest> expected;
    std::string complaint = prepare(bench, expected);
    Listeners listeners;
    if (complaint.empty()) {
        complaint = open_listeners(settings, listeners);
    }
    if (!complaint.empty()) {
        return complain(complaint);
    }
    bench.home.origin = listeners.origin;
    announce(bench, listeners);
    if (!settings.ready_file.empty() &&
        !write_file(settings.ready_file, "directory=" + settings.directory +
                                             "\nurl=" + listeners.origin + SERVICE_PATH + "\n")) {
        close_listeners(listeners);
        return complain("cannot write " + settings.ready_file +
                        "; choose another with --ready-file");
    }
    print_log({"ready", "", "ready"});
    serve(bench, listeners, signals);
    close_listeners(listeners);
    if (!settings.ready_file.empty()) {
        std::remove(settings.ready_file.c_str());
    }
    return conclude(bench, expected);
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
        return complain(error.what());
    }
}
