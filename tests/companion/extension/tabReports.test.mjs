import assert from "node:assert/strict";
import { test } from "node:test";
import { TabReports } from "../../../companion/extension/tabReports.js";
import { FakeBrowser, FakeClock, settle, understood } from "./fakeBrowser.mjs";

console.warn = () => {};

const a = "http://a.test/";
const b = "http://b.test/";
const c = "http://c.test/";

/** Reports of a browser with two windows: 1 has the tabs 10 (in front) and 11, 2 has 20. */
function reporting() {
    const browser = new FakeBrowser(
        { id: 1, focused: true, tabs: [{ id: 10, url: a, active: true }, { id: 11, url: b }] },
        { id: 2, tabs: [{ id: 20, url: c, active: true }] },
    );
    const clock = new FakeClock();
    const sent = [];
    const reports = new TabReports(browser.api, clock, (message) => sent.push(structuredClone(message)));
    const { tabs, windows } = browser.api;
    tabs.onCreated.addListener((tab) => reports.tabCreated(tab));
    tabs.onUpdated.addListener((id, change, tab) => reports.tabUpdated(id, change, tab));
    tabs.onActivated.addListener(({ tabId, windowId }) => reports.tabActivated(tabId, windowId));
    tabs.onMoved.addListener((id, { windowId }) => reports.windowChanged(windowId));
    tabs.onReplaced.addListener((added, removed) => reports.tabReplaced(added, removed));
    tabs.onRemoved.addListener((id, { windowId }) => reports.tabRemoved(id, windowId));
    windows.onCreated.addListener(({ id }) => reports.windowChanged(id));
    windows.onRemoved.addListener((id) => reports.windowRemoved(id));
    windows.onFocusChanged.addListener(() => reports.focusChanged());
    return { browser, clock, reports, sent, last: () => sent.splice(0) };
}

async function started() {
    const all = reporting();
    all.reports.start();
    await settle();
    all.history = all.last();
    all.browser.calls.length = 0;
    return all;
}

/** What the browser has, as understood() gives it. */
function truth(browser) {
    const shown = browser.state.filter(({ type }) => type !== "devtools");
    return {
        windows: shown.map(({ id, tabs }) => ({
            id,
            active: tabs.find(({ active }) => active)?.id ?? null,
            tabs: tabs.map((tab) => ({ id: tab.id, url: tab.url })),
        })),
        focused: shown.find(({ focused }) => focused)?.id ?? null,
    };
}

function setActive(browser, windowId, id) {
    browser.window(windowId).tabs.forEach((tab) => (tab.active = tab.id === id));
    browser.api.tabs.onActivated.fire({ tabId: id, windowId });
}

function setFocus(browser, id) {
    browser.state.forEach((window) => (window.focused = window.id === id));
    browser.api.windows.onFocusChanged.fire(id ?? -1);
}

test("all windows are told with one question", async () => {
    const { browser, reports, last } = reporting();
    reports.start();
    await settle();
    const told = last();
    assert.equal(told.length, 1);
    assert.deepEqual(understood(told), truth(browser));
    assert.equal(browser.calls.length, 1);
});

test("windows of developers' tools and tabs without an id are not told", async () => {
    const { browser, reports, last } = reporting();
    browser.state.push({ id: 3, type: "devtools", focused: false, tabs: [{ id: 30, url: "devtools://" }] });
    browser.state.push({ id: 4, type: "app", tabs: [{ id: 40, url: c, active: true }] });
    browser.state.push({ id: 5, type: "popup", tabs: [{ id: 50, url: c, active: true }] });
    browser.window(1).tabs.push({ id: -1, url: c });
    reports.start();
    await settle();
    const { windows } = last()[0];
    assert.deepEqual(windows.map(({ id }) => id), [1, 2, 4, 5]);
    assert.deepEqual(windows[0].tabs.map(({ id }) => id), [10, 11]);
});

test("small changes are told in one message, and nothing is asked", async () => {
    const { browser, last, history } = await started();
    browser.open(1, 1, { id: 12, url: "", pendingUrl: c });
    browser.navigate(12, c);
    setActive(browser, 1, 12);
    browser.drop(11);
    const told = last();
    assert.deepEqual(told, [
        { type: "opened", window: 1, index: 1, tab: { id: 12, url: "" } },
        { type: "address", tab: 12, url: c },
        { type: "active", window: 1, tab: 12 },
        { type: "gone", tab: 11 },
    ]);
    assert.deepEqual(understood([...history, ...told]), truth(browser));
    assert.equal(browser.calls.length, 0);
});

test("what is no news is not told", async () => {
    const { browser, last } = await started();
    browser.api.tabs.onUpdated.fire(10, { title: "A" }, browser.tab(10));
    browser.navigate(10, a);
    setActive(browser, 1, 10);
    await settle();
    assert.deepEqual(last(), []);
    assert.equal(browser.calls.length, 0);
});

test("addresses are cut in every message", async () => {
    const { browser, clock, last } = await started();
    const long = a + "x".repeat(2000);
    browser.open(1, 0, { id: 12, url: long });
    browser.navigate(11, long);
    browser.api.tabs.onMoved.fire(20, { windowId: 1 });
    await clock.pass(1000);
    const [opened, address, { window }] = last();
    const cut = long.slice(0, 1024);
    assert.deepEqual([opened.tab.url, address.url, window.tabs[0].url, window.tabs[2].url], [cut, cut, cut, cut]);
});

test("a moved tab makes its window be asked for, once", async () => {
    const { browser, clock, last, history } = await started();
    browser.window(1).tabs.reverse();
    browser.api.tabs.onMoved.fire(11, { windowId: 1 });
    await clock.pass(1000);
    const told = last();
    assert.deepEqual(told.map(({ type }) => type), ["window"]);
    assert.deepEqual(understood([...history, ...told]), truth(browser));
    assert.equal(browser.count("windows.get"), 1);
});

test("an event while its window is asked for leads to another question after it", async () => {
    const { browser, clock, last, history } = await started();
    browser.hold("windows.get");
    browser.api.tabs.onMoved.fire(11, { windowId: 1 });
    await settle();
    browser.navigate(11, c); // the answer, made before, has b
    browser.drop(10);
    browser.open(1, 1, { id: 12, url: a });
    setActive(browser, 1, 12);
    await settle();
    assert.deepEqual(last(), []); // no small message of a window that is asked for
    await browser.release("windows.get");
    await clock.pass(1000);
    const told = last();
    assert.deepEqual(told.map(({ type }) => type), ["window", "window"]);
    assert.deepEqual(understood([...history, ...told]), truth(browser));
});

test("an event while the next question waits is in its answer", async () => {
    const { browser, clock, last, history } = await started();
    browser.hold("windows.get");
    browser.api.tabs.onMoved.fire(11, { windowId: 1 });
    await settle();
    browser.navigate(11, c);
    await browser.release("windows.get");
    browser.navigate(11, "http://d.test/");
    const first = last();
    assert.deepEqual(first.map(({ type }) => type), ["window"]);
    await clock.pass(1000);
    assert.deepEqual(understood([...history, ...first, ...last()]), truth(browser));
    assert.equal(browser.count("windows.get"), 2);
});

test("other windows are told of meanwhile", async () => {
    const { browser, last } = await started();
    browser.hold("windows.get");
    browser.api.tabs.onMoved.fire(11, { windowId: 1 });
    browser.navigate(20, a);
    assert.deepEqual(last(), [{ type: "address", tab: 20, url: a }]);
});

test("an event while everything is asked for leads to another question for everything", async () => {
    for (const change of [
        (browser) => browser.navigate(10, c),
        (browser) => browser.drop(11),
        (browser) => browser.drop(20),
        (browser) => browser.open(2, 1, { id: 21, url: a }),
        (browser) => setActive(browser, 1, 11),
        (browser) => setFocus(browser, 2),
        (browser) => browser.api.windows.onCreated.fire(browser.state[browser.state.push({ id: 3, tabs: [] }) - 1]),
    ]) {
        const { browser, clock, reports, last } = reporting();
        browser.hold("windows.getAll");
        reports.start();
        await settle();
        change(browser);
        await settle();
        assert.deepEqual(last(), []);
        await browser.release("windows.getAll");
        await clock.pass(1000);
        const told = last();
        assert.deepEqual(told.map(({ type }) => type), ["windows", "windows"], String(change));
        assert.deepEqual(understood(told), truth(browser));
    }
});

test("500 tabs that come at once in a new window cost few questions", async () => {
    const { browser, clock, last, history } = await started();
    browser.state.push({ id: 3, tabs: [] });
    browser.api.windows.onCreated.fire({ id: 3, type: "normal" });
    for (let i = 0; i < 500; i++) {
        browser.open(3, i, { id: 3000 + i, url: "" });
        browser.navigate(3000 + i, `http://a.test/${i}`);
        await clock.pass(2);
    }
    await clock.pass(1000);
    assert.ok(browser.count("windows.get") <= 10, `${browser.count("windows.get")} questions`);
    assert.deepEqual(understood([...history, ...last()]), truth(browser));
});

test("a window that changes for long is asked for ever more seldom", async () => {
    const { browser, clock, last, history } = await started();
    for (let i = 0; i < 500; i++) {
        browser.hold("windows.get");
        browser.window(1).tabs.reverse();
        browser.api.tabs.onMoved.fire(11, { windowId: 1 });
        await clock.pass(5);
        browser.api.tabs.onMoved.fire(11, { windowId: 1 });
        await browser.release("windows.get");
    }
    await clock.pass(1000);
    assert.ok(browser.count("windows.get") <= 12, `${browser.count("windows.get")} questions in 2.5 s`);
    assert.deepEqual(understood([...history, ...last()]), truth(browser));
});

test("500 moves at once cost two questions at most", async () => {
    const { browser, clock, last } = await started();
    for (let i = 0; i < 500; i++) {
        browser.api.tabs.onMoved.fire(11, { windowId: 1 });
    }
    await clock.pass(1000);
    assert.ok(browser.count("windows.get") <= 2);
    assert.ok(last().length <= 2);
});

test("a tab that went to another window is told in both, whichever is asked for first", async () => {
    for (const order of [[1, 2], [2, 1], [2]]) {
        const { browser, clock, reports, last, history } = await started();
        const [tab] = browser.window(1).tabs.splice(1, 1);
        browser.window(2).tabs.push(tab);
        order.forEach((id) => reports.windowChanged(id));
        await clock.pass(2000);
        const told = last();
        assert.deepEqual(understood([...history, ...told]), truth(browser));
        assert.ok(told.some(({ type, window }) => type === "window" && window.id === 1 && window.tabs.length === 1));
    }
});

test("a replaced tab makes its window be asked for", async () => {
    const { browser, clock, last, history } = await started();
    browser.window(1).tabs[1].id = 99;
    browser.api.tabs.onReplaced.fire(99, 11);
    await clock.pass(1000);
    assert.equal(browser.count("windows.get"), 1);
    assert.deepEqual(understood([...history, ...last()]), truth(browser));
});

test("what does not fit with what was told is asked for", async () => {
    for (const change of [
        (browser) => browser.api.tabs.onCreated.fire({ ...browser.tab(11), index: 0 }), // told already
        (browser) => browser.api.tabs.onCreated.fire({ id: 12, url: a, windowId: 1, index: 7 }), // no such place
        (browser) => browser.api.tabs.onUpdated.fire(12, { url: a }, { id: 12, windowId: 1 }), // not told
        (browser) => browser.api.tabs.onActivated.fire({ tabId: 12, windowId: 1 }),
    ]) {
        const { browser, clock, last } = await started();
        change(browser);
        await clock.pass(1000);
        assert.deepEqual(last().map(({ type }) => type), ["window"], String(change));
    }
});

test("nothing is told or asked of the end of a tab that was not told", async () => {
    const { browser, clock, last } = await started();
    browser.api.tabs.onRemoved.fire(77, { windowId: 1 });
    browser.api.tabs.onRemoved.fire(78, { windowId: 7 });
    await clock.pass(1000);
    assert.deepEqual(last(), []);
    assert.equal(browser.calls.length, 0);
});

test("a window that goes while it is asked for is told as gone, and its answer is not", async () => {
    const { browser, clock, last, history } = await started();
    browser.hold("windows.get");
    browser.api.tabs.onMoved.fire(20, { windowId: 2 });
    await settle();
    browser.drop(20);
    await browser.release("windows.get");
    await clock.pass(1000);
    const told = last();
    assert.deepEqual(told, [{ type: "windowGone", window: 2 }]);
    assert.deepEqual(understood([...history, ...told]), truth(browser));
});

test("a window that is not there when it is asked for is told as gone", async () => {
    const { browser, clock, last } = await started();
    browser.state.pop();
    browser.api.tabs.onMoved.fire(20, { windowId: 2 });
    await clock.pass(1000);
    assert.deepEqual(last(), [{ type: "windowGone", window: 2 }]);
});

test("the keyboard's window is asked for, since the last event may be an old one", async () => {
    const { browser, clock, last } = await started();
    setFocus(browser, 2);
    browser.api.windows.onFocusChanged.fire(-1); // the first window's, come late
    await clock.pass(1000);
    assert.deepEqual(last(), [{ type: "focus", window: 2 }]);
    setFocus(browser, null);
    await clock.pass(1000);
    assert.deepEqual(last(), [{ type: "focus", window: null }]);
});

test("a change of the keyboard's window while it is asked for leads to another question", async () => {
    const { browser, clock, last } = await started();
    browser.hold("windows.getAll");
    browser.api.windows.onFocusChanged.fire(-1);
    await settle();
    setFocus(browser, 2);
    await browser.release("windows.getAll");
    await clock.pass(1000);
    assert.deepEqual(last().at(-1), { type: "focus", window: 2 });
});

test("a new window is told before it has the keyboard", async () => {
    const { browser, clock, last, history } = await started();
    browser.state.push({ id: 3, tabs: [{ id: 30, url: a, active: true }] });
    setFocus(browser, 3);
    await clock.pass(1000);
    const told = last();
    assert.deepEqual(told.map(({ type }) => type), ["window", "focus"]);
    assert.deepEqual(understood([...history, ...told]), truth(browser));
});

test("developers' tools that have the keyboard are no window that has it", async () => {
    const { browser, clock, last } = await started();
    browser.state.push({ id: 3, type: "devtools", tabs: [] });
    setFocus(browser, 3);
    await clock.pass(1000);
    assert.deepEqual(last(), [{ type: "focus", window: null }]);
});

test("nobody has the keyboard after its window went, unless the browser says so", async () => {
    const { browser, clock, last, history } = await started();
    browser.drop(10);
    browser.drop(11);
    await clock.pass(1000);
    assert.deepEqual(understood([...history, ...last()]), truth(browser));
});

test("any order of events and answers ends with the truth", async () => {
    for (let seed = 1; seed <= 100; seed++) {
        let state = seed;
        const random = (below) => {
            state = (state * 1103515245 + 12345) % 2147483648;
            return Math.floor((state / 2147483648) * below);
        };
        const { browser, clock, reports, last } = reporting();
        let next = 500;
        reports.start();
        for (let step = 0; step < 60; step++) {
            const windows = browser.state;
            const window = windows[random(windows.length)];
            const tab = window?.tabs[random(window.tabs.length)];
            const what = random(9);
            if (what === 0 && window) {
                browser.open(window.id, random(window.tabs.length + 1), { id: next++, url: a });
            } else if (what === 1 && tab) {
                browser.navigate(tab.id, `http://a.test/${step}`);
            } else if (what === 2 && tab) {
                browser.drop(tab.id);
            } else if (what === 3 && tab) {
                setActive(browser, window.id, tab.id);
            } else if (what === 4 && windows.length < 5) {
                windows.push({ id: next++, tabs: [{ id: next++, url: b, active: true }] });
                browser.api.windows.onCreated.fire({ id: windows.at(-1).id });
            } else if (what === 5 && tab) {
                window.tabs.splice(window.tabs.indexOf(tab), 1);
                window.tabs.push(tab);
                browser.api.tabs.onMoved.fire(tab.id, { windowId: window.id });
            } else if (what === 6) {
                browser.hold("windows.get");
                browser.hold("windows.getAll");
            } else if (what === 7) {
                await browser.release("windows.get");
                await browser.release("windows.getAll");
            } else if (what === 8) {
                setFocus(browser, window?.id ?? null);
            }
            await clock.pass(random(60));
        }
        await browser.release("windows.get");
        await browser.release("windows.getAll");
        await clock.pass(5000);
        const end = understood(last());
        const wanted = truth(browser);
        const byId = (x, y) => x.id - y.id;
        assert.deepEqual(end.windows.sort(byId), wanted.windows.sort(byId), `seed ${seed}`);
        assert.equal(end.focused ?? null, wanted.focused, `seed ${seed}`);
        assert.equal(clock.waiting, 0);
    }
});
