#include "tests/faults/requests.h"

#include "tests/gateways/exchange_messages.h"

#include <cstring>

namespace fault_tests {

namespace {

socket_request gateway(const exchange_row &exchange, const char *keyword, const char *selected,
                       const char *parameters, const char *lines, const char *connect_text,
                       const char *send_text, const char *answer_text) {
    const std::string function = exchange.function;
    return {.keyword = keyword,
            .selected = selected,
            .function = exchange.function,
            .parameters = parameters,
            .request = "Request: " + function + "\n" + lines + "\n",
            .prefix = exchange.prefix,
            .more = "",
            .open_failed = exchange_message(exchange, 1, function),
            .send_failed = exchange_message(exchange, 3, function, "%s"),
            .receive_failed = exchange_message(exchange, 4, function, "%s"),
            .no_status_line = exchange_message(exchange, 5, function),
            .wrong_prefix = exchange_message(exchange, 6, function),
            .connect_status = exchange.base + 5,
            .connect_text = connect_text,
            .send_status = exchange.base + 6,
            .send_text = send_text,
            .answer_status = exchange.base + 7,
            .answer_text = answer_text};
}

socket_request fsmcore() {
    const std::string tag = "FSMCoreutil->fsmcore_requeststatic ";
    return {.keyword = "FSMCORE",
            .selected = "FSMCore local request selected",
            .function = "GETSTATE",
            .parameters = "12|on",
            .request = "Request: GETSTATE\nParameter Count: 2\nParam000 Length: 2\nParam000:\n12\n"
                       "Param001 Length: 2\nParam001:\non\nWaittime: 5\n\n",
            .prefix = "FSMC-",
            .more = "Parameter Count: 2\nParam000 Length: 3\nParam000:\nyes\nParam001 Length: 2\n"
                    "Param001:\nno\n",
            .open_failed = tag + "error opening socket FSMCore clientside for function 'GETSTATE'",
            .send_failed =
                tag + "send writing request failed with error '%s' for function 'GETSTATE'",
            .receive_failed =
                tag + "recv reading response failed with error '%s' for function 'GETSTATE'",
            .no_status_line = tag + "strtok parsing 'Response Status: ' response tag failed for "
                                    "function 'GETSTATE'",
            .wrong_prefix = tag + "error: FSMCore response not in the FSMC-NNN format for "
                                  "function 'GETSTATE'",
            .connect_status = 6,
            .connect_text = "FSMC-006\n",
            .send_status = 7,
            .send_text = "FSMC-007\n",
            .answer_status = 8,
            .answer_text = "FSMC-008\n"};
}

} // namespace

const std::vector<socket_request> &socket_requests() {
    static const std::vector<socket_request> all = {
        gateway(EIB, "EIBLOCAL", "EIB Local request selected", "hall|1/2/3|1|on",
                "SectionName: hall\nDestination: 1/2/3\nEISType: 1\nPayload: on\n", "EIBG-105\n",
                "EIBG-106\n", "EIBG-107\n"),
        gateway(SMSTOOL, "SMSTOOLLOCAL", "SMSTOOL Local request selected", "gsm|+39055|good day",
                "SectionName: gsm\nTo: +39055\nMsg: good day\n", "SMST-805\n", "SMST-806\n",
                "SMST-807\n"),
        gateway(LINTRONIC, "LINTRONICLOCAL", "LINTRONIC Local request selected", "cellar|07|012|on",
                "SectionName: cellar\nDevice: 07\nCommand: 012\nPayload: on\n", "LINT-1005\n",
                "LINT-1006\n", "LINT-1007\n"),
        gateway(TECNOUT, "TECNOUTLOCAL", "TECNOUT Local request selected", "alarm|1234|arm|all",
                "SectionName: alarm\nUserCode: 1234\nCommand: arm\nPayload: all\n", "TECN-1205\n",
                "TECN-1206\n", "TECN-1207\n"),
        gateway(VIVALDI, "VIVALDILOCAL", "VIVALDI Local request selected",
                "music|1|2|3|4|5|6|7|8|9|10",
                "SectionName: music\nCentralNumber: 1\nCommand: 1\nRC20_Number: 2\nRC20_OnOff: 3\n"
                "RC20_Volume: 4\nRC20_High: 5\nRC20_Low: 6\nRC20_Channel: 7\nRC20_Cd: 8\n"
                "RC20_Track: 9\nRC20_Tuner: 10\n",
                "VIVG-0905\n", "VIVG-0906\n", "VIVG-0907\n"),
        gateway(BENTEL, "BENTELLOCAL", "BENTEL Local request selected", "alarm|1234|arm|all",
                "SectionName: alarm\nUserCode: 1234\nCommand: arm\nPayload: all\n", "BENT-1305\n",
                "BENT-1306\n", "BENT-1307\n"),
        gateway(TUTONDO, "TUTONDOLOCAL", "TUTONDO Local request selected", "music|3|volume|20",
                "SectionName: music\nCommand: volume\nZone_Number: 3\nPayload: 20\n", "TUTG-1505\n",
                "TUTG-1506\n", "TUTG-1507\n"),
        fsmcore()};
    return all;
}

harness::words arguments_of(const socket_request &request, const std::string &path) {
    return {"-v", "ON",
            "-t", request.keyword,
            "-s", path,
            "-f", request.function,
            "-p", request.parameters};
}

std::string progress_of(const socket_request &request, const std::string &path, pid_t pid) {
    using harness::green;
    return green(pid, std::string("[lumocmd] ") + request.selected) +
           green(pid, "[lumocmd] Socket selected: " + path) +
           green(pid, std::string("[lumocmd] Function selected: ") + request.function) +
           green(pid, std::string("[lumocmd] Parameters selected: ") + request.parameters);
}

std::string answer_of(const socket_request &request, const std::string &number) {
    return std::string("Response Status: ") + request.prefix + number + "\n" + request.more;
}

std::string with_reason(const std::string &message, int error) {
    std::string whole = message;
    return whole.replace(whole.find("%s"), 2, strerror(error));
}

} // namespace fault_tests
