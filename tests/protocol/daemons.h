// What answers: FSMCore, a daemon per gateway that the command line reaches, and the web service.

#pragma once

#include "tests/protocol/gateways.h"

#include <string>
#include <vector>

namespace protocol {

struct daemon_row {
    std::string name;   ///< in capitals
    std::string socket; ///< usual file name; empty: it listens on a TCP port
    std::string prefix; ///< opens its status texts
    int digits;         ///< least number of digits in its status texts
    int base;           ///< its error numbers are above this one
    const gateway_row *gateway = nullptr;
};

/// FSMCore, the gateways in the order of the help, the web service.
inline std::vector<daemon_row> daemons() {
    std::vector<daemon_row> rows = {{"FSMCORE", "lumo_fsmcore.socket", "FSMC-", 3, 0}};
    for (const gateway_row &row : GATEWAYS) {
        if (is_reachable(row)) {
            rows.push_back({row.name, row.socket, row.prefix, row.digits, row.base, &row});
        }
    }
    rows.push_back({"SOAP", "", "LMWS-", 3, 400});
    return rows;
}

/// A status of the daemon's own, such as EIBG-000 for 0.
inline std::string status_text(const daemon_row &daemon, int number) {
    const std::string digits = std::to_string(number);
    const auto width = static_cast<std::size_t>(daemon.digits);
    return daemon.prefix + std::string(width - std::min(width, digits.size()), '0') + digits;
}

/// The values in wire order that a request of the sample list carries, a bar between them.
inline std::string sample_values(const function_row &function) {
    words values;
    for (const std::string &line : split(sample_request(function, function.name), '\n')) {
        if (const std::size_t at = line.find(": "); at != std::string::npos) {
            values.push_back(line.substr(at + 2));
        }
    }
    return joined(words(values.begin() + 1, values.end()), "|"); // without the request line
}

} // namespace protocol
