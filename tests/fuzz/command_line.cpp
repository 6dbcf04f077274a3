// The command line: any words through the parser, compared with a second reading of them.

#include "front/request_record.h"
#include "front/utility.h"
#include "tests/fuzz/reference.h"
#include "tests/fuzz/target.h"
#include "tests/protocol/request_types.h"

#include <memory>
#include <optional>
#include <vector>

namespace {

using fuzz::green;
using fuzz::outcome;
using fuzz::red;
using fuzz::require;
using fuzz::require_equal;
using reference::equal_ignoring_case;

const std::vector<protocol::request_type_row> TYPES = protocol::request_types();

/// What the words come to.
struct meaning {
    std::optional<std::string> address, socket, url, parameters, function;
    bool verbose = false;
    int waittime = 0;
    int port = 0;
    int type = 0;
    std::optional<int> exit_status; ///< none: the type is returned
    std::string output;
};

/// What becomes of the scan after an option.
enum step { SCAN_ON, SCAN_OVER };

void say(meaning *m, const std::string &line) {
    m->output += m->verbose ? green(line) : "";
}

step fail(meaning *m, int status, const std::string &message) {
    m->output += message.empty() ? "" : red(m->verbose, message);
    m->exit_status = status;
    return SCAN_OVER;
}

step take_type(meaning *m, const std::string &keyword) {
    for (const protocol::request_type_row &row : TYPES) {
        if (!equal_ignoring_case(keyword, row.keyword)) {
            continue;
        }
        m->type = row.code;
        if (row.need == nullptr) {
            m->output += red(m->verbose, row.line);
        } else {
            say(m, row.line);
        }
        return SCAN_ON;
    }
    return SCAN_OVER;
}

step take_text(meaning *m, std::optional<std::string> *field, const std::string &value,
               const std::string &line) {
    *field = value;
    say(m, "[lumocmd] " + line + " selected: " + value);
    return SCAN_ON;
}

step take_option(meaning *m, char letter, const std::string &value) {
    const std::string bad = "utility->parse_cmd_line bad parameter: ";
    const reference::number number = reference::read_number(value);
    switch (letter) {
    case 'a':
        return take_text(m, &m->address, value, "Internet service address");
    case 'f':
        return take_text(m, &m->function, value, "Function");
    case 'p':
        return take_text(m, &m->parameters, value, "Parameters");
    case 's':
        return take_text(m, &m->socket, value, "Socket");
    case 'u':
        return take_text(m, &m->url, value, "Url");
    case 't':
        return take_type(m, value);
    case 'd':
        m->port = number.value;
        if (!number.is_valid || number.value <= 1024) {
            return fail(m, 502, bad + "service port must be a number and upper than 1024");
        }
        say(m, "[lumocmd] Port selected: " + std::to_string(number.value));
        return SCAN_ON;
    case 'w':
        m->waittime = number.value;
        if (!number.is_valid) {
            return fail(m, 502, bad + "waittime must be a number");
        }
        say(m, "[lumocmd] Waittime selected: " + std::to_string(number.value));
        return SCAN_ON;
    case 'v':
        if (!equal_ignoring_case(value, "ON") && !equal_ignoring_case(value, "OFF")) {
            return SCAN_OVER;
        }
        m->verbose = equal_ignoring_case(value, "ON");
        return SCAN_ON;
    default:
        return fail(m, 506, "");
    }
}

void check_required(meaning *m) {
    const protocol::request_type_row *row = nullptr;
    for (const protocol::request_type_row &known : TYPES) {
        row = known.code == m->type && known.need != nullptr ? &known : row;
    }
    if (row == nullptr) {
        fail(m, 506, "");
        return;
    }
    bool is_complete = m->function && m->parameters;
    if (row->need == &protocol::SOAP_NEED) {
        is_complete = m->url && m->function;
    } else if (row->need == &protocol::INTERNET_NEED) {
        is_complete = is_complete && m->address && m->port != 0;
    } else {
        is_complete = is_complete && m->socket;
    }
    if (!is_complete) {
        fail(m, 505, protocol::need_message(*row));
    }
}

/// Reads the words behind the program's name. Words that are no options may stand between the
/// options, but then the request is malformed; "--" ends the options.
meaning read_words(const std::vector<std::string> &words) {
    meaning m;
    bool has_other_words = false;
    std::size_t at = 0;
    while (at < words.size()) {
        const std::string &word = words[at++];
        if (word == "--") {
            has_other_words = has_other_words || at < words.size();
            break;
        }
        if (word.size() < 2 || word[0] != '-') {
            has_other_words = true;
            continue;
        }
        // No option goes without an argument, so a word holds one; but those that are not known
        // end everything anyway.
        const char letter = word[1];
        const bool is_known = std::string("vtusadfpw").find(letter) != std::string::npos;
        if (!is_known || (word.size() == 2 && at == words.size())) {
            fail(&m, 506, "");
            return m;
        }
        const std::string value = word.size() > 2 ? word.substr(2) : words[at++];
        if (take_option(&m, letter, value) == SCAN_OVER) {
            return m;
        }
    }
    if (has_other_words) {
        fail(&m, 505, "utility->parse_cmd_line malformed request");
        return m;
    }
    check_required(&m);
    return m;
}

void check_field(const char *name, const char *is, const std::optional<std::string> &wanted) {
    require((is != nullptr) == wanted.has_value(), name);
    require_equal(name, is == nullptr ? "" : is, wanted.value_or(""));
}

/// Only a run that goes on looks at the record.
void check_record(const meaning &wanted) {
    check_field("address", g_config.address, wanted.address);
    check_field("socket", g_config.socket_path, wanted.socket);
    check_field("url", g_config.url, wanted.url);
    check_field("parameters", g_config.parameters, wanted.parameters);
    check_field("function", g_config.function, wanted.function);
    require_equal("verbose", g_config.verbose, wanted.verbose ? 1 : 0);
    require_equal("waittime", g_config.waittime, wanted.waittime);
    require_equal("port", g_config.port, wanted.port);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    fuzz::input in(data, size);
    std::vector<std::string> words;
    std::vector<std::unique_ptr<fuzz::exact_text>> blocks;
    std::vector<char *> arguments;
    blocks.push_back(std::make_unique<fuzz::exact_text>("lumocmd"));
    while (!in.is_empty()) {
        words.push_back(in.field());
        blocks.push_back(std::make_unique<fuzz::exact_text>(words.back()));
    }
    arguments.reserve(blocks.size() + 1);
    for (const auto &block : blocks) {
        arguments.push_back(block->get());
    }
    arguments.push_back(nullptr);
    const meaning wanted = read_words(words);
    const outcome seen = fuzz::run_product({}, false, [&] {
        const int type = parse_cmd_line(static_cast<int>(words.size()) + 1, arguments.data());
        check_record(wanted);
        return type;
    });
    require_equal("output", seen.output, wanted.output);
    require_equal("process ends", seen.exited, wanted.exit_status.has_value());
    require_equal("result", seen.value, wanted.exit_status.value_or(wanted.type));
    if (wanted.exit_status == 506) {
        require(seen.report.find("Usage: lumocmd [-v] -t [options t-based]\nOptions:\n") !=
                        std::string::npos &&
                    seen.report.ends_with("\n   -h: displays help\n\n"),
                "help is shown");
    } else {
        require_equal("report", seen.report, "");
    }
    return 0;
}
