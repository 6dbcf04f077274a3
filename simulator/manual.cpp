// Fills the simulator's manual page or, with any argument, a completion: replaces every @NAME@ of
// the template by text from the tables. The build runs it, and fails when the page describes other
// options than there are.
#include "simulator/home.h"
#include "simulator/journal.h"
#include "simulator/options.h"
#include "simulator/text.h"

#include <boost/algorithm/string/predicate.hpp>
#include <boost/algorithm/string/replace.hpp>
#include <cctype>
#include <exception>
#include <iostream>
#include <iterator>
#include <sstream>
#include <stdexcept>

namespace {

/// An option as the page writes it: --delay DAEMON=MS[,TIMES] is
/// "Fl -delay Ar daemon Ns = Ns Ar ms Ns Op , Ns Ar times".
std::string option_macro(const option_row &option) {
    std::string macro = "Fl " + std::string(option.name.substr(1));
    if (!option.argument.empty()) {
        macro += " Ar ";
        bool bracket = false;
        for (const char letter : option.argument) {
            if (letter == '=' || letter == ',') {
                macro += std::string(bracket ? " Ns Op " : " Ns ") + letter + " Ns Ar ";
            } else if (letter != '[' && letter != ']') {
                macro += static_cast<char>(std::tolower(letter));
            }
            bracket = letter == '[';
        }
    }
    return macro;
}

std::string synopsis() {
    std::string serving;
    std::string alone;
    for (const option_row &option : OPTIONS) {
        if (option.alone) {
            alone += (alone.empty() ? "\n.Nm\n." : " | ") + option_macro(option);
        } else {
            serving += (serving.empty() ? ".Op " : "\n.Op ") + option_macro(option);
        }
    }
    return serving + alone;
}

using table_cells = std::vector<std::string>;

/// A table below its headings; each column is as wide as its longest cell.
std::string table(const std::vector<table_cells> &rows) {
    table_cells widest = rows[0];
    std::string lines;
    for (const table_cells &row : rows) {
        for (std::size_t i = 0; i < row.size(); ++i) {
            widest[i] = row[i].size() > widest[i].size() ? row[i] : widest[i];
            lines.append(i == 0 ? "\n.It " : " Ta ").append(&row == rows.data() ? "Em " : "");
            lines += row[i];
        }
    }
    std::string opening = ".Bl -column";
    for (const std::string &cell : widest) {
        opening += " \"" + cell + "\"";
    }
    return opening + lines + "\n.El";
}

std::string daemons() {
    std::vector<table_cells> rows{{"daemon", "socket", "errors"}};
    for (const daemon_row &row : DAEMONS) {
        rows.push_back({std::string(row.key),
                        std::string(row.socket_file.empty() ? "TCP port" : row.socket_file),
                        format_status(row, row.base)});
    }
    return table(rows);
}

std::string users() {
    std::vector<table_cells> rows{{"user", "password", "session"}};
    for (const user_account &user : USERS) {
        rows.push_back(
            {std::string(user.name), std::string(user.password), std::string(user.session)});
    }
    return table(rows);
}

std::string elements() {
    const home_state home;
    std::string list;
    for (const auto &[name, element] : home.elements) {
        const char *separator = name == home.elements.rbegin()->first ? " and " : ", ";
        list += (list.empty() ? "" : separator) + name;
    }
    return list;
}

std::string links() {
    const home_state home;
    std::vector<table_cells> rows{{"daemon", "address", "element"}};
    for (const auto &[place, element] : home.links) {
        const std::size_t blank = place.find(' ');
        rows.push_back({place.substr(0, blank), place.substr(blank + 1), element});
    }
    return table(rows);
}

struct page_filling {
    const char *mark;
    std::string (*text)();
};

constexpr page_filling FILLINGS[] = {
    {"@SYNOPSIS@", synopsis},
    {"@DAEMONS@", daemons},
    {"@USERS@", users},
    {"@FIRST_USER@", [] { return std::string(FIRST_USER.name); }},
    {"@ELEMENTS@", elements},
    {"@LINKS@", links},
    {"@WATCHED@", [] { return std::to_string(WATCHED_ENTRIES); }},
    {"@DEFAULT_DIRECTORY@", [] { return std::string(DEFAULT_DIRECTORY); }},
    {"@DEFAULT_PORT@", [] { return std::to_string(DEFAULT_PORT); }},
    {"@DEFAULT_PATIENCE@", [] { return std::to_string(simulator_settings().patience); }},
    {"@SHOWN_BYTES@", [] { return std::to_string(SHOWN_VALUE_BYTES); }},
};

/// The options as the completions read them: name, argument and help of each in a line.
std::string option_table() {
    std::string lines;
    for (const option_row &option : OPTIONS) {
        if (option.help.find_first_of("'|[]\\") != std::string_view::npos) {
            throw std::runtime_error("the shells would misread: " + std::string(option.help));
        }
        lines.append(lines.empty() ? "" : "\n").append(option.name).append("|");
        lines.append(option.argument).append("|").append(option.help);
    }
    return lines;
}

constexpr page_filling COMPLETION_FILLINGS[] = {
    {"@OPTIONS@", option_table},
    {"@DAEMONS@", [] { return daemon_keys(" "); }},
};

/// The descriptions are written by hand; this checks that no option is missing.
void compare_options(const std::string &page) {
    std::string expected;
    for (const option_row &option : OPTIONS) {
        expected += ".It " + option_macro(option) + "\n";
    }
    std::string described;
    std::istringstream lines(page);
    for (std::string line; std::getline(lines, line);) {
        described += line.starts_with(".It Fl ") ? line + "\n" : "";
    }
    if (described != expected) {
        throw std::runtime_error("the page describes these options:\n" + described +
                                 "it should describe these, in this order:\n" + expected);
    }
}

std::string fill(std::string page, std::span<const page_filling> fillings) {
    for (const page_filling &filling : fillings) {
        if (!boost::contains(page, filling.mark)) {
            throw std::runtime_error(std::string("the page has no place for ") + filling.mark);
        }
        boost::replace_all(page, filling.mark, filling.text());
    }
    return page;
}

} // namespace

int main(int argc, char ** /*argv*/) {
    const bool completion = argc > 1;
    try {
        const std::string page =
            fill({std::istreambuf_iterator<char>(std::cin), {}},
                 completion ? std::span<const page_filling>(COMPLETION_FILLINGS) : FILLINGS);
        if (!completion) {
            compare_options(page);
        }
        std::cout << page << std::flush;
        return std::cout ? 0 : 1;
    } catch (const std::exception &error) {
        std::fprintf(stderr, "%s: %s\n", completion ? "completion" : "lumosim.1.in", error.what());
        return 1;
    }
}
