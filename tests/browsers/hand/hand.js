// A tab that is opened at http://hand.test/discard/HOST has the browser discard all tabs of that host, as it does itself
// when memory is short. Then the hand brings the first tab to the front, since a discarded one that comes there is loaded
// again, closes the tab of the order, and asks for http://hand.test/discarded.
"use strict";

chrome.tabs.onUpdated.addListener(async (id, { url }) => {
    const order = url?.match(/^http:\/\/hand\.test\/discard\/(.+)$/);
    if (!order)
        return;
    const tabs = await chrome.tabs.query({ url: `http://${order[1]}/*` });
    await Promise.all(tabs.map((tab) => chrome.tabs.discard(tab.id)));
    const [first] = await chrome.tabs.query({ index: 0 });
    await chrome.tabs.update(first.id, { active: true });
    await chrome.tabs.remove(id);
    await fetch("http://hand.test/discarded");
});
