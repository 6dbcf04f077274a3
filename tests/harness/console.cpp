#include "tests/harness/console.h"

#include <cstdlib>
#include <sys/mman.h>
#include <unistd.h>

namespace harness {

std::string red(const std::string &message) {
    return "\033[0;31m[lumocmd] " + message + "\033[0;39m\n";
}

std::string tagged_red(pid_t pid, const std::string &message) {
    return "\033[1;31m<" + std::to_string(pid) + ">\033[0;39m " + red(message);
}

std::string green(pid_t pid, const std::string &text) {
    return "\033[1;32m<" + std::to_string(pid) + ">\033[0;39m \033[0;32m" + text + "\033[0;39m\n";
}

std::string captured_output(const std::function<void()> &action, FILE *stream) {
    const int descriptor = fileno(stream);
    fflush(stream);
    const int usual = dup(descriptor);
    const int file = memfd_create("captured output", MFD_CLOEXEC);
    if (usual < 0 || file < 0 || dup2(file, descriptor) < 0) {
        abort();
    }
    action();
    fflush(stream);
    dup2(usual, descriptor);
    close(usual);
    std::string text(static_cast<std::size_t>(lseek(file, 0, SEEK_END)), '\0');
    if (pread(file, text.data(), text.size(), 0) != static_cast<ssize_t>(text.size())) {
        abort();
    }
    close(file);
    return text;
}

} // namespace harness
