// The page as people use it: Chromium shows it while the built lumocmd sends requests.
#include "tests/simulator/browser.h"

namespace {

using namespace harness;
using nlohmann::json;

const std::string LAMP = "one('[data-key=LIVING-LAMP]')";
const std::string EIB = "one('[data-key=eib]')";
const std::string ROWS = "all('#requests li:not([hidden])')";

/// The texts of the parts of an element, with a blank between them.
std::string words_of(const std::string &node) {
    return "[..." + node + "?.children ?? []].map((part) => part.textContent).join(' ').trim()";
}

/// The newest request without its time.
const std::string NEWEST = words_of("one('#requests li:not([hidden]) summary')") + ".slice(13)";

TEST_F(PageInABrowser, ShowsWhatLumocmdDoes) {
    ASSERT_EQ(run_on_element("LIVING-LAMP|ON|80"), 0);
    EXPECT_TRUE(sees(words_of(LAMP) + " === 'LIVING-LAMP eib 1/1/3 ON 80'"));
    ASSERT_EQ(ask_eib(), 0);
    EXPECT_TRUE(sees(words_of(LAMP) + " === 'LIVING-LAMP eib 1/1/3 ON 1'"));
    EXPECT_TRUE(sees(words_of(EIB + ".firstElementChild") + " === 'EIB healthy 1 request'"));
    EXPECT_TRUE(sees(NEWEST + " === 'EIB SENDEIBUSSETDATAGRAM living|1/1/3|1|1 done EIBG-000'"));
    click("#requests summary");
    EXPECT_TRUE(sees(R"(one('pre').textContent === '"Request: SENDEIBUSSETDATAGRAM\\n"\n)"
                     R"("SectionName: living\\n"\n"Destination: 1/1/3\\n"\n)"
                     R"("EISType: 1\\n"\n"Payload: 1\\n"\n"\\n"\n')"));
    EXPECT_TRUE(sees(R"(all('pre')[1].textContent === '"Response Status: EIBG-000\\n"\n')"));
}

TEST_F(PageInABrowser, SwitchesAnElementByAClick) {
    click("[data-key=LIVING-LAMP]");
    EXPECT_TRUE(sees(LAMP + ".ariaChecked === 'true'"));
    EXPECT_TRUE(sees("said.textContent === 'done'"));
    EXPECT_EQ(evaluate("(said.textContent = '', getComputedStyle(said).display)"), "block");
    EXPECT_TRUE(simulator.program.wait_for_output("SOAP: told on the page: LIVING-LAMP ON 1\n"));
}

TEST_F(PageInABrowser, TellsADaemonWhatToDo) {
    const std::string condition = EIB + ".querySelector('.condition').textContent";
    click("[data-key=eib] summary");
    click("[data-key=eib] [data-option='--answer'][data-once]");
    EXPECT_TRUE(sees(condition + " === 'told to fail'"));
    EXPECT_EQ(evaluate(EIB + ".querySelector('.told:not(.condition)').textContent"),
              "answers EIBG-103 once");
    EXPECT_EQ(ask_eib(), 103);
    EXPECT_TRUE(sees(condition + " === 'healthy'"));
    click("[data-key=eib] [data-option='--refuse']:not([data-once])");
    EXPECT_TRUE(sees(condition + " === 'refusing'"));
    EXPECT_EQ(ask_eib(), 105);
    click("[data-key=eib] .back");
    EXPECT_TRUE(sees(condition + " === 'healthy'"));
    EXPECT_EQ(ask_eib(), 0);
    EXPECT_EQ(evaluate("all('[data-key=soap] .refuse').length"), 0) << "the page comes from there";

    evaluate(EIB + ".querySelector('input').value = 'x'");
    click("[data-key=eib] [data-option='--answer']");
    EXPECT_TRUE(sees("said.textContent.startsWith('needs a number')"));
    click("[data-key=eib] .copy");
    EXPECT_TRUE(sees("said.textContent === 'copied'"));
    EXPECT_EQ(evaluate(EIB + ".querySelector('textarea').value"),
              "lumocmd -v ON -t EIBLOCAL -s '" + simulator.home.path +
                  "/lumo_eibgateway.socket' -f SENDEIBUSSETDATAGRAM -p 'living|1/1/3|1|1'");
}

TEST_F(PageInABrowser, ShowsWhatIsAskedForOnly) {
    ASSERT_EQ(ask_eib(), 0);
    ASSERT_NE(ask_service("SERVICE_GETELEMENTSTATUS", "NOBODY"), 0);
    EXPECT_TRUE(sees(ROWS + ".length === 2"));
    const auto choose = [this](const std::string &daemon) {
        evaluate("(filter.value = '" + daemon + "', filter.dispatchEvent(new Event('change')))");
        return evaluate(ROWS + ".map((row) => row.dataset.daemon).join()");
    };
    EXPECT_EQ(choose("eib"), "eib");
    EXPECT_EQ(choose("soap"), "soap");
    EXPECT_EQ(choose(""), "soap,eib");
    click("#failures");
    EXPECT_EQ(choose(""), "soap");
    EXPECT_EQ(choose("eib"), "");
    EXPECT_EQ(evaluate("count.textContent"), "0 of the last 2");
    ASSERT_EQ(ask_eib(), 0);
    EXPECT_TRUE(sees("count.textContent === '0 of the last 3'"));
}

TEST_F(PageInABrowser, ShowsMarkupAsText) {
    ASSERT_EQ(run_on_element("<img src=x onerror=alert(1)>|<b>ON</b>|&lt;"), 0);
    EXPECT_TRUE(sees("all('.element').some((row) => " + words_of("row") +
                     " === '<img src=x onerror=alert(1)>  <b>ON</b> &lt;')"));
    EXPECT_TRUE(sees(NEWEST + ".includes('<b>ON</b>')"));
    EXPECT_EQ(evaluate("all('img').length"), 0);
    EXPECT_EQ(evaluate("performance.getEntriesByType('resource').map((entry) => entry.name).filter("
                       "(name) => !name.startsWith(location.origin) && !name.startsWith('data:'))"),
              json::array())
        << "the page takes nothing from elsewhere";
}

TEST_F(PageInABrowser, FollowsTheSimulator) {
    simulator.end();
    EXPECT_TRUE(sees("connection.textContent === 'the simulator does not answer; trying again'"));
    started_program next({LUMOSIM_PROGRAM, "--directory", simulator.home.path, "--port",
                          std::to_string(simulator.port)});
    ASSERT_TRUE(next.wait_for_output("ready\n"));
    EXPECT_TRUE(sees("connection.textContent === 'live'"));
    ASSERT_EQ(ask_eib(), 0);
    EXPECT_TRUE(sees(ROWS + ".length === 1"));
    click("[data-key=GARDEN-LAMP]");
    EXPECT_TRUE(next.wait_for_output("told on the page: GARDEN-LAMP ON 1\n"));
}

TEST_F(PageInABrowser, ShowsABurstAtOnce) {
    evaluate("(window.shown = 0, new MutationObserver((changes) => { shown += changes"
             ".filter((change) => change.addedNodes.length > 0).length; })"
             ".observe(requests, {childList: true}))");
    evaluate("(() => { for (let number = 1; number <= 2000; ++number) {"
             "source.onmessage({data: JSON.stringify({run, elements: [], daemons:"
             "[{key: 'eib', label: 'EIB', condition: 'healthy', told: ''}], requests:"
             "[{number, time: 0, daemon: 'eib', request: 'r' + number, outcome: '',"
             "word: 'done'}]})}); } })()");
    EXPECT_TRUE(sees(ROWS + ".length === 2000"));
    EXPECT_EQ(evaluate("shown"), 1);
    EXPECT_EQ(evaluate("one('#requests .asked').textContent"), "r2000");
}

TEST_F(PageInABrowser, GivesUpItsConnectionWhileNobodySeesIt) {
    const auto hide = [this](const std::string &hidden) {
        evaluate("(Object.defineProperty(document, 'hidden', {value: " + hidden +
                 ", configurable: true}), document.dispatchEvent(new Event('visibilitychange')))");
    };
    evaluate("(window.before = source, 0)");
    hide("true");
    EXPECT_EQ(evaluate("before.readyState"), 2) << "closed";
    ASSERT_EQ(ask_eib(), 0);
    hide("false");
    EXPECT_TRUE(sees(ROWS + ".length === 1"));
    EXPECT_EQ(evaluate("connection.textContent"), "live");
}

TEST_F(PageInABrowser, ClampsALongRequestUntilItIsOpened) {
    resize(1000, 860);
    simulator.ask(CORE_SOCKET, "Request: " + std::string(190, 'f') + "\n\n");
    EXPECT_TRUE(sees(ROWS + ".length === 1"));
    const std::string is_cut =
        "one('#requests .asked').clientHeight < one('#requests .asked').scrollHeight";
    EXPECT_EQ(evaluate(is_cut), true);
    click("#requests summary");
    EXPECT_TRUE(sees("one('#requests details').open"));
    EXPECT_EQ(evaluate(is_cut), false);
}

/// Many elements and requests: each list scrolls in its own place, the newest request is on top.
TEST_F(PageInABrowser, StaysUsable) {
    for (int number = 100; number < 250; ++number) {
        ASSERT_EQ(run_on_element("ELEMENT-" + std::to_string(number) + "|ON|80"), 0);
    }
    for (int number = 1; number <= 5010; ++number) {
        const std::string name = "f" + std::to_string(number);
        simulator.ask(CORE_SOCKET, "Request: " + name + "\nParameter Count: 0\nWaittime: 5\n\n");
        // The log is read at times: a pipe that is full would stop the simulator.
        ASSERT_TRUE(number % 1000 != 0 ||
                    simulator.program.wait_for_output("FSMCORE: " + name + " -> FSMC-000\n"));
    }
    open();
    EXPECT_EQ(evaluate("all('[data-key^=ELEMENT-]').length"), 150);
    ASSERT_EQ(ask_eib(), 0);
    EXPECT_TRUE(sees(NEWEST + ".startsWith('EIB SENDEIBUSSETDATAGRAM')"));
    EXPECT_EQ(evaluate(ROWS + ".length"), 5000);
    for (const auto &[width, height] : {std::pair(1280, 860), std::pair(PHONE_WIDTH, 740)}) {
        resize(width, height);
        EXPECT_EQ(evaluate("[elements, requests].every((list) => list.clientHeight < innerHeight"
                           " && list.scrollHeight > 2 * list.clientHeight)"),
                  true);
        EXPECT_EQ(evaluate("document.documentElement.scrollWidth"), width);
    }
    click("#failures");
    EXPECT_TRUE(sees("count.textContent === '0 of the last 5000'"));
    click("#failures");
    EXPECT_EQ(evaluate(ROWS + ".length"), 5000);
    // The reader's place stays while requests come. Rows get their true heights when they are
    // drawn.
    const auto is_drawn = [&] {
        evaluate("requestAnimationFrame(() => requestAnimationFrame(() => {"
                 " document.body.classList.add('drawn'); }))");
        const bool drawn = sees("one('.drawn')");
        evaluate("document.body.classList.remove('drawn')");
        return drawn;
    };
    evaluate("requests.children[100].scrollIntoView()");
    EXPECT_TRUE(is_drawn());
    const std::string place = "document.elementFromPoint(180, requests.getBoundingClientRect().top "
                              "+ 5).closest('li').querySelector('.asked').textContent";
    const json before = evaluate(place);
    ASSERT_EQ(ask_eib(), 0);
    EXPECT_TRUE(sees("requests.firstElementChild.textContent.includes('EIB')"));
    EXPECT_TRUE(is_drawn());
    EXPECT_EQ(evaluate(place), before);
    evaluate("(one('#find').value = 'element-14', one('#find').dispatchEvent(new Event('input')))");
    EXPECT_EQ(evaluate("all('.element:not([hidden])').length"), 10);
}

} // namespace
