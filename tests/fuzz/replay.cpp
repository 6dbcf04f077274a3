// Checks a target with every file of a directory: usage: fuzz_replay_TARGET DIRECTORY

#include "tests/fuzz/target.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

int main(int argument_count, char **arguments) {
    if (argument_count != 2) {
        fprintf(stderr, "usage: %s DIRECTORY\n", arguments[0]);
        return 2;
    }
    std::vector<std::filesystem::path> paths;
    for (const auto &entry : std::filesystem::directory_iterator(arguments[1])) {
        paths.push_back(entry.path());
    }
    std::sort(paths.begin(), paths.end());
    for (const std::filesystem::path &path : paths) {
        printf("%s\n", path.filename().c_str());
        fflush(stdout); // a finding ends the process here
        std::ifstream file(path, std::ios::binary);
        const std::vector<char> bytes{std::istreambuf_iterator<char>(file), {}};
        LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t *>(bytes.data()), bytes.size());
    }
    return paths.empty() ? 1 : 0;
}
