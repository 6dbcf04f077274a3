// Owns standard output. A reader that went away is no reason to stop serving, so a failed write
// is let go.
#include "report.h"

#include <cstdio>
#include <mutex>

void print_line(const std::string &text) {
    static std::mutex lock;
    const std::scoped_lock held(lock);
    std::fputs((text + "\n").c_str(), stdout);
    std::fflush(stdout);
}
