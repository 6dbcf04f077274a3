#include "tests/harness/meeting_point.h"

#include <sys/socket.h>
#include <unistd.h>

namespace harness {

deserted_point::deserted_point()
    : path(directory.path + "/none"), bound_(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    // A bound port without a listener refuses connections, and nobody else can take it.
    port = bind_to_loopback(bound_);
}

deserted_point::~deserted_point() {
    close(bound_);
}

} // namespace harness
