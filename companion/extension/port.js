// The connection to the relay: opened again whenever it is lost.

const relayName = "org.quorvel.companion";
const alarmName = "connect";

/** Browsers allow no shorter period. */
const alarmMinutes = 0.5;

const shortestWait = 1000;
const longestWait = 20000;

/**
 * One port at most is open. While it is, there is neither alarm nor timer. While it is not, a timer tries again after
 * 1, 2, 4, 8, 16, then each 20 seconds, and an alarm does so where the browser has ended the script meanwhile.
 */
export class RelayPort {
    #api;
    #clock;
    #received;
    #lost;
    #port = null;
    #timer = null;
    #wait = shortestWait;

    /**
     * @param api the browser's extension API
     * @param clock setTimeout and clearTimeout
     * @param {{received: function(any): void, lost: function(): void}} listener what the relay sent; that the port is
     *     no more
     */
    constructor(api, clock, { received, lost }) {
        this.#api = api;
        this.#clock = clock;
        this.#received = received;
        this.#lost = lost;
    }

    /** Opens the port now, unless it is open. */
    connect() {
        if (this.#port !== null) {
            return;
        }
        this.#clock.clearTimeout(this.#timer);
        this.#timer = null;
        let port;
        try {
            port = this.#api.runtime.connectNative(relayName);
        } catch (error) {
            this.#tryLater(error);
            return;
        }
        this.#port = port;
        port.onMessage.addListener((message) => {
            // Only a relay that speaks is one: the browser opens a port for one that it cannot start, too.
            this.#wait = shortestWait;
            this.#received(message);
        });
        port.onDisconnect.addListener((lostPort) => {
            // Chromium says why in lastError, and complains if nobody looks; Firefox in the port.
            const reason = this.#api.runtime.lastError ?? lostPort?.error;
            this.#port = null;
            this.#lost();
            this.#tryLater(reason);
        });
        this.#api.alarms.clear(alarmName);
    }

    /** Sends a message; it is lost where the port is. */
    send(message) {
        try {
            this.#port?.postMessage(message);
        } catch (error) {
            console.warn("The relay's port took no message.", error);
        }
    }

    #tryLater(reason) {
        console.info(`The relay is not there; next try in ${this.#wait / 1000} s.`, reason?.message ?? "");
        this.#timer = this.#clock.setTimeout(() => this.connect(), this.#wait);
        this.#wait = Math.min(this.#wait * 2, longestWait);
        this.#api.alarms.create(alarmName, { periodInMinutes: alarmMinutes });
    }
}
