// The page as people see it: Chromium shows it while the built lumocmd sends requests.
#include "tests/simulator/browser.h"

#include <csignal>
#include <fstream>
#include <gtest/gtest.h>

namespace {

using namespace harness;

/// The characters by which the protocol names keys.
const std::string TAB = "\xEE\x80\x84";
const std::string ENTER = "\xEE\x80\x87";

constexpr int PHONE_WIDTH = 360;
constexpr std::size_t LARGEST_PICTURE = std::size_t{150} * 1000;

const std::string LAMP = "document.querySelector('[data-key=LIVING-LAMP]')?.textContent";
const std::string EIB = "document.querySelector('[data-key=eib] summary')";
const std::string CONNECTION = "document.getElementById('connection').textContent";

class PageInABrowser : public testing::Test {
  protected:
    void SetUp() override {
        const std::string missing = missing_browser();
        if (!missing.empty()) {
            GTEST_SKIP() << missing;
        }
        browser = std::make_unique<Browser>();
        if (browser->port == 0 && !has_ipv6_loopback()) {
            GTEST_SKIP() << "no ::1, which the driver wants: " << browser->complaint;
        }
        ASSERT_FALSE(browser->session.empty()) << browser->complaint;
        open_page(*browser, origin());
        ASSERT_TRUE(sees(LAMP + " === 'LIVING-LAMPOFF0'")) << browser->complaint;
    }

    std::string origin() const {
        return "http://127.0.0.1:" + std::to_string(simulator.port) + "/";
    }

    bool sees(const std::string &expression) {
        return wait_until(*browser, expression);
    }

    /// Runs the built lumocmd with these options; its exit status.
    static int lumocmd(const words &options) {
        return harness::lumocmd(options).status;
    }

    int run_on_lamp(const std::string &values) const {
        return lumocmd({"-t", "SOAP", "-u", origin() + "cgi-bin/lumows", "-f",
                        "SERVICE_RUNONELEMENT", "-p", "DEMO-SESSION|" + values + "||||"});
    }

    int ask_eib() const {
        return lumocmd({"-t", "EIBLOCAL", "-s", simulator.home.path + "/lumo_eibgateway.socket",
                        "-f", "SENDEIBUSSETDATAGRAM", "-p", "living|1/1/3|1|1"});
    }

    running_simulator simulator;
    std::unique_ptr<Browser> browser;
};

TEST_F(PageInABrowser, ShowsTheLampAsLumocmdSwitchesIt) {
    ASSERT_EQ(run_on_lamp("LIVING-LAMP|ON|80"), 0);
    EXPECT_TRUE(sees(LAMP + " === 'LIVING-LAMPON80'")) << evaluate(*browser, LAMP);
    ASSERT_EQ(ask_eib(), 0);
    EXPECT_TRUE(sees(EIB + ".textContent === 'EIB EIBG-0001 request'"))
        << evaluate(*browser, EIB + ".textContent");
    EXPECT_TRUE(sees("document.querySelector('[data-key=eib] li').textContent === "
                     "'SENDEIBUSSETDATAGRAM living|1/1/3|1|1 → EIBG-000'"));

    evaluate(*browser, "document.querySelector('[data-key=eib]').open = true");
    resize(*browser, 900, 640);
    const std::string picture = take_screenshot(*browser);
    EXPECT_TRUE(picture.starts_with("\x89PNG\r\n")) << picture.size();
    EXPECT_LT(picture.size(), LARGEST_PICTURE);
    std::ofstream(PAGE_PICTURE, std::ios::binary) << picture;
}

TEST_F(PageInABrowser, TakesNothingFromElsewhere) {
    const nlohmann::json others =
        evaluate(*browser, "performance.getEntriesByType('resource').map((entry) => entry.name)"
                           ".filter((name) => !name.startsWith(location.origin + '/') && "
                           "!name.startsWith('data:'))");
    EXPECT_EQ(others, nlohmann::json::array());
}

TEST_F(PageInABrowser, ShowsMarkupAsText) {
    const std::string name = "<img src=x onerror=alert(1)>";
    ASSERT_EQ(run_on_lamp(name + "|<b>ON</b>|&lt;"), 0);
    EXPECT_TRUE(sees("[...document.querySelectorAll('#elements tr')].some((row) => "
                     "row.textContent === '" +
                     name + "<b>ON</b>&lt;')"));
    EXPECT_EQ(evaluate(*browser, "document.querySelectorAll('img, b').length"), 0);
}

TEST_F(PageInABrowser, IsUsedWithTheKeyboard) {
    press(*browser, TAB);
    EXPECT_EQ(evaluate(*browser, "document.activeElement.closest('details')?.dataset.key"),
              "fsmcore");
    press(*browser, TAB);
    EXPECT_EQ(evaluate(*browser, "document.activeElement === " + EIB), true);
    press(*browser, ENTER);
    EXPECT_EQ(evaluate(*browser, EIB + ".parentNode.open"), true);
    ASSERT_EQ(ask_eib(), 0);
    EXPECT_TRUE(sees(EIB + ".textContent === 'EIB EIBG-0001 request'"));
    EXPECT_EQ(evaluate(*browser, EIB + ".parentNode.open"), true);
    EXPECT_EQ(evaluate(*browser, "document.activeElement === " + EIB), true);
}

TEST_F(PageInABrowser, FitsThePhone) {
    resize(*browser, PHONE_WIDTH, 740);
    ASSERT_EQ(run_on_lamp(std::string(300, 'A') + "|" + std::string(150, 'B') + "|1"), 0);
    EXPECT_TRUE(sees("document.querySelectorAll('#elements tr').length === 3"));
    EXPECT_EQ(evaluate(*browser, "document.documentElement.clientWidth"), PHONE_WIDTH);
    EXPECT_LE(evaluate(*browser, "document.documentElement.scrollWidth"), PHONE_WIDTH);
}

TEST_F(PageInABrowser, SaysWhenTheSimulatorIsGone) {
    EXPECT_TRUE(sees(CONNECTION + " === 'shows what happens as it happens'"));
    simulator.end();
    EXPECT_TRUE(sees(CONNECTION + " === 'the simulator does not answer; trying again'"));
}

} // namespace
