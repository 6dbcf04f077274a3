// The eight messages of every gateway exchange: the text, the code, and what becomes of the
// connection.

#include "tests/gateways/exchange_messages.h"
#include "tests/harness/console.h"
#include "tests/harness/watched_client.h"
#include "tests/protocol/gateway_calls.h"

#include <cerrno>
#include <cstring>
#include <gtest/gtest.h>
#include <poll.h>

namespace {

using namespace harness;
using namespace protocol;

const gateway_row &BENTEL = gateway_named("BENTEL");
const gateway_row &EIB = gateway_named("EIB");
const gateway_row &SMSTOOL = gateway_named("SMSTOOL");
const gateway_row &LINTRONIC = gateway_named("LINTRONIC");
const gateway_row &ECHOBUS = gateway_named("ECHOBUS");
const gateway_row &ECHOBUS_TCP = *GATEWAYS.back();

/// What one call wrote, returned and left behind.
struct outcome {
    std::string output;
    int status;
    bool left_open;
};

template <typename Point>
outcome run_exchange(const gateway_row &x, const Point &point, watched_client *client,
                     const char *function) {
    outcome result = {};
    result.output =
        captured_output([&] { result.status = call(x, point, function, NUMBERED_VALUES); });
    result.left_open = client->close_left_open();
    return result;
}

std::string reason(int number) {
    return strerror(number);
}

TEST(GatewayFailure, ConnectionRefused) {
    for (const gateway_row *each : GATEWAYS) {
        const gateway_row &x = *each;
        SCOPED_TRACE(title(x));
        const deserted_point point;
        watched_client client;
        const outcome got = run_exchange(x, point, &client, usual_function(x));
        const std::string connector =
            x.where == family::UNIX_SOCKET
                ? "utility->make_localtcpclient_socket connect failed with error '" + reason(ENOENT)
                : "utility->make_internettcpclient_socket connect failed with error '" +
                      reason(ECONNREFUSED);
        EXPECT_EQ(got.output,
                  red(connector + "'") + red(exchange_message(x, 1, usual_function(x))));
        EXPECT_EQ(got.status, x.base + 5);
    }
}

TEST(GatewayFailure, UnknownFunction) {
    for (const gateway_row *each : GATEWAYS) {
        const gateway_row &x = *each;
        SCOPED_TRACE(title(x));
        const std::string longer = std::string(usual_function(x)) + "S";
        for (const char *function : {"SENDNOTHINGDATAGRAM", "", longer.c_str()}) {
            SCOPED_TRACE(function);
            const meeting_point point(x.where, {});
            watched_client client;
            const outcome got = run_exchange(x, point, &client, function);
            EXPECT_EQ(got.output, red(exchange_message(x, 2, function)));
            EXPECT_EQ(got.status, x.base + 1);
            EXPECT_TRUE(got.left_open);
            EXPECT_EQ(point.daemon->finish(), "");
            EXPECT_EQ(point.daemon->received(), "");
        }
    }
}

TEST(GatewayFailure, SendFails) {
    for (const gateway_row *each : GATEWAYS) {
        const gateway_row &x = *each;
        SCOPED_TRACE(title(x));
        for (const int number : {EIO, ENOBUFS}) {
            const meeting_point point(x.where, {});
            watched_client client;
            client.send_error = number;
            const outcome got = run_exchange(x, point, &client, usual_function(x));
            EXPECT_EQ(got.output, red(exchange_message(x, 3, usual_function(x), reason(number))));
            EXPECT_EQ(got.status, x.base + 6);
            EXPECT_FALSE(got.left_open);
            EXPECT_EQ(client.receives, 0);
            EXPECT_EQ(point.daemon->finish(), "");
        }
    }
}

TEST(GatewayFailure, DaemonClosesBeforeTheRequest) {
    for (const gateway_row *each : GATEWAYS) {
        const gateway_row &x = *each;
        SCOPED_TRACE(title(x));
        const meeting_point point(x.where, {await_end(), reset()});
        watched_client client;
        client.before_send = [&](int connection) {
            EXPECT_EQ(point.daemon->finish(), "");
            pollfd gone = {connection, 0, 0};
            EXPECT_EQ(poll(&gone, 1, PATIENCE_MS), 1);
        };
        const outcome got = run_exchange(x, point, &client, usual_function(x));
        const int number = x.where == family::UNIX_SOCKET ? EPIPE : ECONNRESET;
        EXPECT_EQ(got.output, red(exchange_message(x, 3, usual_function(x), reason(number))));
        EXPECT_EQ(got.status, x.base + 6);
        EXPECT_FALSE(got.left_open);
    }
}

TEST(GatewayFailure, ReceiveFails) {
    for (const gateway_row *each : GATEWAYS) {
        const gateway_row &x = *each;
        SCOPED_TRACE(title(x));
        const meeting_point point(x.where, {collect_until("\n\n")});
        watched_client client;
        client.recv_error = EIO;
        const outcome got = run_exchange(x, point, &client, usual_function(x));
        EXPECT_EQ(got.output, red(exchange_message(x, 4, usual_function(x), reason(EIO))));
        EXPECT_EQ(got.status, x.base + 7);
        EXPECT_FALSE(got.left_open);
        EXPECT_EQ(client.receives, 1);
        EXPECT_EQ(point.daemon->finish(), "");
    }
}

TEST(GatewayFailure, DaemonClosesOnTheUnreadRequest) {
    for (const gateway_row *each : GATEWAYS) {
        const gateway_row &x = *each;
        SCOPED_TRACE(title(x));
        const meeting_point point(x.where, {await_bytes(), reset()});
        watched_client client;
        const outcome got = run_exchange(x, point, &client, usual_function(x));
        EXPECT_EQ(got.output, red(exchange_message(x, 4, usual_function(x), reason(ECONNRESET))));
        EXPECT_EQ(got.status, x.base + 7);
        EXPECT_FALSE(got.left_open);
        EXPECT_EQ(point.daemon->finish(), "");
    }
}

struct bad_answer {
    const char *before; ///< what stands before the prefix
    bool prefix;        ///< whether the prefix stands there
    const char *after;
    int message;
    int error_number;
    bool left_open;
};

const bad_answer BAD_ANSWERS[] = {
    {"Response State: ", true, "0000\n", 5, 0, false},
    {"Response Status: XXXX", false, "0000\n", 6, 0, false},
    {"Response Status: ", true, "12x\n", 7, 0, true},
    {"Response Status: ", true, "2147483648\n", 7, ERANGE, true},
    {"Response Status: ", true, "0000\nmore\n", 8, 0, false},
};

TEST(GatewayFailure, UnreadableAnswer) {
    for (const gateway_row *each : GATEWAYS) {
        const gateway_row &x = *each;
        SCOPED_TRACE(title(x));
        for (const bad_answer &bad : BAD_ANSWERS) {
            const std::string answer =
                std::string(bad.before) + (bad.prefix ? x.prefix : "") + bad.after;
            SCOPED_TRACE(answer);
            for (const std::string &function :
                 {std::string(usual_function(x)), lower(usual_function(x))}) {
                const meeting_point point(x.where, {collect_until("\n\n"), reply(answer)});
                watched_client client;
                const outcome got = run_exchange(x, point, &client, function.c_str());
                EXPECT_EQ(got.output, red(exchange_message(x, bad.message, function,
                                                           reason(bad.error_number))));
                EXPECT_EQ(got.status, x.base + 7);
                EXPECT_EQ(got.left_open, bad.left_open);
                EXPECT_EQ(point.daemon->finish(), "");
            }
        }
    }
}

/// Whole messages, spelt out: all of one gateway and the slips of the others.
struct spelt_message {
    const char *name;
    const gateway_row *exchange;
    int message;
    const char *text;
};

const spelt_message SPELT_MESSAGES[] = {
    {"BentelOpen", &BENTEL, 1,
     "BENTELGatewayutil->bentelgateway_local_request error opening socket BENTELGateway clientside "
     "for function 'SENDBENTELCOMMANDDATAGRAM'"},
    {"BentelUnknown", &BENTEL, 2,
     "BENTELGatewayutil->bentelgateway_local_request error function 'NOSUCH' not supported"},
    {"BentelSend", &BENTEL, 3,
     "BENTELGatewayutil->bentelgateway_local_request send writing request failed with error "
     "'Input/output error' for function 'SENDBENTELCOMMANDDATAGRAM'"},
    {"BentelReceive", &BENTEL, 4,
     "BENTELGatewayutil->bentelgateway_local_request recv reading response failed with error "
     "'Input/output error' for function 'SENDBENTELCOMMANDDATAGRAM'"},
    {"BentelTag", &BENTEL, 5,
     "BENTELGatewayutil->bentelgateway_local_request strtok parsing 'Response Status: ' response "
     "tag failed for function 'SENDBENTELCOMMANDDATAGRAM'"},
    {"BentelPrefix", &BENTEL, 6,
     "BENTELGatewayutil->bentelgateway_local_request error: BENTELGateway response not in the "
     "BENG-NNNN format for function 'SENDBENTELCOMMANDDATAGRAM'"},
    {"BentelNumber", &BENTEL, 7,
     "BENTELGatewayutil->bentelgateway_local_request error strtol with error 'Success' for "
     "function 'SENDBENTELCOMMANDDATAGRAM'"},
    {"BentelTail", &BENTEL, 8,
     "BENTELGatewayutil->bentelgateway_local_request strtok parsing '\\n' response tag failed, not "
     "a well formed response from BENTELGateway for function 'SENDBENTELCOMMANDDATAGRAM'"},
    {"EibPrefix", &EIB, 6,
     "EIBGatewayutil->eibgateway_local_request error: EIBGateway response not in the EIBG-XXX "
     "format for function SENDEIBUSSETDATAGRAM"},
    {"EibTailBlamesFsmcore", &EIB, 8,
     "EIBGatewayutil->eibgateway_local_request strtok parsing '\\n' response tag failed, not a "
     "well formed response from FSMCore for function SENDEIBUSSETDATAGRAM"},
    {"LintronicNumber", &LINTRONIC, 7,
     "LINTGatewayutil->lintronicgateway_local_request error strtol with error 'Success' for "
     "function 'SENDLINTRONICDATAGRAM'"},
    {"EchobusOpen", &ECHOBUS, 1,
     "ECHOBUSGatewayutil->echobusgateway_local_request error opening socket ECHOBUSGateway "
     "clientside for function SENDECHOBUSDATAGRAM"},
    {"EchobusOverTcpUnknown", &ECHOBUS_TCP, 2,
     "ECHOBUSGatewayutil->echobusgateway_local_request error function NOSUCH not supported"},
};

TEST(GatewayFailureRules, MessagesInFull) {
    for (const spelt_message &row : SPELT_MESSAGES) {
        SCOPED_TRACE(row.name);
        const gateway_row &x = *row.exchange;
        std::string answer;
        for (const bad_answer &bad : BAD_ANSWERS) {
            if (bad.message == row.message && bad.error_number == 0) {
                answer = std::string(bad.before) + (bad.prefix ? x.prefix : "") + bad.after;
            }
        }
        watched_client client;
        client.send_error = row.message == 3 ? EIO : 0;
        client.recv_error = row.message == 4 ? EIO : 0;
        outcome got = {};
        if (row.message == 1) {
            got = run_exchange(x, deserted_point(), &client, usual_function(x));
            got.output.erase(0, got.output.find('\n') + 1); // the connector's own line
        } else {
            const meeting_point point(
                x.where, answer.empty() ? script{} : script{collect_until("\n\n"), reply(answer)});
            got = run_exchange(x, point, &client, row.message == 2 ? "NOSUCH" : usual_function(x));
        }
        EXPECT_EQ(got.output, red(row.text));
    }
}

TEST(GatewayFailureRules, AMissingFunctionNameIsUnknown) {
    const meeting_point point(family::UNIX_SOCKET, {});
    watched_client client;
    const outcome got = run_exchange(BENTEL, point, &client, nullptr);
    EXPECT_EQ(got.output, red(exchange_message(BENTEL, 2, "(null)")));
    EXPECT_EQ(got.status, 1301);
    EXPECT_TRUE(got.left_open);
}

} // namespace
