// Envelope reading and writing on top of pugixml. Its XPath knows namespaces, the rest of it does
// not.
#include "simulator/operations.h"

#include "simulator/text.h"

#include <algorithm>
#include <boost/algorithm/string/replace.hpp>
#include <cstring>
#include <pugixml.hpp>
#include <sstream>

namespace {

#define ENVELOPE_NAMESPACE "http://schemas.xmlsoap.org/soap/envelope/"
constexpr const char *ENCODING_NAMESPACE = "http://schemas.xmlsoap.org/soap/encoding/";

/// What every request declares on its envelope, and every answer too.
constexpr std::pair<const char *, const char *> DECLARATIONS[] = {
    {"xmlns:SOAP-ENV", ENVELOPE_NAMESPACE},
    {"xmlns:SOAP-ENC", ENCODING_NAMESPACE},
    {"xmlns:xsi", "http://www.w3.org/2001/XMLSchema-instance"},
    {"xmlns:xsd", "http://www.w3.org/2001/XMLSchema"},
    {"xmlns:ns", SERVICE_NAMESPACE}};

/// Keeps values of white space, and a document type so that it can be refused.
constexpr unsigned PARSE_OPTIONS =
    pugi::parse_default | pugi::parse_ws_pcdata | pugi::parse_doctype;

/// A header entry marked mustUnderstand, and the encoding style of a body.
constexpr const char *MUST_UNDERSTAND =
    "*/@*[local-name()='mustUnderstand' and namespace-uri()='" ENVELOPE_NAMESPACE "' and .='1']";
constexpr const char *ENCODING_STYLE =
    "@*[local-name()='encodingStyle' and namespace-uri()='" ENVELOPE_NAMESPACE "']";

soap_fault client_fault(std::string text) {
    return {"Client", std::move(text)};
}

std::string namespace_of(pugi::xml_node node) {
    static const pugi::xpath_query query("namespace-uri()");
    return query.evaluate_string(node);
}

bool is_element(pugi::xml_node node, std::string_view name_space, std::string_view local) {
    return local_name(node.name()) == local && namespace_of(node) == name_space;
}

/// The element children of a node; nothing when there is other text between them.
std::optional<std::vector<pugi::xml_node>> element_children(pugi::xml_node parent) {
    std::vector<pugi::xml_node> children;
    for (const pugi::xml_node child : parent.children()) {
        if (child.type() == pugi::node_element) {
            children.push_back(child);
        } else if (child.value()[std::strspn(child.value(), " \t\r\n")] != '\0') {
            return std::nullopt;
        }
    }
    return children;
}

/// The first attribute that is no namespace declaration; requests carry none on their fields.
pugi::xml_attribute foreign_attribute(pugi::xml_node node) {
    return node.find_attribute([](pugi::xml_attribute attribute) {
        const std::string_view name = attribute.name();
        return name != "xmlns" && !name.starts_with("xmlns:");
    });
}

std::string read_text(pugi::xml_node node) {
    std::string text;
    for (const pugi::xml_node child : node.children()) {
        text += child.value();
    }
    return text;
}

/// Why this element cannot be a field of a request; empty when it can.
std::string complain_about_field(pugi::xml_node field) {
    const std::string name = field.name();
    if (name.find(':') != std::string::npos || !namespace_of(field).empty()) {
        return "child '" + name + "' is in a namespace";
    }
    if (foreign_attribute(field)) {
        return "child '" + name + "' carries the attribute '" + foreign_attribute(field).name() +
               "'";
    }
    if (field.find_child([](pugi::xml_node n) { return n.type() == pugi::node_element; })) {
        return "child '" + name + "' holds elements";
    }
    return "";
}

/// Fills the call's values from the children, which may be absent but neither unknown, repeated
/// nor out of order.
void read_fields(const std::vector<pugi::xml_node> &children, service_call &call) {
    const auto names = child_names(call.operation->request);
    call.values.resize(names.size());
    auto expected = names.begin();
    for (const pugi::xml_node child : children) {
        call.complaint = complain_about_field(child);
        if (!call.complaint.empty()) {
            return;
        }
        const auto found = std::find(expected, names.end(), std::string_view(child.name()));
        if (found == names.end()) {
            const bool known = std::find(names.begin(), expected, child.name()) != expected;
            call.complaint = "child '" + std::string(child.name()) +
                             (known ? "' is repeated or out of order" : "' is unknown");
            return;
        }
        call.values[static_cast<std::size_t>(found - names.begin())] = read_text(child);
        expected = found + 1;
    }
}

/// Finds the body of a proper envelope, or says what is wrong with it.
std::variant<pugi::xml_node, soap_fault> find_body(const pugi::xml_document &document) {
    const pugi::xml_node envelope = document.document_element();
    if (local_name(envelope.name()) != "Envelope") {
        return client_fault("the document is no envelope");
    }
    if (namespace_of(envelope) != ENVELOPE_NAMESPACE) {
        return soap_fault{"VersionMismatch", "the envelope is not a SOAP 1.1 envelope"};
    }
    for (const auto &[attribute, name_space] : DECLARATIONS) {
        if (std::string_view(envelope.attribute(attribute).value()) != name_space) {
            return client_fault(std::string("the envelope lacks ") + attribute + "=\"" +
                                name_space + "\"");
        }
    }
    const auto parts = element_children(envelope);
    const bool has_header =
        parts && !parts->empty() && is_element(parts->front(), ENVELOPE_NAMESPACE, "Header");
    if (has_header && parts->front().select_node(MUST_UNDERSTAND)) {
        return soap_fault{"MustUnderstand", "a header entry is not understood"};
    }
    const std::size_t body = has_header ? 1 : 0;
    if (!parts || parts->size() != body + 1 ||
        !is_element((*parts)[body], ENVELOPE_NAMESPACE, "Body")) {
        return client_fault("the envelope does not hold exactly one body");
    }
    return (*parts)[body];
}

/// The empty body of a new envelope.
pugi::xml_node start_envelope(pugi::xml_document &document) {
    pugi::xml_node declaration = document.append_child(pugi::node_declaration);
    declaration.append_attribute("version") = "1.0";
    declaration.append_attribute("encoding") = "UTF-8";
    pugi::xml_node envelope = document.append_child("SOAP-ENV:Envelope");
    for (const auto &[attribute, name_space] : DECLARATIONS) {
        envelope.append_attribute(attribute) = name_space;
    }
    return envelope.append_child("SOAP-ENV:Body");
}

std::string write_document(const pugi::xml_document &document) {
    std::ostringstream out;
    document.save(out, "", pugi::format_raw, pugi::encoding_utf8);
    // XML parsers read a literal carriage return as a line feed.
    return boost::replace_all_copy(out.str(), "\r", "&#13;");
}

} // namespace

std::string_view local_name(std::string_view name) {
    return name.substr(name.find(':') + 1);
}

std::variant<service_call, soap_fault> read_envelope(std::string_view body_text) {
    if (!is_valid_utf8(body_text) || body_text.find('\0') != std::string_view::npos) {
        return client_fault("the message is not UTF-8 text");
    }
    pugi::xml_document document;
    const pugi::xml_parse_result parsed = document.load_buffer(body_text.data(), body_text.size(),
                                                               PARSE_OPTIONS, pugi::encoding_utf8);
    if (!parsed) {
        return client_fault(std::string("malformed XML: ") + parsed.description());
    }
    const auto top = element_children(document);
    if (!top || top->size() != 1 ||
        document.find_child([](pugi::xml_node n) { return n.type() == pugi::node_doctype; })) {
        return client_fault("the message is not exactly one element without a document type");
    }
    const auto found = find_body(document);
    if (const auto *fault = std::get_if<soap_fault>(&found)) {
        return *fault;
    }
    const pugi::xml_node body = std::get<pugi::xml_node>(found);
    const std::string_view style = body.select_node(ENCODING_STYLE).attribute().value();
    if (style != ENCODING_NAMESPACE) {
        return client_fault("the body does not state the SOAP encoding style");
    }
    const auto entries = element_children(body);
    if (!entries || entries->size() != 1) {
        return client_fault("the body does not hold exactly one operation");
    }
    const pugi::xml_node entry = entries->front();
    service_call call;
    call.operation = namespace_of(entry) == SERVICE_NAMESPACE
                         ? find_operation(local_name(entry.name()))
                         : nullptr;
    if (call.operation == nullptr) {
        return client_fault("unknown operation '" + std::string(entry.name()) + "'");
    }
    const auto fields = element_children(entry);
    if (!fields) {
        call.complaint = "text between the children";
    } else if (foreign_attribute(entry)) {
        call.complaint = "the operation carries the attribute '" +
                         std::string(foreign_attribute(entry).name()) + "'";
    } else {
        read_fields(*fields, call);
    }
    return call;
}

std::string write_response(const service_operation &operation, const response_fields &fields) {
    pugi::xml_document document;
    pugi::xml_node body = start_envelope(document);
    body.append_attribute("SOAP-ENV:encodingStyle") = ENCODING_NAMESPACE;
    const std::string name = "ns:" + std::string(operation.name) + "Response";
    pugi::xml_node response = body.append_child(name.c_str());
    for (const std::string_view child : child_names(operation.response)) {
        const auto found = fields.find(child);
        response.append_child(std::string(child).c_str()).text() =
            found == fields.end() ? "" : found->second.c_str();
    }
    return write_document(document);
}

std::string write_fault(const soap_fault &fault) {
    pugi::xml_document document;
    pugi::xml_node element = start_envelope(document).append_child("SOAP-ENV:Fault");
    element.append_child("faultcode").text() = ("SOAP-ENV:" + fault.code).c_str();
    element.append_child("faultstring").text() = fault.text.c_str();
    return write_document(document);
}
