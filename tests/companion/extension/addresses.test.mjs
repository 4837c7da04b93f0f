import assert from "node:assert/strict";
import { test } from "node:test";
import { cutAddress } from "../../../companion/extension/addresses.js";

test("an address of 1,024 units is told whole, a longer one is cut after them", () => {
    assert.equal(cutAddress("a".repeat(1024)).length, 1024);
    assert.equal(cutAddress("a".repeat(1024) + "b"), "a".repeat(1024));
});

test("a character of two units is left out rather than cut in two", () => {
    assert.equal(cutAddress("a".repeat(1023) + "😀b"), "a".repeat(1023));
    assert.equal(cutAddress("a".repeat(1022) + "😀b"), "a".repeat(1022) + "😀");
});

test("no address is an empty one", () => {
    assert.equal(cutAddress(undefined), "");
    assert.equal(cutAddress(""), "");
});
