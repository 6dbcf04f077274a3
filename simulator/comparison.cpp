// Matches rows of the list with requests and prints those that remain. In order it takes the
// longest common subsequence. In any order the most specific rows choose first, so that a row
// without an answer never takes the request that another row needs.
#include "simulator/options.h"
#include "simulator/request_list.h"

#include <algorithm>
#include <cstdint>

namespace {

/// For each row of the list the request that matches it, if any.
using pair_list = std::vector<std::optional<std::size_t>>;

/// Largest table of the longest common subsequence; beyond it the difference is one block.
constexpr std::size_t MOST_CELLS = std::size_t{1} << 24U;

struct index_range {
    std::size_t first;
    std::size_t last; ///< one past the end
};

/// Matches a longest common subsequence of both ranges.
void pair_middle(const std::vector<listed_request> &list, const std::vector<journal_entry> &entries,
                 index_range rows, index_range asked, pair_list &pairs) {
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
        return fit(list[rows.first + i], entries[asked.first + j]) != list_fit::NONE;
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

pair_list pair_in_order(const std::vector<listed_request> &list,
                        const std::vector<journal_entry> &entries) {
    pair_list pairs(list.size());
    index_range rows{0, list.size()};
    index_range asked{0, entries.size()};
    const auto both_left = [&]() { return rows.first < rows.last && asked.first < asked.last; };
    while (both_left() && fit(list[rows.first], entries[asked.first]) != list_fit::NONE) {
        pairs[rows.first++] = asked.first++;
    }
    while (both_left() && fit(list[rows.last - 1], entries[asked.last - 1]) != list_fit::NONE) {
        pairs[--rows.last] = --asked.last;
    }
    pair_middle(list, entries, rows, asked, pairs);
    return pairs;
}

pair_list pair_in_any_order(const std::vector<listed_request> &list,
                            const std::vector<journal_entry> &entries) {
    pair_list pairs(list.size());
    std::vector<bool> taken(entries.size());
    for (const list_fit wanted : {list_fit::OUTCOME_AND_BYTES, list_fit::REQUEST_AND_BYTES,
                                  list_fit::OUTCOME, list_fit::REQUEST}) {
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

/// Prints a line of the log and, where they are given, the bytes of the answer.
void print_side(char sign, const daemon_row &daemon, const std::string &line,
                const std::optional<std::string> &answer = {}) {
    const char *side = sign == ' ' ? "both" : sign == '-' ? "missing" : "unexpected";
    print_log({"comparison", "", sign + line, {{"side", side}, {"line", line}}});
    if (answer) {
        print_side(sign, daemon, bytes_words(daemon, "->", *answer));
    }
}

/// Prints both sides: a row that has no pair comes before the requests that have none.
void print_sides(const std::vector<listed_request> &list, const std::vector<journal_entry> &entries,
                 const pair_list &pairs, const std::vector<bool> &paired) {
    const bool with_bytes =
        std::ranges::any_of(list, [](const listed_request &row) { return row.answer.has_value(); });
    std::size_t asked = 0;
    const auto print_unexpected = [&](std::size_t end) {
        for (; asked < end; ++asked) {
            const journal_entry &entry = entries[asked];
            if (!paired[asked]) {
                print_side('+', *entry.daemon, entry_words(entry),
                           with_bytes ? entry.answer : std::nullopt);
            }
        }
    };
    for (std::size_t i = 0; i < list.size(); ++i) {
        if (pairs[i]) {
            print_unexpected(*pairs[i]);
            print_side(' ', *list[i].daemon, entry_words(entries[*pairs[i]]));
        } else {
            print_side('-', *list[i].daemon, list[i].line, list[i].answer);
        }
    }
    print_unexpected(entries.size());
}

} // namespace

bool report_comparison(const simulator_settings &settings, const std::vector<listed_request> &list,
                       const std::vector<journal_entry> &entries) {
    const pair_list pairs =
        settings.any_order ? pair_in_any_order(list, entries) : pair_in_order(list, entries);
    std::vector<bool> paired(entries.size());
    for (const auto &pair : pairs) {
        if (pair) {
            paired[*pair] = true;
        }
    }
    // A row and a request that differ in their answer alone count once.
    std::vector<bool> used = paired;
    std::size_t missing = 0;
    std::size_t different = 0;
    for (std::size_t i = 0; i < list.size(); ++i) {
        std::size_t j = 0;
        while (!pairs[i] && j < entries.size() &&
               (used[j] || !is_same_request(list[i], entries[j]) ||
                fit(list[i], entries[j]) != list_fit::NONE)) {
            j++;
        }
        if (!pairs[i] && j < entries.size()) {
            used[j] = true;
            different++;
        } else if (!pairs[i]) {
            missing++;
        }
    }
    const auto unexpected = std::count(used.begin(), used.end(), false);
    if (missing == 0 && different == 0 && unexpected == 0) {
        return true;
    }
    print_sides(list, entries, pairs, paired);
    std::fprintf(stderr,
                 "lumosim: not the requests of %s: %zu missing, %td unexpected, %zu answered "
                 "differently\n",
                 settings.expect_file.c_str(), missing, unexpected, different);
    return false;
}
