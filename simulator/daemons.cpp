// The daemon table. Prefixes and digit counts are those of each daemon's own answers, which
// differ from the names that a client prints for the same numbers.
#include "daemons.h"

#include "fsmcore.h"
#include "gateway.h"
#include "http_front.h"

#include <algorithm>
#include <cstdlib>

namespace {

constexpr std::size_t LINE_LIMIT = std::size_t{64} * 1024;
constexpr std::size_t HTTP_LIMIT = HTTP_BODY_LIMIT + std::size_t{64} * 1024;

} // namespace

// clang-format off
const std::array<Daemon, DAEMON_COUNT> DAEMONS{{
    {DaemonId::fsmcore, "fsmcore", "FSMCORE", "lumo_fsmcore.socket", "FSMC-", 3, 0, LINE_LIMIT, exchange_fsmcore},
    {DaemonId::eib, "eib", "EIB", "lumo_eibgateway.socket", "EIBG-", 3, 100, LINE_LIMIT, exchange_gateway},
    {DaemonId::smstool, "smstool", "SMSTOOL", "lumo_smstoolgateway.socket", "SMST-", 3, 800, LINE_LIMIT, exchange_gateway},
    {DaemonId::lintronic, "lintronic", "LINTRONIC", "lumo_lintronicgateway.socket", "LINT-", 3, 1000, LINE_LIMIT, exchange_gateway},
    {DaemonId::tecnout, "tecnout", "TECNOUT", "lumo_tecnoutgateway.socket", "TECG-", 4, 1200, LINE_LIMIT, exchange_gateway},
    {DaemonId::vivaldi, "vivaldi", "VIVALDI", "lumo_vivaldigateway.socket", "VIVG-", 4, 900, LINE_LIMIT, exchange_gateway},
    {DaemonId::bentel, "bentel", "BENTEL", "lumo_bentelgateway.socket", "BENG-", 4, 1300, LINE_LIMIT, exchange_gateway},
    {DaemonId::tutondo, "tutondo", "TUTONDO", "lumo_tutondogateway.socket", "TUTG-", 4, 1500, LINE_LIMIT, exchange_gateway},
    {DaemonId::soap, "soap", "SOAP", "", "LMWS-", 3, 400, HTTP_LIMIT, exchange_http},
}};
// clang-format on

std::string format_status(const Daemon &daemon, int number) {
    const std::string digits = std::to_string(std::abs(number));
    const auto width = static_cast<std::size_t>(daemon.digits);
    std::string text(daemon.prefix);
    text += number < 0 ? "-" : "";
    text.append(width - std::min(width, digits.size()), '0');
    return text += digits;
}

int choose_status(const Conversation &conversation, int proper) {
    return conversation.behaviour.status.value_or(proper);
}

const Daemon *find_daemon(std::string_view key) {
    const auto *found = std::find_if(DAEMONS.begin(), DAEMONS.end(),
                                     [key](const Daemon &daemon) { return daemon.key == key; });
    return found == DAEMONS.end() ? nullptr : found;
}
