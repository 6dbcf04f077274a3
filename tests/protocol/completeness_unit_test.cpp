// What the program knows and what the tests' rows say are the same sets of names: whatever is added
// to the one and forgotten in the other fails here by its name, and by the file that lacks it.

#include "front/memory.h"
#include "front/request_types.h"
#include "front/utility.h"
#include "tests/protocol/gateway_calls.h"
#include "tests/protocol/service_functions.h"
#include "webservice/operation_row.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <set>

namespace {

using names = std::multiset<std::string>; // a name that is there twice differs from one

void expect_the_same(const names &program, const char *program_file, const names &rows,
                     const char *rows_file = "tests/protocol/gateways.h") {
    const auto missing = [](const names &wanted, const names &present) {
        protocol::words absent;
        std::set_difference(wanted.begin(), wanted.end(), present.begin(), present.end(),
                            std::back_inserter(absent));
        return protocol::joined(absent, ", ");
    };
    EXPECT_EQ(missing(program, rows), "")
        << "are in " << program_file << " but have no row in " << rows_file;
    EXPECT_EQ(missing(rows, program), "")
        << "have a row in " << rows_file << " but are not in " << program_file;
}

TEST(Completeness, EveryRequestTypeHasARow) {
    names program;
    for (const request_type_row &row : REQUEST_TYPES) {
        program.insert(row.keyword + (" " + std::to_string(row.type)));
    }
    names rows;
    for (const protocol::request_type_row &row : protocol::request_types()) {
        rows.insert(row.keyword + " " + std::to_string(row.code));
    }
    expect_the_same(program, "REQUEST_TYPES of front/request_types.h", rows);
}

/// Profiles are told apart by their tags: a copied one would stand for two gateways.
TEST(Completeness, EveryFunctionOfAnExchangeAndOfABuilderHasARow) {
    names exchanged;
    names built;
    for (const protocol::any_builder &each : protocol::request_builders()) {
        const request_builder &builder = each.made_of;
        for (const gateway_function &function : builder.gateway->functions) {
            exchanged.insert(std::string(builder.gateway->source_tag) + " " + function.name);
        }
        for (const builder_row &row : builder.rows) {
            built.insert(std::string(builder.name) + " " + row.function);
        }
    }
    names exchange_rows;
    names builder_rows;
    for (const auto &[gateway, function] : protocol::all_functions()) {
        exchange_rows.insert(gateway.tag + " " + function.name);
        if (function.built != protocol::builder_answer::REFUSES) {
            builder_rows.insert(protocol::function_of(gateway.builder) + " " + function.name);
        }
    }
    expect_the_same(exchanged, "the source_tag and FUNCTIONS of a gateway's source", exchange_rows);
    expect_the_same(built, "the ROWS of gateways/localclientutil.cpp or internetclientutil.cpp",
                    builder_rows);
}

TEST(Completeness, EveryGatewaysCodesPrintWithItsPrefix) {
    for (const protocol::gateway_row &row : protocol::GATEWAYS) {
        for (const int code : {row.base + 1, row.base + 100}) {
            char *text = format_status_code(code);
            EXPECT_EQ(text, protocol::shown_code(row, code))
                << title(row) << "'s codes need a range of their own in front/status_ranges.h, or "
                << ".shown in its row in tests/protocol/gateways.h says how they print";
            xfree(text);
        }
    }
}

TEST(Completeness, EveryFunctionOfTheServiceHasARow) {
    names program;
    for (const operation_row &row : webservice_operations()) {
        program.insert(row.name);
    }
    names rows;
    for (const protocol::service_row &row : protocol::SERVICE_FUNCTIONS) {
        rows.insert(protocol::function_name(row));
    }
    expect_the_same(program, "OPERATIONS of webservice/soapcallsclientutil.cpp", rows,
                    "tests/protocol/service_functions.h");
}

} // namespace
