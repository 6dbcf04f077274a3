// A machine of a test's own: a process whose network is the loopback interface alone, so that the
// well-known port of the local web service is free for a scripted one.

#pragma once

#include <functional>
#include <string>
#include <thread>

namespace harness {

/// Runs `action` in such a process, as root or as anyone who may create user namespaces.
/// @return the action's text, or a complaint when there is no such process to be had.
std::string on_private_machine(const std::function<std::string()> &action);

/// Why no service of such a process can be called by this name of its host; empty when it can.
std::string missing_private_machine(const std::string &host = "127.0.0.1");

/// A web server on port 80 of 127.0.0.1 that answers one request. It listens before the constructor
/// returns.
class well_known_service {
  public:
    explicit well_known_service(std::string answer);
    ~well_known_service();
    well_known_service(const well_known_service &) = delete;
    well_known_service &operator=(const well_known_service &) = delete;

    /// Ends the service; a client that is already gone is still served.
    /// @return all bytes that the client sent, empty when none came.
    std::string finish();

  private:
    void serve(const std::string &answer);

    int listener_ = -1;
    int stop_[2] = {-1, -1};
    std::string received_;
    std::thread thread_;
};

} // namespace harness
