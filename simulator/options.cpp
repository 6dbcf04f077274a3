// Option parsing. Each option is a row with a short function for its argument; the functions
// return what is wrong with it, empty when nothing is.
#include "options.h"

#include "home.h"
#include "text.h"

#include <algorithm>
#include <climits>
#include <fstream>
#include <iterator>

namespace {

constexpr int LONGEST_WAIT = 3600 * 1000;

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

std::string set_directory(Settings &settings, const std::string &argument) {
    settings.directory = argument;
    return argument.empty() ? "needs the name of a directory" : "";
}

std::string set_port(Settings &settings, const std::string &argument) {
    return set_number(argument, 0, 65535, settings.port);
}

std::string set_ready_file(Settings &settings, const std::string &argument) {
    settings.ready_file = argument;
    return argument.empty() ? "needs the name of a file" : "";
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
    return set_number(text, -INT_MAX, INT_MAX, behaviour->status.emplace());
}

std::string set_answer_raw(Settings &settings, const std::string &argument) {
    const auto [behaviour, text] = split_told(settings, argument);
    if (behaviour == nullptr) {
        return complain_about_daemon();
    }
    if (text.starts_with('@')) {
        std::ifstream file(text.substr(1), std::ios::binary);
        behaviour->raw = std::string(std::istreambuf_iterator<char>(file), {});
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

std::string set_raw(Settings &settings, const std::string & /*argument*/) {
    settings.raw = true;
    return "";
}

std::string set_help(Settings &settings, const std::string & /*argument*/) {
    settings.help = true;
    return "";
}

std::string set_version(Settings &settings, const std::string & /*argument*/) {
    settings.version = true;
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

std::string first_user() {
    return " " + std::string(FIRST_USER.name);
}

constexpr Option ROWS[] = {
    {"--directory", "DIR", "where the sockets are made", set_directory, default_directory},
    {"--port", "N", "port of the web service, 0 for any free one", set_port, default_port},
    {"--ready-file", "FILE", "written when everything listens, removed at the end", set_ready_file},
    {"--session", "ID", "opens one more session of the user", add_session, first_user},
    {"--patience", "MS", "time that a client has for its request", set_patience, default_patience},
    {"--raw", "", "also prints the bytes of requests and answers", set_raw},
    {"--answer", "DAEMON=STATUS", "answers this status number", set_answer},
    {"--answer-raw", "DAEMON=TEXT", "answers these bytes, or those of a file: DAEMON=@FILE",
     set_answer_raw},
    {"--delay", "DAEMON=MS", "waits before the answer", set_delay},
    {"--close", "DAEMON", "closes without an answer", set_close},
    {"--refuse", "DAEMON", "refuses connections", set_refuse},
    {"--help", "", "prints this text", set_help, nullptr, true},
    {"--version", "", "prints the version", set_version, nullptr, true},
};

/// A daemon answers in one way only.
std::string find_conflict(const Settings &settings) {
    for (const Daemon &daemon : DAEMONS) {
        const Behaviour &told = settings.behaviours[row_of(daemon)];
        const int ways = (told.status ? 1 : 0) + (told.raw ? 1 : 0) + (told.close ? 1 : 0) +
                         (told.refuse ? 1 : 0);
        if (ways > 1) {
            return "only one of --answer, --answer-raw, --close and --refuse can be given for " +
                   std::string(daemon.key);
        }
    }
    return "";
}

} // namespace

constinit const std::span<const Option> OPTIONS = ROWS;

std::string read_options(const std::vector<std::string> &arguments, Settings &settings) {
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const std::size_t equals = arguments[i].find('=');
        const std::string name = arguments[i].substr(0, equals);
        const auto option = std::find_if(OPTIONS.begin(), OPTIONS.end(),
                                         [&](const Option &row) { return row.name == name; });
        if (option == OPTIONS.end()) {
            return "unknown option '" + name + "'";
        }
        std::string argument;
        if (option->argument.empty()) {
            if (equals != std::string::npos) {
                return name + " takes no argument";
            }
        } else if (equals != std::string::npos) {
            argument = arguments[i].substr(equals + 1);
        } else if (++i < arguments.size()) {
            argument = arguments[i];
        } else {
            return name + " needs " + std::string(option->argument) + " after it";
        }
        const std::string complaint = option->apply(settings, argument);
        if (!complaint.empty()) {
            std::string explained = name;
            return explained.append(" '").append(argument).append("' ").append(complaint);
        }
    }
    return find_conflict(settings);
}

std::string help_text() {
    std::string text =
        "Usage: lumosim [OPTION...]\n"
        "Simulates the daemons of a home-automation controller: FSMCore and the gateways on\n"
        "Unix sockets in one directory, the web service on 127.0.0.1. Prints a line per request.\n"
        "Stop it with Ctrl-C.\n\n";
    for (const Option &option : OPTIONS) {
        std::string left = "  ";
        left.append(option.name).append(" ").append(option.argument);
        left.resize(std::max<std::size_t>(left.size() + 1, 30), ' ');
        text.append(left).append(option.help);
        text += option.help_end == nullptr ? "\n" : option.help_end() + "\n";
    }
    text += "\nDAEMON is one of:\n ";
    for (const Daemon &daemon : DAEMONS) {
        text += " " + std::string(daemon.key);
    }
    text +=
        "\nTEXT may hold \\n \\r \\t \\0 \\\\ \\\" and \\xHH; for soap it is the whole HTTP answer.\n"
        "\nUsers of the web service (password, session that a login opens):\n";
    for (const User &user : USERS) {
        text += "  " + std::string(user.name) + " (" + std::string(user.password) + ", " +
                std::string(user.session) + ")\n";
    }
    return text.append(FIRST_USER.session) +
           " is open from the start.\n"
           "\nExit status: 0 stopped by a signal, 1 cannot start, 2 wrong options.\n";
}
