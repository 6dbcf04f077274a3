// The rows are in the order in which the program lists its daemons.
#include "tests/simulator/daemon_rows.h"

#include <algorithm>
#include <iterator>
#include <ostream>
#include <stdexcept>

namespace {

// clang-format off
constexpr DaemonRow DAEMONS[] = {
    {"fsmcore",   "FSMCORE",   "fsmcore",          Protocol::fsmcore, "FSMC-", 3, 0},
    {"eib",       "EIB",       "eibgateway",       Protocol::gateway, "EIBG-", 3, 100},
    {"smstool",   "SMSTOOL",   "smstoolgateway",   Protocol::gateway, "SMST-", 3, 800},
    {"lintronic", "LINTRONIC", "lintronicgateway", Protocol::gateway, "LINT-", 3, 1000},
    {"tecnout",   "TECNOUT",   "tecnoutgateway",   Protocol::gateway, "TECG-", 4, 1200},
    {"vivaldi",   "VIVALDI",   "vivaldigateway",   Protocol::gateway, "VIVG-", 4, 900},
    {"bentel",    "BENTEL",    "bentelgateway",    Protocol::gateway, "BENG-", 4, 1300},
    {"tutondo",   "TUTONDO",   "tutondogateway",   Protocol::gateway, "TUTG-", 4, 1500},
    {"soap",      "SOAP",      "",                 Protocol::service, "LMWS-", 3, 400},
};
// clang-format on

constexpr FunctionRow FUNCTIONS[] = {
    {"eib", "SENDEIBUSSETDATAGRAM",
     "SectionName: living\nDestination: 1/1/3\nEISType: 1\nPayload: 1\n", "living|1/1/3|1|1"},
    {"eib", "SENDEIBUSGETDATAGRAM",
     "SectionName: living\nDestination: 1/1/3\nEISType: 1\nPayload: 0\n", "living|1/1/3|1|0"},
    {"smstool", "SENDSMSTOOLDATAGRAM", "SectionName: gsm\nTo: +39055\nMsg: hello there\n",
     "gsm|+39055|hello there"},
    {"smstool", "RECVSMSTOOLDATAGRAM", "From: +39055\nMsg: hi\n", "+39055|hi"},
    {"lintronic", "SENDLINTRONICDATAGRAM",
     "SectionName: bus\nDevice: 01\nCommand: 002\nPayload: x\n", "bus|01|002|x"},
    {"tecnout", "SENDTECNOUTCOMMANDDATAGRAM",
     "SectionName: a\nUserCode: b\nCommand: c\nPayload: d\n", "a|b|c|d"},
    {"vivaldi", "SENDVIVALDISETDATAGRAM",
     "SectionName: s\nCentralNumber: 7\nCommand: 1\nRC20_Number: 2\nRC20_OnOff: 3\n"
     "RC20_Volume: 4\nRC20_High: 5\nRC20_Low: 6\nRC20_Channel: 7\nRC20_Cd: 8\nRC20_Track: 9\n"
     "RC20_Tuner: 10\n",
     "s|7|1|2|3|4|5|6|7|8|9|10"},
    {"vivaldi", "SENDVIVALDIGETDATAGRAM",
     "SectionName: s\nCentralNumber: 7\nCommand: 2\nRC20_Number: 2\n", "s|7|2|2"},
    {"bentel", "SENDBENTELCOMMANDDATAGRAM", "SectionName: a\nUserCode: b\nCommand: c\nPayload: d\n",
     "a|b|c|d"},
    {"tutondo", "SENDTUTONDOSETDATAGRAM",
     "SectionName: a\nCommand: c\nZone_Number: z\nPayload: p\n", "a|c|z|p"},
    {"tutondo", "SENDTUTONDOGETDATAGRAM", "SectionName: a\nCommand: c\nZone_Number: z\n", "a|c|z"},
};

std::vector<DaemonRow> rows_where(bool (*wanted)(const DaemonRow &)) {
    std::vector<DaemonRow> rows;
    std::copy_if(std::begin(DAEMONS), std::end(DAEMONS), std::back_inserter(rows), wanted);
    return rows;
}

} // namespace

constinit const std::span<const DaemonRow> DAEMON_ROWS = DAEMONS;
constinit const std::span<const FunctionRow> FUNCTION_ROWS = FUNCTIONS;

std::ostream &operator<<(std::ostream &out, const FunctionRow &row) {
    return out << row.name;
}

const DaemonRow &daemon_row(std::string_view key) {
    for (const DaemonRow &row : DAEMON_ROWS) {
        if (row.key == key) {
            return row;
        }
    }
    throw std::runtime_error("daemon_rows.cpp has no daemon " + std::string(key));
}

std::vector<DaemonRow> socket_daemons() {
    return rows_where([](const DaemonRow &row) { return !row.socket.empty(); });
}

std::vector<DaemonRow> gateways() {
    return rows_where([](const DaemonRow &row) { return row.protocol == Protocol::gateway; });
}

std::string joined_keys(const std::string &separator) {
    std::string keys;
    for (const DaemonRow &row : DAEMON_ROWS) {
        keys.append(keys.empty() ? "" : separator).append(row.key);
    }
    return keys;
}

std::string function_request(const FunctionRow &row) {
    return std::string("Request: ").append(row.name).append("\n").append(row.lines).append("\n");
}

std::string proper_request(const DaemonRow &daemon) {
    if (daemon.protocol == Protocol::fsmcore) {
        return "Request: f\nParameter Count: 0\nWaittime: 5\n\n";
    }
    for (const FunctionRow &row : FUNCTION_ROWS) {
        if (row.daemon == daemon.key) {
            return function_request(row);
        }
    }
    throw std::runtime_error("daemon_rows.cpp has no function of " + std::string(daemon.key));
}

std::string status_text(const DaemonRow &daemon, unsigned number) {
    std::string digits = std::to_string(number);
    while (digits.size() < daemon.digits) {
        digits.insert(0, "0");
    }
    return std::string(daemon.prefix) + digits;
}

std::string status_answer(const DaemonRow &daemon, unsigned number) {
    return "Response Status: " + status_text(daemon, number) + "\n" +
           (daemon.protocol == Protocol::fsmcore ? "Parameter Count: 0\n" : "");
}
