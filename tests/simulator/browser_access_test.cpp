// Whoever reads the page in the dark, on a phone, with the keyboard alone or by ear.
#include "tests/protocol/daemons.h"
#include "tests/simulator/browser.h"

#include <regex>

namespace {

using namespace harness;

/// The characters by which the protocol names keys.
const std::string TAB = "\xEE\x80\x84";
const std::string ENTER = "\xEE\x80\x87";
const std::string SPACE = " ";
const std::string UP = "\xEE\x80\x93";
const std::string DOWN = "\xEE\x80\x95";
const std::string HOME = "\xEE\x80\x91";
const std::string END = "\xEE\x80\x90";

constexpr std::size_t LARGEST_PICTURE = 200000;

/// Finds what of the page has too little contrast: texts, the edges of what is used, and the ring
/// around the focus.
const std::string AUDIT = R"(
const channels = (colour) => colour.match(/[\d.]+/g).map(Number);
const over = (top, below) => {
    const [red, green, blue, alpha = 1] = channels(top);
    return 'rgb(' + [red, green, blue].map((value, index) =>
        value * alpha + channels(below)[index] * (1 - alpha)).join() + ')';
};
const light = (colour) => channels(colour).slice(0, 3).map((value) => value / 255)
    .map((value) => value <= 0.04045 ? value / 12.92 : ((value + 0.055) / 1.055) ** 2.4)
    .reduce((sum, value, index) => sum + value * [0.2126, 0.7152, 0.0722][index], 0);
const contrast = (one, other) => {
    const [low, high] = [light(one), light(other)].sort((a, b) => a - b);
    return (high + 0.05) / (low + 0.05);
};
const behind = (node) => node === null ? 'rgb(255,255,255)'
    : over(getComputedStyle(node).backgroundColor, behind(node.parentElement));
const found = [];
const check = (node, part, colour, back, least) => {
    const ratio = contrast(over(colour, back), back);
    if (!(ratio >= least)) {
        found.push(node.tagName + '.' + node.className + ' ' + part + ' ' + ratio.toFixed(2));
    }
};
let texts = 0;
for (const node of all('body *')) {
    const style = getComputedStyle(node);
    if (!node.checkVisibility({visibilityProperty: true}) || node.matches('option')) {
        continue;
    }
    const isField = node.matches('input, select, textarea');
    if (isField || [...node.childNodes].some((child) => child.nodeType === 3 && child.data.trim())) {
        texts++;
        check(node, 'text', style.color, behind(node), 4.5);
    }
    if (node.placeholder) {
        check(node, 'placeholder', getComputedStyle(node, '::placeholder').color, behind(node), 4.5);
    }
    if (isField || node.matches('button:not(.element)')) {
        check(node, 'edge', style.borderTopColor, behind(node.parentElement), 3);
    }
    if (node.matches('.element')) {
        check(node, 'switch', getComputedStyle(node, '::before').borderTopColor, behind(node), 3);
    }
}
const held = document.activeElement;
if (held !== document.body) {
    const style = getComputedStyle(held);
    for (const back of [behind(held), behind(held.parentElement)]) {
        check(held, 'ring', style.outlineColor, back, 3);
    }
    if (style.outlineStyle === 'none' || parseFloat(style.outlineWidth) < 2) {
        found.push(held.tagName + '.' + held.className + ' has no ring');
    }
}
)";

/// What the Tab key comes by in a row of the daemons that is open.
const words ORDERS = protocol::entries_of(
    "textbox: Answer status|button: Answer status once|button: Answer status always|"
    "textbox: Wait, in ms|button: Wait, in ms once|button: Wait, in ms always|"
    "button: Close without an answer once|button: Close without an answer always|"
    "button: Refuse connections once|button: Refuse connections always|button: Take back|"
    "combobox: Function|button: Copy|textbox: Command");

/// What it comes by once the EIB row is open.
words stops() {
    words all = {"searchbox: Find an element", "switch: BATH-RADIO vivaldi 1/4 OFF 0"};
    for (const protocol::daemon_row &daemon : protocol::daemons()) {
        const std::string row = "DisclosureTriangle: " + daemon.name;
        if (daemon.name == "EIB") {
            all.push_back(row + " told to fail 2 requests");
            all.insert(all.end(), ORDERS.begin(), ORDERS.end());
        } else {
            all.push_back(row + " healthy " + (daemon.socket.empty() ? "2" : "0") + " requests");
        }
    }
    all.insert(all.end(), {"checkbox: Failures only", "combobox: Daemon",
                           "DisclosureTriangle: TIME EIB SENDEIBUSSETDATAGRAM living|1/1/3|1|1 "
                           "failed EIBG-103"});
    return all;
}

class AccessToThePage : public PageInABrowser {
  protected:
    /// A page with something of everything: requests that went well and ill, a daemon that fails,
    /// a row of each kind that is open.
    void SetUp() override {
        PageInABrowser::SetUp();
        if (IsSkipped() || HasFatalFailure()) {
            return;
        }
        ASSERT_EQ(run_on_element("LIVING-LAMP|ON|80"), 0);
        ASSERT_EQ(run_on_element("GARDEN-LAMP|ON|1"), 0);
        ASSERT_EQ(ask_eib(), 0);
        click("[data-key=eib] summary");
        click("[data-key=eib] [data-option='--answer']:not([data-once])");
        ASSERT_TRUE(sees("one('.condition.told')"));
        ASSERT_EQ(ask_eib(), 103);
        ASSERT_TRUE(sees("all('#requests li').length === 4"));
        click("#requests li:nth-child(2) summary");
        ASSERT_TRUE(sees("all('pre')[3].textContent"));
        evaluate("(said.textContent = '', document.activeElement.blur())");
    }

    void choose_scheme(const std::string &scheme) {
        const nlohmann::json feature{{"name", "prefers-color-scheme"}, {"value", scheme}};
        emulate("setEmulatedMedia", {{"features", nlohmann::json::array({feature})}});
    }

    void expect_contrast(const std::string &where) {
        EXPECT_EQ(evaluate("(() => {" + AUDIT + "return [texts > 40, found]; })()"),
                  nlohmann::json({true, nlohmann::json::array()}))
            << where;
    }

    void take_picture(const std::string &name) {
        const std::string picture = take_screenshot();
        EXPECT_TRUE(picture.starts_with("\x89PNG\r\n")) << picture.size();
        EXPECT_LT(picture.size(), LARGEST_PICTURE);
        write_file(PAGE_PICTURES + name, picture);
    }
};

TEST_F(AccessToThePage, LooksWellInLightAndDarkAndOnAPhone) {
    for (const std::string scheme : {"dark", "light"}) {
        choose_scheme(scheme);
        resize(1280, 1000);
        expect_contrast(scheme);
        take_picture(scheme == "light" ? "simulator.png" : "simulator-dark.png");
        resize(PHONE_WIDTH, 740);
        expect_contrast(scheme);
    }
    take_picture("simulator-narrow.png");
    ASSERT_EQ(run_on_element(std::string(300, 'A') + "|" + std::string(150, 'B') + "|1"), 0);
    EXPECT_TRUE(sees("one('[data-key^=AAA]')"));
    EXPECT_EQ(evaluate("document.documentElement.clientWidth"), PHONE_WIDTH);
    EXPECT_EQ(evaluate("document.documentElement.scrollWidth"), PHONE_WIDTH);
    EXPECT_EQ(evaluate("all('main *').filter((node) => node.checkVisibility() && "
                       "!node.closest('pre') && node.getBoundingClientRect().right > innerWidth)"
                       ".map((node) => node.outerHTML)"),
              nlohmann::json::array());
}

TEST_F(AccessToThePage, TellsWhatHasTheFocusAndShowsIt) {
    for (const char *scheme : {"light", "dark"}) {
        choose_scheme(scheme);
        open(); // the Tab key begins at its beginning
        evaluate("(one('[data-key=eib]').open = true)");
        for (const std::string &expected : stops()) {
            press(TAB);
            EXPECT_EQ(std::regex_replace(focus_words(), std::regex("[0-9:]{8}\\.[0-9]{3}"), "TIME"),
                      expected);
            expect_contrast(expected);
        }
    }
}

TEST_F(AccessToThePage, NeedsNoMouse) {
    evaluate("one('#find').focus()");
    press(TAB);
    press(DOWN);
    EXPECT_EQ(focus_words(), "switch: GARDEN-LAMP lintronic 07 ON 1");
    press(SPACE);
    EXPECT_TRUE(sees("document.activeElement.ariaChecked === 'false'"));
    press(END);
    EXPECT_EQ(focus_words(), "switch: LIVING-LAMP eib 1/1/3 ON 1");
    press(DOWN);
    EXPECT_EQ(focus_words(), "switch: LIVING-LAMP eib 1/1/3 ON 1");
    press(UP);
    press(HOME);
    EXPECT_EQ(focus_words(), "switch: BATH-RADIO vivaldi 1/4 OFF 0");

    evaluate("one('#requests summary').focus()");
    press(DOWN);
    press(DOWN);
    const std::string open = "document.activeElement.parentNode.open";
    EXPECT_EQ(evaluate(open), false);
    press(ENTER);
    EXPECT_EQ(evaluate(open), true);
    const std::string before = focus_words();
    ASSERT_NE(ask_eib(), 0);
    EXPECT_TRUE(sees("all('#requests li').length === 5"));
    EXPECT_EQ(focus_words(), before) << "what comes takes the focus from nobody";
    EXPECT_EQ(evaluate("all('#requests [tabindex=\"0\"]').length"), 1);
}

} // namespace
