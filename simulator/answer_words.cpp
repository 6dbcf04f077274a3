// Reads answers leniently: an answer that it cannot read is described by its size.
#include "simulator/answer_words.h"

#include "simulator/envelope.h"
#include "simulator/text.h"

#include <algorithm>
#include <array>
#include <pugixml.hpp>

namespace {

constexpr std::string_view STATUS_TAG = "Response Status: ";
constexpr std::string_view HEAD_END = "\r\n\r\n";
constexpr std::array<std::string_view, 2> RESULTS{"result", "results"};

pugi::xml_node find_named(const pugi::xml_document &document, std::string_view name) {
    return document.find_node(
        [name](pugi::xml_node node) { return local_name(node.name()) == name; });
}

/// What an envelope says; empty when it is none.
std::string envelope_words(std::string_view body) {
    pugi::xml_document document;
    if (!document.load_buffer(body.data(), body.size(), pugi::parse_default, pugi::encoding_utf8)) {
        return "";
    }
    if (const pugi::xml_node fault = find_named(document, "Fault")) {
        return "fault " + std::string(local_name(fault.child_value("faultcode"))) + " (" +
               show_value(fault.child_value("faultstring")) + ")";
    }
    for (const std::string_view name : RESULTS) {
        if (const pugi::xml_node result = find_named(document, name)) {
            return show_value(result.child_value());
        }
    }
    return "";
}

} // namespace

std::string answer_words(const daemon_row &daemon, std::string_view answer) {
    if (!daemon.socket_file.empty() && answer.starts_with(STATUS_TAG)) {
        const std::string_view rest = answer.substr(STATUS_TAG.size());
        return show_value(rest.substr(0, rest.find('\n')));
    }
    const std::size_t head = answer.find(HEAD_END);
    if (daemon.socket_file.empty() && head != std::string_view::npos) {
        const std::string words = envelope_words(answer.substr(head + HEAD_END.size()));
        const std::size_t code = std::min(answer.find(' ') + 1, head);
        return words.empty() ? "HTTP " + show_value(answer.substr(code, 3)) : words;
    }
    return std::to_string(answer.size()) + " raw bytes";
}
