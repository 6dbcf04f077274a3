#include "tests/failures/fault.h"

#include <fstream>

namespace failure_tests {

std::string described(const fault &wanted) {
    return std::to_string(wanted.number) + " " + std::to_string(wanted.error) + " " +
           std::to_string(wanted.limit) + (wanted.onwards ? " 1 " : " 0 ") + wanted.call;
}

faulty_run lumocmd_with(const fault &wanted, const harness::words &arguments,
                        harness::start_options options) {
    const harness::temporary_directory directory;
    const std::string path = directory.path + "/journal";
    std::ofstream(path).close();
    options.settings = {std::string("LD_PRELOAD=") + FAULT_INTERPOSER, "FAULT_JOURNAL=" + path,
                        "FAULT=" + described(wanted)};
    faulty_run seen;
    seen.run = harness::lumocmd(arguments, options);
    std::ifstream file(path);
    for (std::string line; std::getline(file, line);) {
        if (line.starts_with("syslog ")) {
            seen.records.push_back(line.substr(line.find(' ') + 1));
            continue;
        }
        if (line.starts_with("! ")) {
            line.erase(0, 2);
            seen.hits.push_back(line);
        }
        (line.starts_with("allocation ") ? seen.allocations : seen.calls).push_back(line);
    }
    return seen;
}

std::string unreachable_reason() {
    if (harness::is_wrapped()) {
        return "the calls of a program behind a wrapper cannot be made to fail";
    }
    static const bool reached = !lumocmd_with({}, {"-?"}).calls.empty();
    return reached ? "" : "the program under test does not load the interposer";
}

} // namespace failure_tests
