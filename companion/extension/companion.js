// What the parts have to do with each other: the relay's messages, the browser's events, the reports and the closing.

import { TabCloser } from "./closing.js";
import { protocol, readMessage } from "./messages.js";
import { RelayPort } from "./port.js";
import { TabReports } from "./tabReports.js";

/**
 * Listens to the browser and connects to the relay, for as long as this script lives.
 * @param api the browser's extension API, with promises
 * @param clock setTimeout and clearTimeout
 */
export function startCompanion(api, clock = globalThis) {
    /** Of the welcome that holds; null while nobody listens. */
    let reports = null;
    const closer = new TabCloser(api, clock);
    const port = new RelayPort(api, clock, { received, lost: stopReports });

    function stopReports() {
        reports?.stop();
        reports = null;
    }

    function received(value) {
        const message = readMessage(value);
        if (message === undefined) {
            console.warn("The relay sent what is no message.", value);
        } else if (message.type === "welcome") {
            welcome(message.protocol);
        } else if (message.type === "away") {
            stopReports();
        } else if (reports === null) {
            console.warn("Tabs were to be closed by somebody who was not welcomed.");
        } else {
            closer.close(message.tabs);
        }
    }

    async function welcome(theirProtocol) {
        stopReports();
        const mine = new TabReports(api, clock, (message) => port.send(message));
        reports = mine;
        const privateWindows = await api.extension.isAllowedIncognitoAccess();
        if (reports !== mine) {
            return;
        }
        port.send({ type: "hello", protocol, version: api.runtime.getManifest().version, privateWindows });
        if (theirProtocol !== protocol) {
            console.warn(`The program speaks protocol ${theirProtocol}, this is ${protocol}.`);
            stopReports();
            return;
        }
        mine.start();
    }

    const { tabs, windows } = api;
    tabs.onCreated.addListener((tab) => reports?.tabCreated(tab));
    tabs.onUpdated.addListener((id, change, tab) => reports?.tabUpdated(id, change, tab));
    tabs.onActivated.addListener(({ tabId, windowId }) => reports?.tabActivated(tabId, windowId));
    tabs.onMoved.addListener((id, { windowId }) => reports?.windowChanged(windowId));
    tabs.onDetached.addListener((id, { oldWindowId }) => reports?.windowChanged(oldWindowId));
    tabs.onAttached.addListener((id, { newWindowId }) => reports?.windowChanged(newWindowId));
    tabs.onReplaced?.addListener((added, removed) => reports?.tabReplaced(added, removed));
    tabs.onRemoved.addListener((id, { windowId }) => reports?.tabRemoved(id, windowId));
    windows.onCreated.addListener(({ id }) => reports?.windowChanged(id));
    windows.onRemoved.addListener((id) => reports?.windowRemoved(id));
    windows.onFocusChanged.addListener(() => reports?.focusChanged());

    // These wake the script; what they are for is in the constructor of RelayPort and in connect().
    api.runtime.onStartup.addListener(() => port.connect());
    api.runtime.onInstalled.addListener(() => port.connect());
    api.alarms.onAlarm.addListener(() => port.connect());
    port.connect();
}
