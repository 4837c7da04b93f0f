// Closes tabs that the program names.
//
// A page may ask whether to leave it, and then the browser waits for the user. What has not gone shortly after it was
// closed is discarded and closed again: Chromium gives a discarded tab a new id and no page that could ask; Firefox
// discards no such tab, but closes one that is closed a second time. The question is on the screen for as long as the
// wait, at most.
//
// The browser, and with it the connection, ends with its last tab. So where no normal window would keep a tab, a blank
// one is opened first. Private windows and pop-ups do not count as windows that keep the browser open, and get no
// blank tab, unless pop-ups are all there is. A blank tab that is itself to be closed and would be the last is kept.

import { cutAddress } from "./addresses.js";

const blankAddress = "about:blank";

/** Milliseconds that a tab has to go by itself, and what each further one of an order adds: 20 of 500 take about 350. */
const patience = 250;
const patienceForEach = 20;

/** Closes tabs, one order after another. */
export class TabCloser {
    #api;
    #clock;
    #lastOrder = Promise.resolve();

    /**
     * @param api the browser's extension API
     * @param clock setTimeout and clearTimeout
     */
    constructor(api, clock) {
        this.#api = api;
        this.#clock = clock;
    }

    /**
     * Closes these tabs when the orders before are carried out. A tab that is gone is passed over; one that shows
     * another address by now is left alone.
     * @param {{id: number, url: string}[]} ordered
     * @returns {Promise<void>} after the last try, which need not have closed all
     */
    close(ordered) {
        this.#lastOrder = this.#lastOrder
            .then(() => this.#carryOut(ordered))
            .catch((error) => console.warn("Tabs could not be closed.", error));
        return this.#lastOrder;
    }

    async #carryOut(ordered) {
        const tabs = await this.#tabsToClose(ordered);
        if (tabs.length === 0) {
            return;
        }
        const kept = await this.#keepBrowserOpen(tabs);
        const ids = tabs.map(({ id }) => id).filter((id) => id !== kept);
        if (ids.length > 0 && !(await this.#inTime(this.#api.tabs.remove(ids), patience + patienceForEach * (ids.length - 1)))) {
            const left = await this.#find(ids);
            await Promise.all(left.filter((tab) => tab !== null).map(({ id }) => this.#insist(id)));
        }
    }

    async #tabsToClose(ordered) {
        const found = await this.#find(ordered.map(({ id }) => id));
        return found.filter((tab, place) => tab !== null && cutAddress(tab.url) === ordered[place].url);
    }

    /** The tabs with these ids, null for one that is gone. */
    #find(ids) {
        return Promise.all(ids.map((id) => this.#api.tabs.get(id).catch(() => null)));
    }

    async #insist(id) {
        const discarded = await this.#inTime(this.#api.tabs.discard(id));
        await this.#inTime(this.#api.tabs.remove([discarded?.id ?? id]));
    }

    /** What a call answers, or true where that is nothing; undefined where it fails or takes longer. */
    async #inTime(call, time = patience) {
        let timer;
        const end = new Promise((resolve) => (timer = this.#clock.setTimeout(resolve, time)));
        const answer = call.then(
            (value) => value ?? true,
            () => undefined,
        );
        const first = await Promise.race([answer, end]);
        this.#clock.clearTimeout(timer);
        return first;
    }

    /** @returns the id of a tab that is not to be closed after all, if any */
    async #keepBrowserOpen(tabs) {
        const shown = await this.#api.windows.getAll({ windowTypes: ["normal", "popup", "panel", "app"] });
        const open = shown.filter(({ incognito }) => !incognito);
        const normal = open.filter(({ type }) => type === "normal");
        const keepers = normal.length > 0 ? normal : open;
        if (keepers.length === 0 || (await this.#anyKeepsTab(keepers, tabs))) {
            return undefined;
        }
        const last = tabs.filter(({ windowId }) => keepers.some(({ id }) => id === windowId));
        const blank = last.find(({ url }) => url === blankAddress);
        if (blank !== undefined) {
            return blank.id;
        }
        if (normal.length > 0) {
            await this.#api.tabs.create({ windowId: last.at(-1).windowId, url: blankAddress });
        } else {
            await this.#api.windows.create({ url: blankAddress });
        }
        return undefined;
    }

    /** Whether one of the windows has a tab that is not to be closed. */
    async #anyKeepsTab(windows, closing) {
        const counts = windows.map(({ id }) => closing.filter(({ windowId }) => windowId === id).length);
        if (counts.includes(0)) {
            return true;
        }
        // A window with hundreds of tabs is not listed for this: one more than are to be closed is enough.
        const furthers = await Promise.all(
            windows.map(({ id }, place) => this.#api.tabs.query({ windowId: id, index: counts[place] })),
        );
        if (furthers.some((tabs) => tabs.length > 0)) {
            return true;
        }
        // The few that are there are compared: some of those to be closed may have gone meanwhile.
        const all = await Promise.all(windows.map(({ id }) => this.#api.tabs.query({ windowId: id })));
        const closed = new Set(closing.map(({ id }) => id));
        return all.flat().some(({ id }) => !closed.has(id));
    }
}
