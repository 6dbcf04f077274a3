#include "tests/recipes/shell_room.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

using namespace harness;

const std::vector<shell_row> SHELLS = {
    {"dash", {"/usr/bin/dash"}, false},
    {"bash", {"/usr/bin/bash"}, false},
    {"ash", {"/usr/bin/busybox", "ash"}, true},
};

void PrintTo(const shell_row &shell, std::ostream *out) {
    *out << shell.name;
}

const char *const INSTALLED_LIBRARY = "/usr/share/lumocmd/lumo.sh";
const char *const LIBRARY = PROJECT_DIRECTORY "/shell/lumo.sh";

namespace {

const char *const MACHINE_PATH = "/usr/bin:/bin";

} // namespace

shell_room::shell_room(const shell_row &shell) : shell_(shell) {
    // The scripts below are run by the machine's sh, which finds its programs where they are.
    const char *wrapper = getenv("LUMOCMD_WRAPPER");
    add_script("lumocmd", std::string("PATH=") + MACHINE_PATH + " exec " +
                              (wrapper == nullptr ? "" : wrapper) + " '" + lumocmd_path() +
                              "' \"$@\"");
    add_script("logger", "echo \"$*\" >>syslog");
    add_script("sleep", "echo \"$*\" >>pauses");
    path_ = programs_.path + ":" + MACHINE_PATH;
    if (shell.brings_programs) {
        const std::string applets = programs_.path + "/applets";
        std::filesystem::create_directory(applets);
        if (harness::run({"/usr/bin/busybox", "--install", "-s", applets}).status != 0) {
            throw std::runtime_error("busybox does not install its programs");
        }
        path_ = programs_.path + ":" + applets;
    }
}

void shell_room::add_program(const std::string &name) const {
    const std::string link = programs_.path + "/" + name;
    for (const char *directory : {"/usr/bin/", "/bin/"}) {
        if (std::filesystem::exists(directory + name)) {
            std::filesystem::create_symlink(directory + name, link);
            return;
        }
    }
    throw std::runtime_error("no program " + name);
}

void shell_room::add_script(const std::string &name, const std::string &text) const {
    const std::string path = programs_.path + "/" + name;
    std::ofstream(path) << "#!/bin/sh\n" << text << "\n";
    std::filesystem::permissions(path, std::filesystem::perms::all);
}

run_result shell_room::run(const std::string &script, const std::string &directory) const {
    const std::string file = programs_.path + "/script";
    std::ofstream(file) << replaced(script, INSTALLED_LIBRARY, LIBRARY);
    words command = {"/usr/bin/env", "PATH=" + path_};
    command.insert(command.end(), shell_.command.begin(), shell_.command.end());
    command.push_back(file);
    return harness::run(command, {.directory = directory});
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
