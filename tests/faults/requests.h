// One request of every type that is answered over a local socket, with its answer and with what its
// failures look like.

#pragma once

#include "tests/harness/console.h"
#include "tests/harness/process.h"

#include <string>
#include <vector>

namespace fault_tests {

struct socket_request {
    std::string keyword;
    std::string selected; ///< progress line of the keyword
    std::string function;
    std::string parameters;
    std::string request; ///< all that is sent
    std::string prefix;  ///< of the status in the answer
    std::string more;    ///< of the answer, behind the status line
    std::string open_failed;
    std::string send_failed;    ///< with %s for the system's reason
    std::string receive_failed; ///< with %s for the system's reason
    std::string no_status_line;
    std::string wrong_prefix;
    int connect_status; ///< the codes of these failures, and their texts
    std::string connect_text;
    int send_status;
    std::string send_text;
    int answer_status;
    std::string answer_text;
};

/// Every gateway and FSMCore.
const std::vector<socket_request> &socket_requests();

/// The command line for a daemon at `path`, with `-v ON`.
harness::words arguments_of(const socket_request &request, const std::string &path);

/// The progress lines of that command line.
std::string progress_of(const socket_request &request, const std::string &path, pid_t pid);

/// A whole well-formed answer with this number.
std::string answer_of(const socket_request &request, const std::string &number);

/// A message with the system's words for an error number.
std::string with_reason(const std::string &message, int error);

} // namespace fault_tests
