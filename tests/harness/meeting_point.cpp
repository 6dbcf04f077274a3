#include "tests/harness/meeting_point.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <stdexcept>
#include <sys/socket.h>
#include <unistd.h>

namespace harness {

deserted_point::deserted_point()
    : path(directory.path + "/none"), bound_(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    // A bound port without a listener refuses connections, and nobody else can take it.
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    if (bind(bound_, reinterpret_cast<sockaddr *>(&address), size) != 0 ||
        getsockname(bound_, reinterpret_cast<sockaddr *>(&address), &size) != 0) {
        throw std::runtime_error("no loopback port");
    }
    port = ntohs(address.sin_port);
}

deserted_point::~deserted_point() {
    close(bound_);
}

} // namespace harness
