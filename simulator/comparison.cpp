// The comparison pairs rows with requests and prints what is left of either. In order it is the
// longest common subsequence; in any order the rows that state most choose first, so that a row
// without an answer never takes the request that another one needs.
#include "simulator/comparison.h"

#include "simulator/report.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <optional>
#include <sstream>

namespace {

/// The pairs: for each row of the list the request that fits it, if any.
using Pairs = std::vector<std::optional<std::size_t>>;

/// A table of more cells than this is not made; the disagreement is shown as one block.
constexpr std::size_t MOST_CELLS = std::size_t{1} << 24U;

struct Range {
    std::size_t first;
    std::size_t last; ///< one past the end
};

/// Pairs what a longest common subsequence of both ranges has.
void pair_middle(const std::vector<ListedRequest> &list, const std::vector<Entry> &entries,
                 Range rows, Range asked, Pairs &pairs) {
    const std::size_t height = rows.last - rows.first;
    const std::size_t width = asked.last - asked.first;
    if (height == 0 || width == 0 || height > MOST_CELLS / width) {
        return;
    }
    // longest[i * (width + 1) + j]: of the rows from i and the requests from j on.
    std::vector<std::uint32_t> longest((height + 1) * (width + 1), 0);
    const auto at = [&](std::size_t i, std::size_t j) -> std::uint32_t & {
        return longest[i * (width + 1) + j];
    };
    const auto fits = [&](std::size_t i, std::size_t j) {
        return fit(list[rows.first + i], entries[asked.first + j]) != Fit::none;
    };
    for (std::size_t i = height; i-- > 0;) {
        for (std::size_t j = width; j-- > 0;) {
            at(i, j) = fits(i, j) ? at(i + 1, j + 1) + 1 : std::max(at(i + 1, j), at(i, j + 1));
        }
    }
    for (std::size_t i = 0, j = 0; i < height && j < width;) {
        if (fits(i, j)) {
            pairs[rows.first + i++] = asked.first + j++;
        } else if (at(i + 1, j) >= at(i, j + 1)) {
            i++;
        } else {
            j++;
        }
    }
}

Pairs pair_in_order(const std::vector<ListedRequest> &list, const std::vector<Entry> &entries) {
    Pairs pairs(list.size());
    Range rows{0, list.size()};
    Range asked{0, entries.size()};
    const auto both_left = [&]() { return rows.first < rows.last && asked.first < asked.last; };
    while (both_left() && fit(list[rows.first], entries[asked.first]) != Fit::none) {
        pairs[rows.first++] = asked.first++;
    }
    while (both_left() && fit(list[rows.last - 1], entries[asked.last - 1]) != Fit::none) {
        pairs[--rows.last] = --asked.last;
    }
    pair_middle(list, entries, rows, asked, pairs);
    return pairs;
}

Pairs pair_in_any_order(const std::vector<ListedRequest> &list, const std::vector<Entry> &entries) {
    Pairs pairs(list.size());
    std::vector<bool> taken(entries.size());
    for (const Fit wanted :
         {Fit::outcome_and_bytes, Fit::request_and_bytes, Fit::outcome, Fit::request}) {
        for (std::size_t i = 0; i < list.size(); ++i) {
            for (std::size_t j = 0; j < entries.size() && !pairs[i]; ++j) {
                if (!taken[j] && fit(list[i], entries[j]) == wanted) {
                    pairs[i] = j;
                    taken[j] = true;
                }
            }
        }
    }
    return pairs;
}

std::string listed_text(const ListedRequest &row) {
    return row.answer ? row.line + "\n" + bytes_words(*row.daemon, "->", *row.answer) : row.line;
}

std::string asked_text(const Entry &entry, bool with_bytes) {
    const std::string line = entry_words(entry);
    return with_bytes && entry.answer
               ? line + "\n" + bytes_words(*entry.daemon, "->", *entry.answer)
               : line;
}

/// The lines of both sides: a row that has no pair comes before the requests that have none.
void write_lines(const std::vector<ListedRequest> &list, const std::vector<Entry> &entries,
                 const Pairs &pairs, Comparison &result) {
    const bool with_bytes = std::any_of(list.begin(), list.end(),
                                        [](const ListedRequest &row) { return !!row.answer; });
    std::vector<bool> paired(entries.size());
    for (const auto &pair : pairs) {
        if (pair) {
            paired[*pair] = true;
        }
    }
    std::size_t asked = 0;
    const auto write_unexpected = [&](std::size_t end) {
        for (; asked < end; ++asked) {
            if (!paired[asked]) {
                result.lines.push_back({Side::unexpected, asked_text(entries[asked], with_bytes)});
            }
        }
    };
    for (std::size_t i = 0; i < list.size(); ++i) {
        if (pairs[i]) {
            write_unexpected(*pairs[i]);
            result.lines.push_back({Side::both, asked_text(entries[*pairs[i]], false)});
        } else {
            result.lines.push_back({Side::missing, listed_text(list[i])});
        }
    }
    write_unexpected(entries.size());
}

bool is_answered_differently(const ListedRequest &row, const Entry &entry) {
    return is_same_request(row, entry) && fit(row, entry) == Fit::none;
}

/// Counts what is left; a row and a request that differ in their answer alone count once.
void count_rest(const std::vector<ListedRequest> &list, const std::vector<Entry> &entries,
                const Pairs &pairs, Comparison &result) {
    std::vector<bool> used(entries.size());
    for (const auto &pair : pairs) {
        if (pair) {
            used[*pair] = true;
        }
    }
    for (std::size_t i = 0; i < list.size(); ++i) {
        if (pairs[i]) {
            continue;
        }
        std::size_t j = 0;
        while (j < entries.size() && (used[j] || !is_answered_differently(list[i], entries[j]))) {
            j++;
        }
        if (j < entries.size()) {
            used[j] = true;
            result.different++;
        } else {
            result.missing++;
        }
    }
    result.unexpected = static_cast<std::size_t>(std::count(used.begin(), used.end(), false));
}

std::string side_name(Side side) {
    switch (side) {
    case Side::both:
        return "both";
    case Side::missing:
        return "missing";
    case Side::unexpected:
        return "unexpected";
    }
    return "";
}

} // namespace

Comparison compare_requests(const std::vector<ListedRequest> &list,
                            const std::vector<Entry> &entries, bool any_order) {
    const Pairs pairs = any_order ? pair_in_any_order(list, entries) : pair_in_order(list, entries);
    Comparison result;
    write_lines(list, entries, pairs, result);
    count_rest(list, entries, pairs, result);
    return result;
}

bool report_comparison(const Settings &settings, const std::vector<ListedRequest> &list,
                       const Journal &journal) {
    const Comparison found = compare_requests(list, journal.entries, settings.any_order);
    if (found.missing + found.unexpected + found.different == 0) {
        return true;
    }
    for (const DifferenceLine &difference : found.lines) {
        std::istringstream lines(difference.text);
        for (std::string line; std::getline(lines, line);) {
            print_log({"comparison",
                       "",
                       static_cast<char>(difference.side) + line,
                       {{"side", side_name(difference.side)}, {"line", line}}});
        }
    }
    std::fprintf(stderr,
                 "lumosim: not the requests of %s: %zu missing, %zu unexpected, %zu answered "
                 "differently\n",
                 settings.expect_file.c_str(), found.missing, found.unexpected, found.different);
    return false;
}
