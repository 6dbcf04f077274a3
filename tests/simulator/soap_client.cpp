// Envelopes are written out as text here, so that nothing is shared with the program under test.
#include "tests/simulator/soap_client.h"

namespace {

const std::string ENVELOPE =
    "<SOAP-ENV:Envelope xmlns:SOAP-ENV=\"http://schemas.xmlsoap.org/soap/envelope/\""
    " xmlns:SOAP-ENC=\"http://schemas.xmlsoap.org/soap/encoding/\""
    " xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\""
    " xmlns:xsd=\"http://www.w3.org/2001/XMLSchema\" xmlns:ns=\"urn:xmethods-lumows\">";
const std::string DECLARATION = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>";
const std::string BODY =
    "<SOAP-ENV:Body SOAP-ENV:encodingStyle=\"http://schemas.xmlsoap.org/soap/encoding/\">";
const std::string END = "</SOAP-ENV:Body></SOAP-ENV:Envelope>";

} // namespace

std::string wrap_request(const std::string &content) {
    return DECLARATION + "\n" + ENVELOPE + BODY + content + END;
}

std::string wrap_response(const std::string &operation, const std::string &children) {
    const std::string name = "ns:" + operation + "Response>";
    return DECLARATION + ENVELOPE + BODY + "<" + name + children + "</" + name + END;
}

std::string wrap_fault(const std::string &code, const std::string &text) {
    return DECLARATION + ENVELOPE + "<SOAP-ENV:Body><SOAP-ENV:Fault><faultcode>SOAP-ENV:" + code +
           "</faultcode><faultstring>" + text + "</faultstring></SOAP-ENV:Fault>" + END;
}

HttpAnswer post_message(int port, const std::string &message, const std::string &action,
                        const std::string &type) {
    return ask_http(port, "POST /cgi-bin/lumows",
                    "SOAPAction: " + action + "\r\nContent-Type: " + type + "\r\n", message);
}

std::string call_service(int port, const std::string &operation, const std::string &children) {
    const std::string name = "ns:" + operation + ">";
    return post_message(port, wrap_request("<" + name + children + "</" + name)).body;
}
