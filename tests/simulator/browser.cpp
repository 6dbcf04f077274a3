// The driver chooses its port and prints it. A wait is one command that the page itself answers
// when its change comes, so nothing is asked again and again.
#include "tests/simulator/browser.h"

#include "tests/protocol/texts.h"

#include <csignal>

using namespace harness;
using nlohmann::json;

namespace {

/// The driver wants the port that it got for one protocol of the net for the other one too, and
/// gives up when that is taken.
constexpr int MOST_STARTS = 50;

const std::string BROWSER_ARGUMENTS =
    "--headless --no-sandbox --disable-gpu --disable-quic --disable-dev-shm-usage --no-first-run "
    "--disable-background-networking --disable-component-update --disable-sync "
    "--force-prefers-reduced-motion --user-data-dir=";

const std::string SELECTING = "const one = (selector) => document.querySelector(selector);"
                              "const all = (selector) => [...document.querySelectorAll(selector)];";

bool has_ipv6_loopback() {
    const std::string address = std::string(31, '0') + "1 ";
    return read_file("/proc/net/if_inet6").find(address) != std::string::npos;
}

/// The port that a driver has chosen; 0 when it ended instead.
int read_port(started_program &driver) {
    const std::string tag = "started successfully on port ";
    if (!driver.wait_for_output(tag) || !driver.wait_for_output(".\n")) {
        return 0;
    }
    return std::stoi(driver.output().substr(driver.output().find(tag) + tag.size()));
}

/// The path of an element that a command has found.
std::string path_of(const json &element) {
    return "/element/" + element.front().get<std::string>();
}

} // namespace

void PageInABrowser::SetUp() {
    const run_result found = run({"which", "chromium", "chromedriver"});
    if (found.status != 0) {
        GTEST_SKIP() << "chromium or chromedriver is missing; scripts/install-packages browser "
                        "installs them";
    }
    for (int attempt = 0; attempt < MOST_STARTS && port_ == 0; ++attempt) {
        // What the browser leaves in its temporary directory goes with this one.
        driver_ = std::make_unique<started_program>(
            words{"chromedriver", "--port=0"}, start_options{.settings = {"TMPDIR=" + home_.path}});
        port_ = read_port(*driver_);
    }
    if (port_ == 0 && !has_ipv6_loopback()) {
        GTEST_SKIP() << "no ::1, which the driver wants: " << driver_->output();
    }
    ASSERT_NE(port_, 0) << driver_->output() << driver_->errors();
    const words arguments = protocol::split(BROWSER_ARGUMENTS + home_.path + "/profile", ' ');
    const std::string program = protocol::split(found.output, '\n')[0];
    const json wanted{{"timeouts", {{"script", PATIENCE_MS}, {"pageLoad", PATIENCE_MS}}},
                      {"goog:chromeOptions", {{"binary", program}, {"args", arguments}}}};
    const json opened = command("POST", "/session", {{"capabilities", {{"alwaysMatch", wanted}}}});
    ASSERT_TRUE(opened.is_object());
    session_ = "/session/" + opened["sessionId"].get<std::string>();
    resize(1280, 860);
    open();
}

void PageInABrowser::TearDown() {
    if (!session_.empty()) {
        command("DELETE", "");
    }
    if (driver_) {
        end_program(*driver_, SIGTERM);
    }
}

json PageInABrowser::command(const std::string &method, const std::string &path, const json &body) {
    const http_reply answer = ask_http(port_, method + " " + session_ + path,
                                       "Content-Type: application/json\r\n", body.dump());
    EXPECT_EQ(answer.status, 200) << path << ": " << answer.body;
    const json whole = json::parse(answer.body, nullptr, false);
    return answer.status == 200 && whole.is_object() ? whole["value"] : json();
}

void PageInABrowser::open() {
    command("POST", "/url", {{"url", simulator.origin}});
    ASSERT_TRUE(sees("connection.textContent === 'live'"));
}

json PageInABrowser::evaluate(const std::string &expression) {
    return command("POST", "/execute/sync",
                   {{"script", SELECTING + "return " + expression + ";"}, {"args", json::array()}});
}

bool PageInABrowser::sees(const std::string &expression) {
    const std::string script = SELECTING +
                               "const done = arguments[0];"
                               "const look = () => (" +
                               expression +
                               ") && (watcher.disconnect(), done(true));"
                               "const watcher = new MutationObserver(look);"
                               "watcher.observe(document, {subtree: true, childList: true,"
                               " characterData: true, attributes: true});"
                               "look();";
    return command("POST", "/execute/async", {{"script", script}, {"args", json::array()}}) == true;
}

void PageInABrowser::press(const std::string &key) {
    const json steps{{{"type", "keyDown"}, {"value", key}}, {{"type", "keyUp"}, {"value", key}}};
    const json keyboard{{"type", "key"}, {"id", "keyboard"}, {"actions", steps}};
    command("POST", "/actions", {{"actions", json::array({keyboard})}});
}

void PageInABrowser::click(const std::string &selector) {
    const json found =
        command("POST", "/element", {{"using", "css selector"}, {"value", selector}});
    if (found.is_object()) {
        command("POST", path_of(found) + "/click");
    }
}

std::string PageInABrowser::focus_words() {
    const json active = command("GET", "/element/active");
    if (!active.is_object()) {
        return "nothing";
    }
    const json role = command("GET", path_of(active) + "/computedrole");
    const json label = command("GET", path_of(active) + "/computedlabel");
    return role.get<std::string>() + ": " + label.get<std::string>();
}

void PageInABrowser::emulate(const std::string &function, const json &parameters) {
    command("POST", "/goog/cdp/execute",
            {{"cmd", "Emulation." + function}, {"params", parameters}});
}

void PageInABrowser::resize(int width, int height) {
    emulate("setDeviceMetricsOverride",
            {{"width", width}, {"height", height}, {"deviceScaleFactor", 1}, {"mobile", true}});
}

std::string PageInABrowser::take_screenshot() {
    const json picture = command("GET", "/screenshot");
    const std::string file = home_.path + "/picture";
    write_file(file, picture.is_string() ? picture : "");
    return run({"base64", "--decode", file}).output;
}

int PageInABrowser::ask_service(const std::string &function, const std::string &values) const {
    return lumocmd(
               {"-t", "SOAP", "-u", simulator.url, "-f", function, "-p", "DEMO-SESSION|" + values})
        .status;
}

int PageInABrowser::run_on_element(const std::string &values) const {
    return ask_service("SERVICE_RUNONELEMENT", values + "||||");
}

int PageInABrowser::ask_eib() const {
    return lumocmd({"-t", "EIBLOCAL", "-s", simulator.home.path + "/lumo_eibgateway.socket", "-f",
                    "SENDEIBUSSETDATAGRAM", "-p", "living|1/1/3|1|1"})
        .status;
}
