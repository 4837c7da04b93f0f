// What comes from the program by way of the relay, looked at before anything is done with it.

/** The protocol that this extension speaks. */
export const protocol = 1;

/** Tabs in one order at most. */
export const mostTabsInOrder = 100;

/**
 * @param value anything
 * @returns {{type: "welcome", protocol: number} | {type: "away"} | {type: "close", tabs: {id: number, url: string}[]}
 *     | undefined} the message; undefined where it is none: a key too many or too few, a value of another type
 */
export function readMessage(value) {
    const isMessage =
        (hasExactly(value, ["type", "protocol"]) && value.type === "welcome" && isWholeNumber(value.protocol)) ||
        (hasExactly(value, ["type"]) && value.type === "away") ||
        (hasExactly(value, ["type", "tabs"]) && value.type === "close" && isOrder(value.tabs));
    return isMessage ? value : undefined;
}

function isOrder(tabs) {
    return Array.isArray(tabs) && tabs.length <= mostTabsInOrder && tabs.every(isOrderedTab);
}

function isOrderedTab(tab) {
    return hasExactly(tab, ["id", "url"]) && isWholeNumber(tab.id) && typeof tab.url === "string";
}

function isWholeNumber(value) {
    return Number.isSafeInteger(value) && value >= 0;
}

function hasExactly(value, keys) {
    return (
        typeof value === "object" &&
        value !== null &&
        Object.keys(value).length === keys.length &&
        keys.every((key) => Object.hasOwn(value, key))
    );
}
