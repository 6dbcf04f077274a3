// The lumosim program: reads the options and their files, serves until a signal comes, and writes
// the files that were asked for.
#include "simulator/bench.h"

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <exception>
#include <filesystem>

namespace {

constexpr int EXIT_STOPPED = 0;
constexpr int EXIT_CANNOT_START = 1;
constexpr int EXIT_WRONG_OPTIONS = 2;
constexpr int EXIT_OTHER_REQUESTS = 3;
constexpr int EXIT_SIMULATOR_FAILED = 125;
constexpr int EXIT_SIGNAL = 128;

/// The file name that stands for standard output.
constexpr const char *STANDARD_OUTPUT = "-";

int complain(const std::string &complaint) {
    std::fprintf(stderr, "lumosim: %s\n", complaint.c_str());
    return EXIT_CANNOT_START;
}

/// Reads the files that are there at the start, and opens the recording. Returns what went wrong.
std::string prepare(test_bench &bench, std::vector<listed_request> &expected) {
    const simulator_settings &settings = bench.settings;
    std::string complaint;
    if (!settings.state_file.empty()) {
        const auto text = file_bytes(settings.state_file);
        if (!text) {
            return "cannot read " + settings.state_file;
        }
        complaint = read_state(*text, bench.home);
        if (!complaint.empty()) {
            return settings.state_file + ": " + complaint;
        }
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

/// Writes the files and the comparison after the last request. Returns the exit status.
int conclude(test_bench &bench, const std::vector<listed_request> &expected) {
    const simulator_settings &settings = bench.settings;
    int status = EXIT_STOPPED;
    if (!settings.expect_file.empty() &&
        !report_comparison(settings, expected, bench.journal.entries)) {
        status = EXIT_OTHER_REQUESTS;
    }
    print_log({"stopped", "", "stopped"});
    if (!end_recording(bench.journal)) {
        status = complain("cannot write " + settings.record_file);
    }
    if (settings.state_out_file == STANDARD_OUTPUT) {
        std::fputs(write_state(bench.home).c_str(), stdout);
    } else if (!settings.state_out_file.empty() &&
               !write_file(settings.state_out_file, write_state(bench.home))) {
        status = complain("cannot write " + settings.state_out_file);
    }
    return status;
}

int serve_bench(simulator_settings &settings, script_run &script) {
    test_bench bench{settings};
    std::vector<listed_request> expected;
    std::string complaint = prepare(bench, expected);
    if (complaint.empty()) {
        complaint = serve(bench);
    }
    script = bench.script;
    return complaint.empty() ? conclude(bench, expected) : complain(complaint);
}

/// The exit status with a command: the command's own first, then a signal, then the simulator's.
int script_status(const script_run &script, int status) {
    if (script.status != 0) {
        return script.status;
    }
    if (script.signal != 0) {
        return EXIT_SIGNAL + script.signal;
    }
    return status == EXIT_CANNOT_START ? EXIT_SIMULATOR_FAILED : status;
}

/// Where a fresh directory is made; /tmp where the paths of its sockets would be too long.
std::string place_for_directories() {
    constexpr std::size_t longest_place = 60;
    std::error_code error;
    const std::string place = std::filesystem::temp_directory_path(error);
    return error || place.size() > longest_place ? "/tmp" : place;
}

int run(simulator_settings &settings) {
    // The simulator goes on when the reader of its log has gone.
    std::signal(SIGPIPE, SIG_IGN);
    choose_log_format(settings.log_format);
    script_run script;
    if (settings.script.empty()) {
        return serve_bench(settings, script);
    }
    log_to_errors();
    // A directory and a port of its own, so that several tests can run at once.
    const bool fresh = settings.directory.empty();
    if (fresh) {
        settings.directory = place_for_directories() + "/lumosim-XXXXXX";
        if (mkdtemp(settings.directory.data()) == nullptr) {
            complain("cannot make " + settings.directory + "; choose another with --directory");
            return EXIT_SIMULATOR_FAILED;
        }
    }
    const int status = serve_bench(settings, script);
    if (fresh) {
        std::error_code ignored;
        std::filesystem::remove_all(settings.directory, ignored);
    }
    return script_status(script, status);
}

int start(const std::vector<std::string> &arguments) {
    simulator_settings settings;
    const std::string complaint = read_options(arguments, settings);
    if (!complaint.empty()) {
        std::fprintf(stderr, "lumosim: %s\nTry 'lumosim --help'.\n", complaint.c_str());
        const bool serves_script = std::ranges::count(arguments, SCRIPT_OPTION) > 0;
        return serves_script ? EXIT_SIMULATOR_FAILED : EXIT_WRONG_OPTIONS;
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
