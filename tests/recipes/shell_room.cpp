#include "tests/recipes/shell_room.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

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
    const char *wrapper = getenv("LUMOCMD_WRAPPER");
    add_script("lumocmd", std::string("PATH=") + MACHINE_PATH + " exec " +
                              (wrapper == nullptr ? "" : wrapper) + " '" + lumocmd_path() +
                              "' \"$@\"");
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
        std::ofstream(directory.path + "/say." + number) << sayings[i].output;
        std::ofstream(directory.path + "/fault." + number) << sayings[i].errors;
        std::ofstream(directory.path + "/exit." + number) << sayings[i].exit;
    }
}

void shell_room::add_script(const std::string &name, const std::string &text) const {
    const std::string file = programs.path + "/" + name;
    std::ofstream(file) << "#!/bin/sh\n" << text << "\n";
    std::filesystem::permissions(file, std::filesystem::perms::all);
}

run_result shell_room::run(const std::string &script, const std::string &in) const {
    const std::string file = programs.path + "/script";
    std::ofstream(file) << replaced(script, INSTALLED_LIBRARY, LIBRARY);
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
    return file_text(directory.path + "/" + file);
}

std::string file_text(const std::string &path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

std::string replaced(std::string text, const std::string &from, const std::string &to) {
    for (std::size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += to.size()) {
        text.replace(at, from.size(), to);
    }
    return text;
}

std::string service_url(int port) {
    return "http://127.0.0.1:" + std::to_string(port) + "/cgi-bin/lumows";
}

std::string requests_in(const std::string &said) {
    const std::string ready = "\nready\n";
    return said.substr(said.find(ready) + ready.size());
}
