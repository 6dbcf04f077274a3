// The code ranges of the controller's components. Their irregular widths and prefixes are part of
// the interface.

#pragma once

#include <climits>

struct status_range {
    int first;
    int last; ///< inclusive
    const char *prefix;
    int digits; ///< width of the number, zero-filled
};

/// In order of comparison: the first range that holds the code names it.
constexpr status_range STATUS_RANGES[] = {
    {1, 90, "FSMC", 3},       {91, 100, "VRPT", 3},     {101, 200, "EIBG", 3},
    {201, 300, "ECHG", 3},    {301, 400, "DBMG", 3},    {401, 500, "LMWS", 3},
    {501, 600, "LMCM", 3},    {601, 700, "MARG", 3},    {701, 800, "SQLS", 3},
    {801, 900, "SMST", 3},    {901, 1000, "VIVG", 4},   {1001, 1100, "LINT", 4},
    {1101, 1200, "ECHP", 4},  {1201, 1300, "TECN", 4},  {1301, 1400, "BENT", 4},
    {1401, 1500, "IBSG", 4},  {1501, 1600, "TUTG", 4},  {1601, 1700, "VANG", 4},
    {1701, 1800, "TLSG", 4},  {1801, 1900, "HNXG", 4},  {1901, 2000, "EIBDG", 4},
    {2001, 2100, "BYMEG", 4}, {2101, 2200, "TLDG", 4},  {2201, 2300, "SAIG", 4},
    {2301, 2400, "BMAG", 4},  {2401, 2500, "VTS10", 4}, {2501, 2700, "HEVOG", 4},
    {2701, 2800, "DSMG", 4},  {2801, 2900, "EDPG", 4},  {2901, 3000, "SFG", 4},
    {3001, 3100, "EBMG", 4},  {3101, 3200, "PESG", 4},  {3201, INT_MAX, "LGMG", 4},
    {INT_MIN, 0, "LMCM", 4},
};

/// True when the ranges leave no code out and share none: each begins behind the one before it, and
/// the last takes what is below the first.
consteval bool ranges_are_complete() {
    const status_range *before = nullptr;
    for (const status_range &range : STATUS_RANGES) {
        const bool is_lowest = range.first == INT_MIN;
        if (before != nullptr && before->last == INT_MAX) {
            return is_lowest && range.last == STATUS_RANGES[0].first - 1;
        }
        if (before != nullptr && range.first != before->last + 1) {
            return false;
        }
        before = &range;
    }
    return false;
}
static_assert(ranges_are_complete(),
              "a range of STATUS_RANGES must begin behind the one before it, "
              "up to INT_MAX; the codes below the first range stand last");
