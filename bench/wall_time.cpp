// How long commands take from their start to their end, and how many pages they touch first. Google
// Benchmark counts the runs and mixes them, so that what else the machine does falls on all alike.
//
// usage: wall_time [--benchmark_...] RUNS [NAME STATUS REQUESTS AT-ONCE INPUT COUNT WORD...]...
// Runs every command RUNS times; one run is REQUESTS processes, AT-ONCE at a time, with the file
// INPUT for standard input, each of which has to end with STATUS. COUNT words make the command.

#include <benchmark/benchmark.h>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <spawn.h>
#include <string>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace {

struct command {
    const char *name;
    int status;
    int requests;
    int at_once;
    const char *input;
    std::vector<char *> words; ///< the last one null
};

bool start(const command &what, const posix_spawn_file_actions_t &files) {
    pid_t process = 0;
    return posix_spawn(&process, what.words[0], &files, nullptr, what.words.data(), environ) == 0;
}

/// Waits for any of them. False when it did not end as it has to.
bool await_one(const command &what, long *faults) {
    int end = 0;
    rusage used = {};
    if (wait4(-1, &end, 0, &used) < 0) {
        return false;
    }
    *faults += used.ru_minflt + used.ru_majflt;
    return WIFEXITED(end) && WEXITSTATUS(end) == what.status;
}

/// One run. False when any process did not end as it has to; none is left behind.
bool run(const command &what, const posix_spawn_file_actions_t &files, long *faults) {
    bool is_well = true;
    int started = 0;
    int ended = 0;
    while (ended < started || (is_well && started < what.requests)) {
        if (is_well && started < what.requests && started - ended < what.at_once) {
            is_well = start(what, files);
            started += is_well ? 1 : 0;
        } else {
            is_well = await_one(what, faults) && is_well;
            ended++;
        }
    }
    return is_well;
}

void measure(benchmark::State &state, const command &what) {
    posix_spawn_file_actions_t files;
    posix_spawn_file_actions_init(&files);
    posix_spawn_file_actions_addopen(&files, STDIN_FILENO, what.input, O_RDONLY, 0);
    for (const int output : {STDOUT_FILENO, STDERR_FILENO}) {
        posix_spawn_file_actions_addopen(&files, output, "/dev/null", O_WRONLY, 0);
    }
    long faults = 0;
    for (auto _ : state) {
        if (!run(what, files, &faults)) {
            state.SkipWithError("a process did not end as it has to");
            break;
        }
    }
    posix_spawn_file_actions_destroy(&files);
    state.counters["page_faults"] = static_cast<double>(faults) / what.requests;
}

int number(const char *text) {
    char *end = nullptr;
    const long value = strtol(text, &end, 10);
    if (end == text || *end != '\0' || value < 0 || value > INT_MAX) {
        fprintf(stderr, "wall_time: not a count: %s\n", text);
        exit(EXIT_FAILURE);
    }
    return static_cast<int>(value);
}

/// The commands that are named behind the count of runs.
std::vector<command> read_commands(char **from, char **end) {
    constexpr std::ptrdiff_t fields = 6;
    std::vector<command> commands;
    while (end - from > fields) {
        const int count = number(from[5]);
        if (count < 1 || count > end - from - fields) {
            fputs("wall_time: words are missing\n", stderr);
            exit(EXIT_FAILURE);
        }
        command one = {from[0], number(from[1]), number(from[2]), number(from[3]), from[4], {}};
        one.words.assign(from + fields, from + fields + count);
        one.words.push_back(nullptr);
        commands.push_back(one);
        from += fields + count;
    }
    return commands;
}

} // namespace

int main(int argument_count, char **arguments) {
    benchmark::Initialize(&argument_count, arguments);
    if (argument_count < 2) {
        fputs("usage: wall_time RUNS [NAME STATUS REQUESTS AT-ONCE INPUT COUNT WORD...]...\n",
              stderr);
        return EXIT_FAILURE;
    }
    const int runs = number(arguments[1]);
    for (const command &one : read_commands(arguments + 2, arguments + argument_count)) {
        benchmark::RegisterBenchmark(one.name, measure, one)
            ->Iterations(1)
            ->Repetitions(runs)
            ->UseRealTime();
    }
    benchmark::RunSpecifiedBenchmarks();
    return EXIT_SUCCESS;
}
