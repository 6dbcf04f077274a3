// The completions as the shells give them, and the table that they and the manual are filled with
// against the real program.

#include "tests/harness/peer.h"
#include "tests/harness/process.h"
#include "tests/protocol/gateways.h"
#include "tests/protocol/service_functions.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <map>
#include <memory>
#include <regex>
#include <set>
#include <sstream>

namespace {

using namespace harness;
using names = std::set<std::string>;

struct function_row {
    std::string type;
    std::string function; ///< "*": any
    std::string list;     ///< "-": none
};

std::vector<function_row> read_table() {
    std::vector<function_row> rows;
    std::ifstream file(LUMOCMD_FUNCTION_TABLE);
    for (function_row row; file >> row.type >> row.function >> row.list;) {
        rows.push_back(row);
    }
    return rows;
}

TEST(CompletionTable, NamesTheParametersAsTheyTravel) {
    std::map<std::string, std::string> lists = {{"*", "it|depends|from|function|..."}};
    names served = {"*"};
    for (const protocol::service_row &row : protocol::SERVICE_FUNCTIONS) {
        lists[function_name(row)] = protocol::joined(entries_of(row), "|");
        served.insert(function_name(row));
    }
    for (const auto &[gateway, function] : protocol::all_functions()) {
        // Some daemons want underscores in the names.
        const std::string lines = protocol::replaced(function.lines, "_", "");
        words list(protocol::count_of(function), "Payload"); // of what is only counted
        for (std::size_t i = 0; i < list.size(); i++) {
            const std::string mark = "(\\w+): \\{" + std::to_string(i + function.first_value);
            if (std::smatch found; std::regex_search(lines, found, std::regex(mark + "\\}"))) {
                list[i] = found[1];
            }
        }
        lists[function.name] = protocol::joined(list, "|");
        if (is_reachable(gateway) && function.built == protocol::builder_answer::SENDS) {
            served.insert(function.name);
        }
    }
    names listed;
    for (const function_row &row : read_table()) {
        const std::regex no_name("[\\[\\]]|^-$"); // an optional one is in brackets
        EXPECT_EQ(std::regex_replace(row.list, no_name, ""), lists[row.function]) << row.function;
        listed.insert(row.function);
    }
    EXPECT_EQ(listed, served);
}

constexpr char PROMPT[] = "PROMPT> ";
constexpr char TAB = '\t';
constexpr char PROBE = 't' & 0x1f;      // bound to showing what stands on the line
constexpr char BACK = 'b' & 0x1f;       // one character to the left
constexpr char CLEAR_LINE = 'u' & 0x1f; // bound to the same everywhere

/// A start-up file that loads the generated completions and nothing of the user's own.
struct shell {
    const char *name;
    const char *startup_file; ///< below the directory that serves as home
    const char *startup;      ///< @ stands for the directory of the generated files
    words command;            ///< @ stands for the home directory
};

const shell SHELLS[] = {
    {"bash",
     "bashrc",
     "source @/lumocmd.bash\n"
     "source @/lumosim.bash\n"
     "PS1='PROMPT> '\n"
     "bind 'set page-completions off'\n"
     "bind 'set enable-bracketed-paste off'\n"
     "bind 'set show-all-if-ambiguous on'\n"
     "bind 'set bind-tty-special-chars off'\n"
     "bind 'set completion-query-items 0'\n"
     "bind '\"\\C-u\": kill-whole-line'\n"
     "probe() { printf '<<%s>>' \"$READLINE_LINE\"; }\n"
     "bind -x '\"\\C-t\": probe'\n",
     {"bash", "--noprofile", "--rcfile", "@/bashrc", "-i"}},
    {"zsh",
     ".zshrc",
     "fpath=(@ $fpath)\n"
     "autoload -Uz compinit; compinit -u -d $ZDOTDIR/dump\n"
     "PS1='PROMPT> '; LISTMAX=1000\n"
     "unsetopt list_ambiguous prompt_cr beep; bindkey -e\n"
     "probe() { print -rn -- \"<<$BUFFER>>\"; }\n"
     "zle -N probe; bindkey '^T' probe; bindkey '^U' kill-whole-line\n",
     {"env", "ZDOTDIR=@", "zsh", "-d", "-i"}},
    {"fish",
     "config/fish/config.fish",
     "set -g fish_greeting; set -g fish_autosuggestion_enabled 0\n"
     "source @/lumocmd.fish\n"
     "source @/lumosim.fish\n"
     "function fish_prompt; printf 'PROMPT> '; end\n"
     "function fish_title; end\n"
     "function probe; printf '<<%s>>' (commandline | string collect); end\n"
     "bind \\ct probe; bind \\cu kill-whole-line\n",
     {"env", "XDG_CONFIG_HOME=@/config", "XDG_DATA_HOME=@/data", "fish", "-i"}},
};

/// What a shell does with a line when asked to complete it.
struct answer {
    std::string shown; ///< below the line
    std::string line;  ///< the line afterwards
};

class Completion : public testing::TestWithParam<shell> {
  protected:
    void SetUp() override {
        SKIP_WHERE_MISSING(missing_terminal());
        const std::filesystem::path startup = home_.path + "/" + GetParam().startup_file;
        std::filesystem::create_directories(startup.parent_path());
        std::ofstream(startup) << protocol::replaced(GetParam().startup, "@", LUMOCMD_COMPLETIONS);
        words command = {"env", "HOME=" + home_.path};
        for (const std::string &word : GetParam().command) {
            command.push_back(protocol::replaced(word, "@", home_.path));
        }
        terminal_ = std::make_unique<started_program>(
            command, start_options{.directory = home_.path, .on_terminal = true});
        terminal_->shown_until(PROMPT);
    }

    /// Types the line and its rest, goes back to the start of the rest, and presses TAB.
    answer complete(const std::string &line, const std::string &rest = "") {
        terminal_->type(line + rest + std::string(rest.size(), BACK) + TAB + PROBE);
        std::string shown = terminal_->shown_until("<<");
        const std::string now = terminal_->shown_until(">>");
        terminal_->type(std::string(1, CLEAR_LINE));
        // Without the line typed, its later redrawings and the mark of the probe.
        const std::regex typed("^[^\n]*|\n" + std::string(PROMPT) + "[^\n]*|<<$");
        return {std::regex_replace(shown, typed, ""), now.substr(0, now.size() - 2)};
    }

    /// The candidates, one or more in a line; fish tells them with their descriptions.
    std::string candidates(const std::string &line) {
        if (!is_fish_) {
            return complete(line).shown;
        }
        const std::string name = line.substr(0, line.find(' '));
        const run_result run =
            harness::run({"env", "HOME=" + home_.path, "XDG_CONFIG_HOME=" + home_.path + "/none",
                          "XDG_DATA_HOME=" + home_.path + "/data", "fish", "-c",
                          "source $argv[1]; complete -C $argv[2]",
                          LUMOCMD_COMPLETIONS "/" + name + ".fish", line});
        EXPECT_EQ(run.errors, "");
        return run.output;
    }

    names offered(const std::string &line) {
        std::istringstream words(std::regex_replace(candidates(line), std::regex("\t[^\n]*"), ""));
        return {std::istream_iterator<std::string>(words), {}};
    }

    /// The text is shown for this line, and TAB does not change the line.
    void expect_hint(const std::string &line, const std::string &text) {
        SCOPED_TRACE(line);
        EXPECT_EQ(complete(line).line, line);
        const std::string shown = candidates(line);
        EXPECT_NE(shown.find((is_fish_ ? "\t" : "\n") + text), std::string::npos) << shown;
    }

    const temporary_directory home_;
    const bool is_fish_ = std::string(GetParam().name) == "fish";

  private:
    std::unique_ptr<started_program> terminal_;
};

INSTANTIATE_TEST_SUITE_P(Shell, Completion, testing::ValuesIn(SHELLS),
                         [](const auto &each) { return std::string(each.param.name); });

TEST_P(Completion, OffersTheOptionsOfBothPrograms) {
    const std::string help = run({LUMOSIM_PROGRAM, "--help"}).output;
    const std::regex option("\n  (--[a-z-]+)");
    const names shown = offered("lumosim --");
    std::size_t options = 0;
    for (std::sregex_iterator found(help.begin(), help.end(), option), end; found != end; ++found) {
        EXPECT_TRUE(shown.contains((*found)[1])) << (*found)[1];
        options++;
    }
    EXPECT_GT(options, 20U);
    names letters = offered("lumocmd -");
    std::erase_if(letters, [](const std::string &word) {
        return word.size() != 2 || word[0] != '-' || word == "--";
    });
    EXPECT_EQ(letters, (names{"-v", "-t", "-u", "-s", "-a", "-d", "-f", "-p", "-w", "-?"}));
}

TEST_P(Completion, OffersTheTypesThatDoSomethingAndTheirFunctions) {
    names types;
    for (const protocol::request_type_row &row : protocol::request_types()) {
        if (row.carried) {
            types.insert(row.keyword);
        }
    }
    EXPECT_EQ(offered("lumocmd -t "), types);
    std::map<std::string, names> functions;
    for (const function_row &row : read_table()) {
        functions[row.type].insert(row.function);
    }
    for (const auto &[type, served] : functions) {
        if (served.size() > 1) { // the only one is inserted
            EXPECT_EQ(offered("lumocmd -t " + type + " -f "), served);
        }
    }
}

TEST_P(Completion, HintsTheParameterListWithoutInsertingIt) {
    std::string type;
    for (const function_row &row : read_table()) {
        if (row.list == "-" || (row.type == type && row.list[0] != '[')) {
            continue; // one of each type, and what has an optional item
        }
        type = row.type;
        const std::string line = "lumocmd -f " + row.function + " -t " + protocol::lower(type);
        expect_hint(line + " -p ", row.list);
        expect_hint(line + " -p \"hall|", row.list);
    }
    const std::string line = "lumocmd -t SOAP -f SERVICE_TEST -p ";
    if (is_fish_) { // shows nothing without a candidate
        EXPECT_EQ(offered(line), names{});
    } else {
        expect_hint(line, "(no parameters)");
    }
}

TEST_P(Completion, CompletesWhatHasOneEnding) {
    const std::string function = "SENDBENTELCOMMANDDATAGRAM"; // the only one of its type
    std::ofstream(home_.path + "/evening.list") << "";
    peer daemon(home_.path + "/evening.socket", {});
    const std::string unchanged;
    const struct {
        std::string line;
        std::string wanted; ///< apart from blanks
        std::string in_fish = wanted;
        std::string rest = "";
    } rows[] = {
        {"lumocmd -v of", "lumocmd -v OFF"},
        {"lumocmd -vOF", "lumocmd -vOFF"},
        {"lumocmd -t bentelloca", "lumocmd -t BENTELLOCAL"},
        {"lumocmd -tBENTELLOCA", "lumocmd -tBENTELLOCAL"},
        // fish would replace the option as well to change the case.
        {"lumocmd -tbentelloca", "lumocmd -tBENTELLOCAL", unchanged},
        {"lumocmd -u ", "lumocmd -u http://localhost/cgi-bin/lumows"},
        {"lumocmd -u http://lo", "lumocmd -u http://localhost/cgi-bin/lumows"},
        {"lumocmd -s ev", "lumocmd -s evening.socket"}, // and no other files
        {"lumocmd -t bentellocal -f sendb", "lumocmd -t bentellocal -f " + function},
        {"lumocmd -tBENTELLOCAL -f ", "lumocmd -tBENTELLOCAL -f " + function},
        {"lumocmd -v ON -t BENTELLOCAL -s /x -w 5 -f ",
         "lumocmd -v ON -t BENTELLOCAL -s /x -w 5 -f " + function},
        {"lumocmd -tSOAP -t 'bentellocal' -f ", "lumocmd -tSOAP -t 'bentellocal' -f " + function},
        // fish tells a completion nothing about the words behind the cursor.
        {"lumocmd -f ", "lumocmd -f " + function + " -t BENTELLOCAL", "lumocmd -f -t BENTELLOCAL",
         " -t BENTELLOCAL"},
        // The value of another option is no type.
        {"lumocmd -s -t BENTELLOCAL -f ", unchanged},
        {"lumocmd -f SEND", unchanged},
        {"lumocmd -t NOSUCH -f ", unchanged},
        {"lumocmd -t EIBINTERNET -f ", unchanged},
        {"lumocmd -t FSMCORE -f ", unchanged},
        {"lumocmd -t SOAP -t FSMCORE -f SERVICE_T", unchanged},
        {"lumocmd -t SOAP -f NOSUCH -p ", unchanged},
        {"lumosim --vers", "lumosim --version"},
        {"lumosim --answer bente", "lumosim --answer bentel="},
        {"lumosim --raw --delay bentel=5 --log-format j",
         "lumosim --raw --delay bentel=5 --log-format json"},
        {"lumosim --log-format=j", "lumosim --log-format=json"},
        {"lumosim --expect evening.l", "lumosim --expect evening.list"},
        {"lumosim --raw -- ./evening.l", "lumosim --raw -- ./evening.list"},
        {"lumosim --port e", unchanged},
    };
    const auto without_blanks = [](const std::string &text) {
        return std::regex_replace(text, std::regex(" +(?= |$)"), "");
    };
    for (const auto &each : rows) {
        SCOPED_TRACE(each.line);
        const answer given = complete(each.line, each.rest);
        const std::string &wanted = is_fish_ ? each.in_fish : each.wanted;
        EXPECT_EQ(without_blanks(given.line),
                  without_blanks(wanted == unchanged ? each.line : wanted));
        if (wanted == unchanged) {
            EXPECT_EQ(given.shown.find("DATAGRAM"), std::string::npos) << given.shown;
            EXPECT_EQ(given.shown.find("SERVICE_"), std::string::npos) << given.shown;
        }
    }
    EXPECT_EQ(daemon.finish_unvisited(), "");
}

} // namespace
