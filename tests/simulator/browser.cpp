// The driver chooses its port and prints it. A wait is one command that the page itself answers
// when its change comes, so nothing is asked again and again.
#include "tests/simulator/browser.h"

#include <array>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <netinet/in.h>
#include <sstream>
#include <sys/socket.h>
#include <unistd.h>

using namespace harness;

namespace {

using nlohmann::json;

constexpr std::array PROGRAMS{"chromium", "chromedriver"};

/// The driver wants the port that it got for one protocol of the net for the other one too, and
/// gives up when that is taken.
constexpr int MOST_STARTS = 10;

const std::vector<std::string> BROWSER_ARGUMENTS{"--headless",
                                                 "--no-sandbox",
                                                 "--disable-gpu",
                                                 "--disable-quic",
                                                 "--disable-dev-shm-usage",
                                                 "--no-first-run",
                                                 "--disable-background-networking",
                                                 "--disable-component-update",
                                                 "--disable-sync",
                                                 "--force-prefers-reduced-motion"};

/// The path of an installed program; empty when there is none.
std::string find_program(const std::string &name) {
    const char *path = std::getenv("PATH");
    std::istringstream directories(path == nullptr ? "" : path);
    for (std::string directory; std::getline(directories, directory, ':');) {
        std::string whole = directory;
        whole.append("/").append(name);
        if (access(whole.c_str(), X_OK) == 0) {
            return whole;
        }
    }
    return "";
}

/// The port that a driver has chosen; 0 when it ended instead.
int read_port(started_program &driver) {
    const std::string tag = "started successfully on port ";
    if (!driver.wait_for_output(tag) || !driver.wait_for_output(".\n")) {
        return 0;
    }
    return std::stoi(driver.output().substr(driver.output().find(tag) + tag.size()));
}

std::string open_session(web_browser &browser) {
    json arguments = BROWSER_ARGUMENTS;
    arguments.push_back("--user-data-dir=" + browser.home.path + "/profile");
    const json wanted{{"capabilities",
                       {{"alwaysMatch",
                         {{"timeouts", {{"script", PATIENCE_MS}, {"pageLoad", PATIENCE_MS}}},
                          {"goog:chromeOptions",
                           {{"binary", find_program(PROGRAMS[0])}, {"args", arguments}}}}}}}};
    const json answer = command(browser, "/session", wanted);
    return answer.is_object() ? "/session/" + answer["sessionId"].get<std::string>() : "";
}

/// What the driver answers to a question about the session; null when it does not.
json fetch(web_browser &browser, const std::string &path) {
    const http_reply answer = ask_http(browser.port, "GET " + browser.session + path);
    const json whole = json::parse(answer.body, nullptr, false);
    return answer.status == 200 && whole.is_object() ? whole["value"] : json();
}

std::string decode_base64(const std::string &text) {
    constexpr std::string_view letters =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string bytes;
    std::uint32_t bits = 0;
    int count = 0;
    for (const char letter : text) {
        const std::size_t value = letters.find(letter);
        if (value == std::string_view::npos) {
            break;
        }
        bits = (bits << 6U) | static_cast<std::uint32_t>(value);
        count += 6;
        if (count >= 8) {
            count -= 8;
            bytes += static_cast<char>((bits >> static_cast<unsigned>(count)) & 0xFFU);
        }
    }
    return bytes;
}

} // namespace

std::string missing_browser() {
    for (const char *name : PROGRAMS) {
        if (find_program(name).empty()) {
            return std::string(name) + " is not installed; scripts/install-packages browser does";
        }
    }
    return "";
}

bool has_ipv6_loopback() {
    sockaddr_in6 address{};
    address.sin6_family = AF_INET6;
    address.sin6_addr = in6addr_loopback;
    const int descriptor = socket(AF_INET6, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const bool bound =
        bind(descriptor, reinterpret_cast<sockaddr *>(&address), sizeof address) == 0;
    close(descriptor);
    return bound;
}

web_browser::web_browser() {
    for (int attempt = 0; attempt < MOST_STARTS && port == 0; ++attempt) {
        // What the browser leaves in its temporary directory goes with this one.
        driver =
            std::make_unique<started_program>(words{find_program(PROGRAMS[1]), "--port=0"},
                                              start_options{.settings = {"TMPDIR=" + home.path}});
        port = read_port(*driver);
    }
    if (port == 0) {
        complaint = "the driver did not start: " + driver->output() + driver->errors();
        return;
    }
    session = open_session(*this);
}

web_browser::~web_browser() {
    if (!session.empty()) {
        ask_http(port, "DELETE " + session);
    }
    end_program(*driver, SIGTERM);
}

nlohmann::json command(web_browser &browser, const std::string &path, const nlohmann::json &body) {
    const http_reply answer =
        ask_http(browser.port, "POST " + path, "Content-Type: application/json\r\n", body.dump());
    if (answer.status != 200) {
        browser.complaint += path + ": " + (answer.status == 0 ? "no answer" : answer.body) + "\n";
        return nullptr;
    }
    return json::parse(answer.body, nullptr, false)["value"];
}

void choose_scheme(web_browser &browser, const std::string &scheme) {
    const json feature{{"name", "prefers-color-scheme"}, {"value", scheme}};
    command(browser, browser.session + "/goog/cdp/execute",
            {{"cmd", "Emulation.setEmulatedMedia"},
             {"params", {{"features", json::array({feature})}}}});
}

std::string focus_words(web_browser &browser) {
    const json active = fetch(browser, "/element/active");
    if (!active.is_object()) {
        return "nothing";
    }
    const std::string path = "/element/" + active.front().get<std::string>();
    const json role = fetch(browser, path + "/computedrole");
    const json label = fetch(browser, path + "/computedlabel");
    return role.get<std::string>() + ": " + label.get<std::string>();
}

void click(web_browser &browser, const std::string &selector) {
    const json found = command(browser, browser.session + "/element",
                               {{"using", "css selector"}, {"value", selector}});
    if (found.is_object()) {
        command(browser,
                browser.session + "/element/" + found.front().get<std::string>() + "/click",
                json::object());
    }
}

void open_page(web_browser &browser, const std::string &address) {
    command(browser, browser.session + "/url", {{"url", address}});
}

nlohmann::json evaluate(web_browser &browser, const std::string &expression) {
    return command(browser, browser.session + "/execute/sync",
                   {{"script", "return " + expression + ";"}, {"args", json::array()}});
}

bool wait_until(web_browser &browser, const std::string &expression) {
    const std::string script = "const done = arguments[arguments.length - 1];"
                               "const look = () => (" +
                               expression +
                               ") && (watcher.disconnect(), done(true));"
                               "const watcher = new MutationObserver(look);"
                               "watcher.observe(document, {subtree: true, childList: true,"
                               " characterData: true, attributes: true});"
                               "look();";
    return command(browser, browser.session + "/execute/async",
                   {{"script", script}, {"args", json::array()}}) == true;
}

void press(web_browser &browser, const std::string &key) {
    const json steps{{{"type", "keyDown"}, {"value", key}}, {{"type", "keyUp"}, {"value", key}}};
    const json keyboard{{"type", "key"}, {"id", "keyboard"}, {"actions", steps}};
    command(browser, browser.session + "/actions", {{"actions", json::array({keyboard})}});
}

void resize(web_browser &browser, int width, int height) {
    command(browser, browser.session + "/goog/cdp/execute",
            {{"cmd", "Emulation.setDeviceMetricsOverride"},
             {"params",
              {{"width", width}, {"height", height}, {"deviceScaleFactor", 1}, {"mobile", true}}}});
}

std::string take_screenshot(web_browser &browser) {
    const json picture = fetch(browser, "/screenshot");
    return picture.is_string() ? decode_base64(picture) : "";
}
