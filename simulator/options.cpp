// Option parsing and the help text: each option is a row with a short function for its argument,
// which returns what is wrong with it, empty when nothing is.
#include "simulator/options.h"

#include "simulator/forward.h"
#include "simulator/home.h"
#include "simulator/text.h"

#include <algorithm>
#include <climits>

namespace {

constexpr int LONGEST_WAIT = 3600 * 1000;
constexpr int MOST_TIMES = 1000000;

using text_argument = const std::string &;

std::string set_number(int &target, text_argument argument, int lowest, int highest) {
    const auto number = read_number(argument, lowest, highest);
    if (!number) {
        return "needs a number from " + std::to_string(lowest) + " to " + std::to_string(highest);
    }
    target = *number;
    return "";
}

std::string set_name(std::string &target, text_argument argument, const char *needed) {
    target = argument;
    return argument.empty() ? std::string("needs ") + needed : "";
}

template <std::string simulator_settings::*target>
std::string set_file(simulator_settings &settings, text_argument argument) {
    return set_name(settings.*target, argument, "the name of a file");
}

template <std::string simulator_settings::*target>
std::string set_directory(simulator_settings &settings, text_argument argument) {
    return set_name(settings.*target, argument, "the name of a directory");
}

template <bool simulator_settings::*target>
std::string turn_on(simulator_settings &settings, text_argument /*argument*/) {
    settings.*target = true;
    return "";
}

std::string set_statuses(told_behaviour &told, text_argument text) {
    told.statuses.clear();
    std::string complaint;
    for (const std::string_view number : split_text(text, ',')) {
        if (complaint.empty()) {
            complaint =
                set_number(told.statuses.emplace_back(), std::string(number), -INT_MAX, INT_MAX);
        }
    }
    return complaint;
}

std::string set_raw(told_behaviour &told, text_argument text) {
    if (text.starts_with('@')) {
        told.raw = file_bytes(text.substr(1));
        return told.raw ? "" : "names a file that cannot be read";
    }
    told.raw = read_escapes(text);
    return told.raw ? "" : "has an escape other than \\n \\r \\t \\0 \\\\ \\\" \\xHH";
}

template <int told_behaviour::*target>
std::string set_times(told_behaviour &told, text_argument text) {
    told.*target = FOR_EVER;
    return text.empty() ? "" : set_number(told.*target, text, 1, MOST_TIMES);
}

std::string set_delay(told_behaviour &told, text_argument text) {
    const std::size_t comma = std::min(text.find(','), text.size());
    std::string complaint = set_number(told.delay, text.substr(0, comma), 0, LONGEST_WAIT);
    told.delays = FOR_EVER;
    if (complaint.empty() && comma < text.size()) {
        complaint = set_number(told.delays, text.substr(comma + 1), 1, MOST_TIMES);
    }
    return complaint;
}

std::string in_brackets(text_argument text) {
    return " [" + text + "]";
}

// clang-format off
constexpr option_row OPTION_ROWS[] = {
    {"--directory", "DIR", "where the sockets are made", set_directory<&simulator_settings::directory>, nullptr,
     [] { return in_brackets(DEFAULT_DIRECTORY); }},
    {"--port", "N", "port of the web service, 0 for any free one",
     [](simulator_settings &settings, text_argument text) { return set_number(settings.port, text, 0, 65535); }, nullptr,
     [] { return in_brackets(std::to_string(DEFAULT_PORT)); }},
    {"--ready-file", "FILE", "written when everything listens, removed at the end", set_file<&simulator_settings::ready_file>},
    {"--session", "ID", "opens one more session of the user",
     [](simulator_settings &settings, text_argument text) { return set_name(settings.sessions.emplace_back(), text, "a session identifier"); }, nullptr,
     [] { return " " + std::string(FIRST_USER.name); }},
    {"--patience", "MS", "time that a client has for its request",
     [](simulator_settings &settings, text_argument text) { return set_number(settings.patience, text, 1, LONGEST_WAIT); }, nullptr,
     [] { return in_brackets(std::to_string(simulator_settings().patience)); }},
    {"--raw", "", "also prints the bytes of requests and answers", turn_on<&simulator_settings::raw>},
    {"--answer", "DAEMON=STATUS", "answers this status number", nullptr, set_statuses},
    {"--answer-raw", "DAEMON=TEXT", "answers these bytes, or those of a file: DAEMON=@FILE", nullptr, set_raw},
    {"--delay", "DAEMON=MS[,TIMES]", "waits before the answer", nullptr, set_delay},
    {"--close", "DAEMON[=TIMES]", "closes without an answer", nullptr, set_times<&told_behaviour::closes>},
    {"--refuse", "DAEMON[=TIMES]", "refuses connections", nullptr, set_times<&told_behaviour::refusals>},
    {"--expect", "FILE", "ends with 3 unless exactly the requests of this list came", set_file<&simulator_settings::expect_file>},
    {"--any-order", "", "lets them come in any order", turn_on<&simulator_settings::any_order>},
    {"--record", "FILE", "writes such a list", set_file<&simulator_settings::record_file>},
    {"--replay", "FILE", "answers as in such a list", set_file<&simulator_settings::replay_file>},
    {"--forward-sockets", "DIR", "asks the real daemons whose sockets are here", set_directory<&simulator_settings::forward_directory>},
    {"--forward-url", "URL", "asks the real web service",
     [](simulator_settings &settings, text_argument text) {
         settings.forward_url = text;
         return std::string(read_web_address(text) ? "" : "needs an address such as http://192.168.1.2:80/path");
     }},
    {"--state", "FILE", "the home at the start, as JSON", set_file<&simulator_settings::state_file>},
    {"--state-out", "FILE", "written at the end; - prints it", set_file<&simulator_settings::state_out_file>},
    {"--log-format", "FORMAT", "text or json",
     [](simulator_settings &settings, text_argument text) {
         settings.log_format = text == "json" ? log_format_kind::JSON : log_format_kind::TEXT;
         return std::string(text == "json" || text == "text" ? "" : "needs text or json");
     }, nullptr, [] { return in_brackets("text"); }},
    {"--help", "", "prints this text", turn_on<&simulator_settings::help>, nullptr, nullptr, true},
    {"--version", "", "prints the version", turn_on<&simulator_settings::version>, nullptr, nullptr, true},
    {SCRIPT_OPTION, "COMMAND ...", "serves this command, and ends with it",
     [](simulator_settings &settings, text_argument text) { return set_name(settings.script.emplace_back(), text, "a command"); }},
};
// clang-format on

/// Applies DAEMON=TEXT to the daemon.
std::string tell_daemon(const option_row &option, simulator_settings &settings,
                        text_argument argument) {
    const std::size_t equals = std::min(argument.find('='), argument.size());
    const daemon_row *daemon = find_daemon(argument.substr(0, equals));
    if (daemon == nullptr) {
        return "names no daemon; write one of " + daemon_keys(", ");
    }
    if (option.argument == "DAEMON[=TIMES]" && argument.ends_with('=')) {
        return "needs a number after the equals sign";
    }
    return option.tell(settings.behaviours[row_of(*daemon)],
                       argument.substr(std::min(equals + 1, argument.size())));
}

/// Refuses two ways of answering for one daemon.
std::string find_conflict(const simulator_settings &settings) {
    for (const daemon_row &daemon : DAEMONS) {
        const told_behaviour &told = settings.behaviours[row_of(daemon)];
        const bool closes = told.closes != 0;
        const bool refuses = told.refusals != 0;
        if (!told.statuses.empty() + told.raw.has_value() + closes + refuses > 1) {
            return "only one of --answer, --answer-raw, --close and --refuse can be given for " +
                   std::string(daemon.key);
        }
        if (refuses && told.refusals != FOR_EVER && daemon.socket_file.empty()) {
            return "--refuse counts the connections to a socket only, not to " +
                   std::string(daemon.key) + "; --close counts its requests";
        }
    }
    if (settings.any_order && settings.expect_file.empty()) {
        return "--any-order belongs to --expect";
    }
    if (!settings.replay_file.empty() &&
        !(settings.forward_directory.empty() && settings.forward_url.empty())) {
        return "only one of --replay and --forward-sockets or --forward-url can be given";
    }
    return "";
}

} // namespace

constinit const std::span<const option_row> OPTIONS = OPTION_ROWS;

std::string read_options(const std::vector<std::string> &arguments, simulator_settings &settings) {
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const std::size_t equals = arguments[i].find('=');
        const std::string name = arguments[i].substr(0, equals);
        const auto option = std::ranges::find(OPTIONS, name, &option_row::name);
        if (option == OPTIONS.end()) {
            return "unknown option '" + name + "'";
        }
        std::string argument;
        if (option->argument.empty() && equals != std::string::npos) {
            return name + " takes no argument";
        }
        if (equals != std::string::npos) {
            argument = arguments[i].substr(equals + 1);
        } else if (!option->argument.empty()) {
            if (++i == arguments.size()) {
                return name + " needs " + std::string(option->argument) + " after it";
            }
            argument = arguments[i];
        }
        const std::string complaint = option->tell == nullptr
                                          ? option->apply(settings, argument)
                                          : tell_daemon(*option, settings, argument);
        if (!complaint.empty()) {
            return std::string(name).append(" '").append(argument).append("' ") + complaint;
        }
        if (name == SCRIPT_OPTION) {
            while (++i < arguments.size()) {
                settings.script.push_back(arguments[i]);
            }
        }
    }
    settings.port = settings.port >= 0 ? settings.port : settings.script.empty() ? DEFAULT_PORT : 0;
    if (settings.script.empty() && settings.directory.empty()) {
        settings.directory = DEFAULT_DIRECTORY;
    }
    return find_conflict(settings);
}

std::string help_text() {
    std::string text =
        "Usage: lumosim [OPTION...] [-- COMMAND ...]\n"
        "Simulates the daemons of a home-automation controller: FSMCore and the gateways on\n"
        "Unix sockets in one directory, the web service on 127.0.0.1. Prints a line per request.\n"
        "Stop it with Ctrl-C.\n\n";
    for (const option_row &option : OPTIONS) {
        std::string left = "  ";
        left.append(option.name).append(" ").append(option.argument);
        left.resize(std::max<std::size_t>(left.size() + 1, 30), ' ');
        text.append(left).append(option.help);
        text += option.help_end == nullptr ? "\n" : option.help_end() + "\n";
    }
    text +=
        "\nDAEMON is one of:\n  " + daemon_keys(" ") +
        "\nTEXT may hold \\n \\r \\t \\0 \\\\ \\\" and \\xHH; for soap it is the whole HTTP answer.\n"
        "STATUS may be several, such as 107,0: one for each request, the last one stays.\n"
        "TIMES ends it after the first so many requests, or connections that were refused.\n"
        "\nUsers of the web service (password, session that a login opens):\n";
    for (const user_account &user : USERS) {
        text.append("  ").append(user.name).append(" (").append(user.password).append(", ");
        text.append(user.session).append(")\n");
    }
    return text.append(FIRST_USER.session) +
           " is open from the start.\n"
           "\nExit status: 0 stopped by a signal, 1 cannot start, 2 wrong options.\n"
           "It is 3 when other requests came than --expect lists.\n"
           "With a command it is the command's, 128 + n after signal n; where that is 0, it is 3\n"
           "for other requests. It is 125 when lumosim fails, 126 or 127 when the command cannot run.\n"
           "\nA browser shows the home and the last requests at http://127.0.0.1:PORT/\n"
           "For systemd there is lumosim.service; lumosim(1) tells how a class-room runs many.\n";
}
