// The two FSMCore exchanges as their callers know them, and their messages.

#pragma once

#include "fsmcore/FSMCoreutil.h"
#include "tests/harness/meeting_point.h"

#include <cstring>
#include <string>
#include <vector>

/// Values in consecutive slots of 512 bytes.
struct value_slots {
    explicit value_slots(const std::vector<std::string> &values)
        : count(static_cast<int>(values.size())), bytes(values.size() * 512 + 1) {
        for (std::size_t i = 0; i < values.size(); i++) {
            memcpy(bytes.data() + i * 512, values[i].data(), values[i].size());
        }
    }
    int count;
    std::vector<char> bytes;
};

/// The holders that a caller passes for the returned parameters.
struct holders {
    int *count;
    char ***values;
};

struct fsmcore_exchange {
    const char *name;
    harness::family where;
    const char *tag;
    const char *waittime_line;
    const char *open_message; ///< behind the tag, up to the function name
    int (*call)(const char *path, const char *port, const char *function, const value_slots &slots,
                const holders &returned);
};

inline const fsmcore_exchange LOCAL = {"Local",
                                       harness::family::UNIX_SOCKET,
                                       "FSMCoreutil->fsmcore_requeststatic",
                                       "Waittime: 5\n",
                                       " error opening socket FSMCore clientside for function ",
                                       [](const char *path, const char *, const char *function,
                                          const value_slots &slots, const holders &returned) {
                                           return fsmcore_requeststatic(
                                               path, function, slots.count, slots.bytes.data(),
                                               returned.count, returned.values, "5");
                                       }};
inline const fsmcore_exchange REMOTE = {
    "Remote",
    harness::family::LOOPBACK,
    "FSMCoreutil->fsmcore_m2mrequeststatic",
    "",
    " error opening remote socket FSMCore clientside for function ",
    [](const char *, const char *port, const char *function, const value_slots &slots,
       const holders &returned) {
        return fsmcore_m2mrequeststatic("127.0.0.1", port, function, slots.count,
                                        slots.bytes.data(), returned.count, returned.values);
    }};
inline const fsmcore_exchange *const FSMCORE_EXCHANGES[] = {&LOCAL, &REMOTE};

template <typename Point>
int call(const fsmcore_exchange &x, const Point &point, const char *function,
         const std::vector<std::string> &values, const holders &returned) {
    return x.call(point.path.c_str(), std::to_string(point.port).c_str(), function,
                  value_slots(values), returned);
}

/// A message as an exchange writes it, without colours; numbered in the order of the protocol.
inline std::string fsmcore_message(const fsmcore_exchange &x, int number,
                                   const std::string &function, const std::string &reason = "") {
    const std::string tag = x.tag;
    const std::string shown = "'" + function + "'";
    switch (number) {
    case 1:
        return tag + x.open_message + shown;
    case 2:
        return tag + " send writing request failed with error '" + reason + "' for function " +
               shown;
    case 3:
        return tag + " recv reading response failed with error '" + reason + "' for function " +
               shown;
    case 4:
        return tag + " strtok parsing 'Response Status: ' response tag failed for function " +
               shown;
    case 5:
        return tag + " error: FSMCore response not in the FSMC-NNN format for function " + shown;
    case 6:
        return tag + " error strtol with error '" + reason + "' for function " + function;
    case 7:
        return tag + " strtok parsing 'Parameter Count: ' response tag failed for function " +
               shown;
    case 8:
        return tag +
               " number of parameters after 'Parameter Count: ' response statement is not a valid "
               "number for function " +
               shown;
    case 9:
        return tag +
               " strtok parsing 'ParamNNN Length: ' response tag failed, not a well formed "
               "response from FSMCore for function " +
               shown;
    case 10:
        return tag +
               " parameter length after 'ParamNNN Length: ' response statement is not a valid "
               "number, not a well formed response from FSMCore for function " +
               shown;
    case 11:
        return tag +
               " strtok parsing 'ParamNNN: ' response tag failed, not a well formed response from "
               "FSMCore for function " +
               shown;
    case 12:
        return tag +
               " strtok parsing '\\n' response tag failed, not a well formed response from FSMCore "
               "for function " +
               shown;
    }
    return "no such message";
}
