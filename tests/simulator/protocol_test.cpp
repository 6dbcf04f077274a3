// That everything that lumocmd can ask is simulated: the protocol's rows against the program's
// names.
#include "tests/simulator/program_names.h"

#include "tests/protocol/gateways.h"
#include "tests/protocol/service_functions.h"

#include <gtest/gtest.h>

namespace {

std::string missing_names(const std::set<std::string> &wanted,
                          const std::set<std::string> &present) {
    std::string names;
    for (const std::string &name : wanted) {
        names += present.contains(name) ? "" : name + "\n";
    }
    return names;
}

TEST(Protocol, EveryReachableGatewayFunctionIsSimulated) {
    std::set<std::string> wanted;
    for (const protocol::gateway_row *row : protocol::GATEWAYS) {
        for (const protocol::function_row &function : row->functions) {
            if (is_reachable(*row)) {
                wanted.insert(protocol::lower(row->name) + " " + function.name);
            }
        }
    }
    ASSERT_FALSE(wanted.empty());
    EXPECT_EQ(missing_names(wanted, program_functions()), "")
        << "can be asked but is not simulated: add it to simulator/daemons.cpp";
}

TEST(Protocol, EveryServiceFunctionIsSimulated) {
    std::set<std::string> wanted;
    for (const protocol::service_row &row : protocol::SERVICE_FUNCTIONS) {
        wanted.insert(std::string("service-") + row.name);
    }
    ASSERT_FALSE(wanted.empty());
    EXPECT_EQ(missing_names(wanted, program_operations()), "")
        << "can be asked but is not simulated: add it to simulator/operations.cpp";
}

} // namespace
