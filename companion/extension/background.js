// The first thing that runs, in a service worker (Chromium) or an event page (Firefox). Both find the listeners
// only if they are there when this script has run through: nothing is awaited here.

import { startCompanion } from "./companion.js";

startCompanion(globalThis.browser ?? globalThis.chrome);
