// A browser's extension API with windows and tabs that a test changes, and a clock that a test winds.

/** Lets everything run that waits for nothing but its turn. */
export async function settle() {
    for (let turn = 0; turn < 50; turn++) {
        await Promise.resolve();
    }
}

class FakeEvent {
    #listeners = [];
    addListener(listener) {
        this.#listeners.push(listener);
    }
    fire(...values) {
        this.#listeners.forEach((listener) => listener(...values));
    }
}

export class FakeClock {
    #now = 0;
    #timers = new Map();
    #next = 1;

    setTimeout = (call, after) => {
        this.#timers.set(this.#next, { call, due: this.#now + after });
        return this.#next++;
    };
    clearTimeout = (id) => this.#timers.delete(id);

    get waiting() {
        return this.#timers.size;
    }

    /** Lets milliseconds pass, each timer at its time. */
    async pass(milliseconds) {
        const end = this.#now + milliseconds;
        await settle();
        for (;;) {
            const due = [...this.#timers].filter(([, timer]) => timer.due <= end).sort((a, b) => a[1].due - b[1].due)[0];
            if (due === undefined) {
                break;
            }
            this.#timers.delete(due[0]);
            this.#now = due[1].due;
            due[1].call();
            await settle();
        }
        this.#now = end;
    }
}

class FakePort {
    onMessage = new FakeEvent();
    onDisconnect = new FakeEvent();
    sent = [];
    postMessage(message) {
        this.sent.push(structuredClone(message));
    }
}

/** The API; calls are in `calls`, as [name, ...arguments]. */
export class FakeBrowser {
    calls = [];
    ports = [];
    alarms = new Set();
    privateWindows = false;

    /** Windows as the browser has them: {id, type, focused, incognito, tabs: [{id, url, active}]}. */
    state = [];

    /** Ids of tabs whose page asks; a question is open for those in `questions`. */
    asking = new Set();
    questions = new Set();

    /** "chromium": a discarded tab has a new id and does not ask. "firefox": a second remove closes it. null: neither. */
    family = "chromium";

    #held = new Map();
    #nextTab = 1000;

    constructor(...windows) {
        this.state = windows;
        const event = () => new FakeEvent();
        const call = (name, answer) => (...values) => this.#call(name, answer, values);
        this.api = {
            runtime: {
                onStartup: event(),
                onInstalled: event(),
                lastError: undefined,
                getManifest: () => ({ version: "0.1.0" }),
                connectNative: (name) => {
                    this.calls.push(["connectNative", name]);
                    this.ports.push(new FakePort());
                    return this.port;
                },
            },
            extension: { isAllowedIncognitoAccess: call("isAllowedIncognitoAccess", () => this.privateWindows) },
            alarms: {
                onAlarm: event(),
                create: (name, { periodInMinutes }) => {
                    this.calls.push(["alarms.create", name, periodInMinutes]);
                    this.alarms.add(name);
                },
                clear: (name) => this.alarms.delete(name),
            },
            tabs: {
                ...Object.fromEntries(
                    ["onCreated", "onUpdated", "onActivated", "onMoved", "onDetached", "onAttached", "onReplaced", "onRemoved"]
                        .map((name) => [name, event()]),
                ),
                get: call("tabs.get", (id) => this.tab(id)),
                query: call("tabs.query", ({ windowId, index }) =>
                    this.window(windowId).tabs.map(({ id }) => this.tab(id))
                        .filter((tab) => index === undefined || tab.index === index)),
                create: call("tabs.create", ({ windowId, url }) => this.#add(windowId, url)),
                remove: call("tabs.remove", (ids) => this.#remove(ids)),
                discard: call("tabs.discard", (id) => this.#discard(id)),
            },
            windows: {
                WINDOW_ID_NONE: -1,
                onCreated: event(),
                onRemoved: event(),
                onFocusChanged: event(),
                get: call("windows.get", (id) => this.#shown(this.window(id), true)),
                getAll: call("windows.getAll", ({ populate }) => this.state.map((window) => this.#shown(window, populate))),
                create: call("windows.create", ({ url }) => {
                    this.state.push({ id: 900, type: "normal", tabs: [{ id: this.#nextTab++, url, active: true }] });
                    return this.#shown(this.state.at(-1), true);
                }),
            },
        };
    }

    get port() {
        return this.ports.at(-1);
    }

    /** What was sent since the last call. */
    taken() {
        return this.port.sent.splice(0);
    }

    count(name) {
        return this.calls.filter(([called]) => called === name).length;
    }

    /** Answers to calls of this name are made at once, but given only at release(). */
    hold(name) {
        this.#held.set(name, this.#held.get(name) ?? []);
    }

    async release(name) {
        const answers = this.#held.get(name) ?? [];
        this.#held.delete(name);
        answers.forEach((give) => give());
        await settle();
    }

    window(id) {
        const found = this.state.find((window) => window.id === id);
        if (found === undefined) {
            throw new Error(`No window with id: ${id}.`);
        }
        return found;
    }

    tab(id) {
        for (const window of this.state) {
            const index = window.tabs.findIndex((tab) => tab.id === id);
            if (index >= 0) {
                const incognito = window.incognito ?? false;
                return { active: false, incognito, ...window.tabs[index], index, windowId: window.id };
            }
        }
        throw new Error(`No tab with id: ${id}.`);
    }

    has(id) {
        return this.state.some(({ tabs }) => tabs.some((tab) => tab.id === id));
    }

    /** Puts a tab into a window and says so. */
    open(windowId, index, tab) {
        this.window(windowId).tabs.splice(index, 0, tab);
        this.api.tabs.onCreated.fire(this.tab(tab.id));
    }

    /** Gives a tab another address and says so. */
    navigate(id, url) {
        this.state.flatMap(({ tabs }) => tabs).find((tab) => tab.id === id).url = url;
        this.api.tabs.onUpdated.fire(id, { url }, this.tab(id));
    }

    /** Takes a tab away and says so; its window goes with its last. */
    drop(id) {
        const windowId = this.tab(id).windowId;
        const window = this.window(windowId);
        window.tabs = window.tabs.filter((tab) => tab.id !== id);
        this.api.tabs.onRemoved.fire(id, { windowId, isWindowClosing: false });
        if (window.tabs.length === 0) {
            this.state = this.state.filter((other) => other !== window);
            this.api.windows.onRemoved.fire(windowId);
        }
    }

    #call(name, answer, values) {
        this.calls.push([name, ...values]);
        let result;
        try {
            result = Promise.resolve(answer(...values));
        } catch (error) {
            result = Promise.reject(error);
        }
        const held = this.#held.get(name);
        if (held === undefined) {
            return result;
        }
        result.catch(() => {});
        return new Promise((resolve) => held.push(() => resolve(result)));
    }

    #shown(window, populate) {
        const { tabs, ...rest } = { type: "normal", focused: false, incognito: false, ...window };
        return populate ? { ...rest, tabs: tabs.map(({ id }) => this.tab(id)) } : rest;
    }

    #add(windowId, url) {
        const id = this.#nextTab++;
        this.open(windowId, this.window(windowId).tabs.length, { id, url });
        return this.tab(id);
    }

    #remove(ids) {
        ids.forEach((id) => this.tab(id)); // throws where one is gone, as browsers do
        const stays = ids.filter((id) => this.asking.has(id) && !(this.family === "firefox" && this.questions.has(id)));
        ids.filter((id) => !stays.includes(id)).forEach((id) => this.drop(id));
        stays.forEach((id) => this.questions.add(id));
        return stays.length === 0 ? undefined : new Promise(() => {});
    }

    #discard(id) {
        const { windowId } = this.tab(id);
        if (this.family !== "chromium") {
            return undefined;
        }
        const tab = this.window(windowId).tabs.find((other) => other.id === id);
        tab.id = this.#nextTab++;
        this.questions.delete(id);
        this.api.tabs.onReplaced.fire(tab.id, id);
        return this.tab(tab.id);
    }
}

/** Windows and tabs as a list of messages says, by the rules of the protocol; throws where one does not fit. */
export function understood(messages) {
    let windows = new Map();
    let focused;
    const known = (id) => {
        if (!windows.has(id)) {
            throw new Error(`Window ${id} was not told.`);
        }
        return windows.get(id);
    };
    const holder = (id) => [...windows.values()].find(({ tabs }) => tabs.some((tab) => tab.id === id));
    for (const message of messages) {
        if (message.type === "windows") {
            windows = new Map(message.windows.map((window) => [window.id, structuredClone(window)]));
            focused = message.focused;
        } else if (message.type === "window") {
            windows.set(message.window.id, structuredClone(message.window));
        } else if (message.type === "windowGone") {
            known(message.window);
            windows.delete(message.window);
        } else if (message.type === "focus") {
            focused = message.window === null ? null : known(message.window).id;
        } else if (message.type === "opened") {
            known(message.window).tabs.splice(message.index, 0, { ...message.tab });
        } else if (message.type === "address") {
            holder(message.tab).tabs.find(({ id }) => id === message.tab).url = message.url;
        } else if (message.type === "active") {
            known(message.window).active = message.tab;
        } else if (message.type === "gone") {
            const window = holder(message.tab);
            window.tabs = window.tabs.filter(({ id }) => id !== message.tab);
            window.active = window.active === message.tab ? null : window.active;
        }
    }
    return { windows: [...windows.values()], focused };
}
