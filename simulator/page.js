"use strict";
const KEPT_REQUESTS = 5000;
const byId = (id) => document.getElementById(id);
const requests = byId("requests");
let run = "";       /* names the simulator's run; proves that a request is this page's */
let newest = 0;     /* number of the newest request that is shown */
let commands = {};

/* What comes from requests is set as text only, never as markup. */
function setText(node, text) {
    if (node.textContent !== text) {
        node.textContent = text;
    }
}

/* A copy of a template's element. */
function make(id) {
    return byId(id).content.firstElementChild.cloneNode(true);
}

/* Tells the reader, and for a moment who sees. */
function say(text) {
    setText(byId("said"), text);
    clearTimeout(say.timer);
    say.timer = setTimeout(() => setText(byId("said"), ""), 5000);
}

/* Asks for a change. */
async function order(wish) {
    try {
        const answer = await fetch("/control", {
            method: "POST",
            headers: {"X-Lumosim-Token": run},
            body: JSON.stringify(wish),
            signal: AbortSignal.timeout(5000),
        });
        say(answer.ok ? "done" : await answer.text() || "refused");
    } catch {
        say("the simulator does not answer");
    }
}

/* Brings the children of a list in line with records, one per key: those that stay keep what the
   reader did with them, such as an opened row or the focus. */
function reconcile(list, records, create, update) {
    const known = new Map([...list.children].map((node) => [node.dataset.key, node]));
    records.forEach((record, index) => {
        let node = known.get(record.key);
        known.delete(record.key);
        if (!node) {
            node = create(record);
            node.dataset.key = record.key;
        }
        if (list.children[index] !== node) {
            list.insertBefore(node, list.children[index] ?? null);
        }
        update(node, record);
    });
    known.forEach((node) => node.remove());
}

/* Makes one stop for the Tab key of a list: the arrow keys move on from there. */
function rove(list, selector) {
    const isShown = (item) => !item.closest("[hidden]");
    const stops = () => [...list.querySelectorAll(selector)];
    const choose = (item) => {
        list.querySelectorAll("[tabindex='0']").forEach((old) => { old.tabIndex = -1; });
        item.tabIndex = 0;
    };
    list.addEventListener("focusin", (event) => {
        if (event.target.matches(selector)) {
            choose(event.target);
        }
    });
    list.addEventListener("keydown", (event) => {
        const shown = stops().filter(isShown);
        const at = shown.indexOf(event.target);
        const to = {ArrowDown: at + 1, ArrowUp: at - 1, Home: 0, End: shown.length - 1}[event.key];
        if (at >= 0 && to !== undefined) {
            event.preventDefault();
            (shown[to] ?? event.target).focus();
        }
    });
    return () => {
        const chosen = list.querySelector("[tabindex='0']");
        const item = chosen && isShown(chosen) ? chosen : stops().find(isShown);
        if (item) {
            choose(item);
        }
    };
}
const settleElements = rove(byId("elements"), ".element");
const settleRequests = rove(requests, "summary");

function createElement(record) {
    const button = make("element");
    button.tabIndex = -1;
    button.addEventListener("click", () => order({element: record.key}));
    return button;
}

function updateElement(button, record) {
    for (const part of ["status", "value", "links"]) {
        setText(button.querySelector("." + part), record[part]);
    }
    setText(button.querySelector(".name"), record.key);
    button.setAttribute("aria-checked", ["ON", "OPEN"].includes(record.status));
    findElement(button);
}

function findElement(button) {
    const wanted = byId("find").value.toLowerCase();
    button.hidden = !button.dataset.key.toLowerCase().includes(wanted);
}

/* The functions of a daemon, each with the command to copy. */
function fillCommands(node, key) {
    const choice = node.querySelector(".function");
    const command = node.querySelector("textarea");
    choice.replaceChildren(...commands[key].map(([name]) => new Option(name)));
    const show = () => { command.value = commands[key][choice.selectedIndex][1]; };
    choice.addEventListener("change", show);
    show();
    node.querySelector(".copy").addEventListener("click", async () => {
        command.select();
        try {
            await navigator.clipboard.writeText(command.value);
            say("copied");
        } catch {
            say("selected, to be copied with Ctrl+C");
        }
    });
}

function createDaemon(record) {
    const node = make("daemon");
    const group = node.querySelector(".orders");
    group.setAttribute("aria-label", "What " + record.label + " does");
    for (const label of group.querySelectorAll("label")) {
        const input = label.nextElementSibling;
        input.id = label.htmlFor = label.htmlFor + "-" + record.key;
    }
    if (record.key === "soap") { /* this page comes from there */
        group.querySelectorAll(".refuse").forEach((part) => part.remove());
    }
    group.querySelector(".argument").value = record.base + 3;
    for (const button of group.querySelectorAll("button")) {
        const {option, once} = button.dataset;
        const options = ["--answer", "--delay", "--close", "--refuse"];
        const row = group.querySelectorAll("label, .wide")[options.indexOf(option)];
        const input = row?.matches("label") ? row.nextElementSibling : null;
        const before = row ? row.textContent + " " : "";
        button.setAttribute("aria-label", before + button.textContent);
        button.addEventListener("click", () => {
            const argument = input?.value ?? "";
            order({daemon: record.key, option, argument, once: Boolean(once)});
        });
    }
    fillCommands(node, record.key);
    byId("filter").append(new Option(record.label, record.key));
    return node;
}

function updateDaemon(node, record) {
    const part = (name) => node.querySelector("." + name);
    setText(part("name"), record.label);
    setText(part("condition"), record.condition);
    part("condition").className = "condition " + record.condition;
    setText(part("asked"), record.asked + (record.asked === 1 ? " request" : " requests"));
    setText(part("place"), record.place);
    setText(node.children[2], record.told);
    node.children[2].hidden = !record.told;
}

function clockTime(milliseconds) {
    const time = new Date(milliseconds);
    return time.toLocaleTimeString("en-GB") + "." + String(time.getMilliseconds()).padStart(3, "0");
}

/* Shows the bytes of a request when its row is opened for the first time. */
async function showBytes(item, number) {
    const places = item.querySelectorAll("pre");
    const answer = await fetch("/requests/" + number).catch(() => null);
    const lost = "no longer kept";
    const bytes = answer?.ok ? await answer.json() : {received: lost, sent: lost};
    setText(places[0], bytes.received);
    setText(places[1], bytes.sent);
}

function createRequest(record) {
    const item = make("request");
    const [time, daemon, asked, outcome] = item.querySelector("summary").children;
    item.dataset.daemon = record.daemon;
    item.dataset.failed = record.word === "done" ? "" : "1";
    item.querySelector("summary").tabIndex = -1;
    time.textContent = clockTime(record.time);
    time.dateTime = new Date(record.time).toISOString();
    const row = byId("daemons").querySelector(`[data-key="${record.daemon}"]`);
    daemon.textContent = row.querySelector(".name").textContent;
    asked.textContent = record.request;
    outcome.querySelector(".word").textContent = record.word;
    outcome.querySelector(".word").classList.add(record.word);
    outcome.querySelector("code").textContent =
        record.outcome === record.word ? "" : record.outcome;
    const details = item.firstElementChild;
    details.addEventListener("toggle", () => showBytes(item, record.number), {once: true});
    return item;
}

function filterRequest(item) {
    const daemon = byId("filter").value;
    item.hidden = (daemon && item.dataset.daemon !== daemon) ||
        (byId("failures").checked && !item.dataset.failed);
    return item;
}

function countRequests() {
    const shown = requests.querySelectorAll("li:not([hidden])").length;
    const all = requests.childElementCount;
    setText(byId("count"), shown === all ? "the last " + all : shown + " of the last " + all);
    settleRequests();
}

function addRequests(records) {
    const fresh = records.filter((record) => record.number > newest).reverse();
    requests.prepend(...fresh.map((record) => filterRequest(createRequest(record))));
    newest = fresh[0]?.number ?? newest;
    for (let over = requests.childElementCount - KEPT_REQUESTS; over > 0; --over) {
        requests.lastElementChild.remove();
    }
    countRequests();
}

for (const id of ["filter", "failures"]) {
    byId(id).addEventListener("change", () => {
        [...requests.children].forEach(filterRequest);
        countRequests();
    });
}
byId("find").addEventListener("input", () => {
    [...byId("elements").children].forEach(findElement);
    settleElements();
});

function forget() {
    for (const id of ["elements", "daemons", "requests"]) {
        byId(id).replaceChildren();
    }
    byId("filter").length = 1;
    newest = 0;
}

let due = null; /* what came since the last frame */
function show() {
    const home = due;
    due = null;
    if (home.run !== run) {
        forget(); /* another simulator, with other requests */
    }
    run = home.run;
    commands = home.commands ?? commands;
    reconcile(byId("elements"), home.elements, createElement, updateElement);
    reconcile(byId("daemons"), home.daemons, createDaemon, updateDaemon);
    addRequests(home.requests);
    settleElements();
    setText(byId("connection"), "live");
    byId("connection").className = "";
}

/* A burst of requests is many events, which are shown at once. */
function take(message) {
    const home = JSON.parse(message.data);
    if (!due) {
        requestAnimationFrame(show);
    } else if (due.run === home.run) {
        due.requests.push(...home.requests);
        home.requests = due.requests;
        home.commands ??= due.commands;
    }
    due = home;
}

/* A page that nobody sees gives up its connection: browsers have six for all tabs. */
let source = null;
function listen() {
    source?.close();
    source = null;
    if (document.hidden) {
        setText(byId("connection"), "connecting");
        return;
    }
    source = new EventSource("/events");
    source.onmessage = take;
    source.onerror = () => {
        setText(byId("connection"), "the simulator does not answer; trying again");
        byId("connection").className = "lost";
    };
}
document.addEventListener("visibilitychange", listen);
listen();
