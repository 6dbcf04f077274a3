// Option parsing and the help text. Knows no option by name, apart from those that exclude others.
#include "simulator/options.h"

#include "simulator/home.h"

#include <algorithm>

namespace {

/// A daemon answers in one way only.
std::string find_conflict(const Settings &settings) {
    for (const Daemon &daemon : DAEMONS) {
        const Behaviour &told = settings.behaviours[row_of(daemon)];
        const int ways = (told.statuses.empty() ? 0 : 1) + (told.raw ? 1 : 0) +
                         (told.close ? 1 : 0) + (told.refuse ? 1 : 0);
        if (ways > 1) {
            return "only one of --answer, --answer-raw, --close and --refuse can be given for " +
                   std::string(daemon.key);
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
        "STATUS may be several, such as 107,0: one for each request, the last one stays.\n"
        "\nUsers of the web service (password, session that a login opens):\n";
    for (const User &user : USERS) {
        text += "  " + std::string(user.name) + " (" + std::string(user.password) + ", " +
                std::string(user.session) + ")\n";
    }
    return text.append(FIRST_USER.session) +
           " is open from the start.\n"
           "\nExit status: 0 stopped by a signal, 1 cannot start, 2 wrong options.\n"
           "It is 3 when other requests came than --expect lists.\n"
           "\nA browser shows the home and the last requests at http://127.0.0.1:PORT/\n"
           "For systemd there is lumosim.service; lumosim(1) tells how a class-room runs many.\n";
}
