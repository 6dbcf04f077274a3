// A machine of a test's own: a process whose network is the loopback interface alone, so that the
// well-known port of the local web service is free for a scripted one.

#pragma once

#include <functional>
#include <string>

namespace harness {

/// Runs `action` in such a process, as root or as anyone who may create user namespaces.
/// @return the action's text, or a complaint when there is no such process to be had.
std::string on_private_machine(const std::function<std::string()> &action);

/// Why no service of such a process can be called by this name of its host; empty when it can.
std::string missing_private_machine(const std::string &host = "127.0.0.1");

} // namespace harness
