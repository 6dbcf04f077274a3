// The one place where the tests see the program's tables.
#include "tests/simulator/program_names.h"

#include "simulator/daemons.h"
#include "simulator/operations.h"

std::set<std::string> program_functions() {
    std::set<std::string> names;
    for (const daemon_row &daemon : DAEMONS) {
        for (const gateway_request &request : daemon.requests) {
            names.insert(std::string(daemon.key) + " " + std::string(request.function));
        }
    }
    return names;
}

std::set<std::string> program_operations() {
    std::set<std::string> names;
    for (const service_operation &operation : OPERATIONS) {
        names.emplace(operation.name);
    }
    return names;
}

std::string differing_names(const std::set<std::string> &program,
                            const std::set<std::string> &rows) {
    std::string text;
    for (const std::string &name : program) {
        text += rows.contains(name) ? "" : "the tests have no row for " + name + "\n";
    }
    for (const std::string &name : rows) {
        text += program.contains(name) ? "" : "the program does not know " + name + "\n";
    }
    return text;
}
