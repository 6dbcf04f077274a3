// The page of a simulator in a headless Chromium, steered over the WebDriver protocol. Every wait
// is bounded.
#pragma once

#include "tests/simulator/simulator_process.h"

#include <gtest/gtest.h>
#include <memory>
#include <nlohmann/json.hpp>

inline constexpr int PHONE_WIDTH = 375;

/// Each test has a simulator and a browser of its own. In the expressions, which are JavaScript,
/// one('selector') is the first element that the selector finds, and all('selector') are all.
class PageInABrowser : public testing::Test {
  protected:
    void SetUp() override;
    void TearDown() override;

    /// Opens the page and waits until it shows what there is.
    void open();

    nlohmann::json evaluate(const std::string &expression);

    /// Waits in the page until the expression is true, looking again after each change of the page;
    /// false when the time is up.
    bool sees(const std::string &expression);

    /// Presses and releases a key, given as the protocol's character for it.
    void press(const std::string &key);

    /// Clicks the first element that the selector finds, as a mouse does.
    void click(const std::string &selector);

    /// The role and the name that a screen reader tells of what has the focus.
    std::string focus_words();

    /// Calls a function of the browser that makes it like another device.
    void emulate(const std::string &function, const nlohmann::json &parameters);
    void resize(int width, int height);

    /// A picture of the page as PNG bytes.
    std::string take_screenshot();

    // What the built lumocmd asks; its exit status.
    int ask_service(const std::string &function, const std::string &values) const;
    int run_on_element(const std::string &values) const;
    int ask_eib() const;

    harness::running_simulator simulator;

  private:
    /// One command of the session; the value that it answers, null when it fails.
    nlohmann::json command(const std::string &method, const std::string &path,
                           const nlohmann::json &body = nlohmann::json::object());

    harness::temporary_directory home_;
    std::unique_ptr<harness::started_program> driver_;
    int port_ = 0;
    std::string session_; ///< path of the session; empty when there is none
};
