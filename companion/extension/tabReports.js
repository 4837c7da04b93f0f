// Tells the program which windows and tabs there are, and what changes.
//
// What an event says fully is told at once, in one small message. Everything else makes its window stale: the browser
// is asked how the window is now, and the answer is told. Events and answers come by separate ways, so which of the
// two is newer cannot be known: an event that comes while the answer is awaited makes the window stale again, and no
// small message is told of a stale window. So what is told last always came from a question that was asked after the
// last event.

import { cutAddress } from "./addresses.js";

/** Stand where a window may be named: all windows, and which of them has the keyboard. */
const everything = "everything";
const focus = "focus";

/** All windows that show pages; the tools for developers have windows too. */
const windowTypes = ["normal", "popup", "panel", "app"];

/** Milliseconds between questions while events keep coming: each pause is twice the one before. */
const shortestPause = 30;
const longestPause = 480;

/** Reports from one welcome on until stop(). */
export class TabReports {
    #api;
    #clock;
    #send;

    /** Nothing is told any more. */
    #stopped = false;

    /** What the program knows: window id to {active: id or null, tabs: ids from left to right}. */
    #windows = new Map();

    /** What the program knows: tab id to {window: id, url}. */
    #tabs = new Map();

    /** The window that has the keyboard, as the program knows it; undefined where it cannot know. */
    #toldFocus;

    /** The window that has the keyboard, as the browser last said, or null. */
    #focus = null;

    /** Windows, everything or focus: what changed in a way that has to be asked for. */
    #stale = new Set([everything]);

    /** Window, everything or focus: of what the answer is awaited; null while none is. */
    #asked = null;

    /** Questions are being asked, or a pause is made between them. */
    #asking = false;

    /**
     * @param api the browser's extension API
     * @param clock setTimeout
     * @param {function(object): void} send takes a message to the program
     */
    constructor(api, clock, send) {
        this.#api = api;
        this.#clock = clock;
        this.#send = send;
    }

    /** Tells everything. Before it, events are only heard. */
    start() {
        this.#askStale();
    }

    /** Nothing is told any more. */
    stop() {
        this.#stopped = true;
    }

    tabCreated(tab) {
        if (!hasId(tab) || !this.#mayTell(tab.windowId)) {
            return;
        }
        const window = this.#windows.get(tab.windowId);
        if (this.#tabs.has(tab.id) || tab.index < 0 || tab.index > window.tabs.length) {
            this.windowChanged(tab.windowId);
            return;
        }
        // A new tab has often only the address that it will have (pendingUrl). It is told when the page is there.
        const told = toldTab(tab);
        window.tabs.splice(tab.index, 0, tab.id);
        this.#tabs.set(tab.id, { window: tab.windowId, url: told.url });
        this.#send({ type: "opened", window: tab.windowId, index: tab.index, tab: told });
    }

    tabUpdated(id, change, tab) {
        if (change.url === undefined || !hasId(tab) || !this.#mayTell(tab.windowId)) {
            return;
        }
        const known = this.#tabs.get(id);
        if (known?.window !== tab.windowId) {
            this.windowChanged(tab.windowId);
            return;
        }
        const url = cutAddress(change.url);
        if (url !== known.url) {
            known.url = url;
            this.#send({ type: "address", tab: id, url });
        }
    }

    tabActivated(id, windowId) {
        if (!this.#mayTell(windowId)) {
            return;
        }
        const window = this.#windows.get(windowId);
        if (!window.tabs.includes(id)) {
            this.windowChanged(windowId);
        } else if (window.active !== id) {
            window.active = id;
            this.#send({ type: "active", window: windowId, tab: id });
        }
    }

    tabRemoved(id, windowId) {
        // Nothing has to be asked for where a tab goes of which nothing was told.
        const known = this.#tabs.get(id);
        if ((known !== undefined || this.#isStale(windowId)) && this.#mayTell(known?.window ?? windowId)) {
            this.#forgetTab(id);
            this.#send({ type: "gone", tab: id });
        }
    }

    tabReplaced(added, removed) {
        this.windowChanged(this.#tabs.get(removed)?.window ?? everything);
    }

    /** Something about this window changed that no small message tells. */
    windowChanged(id) {
        this.#stale.add(this.#isEverythingStale() ? everything : id);
        this.#askStale();
    }

    windowRemoved(id) {
        if (this.#isEverythingStale()) {
            this.windowChanged(everything);
            return;
        }
        this.#stale.delete(id);
        if (this.#asked === id) {
            // What is answered of it now is told to nobody.
            this.#asked = null;
        }
        this.#tellWindowGone(id);
    }

    /** Chromium says that a window lost the keyboard after it said that another has it; so this is asked for. */
    focusChanged() {
        this.windowChanged(focus);
    }

    /** Whether a small message about this window may be told; else the window is asked for. */
    #mayTell(windowId) {
        if (this.#isStale(windowId) || !this.#windows.has(windowId)) {
            this.windowChanged(windowId);
            return false;
        }
        return true;
    }

    #isEverythingStale() {
        return this.#asked === everything || this.#stale.has(everything);
    }

    #isStale(windowId) {
        return this.#isEverythingStale() || this.#asked === windowId || this.#stale.has(windowId);
    }

    /** Asks one question after another until nothing is stale. */
    async #askStale() {
        if (this.#asking) {
            return;
        }
        this.#asking = true;
        let pause = shortestPause;
        while (!this.#stopped && this.#stale.size > 0) {
            const first = [everything, focus].find((what) => this.#stale.has(what));
            await this.#askOne(first ?? this.#stale.values().next().value);
            if (this.#stale.size > 0) {
                await new Promise((resolve) => this.#clock.setTimeout(resolve, pause));
                pause = Math.min(pause * 2, longestPause);
            }
        }
        this.#asking = false;
    }

    async #askOne(what) {
        if (what === everything) {
            this.#stale.clear();
        }
        this.#stale.delete(what);
        this.#asked = what;
        let answer = null;
        let failure = null;
        try {
            answer = await this.#ask(what);
        } catch (error) {
            failure = error;
        }
        if (this.#stopped || this.#asked !== what) {
            return;
        }
        this.#asked = null;
        if (typeof what === "number") {
            this.#tellWindow(what, answer);
        } else if (failure !== null) {
            console.warn("The browser does not say which windows there are.", failure);
            this.#stale.add(what);
            return;
        } else if (what === everything) {
            this.#tellEverything(answer);
        } else {
            this.#learnFocus(answer);
        }
        this.#tellFocus();
    }

    #ask(what) {
        const { windows } = this.#api;
        if (typeof what === "number") {
            return windows.get(what, { populate: true, windowTypes });
        }
        return windows.getAll({ populate: what === everything, windowTypes });
    }

    #tellEverything(windows) {
        this.#windows.clear();
        this.#tabs.clear();
        const told = windows.filter(showsPages).map((window) => this.#learnWindow(window));
        this.#learnFocus(windows);
        this.#toldFocus = this.#focus;
        this.#send({ type: "windows", windows: told, focused: this.#focus });
    }

    #learnFocus(windows) {
        this.#focus = windows.find((window) => showsPages(window) && window.focused)?.id ?? null;
        if (this.#focus !== null && !this.#windows.has(this.#focus)) {
            this.windowChanged(this.#focus);
        }
    }

    /** @param answer null where there is no such window (any more) */
    #tellWindow(id, answer) {
        if (answer === null || !showsPages(answer)) {
            this.#tellWindowGone(id);
        } else {
            this.#send({ type: "window", window: this.#learnWindow(answer) });
        }
    }

    #tellWindowGone(id) {
        const known = this.#windows.get(id);
        if (known === undefined) {
            return;
        }
        known.tabs.forEach((tab) => this.#tabs.delete(tab));
        this.#windows.delete(id);
        this.#send({ type: "windowGone", window: id });
        if (this.#focus === id) {
            this.#focus = null;
        }
        if (this.#toldFocus === id) {
            this.#toldFocus = undefined;
            this.#tellFocus();
        }
    }

    #tellFocus() {
        const unknown = this.#focus !== null && !this.#windows.has(this.#focus);
        if (this.#isEverythingStale() || (unknown && this.#isStale(this.#focus))) {
            return; // told when the answer is there
        }
        const window = unknown ? null : this.#focus;
        if (window !== this.#toldFocus) {
            this.#toldFocus = window;
            this.#send({ type: "focus", window });
        }
    }

    /** Remembers a window as it is now told. One that had a tab of it until now is asked for again. */
    #learnWindow(window) {
        const tabs = (window.tabs ?? []).filter(hasId);
        this.#windows.get(window.id)?.tabs.forEach((tab) => this.#tabs.delete(tab));
        tabs.filter(({ id }) => this.#tabs.has(id)).forEach(({ id }) => {
            this.#stale.add(this.#tabs.get(id).window);
            this.#forgetTab(id);
        });
        const active = tabs.find((tab) => tab.active)?.id ?? null;
        this.#windows.set(window.id, { active, tabs: tabs.map(({ id }) => id) });
        const told = tabs.map(toldTab);
        told.forEach(({ id, url }) => this.#tabs.set(id, { window: window.id, url }));
        return { id: window.id, active, tabs: told };
    }

    #forgetTab(id) {
        const window = this.#windows.get(this.#tabs.get(id)?.window);
        this.#tabs.delete(id);
        if (window !== undefined) {
            window.tabs.splice(window.tabs.indexOf(id), 1);
            window.active = window.active === id ? null : window.active;
        }
    }
}

function toldTab(tab) {
    return { id: tab.id, url: cutAddress(tab.url) };
}

function hasId(tab) {
    return Number.isSafeInteger(tab.id) && tab.id >= 0;
}

function showsPages(window) {
    return windowTypes.includes(window.type);
}
