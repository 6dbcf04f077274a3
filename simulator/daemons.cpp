// The daemon table, and the requests of each gateway with their exact header lines. A new gateway
// or function needs rows here and nothing elsewhere. Prefixes and digit counts are those of each
// daemon's own answers, which differ from the names that a client prints for the same numbers.
#include "simulator/daemons.h"

#include "simulator/home.h"

#include <algorithm>
#include <cstdlib>

namespace {

constexpr std::size_t LINE_LIMIT = std::size_t{64} * 1024;
constexpr std::size_t HTTP_LIMIT = HTTP_BODY_LIMIT + std::size_t{64} * 1024;

constexpr const char *EIB_LINES = "SectionName Destination EISType Payload";
constexpr const char *ALARM_LINES = "SectionName UserCode Command Payload";

constexpr linked_lines EIB_LINKED = {{"Destination"}, "Payload", "Payload"};
constexpr linked_lines LINTRONIC_LINKED = {{"Device"}, "Payload", "Payload"};
constexpr linked_lines VIVALDI_LINKED = {
    {"CentralNumber", "RC20_Number"}, "RC20_OnOff", "RC20_Volume"};
constexpr linked_lines TUTONDO_LINKED = {{"Zone_Number"}, "Payload", "Payload"};

constexpr gateway_request EIB_REQUESTS[] = {
    {"SENDEIBUSSETDATAGRAM", EIB_LINES, "living|1/1/3|1|1", &EIB_LINKED},
    {"SENDEIBUSGETDATAGRAM", EIB_LINES, "living|1/1/3|1|0"}};
constexpr gateway_request SMSTOOL_REQUESTS[] = {
    {"SENDSMSTOOLDATAGRAM", "SectionName To Msg", "modem|+390550001|hello"},
    {"RECVSMSTOOLDATAGRAM", "From Msg", "+390550001|hello"}};
constexpr gateway_request LINTRONIC_REQUESTS[] = {{"SENDLINTRONICDATAGRAM",
                                                   "SectionName Device:2 Command:3 Payload",
                                                   "garden|07|012|on", &LINTRONIC_LINKED}};
constexpr gateway_request TECNOUT_REQUESTS[] = {
    {"SENDTECNOUTCOMMANDDATAGRAM", ALARM_LINES, "alarm|1234|arm|all"}};
constexpr gateway_request VIVALDI_REQUESTS[] = {
    {"SENDVIVALDISETDATAGRAM",
     "SectionName CentralNumber Command=1 RC20_Number RC20_OnOff RC20_Volume RC20_High RC20_Low "
     "RC20_Channel RC20_Cd RC20_Track RC20_Tuner",
     "audio|1|4|1|40|5|5|1|1|1|1", &VIVALDI_LINKED},
    {"SENDVIVALDIGETDATAGRAM", "SectionName CentralNumber Command=2 RC20_Number"}};
constexpr gateway_request BENTEL_REQUESTS[] = {
    {"SENDBENTELCOMMANDDATAGRAM", ALARM_LINES, "alarm|1234|arm|all"}};
// The zone follows the command on the wire, whatever the order in which users name them.
constexpr gateway_request TUTONDO_REQUESTS[] = {
    {"SENDTUTONDOSETDATAGRAM", "SectionName Command Zone_Number Payload", "audio|3|VOLUME|20",
     &TUTONDO_LINKED},
    {"SENDTUTONDOGETDATAGRAM", "SectionName Command Zone_Number", "audio|3|VOLUME|0"}};

/// In the order of arrival_kind.
constexpr const char *ARRIVAL_WORDS[] = {"",
                                         "the client closed before the end of its request",
                                         "the client took too long over its request",
                                         "the simulator shuts down",
                                         "the request is too long",
                                         "the connection broke"};

// clang-format off
constexpr daemon_row DAEMON_ROWS[] = {
    {"fsmcore", "FSMCORE", "lumo_fsmcore.socket", "FSMC-", 3, 0, LINE_LIMIT, fsmcore_progress, answer_fsmcore, "FSMCORE"},
    {"eib", "EIB", "lumo_eibgateway.socket", "EIBG-", 3, 100, LINE_LIMIT, gateway_progress, answer_gateway, "EIBLOCAL", EIB_REQUESTS},
    {"smstool", "SMSTOOL", "lumo_smstoolgateway.socket", "SMST-", 3, 800, LINE_LIMIT, gateway_progress, answer_gateway, "SMSTOOLLOCAL", SMSTOOL_REQUESTS},
    {"lintronic", "LINTRONIC", "lumo_lintronicgateway.socket", "LINT-", 3, 1000, LINE_LIMIT, gateway_progress, answer_gateway, "LINTRONICLOCAL", LINTRONIC_REQUESTS},
    {"tecnout", "TECNOUT", "lumo_tecnoutgateway.socket", "TECG-", 4, 1200, LINE_LIMIT, gateway_progress, answer_gateway, "TECNOUTLOCAL", TECNOUT_REQUESTS},
    {"vivaldi", "VIVALDI", "lumo_vivaldigateway.socket", "VIVG-", 4, 900, LINE_LIMIT, gateway_progress, answer_gateway, "VIVALDILOCAL", VIVALDI_REQUESTS},
    {"bentel", "BENTEL", "lumo_bentelgateway.socket", "BENG-", 4, 1300, LINE_LIMIT, gateway_progress, answer_gateway, "BENTELLOCAL", BENTEL_REQUESTS},
    {"tutondo", "TUTONDO", "lumo_tutondogateway.socket", "TUTG-", 4, 1500, LINE_LIMIT, gateway_progress, answer_gateway, "TUTONDOLOCAL", TUTONDO_REQUESTS},
    {"soap", "SOAP", "", "LMWS-", 3, 400, HTTP_LIMIT, http_progress, answer_http, "SOAP"},
};
// clang-format on

} // namespace

constinit const std::span<const daemon_row> DAEMONS = DAEMON_ROWS;

std::size_t row_of(const daemon_row &daemon) {
    return static_cast<std::size_t>(&daemon - DAEMONS.data());
}

std::string format_status(const daemon_row &daemon, int number) {
    const std::string digits = std::to_string(std::abs(number));
    const auto width = static_cast<std::size_t>(daemon.digits);
    std::string text(daemon.prefix);
    text += number < 0 ? "-" : "";
    text.append(width - std::min(width, digits.size()), '0');
    return text += digits;
}

int choose_status(const daemon_conversation &conversation, int error) {
    const std::vector<int> &told = conversation.behaviour.statuses;
    std::size_t &given = conversation.home.statuses_given[conversation.daemon.key];
    if (told.empty() || given >= static_cast<std::size_t>(conversation.behaviour.answers)) {
        return error == 0 ? 0 : conversation.daemon.base + error;
    }
    return told[std::min(given++, told.size() - 1)];
}

void answer_status(daemon_conversation &conversation, int error, const std::string &complaint) {
    const std::string status =
        format_status(conversation.daemon, choose_status(conversation, error));
    conversation.exchange.outcome = complaint.empty() ? status : status + " (" + complaint + ")";
    conversation.exchange.answer = "Response Status: " + status + "\n";
}

const char *describe_arrival(arrival_kind arrival) {
    return ARRIVAL_WORDS[static_cast<std::size_t>(arrival)];
}

const daemon_row *find_daemon(std::string_view key) {
    const auto found = std::ranges::find(DAEMONS, key, &daemon_row::key);
    return found == DAEMONS.end() ? nullptr : &*found;
}

std::string daemon_keys(const char *separator) {
    std::string keys;
    for (const daemon_row &daemon : DAEMONS) {
        keys.append(keys.empty() ? "" : separator).append(daemon.key);
    }
    return keys;
}
