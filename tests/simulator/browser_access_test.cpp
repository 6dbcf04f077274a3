// Whoever reads the page in the dark, on a phone, with the keyboard alone or by ear.
#include "tests/simulator/browser_page.h"

#include <fstream>

namespace {

using namespace harness;

constexpr std::size_t LARGEST_PICTURE = std::size_t{200} * 1000;
const char *const SCHEMES[] = {"light", "dark"};

/// Functions for the page: the contrast of two colours, the colour behind a node, and what of the
/// page has too little contrast: texts, the edges of what is used, and the ring around the focus.
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
for (const node of document.body.querySelectorAll('*')) {
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

/// What the Tab key comes by, once the EIB row is open.
const char *const STOPS[] = {
    "searchbox: Find an element",
    "switch: BATH-RADIO vivaldi 1/4 OFF 0",
    "DisclosureTriangle: FSMCORE healthy 0 requests",
    "DisclosureTriangle: EIB told to fail 2 requests",
    "textbox: Answer status",
    "button: Answer status once",
    "button: Answer status always",
    "textbox: Wait, in ms",
    "button: Wait, in ms once",
    "button: Wait, in ms always",
    "button: Close without an answer once",
    "button: Close without an answer always",
    "button: Refuse connections once",
    "button: Refuse connections always",
    "button: Take back",
    "combobox: Function",
    "button: Copy",
    "textbox: Command",
    "DisclosureTriangle: SMSTOOL healthy 0 requests",
    "DisclosureTriangle: LINTRONIC healthy 0 requests",
    "DisclosureTriangle: TECNOUT healthy 0 requests",
    "DisclosureTriangle: VIVALDI healthy 0 requests",
    "DisclosureTriangle: BENTEL healthy 0 requests",
    "DisclosureTriangle: TUTONDO healthy 0 requests",
    "DisclosureTriangle: SOAP healthy 2 requests",
    "checkbox: Failures only",
    "combobox: Daemon",
    "DisclosureTriangle: TIME EIB SENDEIBUSSETDATAGRAM living|1/1/3|1|1 failed EIBG-103",
};

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
        click(*browser, "[data-key=eib] summary");
        click(*browser, "[data-key=eib] [data-option='--answer']:not([data-once])");
        ASSERT_TRUE(sees("document.querySelector('.condition.told')"));
        ASSERT_EQ(ask_eib(), 103);
        ASSERT_TRUE(sees("document.querySelectorAll('#requests li').length === 4"));
        click(*browser, "#requests li:nth-child(2) summary");
        ASSERT_TRUE(sees("document.querySelectorAll('pre')[3].textContent"));
        evaluate(*browser, "(said.textContent = '', document.activeElement.blur())");
    }

    void expect_contrast(const std::string &where) {
        const nlohmann::json seen =
            evaluate(*browser, "(() => {" + AUDIT + "return [texts > 40, found]; })()");
        EXPECT_EQ(seen, nlohmann::json({true, nlohmann::json::array()})) << where;
    }

    void take_picture(const std::string &name) {
        const std::string picture = take_screenshot(*browser);
        EXPECT_TRUE(picture.starts_with("\x89PNG\r\n")) << picture.size();
        EXPECT_LT(picture.size(), LARGEST_PICTURE);
        std::ofstream(PAGE_PICTURES + name, std::ios::binary) << picture;
    }
};

TEST_F(AccessToThePage, LooksWellInLightAndDarkAndOnAPhone) {
    for (const char *scheme : SCHEMES) {
        choose_scheme(*browser, scheme);
        resize(*browser, 1280, 1000);
        expect_contrast(scheme);
        take_picture(scheme == std::string("light") ? "simulator.png" : "simulator-dark.png");
        resize(*browser, PHONE_WIDTH, 740);
        expect_contrast(scheme);
    }
    choose_scheme(*browser, "light");
    const std::string name(300, 'A');
    take_picture("simulator-narrow.png");
    ASSERT_EQ(run_on_element(name + "|" + std::string(150, 'B') + "|1"), 0);
    EXPECT_TRUE(sees("document.querySelectorAll('.element').length === 6"));
    EXPECT_EQ(evaluate(*browser, "document.documentElement.clientWidth"), PHONE_WIDTH);
    EXPECT_EQ(evaluate(*browser, "document.documentElement.scrollWidth"), PHONE_WIDTH);
    const nlohmann::json cut_off = evaluate(
        *browser, "[...document.querySelectorAll('main *')].filter((node) => "
                  "node.checkVisibility() && !node.closest('pre') && "
                  "node.getBoundingClientRect().right > innerWidth).map((node) => node.outerHTML)");
    EXPECT_EQ(cut_off, nlohmann::json::array());
}

TEST_F(AccessToThePage, TellsWhatHasTheFocusAndShowsIt) {
    for (const char *scheme : SCHEMES) {
        choose_scheme(*browser, scheme);
        open(); // the Tab key begins at its beginning
        evaluate(*browser, "(document.querySelector('[data-key=eib]').open = true)");
        for (const std::string expected : STOPS) {
            press(*browser, TAB);
            std::string words = focus_words(*browser);
            const std::string triangle = "DisclosureTriangle: ";
            if (expected.find("TIME") != std::string::npos) {
                words.replace(triangle.size(), std::string("08:15:00.250").size(), "TIME");
            }
            EXPECT_EQ(words, expected);
            expect_contrast(expected);
        }
    }
}

TEST_F(AccessToThePage, NeedsNoMouse) {
    evaluate(*browser, "document.querySelector('#find').focus()");
    press(*browser, TAB);
    press(*browser, DOWN);
    EXPECT_EQ(focus_words(*browser), "switch: GARDEN-LAMP lintronic 07 ON 1");
    press(*browser, SPACE);
    EXPECT_TRUE(sees("document.activeElement.ariaChecked === 'false'"));
    press(*browser, END);
    EXPECT_EQ(focus_words(*browser), "switch: LIVING-LAMP eib 1/1/3 ON 1");
    press(*browser, DOWN);
    EXPECT_EQ(focus_words(*browser), "switch: LIVING-LAMP eib 1/1/3 ON 1");
    press(*browser, UP);
    press(*browser, HOME);
    EXPECT_EQ(focus_words(*browser), "switch: BATH-RADIO vivaldi 1/4 OFF 0");

    evaluate(*browser, "document.querySelector('#requests summary').focus()");
    press(*browser, DOWN);
    press(*browser, DOWN);
    const std::string open = "document.activeElement.parentNode.open";
    EXPECT_EQ(evaluate(*browser, open), false);
    press(*browser, ENTER);
    EXPECT_EQ(evaluate(*browser, open), true);
    const nlohmann::json words = focus_words(*browser);
    ASSERT_NE(ask_eib(), 0);
    EXPECT_TRUE(sees("document.querySelectorAll('#requests li').length === 5"));
    EXPECT_EQ(focus_words(*browser), words) << "what comes takes the focus from nobody";
    EXPECT_EQ(evaluate(*browser, "document.querySelectorAll('#requests [tabindex=\"0\"]').length"),
              1);
}

} // namespace
