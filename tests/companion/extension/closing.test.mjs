import assert from "node:assert/strict";
import { test } from "node:test";
import { TabCloser } from "../../../companion/extension/closing.js";
import { FakeBrowser, FakeClock, settle } from "./fakeBrowser.mjs";

console.warn = () => {};

const url = "http://a.test/";
const tab = (id, address = url) => ({ id, url: address });

function closing(...windows) {
    const browser = new FakeBrowser(...windows);
    const clock = new FakeClock();
    const closer = new TabCloser(browser.api, clock);
    const order = async (...ids) => {
        closer.close(ids.map((id) => (typeof id === "number" ? { id, url } : id)));
        await clock.pass(3000);
        assert.equal(clock.waiting, 0);
    };
    const open = () => browser.state.map(({ id, tabs }) => [id, ...tabs.map((one) => one.id)]);
    return { browser, clock, closer, order, open };
}

test("tabs are closed with one call, in the order named, and nothing waits after it", async () => {
    const { browser, clock, closer, open } = closing({ id: 1, tabs: [tab(10), tab(11), tab(12)] });
    closer.close([{ id: 12, url }, { id: 10, url }]);
    await settle();
    assert.equal(clock.waiting, 0);
    assert.deepEqual(open(), [[1, 11]]);
    assert.deepEqual(browser.calls.filter(([name]) => name === "tabs.remove"), [["tabs.remove", [12, 10]]]);
    assert.equal(browser.count("tabs.discard"), 0);
});

test("a tab that is gone does not keep the others", async () => {
    const { order, open } = closing({ id: 1, tabs: [tab(10), tab(11), tab(12)] });
    await order(99, 10, 11);
    assert.deepEqual(open(), [[1, 12]]);
});

test("a tab that goes just before it is closed does not keep the others", async () => {
    const { browser, order, open } = closing({ id: 1, tabs: [tab(10), tab(11), tab(12)] });
    browser.hold("windows.getAll");
    const ordered = order(10, 11);
    await settle();
    browser.drop(10);
    await browser.release("windows.getAll");
    await ordered;
    assert.deepEqual(open(), [[1, 12]]);
});

test("a tab that shows another address by now is left alone", async () => {
    const { browser, order, open } = closing({ id: 1, tabs: [tab(10, "http://b.test/"), tab(11)] });
    await order(10);
    assert.deepEqual(open(), [[1, 10, 11]]);
    assert.equal(browser.count("tabs.remove"), 0);
});

test("long addresses are compared as they were told", async () => {
    const long = url + "x".repeat(3000);
    const { order, open } = closing({ id: 1, tabs: [tab(10, long), tab(11, long), tab(12)] });
    await order({ id: 10, url: long.slice(0, 1024) }, { id: 11, url: long.slice(0, 1023) });
    assert.deepEqual(open(), [[1, 11, 12]]);
});

test("a page that asks is closed: discarded first in Chromium, a second time in Firefox", async () => {
    for (const family of ["chromium", "firefox"]) {
        const { browser, order, open } = closing({ id: 1, tabs: [tab(10), tab(11), tab(12)] });
        browser.family = family;
        browser.asking.add(10);
        await order(10, 11);
        assert.deepEqual(open(), [[1, 12]], family);
        assert.equal(browser.questions.size, family === "firefox" ? 1 : 0);
    }
});

test("a page that nothing closes holds up neither this order nor the next", async () => {
    const { browser, order, open } = closing({ id: 1, tabs: [tab(10), tab(11), tab(12)] });
    browser.family = null;
    browser.asking.add(10);
    await order(10);
    await order(10, 11);
    assert.deepEqual(open(), [[1, 10, 12]]);
});

test("before the last tab of the last window goes, a blank one is there", async () => {
    const { browser, order, open } = closing({ id: 1, tabs: [tab(10), tab(11)] });
    await order(10, 11);
    assert.deepEqual(open(), [[1, 1000]]);
    assert.equal(browser.tab(1000).url, "about:blank");
    const names = browser.calls.map(([name]) => name);
    assert.ok(names.indexOf("tabs.create") < names.indexOf("tabs.remove"));
});

test("a window's last tab goes with its window where another window keeps one", async () => {
    const { browser, order, open } = closing({ id: 1, tabs: [tab(10)] }, { id: 2, tabs: [tab(20), tab(21)] });
    await order(10, 20);
    assert.deepEqual(open(), [[2, 21]]);
    assert.equal(browser.count("tabs.create"), 0);
});

test("one blank tab is enough where all windows lose their last tab", async () => {
    const { order, open } = closing({ id: 1, tabs: [tab(10)] }, { id: 2, tabs: [tab(20)] });
    await order(10, 20);
    assert.deepEqual(open(), [[2, 1000]]);
});

test("private windows and pop-ups do not keep the browser open", async () => {
    const { order, open } = closing(
        { id: 1, tabs: [tab(10)] },
        { id: 2, incognito: true, tabs: [tab(20), tab(21)] },
        { id: 3, type: "popup", tabs: [tab(30)] },
    );
    await order(10);
    assert.deepEqual(open(), [[1, 1000], [2, 20, 21], [3, 30]]);
});

test("private windows and pop-ups go with their last tab", async () => {
    const { browser, order, open } = closing(
        { id: 1, tabs: [tab(10)] },
        { id: 2, incognito: true, tabs: [tab(20)] },
        { id: 3, type: "popup", tabs: [tab(30)] },
    );
    await order(20, 30);
    assert.deepEqual(open(), [[1, 10]]);
    assert.equal(browser.count("tabs.create"), 0);
});

test("where there are pop-ups only, the last one is followed by a window", async () => {
    const { order, open } = closing({ id: 3, type: "popup", tabs: [tab(30)] });
    await order(30);
    assert.deepEqual(open(), [[900, 1000]]);
});

test("where there are private windows only, they are closed", async () => {
    const { browser, order, open } = closing({ id: 2, incognito: true, tabs: [tab(20)] });
    await order(20);
    assert.deepEqual(open(), []);
    assert.equal(browser.count("windows.create"), 0);
});

test("a blank tab that would be the last is kept", async () => {
    const { order, open } = closing({ id: 1, tabs: [tab(10, "about:blank"), tab(11)] });
    await order({ id: 10, url: "about:blank" }, 11);
    assert.deepEqual(open(), [[1, 10]]);
    await order({ id: 10, url: "about:blank" });
    assert.deepEqual(open(), [[1, 10]]);
});

test("two orders at once that together take the last tabs leave one blank tab", async () => {
    const { closer, clock, open } = closing({ id: 1, tabs: [tab(10), tab(11)] });
    closer.close([{ id: 10, url }]);
    closer.close([{ id: 11, url }]);
    await clock.pass(3000);
    assert.deepEqual(open(), [[1, 1000]]);
});

test("orders that come again do not close the blank tab or open more", async () => {
    const { browser, closer, clock, open } = closing({ id: 1, tabs: [tab(10)] });
    for (let i = 0; i < 5; i++) {
        closer.close([{ id: 10, url }]);
    }
    await clock.pass(3000);
    assert.deepEqual(open(), [[1, 1000]]);
    assert.equal(browser.count("tabs.create"), 1);
});
