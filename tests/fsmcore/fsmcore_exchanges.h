// The two FSMCore exchanges as their callers know them, and their messages.

#pragma once

#include "fsmcore/FSMCoreutil.h"
#include "tests/harness/peer.h"
#include "tests/harness/watched_client.h"

struct fsmcore_exchange {
    harness::family where;
    std::string tag;
    std::string waittime_line;
    const char *socket; ///< in the message about a failed connection
};

inline const fsmcore_exchange LOCAL = {
    harness::family::UNIX_SOCKET, "FSMCoreutil->fsmcore_requeststatic", "Waittime: 5\n", "socket"};
inline const fsmcore_exchange REMOTE = {
    harness::family::LOOPBACK, "FSMCoreutil->fsmcore_m2mrequeststatic", "", "remote socket"};

inline const fsmcore_exchange *const FSMCORE_EXCHANGES[] = {&LOCAL, &REMOTE};

/// The holders that a caller passes for the returned parameters.
struct holders {
    int *count;
    char ***values;
};

/// Calls an exchange over a meeting or a deserted point, with the values in slots of 512 bytes.
template <typename Point>
harness::client_outcome call(const fsmcore_exchange &x, const Point &point, const char *function,
                             const harness::words &values,
                             const holders &returned = {nullptr, nullptr},
                             const harness::client_fault &fault = {}) {
    std::string slots;
    for (const std::string &value : values) {
        slots += value + std::string(512 - value.size(), '\0');
    }
    const int count = static_cast<int>(values.size());
    const std::string port = std::to_string(point.port);
    const auto exchange = [&] {
        if (x.where == harness::family::UNIX_SOCKET) {
            return fsmcore_requeststatic(point.path.c_str(), function, count, slots.data(),
                                         returned.count, returned.values, "5");
        }
        return fsmcore_m2mrequeststatic("127.0.0.1", port.c_str(), function, count, slots.data(),
                                        returned.count, returned.values);
    };
    return harness::watched(exchange, fault);
}

/// A message as an exchange writes it, without colours; numbered in the order of the protocol.
/// @param reason text of the system's error, for the messages that show it.
inline std::string fsmcore_message(const fsmcore_exchange &x, int number,
                                   const std::string &function, const std::string &reason = "") {
    const std::string malformed = ", not a well formed response from FSMCore";
    const std::string texts[] = {
        " no such message",
        std::string(" error opening ") + x.socket + " FSMCore clientside",
        " send writing request failed with error '" + reason + "'",
        " recv reading response failed with error '" + reason + "'",
        " strtok parsing 'Response Status: ' response tag failed",
        " error: FSMCore response not in the FSMC-NNN format",
        " error strtol with error '" + reason + "'",
        " strtok parsing 'Parameter Count: ' response tag failed",
        " number of parameters after 'Parameter Count: ' response statement is not a valid number",
        " strtok parsing 'ParamNNN Length: ' response tag failed" + malformed,
        " parameter length after 'ParamNNN Length: ' response statement is not a valid number" +
            malformed,
        " strtok parsing 'ParamNNN: ' response tag failed" + malformed,
        " strtok parsing '\\n' response tag failed" + malformed,
    };
    const std::string mark = number == 6 ? "" : "'";
    return x.tag + texts[number] + " for function " + mark + function + mark;
}
