// The completions as the shells give them, and the table that they were filled with against the
// real program.

#include "tests/harness/peer.h"
#include "tests/harness/process.h"
#include "tests/harness/terminal.h"
#include "tests/protocol/request_types.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <map>
#include <memory>
#include <regex>
#include <set>
#include <sstream>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace {

using namespace harness;
using names = std::set<std::string>;

// ---------------------------------------------------------------------------------------------
// The shells

constexpr char PROMPT[] = "PROMPT> ";
constexpr char TAB = '\t';
constexpr char PROBE = 't' & 0x1f;      // bound to showing what stands on the line
constexpr char BACK = 'b' & 0x1f;       // one character to the left
constexpr char CLEAR_LINE = 'u' & 0x1f; // bound to the same everywhere

/// A start-up file that loads the generated completion and nothing of the user's own.
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

std::string with_path(const std::string &text, const std::string &path) {
    return std::regex_replace(text, std::regex("@"), path);
}

void PrintTo(const shell &tested, std::ostream *out) {
    *out << tested.name;
}

/// What a shell does with a line when asked to complete it.
struct answer {
    std::string shown; ///< below the line
    std::string line;  ///< the line afterwards
};

class Completion : public testing::TestWithParam<shell> {
  protected:
    void SetUp() override {
        SKIP_WHERE_MISSING(harness::missing_terminal());
        const std::string startup = home_.path + "/" + GetParam().startup_file;
        std::filesystem::create_directories(std::filesystem::path(startup).parent_path());
        std::ofstream(startup) << with_path(GetParam().startup, LUMOCMD_COMPLETIONS);
        words command = {"env", "HOME=" + home_.path};
        for (const std::string &word : GetParam().command) {
            command.push_back(with_path(word, home_.path));
        }
        terminal_ = std::make_unique<terminal>(command);
        terminal_->shown_until(PROMPT);
    }

    bool is(const char *name) const {
        return std::string(GetParam().name) == name;
    }

    /// Types the line and its rest, goes back to the start of the rest, and presses TAB.
    answer complete(const std::string &line, const std::string &rest = "") {
        terminal_->type(line + rest + std::string(rest.size(), BACK) + TAB + PROBE);
        std::string shown = terminal_->shown_until("<<");
        std::string now = terminal_->shown_until(">>");
        terminal_->type(std::string(1, CLEAR_LINE));
        shown.resize(shown.size() - 2);
        now.resize(now.size() - 2);
        return {below_line(shown), now};
    }

    /// The line after TAB.
    std::string completed(const std::string &line, const std::string &rest = "") {
        return complete(line, rest).line;
    }

    /// The candidates, by their words; fish tells them with their descriptions.
    names offered(const std::string &line) {
        std::istringstream text(is("fish") ? fish_candidates(line) : complete(line).shown);
        names result;
        for (std::string row; std::getline(text, row);) {
            if (is("fish")) {
                result.insert(row.substr(0, row.find('\t')));
                continue;
            }
            std::istringstream rest(row);
            for (std::string word; rest >> word;) {
                result.insert(word);
            }
        }
        return result;
    }

    /// True when the text is shown for this line and TAB does not change the line.
    testing::AssertionResult hints(const std::string &line, const std::string &text) {
        const answer given = complete(line);
        const std::string shown = is("fish") ? fish_candidates(line) : given.shown;
        if (given.line != line) {
            return testing::AssertionFailure() << "the line became " << given.line;
        }
        if (("\n" + shown).find((is("fish") ? "\n" + typed_list(line) + "\t" : "\n") + text) ==
            std::string::npos) {
            return testing::AssertionFailure() << "not among what is shown: " << shown;
        }
        return testing::AssertionSuccess();
    }

    const temporary_directory home_;

  private:
    /// Without the line typed and its later redrawings.
    static std::string below_line(const std::string &shown) {
        std::istringstream text(shown);
        std::string result;
        std::string row;
        std::getline(text, row);
        while (std::getline(text, row)) {
            if (!row.starts_with(PROMPT)) {
                result += row + "\n";
            }
        }
        return result;
    }

    /// The parameter list as far as it is typed.
    static std::string typed_list(const std::string &line) {
        const std::string list = line.substr(line.find("-p ") + 3);
        return list.empty() ? list : list.substr(1);
    }

    std::string fish_candidates(const std::string &line) const {
        const std::string script =
            std::string(LUMOCMD_COMPLETIONS) + "/" + line.substr(0, line.find(' ')) + ".fish";
        const run_result run =
            harness::run({"env", "HOME=" + home_.path, "XDG_CONFIG_HOME=" + home_.path + "/none",
                          "XDG_DATA_HOME=" + home_.path + "/data", "fish", "-c",
                          "source $argv[1]; complete -C $argv[2]", script, line});
        EXPECT_EQ(run.errors, "");
        EXPECT_EQ(run.status, 0);
        return run.output;
    }

    std::unique_ptr<terminal> terminal_;
};

INSTANTIATE_TEST_SUITE_P(Shell, Completion, testing::ValuesIn(SHELLS),
                         [](const auto &each) { return std::string(each.param.name); });

// ---------------------------------------------------------------------------------------------
// The simulator

TEST_P(Completion, OfTheSimulatorOffersEveryOption) {
    std::istringstream help(harness::run({LUMOSIM_PROGRAM, "--help"}).output);
    const std::regex option("  (--[a-z-]+).*");
    names options;
    std::smatch found;
    for (std::string line; std::getline(help, line);) {
        if (std::regex_match(line, found, option)) {
            options.insert(found[1]);
        }
    }
    EXPECT_GT(options.size(), 20U);
    const names shown = offered("lumosim --");
    for (const std::string &name : options) {
        EXPECT_TRUE(shown.contains(name)) << name;
    }
}

TEST_P(Completion, OfTheSimulatorKnowsTheArguments) {
    const std::string file = home_.path + "/evening.list";
    std::ofstream(file) << "";
    const std::pair<std::string, std::string> rows[] = {
        {"lumosim --vers", "lumosim --version"},
        {"lumosim --answer tec", "lumosim --answer tecnout="},
        {"lumosim --close tut", "lumosim --close tutondo"},
        {"lumosim --raw --delay eib=5 --log-format j",
         "lumosim --raw --delay eib=5 --log-format json"},
        {"lumosim --log-format=j", "lumosim --log-format=json"},
        {"lumosim --expect " + home_.path + "/even", "lumosim --expect " + file},
        {"lumosim --raw -- " + home_.path + "/even", "lumosim --raw -- " + file},
        {"lumosim --port e", "lumosim --port e"},
    };
    for (const auto &[line, wanted] : rows) {
        std::string now = completed(line);
        now.erase(now.find_last_not_of(' ') + 1); // which not every shell puts there
        EXPECT_EQ(now, wanted);
    }
}

// ---------------------------------------------------------------------------------------------
// The table

struct function_row {
    std::string type;
    std::string function;
    words list; ///< names of the items, without the optional one of SERVICE_RUNONELEMENT
    bool optional_session;
};

words split(const std::string &text, char separator) {
    words result;
    std::istringstream rest(text);
    for (std::string word; std::getline(rest, word, separator);) {
        result.push_back(word);
    }
    return result;
}

std::vector<function_row> read_table() {
    std::vector<function_row> rows;
    std::ifstream file(LUMOCMD_FUNCTION_TABLE);
    for (std::string line; std::getline(file, line);) {
        std::istringstream fields(line);
        function_row row = {};
        std::string list;
        if (!(fields >> row.type >> row.function >> list)) {
            continue;
        }
        const std::string optional = "[sessionid|]";
        row.optional_session = list.starts_with(optional);
        if (row.optional_session) {
            list.erase(0, optional.size());
        }
        if (list != "-") {
            row.list = split(list, '|');
        }
        rows.push_back(row);
    }
    return rows;
}

/// The functions of the web service, from the definition that its client is made of.
names service_functions() {
    std::ifstream file(LUMOCMD_SERVICE_DEFINITION);
    std::stringstream text;
    text << file.rdbuf();
    const std::string definition = text.str();
    const std::regex method("method-action: (service_\\w+)");
    names result;
    for (std::sregex_iterator found(definition.begin(), definition.end(), method), end;
         found != end; ++found) {
        std::string name = (*found)[1];
        std::transform(name.begin(), name.end(), name.begin(),
                       [](unsigned char letter) { return std::toupper(letter); });
        result.insert(name);
    }
    return result;
}

/// A value that the program takes under this name: LINTRONIC demands two and three characters.
std::string value_for(const std::string &name, std::size_t index) {
    std::string number = std::to_string(index + 1);
    const std::size_t width = name == "Device" ? 2 : 3;
    return std::string(width - number.size(), '0') + number;
}

std::string list_of(const words &list, std::size_t count) {
    std::string text;
    for (std::size_t i = 0; i < count; i++) {
        text += (i == 0 ? "" : "|") + value_for(i < list.size() ? list[i] : "", i);
    }
    return text;
}

/// Runs a function with so many parameters, where nothing listens.
run_result run_unanswered(const function_row &row, std::size_t count) {
    words arguments = {"-t", row.type,    "-s", "/nonexistent-socket", "-u", "http://127.0.0.1:1/",
                       "-f", row.function};
    if (count > 0) {
        arguments.insert(arguments.end(), {"-p", list_of(row.list, count)});
    }
    return lumocmd(arguments);
}

std::string last_line(const std::string &output) {
    const words lines = split(output, '\n');
    return lines.empty() ? "" : lines.back();
}

/// What the program sends to its peer for this row, every item in use.
std::string sent_request(const function_row &row, const words &list) {
    const words arguments = {"-t", row.type, "-f", row.function, "-p", list_of(list, list.size())};
    const auto run_with = [&arguments](const words &target, peer *daemon) {
        words all = arguments;
        all.insert(all.end(), target.begin(), target.end());
        lumocmd(all);
        EXPECT_EQ(daemon->finish(), "");
        return daemon->received();
    };
    if (row.type == "SOAP") {
        peer service({collect_until("Envelope>"), close_connection()});
        return run_with({"-u", "http://127.0.0.1:" + std::to_string(service.port()) + "/"},
                        &service);
    }
    const temporary_directory directory;
    const std::string path = directory.path + "/s";
    peer daemon(path, {collect_until("\n\n"), close_connection()});
    return run_with({"-s", path}, &daemon);
}

/// The value that the request carries under each name; the gateways' names lose their underscores.
std::map<std::string, std::string> carried_values(const std::string &type,
                                                  const std::string &request) {
    const std::regex pattern(type == "SOAP" ? "<([\\w-]+)[^>]*>([^<]*)</" : "([^\n]+): ([^\n]*)\n");
    std::map<std::string, std::string> values;
    for (std::sregex_iterator found(request.begin(), request.end(), pattern), end; found != end;
         ++found) {
        std::string name = (*found)[1];
        if (type != "SOAP") {
            name.erase(std::remove(name.begin(), name.end(), '_'), name.end());
        }
        values[name] = (*found)[2];
    }
    return values;
}

void PrintTo(const function_row &row, std::ostream *out) {
    *out << row.type << " " << row.function;
}

class CompletionRow : public testing::TestWithParam<function_row> {};

INSTANTIATE_TEST_SUITE_P(Table, CompletionRow, testing::ValuesIn(read_table()),
                         [](const auto &each) {
                             const function_row &row = each.param;
                             return row.type + "_" + (row.function == "*" ? "ANY" : row.function);
                         });

TEST_P(CompletionRow, IsServedWithExactlyItsCount) {
    const function_row &row = GetParam();
    const run_result exact = run_unanswered(row, row.list.size());
    EXPECT_GT(exact.status, 0);
    EXPECT_NE(exact.status, 503 & 0xff);
    EXPECT_NE(exact.status, 505 & 0xff);
    EXPECT_NE(last_line(exact.output), "LMCM-503");
    EXPECT_NE(last_line(exact.output), "LMCM-505");
    if (row.list.empty() || row.function == "*" || row.optional_session) {
        return; // the program does not count these
    }
    const run_result more = run_unanswered(row, row.list.size() + 1);
    EXPECT_EQ(last_line(more.output), "LMCM-505");
    EXPECT_EQ(more.status, 505 & 0xff);
    const run_result fewer = run_unanswered(row, row.list.size() - 1);
    EXPECT_EQ(last_line(fewer.output), "LMCM-505");
    EXPECT_EQ(fewer.status, 505 & 0xff);
}

TEST_P(CompletionRow, SendsEveryParameterUnderItsName) {
    const function_row &row = GetParam();
    words list = row.list;
    if (row.function == "*") {
        list.clear(); // FSMCore's parameters are numbered
    }
    if (row.optional_session) {
        list.insert(list.begin(), "sessionid");
    }
    const std::string request = sent_request(row, list);
    const auto values = carried_values(row.type, request);
    EXPECT_FALSE(values.empty()) << request;
    for (std::size_t i = 0; i < list.size(); i++) {
        const bool unsent =
            row.function == "SENDTUTONDOGETDATAGRAM" && list[i] == "Payload"; // only counted
        const auto found = values.find(list[i]);
        ASSERT_EQ(found == values.end(), unsent) << list[i] << " in " << request;
        if (!unsent) {
            EXPECT_EQ(found->second, value_for(list[i], i)) << list[i];
        }
    }
}

TEST(CompletionTable, HasEveryServiceFunction) {
    names listed;
    for (const function_row &row : read_table()) {
        if (row.type == "SOAP") {
            listed.insert(row.function);
        }
    }
    EXPECT_EQ(listed, service_functions());
}

// ---------------------------------------------------------------------------------------------
// What the shells say

TEST_P(Completion, OffersTheOptions) {
    names options;
    for (const std::string &word : offered("lumocmd -")) {
        if (word.size() == 2 && word[0] == '-' && word != "--") {
            options.insert(word);
        }
    }
    EXPECT_EQ(options, (names{"-v", "-t", "-u", "-s", "-a", "-d", "-f", "-p", "-w", "-?"}));
}

TEST_P(Completion, OffersTheTypesThatDoSomething) {
    names carried;
    for (const protocol::request_type_row &row : protocol::request_types_that(
             [](const protocol::request_type_row &each) { return each.carried; })) {
        carried.insert(row.keyword);
    }
    EXPECT_EQ(offered("lumocmd -t "), carried);
}

TEST_P(Completion, OffersTheFunctionsOfTheType) {
    EXPECT_EQ(offered("lumocmd -t SOAP -f "), service_functions());
    EXPECT_EQ(offered("lumocmd -t EIBLOCAL -f "),
              (names{"SENDEIBUSSETDATAGRAM", "SENDEIBUSGETDATAGRAM"}));
    EXPECT_EQ(offered("lumocmd -t SMSTOOLLOCAL -f "),
              (names{"SENDSMSTOOLDATAGRAM", "RECVSMSTOOLDATAGRAM"}));
    EXPECT_EQ(offered("lumocmd -t TUTONDOLOCAL -f "),
              (names{"SENDTUTONDOSETDATAGRAM", "SENDTUTONDOGETDATAGRAM"}));
}

TEST_P(Completion, InsertsTheOnlyFunctionOfTheType) {
    for (const auto &[type, function] :
         std::map<std::string, std::string>{{"LINTRONICLOCAL", "SENDLINTRONICDATAGRAM"},
                                            {"TECNOUTLOCAL", "SENDTECNOUTCOMMANDDATAGRAM"},
                                            {"VIVALDILOCAL", "SENDVIVALDISETDATAGRAM"},
                                            {"BENTELLOCAL", "SENDBENTELCOMMANDDATAGRAM"}}) {
        const std::string line = "lumocmd -t " + type + " -f ";
        EXPECT_EQ(completed(line), line + function + " ");
    }
}

TEST_P(Completion, OffersNoFunctionWithoutOrOutsideATypeWithAList) {
    for (const std::string line :
         {"lumocmd -f SEND", "lumocmd -f ", "lumocmd -t NOSUCH -f ", "lumocmd -t EIBINTERNET -f ",
          "lumocmd -t FSMCORE -f ", "lumocmd -t SOAP -t FSMCORE -f SERVICE_T"}) {
        SCOPED_TRACE(line);
        const answer given = complete(line);
        EXPECT_EQ(given.line, line);
        EXPECT_EQ(given.shown.find("DATAGRAM"), std::string::npos) << given.shown;
        EXPECT_EQ(given.shown.find("SERVICE_"), std::string::npos) << given.shown;
    }
}

TEST_P(Completion, IgnoresCase) {
    EXPECT_EQ(completed("lumocmd -v of"), "lumocmd -v OFF ");
    EXPECT_EQ(completed("lumocmd -t eib"), "lumocmd -t EIBLOCAL ");
    EXPECT_EQ(completed("lumocmd -t EibLocal -f sendeibusg"),
              "lumocmd -t EibLocal -f SENDEIBUSGETDATAGRAM ");
}

TEST_P(Completion, TakesTheTypeFromAnywhereOnTheLine) {
    const std::string middle = completed("lumocmd -f ", " -t tecnoutlocal");
    if (is("fish")) { // tells a completion nothing about the words behind the cursor
        EXPECT_EQ(middle, "lumocmd -f  -t tecnoutlocal");
    } else {
        EXPECT_EQ(std::regex_replace(middle, std::regex(" +"), " "), // bash keeps one of the two
                  "lumocmd -f SENDTECNOUTCOMMANDDATAGRAM -t tecnoutlocal");
    }
    EXPECT_EQ(completed("lumocmd -v ON -t TECNOUTLOCAL -s /x -w 5 -f S"),
              "lumocmd -v ON -t TECNOUTLOCAL -s /x -w 5 -f SENDTECNOUTCOMMANDDATAGRAM ");
    EXPECT_EQ(completed("lumocmd -tSOAP -t 'BentelLocal' -f "),
              "lumocmd -tSOAP -t 'BentelLocal' -f SENDBENTELCOMMANDDATAGRAM ");
    EXPECT_EQ(completed("lumocmd -tTECNOUTLOCAL -f "),
              "lumocmd -tTECNOUTLOCAL -f SENDTECNOUTCOMMANDDATAGRAM ");
    // The value of another option is no type.
    EXPECT_EQ(completed("lumocmd -s -t TECNOUTLOCAL -f "), "lumocmd -s -t TECNOUTLOCAL -f ");
}

TEST_P(Completion, CompletesAValueThatIsAttachedToItsOption) {
    EXPECT_EQ(completed("lumocmd -tEIB"), "lumocmd -tEIBLOCAL ");
    // fish would replace the option as well to change the case.
    EXPECT_EQ(completed("lumocmd -teib"), is("fish") ? "lumocmd -teib" : "lumocmd -tEIBLOCAL ");
    EXPECT_EQ(completed("lumocmd -vOF"), "lumocmd -vOFF ");
}

TEST_P(Completion, InsertsTheDefaultUrl) {
    const std::string line = "lumocmd -u http://localhost/cgi-bin/lumows ";
    EXPECT_EQ(completed("lumocmd -u "), line);
    EXPECT_EQ(completed("lumocmd -u http://lo"), line);
}

TEST_P(Completion, CompletesSocketsAndNoOtherFiles) {
    const temporary_directory directory;
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    const std::string path = directory.path + "/lumo.socket";
    path.copy(address.sun_path, sizeof(address.sun_path) - 1);
    const int listener = socket(AF_UNIX, SOCK_STREAM, 0);
    ASSERT_EQ(bind(listener, reinterpret_cast<sockaddr *>(&address), sizeof address), 0);
    std::ofstream(directory.path + "/lumo.text") << "no socket";
    EXPECT_EQ(completed("lumocmd -s " + directory.path + "/lu"), "lumocmd -s " + path + " ");
    close(listener);
}

TEST_P(Completion, HintsTheParameterListWithoutInsertingIt) {
    EXPECT_TRUE(hints("lumocmd -t EIBLOCAL -f SENDEIBUSSETDATAGRAM -p ",
                      "SectionName|Destination|EISType|Payload"));
    EXPECT_TRUE(hints("lumocmd -f sendsmstooldatagram -t smstoollocal -p ", "SectionName|To|Msg"));
    EXPECT_TRUE(hints("lumocmd -t TUTONDOLOCAL -f SENDTUTONDOGETDATAGRAM -p \"hall|",
                      "SectionName|ZoneNumber|Command|Payload"));
    EXPECT_TRUE(hints("lumocmd -t EIBLOCAL -f SENDEIBUSGETDATAGRAM -p 'hall|1/2/3",
                      "SectionName|Destination|EISType|Payload"));
    EXPECT_TRUE(hints("lumocmd -t SOAP -f SERVICE_RUNONELEMENT -p ",
                      "[sessionid|]idobject|operation|payload|optionals|hashcode"));
    EXPECT_TRUE(hints("lumocmd -t SOAP -f SERVICE_GETELEMENTSTATUS -p ", "sessionid|idobject"));
    EXPECT_TRUE(hints("lumocmd -t FSMCORE -f GETSTATE -p ", "it|depends|from|function|..."));
}

TEST_P(Completion, SaysWhenThereIsNoParameterList) {
    const std::string line = "lumocmd -t SOAP -f SERVICE_TEST -p ";
    const answer given = complete(line);
    EXPECT_EQ(given.line, line);
    if (is("fish")) { // shows nothing without a candidate
        EXPECT_EQ(offered(line), names{});
    } else {
        EXPECT_EQ(given.shown.substr(0, 15), "(no parameters)");
    }
    EXPECT_EQ(completed("lumocmd -t SOAP -f NOSUCH -p "), "lumocmd -t SOAP -f NOSUCH -p ");
}

} // namespace
