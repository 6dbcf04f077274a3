// The generated calls as the dispatcher uses them: one context, one call, its return code and what
// it leaves in the record.

#include "tests/webservice/http_peer.h"
#include "webservice/client_runtime.h"
#include "webservice/service_calls.h"

#include <gtest/gtest.h>
#include <memory>

namespace {

using namespace harness;

struct release_context {
    void operator()(struct soap *context) const {
        soap_destroy(context);
        soap_end(context);
        soap_free(context);
    }
};
using client_context = std::unique_ptr<struct soap, release_context>;

TEST(ClientRuntime, BothLanguagesSeeTheSameContext) {
    EXPECT_EQ(lumows_context_size(), sizeof(struct soap));
}

/// A body that is neither response nor fault is the tag mismatch of release 2.7; later ones take
/// the HTTP status.
TEST(Call, ReturnsTheRuntimesCode) {
    const std::string usual = response_element("test", "<result>LMWS-000</result>");
    const struct {
        std::string content; ///< of the envelope's body
        int code;
        std::string header = "";
    } rows[] = {
        {usual, SOAP_OK},
        {fault_element("SOAP-ENV:Server", "why"), 2},
        {fault_element("SOAP-ENV:Receiver", "why"), 2},
        {fault_element("SOAP-ENV:Client", "why"), 1},
        {fault_element("SOAP-ENV:Sender", "why"), 1},
        {fault_element("SOAP-ENV:MustUnderstand", "why"), 8},
        {fault_element("SOAP-ENV:VersionMismatch", "why"), SOAP_VERSIONMISMATCH},
        {fault_element("ns:busy", "why"), 12},
        {response_element("test", "<more SOAP-ENV:mustUnderstand=\"1\"/>"), 8},
        {response_element("test", "<SOAP-ENV:more/>"), 3},
        {"<more/>", 200},
        {response_element("login", "<result>LMWS-000</result>"), 200},
        {element("service-testResponse", "<result>LMWS-000</result>"), 200},
        {usual, 8,
         "<SOAP-ENV:Header><t:id xmlns:t=\"urn:t\" SOAP-ENV:mustUnderstand=\"1\"/>"
         "</SOAP-ENV:Header>"},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.header + row.content);
        peer service(answering(http_answer(envelope(row.content, row.header))));
        const client_context context(soap_new());
        char waittime[] = "10";
        struct ns__service_testResponse response = {waittime}; // something stale
        const int code = soap_call_ns__service_test(context.get(), url_of(service).c_str(), nullptr,
                                                    waittime, &response);
        EXPECT_EQ(service.finish(), "");
        EXPECT_TRUE(code == row.code || (row.code == 200 && code == 3)) << code;
        EXPECT_EQ(context->error, code);
        EXPECT_STREQ(response.result, row.code == SOAP_OK ? "LMWS-000" : nullptr);
    }
}

/// The fields that the dispatcher leaves absent, and an action other than the usual one.
TEST(Call, SendsWhatItIsGiven) {
    peer service(answering(http_response("getelementstatus", "")));
    const client_context context(soap_new());
    struct ns__service_getelementstatusResponse response = {};
    char texts[][3] = {"s", "o", "1"};
    EXPECT_EQ(soap_call_ns__service_getelementstatus(context.get(), url_of(service).c_str(),
                                                     "urn:own", texts[0], texts[1], texts[2],
                                                     nullptr, &response),
              0);
    EXPECT_EQ(service.finish(), "");
    EXPECT_EQ(split_request(service.received()).header("SOAPAction"), "\"urn:own\"");
    EXPECT_EQ(sent_text(service),
              request_text("getelementstatus", "<sessionid>s</sessionid><idobject>o</idobject>"
                                               "<retrivefromdevice>1</retrivefromdevice>"));

    peer array_service(answering(http_response("getelementstatusarray", "")));
    struct ns__service_getelementstatusarrayResponse array = {};
    EXPECT_EQ(soap_call_ns__service_getelementstatusarray(context.get(),
                                                          url_of(array_service).c_str(), nullptr,
                                                          texts[0], texts[1], texts[2], &array),
              0);
    EXPECT_EQ(array_service.finish(), "");
    EXPECT_EQ(sent_text(array_service),
              request_text("getelementstatusarray", "<sessionid>s</sessionid>"
                                                    "<idobjects>o</idobjects>"
                                                    "<waittime>1</waittime>"));
}

} // namespace
