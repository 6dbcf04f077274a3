// The generated calls as the dispatcher uses them: one context, one call, its return code and what
// it leaves in the record.

#include "front/product.h"
#include "tests/harness/console.h"
#include "tests/webservice/http_peer.h"
#include "webservice/client_runtime.h"
#include "webservice/service_calls.h"
#include "webservice/soapcallsclientutil.h"

#include <cstring>
#include <gtest/gtest.h>

namespace {

using namespace harness;

/// A context in zeroed storage, released like the dispatcher's own.
class client_context {
  public:
    client_context() {
        soap_init(get());
    }
    ~client_context() {
        soap_destroy(get());
        soap_end(get());
        soap_done(get());
    }
    client_context(const client_context &) = delete;
    client_context &operator=(const client_context &) = delete;
    struct soap *get() {
        return static_cast<struct soap *>(static_cast<void *>(storage_));
    }

  private:
    alignas(struct soap) unsigned char storage_[sizeof(struct soap)] = {};
};

TEST(ClientRuntime, BothLanguagesSeeTheSameContext) {
    EXPECT_EQ(lumows_context_size(), sizeof(struct soap));
}

TEST(ClientRuntime, NamespaceTable) {
    struct row {
        const char *prefix;
        const char *written;
        const char *also_accepted;
    };
    const row expected[] = {
        {"SOAP-ENV", "http://schemas.xmlsoap.org/soap/envelope/",
         "http://www.w3.org/*/soap-envelope"},
        {"SOAP-ENC", "http://schemas.xmlsoap.org/soap/encoding/",
         "http://www.w3.org/*/soap-encoding"},
        {"xsi", "http://www.w3.org/2001/XMLSchema-instance",
         "http://www.w3.org/*/XMLSchema-instance"},
        {"xsd", "http://www.w3.org/2001/XMLSchema", "http://www.w3.org/*/XMLSchema"},
        {"ns", "urn:xmethods-lumows", nullptr},
        {nullptr, nullptr, nullptr},
    };
    client_context context;
    const struct Namespace *table = context.get()->namespaces;
    for (const row &row : expected) {
        EXPECT_STREQ(table->id, row.prefix);
        EXPECT_STREQ(table->ns, row.written);
        EXPECT_STREQ(table->in, row.also_accepted);
        table++;
    }
}

struct return_case {
    const char *name;
    std::string content; ///< of the SOAP body
    int code;
};

const return_case RETURN_CASES[] = {
    {"Response", response_element("test", "<result>LMWS-000</result>"), 0},
    {"ResponseWithoutResult", response_element("test", "<results>LMWS-000</results>"), 0},
    {"ServerFault", fault_element("SOAP-ENV:Server", "why"), 2},
    {"ReceiverFault", fault_element("SOAP-ENV:Receiver", "why"), 2},
    {"ClientFault", fault_element("SOAP-ENV:Client", "why"), 1},
    {"SenderFault", fault_element("SOAP-ENV:Sender", "why"), 1},
    {"MustUnderstandFault", fault_element("SOAP-ENV:MustUnderstand", "why"), 8},
    {"VersionMismatchFault", fault_element("SOAP-ENV:VersionMismatch", "why"),
     SOAP_VERSIONMISMATCH},
    {"OtherFault", fault_element("ns:busy", "why"), 12},
    {"UnknownChildMustBeUnderstood",
     response_element("test", "<more SOAP-ENV:mustUnderstand=\"1\"/>"), 8},
    {"UnknownChildOfTheEnvelope", response_element("test", "<SOAP-ENV:more/>"), 3},
};

int call_test(struct soap *context, const peer &service,
              struct ns__service_testResponse *response) {
    char waittime[] = "10";
    return soap_call_ns__service_test(context, url_of(service).c_str(), nullptr, waittime,
                                      response);
}

class CallReturns : public testing::TestWithParam<return_case> {};

TEST_P(CallReturns, TheRuntimesCode) {
    const return_case &row = GetParam();
    peer service(answering(http_answer(envelope(row.content))));
    client_context context;
    char stale[] = "stale";
    struct ns__service_testResponse response = {stale};
    EXPECT_EQ(call_test(context.get(), service, &response), row.code);
    EXPECT_EQ(service.finish(), "");
    EXPECT_EQ(context.get()->error, row.code);
    if (strcmp(row.name, "Response") == 0) {
        EXPECT_STREQ(response.result, "LMWS-000");
    } else {
        EXPECT_EQ(response.result, nullptr);
    }
}

INSTANTIATE_TEST_SUITE_P(Table, CallReturns, testing::ValuesIn(RETURN_CASES), NAME_OF_ROW);

/// A body that is neither response nor fault. Which code stands for it is the runtime's choice
/// (this release takes the HTTP status), but it is a failure, not a fault of the service, and reads
/// nothing.
TEST(Call, ForeignElementIsAFailure) {
    for (const std::string &content :
         {std::string("<more/>"), response_element("login", "<result>LMWS-000</result>"),
          element("service-testResponse", "<result>LMWS-000</result>")}) {
        peer service(answering(http_answer(envelope(content))));
        client_context context;
        struct ns__service_testResponse response = {};
        const int code = call_test(context.get(), service, &response);
        EXPECT_EQ(service.finish(), "");
        EXPECT_EQ(response.result, nullptr);
        for (const int other : {SOAP_OK, SOAP_SVR_FAULT, SOAP_CLI_FAULT, SOAP_FAULT,
                                SOAP_MUSTUNDERSTAND, SOAP_VERSIONMISMATCH}) {
            EXPECT_NE(code, other) << content;
        }
    }
}

TEST(Call, MustUnderstandHeaderIsEight) {
    peer service(answering(http_answer(
        envelope(response_element("test", "<result>LMWS-000</result>"),
                 "<SOAP-ENV:Header><t:id xmlns:t=\"urn:t\" SOAP-ENV:mustUnderstand=\"1\"/>"
                 "</SOAP-ENV:Header>"))));
    client_context context;
    struct ns__service_testResponse response = {};
    EXPECT_EQ(call_test(context.get(), service, &response), 8);
    EXPECT_EQ(response.result, nullptr);
}

TEST(Call, OwnActionReplacesTheDefault) {
    peer service(answering(http_answer(envelope(response_element("test", "")))));
    client_context context;
    struct ns__service_testResponse response = {};
    EXPECT_EQ(soap_call_ns__service_test(context.get(), url_of(service).c_str(), "urn:own", nullptr,
                                         &response),
              0);
    EXPECT_EQ(service.finish(), "");
    const http_request request = split_request(service.received());
    EXPECT_EQ(request.header("SOAPAction"), "\"urn:own\"");
    // A null field is left out.
    EXPECT_EQ(sent_envelope(service), request_text("test", ""));
}

TEST(Call, ThirdFieldOfElementStatusIsSentWhenGiven) {
    peer service(answering(http_answer(envelope(response_element("getelementstatus", "")))));
    client_context context;
    struct ns__service_getelementstatusResponse response = {};
    char session[] = "s";
    char object[] = "o";
    char retrieve[] = "1";
    char waittime[] = "0";
    EXPECT_EQ(soap_call_ns__service_getelementstatus(context.get(), url_of(service).c_str(),
                                                     nullptr, session, object, retrieve, waittime,
                                                     &response),
              0);
    EXPECT_EQ(service.finish(), "");
    EXPECT_EQ(sent_envelope(service),
              request_text("getelementstatus",
                           "<sessionid>s</sessionid><idobject>o</idobject>"
                           "<retrivefromdevice>1</retrivefromdevice><waittime>0</waittime>"));
}

TEST(Call, SecondFieldOfElementStatusArrayIsSentWhenGiven) {
    peer service(answering(http_answer(envelope(response_element("getelementstatusarray", "")))));
    client_context context;
    struct ns__service_getelementstatusarrayResponse response = {};
    char session[] = "s";
    char objects[] = "1,2";
    char waittime[] = "0";
    EXPECT_EQ(soap_call_ns__service_getelementstatusarray(context.get(), url_of(service).c_str(),
                                                          nullptr, session, objects, waittime,
                                                          &response),
              0);
    EXPECT_EQ(service.finish(), "");
    EXPECT_EQ(sent_envelope(service),
              request_text("getelementstatusarray",
                           "<sessionid>s</sessionid><idobjects>1,2</idobjects>"
                           "<waittime>0</waittime>"));
}

// ---------------------------------------------------------------------------------------------
// The dispatcher itself

TEST(WebserviceRequest, OneMegabyteArrivesWhole) {
    peer service(answering(
        http_answer(envelope(response_element("uploadlumolfile", "<result>LMWS-402</result>")))));
    std::string file;
    while (file.size() < (1 << 20)) {
        file += "line <" + std::to_string(file.size()) + ">\n";
    }
    std::string escaped;
    for (const char letter : file) {
        escaped += letter == '<' ? "&lt;" : letter == '>' ? "&gt;" : std::string(1, letter);
    }
    int status = 0;
    const std::string output = captured_output([&] {
        status = make_webservice_request(url_of(service).c_str(), "SERVICE_UPLOADLUMOLFILE",
                                         ("s|" + file).c_str(), 5);
    });
    EXPECT_EQ(service.finish(), "");
    EXPECT_EQ(status, 402);
    EXPECT_EQ(output, "");
    const http_request request = split_request(service.received());
    EXPECT_EQ(request.header("Content-Length"), std::to_string(request.body.size()));
    EXPECT_TRUE(sent_envelope(service) ==
                request_text("uploadlumolfile", "<sessionid>s</sessionid>" +
                                                    element("lumolfile", escaped) +
                                                    "<waittime>5</waittime>"));
}

TEST(WebserviceRequest, NullFunctionIsNotSupported) {
    peer service({close_connection()});
    int status = 0;
    const std::string output = captured_output(
        [&] { status = make_webservice_request(url_of(service).c_str(), nullptr, nullptr, 0); });
    EXPECT_EQ(service.finish_unvisited(), "");
    EXPECT_EQ(status, 503);
    EXPECT_EQ(output, "");
}

TEST(WebserviceRequest, TwoInOneProcess) {
    for (const int code : {401, 402}) {
        peer service(answering(http_answer(envelope(
            response_element("test", element("result", "LMWS-" + std::to_string(code)))))));
        EXPECT_EQ(make_webservice_request(url_of(service).c_str(), "SERVICE_TEST", nullptr, 0),
                  code);
        EXPECT_EQ(service.finish(), "");
    }
}

TEST(LocalEndpoint, BothFormsNameTheSamePath) {
    EXPECT_STREQ(LUMOWS_DEFAULT_URL, "http://localhost/cgi-bin/lumows");
    EXPECT_STREQ(LUMOWS_LOOPBACK_URL, "http://127.0.0.1/cgi-bin/lumows");
}

} // namespace
