// Checks a target with every file of a directory: usage: fuzz_TARGET DIRECTORY

#include "program.h"

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>

int main(int argument_count, char **arguments) {
    bool is_empty = true;
    for (const auto &entry :
         std::filesystem::directory_iterator(argument_count == 2 ? arguments[1] : "")) {
        printf("%s\n", entry.path().filename().c_str());
        fflush(stdout); // a finding ends the process here
        std::ifstream file(entry.path(), std::ios::binary);
        const std::vector<char> bytes{std::istreambuf_iterator<char>(file), {}};
        LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t *>(bytes.data()), bytes.size());
        is_empty = false;
    }
    return is_empty ? 1 : 0;
}
