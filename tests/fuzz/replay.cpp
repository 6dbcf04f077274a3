// Checks a target with every file of a directory: usage: fuzz_TARGET DIRECTORY

#include "program.h"

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>

int main(int argument_count, char **arguments) {
    int status = 1;
    for (const auto &entry :
         std::filesystem::directory_iterator(argument_count == 2 ? arguments[1] : "")) {
        printf("%s\n", entry.path().filename().c_str());
        fflush(stdout); // a finding ends the process here
        std::ifstream file(entry.path(), std::ios::binary);
        const std::vector<std::uint8_t> bytes{std::istreambuf_iterator<char>(file), {}};
        LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
        status = 0;
    }
    return status;
}
