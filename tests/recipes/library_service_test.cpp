// What lumo.sh makes of calls of the web service, where nothing that a service can write may count:
// a script stands for lumocmd, then lumocmd itself asks a simulated service.

#include "tests/recipes/stage.h"
#include "tests/simulator/simulator_process.h"
#include "tests/webservice/http_peer.h"

#include <csignal>
#include <gtest/gtest.h>

namespace {

using namespace harness;

const std::string REFUSED_CONNECTION = "SOAP 1.1 fault SOAP-ENV:Server [no subcode]\n"
                                       "\"Connection refused\"\n"
                                       "Detail: connect failed in tcp_connect()\n";
const std::string NO_SUCH_HOST = "SOAP 1.1 fault SOAP-ENV:Server [no subcode]\n"
                                 "\"Name or service not known\"\n"
                                 "Detail: getaddrinfo failed in tcp_connect()\n";
const std::string FORGED_URL = "SOAP 1.1 fault SOAP-ENV:Server [no subcode]\n\"\n" + UNUSABLE_URL;

struct service_row {
    const char *name;
    std::vector<saying> said; ///< first when called, then when asked again
    const char *outcome;
    const char *arguments = "-t SOAP -u v -f F";
    const char *asked = "<-u><-u:><-t><SOAP><-u><-u:><-f><F>"; ///< the second call, if there is one
};

void PrintTo(const service_row &row, std::ostream *out) {
    *out << row.name;
}

const saying OWN_503 = {"LMCM-503\n", 247};
const saying OWN_505 = {red("x->y error too few or too much parameters, z") + "LMCM-505\n", 249};
const saying STATUS_507 = {"LMCM-507\n", 251};
const saying NO_URL_502 = {"LMCM-502\n", 246, UNUSABLE_URL};
const saying NO_URL_508 = {"LMCM-508\n", 252, UNUSABLE_URL};
const saying UNREACHED = {UNOPENED + "EIBG-105\n", 105};

const service_row SERVICE_CALLS[] = {
    {"Success", {{"LMCM-0000\n", 0}}, "done"},
    {"Refusal", {{"LMWS-405\n", 149}}, "refused"},
    {"ConnectionRefused", {{"LMCM-502\n", 246, REFUSED_CONNECTION}}, "unknown"},
    {"NoSuchHost", {{"LMCM-508\n", 252, NO_SUCH_HOST}}, "unknown"},
    {"UnusableUrl", {NO_URL_502}, "invalid"},
    {"UnusableUrlOfARecord", {NO_URL_508}, "invalid"},
    {"UnusableUrlInAReport", {{"LMCM-502\n", 246, FORGED_URL}}, "unknown"},
    {"UnusableUrlInRed",
     {{red("x->y error url 'u' cannot be used, one like v is needed") + "LMCM-502\n", 246}},
     "unknown"},
    {"RedLineInAValue", {{green("Status: \n" + UNOPENED) + "EIBG-105\n", 105}}, "refused"},
    {"RefusedCommandLine", {{red("utility->parse_cmd_line malformed request"), 249}}, "invalid"},
    {"CutShort", {{"", 124}}, "unknown"},
    {"UnknownFunction", {OWN_503, OWN_503}, "invalid"},
    {"Services503", {OWN_503, NO_URL_502}, "refused"},
    {"WrongCount", {OWN_505, OWN_505}, "invalid"},
    {"Services505", {{"LMCM-505\n", 249}, NO_URL_508}, "refused"},
    {"Services507", {STATUS_507, NO_URL_502}, "refused"},
    {"AskedInVain", {OWN_503, {"", 124}}, "unknown"},
    {"AnyCaseAndAttached",
     {OWN_503, NO_URL_502},
     "refused",
     "-p '' -tsOAp -uv -f -u -v bad",
     "<-u><-u:><-p><><-tsOAp><-u:><-f><-u><-v><bad>"},
    {"WithoutUrl", {OWN_503, OWN_503}, "invalid", "-v bad -t soap", "<-u><-u:><-v><bad><-t><soap>"},
    {"SeveralTypes", {UNREACHED}, "unknown", "-t SOAP -t EIBLOCAL"},
    {"StatusOfSeveralTypes", {OWN_503}, "unknown", "-tEIBLOCAL -tSOAP"},
    {"ValueLikeTheType", {UNREACHED}, "unreachable", "-t EIBLOCAL -s -tSOAP -f -t -p SOAP"},
};

class ServiceCall : public testing::TestWithParam<std::tuple<service_row, shell_row>> {};

TEST_P(ServiceCall, IsNeverRepeated) {
    const auto &[row, shell] = GetParam();
    const stage stage(shell, row.said);
    const bool reachable = row.outcome != std::string("unreachable");
    const run_result seen =
        stage.run(std::string(reachable ? "" : "LUMO_TRIES=1\n") + "lumo_retry " + row.arguments +
                  " || :\nlumo_outcome\nset -- " + row.arguments +
                  "\nprintf '<%s>' \"$@\" >given\necho >>given");
    EXPECT_EQ(seen.output, std::string(row.outcome) + "\n");
    EXPECT_EQ(seen.errors, "");
    EXPECT_EQ(stage.noted("calls"),
              stage.noted("given") + (row.said.size() > 1 ? row.asked + std::string("\n") : ""));
    EXPECT_EQ(stage.noted("pauses"), "");
}

INSTANTIATE_TEST_SUITE_P(Library, ServiceCall,
                         testing::Combine(testing::ValuesIn(SERVICE_CALLS),
                                          testing::ValuesIn(SHELLS)),
                         [](const auto &row) {
                             return std::string(std::get<0>(row.param).name) + "_" +
                                    std::get<1>(row.param).name;
                         });

/// What lumocmd itself is asked, and the requests that come of it.
struct exchange_row {
    const char *name;
    words options; ///< the simulator's
    const char *arguments;
    const char *outcome;
    std::string requests;
};

void PrintTo(const exchange_row &row, std::ostream *out) {
    *out << row.name;
}

const std::string RELAYED =
    http_answer(envelope(fault_element("SOAP-ENV:Server", "Connection refused",
                                       element("detail", "connect failed in tcp_connect()"))),
                "500 Internal Server Error");

const exchange_row EXCHANGES[] = {
    {"UnknownFunction", {}, "-f SERVICE_NONE", "LMCM-503 invalid", ""},
    {"WrongCount", {}, "-f SERVICE_LOGIN -p demo", "LMCM-505 invalid", ""},
    {"UnusableUrl", {}, "-f SERVICE_TEST -u localhost", "LMCM-502 invalid", ""},
    {"RefusedConnection", {"--refuse", "soap"}, "-f SERVICE_TEST", "LMCM-502 unknown", ""},
    {"RelayedFault",
     {"--answer-raw", "soap=" + RELAYED},
     "-f SERVICE_TEST",
     "LMCM-502 unknown",
     "SOAP: service-test 0 -> " + std::to_string(RELAYED.size()) + " raw bytes\n"},
    {"Services503",
     {"--answer", "soap=503"},
     "-f SERVICE_TEST -v bad",
     "LMCM-503 refused",
     "SOAP: service-test 0 -> LMWS-503\n"},
};

class ServiceExchange : public testing::TestWithParam<std::tuple<exchange_row, shell_row>> {};

TEST_P(ServiceExchange, EndsAsTheProgramFoundOut) {
    const auto &[row, shell] = GetParam();
    running_simulator simulator(row.options);
    const std::string url =
        "http://127.0.0.1:" + std::to_string(simulator.port) + "/cgi-bin/lumows";
    std::string script = std::string("set -eu\n. ") + INSTALLED_LIBRARY + "\n";
    for (const char *verbose : {"ON", "OFF"}) {
        script += std::string("lumo_retry -v ") + verbose + " -t SOAP -u " + url + " " +
                  row.arguments + " || echo \"$(lumo_status) $(lumo_outcome)\"\n";
    }
    const run_result seen = shell_room(shell).run(script, simulator.home.path);
    const std::string line = std::string(row.outcome) + "\n";
    EXPECT_EQ(seen.output, line + line);
    EXPECT_EQ(seen.errors, "");
    EXPECT_EQ(end_program(simulator.program, SIGTERM).status, 0) << simulator.program.errors();
    const std::string said = simulator.program.output();
    const std::string ready = "\nready\n";
    EXPECT_EQ(said.substr(said.find(ready) + ready.size()),
              row.requests + row.requests + "stopped\n");
}

INSTANTIATE_TEST_SUITE_P(Library, ServiceExchange,
                         testing::Combine(testing::ValuesIn(EXCHANGES), testing::ValuesIn(SHELLS)),
                         [](const auto &row) {
                             return std::string(std::get<0>(row.param).name) + "_" +
                                    std::get<1>(row.param).name;
                         });

} // namespace
