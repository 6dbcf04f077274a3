// The page of a simulator of its own in a browser of its own.
#pragma once

#include "tests/simulator/browser.h"

#include <gtest/gtest.h>

/// The characters by which the protocol names keys.
inline const std::string TAB = "\xEE\x80\x84";
inline const std::string ENTER = "\xEE\x80\x87";
inline const std::string SPACE = " ";
inline const std::string UP = "\xEE\x80\x93";
inline const std::string DOWN = "\xEE\x80\x95";
inline const std::string HOME = "\xEE\x80\x91";
inline const std::string END = "\xEE\x80\x90";

inline constexpr int PHONE_WIDTH = 375;

class PageInABrowser : public testing::Test {
  protected:
    void SetUp() override;

    /// Opens the page and waits until it shows what there is.
    void open();

    std::string origin() const;

    /// Waits until the expression is true in the page.
    bool sees(const std::string &expression);

    /// Runs the built lumocmd with these options; its exit status.
    static int lumocmd(const harness::words &options);

    int ask_service(const std::string &function, const std::string &values) const;
    int run_on_element(const std::string &values) const;
    int element_status(const std::string &name) const;
    int ask_eib() const;

    harness::running_simulator simulator;
    std::unique_ptr<web_browser> browser;
};
