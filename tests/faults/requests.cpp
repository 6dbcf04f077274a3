#include "tests/faults/requests.h"

#include "tests/gateways/exchange_messages.h"

#include <cstring>

namespace fault_tests {

namespace {

socket_request gateway(const protocol::gateway_row &row) {
    const protocol::function_row &function = row.functions.front();
    return {.keyword = std::string(row.name) + "LOCAL",
            .selected = std::string(row.name) + " Local request selected",
            .function = function.name,
            .parameters = function.sample,
            .request = protocol::sample_request(function, function.name),
            .prefix = row.prefix,
            .more = "",
            .open_failed = exchange_message(row, 1, function.name),
            .send_failed = exchange_message(row, 3, function.name, "%s"),
            .receive_failed = exchange_message(row, 4, function.name, "%s"),
            .no_status_line = exchange_message(row, 5, function.name),
            .wrong_prefix = exchange_message(row, 6, function.name),
            .connect_status = row.base + 5,
            .connect_text = protocol::shown_code(row, row.base + 5) + "\n",
            .send_status = row.base + 6,
            .send_text = protocol::shown_code(row, row.base + 6) + "\n",
            .answer_status = row.base + 7,
            .answer_text = protocol::shown_code(row, row.base + 7) + "\n"};
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
    static const std::vector<socket_request> all = [] {
        std::vector<socket_request> requests = {fsmcore()};
        for (const protocol::gateway_row *row : protocol::GATEWAYS) {
            if (is_reachable(*row)) {
                requests.push_back(gateway(*row));
            }
        }
        return requests;
    }();
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
