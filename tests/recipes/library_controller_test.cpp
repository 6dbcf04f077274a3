// lumo.sh with lumocmd itself, in every shell against a simulated controller.

#include "tests/recipes/shell_room.h"
#include "tests/webservice/http_peer.h"

namespace {

using namespace harness;

/// What lumocmd itself is asked, and the requests that come of it.
struct exchange_row {
    words options; ///< the simulator's
    const char *arguments;
    const char *outcome;
    std::string requests = {};
};

const std::string RELAYED =
    http_answer(envelope(fault_element("SOAP-ENV:Server", "Connection refused",
                                       element("detail", "connect failed in tcp_connect()"))),
                "500 Internal Server Error");

const exchange_row EXCHANGES[] = {
    {{}, "-f SERVICE_NONE", "LMCM-503 invalid"},
    {{}, "-f SERVICE_LOGIN -p demo", "LMCM-505 invalid"},
    {{}, "-f SERVICE_TEST -u localhost", "LMCM-502 invalid"},
    {{"--refuse", "soap"}, "-f SERVICE_TEST", "LMCM-502 unknown"},
    {{"--answer-raw", "soap=" + RELAYED},
     "-f SERVICE_TEST",
     "LMCM-502 unknown",
     "SOAP: service-test 0 -> " + std::to_string(RELAYED.size()) + " raw bytes\n"},
    {{"--answer", "soap=503"},
     "-f SERVICE_TEST -v bad",
     "LMCM-503 refused",
     "SOAP: service-test 0 -> LMWS-503\n"},
};

TEST_P(InShell, CallsOfTheServiceEndAsTheProgramFoundOut) {
    for (const exchange_row &row : EXCHANGES) {
        SCOPED_TRACE(std::string(row.arguments) + " " + row.outcome);
        running_simulator simulator(row.options);
        std::string script;
        for (const char *verbose : {"ON", "OFF"}) {
            script += std::string("lumo_retry -v ") + verbose + " -t SOAP -u " + simulator.url +
                      " " + row.arguments + " || echo \"$(lumo_status) $(lumo_outcome)\"\n";
        }
        const run_result seen = shell_room(GetParam()).run_with_library(script);
        const std::string line = std::string(row.outcome) + "\n";
        EXPECT_EQ(seen.output, line + line);
        EXPECT_EQ(seen.errors, "");
        EXPECT_EQ(simulator.end(), row.requests + row.requests);
    }
}

/// Daemons that are there get no byte, and those that are not there are told apart from them.
TEST_P(InShell, AliveAsksEachDaemon) {
    running_simulator simulator({"--refuse", "tutondo", "--answer", "soap=403"});
    const run_result seen = shell_room(GetParam())
                                .run_with_library(R"sh(
try() {
    returned=0
    lumo_alive "$@" || returned=$?
    echo "$1 $returned $(lumo_status)"
}
LUMO_DIRECTORY=$PWD
try FSMCORE lumo_fsmcore.socket
for name in eib smstool lintronic tecnout vivaldi bentel tutondo; do
    try "${name}local" "lumo_${name}gateway.socket"
done
try FSMCORE nowhere.socket
try SOAP )sh" + simulator.url,
                                                  simulator.home.path);
    EXPECT_EQ(seen.output, "FSMCORE 0 EIBG-106\neiblocal 0 EIBG-106\nsmstoollocal 0 SMST-806\n"
                           "lintroniclocal 0 LINT-1006\ntecnoutlocal 0 TECN-1206\n"
                           "vivaldilocal 0 VIVG-0906\nbentellocal 0 BENT-1306\n"
                           "tutondolocal 1 TUTG-1505\nFSMCORE 1 EIBG-105\nSOAP 0 LMWS-403\n");
    EXPECT_EQ(seen.errors, "");
    for (const char *name :
         {"FSMCORE", "EIB", "SMSTOOL", "LINTRONIC", "TECNOUT", "VIVALDI", "BENTEL"}) {
        const std::string line = std::string("\n") + name +
                                 ": no request, the client closed before the end of its request\n";
        EXPECT_TRUE(simulator.program.wait_for_output(line)) << simulator.program.output();
    }
}

} // namespace
