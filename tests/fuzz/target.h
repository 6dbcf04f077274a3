// What every target is built on: its input taken apart, one call of the product under control, and
// checks that end the run with a report.

#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

/// The target itself: checks the product with one input. Returns 0, or ends the process.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size);

namespace fuzz {

// ---------------------------------------------------------------------------------------------
// Input

/// An input that is taken apart from its start. Behind its end everything is zero or empty.
class input {
  public:
    input(const std::uint8_t *data, std::size_t size) : data_(data), size_(size) {}
    bool is_empty() const {
        return size_ == 0;
    }
    std::uint8_t byte();
    std::size_t below(std::size_t bound); ///< a number from 0 to bound - 1, one byte
    std::int32_t number();                ///< any number, four bytes
    std::string field();                  ///< up to the next zero byte, which is taken as well
    std::string rest();
    /// The rest, stretched to about this size by repeating one of its characters.
    std::string stretched_rest(std::size_t size);

  private:
    const std::uint8_t *data_;
    std::size_t size_;
};

// ---------------------------------------------------------------------------------------------
// The product under control

/// How the other side behaves. Errors are errno values, zero for none.
struct peer_script {
    int socket_error = 0;
    int connect_error = 0;
    int send_error = 0;
    int receive_error = 0;
    std::size_t most_sent = SIZE_MAX;     ///< in one send call
    std::size_t most_received = SIZE_MAX; ///< in one receive call
    std::string answer = {};              ///< then the connection ends
};

/// What the product did to its connection.
struct peer_log {
    int opened = 0;
    int closed = 0;
    int sends = 0;
    int receives = 0;
    int family = 0;           ///< of the socket
    std::string address = {}; ///< as given to connect(), byte by byte
    std::string sent = {};
};

/// Everything that can be seen of a call.
struct outcome {
    int value = 0;       ///< result, or exit status
    bool exited = false; ///< the product ended the process, which goes on here
    std::string output = {};
    std::string report = {}; ///< on standard error
    peer_log peer = {};
    std::size_t unreleased_malloc = 0; ///< blocks of the SOAP runtime that are left
};

/// Calls the product with the state of a fresh process. What it allocated is gone afterwards, so
/// the call itself copies what it wants to keep. The call must not hold anything that needs
/// destroying when the product may exit.
outcome run_product(const peer_script &script, bool verbose, const std::function<int()> &call);

/// A copy of a text in a block of exactly its size, so that every byte read or written beside it is
/// noticed. Ends at the text's first zero byte.
class exact_text {
  public:
    explicit exact_text(const std::string &text);
    ~exact_text();
    exact_text(const exact_text &) = delete;
    exact_text &operator=(const exact_text &) = delete;
    char *get() const {
        return block_;
    }

  private:
    char *block_;
};

// ---------------------------------------------------------------------------------------------
// Console lines, as the diagnostics must write them

std::string red(bool verbose, const std::string &message);
std::string green(const std::string &message);

// ---------------------------------------------------------------------------------------------
// Checks

void require(bool holds, const char *what);
void require_equal(const char *what, const std::string &is, const std::string &wanted);
void require_equal(const char *what, long is, long wanted);

} // namespace fuzz
