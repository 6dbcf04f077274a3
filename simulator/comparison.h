// What --expect prints at the end: the expected requests compared with those that came.
#pragma once

#include "simulator/options.h"
#include "simulator/request_list.h"

#include <vector>

/// Compares in order, or in any order: then the lines follow the order of the list. Prints what
/// differs, and on standard error how much; false when anything does.
bool report_comparison(const simulator_settings &settings, const std::vector<listed_request> &list,
                       const std::vector<journal_entry> &entries);
