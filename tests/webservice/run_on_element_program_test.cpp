// SERVICE_RUNONELEMENT: a caller on the controller itself may leave out the session, any other
// sends its first six entries, however many there are. The local endpoint is at a well-known port,
// so its service listens on a private machine.

#include "tests/harness/console.h"
#include "tests/webservice/http_peer.h"

#include <gtest/gtest.h>

namespace {

using namespace harness;

constexpr in_port_t WELL_KNOWN_PORT = 80;

/// The fields that entries fill, and the two that are the same in every call.
std::string request_of(const words &values) {
    const char *const names[] = {"sessionid", "idobject",  "operation",
                                 "payload",   "optionals", "hashcode"};
    std::string children;
    for (std::size_t i = 0; i < values.size(); i++) {
        children += element(names[i], values[i]);
    }
    return request_text("runonelement", children + "<callsource>COMMANDLINETOOL</callsource>"
                                                   "<waittime>7</waittime>");
}

/// A call with this list; null: without any.
words call_with(const words &options, const char *list) {
    words all = {"-t", "SOAP", "-w", "7", "-f", "service_runonelement"};
    if (list != nullptr) {
        all.insert(all.end(), {"-p", list});
    }
    all.insert(all.end(), options.begin(), options.end());
    return all;
}

const std::string ACCEPTED = http_response("runonelement", "<result>LMWS-000</result>");

TEST(RemoteElement, SendsTheFirstSix) {
    const struct {
        const char *list;
        words values;
    } rows[] = {
        {nullptr, {}},
        {"", {}},
        {"i|o|p|x|h", {"i", "o", "p", "x", "h"}},
        {"s|i|o|p|x|h|z", {"s", "i", "o", "p", "x", "h"}},
        {"s|i|o|p|x|h|1|2|3|4|5|6", {"s", "i", "o", "p", "x", "h"}},
        {"s|i||p|x|h", {"s", "i"}},
    };
    for (const auto &row : rows) {
        peer service(answering(ACCEPTED));
        expect_run(lumocmd(call_with({"-u", url_of(service)}, row.list)), "LMCM-0000\n", 0);
        EXPECT_EQ(service.finish(), "");
        EXPECT_EQ(sent_text(service), request_of(row.values));
    }
}

/// All that the program and its service have seen. The last number is the status.
std::string seen_at_the_well_known_port(const words &arguments) {
    return on_private_machine([&] {
        peer service(answering(ACCEPTED), WELL_KNOWN_PORT);
        const run_result run = lumocmd(arguments);
        service.finish();
        const http_request request = split_request(service.received());
        return request.header("Host") + " " +
               request.first_line.substr(0, request.first_line.rfind(' ')) + sent_text(service) +
               "\n" + run.output + run.errors + std::to_string(run.status);
    });
}

TEST(LocalElement, TakesFiveOrSix) {
    SKIP_WHERE_MISSING(missing_private_machine("localhost"));
    const words five = {"i", "o", "p", "x", "h"};
    const words local_five = {"NO-SESSIONID", "i", "o", "p", "x", "h"};
    const words six = {"s", "i", "o", "p", "x", "h"};
    const struct {
        const char *host; ///< null: no url, as the parser stops early at an unknown -v word
        const char *list;
        const words *values; ///< null: nothing is sent
        const char *shown = host;
    } rows[] = {
        {"localhost", "i|o|p|x|h", &local_five},
        {"localhost", "s|i|o|p|x|h", &six},
        {"localhost", "i|o|p|x", nullptr},
        {"localhost", "s|i|o|p|x|h|z", nullptr},
        {"127.0.0.1", "i|o|p|x|h", &local_five},
        {"127.0.0.1", nullptr, nullptr},
        {"127.0.0.1", "", nullptr},
        {"127.0.0.1:80", "i|o|p|x|h", &five, "127.0.0.1"}, // which is elsewhere
        {nullptr, "i|o|p|x|h", &local_five, "localhost"},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(std::string(row.shown) + " " + (row.list != nullptr ? row.list : "(none)"));
        const words options =
            row.host == nullptr
                ? words{"-v", "perhaps"}
                : words{"-u", "http://" + std::string(row.host) + "/cgi-bin/lumows"};
        EXPECT_EQ(seen_at_the_well_known_port(call_with(options, row.list)),
                  row.values == nullptr ? "(absent) \nLMCM-502\n246"
                                        : std::string(row.shown) + " POST /cgi-bin/lumows" +
                                              request_of(*row.values) + "\nLMCM-0000\n0");
    }
}

} // namespace
