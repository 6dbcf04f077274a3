#include "tests/recipes/shell_room.h"

#include <filesystem>

using namespace harness;

namespace {

const char *const MACHINE_PATH = "/usr/bin:/bin";

const shell_row SHELLS[] = {
    {"dash", {"/usr/bin/dash"}, false},
    {"bash", {"/usr/bin/bash"}, false},
    {"ash", {"/usr/bin/busybox", "ash"}, true},
};

INSTANTIATE_TEST_SUITE_P(Library, InShell, testing::ValuesIn(SHELLS),
                         [](const auto &row) { return row.param.name; });

} // namespace

shell_room::shell_room(const shell_row &of) : shell(of), path(programs.path + ":" + MACHINE_PATH) {
    // The scripts below are run by the machine's sh, which finds its programs where they are.
    add_script("lumocmd", std::string("PATH=") + MACHINE_PATH + " exec '" +
                              protocol::joined(lumocmd_command({}), "' '") + "' \"$@\"");
    add_script("logger", "echo \"$*\" >>syslog");
    add_script("sleep", "echo \"$*\" >>pauses");
    if (shell.brings_programs) {
        const std::string applets = programs.path + "/applets";
        std::filesystem::create_directory(applets);
        EXPECT_EQ(harness::run({"/usr/bin/busybox", "--install", "-s", applets}).status, 0);
        path = programs.path + ":" + applets;
    }
}

shell_room::shell_room(const shell_row &of, const std::vector<saying> &sayings) : shell_room(of) {
    add_script("lumocmd", R"sh(printf '<%s>' "$@" >>calls
echo >>calls
number=$(wc -l <calls)
cat "fault.$number" >&2
cat "say.$number"
exit "$(cat "exit.$number")")sh");
    for (std::size_t i = 0; i < sayings.size(); i++) {
        const std::string number = std::to_string(i + 1);
        write_file(directory.path + "/say." + number, sayings[i].output);
        write_file(directory.path + "/fault." + number, sayings[i].errors);
        write_file(directory.path + "/exit." + number, std::to_string(sayings[i].exit));
    }
}

void shell_room::add_script(const std::string &name, const std::string &text) const {
    const std::string file = programs.path + "/" + name;
    write_file(file, "#!/bin/sh\n" + text + "\n");
    std::filesystem::permissions(file, std::filesystem::perms::all);
}

run_result shell_room::run(const std::string &script, const std::string &in) const {
    const std::string file = programs.path + "/script";
    write_file(file, replaced(script, INSTALLED_LIBRARY, LIBRARY));
    words command = {"/usr/bin/env", "PATH=" + path};
    command.insert(command.end(), shell.command.begin(), shell.command.end());
    command.push_back(file);
    return harness::run(command, {.directory = in});
}

run_result shell_room::run_with_library(const std::string &script, const std::string &in) const {
    return run(std::string("set -eu\n. ") + INSTALLED_LIBRARY + "\n" + script,
               in.empty() ? directory.path : in);
}

std::string shell_room::noted(const char *file) const {
    return read_file(directory.path + "/" + file);
}

std::string text_between(const std::string &text, std::size_t &place, const std::string &begin,
                         const std::string &end) {
    const std::size_t from = text.find(begin, place);
    place = from == std::string::npos ? from : text.find(end, from + begin.size());
    return place == std::string::npos
               ? ""
               : text.substr(from + begin.size(), place - from - begin.size());
}
