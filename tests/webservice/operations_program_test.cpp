// Every SERVICE_ function end to end: what goes over the wire, what is shown, what the status is.

#include "tests/harness/console.h"
#include "tests/webservice/http_peer.h"

#include <algorithm>
#include <cctype>
#include <gtest/gtest.h>

namespace {

using namespace harness;

enum outcome {
    SINGLE, ///< no lines
    TEXT,   ///< lines in any case
    RECORD, ///< lines only when there is a result
};

struct shown_line {
    const char *text;
    const char *field;
    const char *suffix = "";
};

struct operation_case {
    const char *name; ///< of the operation behind "service-", and of the function behind "SERVICE_"
    int code;         ///< status that the service answers in this test
    outcome group;
    words request;  ///< children that are sent, in order
    words response; ///< children of the answer, in order
    std::vector<shown_line> lines;
};

const operation_case OPERATIONS[] = {
    {"versioninfo",
     401,
     TEXT,
     {"waittime"},
     {"result", "version"},
     {{"Software Version: ", "version", "LUMOCMD Version: 2.6.16_arlo [rev.7655] -"}}},
    {"systeminfo",
     402,
     TEXT,
     {"waittime"},
     {"result", "systemcode"},
     {{"Software system code: ", "systemcode"}}},
    {"test", 403, SINGLE, {"waittime"}, {"result"}, {}},
    {"getelementstatus",
     404,
     RECORD,
     {"sessionid", "idobject", "waittime"},
     {"result", "status", "currentvalue"},
     {{"Status: ", "status"}, {"Current Value: ", "currentvalue"}}},
    {"getelementstatusarray",
     405,
     RECORD,
     {"sessionid", "waittime"},
     {"result", "currentstate", "currentvalues"},
     {{"Current State: ", "currentstate"}, {"Current Values: ", "currentvalues"}}},
    {"runonelement",
     406,
     SINGLE,
     {"sessionid", "idobject", "operation", "payload", "optionals", "hashcode", "callsource",
      "waittime"},
     {"result"},
     {}},
    {"installcrontab", 407, SINGLE, {"sessionid", "newcrontabfile", "waittime"}, {"result"}, {}},
    {"elementhaschanged",
     408,
     TEXT,
     {"idobject", "idcaller", "currentvalue", "waittime"},
     {"result", "currentvalue"},
     {{"Current Value: ", "currentvalue"}}},
    {"swapondemand", 409, SINGLE, {"sessionid", "payload", "waittime"}, {"result"}, {}},
    {"uploadlumolfile", 410, SINGLE, {"sessionid", "lumolfile", "waittime"}, {"result"}, {}},
    {"objectcyclesavoidance",
     411,
     SINGLE,
     {"idobject-source", "idobject-destination", "waittime"},
     {"result"},
     {}},
    {"search4neighbours",
     412,
     RECORD,
     {"ipmcast", "port", "waittime"},
     {"result", "neighbourlist"},
     {{"Neighbours List: ", "neighbourlist"}}},
    {"attach2neighbour",
     413,
     SINGLE,
     {"remoteip", "remoteport", "neighbouruid", "neighbourname", "neighbouroptionals", "waittime"},
     {"result"},
     {}},
    {"detach2neighbour",
     414,
     SINGLE,
     {"remoteip", "remoteport", "neighbouruid", "waittime"},
     {"result"},
     {}},
    {"discover2neighbour",
     415,
     RECORD,
     {"remoteip", "remoteport", "neighbouruid", "waittime"},
     {"result", "interfacesidlist", "interfacesnamelist", "interfacestypelist",
      "interfacesvaluelist", "interfacesaccessmodelist"},
     {{"Interfaces ID List: ", "interfacesidlist"},
      {"Interfaces Name List: ", "interfacesnamelist"},
      {"Interfaces Type List: ", "interfacestypelist"},
      {"Interfaces Value List: ", "interfacesvaluelist"},
      {"Interfaces AccessMode List: ", "interfacesaccessmodelist"}}},
    {"openobjectchannel",
     416,
     SINGLE,
     {"remoteip", "remoteport", "idremoteinterface", "nameremoteinterface", "typeremoteinterface",
      "idlocalinterface", "waittime"},
     {"result"},
     {}},
    {"abbmacreadtagdata",
     417,
     RECORD,
     {"sessionid", "idobject", "waittime"},
     {"result", "tagnumber", "tagtype", "tagtypeoptionals", "tagplantcode", "isblank",
      "hasvalidplantcode", "expiredatetime", "ispresent"},
     {{"Tag Number: ", "tagnumber"},
      {"Tag Type: ", "tagtype"},
      {"Tag Type Optionals: ", "tagtypeoptionals"},
      {"Tag PlantCode: ", "tagplantcode"},
      {"Is blank?: ", "isblank"},
      {"Has Valid PlantCode?: ", "hasvalidplantcode"},
      {"Tag ExpireDateTime: ", "expiredatetime"},
      {"Is present?: ", "ispresent"}}},
    {"databasesocketoperation",
     418,
     RECORD,
     {"clientaddress", "sessionid", "function", "type", "statement-len", "statement", "waittime"},
     {"result-len", "result", "payload-len", "payload"},
     {{"Results Length: ", "result-len"},
      {"Payload Length: ", "payload-len"},
      {"Payload: ", "payload"}}},
    {"retrieveconfiguration",
     419,
     TEXT,
     {"sessionid", "waittime"},
     {"result", "url"},
     {{"Url: ", "url"}}},
    {"login", 420, SINGLE, {"user", "pass", "waittime"}, {"result"}, {}},
    {"retrievemessages",
     421,
     RECORD,
     {"sessionid", "type", "count", "from", "to", "waittime"},
     {"result", "messagecount", "message"},
     {{"MessageCount: ", "messagecount"}, {"Message: ", "message"}}},
    {"keltoclimateeventsettimeschedule",
     422,
     SINGLE,
     {"sessionid", "idobject", "mode", "type", "schedule", "waittime"},
     {"result"},
     {}},
    {"keltoclimateeventgettimeschedule",
     423,
     RECORD,
     {"sessionid", "idobject", "mode", "type", "weekday", "season", "waittime"},
     {"result", "schedule"},
     {{"Schedule: ", "schedule"}}},
    {"keltosaigetusergrants",
     424,
     RECORD,
     {"sessionid", "pin", "waittime"},
     {"result", "partializationgrants"},
     {{"PartializationGrants: ", "partializationgrants"}}},
    {"keltosaistopalarm", 425, SINGLE, {"sessionid", "pin", "waittime"}, {"result"}, {}},
    {"multidatabasesocketoperation",
     426,
     RECORD,
     {"clientaddress", "sessionid", "function", "type", "statement-len", "statement",
      "databaseport", "waittime"},
     {"result-len", "result", "payload-len", "payload"},
     {{"Results Length: ", "result-len"},
      {"Payload Length: ", "payload-len"},
      {"Payload: ", "payload"}}},
    {"keltorunproducttests", 427, SINGLE, {}, {"result"}, {}},
    {"rundailyschedule", 428, SINGLE, {"waittime"}, {"result"}, {}},
    {"reloadalldailyschedule", 429, SINGLE, {"waittime"}, {"result"}, {}},
    {"reloaddailyschedule", 430, SINGLE, {"objectID", "waittime"}, {"result"}, {}},
    {"logindatareload", 431, SINGLE, {"waittime"}, {"results"}, {}},
    {"checklogged", 432, SINGLE, {"username", "sessionid", "waittime"}, {"result"}, {}},
    {"flushondemand", 433, SINGLE, {"payload", "waittime"}, {"result"}, {}},
};
static_assert(std::size(OPERATIONS) == 33);

/// What a field of the answer holds.
using answer_value = std::string (*)(const operation_case &row, const std::string &field);

bool is_result(const std::string &field) {
    return field == "result" || field == "results";
}

std::string status_text(const operation_case &row) {
    return "LMWS-" + std::to_string(row.code);
}

std::string usual_value(const operation_case &row, const std::string &field) {
    return is_result(field) ? status_text(row) : "answered " + field;
}

std::string function_name(const operation_case &row) {
    std::string name = std::string("SERVICE_") + row.name;
    std::transform(name.begin(), name.end(), name.begin(),
                   [](unsigned char letter) { return static_cast<char>(toupper(letter)); });
    return name;
}

/// The list of -p in which every entry tells its field, or is `same` for all when that is given.
std::string parameter_list(const operation_case &row, const std::string &same = "") {
    std::string list;
    for (const std::string &child : row.request) {
        if (child != "waittime" && child != "callsource") {
            list += (list.empty() ? "" : "|") + (same.empty() ? "given " + child : same);
        }
    }
    return list;
}

std::string request_children(const operation_case &row, const std::string &waittime,
                             const std::string &same = "") {
    std::string children;
    for (const std::string &child : row.request) {
        std::string text = same.empty() ? "given " + child : same;
        if (child == "waittime") {
            text = waittime;
        } else if (child == "callsource") {
            text = "COMMANDLINETOOL";
        }
        children += element(child, text);
    }
    return children;
}

/// The XML declaration is the only thing before the envelope.
std::string body_text(const operation_case &row, const std::string &children) {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n" + request_text(row.name, children);
}

std::string answer_with_all(const operation_case &row) {
    std::string children;
    for (const std::string &child : row.response) {
        children += element(child, usual_value(row, child));
    }
    return http_answer(envelope(response_element(row.name, children)));
}

words arguments_of(const operation_case &row, const std::string &same = "") {
    words arguments = {"-f", function_name(row)};
    const std::string list = parameter_list(row, same);
    if (!list.empty()) {
        arguments.insert(arguments.end(), {"-p", list});
    }
    return arguments;
}

/// The result lines; `absent` shows what stands for every field, or null for the answered values.
std::string result_lines(const operation_case &row, pid_t pid, const char *absent = nullptr) {
    std::string lines;
    for (const shown_line &line : row.lines) {
        std::string value = absent != nullptr ? absent : usual_value(row, line.field);
        // The version line is put together beforehand: there an absent field is empty.
        if (absent != nullptr && *line.suffix != '\0') {
            value.clear();
        }
        lines += green(pid, std::string("[lumocmd] ") + line.text + value + line.suffix);
    }
    return lines;
}

std::string without_result_status(const operation_case &row) {
    return row.group == RECORD ? "LMCM-508\n" : "LMCM-502\n";
}

int without_result_exit(const operation_case &row) {
    return (row.group == RECORD ? 508 : 502) & 0xff;
}

class Operation : public testing::TestWithParam<operation_case> {};

TEST_P(Operation, SendsTheWholeRequestAndShowsTheLines) {
    const operation_case &row = GetParam();
    peer service(answering(answer_with_all(row)));
    words arguments = {"-v", "ON", "-t", "SOAP", "-u", url_of(service), "-w", "30"};
    const words further = arguments_of(row);
    arguments.insert(arguments.end(), further.begin(), further.end());
    const run_result run = lumocmd(arguments);
    EXPECT_EQ(service.finish(), "");

    const http_request request = split_request(service.received());
    EXPECT_EQ(request.method, "POST");
    EXPECT_EQ(request.path, "/cgi-bin/lumows");
    EXPECT_EQ(request.version.substr(0, 7), "HTTP/1.");
    EXPECT_EQ(request.header("Host"), "127.0.0.1:" + std::to_string(service.port()));
    EXPECT_EQ(request.header("User-Agent"), "gSOAP/2.7");
    EXPECT_EQ(request.header("Content-Type"), "text/xml; charset=utf-8");
    EXPECT_EQ(request.header("Content-Length"), std::to_string(request.body.size()));
    EXPECT_EQ(request.header("SOAPAction"), "\"urn:xmethods-lumows\"");
    EXPECT_EQ(request.header("Transfer-Encoding"), "(absent)");
    EXPECT_EQ(request.header("Cookie"), "(absent)");
    EXPECT_EQ(request.body, body_text(row, request_children(row, "30")));

    const std::string list = parameter_list(row);
    EXPECT_EQ(run.output,
              green(run.pid, "[lumocmd] Soap request selected") +
                  green(run.pid, "[lumocmd] Url selected: " + url_of(service)) +
                  green(run.pid, "[lumocmd] Waittime selected: 30") +
                  green(run.pid, "[lumocmd] Function selected: " + function_name(row)) +
                  (list.empty() ? "" : green(run.pid, "[lumocmd] Parameters selected: " + list)) +
                  result_lines(row, run.pid) + status_text(row) + "\n");
    EXPECT_EQ(run.errors, "");
    EXPECT_EQ(run.status, row.code & 0xff);
}

TEST_P(Operation, IsQuietAndSelectedInLowerCase) {
    const operation_case &row = GetParam();
    peer service(answering(answer_with_all(row)));
    words arguments = arguments_of(row);
    arguments[1] = std::string("service_") + row.name;
    const run_result run = call_service(service, arguments);
    EXPECT_EQ(service.finish(), "");
    EXPECT_EQ(split_request(service.received()).body, body_text(row, request_children(row, "0")));
    EXPECT_EQ(run.output, status_text(row) + "\n");
    EXPECT_EQ(run.errors, "");
    EXPECT_EQ(run.status, row.code & 0xff);
}

TEST_P(Operation, WritesEqualValuesOutOneByOne) {
    const operation_case &row = GetParam();
    peer service(answering(answer_with_all(row)));
    words arguments = arguments_of(row, "5");
    arguments.insert(arguments.end(), {"-w", "5"});
    const run_result run = call_service(service, arguments);
    EXPECT_EQ(service.finish(), "");
    EXPECT_EQ(split_request(service.received()).body,
              body_text(row, request_children(row, "5", "5")));
    EXPECT_EQ(run.output, status_text(row) + "\n");
    EXPECT_EQ(run.errors, "");
}

TEST_P(Operation, FaultLeavesEveryFieldAbsent) {
    const operation_case &row = GetParam();
    peer service(answering(http_answer(envelope(fault_element("SOAP-ENV:Server", "out of service")),
                                       "500 Internal Server Error")));
    words arguments = arguments_of(row);
    arguments.insert(arguments.end(), {"-v", "ON"});
    const run_result run = call_service(service, arguments);
    EXPECT_EQ(service.finish(), "");
    EXPECT_EQ(run.output, (row.group == TEXT ? result_lines(row, run.pid, "(null)") : "") +
                              without_result_status(row));
    EXPECT_EQ(run.errors, fault_report("SOAP-ENV:Server", "out of service"));
    EXPECT_EQ(run.status, without_result_exit(row));
}

TEST_P(Operation, AnswerWithoutResult) {
    const operation_case &row = GetParam();
    std::string children;
    for (const std::string &child : row.response) {
        children += is_result(child) ? "" : element(child, usual_value(row, child));
    }
    // The other operations' spelling is an unknown child here.
    children += element(row.response.front() == "results" ? "result" : "results", status_text(row));
    peer service(answering(http_answer(envelope(response_element(row.name, children)))));
    words arguments = arguments_of(row);
    arguments.insert(arguments.end(), {"-v", "ON"});
    const run_result run = call_service(service, arguments);
    EXPECT_EQ(service.finish(), "");
    EXPECT_EQ(run.output,
              (row.group == TEXT ? result_lines(row, run.pid) : "") + without_result_status(row));
    EXPECT_EQ(run.errors, "");
    EXPECT_EQ(run.status, without_result_exit(row));
}

TEST_P(Operation, AnswerWithNothingButTheResult) {
    const operation_case &row = GetParam();
    const std::string child = row.name == std::string("logindatareload") ? "results" : "result";
    peer service(answering(
        http_answer(envelope(response_element(row.name, element(child, status_text(row)))))));
    words arguments = arguments_of(row);
    arguments.insert(arguments.end(), {"-v", "ON"});
    const run_result run = call_service(service, arguments);
    EXPECT_EQ(service.finish(), "");
    EXPECT_EQ(run.output, result_lines(row, run.pid, "(null)") + status_text(row) + "\n");
    EXPECT_EQ(run.errors, "");
    EXPECT_EQ(run.status, row.code & 0xff);
}

TEST_P(Operation, TakesNoOtherResponse) {
    const operation_case &row = GetParam();
    std::string children;
    for (const std::string &child : row.response) {
        children += element(child, usual_value(row, child));
    }
    peer service(answering(http_answer(envelope(response_element("other", children)))));
    words arguments = arguments_of(row);
    arguments.insert(arguments.end(), {"-v", "ON"});
    const run_result run = call_service(service, arguments);
    EXPECT_EQ(service.finish(), "");
    EXPECT_EQ(run.output, (row.group == TEXT ? result_lines(row, run.pid, "(null)") : "") +
                              without_result_status(row));
    EXPECT_EQ(run.errors.substr(0, run.errors.find(" [")), "SOAP 1.1 fault SOAP-ENV:Client");
    EXPECT_EQ(run.status, without_result_exit(row));
}

INSTANTIATE_TEST_SUITE_P(Table, Operation, testing::ValuesIn(OPERATIONS),
                         [](const auto &row) { return row.param.name; });

} // namespace
