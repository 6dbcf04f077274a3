// lumocmd_table_lister, a program of the build: fills templates with the lists that follow from the
// program's tables, and compares docs/protocols.md with them.
// usage: lumocmd_table_lister fill DEFINITION TEMPLATE OUTPUT
//        lumocmd_table_lister compare DEFINITION PROJECT-DIRECTORY

#include "cmake/table_lister/texts.h"

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <regex>

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

void print_those_missing(const char *what, const lines &list, const lines &from) {
    for (const std::string &line : list) {
        if (std::find(from.begin(), from.end(), line) == from.end()) {
            std::printf("%s\n%s\n", what, line.c_str());
        }
    }
}

/// Says what to change in docs/protocols.md where it does not list the gateways as the tables do.
int compare(const std::vector<type_entry> &types, const std::string &directory) {
    const std::string text = file_text(directory + "/docs/protocols.md");
    const std::regex row(R"(\n(\| \w+ \| `lumo_\w+gateway\.socket`.*))");
    const lines found(std::sregex_token_iterator(text.begin(), text.end(), row, 1), {});
    const lines wanted = gateway_rows(types);
    if (found == wanted) {
        return EXIT_DONE;
    }
    std::puts("docs/protocols.md does not list the gateways in the order of the help:");
    print_those_missing("add", wanted, found);
    print_those_missing("remove", found, wanted);
    return EXIT_FAILED;
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
