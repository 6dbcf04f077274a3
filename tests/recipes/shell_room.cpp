#include "tests/recipes/shell_room.h"

#include <filesystem>

using namespace harness;

namespace {

const char *const MACHINE_PATH = "/usr/bin:/bin";

INSTANTIATE_TEST_SUITE_P(Library, InShell, testing::Values("dash", "bash", "ash"),
                         [](const auto &row) { return std::string(row.param); });

} // namespace

shell_room::shell_room(const std::string &shell_name)
    : shell(shell_name), path(programs.path + ":" + MACHINE_PATH) {
    // The scripts below are run by the machine's sh, which finds its programs where they are.
    add_script("lumocmd", std::string("PATH=") + MACHINE_PATH + " exec '" +
                              protocol::joined(lumocmd_command({}), "' '") + "' \"$@\"");
    add_script("logger", "echo \"logger $*\"");
    add_script("sleep", "echo \"sleep $*\"");
    if (shell == "ash") { // brings its own programs
        const std::string applets = programs.path + "/applets";
        std::filesystem::create_directory(applets);
        EXPECT_EQ(harness::run({"/usr/bin/busybox", "--install", "-s", applets}).status, 0);
        path = programs.path + ":" + applets;
    }
}

shell_room::shell_room(const std::string &shell_name, const std::vector<saying> &sayings)
    : shell_room(shell_name) {
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
    return harness::run({"/usr/bin/env", "PATH=" + path, shell, file}, {.directory = in});
}

run_result shell_room::run_with_library(const std::string &script) const {
    return run(std::string("set -eu\n. ") + INSTALLED_LIBRARY + "\n" + script, directory.path);
}

std::string text_between(const std::string &text, std::size_t &place, const std::string &begin,
                         const std::string &end) {
    const std::size_t from = text.find(begin, place);
    place = from == std::string::npos ? from : text.find(end, from + begin.size());
    return place == std::string::npos
               ? ""
               : text.substr(from + begin.size(), place - from - begin.size());
}
