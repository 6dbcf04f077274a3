#include "tests/fuzz/service.h"

namespace service {

namespace {

#define ENVELOPE_TAG                                                                               \
    "<SOAP-ENV:Envelope xmlns:SOAP-ENV=\"http://schemas.xmlsoap.org/soap/envelope/\""              \
    " xmlns:SOAP-ENC=\"http://schemas.xmlsoap.org/soap/encoding/\""                                \
    " xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\""                                     \
    " xmlns:xsd=\"http://www.w3.org/2001/XMLSchema\" xmlns:ns=\"urn:xmethods-lumows\">"

std::string element(const std::string &name, const std::string &content) {
    return "<" + name + ">" + content + "</" + name + ">";
}

/// One child of a response: what it looks like, and what it says.
struct child {
    std::string text;
    std::optional<std::string> value;
};

child write_child(const std::string &name, fuzz::input *in) {
    enum notation { PLAIN, CDATA, EMPTY, NIL, NOTATIONS };
    switch (in->below(NOTATIONS)) {
    case EMPTY:
        return {"<" + name + "/>", ""};
    case NIL:
        return {"<" + name + " xsi:nil=\"true\"/>", std::nullopt};
    case CDATA: {
        std::string text = plain_text(in->field());
        std::erase(text, ']');
        // Markup stands for itself in here; what is not ASCII travels as UTF-8 here too.
        std::string inside;
        for (const char character : text) {
            inside += (character & 0x80) != 0 ? escaped(std::string(1, character))
                                              : std::string(1, character);
        }
        return {element(name, "<![CDATA[" + inside + "]]>"), text};
    }
    default: {
        const std::string text = plain_text(in->field());
        return {element(name, escaped(text)), text};
    }
    }
}

} // namespace

std::string plain_text(const std::string &bytes) {
    std::string text;
    for (const char character : bytes) {
        const auto byte = static_cast<unsigned char>(character);
        const bool is_control = byte < ' ' || (byte >= 0x7f && byte < 0xa0);
        text += is_control ? '.' : character;
    }
    return text;
}

std::string escaped(const std::string &text) {
    std::string result;
    for (const char character : text) {
        const auto byte = static_cast<unsigned char>(character);
        switch (character) {
        case '&':
            result += "&amp;";
            break;
        case '<':
            result += "&lt;";
            break;
        case '>':
            result += "&gt;";
            break;
        default:
            if (byte >= 0x80) {
                result += static_cast<char>(0xc0U | byte >> 6U);
                result += static_cast<char>(0x80U | (byte & 0x3fU));
            } else {
                result += character;
            }
        }
    }
    return result;
}

proper_answer write_response(const protocol::service_row &called, fuzz::input *in) {
    proper_answer answer;
    const std::string name = "ns:service-" + std::string(called.name) + "Response";
    std::string children;
    for (std::size_t left = in->below(12); left != 0; left--) {
        const std::size_t place = in->below(called.response.size() + 3);
        if (place < called.response.size()) {
            const std::string &field = called.response[place];
            const bool is_repeated = answer.fields.contains(field);
            if (is_repeated && !answer.fields[field]) {
                continue; // what follows a nil child of the same name is the service's own affair
            }
            const char *const prefixes[] = {"", "", "ns:", "xsd:"};
            const child written = write_child(prefixes[in->below(std::size(prefixes))] + field, in);
            children += written.text;
            if (!is_repeated) {
                answer.fields[field] = written.value;
            }
        } else if (place == called.response.size()) {
            children += write_child(in->below(2) == 1 ? "ns:more" : "more", in).text;
        } else if (place == called.response.size() + 1) {
            children += "<!-- " + std::string(in->below(30), 'c') + " -->";
        } else {
            children += std::string(in->below(5), '\n') + std::string(in->below(30), ' ');
        }
    }
    answer.bytes = element(name, children);
    return answer;
}

std::string write_fault(fuzz::input *in, const std::string &reason) {
    const char *const codes[] = {"SOAP-ENV:Server", "SOAP-ENV:Client", "SOAP-ENV:MustUnderstand",
                                 "SOAP-ENV:VersionMismatch", "ns:busy"};
    return element("SOAP-ENV:Fault", element("faultcode", codes[in->below(std::size(codes))]) +
                                         element("faultstring", escaped(reason)));
}

std::string envelope(const std::string &content) {
    return ENVELOPE_TAG + element("SOAP-ENV:Body", content) + "</SOAP-ENV:Envelope>";
}

std::string http_answer(const std::string &body, fuzz::input *in) {
    enum form { LENGTH, CHUNKS, UNTIL_CLOSE, OLD_VERSION, CONTINUED, FORMS };
    const std::string type = "Content-Type: text/xml; charset=utf-8\r\n";
    const std::string length = "Content-Length: " + std::to_string(body.size()) + "\r\n";
    const std::string head = "HTTP/1.1 200 OK\r\n" + type;
    switch (in->below(FORMS)) {
    case CHUNKS: {
        std::string text = head + "Transfer-Encoding: chunked\r\n\r\n";
        for (std::size_t at = 0; at < body.size();) {
            const std::string chunk = body.substr(at, 1 + in->byte());
            char size[sizeof("100\r\n")];
            snprintf(size, sizeof size, "%zx\r\n", chunk.size());
            text += size + chunk + "\r\n";
            at += chunk.size();
        }
        return text + "0\r\n\r\n";
    }
    case UNTIL_CLOSE:
        return head + "Connection: close\r\n\r\n" + body;
    case OLD_VERSION:
        return "HTTP/1.0 200 OK\r\n" + type + length + "\r\n" + body;
    case CONTINUED:
        return "HTTP/1.1 100 Continue\r\n\r\n" + head + length + "\r\n" + body;
    default:
        return head + length + "Connection: close\r\n\r\n" + body;
    }
}

std::string request_body(const protocol::service_row &called,
                         const std::vector<std::pair<std::string, std::string>> &children) {
    std::string content;
    for (const auto &[name, value] : children) {
        content += element(name, escaped(value));
    }
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n" ENVELOPE_TAG
           "<SOAP-ENV:Body SOAP-ENV:encodingStyle=\"http://schemas.xmlsoap.org/soap/encoding/\">" +
           element("ns:service-" + std::string(called.name), content) +
           "</SOAP-ENV:Body></SOAP-ENV:Envelope>\r\n";
}

} // namespace service
