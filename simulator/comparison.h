// What --expect tells at the end: the requests that a list names against those that came.
#pragma once

#include "simulator/options.h"
#include "simulator/request_list.h"

#include <cstddef>
#include <string>
#include <vector>

/// The sides of a line of a difference, by the sign that opens it.
enum class Side : char { both = ' ', missing = '-', unexpected = '+' };

struct DifferenceLine {
    Side side;
    std::string text; ///< a line of the log, and the line of the answer's bytes where it matters
};

struct Comparison {
    std::vector<DifferenceLine> lines;
    std::size_t missing = 0;    ///< listed and not asked
    std::size_t unexpected = 0; ///< asked and not listed
    std::size_t different = 0;  ///< asked, but with another answer than the listed one
};

/// Prints what differs, and on standard error how much; false when anything does.
bool report_comparison(const Settings &settings, const std::vector<ListedRequest> &list,
                       const Journal &journal);

/// Compares in order, or in any order: then the lines follow the order of the list.
Comparison compare_requests(const std::vector<ListedRequest> &list,
                            const std::vector<Entry> &entries, bool any_order);
