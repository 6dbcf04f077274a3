// The one place where the tests see the program's tables.
#include "program_names.h"

#include "simulator/operations.h"
#include "simulator/daemons.h"

std::set<std::string> program_functions() {
    std::set<std::string> names;
    for (const Daemon &daemon : DAEMONS) {
        for (const GatewayRequest &request : daemon.requests) {
            names.insert(std::string(daemon.key) + " " + std::string(request.function));
        }
    }
    return names;
}

std::set<std::string> program_operations() {
    std::set<std::string> names;
    for (const Operation &operation : OPERATIONS) {
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
