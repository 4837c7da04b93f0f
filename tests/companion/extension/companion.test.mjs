import assert from "node:assert/strict";
import { test } from "node:test";
import { startCompanion } from "../../../companion/extension/companion.js";
import { FakeBrowser, FakeClock, settle } from "./fakeBrowser.mjs";

console.warn = console.info = () => {};

function started() {
    const browser = new FakeBrowser({ id: 1, focused: true, tabs: [{ id: 10, url: "http://a.test/", active: true }] });
    const clock = new FakeClock();
    startCompanion(browser.api, clock);
    return { browser, clock };
}

async function tell(browser, message) {
    browser.port.onMessage.fire(message);
    await settle();
}

test("connects by itself, once, and keeps neither alarm nor timer", () => {
    const { browser, clock } = started();
    browser.api.runtime.onStartup.fire();
    browser.api.runtime.onInstalled.fire();
    browser.api.alarms.onAlarm.fire({ name: "connect" });
    assert.equal(browser.count("connectNative"), 1);
    assert.deepEqual(browser.calls[0], ["connectNative", "org.quorvel.companion"]);
    assert.equal(browser.alarms.size, 0);
    assert.equal(clock.waiting, 0);
});

test("tries again after 1, 2, 4, 8, 16, then each 20 seconds", async () => {
    const { browser, clock } = started();
    for (const seconds of [1, 2, 4, 8, 16, 20, 20]) {
        const before = browser.ports.length;
        browser.port.onDisconnect.fire(browser.port);
        assert.equal(browser.alarms.size, 1);
        await clock.pass(seconds * 1000 - 1);
        assert.equal(browser.ports.length, before);
        await clock.pass(1);
        assert.equal(browser.ports.length, before + 1);
        assert.equal(browser.alarms.size, 0);
        assert.equal(clock.waiting, 0);
    }
    assert.deepEqual(browser.calls.find(([name]) => name === "alarms.create"), ["alarms.create", "connect", 0.5]);
});

test("a relay that spoke is tried again after a second", async () => {
    const { browser, clock } = started();
    for (let i = 0; i < 4; i++) {
        browser.port.onDisconnect.fire(browser.port);
        await clock.pass(20000);
    }
    await tell(browser, { type: "away" });
    const before = browser.ports.length;
    browser.port.onDisconnect.fire(browser.port);
    await clock.pass(1000);
    assert.equal(browser.ports.length, before + 1);
});

test("the alarm connects at once, and the timer then does not", async () => {
    const { browser, clock } = started();
    browser.port.onDisconnect.fire(browser.port);
    browser.api.alarms.onAlarm.fire({ name: "connect" });
    assert.equal(clock.waiting, 0);
    assert.equal(browser.ports.length, 2);
});

test("tells nothing before welcome", async () => {
    const { browser, clock } = started();
    browser.open(1, 1, { id: 11, url: "http://b.test/" });
    await clock.pass(1000);
    assert.deepEqual(browser.taken(), []);
    assert.equal(browser.count("windows.getAll"), 0);
});

test("answers welcome with hello and all windows", async () => {
    const { browser } = started();
    browser.privateWindows = true;
    await tell(browser, { type: "welcome", protocol: 1 });
    assert.deepEqual(browser.taken(), [
        { type: "hello", protocol: 1, version: "0.1.0", privateWindows: true },
        { type: "windows", windows: [{ id: 1, active: 10, tabs: [{ id: 10, url: "http://a.test/" }] }], focused: 1 },
    ]);
});

test("a second welcome is answered as the first", async () => {
    const { browser } = started();
    await tell(browser, { type: "welcome", protocol: 1 });
    browser.taken();
    await tell(browser, { type: "welcome", protocol: 1 });
    assert.deepEqual(browser.taken().map(({ type }) => type), ["hello", "windows"]);
});

test("two welcomes at once have one answer", async () => {
    const { browser } = started();
    browser.port.onMessage.fire({ type: "welcome", protocol: 1 });
    await tell(browser, { type: "welcome", protocol: 1 });
    assert.deepEqual(browser.taken().map(({ type }) => type), ["hello", "windows"]);
});

test("to another protocol it says hello and nothing more", async () => {
    const { browser } = started();
    await tell(browser, { type: "welcome", protocol: 2 });
    browser.navigate(10, "http://b.test/");
    await settle();
    assert.deepEqual(browser.taken().map(({ type }) => type), ["hello"]);
});

test("tells nothing after away, not even what was asked before", async () => {
    const { browser, clock } = started();
    browser.hold("windows.getAll");
    await tell(browser, { type: "welcome", protocol: 1 });
    browser.taken();
    await tell(browser, { type: "away" });
    await browser.release("windows.getAll");
    browser.navigate(10, "http://b.test/");
    await clock.pass(1000);
    assert.deepEqual(browser.taken(), []);
});

test("tells a new port nothing that was asked for the old one", async () => {
    const { browser, clock } = started();
    browser.hold("windows.getAll");
    await tell(browser, { type: "welcome", protocol: 1 });
    browser.port.onDisconnect.fire(browser.port);
    await clock.pass(1000);
    await browser.release("windows.getAll");
    browser.navigate(10, "http://b.test/");
    await clock.pass(1000);
    assert.deepEqual(browser.taken(), []);
});

test("does nothing while nothing happens", async () => {
    const { browser, clock } = started();
    await tell(browser, { type: "welcome", protocol: 1 });
    const calls = browser.calls.length;
    assert.equal(clock.waiting, 0);
    await clock.pass(60000);
    assert.equal(browser.calls.length, calls);
});

test("closes what the program names, but only between welcome and away", async () => {
    const { browser } = started();
    browser.open(1, 1, { id: 11, url: "http://b.test/" });
    const close = { type: "close", tabs: [{ id: 11, url: "http://b.test/" }] };
    await tell(browser, close);
    assert.ok(browser.has(11));
    await tell(browser, { type: "welcome", protocol: 1 });
    await tell(browser, close);
    assert.ok(!browser.has(11));
});

test("passes over what is no message", async () => {
    const { browser } = started();
    await tell(browser, { type: "welcome", protocol: 1 });
    await tell(browser, { type: "close", tabs: [{ id: 10, url: "http://a.test/", force: true }] });
    await tell(browser, "close");
    assert.equal(browser.count("tabs.remove"), 0);
});
