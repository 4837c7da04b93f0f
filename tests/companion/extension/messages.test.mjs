import assert from "node:assert/strict";
import { test } from "node:test";
import { readMessage } from "../../../companion/extension/messages.js";

const tab = { id: 1, url: "http://a.test/" };

for (const message of [
    { type: "welcome", protocol: 1 },
    { type: "welcome", protocol: 0 },
    { type: "away" },
    { type: "close", tabs: [] },
    { type: "close", tabs: Array(100).fill(tab) },
    { type: "close", tabs: [{ id: 2 ** 53 - 1, url: "" }] },
]) {
    test(`is a message: ${JSON.stringify(message).slice(0, 60)}`, () => assert.deepEqual(readMessage(message), message));
}

for (const value of [
    undefined, null, 1, "away", [], {},
    { type: "welcome" },
    { type: "welcome", protocol: "1" },
    { type: "welcome", protocol: -1 },
    { type: "welcome", protocol: 1.5 },
    { type: "welcome", protocol: 1, more: 1 },
    { type: "away", protocol: 1 },
    { type: "hello", protocol: 1 },
    { type: "close" },
    { type: "close", tabs: {} },
    { type: "close", tabs: "1" },
    { type: "close", tabs: [null] },
    { type: "close", tabs: [{ id: 1 }] },
    { type: "close", tabs: [{ id: "1", url: "" }] },
    { type: "close", tabs: [{ id: -1, url: "" }] },
    { type: "close", tabs: [{ id: 2 ** 53, url: "" }] },
    { type: "close", tabs: [{ id: 1, url: null }] },
    { type: "close", tabs: [{ id: 1, url: "", more: 1 }] },
    { type: "close", tabs: Array(101).fill(tab) },
    { type: "close", tabs: [], more: 1 },
]) {
    test(`is no message: ${JSON.stringify(value)?.slice(0, 60)}`, () => assert.equal(readMessage(value), undefined));
}

/** Numbers from 0 to below `end`, the same in every run. */
function dice(seed) {
    let state = seed;
    return (end) => {
        state = (Math.imul(state, 1664525) + 1013904223) >>> 0;
        return Math.floor((state / 2 ** 32) * end);
    };
}

/** Any JSON value, more often than by chance one that looks like a message. */
function anyValue(roll, depth = 0) {
    const keys = ["type", "protocol", "tabs", "id", "url", "__proto__", "length"];
    const plain = [null, true, 0, 1, -1, 1.5, 2 ** 53, 1e300, "", "welcome", "away", "close", "http://a.test/", "\ud800"];
    const kind = depth > 4 ? 0 : depth === 0 ? 2 + roll(2) : roll(5);
    if (kind === 0) {
        return plain[roll(plain.length)];
    }
    if (kind === 1) {
        return Array.from({ length: roll(4) }, () => anyValue(roll, depth + 1));
    }
    if (kind === 2) {
        const type = ["welcome", "away", "close"][roll(3)];
        const fitting = { welcome: "protocol", away: "type", close: "tabs" }[type];
        return { [roll(4) ? fitting : keys[roll(7)]]: anyValue(roll, depth + 1), type };
    }
    if (kind === 4) {
        return { id: anyValue(roll, depth + 3), url: anyValue(roll, depth + 3) };
    }
    return Object.fromEntries(Array.from({ length: roll(4) }, () => [keys[roll(7)], anyValue(roll, depth + 1)]));
}

test("whatever a host sends is a message of the protocol or none", () => {
    const roll = dice(7);
    const whole = (value) => Number.isInteger(value) && value >= 0 && value < 2 ** 53;
    let messages = 0;
    for (let round = 0; round < 50000; ++round) {
        const message = readMessage(JSON.parse(JSON.stringify(anyValue(roll))));
        if (message === undefined) {
            continue;
        }
        ++messages;
        const { type, ...rest } = message;
        const isRight = {
            welcome: () => Object.keys(rest).join() === "protocol" && whole(rest.protocol),
            away: () => Object.keys(rest).length === 0,
            close: () => Object.keys(rest).join() === "tabs" && rest.tabs.every(({ id, url, ...more }) =>
                whole(id) && typeof url === "string" && Object.keys(more).length === 0),
        };
        assert.ok(isRight[type](), JSON.stringify(message));
    }
    assert.ok(messages > 1000, `${messages} messages were tried`);
});
