#include "tests/harness/private_machine.h"

#include "tests/harness/process.h"

#include <cerrno>
#include <cstring>
#include <exception>
#include <net/if.h>
#include <netdb.h>
#include <sched.h>
#include <stdexcept>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

namespace harness {

namespace {

void require(bool held, const char *what) {
    if (!held) {
        throw std::runtime_error(std::string("private machine, ") + what + ": " + strerror(errno));
    }
}

void leave_network() {
    require(unshare(CLONE_NEWNET) == 0 || unshare(CLONE_NEWUSER | CLONE_NEWNET) == 0, "unshare");
    ifreq loopback = {};
    memcpy(loopback.ifr_name, "lo", sizeof "lo");
    const int any_socket = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    require(ioctl(any_socket, SIOCGIFFLAGS, &loopback) == 0, "SIOCGIFFLAGS");
    loopback.ifr_flags = static_cast<short>(loopback.ifr_flags | IFF_UP);
    require(ioctl(any_socket, SIOCSIFFLAGS, &loopback) == 0, "SIOCSIFFLAGS");
    close(any_socket);
}

[[noreturn]] void write_outcome(const std::function<std::string()> &action) {
    std::string text;
    try {
        leave_network();
        text = action();
    } catch (const std::exception &failure) {
        text = failure.what();
    }
    const ssize_t written = write(STDOUT_FILENO, text.data(), text.size());
    _exit(written == static_cast<ssize_t>(text.size()) ? 0 : 1);
}

} // namespace

std::string on_private_machine(const std::function<std::string()> &action) {
    // A process of its own has one thread only, which a new user namespace demands.
    const run_result seen = run({}, {.prepare = [&action] { write_outcome(action); }});
    return seen.status == 0 ? seen.output : "the private machine broke down after: " + seen.output;
}

std::string missing_private_machine(const std::string &host) {
    return on_private_machine([&] {
        addrinfo *found = nullptr;
        const int error = getaddrinfo(host.c_str(), nullptr, nullptr, &found);
        if (error != 0) {
            return host + " has no address: " + gai_strerror(error);
        }
        freeaddrinfo(found);
        return std::string();
    });
}

} // namespace harness
