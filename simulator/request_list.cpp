// Lists of requests. A line is not split into request and outcome, since either may hold an arrow:
// it is compared with what the log would print.
#include "simulator/request_list.h"

#include "simulator/text.h"

#include <algorithm>
#include <fstream>

namespace {

/// Lines of a log that are no requests.
constexpr std::string_view BARE_LINES[] = {"ready", "stopped"};
/// What stands behind the name of the daemon.
constexpr std::string_view NOTES[] = {" listens on ",
                                      " refuses on ",
                                      " <- ",
                                      ": no request, ",
                                      ": connection dropped: ",
                                      ": the client did not take its answer",
                                      ": too many connections, ",
                                      ": listens from now on",
                                      ": told on the page: "};

/// Adds bytes to the last request of the daemon that has none yet.
std::string add_answer(const daemon_row &daemon, std::string_view quoted,
                       std::vector<listed_request> &list) {
    const auto row =
        std::find_if(list.rbegin(), list.rend(), [&daemon](const listed_request &known) {
            return known.daemon == &daemon && !known.answer;
        });
    if (row == list.rend()) {
        return "an answer without a request before it";
    }
    if (quoted.size() < 2 || quoted.front() != '"' || quoted.back() != '"') {
        return "the bytes of an answer stand between double quotes";
    }
    row->answer = read_escapes(quoted.substr(1, quoted.size() - 2));
    return row->answer ? "" : "the bytes hold an unknown escape";
}

std::string add_line(const std::string &line, std::vector<listed_request> &list) {
    if (line.empty() || line.front() == '#' ||
        std::ranges::find(BARE_LINES, line) != std::end(BARE_LINES)) {
        return "";
    }
    for (const daemon_row &daemon : DAEMONS) {
        if (!line.starts_with(daemon.label)) {
            continue;
        }
        const std::string_view rest = std::string_view(line).substr(daemon.label.size());
        if (rest.starts_with(ARROW)) {
            return add_answer(daemon, rest.substr(ARROW.size()), list);
        }
        const auto opens = [rest](std::string_view note) { return rest.starts_with(note); };
        const bool is_note = std::ranges::any_of(NOTES, opens);
        if (!is_note && rest.starts_with(": ")) {
            list.push_back({&daemon, line, {}});
            return "";
        }
        if (is_note) {
            return "";
        }
    }
    return "'" + show_value(line) + "' is no line of the log";
}

/// The row's outcome; empty when its line has the request alone.
std::string_view listed_outcome(const listed_request &row, const journal_entry &entry) {
    const std::string opening = request_words(entry) + std::string(ARROW);
    return row.line.starts_with(opening) ? std::string_view(row.line).substr(opening.size())
                                         : std::string_view();
}

bool can_answer(const listed_request &row, const journal_entry &entry) {
    return is_same_request(row, entry) &&
           (row.answer || listed_outcome(row, entry).starts_with(CLOSED));
}

} // namespace

std::string read_list(const std::string &path, std::vector<listed_request> &list) {
    std::ifstream file(path, std::ios::binary);
    int number = 0;
    for (std::string line; std::getline(file, line);) {
        const std::string complaint = add_line(line, list);
        number++;
        if (!complaint.empty()) {
            return std::string(path).append(" line ").append(std::to_string(number)) + ": " +
                   complaint;
        }
    }
    return file.eof() ? "" : "cannot read " + path;
}

bool is_same_request(const listed_request &row, const journal_entry &entry) {
    const std::string request = request_words(entry);
    return row.line == request || row.line.starts_with(request + std::string(ARROW));
}

list_fit fit(const listed_request &row, const journal_entry &entry) {
    if (row.answer && row.answer != entry.answer) {
        return list_fit::NONE;
    }
    if (row.line == entry_words(entry)) {
        return row.answer ? list_fit::OUTCOME_AND_BYTES : list_fit::OUTCOME;
    }
    if (row.line == request_words(entry)) {
        return row.answer ? list_fit::REQUEST_AND_BYTES : list_fit::REQUEST;
    }
    return list_fit::NONE;
}

void replay_answer(replay_list &replay, const daemon_row &daemon, exchange_result &exchange) {
    const journal_entry entry{&daemon, exchange.request, "", {}};
    replay.used.resize(replay.list.size());
    std::size_t chosen = replay.list.size();
    for (std::size_t i = 0; i < replay.list.size(); ++i) {
        if (can_answer(replay.list[i], entry)) {
            chosen = i;
            if (!replay.used[i]) {
                break;
            }
        }
    }
    if (chosen == replay.list.size()) {
        exchange.outcome += " (not in the recording)";
        return;
    }
    const listed_request &row = replay.list[chosen];
    replay.used[chosen] = true;
    exchange.answer = row.answer;
    const std::string_view outcome = listed_outcome(row, entry);
    exchange.outcome =
        outcome.empty() ? std::to_string(row.answer->size()) + " raw bytes" : std::string(outcome);
}
