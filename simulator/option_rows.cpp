// The table of options. Each option is a row with a short function for its argument; the functions
// return what is wrong with it, empty when nothing is.
#include "simulator/forward.h"
#include "simulator/home.h"
#include "simulator/options.h"
#include "simulator/text.h"

#include <algorithm>
#include <climits>
#include <fstream>
#include <sstream>

namespace {

constexpr int LONGEST_WAIT = 3600 * 1000;

struct LogFormatName {
    std::string_view name;
    LogFormat format;
};

/// The usual one first.
constexpr LogFormatName LOG_FORMATS[] = {{"text", LogFormat::text}, {"json", LogFormat::json}};

/// The two sides of DAEMON=TEXT.
struct Told {
    Behaviour *behaviour; ///< null when there is no such daemon
    std::string text;     ///< empty without '='
};

Told split_told(Settings &settings, const std::string &argument) {
    const std::size_t equals = argument.find('=');
    const Daemon *daemon = find_daemon(argument.substr(0, equals));
    if (daemon == nullptr) {
        return {nullptr, ""};
    }
    return {&settings.behaviours[row_of(*daemon)],
            equals == std::string::npos ? "" : argument.substr(equals + 1)};
}

std::string complain_about_daemon() {
    std::string complaint = "names no daemon; write one of";
    const char *separator = " ";
    for (const Daemon &row : DAEMONS) {
        complaint.append(separator).append(row.key);
        separator = ", ";
    }
    return complaint;
}

std::string set_number(const std::string &argument, int lowest, int highest, int &target) {
    const auto number = read_number(argument, lowest, highest);
    if (!number) {
        return "needs a number from " + std::to_string(lowest) + " to " + std::to_string(highest);
    }
    target = *number;
    return "";
}

std::string set_name(const std::string &argument, const char *kind, std::string &target) {
    target = argument;
    return argument.empty() ? "needs the name of a " + std::string(kind) : "";
}

template <std::string Settings::*target>
std::string set_directory(Settings &settings, const std::string &argument) {
    return set_name(argument, "directory", settings.*target);
}

template <std::string Settings::*target>
std::string set_file(Settings &settings, const std::string &argument) {
    return set_name(argument, "file", settings.*target);
}

std::string set_port(Settings &settings, const std::string &argument) {
    return set_number(argument, 0, 65535, settings.port);
}

std::string add_session(Settings &settings, const std::string &argument) {
    settings.sessions.push_back(argument);
    return argument.empty() ? "needs a session identifier" : "";
}

std::string set_patience(Settings &settings, const std::string &argument) {
    return set_number(argument, 1, LONGEST_WAIT, settings.patience);
}

std::string set_answer(Settings &settings, const std::string &argument) {
    const auto [behaviour, text] = split_told(settings, argument);
    if (behaviour == nullptr) {
        return complain_about_daemon();
    }
    behaviour->statuses.clear();
    std::string complaint;
    for (std::size_t at = 0; at <= text.size() && complaint.empty();) {
        const std::size_t comma = std::min(text.find(',', at), text.size());
        complaint = set_number(text.substr(at, comma - at), -INT_MAX, INT_MAX,
                               behaviour->statuses.emplace_back());
        at = comma + 1;
    }
    return complaint;
}

std::string set_answer_raw(Settings &settings, const std::string &argument) {
    const auto [behaviour, text] = split_told(settings, argument);
    if (behaviour == nullptr) {
        return complain_about_daemon();
    }
    if (text.starts_with('@')) {
        std::ifstream file(text.substr(1), std::ios::binary);
        std::ostringstream bytes;
        bytes << file.rdbuf();
        behaviour->raw = bytes.str();
        return file.is_open() && !file.bad() ? "" : "names a file that cannot be read";
    }
    behaviour->raw = read_escapes(text);
    return behaviour->raw ? "" : "has an escape other than \\n \\r \\t \\0 \\\\ \\\" \\xHH";
}

std::string set_delay(Settings &settings, const std::string &argument) {
    const auto [behaviour, text] = split_told(settings, argument);
    if (behaviour == nullptr) {
        return complain_about_daemon();
    }
    return set_number(text, 0, LONGEST_WAIT, behaviour->delay);
}

std::string set_flag(Settings &settings, const std::string &argument, bool Behaviour::*flag) {
    const auto [behaviour, text] = split_told(settings, argument);
    if (behaviour == nullptr) {
        return complain_about_daemon();
    }
    if (argument.find('=') != std::string::npos) {
        return "takes a daemon's name alone";
    }
    behaviour->*flag = true;
    return "";
}

std::string set_close(Settings &settings, const std::string &argument) {
    return set_flag(settings, argument, &Behaviour::close);
}

std::string set_refuse(Settings &settings, const std::string &argument) {
    return set_flag(settings, argument, &Behaviour::refuse);
}

std::string set_forward_url(Settings &settings, const std::string &argument) {
    settings.forward_url = argument;
    return read_web_address(argument) ? "" : "needs an address such as http://192.168.1.2:80/path";
}

std::string set_log_format(Settings &settings, const std::string &argument) {
    for (const LogFormatName &row : LOG_FORMATS) {
        if (row.name == argument) {
            settings.log_format = row.format;
            return "";
        }
    }
    return "needs text or json";
}

template <bool Settings::*target>
std::string turn_on(Settings &settings, const std::string & /*argument*/) {
    settings.*target = true;
    return "";
}

std::string default_directory() {
    return " [" + Settings().directory + "]";
}

std::string default_port() {
    return " [" + std::to_string(Settings().port) + "]";
}

std::string default_patience() {
    return " [" + std::to_string(Settings().patience) + "]";
}

std::string default_log_format() {
    return " [" + std::string(LOG_FORMATS[0].name) + "]";
}

std::string first_user() {
    return " " + std::string(FIRST_USER.name);
}

constexpr Option OPTION_ROWS[] = {
    {"--directory", "DIR", "where the sockets are made", set_directory<&Settings::directory>,
     default_directory},
    {"--port", "N", "port of the web service, 0 for any free one", set_port, default_port},
    {"--ready-file", "FILE", "written when everything listens, removed at the end",
     set_file<&Settings::ready_file>},
    {"--session", "ID", "opens one more session of the user", add_session, first_user},
    {"--patience", "MS", "time that a client has for its request", set_patience, default_patience},
    {"--raw", "", "also prints the bytes of requests and answers", turn_on<&Settings::raw>},
    {"--answer", "DAEMON=STATUS", "answers this status number", set_answer},
    {"--answer-raw", "DAEMON=TEXT", "answers these bytes, or those of a file: DAEMON=@FILE",
     set_answer_raw},
    {"--delay", "DAEMON=MS", "waits before the answer", set_delay},
    {"--close", "DAEMON", "closes without an answer", set_close},
    {"--refuse", "DAEMON", "refuses connections", set_refuse},
    {"--expect", "FILE", "ends with 3 unless exactly the requests of this list came",
     set_file<&Settings::expect_file>},
    {"--any-order", "", "lets them come in any order", turn_on<&Settings::any_order>},
    {"--record", "FILE", "writes such a list", set_file<&Settings::record_file>},
    {"--replay", "FILE", "answers as in such a list", set_file<&Settings::replay_file>},
    {"--forward-sockets", "DIR", "asks the real daemons whose sockets are here",
     set_directory<&Settings::forward_directory>},
    {"--forward-url", "URL", "asks the real web service", set_forward_url},
    {"--state", "FILE", "the home at the start, as JSON", set_file<&Settings::state_file>},
    {"--state-out", "FILE", "written at the end; - prints it", set_file<&Settings::state_out_file>},
    {"--log-format", "FORMAT", "text or json", set_log_format, default_log_format},
    {"--help", "", "prints this text", turn_on<&Settings::help>, nullptr, true},
    {"--version", "", "prints the version", turn_on<&Settings::version>, nullptr, true},
};

} // namespace

constinit const std::span<const Option> OPTIONS = OPTION_ROWS;
