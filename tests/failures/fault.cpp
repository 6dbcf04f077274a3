#include "tests/failures/fault.h"

#include <fstream>

namespace failure_tests {

faulty_run lumocmd_with(const fault &wanted, const harness::words &arguments,
                        harness::start_options options) {
    const harness::temporary_directory directory;
    const std::string path = directory.path + "/journal";
    std::ofstream(path).close();
    options.settings = {std::string("LD_PRELOAD=") + FAULT_INTERPOSER, "FAULT_JOURNAL=" + path,
                        "FAULT_CALL=" + wanted.call,
                        "FAULT_NUMBER=" + std::to_string(wanted.number),
                        "FAULT_ERROR=" + std::to_string(wanted.error)};
    if (wanted.limit >= 0) {
        options.settings.push_back("FAULT_LIMIT=" + std::to_string(wanted.limit));
    }
    if (wanted.onwards) {
        options.settings.emplace_back("FAULT_ONWARDS=1");
    }
    faulty_run seen;
    seen.run = harness::lumocmd(arguments, options);
    const std::string record = "syslog ";
    const std::string mark = "! ";
    std::ifstream file(path);
    for (std::string line; std::getline(file, line);) {
        if (line.starts_with(record)) {
            seen.records.push_back(line.substr(record.size()));
            continue;
        }
        if (line.starts_with(mark)) {
            line.erase(0, mark.size());
            seen.hits.push_back(line);
        }
        seen.journal.push_back(line);
    }
    return seen;
}

std::string calls_of(const faulty_run &seen) {
    std::string names;
    for (const std::string &line : seen.journal) {
        if (!line.starts_with("allocation ")) {
            names += line.substr(0, line.find(' ') + 1);
        }
    }
    return names;
}

std::string unreachable_reason() {
    if (harness::is_wrapped()) {
        return "the calls of a program behind a wrapper cannot be made to fail";
    }
    static const bool reached = !lumocmd_with({}, {"-?"}).journal.empty();
    return reached ? "" : "the program under test does not load the interposer";
}

std::string described(const fault &wanted) {
    return wanted.call + " " + std::to_string(wanted.number) +
           (wanted.onwards ? " and later" : "") + ", error " + std::to_string(wanted.error) +
           ", limit " + std::to_string(wanted.limit);
}

} // namespace failure_tests
