// lumocmd_table_lister, a program of the build: fills templates with the lists that follow from the
// program's tables, and compares documents with them.
// usage: lumocmd_table_lister fill DEFINITION TEMPLATE OUTPUT
//        lumocmd_table_lister compare DEFINITION PROJECT-DIRECTORY

#include "cmake/table_lister/texts.h"

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <regex>
#include <sstream>

namespace {

constexpr int EXIT_DONE = 0;
constexpr int EXIT_FAILED = 1;
constexpr int EXIT_WRONG_USE = 2;

std::string file_text(const std::string &path) {
    std::ifstream file(path);
    return {std::istreambuf_iterator<char>(file), {}};
}

int complain(const std::string &complaint) {
    std::fprintf(stderr, "lumocmd_table_lister: %s\n", complaint.c_str());
    return EXIT_FAILED;
}

/// Replaces every @NAME@ of a template; one that has no text is a mistake.
int fill(const std::vector<type_entry> &types, const std::string &path, const std::string &output) {
    const std::map<std::string, std::string> texts = template_texts(types);
    const std::string whole = file_text(path);
    const std::regex mark("@([A-Z_]+)@");
    std::string filled;
    std::string rest = whole;
    for (std::smatch found; std::regex_search(rest, found, mark); rest = found.suffix()) {
        const auto text = texts.find(found[1]);
        if (text == texts.end()) {
            return complain(path + " holds " + found.str() + ", which names no list");
        }
        filled += found.prefix().str() + text->second;
    }
    std::ofstream file(output);
    file << filled << rest;
    file.close();
    return whole.empty() || file.fail() ? complain("cannot fill " + path + " into " + output)
                                        : EXIT_DONE;
}

using lines = std::vector<std::string>;

/// The lines of a text that match, or the group of the pattern in them.
lines matching_lines(const std::string &text, const std::regex &pattern) {
    lines result;
    std::istringstream rest(text);
    for (std::string line; std::getline(rest, line);) {
        std::smatch found;
        if (std::regex_match(line, found, pattern)) {
            result.push_back(found[found.size() - 1]);
        }
    }
    return result;
}

lines sorted(lines unsorted) {
    std::sort(unsorted.begin(), unsorted.end());
    unsorted.erase(std::unique(unsorted.begin(), unsorted.end()), unsorted.end());
    return unsorted;
}

/// Prints the lines that only the first list has.
void print_difference(const char *heading, const lines &list, const lines &other) {
    for (const std::string &line : list) {
        if (std::find(other.begin(), other.end(), line) == other.end()) {
            std::printf("%s\n%s\n", heading, line.c_str());
        }
    }
}

/// Says which lines to paste where a document does not hold them.
int compare(const std::vector<type_entry> &types, const std::string &directory) {
    int status = EXIT_DONE;
    for (const document_lines &wanted : expected_lines(types)) {
        const std::string text = file_text(directory + "/" + wanted.document);
        const lines found = matching_lines(text, std::regex(wanted.pattern));
        if (wanted.is_ordered ? found == wanted.lines : sorted(found) == sorted(wanted.lines)) {
            continue;
        }
        status = EXIT_FAILED;
        std::printf("%s does not list %s as the program's tables do.\n", wanted.document,
                    wanted.what);
        print_difference("Add, in the order of the tables:", wanted.lines, found);
        print_difference("Remove:", found, wanted.lines);
        if (sorted(found) == sorted(wanted.lines)) {
            std::puts("They should be, once each and in this order:");
            for (const std::string &line : wanted.lines) {
                std::puts(line.c_str());
            }
        }
    }
    return status;
}

int run(const std::vector<std::string> &words) {
    std::vector<type_entry> types;
    if (words.size() < 3) {
        return EXIT_WRONG_USE;
    }
    const std::string complaint = read_entries(words[1], &types);
    if (!complaint.empty()) {
        return complain(complaint);
    }
    if (words[0] == "fill" && words.size() == 4) {
        return fill(types, words[2], words[3]);
    }
    return words[0] == "compare" ? compare(types, words[2]) : EXIT_WRONG_USE;
}

} // namespace

int main(int argc, char **argv) {
    try {
        return run({argv + 1, argv + argc});
    } catch (const std::exception &error) {
        return complain(error.what());
    }
}
