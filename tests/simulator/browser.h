// A headless Chromium, steered over the WebDriver protocol. Every wait is bounded.
#pragma once

#include "tests/simulator/simulator_process.h"

#include <memory>
#include <nlohmann/json.hpp>
#include <string>

/// Why no browser can be started here; empty when one can.
std::string missing_browser();

/// Whether a socket can be bound to ::1.
bool has_ipv6_loopback();

struct web_browser {
    web_browser();
    ~web_browser();
    web_browser(const web_browser &) = delete;
    web_browser &operator=(const web_browser &) = delete;

    harness::temporary_directory home;
    std::unique_ptr<harness::started_program> driver;
    int port = 0;
    std::string session; ///< path of the session; empty when it could not be opened
    std::string complaint;
};

/// One command of the protocol; the value that it answers, null when it fails.
nlohmann::json command(web_browser &browser, const std::string &path, const nlohmann::json &body);

/// Opens an address.
void open_page(web_browser &browser, const std::string &address);

/// What the JavaScript expression comes to.
nlohmann::json evaluate(web_browser &browser, const std::string &expression);

/// Waits in the page until the expression is true, looking again after each change of the page;
/// false when the time is up.
bool wait_until(web_browser &browser, const std::string &expression);

/// Presses and releases one key, given as the protocol's character for it.
void press(web_browser &browser, const std::string &key);

/// The role and the name that a screen reader tells of what has the focus, and what is computed of
/// it in the page.
std::string focus_words(web_browser &browser);

/// Clicks the first element that the selector finds, as a mouse does.
void click(web_browser &browser, const std::string &selector);

/// Chooses a light or a dark scheme for the page.
void choose_scheme(web_browser &browser, const std::string &scheme);

/// Makes the page as wide and high as a screen.
void resize(web_browser &browser, int width, int height);

/// A picture of the page as PNG bytes.
std::string take_screenshot(web_browser &browser);
