#include "tests/recipes/stage.h"

#include <fstream>

using namespace harness;

namespace {

/// Notes its arguments, a call per line; what the call with number N says is in say.N and fault.N,
/// what it exits with in exit.N.
const char *const STAND_IN = R"sh(printf '<%s>' "$@" >>calls
echo >>calls
number=$(wc -l <calls)
cat "fault.$number" >&2
cat "say.$number"
exit "$(cat "exit.$number")")sh";

} // namespace

stage::stage(const shell_row &shell, const std::vector<saying> &sayings) : room(shell) {
    room.add_script("lumocmd", STAND_IN);
    for (std::size_t i = 0; i < sayings.size(); i++) {
        const std::string number = std::to_string(i + 1);
        std::ofstream(directory.path + "/say." + number) << sayings[i].output;
        std::ofstream(directory.path + "/fault." + number) << sayings[i].errors;
        std::ofstream(directory.path + "/exit." + number) << sayings[i].exit;
    }
}

run_result stage::run(const std::string &script) const {
    return room.run(std::string("set -eu\n. ") + INSTALLED_LIBRARY + "\n" + script, directory.path);
}

std::string stage::noted(const char *file) const {
    return file_text(directory.path + "/" + file);
}

std::string red(const std::string &message) {
    return "\x1b[0;31m[lumocmd] " + message + "\x1b[0;39m\n";
}

std::string green(const std::string &text) {
    return "\x1b[1;32m<4711>\x1b[0;39m \x1b[0;32m[lumocmd] " + text + "\x1b[0;39m\n";
}
