// One run of the whole program in this process: its words and the other side's answer come from the
// fuzzer's input, and everything that can be seen of it comes back.

#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

/// The target itself: checks the program with one input. Returns 0, or ends the process.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size);

namespace fuzz {

/// What is left of an input, which is taken apart from its start. Behind its end everything is zero
/// or empty.
using input = std::string_view;
std::size_t below(input *in, std::size_t bound); ///< a number from 0 to bound - 1, one byte
std::string field(input *in);                    ///< up to the next zero byte, which is taken too

struct ending {
    int status = 0;          ///< the exit status before the system cuts it to eight bits
    bool is_refused = false; ///< the parser ended the process
    std::string output = {};
    std::string report = {}; ///< on standard error
    std::string sent = {};
    int connections = 0;
};

/// Runs the program with the state of a fresh process, and checks what holds of every ending.
/// @param answer what the other side sends to whatever connects.
/// @param piece so many bytes arrive at a time, or more where that would take too many; 0 for all.
ending run_program(const std::vector<std::string> &words, const std::string &answer,
                   std::size_t piece = 0);

/// Ends the process with this text when it does not hold.
void require(bool holds, const char *what);

} // namespace fuzz
