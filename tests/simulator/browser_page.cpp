#include "tests/simulator/browser_page.h"

void PageInABrowser::SetUp() {
    const std::string missing = missing_browser();
    if (!missing.empty()) {
        GTEST_SKIP() << missing;
    }
    browser = std::make_unique<web_browser>();
    if (browser->port == 0 && !has_ipv6_loopback()) {
        GTEST_SKIP() << "no ::1, which the driver wants: " << browser->complaint;
    }
    ASSERT_FALSE(browser->session.empty()) << browser->complaint;
    resize(*browser, 1280, 860);
    open();
}

void PageInABrowser::open() {
    open_page(*browser, origin());
    ASSERT_TRUE(sees("connection.textContent === 'live'")) << browser->complaint;
}

std::string PageInABrowser::origin() const {
    return "http://127.0.0.1:" + std::to_string(simulator.port) + "/";
}

bool PageInABrowser::sees(const std::string &expression) {
    return wait_until(*browser, expression);
}

int PageInABrowser::lumocmd(const harness::words &options) {
    return harness::lumocmd(options).status;
}

int PageInABrowser::ask_service(const std::string &function, const std::string &values) const {
    return lumocmd({"-t", "SOAP", "-u", origin() + "cgi-bin/lumows", "-f", function, "-p",
                    "DEMO-SESSION|" + values});
}

int PageInABrowser::run_on_element(const std::string &values) const {
    return ask_service("SERVICE_RUNONELEMENT", values + "||||");
}

int PageInABrowser::element_status(const std::string &name) const {
    return ask_service("SERVICE_GETELEMENTSTATUS", name);
}

int PageInABrowser::ask_eib() const {
    return lumocmd({"-t", "EIBLOCAL", "-s", simulator.home.path + "/lumo_eibgateway.socket", "-f",
                    "SENDEIBUSSETDATAGRAM", "-p", "living|1/1/3|1|1"});
}
