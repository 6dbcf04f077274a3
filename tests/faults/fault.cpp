#include "tests/faults/fault.h"

#include "tests/faults/journal.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace fault_tests {

namespace {

bool starts_with(const std::string &text, const std::string &start) {
    return text.compare(0, start.size(), start) == 0;
}

} // namespace

journal_file::journal_file() : path_(directory_.path + "/journal") {
    std::ofstream(path_).close();
    std::filesystem::resize_file(path_, JOURNAL_SIZE);
}

harness::words journal_file::settings(const fault &wanted) const {
    harness::words all = {std::string("LD_PRELOAD=") + FAULT_INTERPOSER, "FAULT_JOURNAL=" + path_,
                          std::string("FAULT_CALL=") + wanted.call,
                          "FAULT_NUMBER=" + std::to_string(wanted.number),
                          "FAULT_ERROR=" + std::to_string(wanted.error)};
    if (wanted.limit >= 0) {
        all.push_back("FAULT_LIMIT=" + std::to_string(wanted.limit));
    }
    if (wanted.onwards) {
        all.emplace_back("FAULT_ONWARDS=1");
    }
    return all;
}

faulty_run journal_file::read() const {
    const std::string record = "syslog ";
    faulty_run result;
    std::string text;
    std::ifstream file(path_);
    std::getline(file, text, '\0');
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        if (starts_with(line, record)) {
            result.records.push_back(line.substr(record.size()));
        } else if (starts_with(line, FAULT_MARK)) {
            result.hits.push_back(line.substr(sizeof FAULT_MARK - 1));
            result.journal.push_back(result.hits.back());
        } else {
            result.journal.push_back(line);
        }
    }
    return result;
}

faulty_run lumocmd_with(const fault &wanted, const harness::words &arguments) {
    const journal_file journal;
    harness::words command = journal.settings(wanted);
    command.insert(command.begin(), "/usr/bin/env");
    command.push_back(harness::lumocmd_path());
    command.insert(command.end(), arguments.begin(), arguments.end());
    const harness::run_result run = harness::run(command);
    faulty_run result = journal.read();
    result.run = run;
    return result;
}

int calls_of(const faulty_run &run, const std::string &name) {
    int count = 0;
    for (const std::string &line : run.journal) {
        count += starts_with(line, name + " ") ? 1 : 0;
    }
    return count;
}

std::string unreachable_reason() {
    const char *wrapper = getenv("LUMOCMD_WRAPPER");
    if (wrapper != nullptr && *wrapper != '\0') {
        return "the calls of a program behind a wrapper cannot be made to fail";
    }
    static const bool reached = !lumocmd_with({}, {"-?"}).journal.empty();
    return reached ? "" : "the program under test does not load the interposer";
}

std::string described(const fault &wanted) {
    return std::string(wanted.call) + " " + std::to_string(wanted.number) +
           (wanted.onwards ? " and later" : "") + ", error " + std::to_string(wanted.error) +
           ", limit " + std::to_string(wanted.limit);
}

} // namespace fault_tests
