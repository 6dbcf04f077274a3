// How many entries a function takes: a wrong list is refused with its message and nothing is sent.

#include "tests/harness/console.h"
#include "tests/webservice/http_peer.h"

#include <gtest/gtest.h>

namespace {

using namespace harness;

const char *const BEGINNING =
    "soapcallsclientutil->make_webservice_request error too few or too much parameters, ";

constexpr int MALFORMED = 505 & 0xff;

struct count_case {
    const char *name;
    const char *function;
    int count;
    const char *needed; ///< what the message asks for
};

const count_case COUNT_CASES[] = {
    {"GetElementStatus", "SERVICE_GETELEMENTSTATUS", 2,
     "sessionID, idobject, retrivefromdevice are needed"},
    {"GetElementStatusArray", "SERVICE_GETELEMENTSTATUSARRAY", 1, "sessionID, idobject is needed"},
    {"InstallCrontab", "SERVICE_INSTALLCRONTAB", 2, "sessionID, newcrontabfile is needed"},
    {"ElementHasChanged", "SERVICE_ELEMENTHASCHANGED", 3,
     "idobject, idcaller, currentvalue are needed"},
    {"SwapOnDemand", "SERVICE_SWAPONDEMAND", 2, "sessionID, payload is needed"},
    {"UploadLumolFile", "SERVICE_UPLOADLUMOLFILE", 2, "sessionID, LumoLFile is needed"},
    {"ObjectCyclesAvoidance", "SERVICE_OBJECTCYCLESAVOIDANCE", 2,
     "IdObjectSource, IdObjectDestination are needed"},
    {"Search4Neighbours", "SERVICE_SEARCH4NEIGHBOURS", 2, "ipmcast, port are needed"},
    {"Attach2Neighbour", "SERVICE_ATTACH2NEIGHBOUR", 5,
     "remoteip, remoteport, neighbouruid, neighbourname, neighbouroptionals are needed"},
    {"Detach2Neighbour", "SERVICE_DETACH2NEIGHBOUR", 3,
     "remoteip, remoteport, neighbouruid are needed"},
    {"Discover2Neighbour", "SERVICE_DISCOVER2NEIGHBOUR", 3,
     "remoteip, remoteport, neighbouruid are needed"},
    {"OpenObjectChannel", "SERVICE_OPENOBJECTCHANNEL", 6,
     "remoteip, remoteport, idremoteinterface, nameremoteinterface, typeremoteinterface, "
     "idlocalinterface are needed"},
    {"AbbMacReadTagData", "SERVICE_ABBMACREADTAGDATA", 2, "sessionID, idtag-programmer is needed"},
    {"DatabaseSocketOperation", "SERVICE_DATABASESOCKETOPERATION", 6,
     "client_address, sessionID, function, type, statement_len, statement are needed"},
    {"RetrieveConfiguration", "SERVICE_RETRIEVECONFIGURATION", 1, "sessionID is needed"},
    {"Login", "SERVICE_LOGIN", 2, "user, pass are needed"},
    {"RetrieveMessages", "SERVICE_RETRIEVEMESSAGES", 5,
     "sessionID, type, count, from, to are needed"},
    {"SetTimeSchedule", "SERVICE_KELTOCLIMATEEVENTSETTIMESCHEDULE", 5,
     "sessionID, id-object, mode, type, schedule are needed"},
    {"GetTimeSchedule", "SERVICE_KELTOCLIMATEEVENTGETTIMESCHEDULE", 6,
     "sessionID, id-object, mode, type, weekday, season are needed"},
    {"GetUserGrants", "SERVICE_KELTOSAIGETUSERGRANTS", 2, "sessionID, pin are needed"},
    {"StopAlarm", "SERVICE_KELTOSAISTOPALARM", 2, "sessionID, pin are needed"},
    {"MultiDatabaseSocketOperation", "SERVICE_MULTIDATABASESOCKETOPERATION", 7,
     "client_address, sessionID, function, type, statement_len, statement, databaseport are "
     "needed"},
    {"ReloadDailySchedule", "SERVICE_RELOADDAILYSCHEDULE", 1, "objectID is needed"},
    {"CheckLogged", "SERVICE_CHECKLOGGED", 2, "Username, SessionID are needed"},
    {"FlushOnDemand", "SERVICE_FLUSHONDEMAND", 1, "payload is needed"},
};
// All functions but RUNONELEMENT and the seven that take no list.
static_assert(std::size(COUNT_CASES) == 33 - 1 - 7);

std::string list_of(int count) {
    std::string list;
    for (int i = 0; i < count; i++) {
        list += (i == 0 ? "" : "|") + std::to_string(i);
    }
    return list;
}

class EntryCount : public testing::TestWithParam<count_case> {
  protected:
    /// The list must be refused without a connection.
    static void refuses(const words &list_option) {
        peer service({close_connection()});
        words further = {"-f", GetParam().function};
        further.insert(further.end(), list_option.begin(), list_option.end());
        const run_result run = call_service(service, further);
        EXPECT_EQ(service.finish_unvisited(), "");
        EXPECT_EQ(run.output, red(std::string(BEGINNING) + GetParam().needed) + "LMCM-505\n");
        EXPECT_EQ(run.errors, "");
        EXPECT_EQ(run.status, MALFORMED);
    }
};

TEST_P(EntryCount, OneTooFew) {
    refuses({"-p", list_of(GetParam().count - 1)});
}

TEST_P(EntryCount, OneTooMany) {
    refuses({"-p", list_of(GetParam().count + 1)});
}

TEST_P(EntryCount, NoList) {
    refuses({});
}

TEST_P(EntryCount, EmptyList) {
    refuses({"-p", ""});
}

TEST_P(EntryCount, EmptyFirstEntryEndsTheList) {
    refuses({"-p", "|" + list_of(GetParam().count)});
}

TEST_P(EntryCount, RightCountIsSent) {
    peer service(after_request({close_connection()}));
    const run_result run =
        call_service(service, {"-f", GetParam().function, "-p", list_of(GetParam().count) + "|"});
    EXPECT_EQ(service.finish(), "");
    EXPECT_EQ(split_request(service.received()).method, "POST");
    EXPECT_NE(run.status, MALFORMED);
}

INSTANTIATE_TEST_SUITE_P(Table, EntryCount, testing::ValuesIn(COUNT_CASES),
                         [](const auto &row) { return row.param.name; });

TEST(EntryCountMessage, BearsTheTagWhenVerbose) {
    peer service({close_connection()});
    const run_result run =
        call_service(service, {"-v", "ON", "-f", "service_login", "-p", "a|b|c"});
    EXPECT_EQ(service.finish_unvisited(), "");
    EXPECT_EQ(run.output,
              green(run.pid, "[lumocmd] Function selected: service_login") +
                  green(run.pid, "[lumocmd] Parameters selected: a|b|c") +
                  tagged_red(run.pid, std::string(BEGINNING) + "user, pass are needed") +
                  "LMCM-505\n");
    EXPECT_EQ(run.status, MALFORMED);
}

struct unlisted_case {
    const char *name;
    const char *operation;
    const char *children;
};

/// The functions that do not read their list.
const unlisted_case UNLISTED_CASES[] = {
    {"VersionInfo", "versioninfo", "<waittime>0</waittime>"},
    {"SystemInfo", "systeminfo", "<waittime>0</waittime>"},
    {"Test", "test", "<waittime>0</waittime>"},
    {"RunProductTests", "keltorunproducttests", ""},
    {"RunDailySchedule", "rundailyschedule", "<waittime>0</waittime>"},
    {"ReloadAllDailySchedule", "reloadalldailyschedule", "<waittime>0</waittime>"},
    {"LoginDataReload", "logindatareload", "<waittime>0</waittime>"},
};

class UnreadList : public testing::TestWithParam<unlisted_case> {};

TEST_P(UnreadList, IsIgnored) {
    const unlisted_case &row = GetParam();
    peer service(answering(
        http_answer(envelope(response_element(row.operation, "<result>LMWS-401</result>"
                                                             "<results>LMWS-401</results>")))));
    const run_result run = call_service(
        service, {"-f", std::string("SERVICE_") + row.operation, "-p", "one||three|four|five"});
    EXPECT_EQ(service.finish(), "");
    const std::string body = split_request(service.received()).body;
    EXPECT_EQ(body.substr(body.find('\n') + 1), request_text(row.operation, row.children));
    EXPECT_EQ(run.output, "LMWS-401\n");
    EXPECT_EQ(run.errors, "");
    EXPECT_EQ(run.status, 401 & 0xff);
}

INSTANTIATE_TEST_SUITE_P(Table, UnreadList, testing::ValuesIn(UNLISTED_CASES),
                         [](const auto &row) { return row.param.name; });

struct unknown_case {
    const char *name;
    words function_option;
};

const unknown_case UNKNOWN_CASES[] = {
    {"OtherName", {"-f", "SERVICE_NOSUCH"}},
    {"EmptyName", {"-f", ""}},
    {"LongerName", {"-f", "SERVICE_TESTS"}},
    {"ShorterName", {"-f", "SERVICE_TES"}},
    {"OperationName", {"-f", "service-test"}},
    {"BlankBehind", {"-f", "SERVICE_TEST "}},
    {"WithList", {"-f", "SERVICE_NOSUCH", "-p", "a|b"}},
    {"NoNameAfterAnEarlyEnd", {"-v", "perhaps"}},
};

class UnknownFunction : public testing::TestWithParam<unknown_case> {};

TEST_P(UnknownFunction, IsNotSupportedAndSaysNothing) {
    peer service({close_connection()});
    const run_result run = call_service(service, GetParam().function_option);
    EXPECT_EQ(service.finish_unvisited(), "");
    EXPECT_EQ(run.output, "LMCM-503\n");
    EXPECT_EQ(run.errors, "");
    EXPECT_EQ(run.status, 503 & 0xff);
}

INSTANTIATE_TEST_SUITE_P(Table, UnknownFunction, testing::ValuesIn(UNKNOWN_CASES),
                         [](const auto &row) { return row.param.name; });

} // namespace
